#include "network/module/telnet_commands.h"

#include <algorithm>

namespace pelvan {
namespace {

// RFC 854 and 855.
constexpr unsigned char kEscape = 255; // IAC; twice is a byte of data
constexpr unsigned char kBlockBegin = 250;
constexpr unsigned char kBlockEnd = 240;
constexpr unsigned char kFirstOption = 251; // WILL, WON'T, DO and DON'T: a byte follows

} // namespace

void TelnetCommands::take(unsigned char byte, unsigned char*& end) {
    switch (state_) {
    case State::Data:
        if (byte == kEscape) state_ = State::Escape;
        return;
    case State::Escape:
        if (byte == kEscape) {
            state_ = State::Data;
            return;
        }
        *end++ = kEscape;
        state_ = byte == kBlockBegin    ? State::Block
                 : byte >= kFirstOption ? State::Option
                                        : State::Data;
        break;
    case State::Option:
        state_ = State::Data;
        break;
    case State::Block:
        if (byte == kEscape) state_ = State::BlockEscape;
        break;
    case State::BlockEscape:
        state_ = byte == kBlockEnd ? State::Data : State::Block;
        break;
    }
    *end++ = byte;
}

std::size_t TelnetCommands::keep(unsigned char* bytes, std::size_t count) {
    // A byte that was kept back before this piece makes the result longer than what was read of it.
    if (holds_escape()) std::copy_backward(bytes, bytes + count, bytes + count + 1);
    const unsigned char* next = bytes + (holds_escape() ? 1 : 0);
    unsigned char* end = bytes;
    for (std::size_t i = 0; i < count; ++i)
        take(*next++, end);
    return static_cast<std::size_t>(end - bytes);
}

std::size_t TelnetCommands::rest(unsigned char* bytes, std::size_t count) {
    if (count == 0 || !holds_escape()) return count;
    std::copy_backward(bytes, bytes + count, bytes + count + 1);
    *bytes = kEscape;
    state_ = State::Data;
    return count + 1;
}

} // namespace pelvan
