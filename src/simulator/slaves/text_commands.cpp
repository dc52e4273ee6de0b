#include "simulator/slaves/text_commands.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>
#include <vector>

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan::simulator {
namespace {

constexpr std::size_t kMaxCommand = 40;

struct Parameter {
    const char* name;
    std::uint16_t number;
    int decimals; // 1: the register counts tenths
};

constexpr std::array<Parameter, 26> kParameters{{
    {"C1", 100, 1},          {"C2", 104, 1},          {"SP1", 300, 1},
    {"SP2", 319, 1},         {"PROPBAND1", 500, 1},   {"INTEGRAL1", 501, 0},
    {"DERIVATIVE1", 502, 0}, {"DEADBAND1", 503, 1},   {"HYSTERESIS1", 504, 1},
    {"PROPBAND2", 550, 1},   {"INTEGRAL2", 551, 0},   {"DERIVATIVE2", 552, 0},
    {"POWER1", 103, 1},      {"POWER2", 107, 1},      {"ALARM1LOW", 802, 1},
    {"ALARM1HIGH", 803, 1},  {"ALARM2LOW", 812, 1},   {"ALARM2HIGH", 813, 1},
    {"ALARM1", 110, 0},      {"ALARM2", 111, 0},      {"CALOFFSET1", 605, 1},
    {"CYCLETIME1", 701, 0},  {"LOCKLEVEL", 1400, 0},  {"MODEL", 0, 0},
    {"REVISION", 4, 0},      {"RETRANSMIT", 1530, 0},
}};

constexpr const char* kErrorQuery = "ER2"; // read only
constexpr const char* kClear = "COILSOFF"; // write only: switches every coil off

std::string without_digits(std::string name) {
    while (!name.empty() && name.back() >= '0' && name.back() <= '9')
        name.pop_back();
    return name;
}

TextResult failed(int error) {
    return {error, {}};
}

std::vector<std::string> words_of(std::string_view text) {
    std::vector<std::string> words;
    for (const std::string& word : split(text, ' ')) {
        if (!word.empty()) words.push_back(word);
    }
    return words;
}

const Parameter* find_parameter(const std::string& name) {
    for (const Parameter& parameter : kParameters) {
        if (name == parameter.name) return &parameter;
    }
    return nullptr;
}

/// "SP9" is a wrong parameter of a known command, "XYZ" no command.
int unknown_name(const std::string& name) {
    const std::string stem = without_digits(name);
    for (const Parameter& parameter : kParameters) {
        if (stem == without_digits(parameter.name)) return text_error::kParameterNotFound;
    }
    return text_error::kCommandNotFound;
}

std::string value_text(std::int16_t value, int decimals) {
    if (decimals == 0) return std::to_string(value);
    const int size = std::abs(value);
    return (value < 0 ? "-" : "") + std::to_string(size / 10) + "." + std::to_string(size % 10);
}

TextResult read_parameter(Station& station, const std::string& name) {
    // Asking for the code clears it.
    if (name == kErrorQuery) return {0, std::to_string(std::exchange(station.text_error, 0))};
    if (name == kClear) return failed(text_error::kWriteOnly);
    const Parameter* parameter = find_parameter(name);
    if (parameter == nullptr) return failed(unknown_name(name));
    const Register* reg = station.controller.table().find(parameter->number);
    if (reg == nullptr) return failed(text_error::kParameterNotFound);
    if (!reg->active) return failed(text_error::kNotActive);
    return {0, value_text(reg->value, parameter->decimals)};
}

TextResult clear(Station& station) {
    std::vector<bool>& coils = station.controller.coils();
    std::fill(coils.begin(), coils.end(), false);
    return {};
}

TextResult write_register(Station& station, const Parameter& parameter, double value) {
    const Register* reg = station.controller.table().find(parameter.number);
    if (reg == nullptr) return failed(text_error::kParameterNotFound);
    if (!reg->active) return failed(text_error::kNotActive);
    if (reg->access == Access::ReadOnly) return failed(text_error::kReadOnly);
    const double whole = std::round(parameter.decimals == 0 ? value : value * 10);
    if (!(whole >= reg->min && whole <= reg->max)) return failed(text_error::kOutOfLimit);
    const ExceptionCode code =
        station.controller.write(parameter.number, static_cast<std::int16_t>(whole));
    return failed(code == ExceptionCode::None ? text_error::kNone : text_error::kOutOfLimit);
}

TextResult write_parameter(Station& station, const std::string& name, const std::string& text) {
    if (name == kErrorQuery) return failed(text_error::kReadOnly);
    const bool numeric = is_numeric(text);
    if (name == kClear) return numeric ? clear(station) : failed(text_error::kInvalidCharacter);
    const Parameter* parameter = find_parameter(name);
    if (parameter == nullptr) return failed(unknown_name(name));
    if (!numeric) return failed(text_error::kInvalidCharacter);
    return write_register(station, *parameter, leading_number(text));
}

TextResult carry_out(Station& station, std::string_view command) {
    if (command.size() > kMaxCommand) return failed(text_error::kTooLong);
    const char kind = command.empty() ? ' ' : command[0];
    if (kind != '?' && kind != '=') return failed(text_error::kCommandNotFound);
    const std::vector<std::string> words = words_of(upper_case(command.substr(1)));
    const std::size_t needed = kind == '?' ? 1 : 2;
    if (words.size() < needed) return failed(text_error::kIncomplete);
    if (words.size() > needed) return failed(text_error::kInvalidCharacter);
    return kind == '?' ? read_parameter(station, words[0])
                       : write_parameter(station, words[0], words[1]);
}

} // namespace

TextResult run_text_command(Station& station, std::string_view command) {
    TextResult result = carry_out(station, command);
    if (result.error != text_error::kNone) station.text_error = result.error;
    return result;
}

} // namespace pelvan::simulator
