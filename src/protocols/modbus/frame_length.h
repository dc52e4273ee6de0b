// How long a Modbus RTU frame is going to be, told from its first bytes, so that a frame can be cut
// out of a stream and an exchange can end with the reply's last byte. The functions are those of
// the Modbus Application Protocol V1.1b3 whose frames say their length; no others have an answer.
// The CRC is not looked at: a length is a promise until the check behind it fits.
#pragma once

#include <cstddef>
#include <string_view>

namespace pelvan {

struct ExpectedLength {
    enum class State {
        NeedsMore, // too few bytes to tell
        Known,
        Unknown // no function here, or one whose frames do not say how long they are
    };
    State state = State::NeedsMore;
    /// Of the whole frame, CRC included, when known; else how many bytes it takes to tell, 0 when
    /// no number would do.
    std::size_t bytes = 0;

    [[nodiscard]] bool known() const { return state == State::Known; }
    bool operator==(const ExpectedLength&) const = default;
};

/// What the first bytes of a request say; any bytes of any number will do. Diagnostics (function 8)
/// count as one data word: a test with more is longer by what it sent.
[[nodiscard]] ExpectedLength expected_request_length(std::string_view begin);

/// The same of a reply, exceptions included.
[[nodiscard]] ExpectedLength expected_reply_length(std::string_view begin);

} // namespace pelvan
