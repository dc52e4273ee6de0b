// Frames of Modbus RTU: the decoders in all formats, the lengths that frames promise, what counts
// as an answer, and the builder.
#include "harness.h"
#include "platform/run_time_error.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/frame_length.h"
#include "protocols/modbus/modbus.h"
#include "protocols/modbus/whole_reply.h"
#include "simulator/slaves/checks.h"

namespace pelvan::fuzz {
namespace {

using Decoder = std::string (Modbus::*)(std::int16_t, std::string_view);
constexpr Decoder kDecoders[] = {&Modbus::ModbusDecodeDecimal, &Modbus::ModbusDecodeHex,
                                 &Modbus::ModbusDecodeSmartDecimal};

/// The text; a reply with more values than there is room for ends in an error instead.
std::string decoded(Modbus& modbus, Decoder decoder, bool is_request, std::string_view frame) {
    try {
        return (modbus.*decoder)(is_request ? 1 : 0, frame);
    } catch (const RunTimeError& error) {
        require(error.number() == error_number::kSubscript, "only the room for values may end");
        return {};
    }
}

void decode(Modbus& modbus, std::string_view frame) {
    for (const bool is_request : {false, true}) {
        for (const Decoder decoder : kDecoders) {
            const std::string text = decoded(modbus, decoder, is_request, frame);
            require(text == decoded(modbus, decoder, is_request, frame), "a frame has one text");
            const bool is_short = frame.size() < 5;
            require(is_printable(text) || (is_short && text == frame), "texts can be read");
        }
    }
}

void lengths(std::string_view frame) {
    for (const auto length_of : {expected_request_length, expected_reply_length}) {
        const ExpectedLength whole = length_of(frame);
        if (!whole.known()) continue;
        require(whole.bytes >= 4, "frames have four bytes at least");
        // What the beginning says, more bytes do not change.
        for (std::size_t size = 0; size < std::min<std::size_t>(frame.size(), 12); ++size) {
            const ExpectedLength part = length_of(Exact(frame.substr(0, size)).view());
            require(part == whole ||
                        (part.state == ExpectedLength::State::NeedsMore && part.bytes > size),
                    "a length stays, or is waited for");
        }
    }
}

void pair(std::string_view request, std::string_view reply) {
    const bool whole = is_whole_reply(request, reply);
    if (whole) {
        require(has_valid_crc(reply), "a whole reply has its check");
        require(reply[0] == request[0] && (reply[1] & 0x7F) == (request[1] & 0x7F),
                "a reply is to its request");
    }
    if (can_answer(request, reply)) require(reply.size() >= 5, "an answer is a frame");
    static_cast<void>(is_exception(reply));
    static_cast<void>(is_read(request));
    static_cast<void>(exception_text(reply.size() > 2 ? reply[2] : 0));
}

/// A request that was built is whole, as long as it says, and its own decoders' business.
void build(Modbus& modbus, Input& input) {
    const auto function = static_cast<std::int16_t>(input.below(20));
    const auto address = static_cast<std::int16_t>(input.word());
    const auto start = static_cast<float>(input.word() + input.below(3) * 0.5);
    std::vector<float> values{0};
    while (!input.empty() && values.size() < 140)
        values.push_back(static_cast<float>(static_cast<int>(input.word()) - 32768));
    values.push_back(kValueListEnd);
    const std::string frame = modbus.ModbusBuildRequest(function, address, start, values);
    if (is_refusal(frame)) return;
    require(has_valid_crc(frame), "a request has its check");
    if (function >= 15)
        require(expected_request_length(frame).bytes == frame.size(), "a request says its length");
    decode(modbus, Exact(frame).view());
}

void run(Input& input) {
    ModbusState state;
    Modbus modbus(state);
    const unsigned choice = input.below(4);
    if (choice == 0) return build(modbus, input);
    if (choice == 1) {
        const Exact request(input.piece());
        const Exact reply(input.rest());
        return pair(request.view(), reply.view());
    }
    std::string bytes(input.rest());
    // A check that fits would be found by chance alone.
    if (choice == 2) bytes = simulator::with_modbus_crc(std::move(bytes));
    require(has_valid_crc(bytes) == (bytes.size() >= 2 && simulator::crc16(bytes, 0xFFFF) == 0),
            "both ends have the same check");
    const Exact frame(bytes);
    decode(modbus, frame.view());
    lengths(frame.view());
}

const Target target("modbus_frames", run);

} // namespace
} // namespace pelvan::fuzz
