#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

constexpr unsigned kExceptionBit = 0x80;
constexpr std::size_t kCrcSize = 2;
constexpr std::size_t kExceptionSize = 5;
constexpr std::size_t kReadOverhead = 5; // address, function, byte count, CRC
constexpr std::size_t kWriteReplySize = 8;
constexpr std::size_t kEchoSize = 6;   // address, function, register, value or count
constexpr std::size_t kHeaderSize = 4; // address, function, register or sub-function
constexpr std::size_t kMinRequest = kEchoSize + kCrcSize;

unsigned byte_at(std::string_view frame, std::size_t at) {
    return at < frame.size() ? static_cast<unsigned char>(frame[at]) : 0U;
}

unsigned word_at(std::string_view frame, std::size_t at) {
    return byte_at(frame, at) << 8U | byte_at(frame, at + 1);
}

bool echoes(std::string_view request, std::string_view reply, std::size_t length) {
    return reply.substr(0, length) == request.substr(0, length);
}

/// A read's reply that holds so many bytes of values.
bool holds(std::string_view reply, std::size_t bytes) {
    return reply.size() == kReadOverhead + bytes && byte_at(reply, 2) == bytes;
}

/// Stands behind "refused: ", "The controller refused the command: " and the like.
const char* exception_words(int code) {
    switch (code) {
    case 1:
        return "no such function";
    case 2:
        return "no such register";
    case 3:
        return "value not allowed";
    case 4:
        return "device failure";
    case 5:
        return "still at work on it";
    case 6:
        return "device busy";
    case 7:
        return "cannot be done";
    case 8:
        return "memory error";
    case 10:
        return "gateway without a path";
    case 11:
        return "no answer behind the gateway";
    default:
        return nullptr;
    }
}

/// Sub-function 0 returns what it got; others return figures of the controller's own.
bool answers_diagnostics(std::string_view request, std::string_view reply) {
    const bool all = word_at(request, 2) == 0;
    return reply.size() == request.size() &&
           echoes(request, reply, all ? request.size() - kCrcSize : kHeaderSize);
}

} // namespace

bool is_exception(std::string_view reply) {
    return (byte_at(reply, 1) & kExceptionBit) != 0;
}

std::string exception_text(int code) {
    const std::string number = "exception " + std::to_string(code);
    const char* const words = exception_words(code);
    return words == nullptr ? number : words + (" (" + number + ")");
}

bool is_read(std::string_view request) {
    const FunctionFamily family = function_family(static_cast<int>(byte_at(request, 1)));
    return family == FunctionFamily::kReadBits || family == FunctionFamily::kReadWords;
}

bool can_answer(std::string_view request, std::string_view reply) {
    if (request.size() < kMinRequest || reply.size() < kExceptionSize) return false;
    if (reply[0] != request[0]) return false;
    if (byte_at(reply, 1) == (byte_at(request, 1) | kExceptionBit))
        return reply.size() == kExceptionSize;
    if (reply[1] != request[1]) return false;
    switch (function_family(static_cast<int>(byte_at(request, 1)))) {
    case FunctionFamily::kReadBits:
        return holds(reply, (word_at(request, 4) + 7U) / 8U);
    case FunctionFamily::kReadWords:
        return holds(reply, std::size_t{2} * word_at(request, 4));
    case FunctionFamily::kLoopBack:
        return answers_diagnostics(request, reply);
    case FunctionFamily::kWriteSingle:
    case FunctionFamily::kWriteMultiple:
        return reply.size() == kWriteReplySize && echoes(request, reply, kEchoSize);
    case FunctionFamily::kUnknown:
        break;
    }
    return false;
}

} // namespace pelvan
