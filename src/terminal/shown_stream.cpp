#include "terminal/shown_stream.h"

#include "text/numbers.h"

namespace pelvan {
namespace {

std::uint8_t byte_at(std::string_view text, std::size_t at) {
    return at < text.size() ? static_cast<std::uint8_t>(text[at]) : std::uint8_t{0};
}

bool continues(std::uint8_t byte) {
    return (byte & 0xC0U) == 0x80U;
}

/// How many bytes the printable character has that the text begins with; 0 when it is none.
std::size_t printable_length(std::string_view text) {
    const std::uint8_t first = byte_at(text, 0);
    const std::uint8_t second = byte_at(text, 1);
    if (first < 0x80) return (first >= ' ' && first != 0x7F) || first == '\n' ? 1 : 0;
    if (!continues(second)) return 0;
    // U+0080 to U+009F are control characters, and what has a shorter form is no UTF-8.
    if (first >= 0xC2 && first <= 0xDF) return first == 0xC2 && second < 0xA0 ? 0 : 2;
    if (!continues(byte_at(text, 2))) return 0;
    if ((first & 0xF0U) == 0xE0U)
        return (first == 0xE0 && second < 0xA0) || (first == 0xED && second >= 0xA0) ? 0 : 3;
    const bool in_range = first >= 0xF0 && first <= 0xF4 && (first != 0xF0 || second >= 0x90) &&
                          (first != 0xF4 || second < 0x90);
    return in_range && continues(byte_at(text, 3)) ? 4 : 0;
}

} // namespace

std::string shown_text(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    while (!text.empty()) {
        const std::size_t length = printable_length(text);
        if (length > 0)
            out += text.substr(0, length);
        else
            out += "\\x" + hex_text(byte_at(text, 0), 2);
        text.remove_prefix(length > 0 ? length : 1);
    }
    return out;
}

bool ShownStream::Buffer::worked() {
    if (target_) return true;
    if (failed_) failed_();
    return false;
}

bool ShownStream::Buffer::write(std::string_view text) {
    target_ << shown_text(text);
    return worked();
}

ShownStream::Buffer::int_type ShownStream::Buffer::overflow(int_type c) {
    if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
    const char character = traits_type::to_char_type(c);
    return write({&character, 1}) ? c : traits_type::eof();
}

// Whole texts come in one call, so that a character of several bytes is seen whole.
std::streamsize ShownStream::Buffer::xsputn(const char* text, std::streamsize size) {
    return write({text, static_cast<std::size_t>(size)}) ? size : 0;
}

int ShownStream::Buffer::sync() {
    target_.flush();
    return worked() ? 0 : -1;
}

} // namespace pelvan
