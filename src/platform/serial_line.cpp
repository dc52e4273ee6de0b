#include "platform/serial_line.h"

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kMinBaud = 50;
constexpr int kMaxBaud = 4'000'000;

/// 5 data bits go with 1 or 1.5 stop bits, more of them with 1 or 2: no hardware offers the rest.
std::optional<double> stop_bits_from(const std::string& text, int data_bits) {
    if (text == "1") return 1;
    if (text == "1.5" && data_bits == 5) return 1.5;
    if (text == "2" && data_bits > 5) return 2;
    return {};
}

} // namespace

std::optional<LineSettings> parse_line_settings(const std::string& text) {
    const auto parts = split(text, ',');
    if (parts.size() != 4) return {};
    const auto baud = whole_number(parts[0], kMinBaud, kMaxBaud);
    const std::string parity = upper_case(parts[1]);
    const auto data = whole_number(parts[2], 5, 8);
    if (!baud || !data || parity.size() != 1 || std::string("NOEMS").find(parity) == parity.npos)
        return {};
    const auto stop = stop_bits_from(parts[3], static_cast<int>(*data));
    if (!stop) return {};

    LineSettings settings;
    settings.baud_rate = static_cast<int>(*baud);
    settings.parity = parity[0];
    settings.data_bits = static_cast<int>(*data);
    settings.stop_bits = *stop;
    return settings;
}

std::string line_errors_text(const LineErrors& errors) {
    std::string text;
    const auto add = [&](long count, const char* kind) {
        if (count > 0) text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + kind;
    };
    add(errors.parity, "parity");
    add(errors.framing, "framing");
    add(errors.overruns, "overrun");
    add(errors.breaks, "break");
    return text.empty() ? "no line errors" : "line errors: " + text;
}

double character_time_us(const LineSettings& settings) {
    const double parity_bits = settings.parity == 'N' ? 0 : 1;
    const double bits = 1 + settings.data_bits + parity_bits + settings.stop_bits;
    return bits * 1e6 / settings.baud_rate;
}

} // namespace pelvan
