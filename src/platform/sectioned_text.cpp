#include "platform/sectioned_text.h"

#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
// What is ignored round a section name, a key and a value of a file. Of the arguments only spaces
// are ignored: a tab in an argument is content.
constexpr std::string_view kFileSpaces = " \t\v\f";

std::string_view without_spaces(std::string_view text) {
    const auto first = text.find_first_not_of(kFileSpaces);
    if (first == text.npos) return {};
    return text.substr(first, text.find_last_not_of(kFileSpaces) - first + 1);
}

// A line at `begin`: its content, and where the line after it begins.
struct Line {
    std::string_view content;
    std::size_t begin = 0;
    std::size_t next = 0;

    [[nodiscard]] bool is_header() const { return content.starts_with('['); }
    [[nodiscard]] bool is_key() const {
        return !is_header() && !content.starts_with(';') && content.find('=') != content.npos;
    }
    [[nodiscard]] bool has_section_name(const std::string& upper_name) const {
        // What stands behind the bracket is ignored, and a missing bracket forgiven.
        return is_header() &&
               upper_case(without_spaces(content.substr(1, content.find(']') - 1))) == upper_name;
    }
    [[nodiscard]] bool has_key_name(const std::string& upper_name) const {
        return is_key() &&
               upper_case(without_spaces(content.substr(0, content.find('=')))) == upper_name;
    }
};

Line line_at(std::string_view text, std::size_t begin) {
    const auto feed = text.find('\n', begin);
    const auto end = feed == text.npos ? text.size() : feed;
    auto content = text.substr(begin, end - begin);
    while (content.ends_with('\r'))
        content.remove_suffix(1);
    return {without_spaces(content), begin, feed == text.npos ? end : end + 1};
}

// Where a section and a key of it stand in a text.
struct Place {
    bool has_section = false;
    std::optional<Line> key;
    // Where a new key of the section goes: behind its last key, or else behind its header, so that
    // comments and empty lines which lead over to the next section stay with that one.
    std::size_t new_key_at = 0;
};

Place find_place(std::string_view text, std::string_view section, std::string_view key) {
    const std::string section_name = upper_case(trim(section));
    const std::string key_name = upper_case(trim(key));
    Place place;
    std::size_t at = 0;
    while (at < text.size() && !place.has_section) {
        const Line line = line_at(text, at);
        place.has_section = line.has_section_name(section_name);
        at = place.new_key_at = line.next;
    }
    while (at < text.size() && !place.key) {
        const Line line = line_at(text, at);
        if (line.is_header()) break;
        if (line.is_key()) place.new_key_at = line.next;
        if (line.has_key_name(key_name)) place.key = line;
        at = line.next;
    }
    return place;
}

std::string_view without_quotes(std::string_view value) {
    const bool quoted = value.size() >= 2 && value.front() == value.back() &&
                        (value.front() == '"' || value.front() == '\'');
    return quoted ? value.substr(1, value.size() - 2) : value;
}

} // namespace

std::optional<std::string> find_value(std::string_view text, std::string_view section,
                                      std::string_view key) {
    const auto line = find_place(text, section, key).key;
    if (!line) return std::nullopt;
    const auto value = line->content.substr(line->content.find('=') + 1);
    return std::string(without_quotes(without_spaces(value)));
}

std::string with_value(std::string_view text, std::string_view section, std::string_view key,
                       std::string_view value) {
    const Place place = find_place(text, section, key);
    std::string out;
    if (place.key) {
        // The key keeps its own spelling, and the spaces that somebody put round it.
        out = text.substr(0, text.find('=', place.key->begin) + 1);
        out.append(value).append(kLineEnd);
        return out.append(text.substr(place.key->next));
    }
    const std::size_t at = place.has_section ? place.new_key_at : text.size();
    out = text.substr(0, at);
    if (!out.empty() && !out.ends_with('\n')) out.append(kLineEnd);
    if (!place.has_section) out.append("[").append(trim(section)).append("]").append(kLineEnd);
    out.append(trim(key)).append("=").append(value).append(kLineEnd);
    return out.append(text.substr(at));
}

} // namespace pelvan
