// Sectioned key=value files: a key is set in any file, and everything else in it stays. The first
// three lines are section, key and value.
#include "harness.h"
#include "platform/sectioned_file.h"
#include "platform/sectioned_text.h"
#include "scratch_file.h"
#include "text/strings.h"
#include "text/utf16.h"

namespace pelvan::fuzz {
namespace {

/// Whether the text, as a name or a value in a file, begins and ends with itself: spaces round it
/// and a pair of quotes belong to the file.
bool stands_alone(std::string_view text) {
    const auto is_edge = [](char c) { return (c >= '\0' && c <= ' ') || c == '"' || c == '\''; };
    return !text.empty() && !is_edge(text.front()) && !is_edge(text.back()) &&
           text.find_first_of("\r\n") == text.npos;
}

bool is_name(std::string_view text) {
    return stands_alone(text) && text.find_first_of("[]=;") == text.npos;
}

/// What of `before` is no longer in `after`.
std::string_view removed(std::string_view before, std::string_view after) {
    const auto front = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    const auto begin = static_cast<std::size_t>(front.first - before.begin());
    before.remove_prefix(begin);
    after.remove_prefix(begin);
    const auto back = std::mismatch(before.rbegin(), before.rend(), after.rbegin(), after.rend());
    before.remove_suffix(static_cast<std::size_t>(back.first - before.rbegin()));
    return before;
}

struct Entry {
    std::string section;
    std::string key;
    std::string value;
};

void set_in_text(std::string_view text, const Entry& entry) {
    static_cast<void>(find_value(text, entry.section, entry.key));
    const std::string set = with_value(text, entry.section, entry.key, entry.value);
    const std::string_view gone = removed(text, set);
    require(std::count(gone.begin(), gone.end(), '\n') <= 1, "one line is changed at most");
    if (!is_name(entry.section) || !is_name(entry.key) || !stands_alone(entry.value)) return;
    require(find_value(set, entry.section, entry.key) == entry.value, "what was set is found");
    require(with_value(set, entry.section, entry.key, entry.value) == set, "setting again is none");
    for (const char* other : {"DEVICE 1 COMM PORT", "PORT 1", "K"})
        for (const char* section : {"COMMS CONTROLS", "SERIAL DEVICES", "S"})
            if (upper_case(entry.key) != other || upper_case(entry.section) != section)
                require(find_value(set, section, other) == find_value(text, section, other),
                        "other keys keep their values");
}

void set_in_file(std::string_view bytes, const Entry& entry) {
    const std::string path = scratch_file(bytes);
    const bool written = WritePrivateProfileStringA(entry.section, entry.key, entry.value, path);
    const std::string read =
        GetPrivateProfileStringA(entry.section, entry.key, "none", 100000, path);
    static_cast<void>(GetPrivateProfileIntA(entry.section, entry.key, -1, path));
    if (!written)
        require(testing::read_file(path) == bytes, "a file is written whole or not at all");
    const bool plain = is_printable(entry.section + entry.key + entry.value);
    if (written && plain && is_name(entry.section) && is_name(entry.key) &&
        stands_alone(entry.value))
        require(read == entry.value, "what was written is read");
    if (written)
        require(utf16_order(bytes) == utf16_order(testing::read_file(path)), "UTF-16 stays so");
}

void run(Input& input) {
    const bool as_file = input.below(8) == 0;
    const Entry entry{std::string(input.line()), std::string(input.line()),
                      std::string(input.line())};
    const Exact bytes(input.rest());
    as_file ? set_in_file(bytes.view(), entry) : set_in_text(bytes.view(), entry);
}

const Target target("sectioned_files", run);

} // namespace
} // namespace pelvan::fuzz
