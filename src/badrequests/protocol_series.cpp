#include "badrequests/protocol_series.h"

#include <bit>

#include "platform/serial_line.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kOtherParity[] = "Other parity";
constexpr int kTextProtocols[] = {0, 2}; // Full and Xon

/// Characters whose parity bit, even or odd, is 0 where a device without parity wants a stop bit.
int spoilt(std::string_view bytes, bool odd) {
    int count = 0;
    for (const char c : bytes) {
        const bool ones_are_odd = std::popcount(static_cast<unsigned char>(c)) % 2 == 1;
        if (ones_are_odd == odd) ++count;
    }
    return count;
}

char other_parity_of(char own, const std::string& bytes) {
    switch (own) {
    case 'E':
        return 'O';
    case 'O':
        return 'E';
    case 'M':
        return 'S';
    case 'S':
        return 'M';
    default: // where there is none: the one that spoils more characters, so that one is at least
        return spoilt(bytes, false) >= spoilt(bytes, true) ? 'E' : 'O';
    }
}

} // namespace

BadRequestOptions default_options(int protocol) {
    BadRequestOptions options;
    options.protocol = protocol;
    for (const int each : kTextProtocols)
        if (protocol == each) options.read = "? C1";
    if (protocol == 1) options.other_address = "247";
    if (protocol == 3) options.read = "01ca";
    return options;
}

std::unique_ptr<ProtocolSeries> make_series(const BadRequestOptions& options, Link& link,
                                            Dialogs& dialogs, std::string& refusal) {
    if (!(options.wait_ms >= kMinBadRequestWaitMs && options.wait_ms <= kMaxBadRequestWaitMs)) {
        refusal = "The time to wait is 0.1 to 10 seconds.";
        return nullptr;
    }
    switch (options.protocol) {
    case 0:
        return make_full_series(options, link, dialogs, refusal);
    case 1:
        return make_modbus_series(options, refusal);
    case 2:
        return make_xon_series(options, refusal);
    default:
        return make_tellura_series(options, link, dialogs, refusal);
    }
}

bool number_in(const std::string& text, long min, long max, const char* what, long& number,
               std::string& refusal) {
    const auto value = whole_number(text, min, max);
    if (value) {
        number = *value;
        return true;
    }
    refusal = std::string(what) + " is a whole number from " + std::to_string(min) + " to " +
              std::to_string(max) + ".";
    return false;
}

BadRequest not_applicable(const char* name, const char* why) {
    BadRequest request{name};
    request.not_applicable = why;
    return request;
}

BadRequest with_other_parity(BadRequest request, const std::string& settings, bool checked) {
    request.name = kOtherParity;
    request.expected = Expected::Silence;
    const auto line = parse_line_settings(settings);
    if (!line) return not_applicable(kOtherParity, "the line's settings cannot be used");
    if (line->parity == 'N' && !checked)
        return not_applicable(kOtherParity, "on a line without parity a spoilt character may be "
                                            "read as another, and the protocol has no check");
    request.parity = other_parity_of(line->parity, request.parts.front());
    return request;
}

} // namespace pelvan
