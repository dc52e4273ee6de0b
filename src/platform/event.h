// Something that others want to be told about: they subscribe and hold the subscription, and
// dropping it ends the calls. Neither side needs to outlive the other: an event that is gone raises
// nothing, and a subscription to it ends quietly. For one thread.
#pragma once

#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace pelvan {

/// One registration; ends when it is dropped or replaced.
class [[nodiscard]] Subscription {
  public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> registration)
        : registration_(std::move(registration)) {}
    void end() { registration_.reset(); }
    [[nodiscard]] bool active() const { return registration_ != nullptr; }

  private:
    std::shared_ptr<void> registration_;
};

template <class... Arguments> class Event {
  public:
    using Handler = std::function<void(Arguments...)>;

    Event() = default;
    Event(const Event&) = delete;
    Event& operator=(const Event&) = delete;

    /// Calls the handler at every `raise` for as long as the subscription is held.
    Subscription subscribe(Handler handler) {
        std::erase_if(handlers_, [](const auto& held) { return held.expired(); });
        auto registration = std::make_shared<Handler>(std::move(handler));
        handlers_.push_back(registration);
        return Subscription(std::move(registration));
    }

    /// Calls every handler, in the order of subscription. A handler may subscribe others (called
    /// from the next raise on), end any subscription, its own included, or destroy the event.
    void raise(Arguments... arguments) const {
        const auto handlers = handlers_;
        for (const auto& held : handlers)
            if (const auto handler = held.lock()) (*handler)(arguments...);
    }

  private:
    std::vector<std::weak_ptr<Handler>> handlers_;
};

} // namespace pelvan
