// Tells from a burst's bytes what it is on a Modbus line: a request, a reply to the request before
// it, or neither. The line carries no mark of the direction, so layouts decide, and where request
// and reply look alike (echoes; replies of eight bytes) the request that is still unanswered does:
// the same bytes again are its reply. A master that repeats an unanswered write is therefore taken
// for its own controller.
#pragma once

#include <optional>
#include <string_view>

namespace pelvan {

enum class FrameKind { Damaged, Request, Reply, ExceptionReply };

struct FrameInfo {
    FrameKind kind = FrameKind::Damaged; // CRC wrong, or too short to have one
    int address = 0;
    int function = 0; // without the exception bit
};

/// Classifies a burst; `pending` is the request that waits for its reply, empty when none does.
[[nodiscard]] FrameInfo classify_frame(std::string_view bytes, std::string_view pending);

[[nodiscard]] inline bool is_reply(FrameKind kind) {
    return kind == FrameKind::Reply || kind == FrameKind::ExceptionReply;
}

} // namespace pelvan
