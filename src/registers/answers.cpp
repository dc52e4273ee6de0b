#include "registers/answers.h"

#include <algorithm>

#include "protocols/modbus/crc.h"
#include "protocols/modbus/modbus.h"
#include "protocols/modbus/whole_reply.h"

namespace pelvan {
namespace {

constexpr unsigned kReadHolding = 3;

/// Longest replies to a read, beside two bytes a register, and to a write of one register.
constexpr std::size_t kReadReply = 5;
constexpr std::size_t kWriteReply = 8;

unsigned byte_at(const std::string& frame, std::size_t at) {
    return static_cast<unsigned char>(frame[at]);
}

std::size_t registers_in(const std::string& request) {
    return byte_at(request, 5);
}

} // namespace

std::size_t longest_reply(const std::string& request) {
    return byte_at(request, 1) == kReadHolding ? kReadReply + 2 * registers_in(request)
                                               : kWriteReply;
}

float register_in(const std::string& request) {
    return static_cast<float>(byte_at(request, 2) * 256 + byte_at(request, 3));
}

bool answers(const std::string& reply, const std::string& request) {
    constexpr unsigned kExceptionBit = 0x80;
    if (reply.size() < 2 || reply[0] != request[0]) return false;
    return (byte_at(reply, 1) & ~kExceptionBit) == byte_at(request, 1) &&
           reply.size() <= longest_reply(request);
}

/// What is shorter than the answer to a read of several registers may be that to a read of one.
bool is_sound(const std::string& reply, const std::string& request) {
    const bool of_several = byte_at(request, 1) == kReadHolding && registers_in(request) > 1;
    const bool fits = of_several ? can_answer(request, reply) : answers(reply, request);
    return fits && has_valid_crc(reply);
}

/// Whether there is a whole answer among the bytes that nobody is owed.
bool AnswerBalance::take(std::size_t bytes) {
    const long left = owed_ - static_cast<long>(bytes);
    owed_ = std::max(left, 0L);
    return owed_ - left >= static_cast<long>(kShortestReply);
}

bool AnswerBalance::exchanged(const std::string& request, const std::string& reply,
                              std::size_t stray) {
    const std::size_t beside = bytes_beside_answer(request, reply);
    const bool twice = take(stray + beside);
    if (beside == 0 && !is_sound(reply, request)) {
        owed_ += static_cast<long>(longest_reply(request));
        static_cast<void>(take(reply.size()));
    }
    return twice;
}

bool AnswerBalance::surplus(std::size_t discarded) {
    return take(discarded);
}

} // namespace pelvan
