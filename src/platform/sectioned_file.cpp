#include "platform/sectioned_file.h"

#include <algorithm>
#include <optional>
#include <string_view>

#include "platform/sectioned_text.h"
#include "platform/whole_file.h"
#include "text/utf16.h"

namespace pelvan {
namespace {

std::optional<std::string> read_value(const std::string& section, const std::string& key,
                                      const std::string& file) {
    std::string bytes;
    if (read_whole_file(file, bytes) != 0) return std::nullopt;
    const auto order = utf16_order(bytes);
    return find_value(order ? from_utf16(bytes, *order) : bytes, section, key);
}

// A sign and the digits behind it, as far as they go, too many of them wrap; behind spaces, which
// quotes may have kept.
std::uint32_t leading_integer(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
    const bool negative = text.starts_with('-');
    if (negative || text.starts_with('+')) text.remove_prefix(1);
    std::uint32_t number = 0;
    for (const char c : text) {
        if (c < '0' || c > '9') break;
        number = number * 10 + static_cast<std::uint32_t>(c - '0');
    }
    return negative ? 0 - number : number;
}

std::string without_trailing_spaces(const std::string& text) {
    return text.substr(0, text.find_last_not_of(' ') + 1);
}

// A line end inside a text would make lines of their own out of what follows it.
bool is_one_line(std::string_view text) {
    return text.find_first_of("\r\n") == text.npos;
}

} // namespace

std::uint32_t GetPrivateProfileIntA(const std::string& section, const std::string& key,
                                    std::int32_t default_value, const std::string& file) {
    const auto value = read_value(section, key, file);
    // A value without digits is 0; only a missing or empty one is the default.
    if (!value || value->empty()) return static_cast<std::uint32_t>(default_value);
    return leading_integer(*value);
}

std::string GetPrivateProfileStringA(const std::string& section, const std::string& key,
                                     const std::string& default_value, std::size_t size,
                                     const std::string& file) {
    if (size == 0) return {};
    auto value = read_value(section, key, file);
    if (!value) value = without_trailing_spaces(default_value);
    return value->substr(0, size - 1);
}

bool WritePrivateProfileStringA(const std::string& section, const std::string& key,
                                const std::string& value, const std::string& file) {
    if (!is_one_line(section) || !is_one_line(key) || !is_one_line(value)) return false;
    const auto changed = [&](std::string_view bytes) {
        const auto order = utf16_order(bytes); // as some editors save it; kept so
        if (order)
            return to_utf16(with_value(from_utf16(bytes, *order), section, key, value), *order);
        std::string text = with_value(bytes, section, key, value);
        // A file that lost a byte of its UTF-16 must not seem to have all of them again: nothing
        // that was written would be found.
        if (utf16_order(text)) text += '\n';
        return text;
    };
    return change_whole_file(file, changed) == 0;
}

} // namespace pelvan
