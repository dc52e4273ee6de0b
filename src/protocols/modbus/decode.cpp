#include <algorithm>

#include "platform/run_time_error.h"
#include "protocols/modbus/function_codes.h"
#include "protocols/modbus/item_writer.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

constexpr std::size_t kMinFrame = 5;
constexpr std::size_t kFixedFrame = 8;
constexpr std::uint8_t kExceptionBit = 0x80;
constexpr float kCrcErrorValue = -32200;
/// "SmartDec" clears elements 0 to 65 only; what a longer reply left above them stays.
constexpr std::size_t kSmartSlots = 66;

constexpr const char* kCountError = "Character Count error occurred.  Verify Communications.";
constexpr const char* kNumberError = "-32100";
constexpr const char* kCrcRemark = "<--CRC ERROR!";
constexpr const char* kSmartCrcError = "RESPONSE FROM CONTROLLER HAS CRC ERROR!";
constexpr const char* kExceptionError = "Exception Error: ";

/// One frame on its way into one rendering. Positions count from 0.
class FrameDecoder {
  public:
    FrameDecoder(ModbusState& state, Rendering rendering, bool is_request, std::string_view frame)
        : state_(state), rendering_(rendering), is_request_(is_request), frame_(frame) {}

    /// The text of a frame shorter than any frame can be.
    std::string short_frame();
    std::string crc_error();
    /// The text of a frame whose CRC is right.
    std::string contents();
    void clear_values();

  private:
    [[nodiscard]] bool smart() const { return rendering_ == Rendering::kSmartDecimal; }
    [[nodiscard]] std::uint8_t byte_at(std::size_t at) const {
        return static_cast<std::uint8_t>(frame_[at]);
    }
    [[nodiscard]] std::uint16_t word_at(std::size_t at) const {
        return static_cast<std::uint16_t>(byte_at(at) << 8 | byte_at(at + 1));
    }
    [[nodiscard]] FunctionFamily family() const { return function_family(byte_at(1)); }
    [[nodiscard]] bool length_fits() const;

    std::string exception_reply();
    void fields(ItemWriter& out);
    void two_fields(ItemWriter& out) const;
    void write_request(ItemWriter& out) const;
    void bits_reply(ItemWriter& out);
    void words_reply(ItemWriter& out);
    void crc_bytes(ItemWriter& out) const;
    void store(float value);

    ModbusState& state_;
    Rendering rendering_;
    bool is_request_;
    std::string_view frame_;
    std::size_t stored_ = 0;
};

std::string FrameDecoder::short_frame() {
    state_.gReplyValues[1] = kNoReplyValue;
    if (smart()) return {};
    if (rendering_ == Rendering::kDecimal) return std::string(frame_);
    ItemWriter out(rendering_, frame_.size());
    for (std::size_t at = 0; at < frame_.size(); ++at)
        out.byte(byte_at(at));
    return out.take();
}

void FrameDecoder::clear_values() {
    auto& values = state_.gReplyValues;
    std::fill_n(values.begin(), smart() ? kSmartSlots : values.size(), kNotFilled);
}

std::string FrameDecoder::crc_error() {
    // The marker does not stay: element 1 holds the third byte after a CRC error. The order is
    // deliberate; keep it.
    state_.gReplyValues[1] = kCrcErrorValue;
    state_.gReplyValues[1] = byte_at(2);
    if (smart()) return kSmartCrcError;
    ItemWriter out(rendering_, kMinFrame);
    out.byte(byte_at(0));
    out.byte(byte_at(1));
    out.byte(byte_at(2));
    out.word(word_at(3));
    out.remark(kCrcRemark);
    return out.take();
}

std::string FrameDecoder::contents() {
    if ((byte_at(1) & kExceptionBit) != 0) return exception_reply();
    if (!length_fits()) {
        state_.gReplyValues[1] = kNoReplyValue;
        const bool number =
            family() == FunctionFamily::kWriteSingle || family() == FunctionFamily::kLoopBack;
        return number ? kNumberError : kCountError;
    }
    ItemWriter out(rendering_, frame_.size());
    out.packet_byte(byte_at(0));
    out.packet_byte(byte_at(1));
    fields(out);
    return out.take();
}

std::string FrameDecoder::exception_reply() {
    state_.gReplyValues[1] = byte_at(2);
    // Data logging takes the function byte from position 18 and the code from position 22.
    if (smart())
        return kExceptionError + std::to_string(byte_at(1)) + " " + std::to_string(byte_at(2));
    ItemWriter out(rendering_, frame_.size());
    for (std::size_t at = 0; at < frame_.size(); ++at)
        out.byte(byte_at(at));
    return out.take();
}

/// Whether the frame is as long as its function, and the byte count in it, say.
bool FrameDecoder::length_fits() const {
    const std::size_t size = frame_.size();
    switch (family()) {
    case FunctionFamily::kReadBits:
    case FunctionFamily::kReadWords:
        return size == (is_request_ ? kFixedFrame : byte_at(2) + 5U);
    case FunctionFamily::kWriteSingle:
    case FunctionFamily::kLoopBack:
        return size == kFixedFrame;
    case FunctionFamily::kWriteMultiple:
        // A request may be longer than its byte count says, but must hold the words and the CRC.
        return is_request_ ? size >= 7 && size >= byte_at(6) + 9U : size == kFixedFrame;
    case FunctionFamily::kUnknown:
        break;
    }
    return true;
}

