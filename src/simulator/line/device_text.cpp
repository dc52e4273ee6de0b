#include "simulator/line/device_text.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "simulator/controller/controller.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan::simulator {
namespace {

constexpr std::string_view kPrefix = "simulated:";

struct PlanOption {
    const char* name;
    double FaultPlan::*member;
    double max;
};

constexpr double kMaxMs = 60000;

constexpr std::array<PlanOption, 16> kPlanOptions{{
    {"lost", &FaultPlan::lost, 1},
    {"flip", &FaultPlan::flip, 1},
    {"crc", &FaultPlan::crc, 1},
    {"gap", &FaultPlan::gap, 1},
    {"noise", &FaultPlan::noise, 1},
    {"late", &FaultPlan::late, 1},
    {"other", &FaultPlan::other, 1},
    {"lost_ack", &FaultPlan::lost_ack, 1},
    {"nak", &FaultPlan::nak, 1},
    {"no_etx", &FaultPlan::no_etx, 1},
    {"xoff", &FaultPlan::xoff, 1},
    {"echo_flip", &FaultPlan::echo_flip, 1},
    {"echo_cut", &FaultPlan::echo_cut, 1},
    {"gap_ms", &FaultPlan::gap_ms, kMaxMs},
    {"late_ms", &FaultPlan::late_ms, kMaxMs},
    {"xoff_ms", &FaultPlan::xoff_ms, kMaxMs},
}};

struct WholeOption {
    const char* name;
    long min;
    long max;
    void (*set)(SimulatedDevice&, std::uint32_t);
};

constexpr long kMaxWord = 4294967295;
constexpr long kRefuseAll = -32769; // below any value of a register

constexpr std::array<WholeOption, 7> kWholeOptions{{
    {"seed", 0, kMaxWord, [](SimulatedDevice& d, std::uint32_t value) { d.faults.seed = value; }},
    {"only", 0, kMaxWord, [](SimulatedDevice& d, std::uint32_t value) { d.faults.only = value; }},
    {"address", 1, 247, [](SimulatedDevice& d, std::uint32_t value) { d.address = value; }},
    {"queue", 0, 1, [](SimulatedDevice& d, std::uint32_t value) { d.queues = value != 0; }},
    {"echo", 0, 1, [](SimulatedDevice& d, std::uint32_t value) { d.echoes = value != 0; }},
    {"xoff_after", 0, 1000,
     [](SimulatedDevice& d, std::uint32_t value) { d.xoff_after = static_cast<int>(value); }},
    {"speed", 1, 3600,
     [](SimulatedDevice& d, std::uint32_t value) { d.speed = static_cast<int>(value); }},
}};

/// "4012" or, for values above one alone, "4012>500".
bool set_refusal(SimulatedDevice& device, const std::string& text) {
    const std::size_t above = text.find('>');
    const auto number = whole_number(trim(text.substr(0, above)), 0, 65535);
    std::optional<long> limit = kRefuseAll;
    if (above != std::string::npos) {
        limit = whole_number(trim(text.substr(above + 1)), kRefuseAll, 32767);
    }
    if (!number || !limit) return false;
    device.refused[static_cast<std::uint16_t>(*number)] = static_cast<int>(*limit);
    return true;
}

/// "19200/E/8/1": commas part the options.
bool set_line(SimulatedDevice& device, std::string text) {
    std::replace(text.begin(), text.end(), '/', ',');
    device.line = parse_line_settings(text);
    return device.line.has_value();
}

bool set_number(SimulatedDevice& device, const std::string& name, double value) {
    for (const PlanOption& option : kPlanOptions) {
        if (name != option.name) continue;
        device.faults.*option.member = value;
        return value >= 0 && value <= option.max;
    }
    device.delay_ms = value;
    return name == "delay" && value >= 0 && value <= kMaxMs;
}

bool set_option(SimulatedDevice& device, const std::string& text) {
    const std::size_t equals = text.find('=');
    if (equals == std::string::npos) return false;
    const std::string name = trim(text.substr(0, equals));
    const std::string value = trim(text.substr(equals + 1));
    if (device.loopback) {
        device.jumper_in = value == "in";
        return name == "jumper" && (value == "in" || value == "out");
    }
    if (name == "refuse") return set_refusal(device, value);
    if (name == "line") return set_line(device, value);
    for (const WholeOption& option : kWholeOptions) {
        if (name != option.name) continue;
        const auto number = whole_number(value, option.min, option.max);
        if (number) option.set(device, static_cast<std::uint32_t>(*number));
        return number.has_value();
    }
    return is_numeric(value) && set_number(device, name, leading_number(value));
}

bool set_model(SimulatedDevice& device, const std::string& text) {
    device.loopback = text == "loopback";
    if (device.loopback) return true;
    if (text != "742" && text != "730") return false;
    device.model = static_cast<int>(leading_number(text));
    return Controller::is_known_model(device.model);
}

} // namespace

bool is_simulated(const std::string& text) {
    return text.compare(0, kPrefix.size(), kPrefix) == 0;
}

std::optional<SimulatedDevice> parse_simulated_device(const std::string& text) {
    if (!is_simulated(text)) return std::nullopt;
    std::string device_text = text.substr(kPrefix.size());
    // The first option may follow a question mark.
    const std::size_t mark = device_text.find_first_of(",?");
    if (mark != std::string::npos) device_text[mark] = ',';
    const std::vector<std::string> parts = split(device_text, ',');
    SimulatedDevice device;
    if (!set_model(device, trim(parts[0]))) return std::nullopt;
    for (std::size_t i = 1; i < parts.size(); ++i) {
        if (!set_option(device, parts[i])) return std::nullopt;
    }
    return device;
}

bool hears(const SimulatedDevice& device, const LineSettings& settings) {
    return !device.line ||
           (device.line->baud_rate == settings.baud_rate &&
            device.line->parity == settings.parity && device.line->data_bits == settings.data_bits);
}

} // namespace pelvan::simulator
