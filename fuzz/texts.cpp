// The small readers of texts that files, options and boxes hold: numbers, lists of numbers, device
// texts, attributes of registers, texts for a terminal.
#include <cmath>
#include <cstring>

#include "harness.h"
#include "listen/frame_selection.h"
#include "logging/row_value.h"
#include "platform/run_time_error.h"
#include "platform/serial_line.h"
#include "profile/profile_format.h"
#include "protocols/modbus/modbus.h"
#include "registers/register_attributes.h"
#include "registers/setup_file.h"
#include "simulator/line/device_text.h"
#include "terminal/json.h"
#include "terminal/shown_stream.h"
#include "text/bytes.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "text/utf16.h"

namespace pelvan::fuzz {
namespace {

void numbers(std::string_view text) {
    const double value = leading_number(text);
    require(!std::isnan(value), "a text is never 'not a number'");
    // The C library reads the same number; it takes more (hexadecimal, words), never less.
    if (is_numeric(text) && text.find('\0') == text.npos)
        require(value ==
                    std::strtod(std::string(text.substr(text.find_first_not_of(" \t"))).c_str(),
                                nullptr),
                "a number is the one that is written");
    if (!std::isfinite(value)) return;
    const std::string plain = plain_number(value);
    require(is_numeric(plain), "a plain number is a number");
    require(plain_number(leading_number(plain)) == plain,
            "a plain number is read as it is written");
    if (std::abs(value) > 1e-20)
        require(std::abs(leading_number(plain) - value) <= std::abs(value) * 1e-14,
                "15 digits are kept");
    if (const auto whole = whole_number(text, -32768, 32767))
        require(static_cast<double>(*whole) == value, "a whole number is a number");
    if (const auto hex = hex_number(text))
        require(hex_number(hex_text(*hex, 1)) == hex, "hexadecimal is read as it is written");
}

/// What runs may only end in a run-time error of its own.
template <class Action> void run_trapped(Action action) {
    try {
        action();
    } catch (const RunTimeError&) {
    }
}

void values(std::string_view given, double decimals) {
    const std::string text(given);
    run_trapped([&] {
        const std::vector<std::string> words = split(SplitLongToWords(text), ' ');
        if (words.size() != 2) return;
        const auto word = [&](std::size_t i) {
            return static_cast<std::int16_t>(leading_number(words[i]));
        };
        const double whole = round_half_even(leading_number(text));
        require(std::fmod(whole - join_words(word(0), word(1)), 4294967296.0) == 0,
                "two words are the number");
    });
    run_trapped([&] { static_cast<void>(join_32_bit(text)); });
    run_trapped([&] { static_cast<void>(scaled_value(text, decimals)); });
    static_cast<void>(exception_value(text));
    run_trapped([&] { static_cast<void>(int16_from(leading_number(text))); });
    run_trapped([&] { static_cast<void>(int32_from(leading_number(text))); });
}

void pieces(std::string_view text) {
    const std::vector<std::string> parts = split(text, ',');
    std::string joined = parts[0];
    for (std::size_t i = 1; i < parts.size(); ++i)
        joined += "," + parts[i];
    require(joined == text, "the pieces are the text");
    require(trim(trim(text)) == trim(text), "a trimmed text has no spaces");
    for (const std::size_t length : {std::size_t{3}, std::size_t{16}, text.size() / 2 + 3}) {
        const std::string cut = shortened(text, length);
        require(cut.size() <= length, "a shortened text is short");
        // What is shown of well-formed text is well-formed: nothing of it is escaped.
        if (shown_text(text) == text) require(shown_text(cut) == cut, "no character is cut");
    }
    for (const std::string& shown :
         {ascii_in_brackets(text), ascii_with_escapes(text), hex_bytes(text), decimal_bytes(text)})
        require(is_printable(shown), "bytes are shown in printable characters");
    require(has_no_controls(controls_in_brackets(text)) || text.find('\t') != text.npos,
            "control characters are shown in brackets");
}

void terminal_texts(std::string_view text) {
    const std::string shown = shown_text(text);
    require(shown_text(shown) == shown, "what may be shown is shown as it is");
    for (const char c : shown)
        require((c < '\0' || c >= ' ' || c == '\n') && c != '\x7F', "a terminal gets no control");
    require(is_printable(Json(text).text()), "JSON is ASCII");
}

void utf16_texts(std::string_view text) {
    for (const ByteOrder order : {ByteOrder::LittleEndian, ByteOrder::BigEndian}) {
        const std::string bytes = to_utf16(text, order);
        require(utf16_order(bytes) == order, "UTF-16 has its mark");
        const std::string back = from_utf16(bytes, order);
        require(to_utf16(back, order) == bytes, "UTF-16 is the same when it is written back");
    }
    if (const auto order = utf16_order(text))
        require(to_utf16(from_utf16(text, *order), *order) == text, "every character is kept");
}

void device_texts(std::string_view text) {
    const auto device = simulator::parse_simulated_device(std::string(text));
    if (device && !device->loopback) {
        require(device->address >= 1 && device->address <= 247, "addresses are 1 to 247");
        require(device->speed >= 1 && device->delay_ms >= 0, "times go forward");
        require(device->faults.lost >= 0 && device->faults.lost <= 1, "rates are 0 to 1");
    }
    if (const auto settings = parse_line_settings(std::string(text)))
        require(character_time_us(*settings) > 0, "characters take time");
    static_cast<void>(byte_filter(text));
}

void register_texts(std::string_view text) {
    const RegisterText read = parse_register_text(text);
    require(read.attributes.min <= read.attributes.max, "limits are in order");
    require(has_no_controls(read.problem) || !has_no_controls(text), "a problem is a sentence");
    ProfileField field;
    field.min = read.attributes.min;
    field.max = read.attributes.max;
    field.decimals = read.attributes.decimals;
    field.unit = read.attributes.unit;
    for (const int raw : {field.min, field.max, 0, -1}) {
        const auto parsed = ProfileFormat::parse_value(field, ProfileFormat::unit_text(field, raw));
        if (field.allows(raw)) require(parsed.raw == raw, "a value is read as it is written");
    }
    if (const auto parsed = ProfileFormat::parse_value(field, text); parsed.raw)
        require(field.allows(*parsed.raw), "only allowed values are taken");
    if (const auto line = parse_setup_line(text))
        require(std::isfinite(line->value) && line->register_number >= 0, "setups have numbers");
    static_cast<void>(model_in_header(text));
}

void run(Input& input) {
    const unsigned choice = input.below(7);
    const int decimals = static_cast<int>(input.below(64)) - 32;
    const Exact exact(input.rest());
    const std::string_view text = exact.view();
    switch (choice) {
    case 0:
        return numbers(text);
    case 1:
        return values(text, decimals);
    case 2:
        return pieces(text);
    case 3:
        return terminal_texts(text);
    case 4:
        return utf16_texts(text);
    case 5:
        return device_texts(text);
    default:
        return register_texts(text);
    }
}

const Target target("texts", run);

} // namespace
} // namespace pelvan::fuzz
