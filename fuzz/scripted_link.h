// A link whose replies are the bytes of a run: what a conversation does with any answers, without
// the time that a port takes.
#pragma once

#include <string>
#include <vector>

#include "harness.h"
#include "support/serial_rig.h"

namespace pelvan::fuzz {

class ScriptedLink : public Link {
  public:
    ScriptedLink(testing::SerialRig& rig, Input& input)
        : Link(rig.table, rig.countdowns, rig.dialogs, rig.log), input_(input) {}

    std::string transmit(std::int16_t, const std::string& command, float timeout_ms, std::int16_t,
                         const IsWhole& is_whole = {}) override {
        sent.push_back(command);
        waiting_.clear();
        return receive(timeout_ms, is_whole);
    }
    std::string receive_more(std::int16_t, float timeout_ms, std::int16_t,
                             const IsWhole& is_whole = {}) override {
        return receive(timeout_ms, is_whole);
    }

    std::vector<std::string> sent;
    std::string received; // all of it
    double waited_ms = 0; // at most

  private:
    /// Replies end with their frame where the run says so, else with all that came; what is behind
    /// a frame comes with the next part.
    std::string receive(float timeout_ms, const IsWhole& is_whole) {
        waited_ms += static_cast<double>(timeout_ms);
        const bool complete = input_.flag();
        waiting_ += input_.piece();
        std::size_t size = complete ? 0 : waiting_.size();
        while (size < waiting_.size())
            if (is_whole(Exact(std::string_view(waiting_).substr(0, ++size)).view())) break;
        const std::string reply = waiting_.substr(0, size);
        waiting_.erase(0, size);
        received += reply;
        return reply;
    }

    Input& input_;
    std::string waiting_;
};

/// What a link is made of; its ports are never opened.
inline testing::SerialRig& idle_rig() {
    static testing::SerialRig rig;
    rig.dialogs.shown.clear();
    return rig;
}

} // namespace pelvan::fuzz
