#include "protocols/modbus/whole_reply.h"

#include "protocols/modbus/crc.h"
#include "protocols/modbus/frame_length.h"
#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

constexpr unsigned kExceptionBit = 0x80;
constexpr std::size_t kHead = 2; // address and function

unsigned function_of(std::string_view frame) {
    return static_cast<unsigned char>(frame[1]);
}

std::size_t length_of(std::string_view request, std::string_view received) {
    // The data of a test come back as they are, and say nothing of their length.
    const auto family = function_family(static_cast<int>(function_of(received)));
    if (family == FunctionFamily::kLoopBack) return request.size();
    const ExpectedLength expected = expected_reply_length(received);
    return expected.known() ? expected.bytes : 0;
}

} // namespace

bool is_whole_reply(std::string_view request, std::string_view received) {
    if (request.size() < kHead || received.size() < kHead || received[0] != request[0])
        return false;
    const unsigned function = function_of(request);
    if (function_of(received) != function && function_of(received) != (function | kExceptionBit))
        return false;
    return received.size() == length_of(request, received) && has_valid_crc(received);
}

std::size_t bytes_beside_answer(std::string_view request, std::string_view reply) {
    const auto answers = [&](std::string_view piece) {
        return can_answer(request, piece) && has_valid_crc(piece);
    };
    for (std::size_t size = kShortestReply; size < reply.size(); ++size) {
        const std::size_t beside = reply.size() - size;
        if (answers(reply.substr(beside)) || answers(reply.substr(0, size))) return beside;
    }
    return 0;
}

} // namespace pelvan
