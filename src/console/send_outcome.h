// How one sending from the console ended, whatever the protocol.
#pragma once

#include <string>

namespace pelvan {

struct SendOutcome {
    enum class Kind { Refused, NoReply, Done };
    Kind kind = Kind::Refused;
    /// What the status line should say of it.
    std::string status;
    /// Whether the controller did what it was asked, as far as its reply says.
    bool accepted = false;
};

} // namespace pelvan
