// Runs an action at the end of a scope, however the scope is left.
#pragma once

#include <utility>

namespace pelvan {

/// The action must not throw.
template <class Action> class [[nodiscard]] ScopeGuard {
  public:
    explicit ScopeGuard(Action action) : action_(std::move(action)) {}
    ScopeGuard(const ScopeGuard&) = delete;
    ScopeGuard& operator=(const ScopeGuard&) = delete;
    ~ScopeGuard() { action_(); }

  private:
    Action action_;
};

} // namespace pelvan
