#include "listen/frame_kind.h"

#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

constexpr std::size_t kMinFrame = 4;
constexpr std::size_t kExceptionLength = 5;
constexpr std::size_t kFixedLength = 8;
constexpr std::size_t kWriteHeadAndCrc = 9;
constexpr int kExceptionBit = 0x80;

int byte_at(std::string_view bytes, std::size_t at) {
    return static_cast<unsigned char>(bytes[at]);
}

bool crc_fits(std::string_view bytes) {
    ModbusState scratch; // the session's CRC belongs to the requests that were built
    Modbus(scratch).ModbusCrc(bytes.substr(0, bytes.size() - 2));
    return byte_at(bytes, bytes.size() - 2) == scratch.gCrcLow &&
           byte_at(bytes, bytes.size() - 1) == scratch.gCrcHigh;
}

/// Whether the layout is one that a reply to this function has.
bool reply_layout(int function, std::string_view bytes) {
    switch (function) {
    case 1:
    case 2:
    case 3:
    case 4:
        return bytes.size() == static_cast<std::size_t>(byte_at(bytes, 2)) + 5;
    case 5:
    case 6:
    case 8:
    case 15:
    case 16:
        return bytes.size() == kFixedLength;
    default:
        return true; // a function that is not known here: the order decides
    }
}

/// Whether the layout is one that a request of this function has.
bool request_layout(int function, std::string_view bytes) {
    switch (function) {
    case 1:
    case 2:
    case 3:
    case 4:
    case 5:
    case 6:
    case 8:
        return bytes.size() == kFixedLength;
    case 15:
    case 16:
        return bytes.size() > 6 &&
               bytes.size() == static_cast<std::size_t>(byte_at(bytes, 6)) + kWriteHeadAndCrc;
    default:
        return true;
    }
}

bool answers(std::string_view bytes, std::string_view pending) {
    if (pending.empty() || bytes.substr(0, 2) != pending.substr(0, 2)) return false;
    const int function = byte_at(bytes, 1);
    if (!reply_layout(function, bytes)) return false;
    // Echoes repeat the request whole; a reply to a read never does.
    const bool echo = function == 5 || function == 6 || function == 8;
    const bool read = function >= 1 && function <= 4;
    return echo ? bytes == pending : !read || bytes != pending;
}

} // namespace

FrameInfo classify_frame(std::string_view bytes, std::string_view pending) {
    FrameInfo info;
    if (bytes.size() < kMinFrame || !crc_fits(bytes)) return info;
    info.address = byte_at(bytes, 0);
    const int code = byte_at(bytes, 1);
    info.function = code & ~kExceptionBit;
    if ((code & kExceptionBit) != 0 && bytes.size() == kExceptionLength)
        info.kind = FrameKind::ExceptionReply;
    else if (!answers(bytes, pending) && request_layout(code, bytes))
        info.kind = FrameKind::Request;
    else
        info.kind = FrameKind::Reply;
    return info;
}

} // namespace pelvan
