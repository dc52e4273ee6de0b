#include "listen/frame_kind.h"

#include "protocols/modbus/crc.h"
#include "protocols/modbus/frame_length.h"

namespace pelvan {
namespace {

constexpr std::size_t kMinFrame = 4;
constexpr std::size_t kExceptionLength = 5;
constexpr int kExceptionBit = 0x80;

int byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

/// Whether a frame is as long as a layout has it; where no layout is known the order decides.
bool fits(std::string_view bytes, const ExpectedLength& expected) {
    return expected.state == ExpectedLength::State::Unknown ||
           (expected.known() && expected.bytes == bytes.size());
}

bool answers(std::string_view bytes, std::string_view pending) {
    if (pending.empty() || bytes.substr(0, 2) != pending.substr(0, 2)) return false;
    if (!fits(bytes, expected_reply_length(bytes))) return false;
    const int function = byte_at(bytes, 1);
    // Echoes repeat the request whole; a reply to a read never does.
    const bool echo = function == 5 || function == 6 || function == 8;
    const bool read = function >= 1 && function <= 4;
    return echo ? bytes == pending : !read || bytes != pending;
}

} // namespace

FrameInfo classify_frame(std::string_view bytes, std::string_view pending) {
    FrameInfo info;
    if (bytes.size() < kMinFrame || !has_valid_crc(bytes)) return info;
    info.address = byte_at(bytes, 0);
    const int code = byte_at(bytes, 1);
    info.function = code & ~kExceptionBit;
    if ((code & kExceptionBit) != 0 && bytes.size() == kExceptionLength)
        info.kind = FrameKind::ExceptionReply;
    else if (!answers(bytes, pending) && fits(bytes, expected_request_length(bytes)))
        info.kind = FrameKind::Request;
    else
        info.kind = FrameKind::Reply;
    return info;
}

} // namespace pelvan
