// Modbus RTU: building a request frame from the user's fields and turning a frame into the text
// that the history windows show and the numbers that the tools work with. A frame is a text in
// which each character is one byte. Nothing here touches a port.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "protocols/modbus/neighbours.h"

namespace pelvan {

/// Modbus slice of the session state.
struct ModbusState {
    /// CRC of the frame that went through `ModbusCrc` last: the bytes that go out first and second.
    std::int16_t gCrcLow = 0;
    std::int16_t gCrcHigh = 0;
    /// Values of the last decoded frame, from element 1 upward.
    std::array<float, 259> gReplyValues{};
    /// What the controllers refused when several registers were read together.
    NeighbourMemory neighbours;
};

/// Ends a value array.
inline constexpr float kValueListEnd = -40000.1F;

/// Marks in `gReplyValues`.
inline constexpr float kNotFilled = -31000.0F;
inline constexpr float kNoReplyValue = -32100.0F;

/// Time-out and quiet count of Modbus exchanges of the console, the profiles and data logging.
inline constexpr float kModbusTimeoutMs = 2000;
inline constexpr std::int16_t kModbusQuietChars = 30;
inline constexpr std::int16_t kModbusChannel = 1;

class Modbus {
  public:
    explicit Modbus(ModbusState& state) : state_(state) {}

    /// Sets `gCrcLow` and `gCrcHigh` to the CRC-16 (reflected polynomial 0xA001) of all bytes.
    void ModbusCrc(std::string_view frame);

    /// The request frame with its CRC, or a text beginning with "Bad" that says which field is
    /// wrong.
    ///
    /// `values` is used from element 1 to the first `kValueListEnd` (or its last element). Negative
    /// values are rewritten in place as value + 65536, so that a list must be filled again before
    /// it is sent again. More than 127 values for function 15 or 16 are refused as bad data.
    [[nodiscard]] std::string ModbusBuildRequest(std::int16_t function, std::int16_t address,
                                                 float start_register, std::span<float> values);

    // The decoders. `is_request` nonzero: the frame is a request just built, whose CRC is taken as
    // right. Any bytes of any number end in a text and, where something is wrong, a mark in element
    // 1 of `gReplyValues`: -32100 for a frame under 5 bytes, of a wrong length or an unknown
    // function; the third byte for a wrong CRC and for an exception. Replies of functions 1 to 4
    // store their values from element 1 upward; other frames leave the elements at -31000.

    /// The whole packet in decimal, a space after every item. A frame under 5 bytes is returned as
    /// it is. Fills `gReplyValues`; 9 (subscript) for more values than it has room for.
    [[nodiscard]] std::string ModbusDecodeDecimal(std::int16_t is_request, std::string_view frame);
    /// The whole packet in hexadecimal: bytes in two digits, words in four; a frame under 5 bytes
    /// as its bytes. Values and marks as the decimal decoder.
    [[nodiscard]] std::string ModbusDecodeHex(std::int16_t is_request, std::string_view frame);
    /// The pertinent numbers alone, in decimal, with spaces between: the data values of a reply,
    /// register and value of a write; of a request, register and count or values. Empty for a frame
    /// under 5 bytes; address and function for an unknown function. Clears elements 0 to 65 only.
    [[nodiscard]] std::string ModbusDecodeSmartDecimal(std::int16_t is_request,
                                                       std::string_view frame);

    [[nodiscard]] ModbusState& state() { return state_; }

  private:
    ModbusState& state_;
};

/// Whether a builder's text is a refusal (it begins with "Bad") and not a frame.
[[nodiscard]] bool is_refusal(std::string_view text);

/// Whether a reply can be the answer to a request: address and function are the request's, and so
/// is the length, of a write also what it echoes; or it is an exception. Its CRC is not looked at.
[[nodiscard]] bool can_answer(std::string_view request, std::string_view reply);

/// Whether a reply's function byte says that it is an exception; any bytes will do.
[[nodiscard]] bool is_exception(std::string_view reply);

/// "no such register (exception 2)": what the code of an exception reply says; of a code that the
/// standard does not have, "exception 99" alone.
[[nodiscard]] std::string exception_text(int code);

/// Whether a request only reads, so that it may be sent twice.
[[nodiscard]] bool is_read(std::string_view request);

/// "H L": the two words of a 32-bit number given in decimal text, high word first, each signed; an
/// empty text stays empty. A number above the signed 32-bit range, up to 4294967295, has the words
/// of the same bits; 6 (overflow) beyond.
[[nodiscard]] std::string SplitLongToWords(const std::string& text);

/// The signed 32-bit number of two words.
[[nodiscard]] std::int32_t join_words(std::int16_t high, std::int16_t low);

} // namespace pelvan
