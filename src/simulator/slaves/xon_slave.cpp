#include "simulator/slaves/xon_slave.h"

#include <algorithm>
#include <string>

#include "simulator/slaves/text_commands.h"
#include "text/strings.h"

namespace pelvan::simulator {
namespace {

constexpr char kReturn = '\r';

bool is_printable(char c) {
    return c >= ' ' && c <= '~';
}

} // namespace

std::optional<std::vector<Reply>> xon_replies(Station& station, std::string_view bytes) {
    const auto fits = [](char c) { return is_printable(c) || c == kReturn; };
    if (bytes.empty() || bytes.back() != kReturn ||
        !std::all_of(bytes.begin(), bytes.end(), fits)) {
        return std::nullopt;
    }
    std::vector<Reply> replies;
    for (const std::string& line : split(bytes.substr(0, bytes.size() - 1), kReturn)) {
        if (line.empty()) continue;
        const TextResult result = run_text_command(station, line);
        std::string text = result.response.empty() ? "OK" : result.response;
        if (result.error != text_error::kNone) text = "ERROR " + std::to_string(result.error);
        replies.push_back({ReplyKind::Text, text + kReturn, {}});
    }
    return replies;
}

bool is_xon_beginning(std::string_view bytes) {
    return !bytes.empty() && (bytes[0] == '?' || bytes[0] == '=') &&
           std::all_of(bytes.begin(), bytes.end(), is_printable);
}

} // namespace pelvan::simulator
