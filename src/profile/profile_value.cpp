// Numbers of fields as people read and type them.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

#include "profile/profile_format.h"
#include "registers/setup_file.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::array<int, 5> kPowersOfTen{1, 10, 100, 1000, 10000};

int scale_of(const ProfileField& field) {
    return kPowersOfTen.at(static_cast<std::size_t>(field.decimals));
}

std::string number_text(const ProfileField& field, int raw) {
    const int scale = scale_of(field);
    const int magnitude = std::abs(raw);
    std::string text = (raw < 0 ? "-" : "") + std::to_string(magnitude / scale);
    if (field.decimals == 0) return text;
    const std::string fraction = std::to_string(magnitude % scale);
    const auto digits = static_cast<std::size_t>(field.decimals);
    return text.append(".").append(digits - fraction.size(), '0').append(fraction);
}

std::string with_unit(const ProfileField& field, const std::string& text) {
    return field.unit.empty() ? text : text + " " + field.unit;
}

ParsedValue refused(const ProfileField& field, std::string_view text) {
    return {std::nullopt, ProfileFormat::limits_text(field) + "; not \"" + shown(text) + "\"."};
}

/// The text's number in the field's last decimal; nothing for a text that is no number. Numbers
/// beyond all registers come out as some number beyond them.
std::optional<int> scaled_number(std::string_view text, int decimals, bool& finer) {
    constexpr int kBeyond = 10'000'000;
    const bool negative = !text.empty() && text[0] == '-';
    if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
    int value = 0;
    int behind_point = -1;
    bool digit_seen = false;
    for (const char c : text) {
        if (c == '.' && behind_point < 0) {
            behind_point = 0;
            continue;
        }
        if (c < '0' || c > '9') return std::nullopt;
        digit_seen = true;
        if (behind_point >= decimals) {
            finer = finer || c != '0';
            continue;
        }
        if (behind_point >= 0) ++behind_point;
        value = std::min(value * 10 + (c - '0'), kBeyond);
    }
    if (!digit_seen) return std::nullopt;
    for (int i = std::max(behind_point, 0); i < decimals; ++i)
        value = std::min(value * 10, kBeyond);
    return negative ? -value : value;
}

std::string_view without_unit(std::string_view text, const std::string& unit) {
    if (!unit.empty() && text.ends_with(unit)) text.remove_suffix(unit.size());
    while (text.ends_with(' '))
        text.remove_suffix(1);
    return text;
}

} // namespace

bool ProfileField::allows(int raw) const {
    return choices.empty() ? raw >= min && raw <= max : choices.contains(raw);
}

double ProfileField::value(int raw) const {
    return static_cast<double>(raw) / scale_of(*this);
}

int ProfileField::nearest(double value) const {
    const double scaled = std::clamp(std::round(value * scale_of(*this)), static_cast<double>(min),
                                     static_cast<double>(max));
    const int raw = std::isnan(value) ? min : static_cast<int>(scaled);
    if (choices.empty() || choices.contains(raw)) return raw;
    int best = choices.begin()->first;
    for (const auto& [choice, word] : choices)
        if (std::abs(choice - raw) < std::abs(best - raw)) best = choice;
    return best;
}

std::string ProfileFormat::value_text(const ProfileField& field, int raw) {
    const auto choice = field.choices.find(raw);
    return choice != field.choices.end() ? choice->second : number_text(field, raw);
}

std::string ProfileFormat::unit_text(const ProfileField& field, int raw) {
    return with_unit(field, value_text(field, raw));
}

std::string ProfileFormat::limits_text(const ProfileField& field) {
    if (field.choices.empty())
        return field.name + " is from " + number_text(field, field.min) + " to " +
               with_unit(field, number_text(field, field.max));
    std::string words;
    for (const auto& [number, word] : field.choices)
        words += (words.empty() ? "" : ", ") + word;
    return field.name + " is one of: " + words;
}

ParsedValue ProfileFormat::parse_value(const ProfileField& field, std::string_view text) {
    const std::string trimmed = trim(text);
    for (const auto& [number, word] : field.choices)
        if (upper_case(word) == upper_case(trimmed)) return {number, {}};
    bool finer = false;
    const auto raw = scaled_number(without_unit(trimmed, field.unit), field.decimals, finer);
    if (!raw) return refused(field, trimmed);
    if (finer)
        return {std::nullopt,
                field.name + " has " +
                    (field.decimals == 0 ? std::string("no decimals")
                                         : "at most " + std::to_string(field.decimals) +
                                               " digits behind the point") +
                    "; not \"" + shown(trimmed) + "\"."};
    if (!field.allows(*raw)) return refused(field, trimmed);
    return {raw, {}};
}

} // namespace pelvan
