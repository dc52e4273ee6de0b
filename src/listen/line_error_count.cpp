#include "listen/line_error_count.h"

namespace pelvan {
namespace {

/// `sign` 1 adds, -1 subtracts.
LineErrors combined(const LineErrors& one, const LineErrors& other, long sign) {
    return {one.parity + sign * other.parity, one.framing + sign * other.framing,
            one.overruns + sign * other.overruns, one.breaks + sign * other.breaks};
}

bool any_less(const LineErrors& one, const LineErrors& other) {
    return one.parity < other.parity || one.framing < other.framing ||
           one.overruns < other.overruns || one.breaks < other.breaks;
}

} // namespace

std::string line_errors_sentence(const std::optional<LineErrors>& errors) {
    if (!errors) return "Line errors are not told by the driver.";
    std::string text = line_errors_text(*errors) + ".";
    text.front() = text.front() == 'n' ? 'N' : 'L';
    return text;
}

void LineErrorCount::begin(const SerialPort& port) {
    earlier_ = {};
    start_ = port.line_errors();
    last_ = start_.value_or(LineErrors{});
}

void LineErrorCount::look(const SerialPort& port) {
    const auto counted = port.line_errors();
    if (!counted || !start_) return;
    if (any_less(*counted, last_)) { // of another opening
        earlier_ = *total();
        start_ = LineErrors{};
    }
    last_ = *counted;
}

std::optional<LineErrors> LineErrorCount::total() const {
    if (!start_) return {};
    return combined(earlier_, combined(last_, *start_, -1), 1);
}

} // namespace pelvan