void FrameDecoder::fields(ItemWriter& out) {
    switch (family()) {
    case FunctionFamily::kReadBits:
        return is_request_ ? two_fields(out) : bits_reply(out);
    case FunctionFamily::kReadWords:
        return is_request_ ? two_fields(out) : words_reply(out);
    case FunctionFamily::kWriteMultiple:
        return is_request_ ? write_request(out) : two_fields(out);
    case FunctionFamily::kWriteSingle:
        out.word(word_at(2));
        out.signed_word(word_at(4));
        return crc_bytes(out);
    case FunctionFamily::kLoopBack:
        // Of the echo, the data field is the value; the request shows what was asked, too.
        is_request_ ? out.word(word_at(2)) : out.packet_word(word_at(2));
        out.word(word_at(4));
        return crc_bytes(out);
    case FunctionFamily::kUnknown:
        // Address and function are all that can be told of such a frame.
        state_.gReplyValues[1] = kNoReplyValue;
        if (!smart()) return; // they stand there already
        out.byte(byte_at(0));
        out.byte(byte_at(1));
        return;
    }
}

void FrameDecoder::two_fields(ItemWriter& out) const {
    out.word(word_at(2));
    out.word(word_at(4));
    crc_bytes(out);
}

void FrameDecoder::write_request(ItemWriter& out) const {
    constexpr std::size_t kFirst = 7;
    const std::size_t end = kFirst + byte_at(6);
    out.word(word_at(2));
    out.packet_word(word_at(4));
    out.packet_byte(byte_at(6));
    // Only the first data word is shown as a signed number; the others stay 0 to 65535.
    if (end >= kFirst + 2) out.signed_word(word_at(kFirst));
    std::size_t at = kFirst + 2;
    for (; at + 2 <= end; at += 2)
        out.word(word_at(at));
    if (byte_at(6) % 2 != 0) out.byte(byte_at(end - 1));
    crc_bytes(out);
}

void FrameDecoder::bits_reply(ItemWriter& out) {
    out.packet_byte(byte_at(2));
    // With the whole packet the two bytes of the CRC are stored behind the data, too.
    const std::size_t end = frame_.size() - (smart() ? 2 : 0);
    for (std::size_t at = 3; at < end; ++at) {
        out.byte(byte_at(at));
        store(byte_at(at));
    }
}

void FrameDecoder::words_reply(ItemWriter& out) {
    out.packet_byte(byte_at(2));
    const std::size_t end = frame_.size() - 2;
    std::size_t at = 3;
    for (; at + 2 <= end; at += 2) {
        out.signed_word(word_at(at));
        store(static_cast<std::int16_t>(word_at(at)));
    }
    // An odd byte count leaves half a word.
    if (at < end) {
        out.byte(byte_at(at));
        store(byte_at(at));
    }
    crc_bytes(out);
}

void FrameDecoder::crc_bytes(ItemWriter& out) const {
    out.packet_byte(byte_at(frame_.size() - 2));
    out.packet_byte(byte_at(frame_.size() - 1));
}

void FrameDecoder::store(float value) {
    ++stored_;
    if (stored_ >= state_.gReplyValues.size()) throw RunTimeError(error_number::kSubscript);
    state_.gReplyValues[stored_] = value;
}

/// What the three decoders have in common: length, clearing, CRC, then the contents.
std::string decode(Modbus& modbus, Rendering rendering, bool is_request, std::string_view frame) {
    FrameDecoder decoder(modbus.state(), rendering, is_request, frame);
    if (frame.size() < kMinFrame) return decoder.short_frame();
    decoder.clear_values();
    // A request has just been built: the stored CRC is its own and is not worked out again.
    if (!is_request) {
        modbus.ModbusCrc(frame.substr(0, frame.size() - 2));
        const auto low = static_cast<std::uint8_t>(frame[frame.size() - 2]);
        const auto high = static_cast<std::uint8_t>(frame.back());
        if (low != modbus.state().gCrcLow || high != modbus.state().gCrcHigh)
            return decoder.crc_error();
    }
    return decoder.contents();
}

} // namespace

std::string Modbus::ModbusDecodeDecimal(std::int16_t is_request, std::string_view frame) {
    return decode(*this, Rendering::kDecimal, is_request != 0, frame);
}

std::string Modbus::ModbusDecodeHex(std::int16_t is_request, std::string_view frame) {
    return decode(*this, Rendering::kHexadecimal, is_request != 0, frame);
}

std::string Modbus::ModbusDecodeSmartDecimal(std::int16_t is_request, std::string_view frame) {
    return decode(*this, Rendering::kSmartDecimal, is_request != 0, frame);
}

} // namespace pelvan
