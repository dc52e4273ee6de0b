// What the fuzz targets share. A target is one source: a function that takes the bytes of a run and
// a `Target` that names it. libfuzzer.cpp hands it what clang's libFuzzer makes up, replay.cpp the
// kept corpus and copies of it that are damaged at random, with any compiler.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace pelvan::fuzz {

/// The bytes of a run, taken from the front; what is taken behind their end is 0 or empty.
class Input {
  public:
    explicit Input(std::string_view bytes) : bytes_(bytes) {}

    [[nodiscard]] bool empty() const { return bytes_.empty(); }
    std::uint8_t byte() {
        const std::string_view one = take(1);
        return one.empty() ? std::uint8_t{0} : static_cast<std::uint8_t>(one[0]);
    }
    unsigned word() {
        const unsigned high = byte();
        return high << 8U | byte();
    }
    /// 0 to `limit` - 1; `limit` is at most 256.
    unsigned below(unsigned limit) { return byte() % limit; }
    bool flag() { return (byte() & 1U) != 0; }
    /// As many bytes as a byte before them says.
    std::string_view piece() {
        const std::size_t length = byte();
        return take(length);
    }
    /// Up to a line feed, which goes too.
    std::string_view line() {
        const std::string_view found = take(std::min(bytes_.find('\n'), bytes_.size()));
        take(1);
        return found;
    }
    std::string_view rest() { return take(bytes_.size()); }

  private:
    std::string_view take(std::size_t length) {
        const std::string_view taken = bytes_.substr(0, length);
        bytes_.remove_prefix(taken.size());
        return taken;
    }
    std::string_view bytes_;
};

/// A copy of bytes behind which nothing may be read: the address sanitizer sees it.
class Exact {
  public:
    explicit Exact(std::string_view bytes)
        : size_(bytes.size()), bytes_(std::make_unique<char[]>(size_)) {
        std::copy(bytes.begin(), bytes.end(), bytes_.get());
    }
    [[nodiscard]] std::string_view view() const { return {bytes_.get(), size_}; }

  private:
    std::size_t size_;
    std::unique_ptr<char[]> bytes_;
};

/// Ends the run as a crash would when the property does not hold.
inline void require(bool holds, const char* property) {
    if (holds) return;
    std::fprintf(stderr, "Does not hold: %s\n", property);
    std::abort();
}

[[nodiscard]] inline bool is_printable(std::string_view text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Whether no byte of the text would control a terminal or break a line.
[[nodiscard]] inline bool has_no_controls(std::string_view text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return (c >= '\0' && c < ' ' && c != '\t') || c == '\x7F'; });
}

struct Target {
    const char* name;
    void (*run)(Input& input);

    Target(const char* given_name, void (*given_run)(Input&)) : name(given_name), run(given_run) {
        all().push_back(this);
    }
    /// All that are linked into the program.
    static std::vector<const Target*>& all() {
        static std::vector<const Target*> targets;
        return targets;
    }
};

} // namespace pelvan::fuzz
