#include "text/strings.h"

namespace pelvan {

std::string trim(std::string_view text) {
    const auto first = text.find_first_not_of(' ');
    if (first == text.npos) return {};
    return std::string(text.substr(first, text.find_last_not_of(' ') - first + 1));
}

std::string upper_case(std::string_view text) {
    std::string out(text);
    for (char& c : out)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return out;
}

std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    for (;;) {
        const auto at = text.find(separator);
        pieces.emplace_back(text.substr(0, at));
        if (at == text.npos) return pieces;
        text.remove_prefix(at + 1);
    }
}

std::string shortened(std::string_view text, std::size_t length) {
    constexpr std::string_view kMore = "...";
    if (text.size() <= length) return std::string(text);
    std::size_t kept = length > kMore.size() ? length - kMore.size() : 0;
    const auto continues = [&] {
        return (static_cast<unsigned char>(text[kept]) & 0xC0U) == 0x80U;
    };
    while (kept > 0 && continues())
        --kept;
    return std::string(text.substr(0, kept)).append(kMore);
}

} // namespace pelvan
