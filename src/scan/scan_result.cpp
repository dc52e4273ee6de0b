#include "scan/scan_result.h"

#include <algorithm>

#include "text/numbers.h"

namespace pelvan {
namespace {

/// "address 3", "addresses 3, 7 and 2 more"; empty in Xon, which has none.
std::string addresses_text(const std::vector<UnsureAnswer>& answers) {
    constexpr std::size_t kMostNamed = 8;
    if (answers.front().protocol == ScanProtocol::Xon) return {};
    std::string text = answers.size() == 1 ? " address " : " addresses ";
    for (std::size_t i = 0; i < std::min(answers.size(), kMostNamed); ++i)
        text += (i > 0 ? ", " : "") + std::to_string(answers[i].address);
    if (answers.size() > kMostNamed)
        text += " and " + std::to_string(answers.size() - kMostNamed) + " more";
    return text;
}

double most_patience(const std::vector<UnsureAnswer>& answers) {
    double most_ms = 0;
    for (const UnsureAnswer& answer : answers)
        most_ms = std::max(most_ms, answer.patience_ms);
    return most_ms;
}

} // namespace

std::string unsure_remark(const std::vector<UnsureAnswer>& answers) {
    const UnsureAnswer& one = answers.front();
    const bool late = one.patience_ms > 0;
    return "At " + settings_text(one.line) + " " + scan_protocol_name(one.protocol) +
           addresses_text(answers) + " answered " +
           (late ? "later than was waited for" : "once and not again") + ", and " +
           (answers.size() == 1 ? "is" : "are") + " not listed" +
           (late ? ": " + plain_number(most_patience(answers)) + " ms of patience would do." : ".");
}

std::string two_of_one_remark(const ScanStep& step, int address, const ProbeAnswer& one,
                              const ProbeAnswer& other) {
    return "At " + settings_text(step.line) + " two controllers have the " +
           scan_protocol_name(step.protocol) + " address " + std::to_string(address) + ": \"" +
           one.words + "\" and \"" + other.words + "\" came. Take one off the line.";
}

std::string unsure_text(const ScanResult& result, const std::string& patience) {
    if (result.unsure.empty()) return {};
    const double wanted_ms = most_patience(result.unsure);
    return (result.unsure.size() == 1 ? "Somebody answered, and is not listed: scan again"
                                      : std::to_string(result.unsure.size()) +
                                            " answered, and are not listed: scan again") +
           (wanted_ms > 0 ? " with " + patience + " " + plain_number(wanted_ms) : "") + ".";
}

std::string unfinished_text(const ScanResult& result) {
    constexpr std::size_t kMostNamed = 4;
    if (result.unasked == 0) return {};
    std::string where;
    for (std::size_t i = 0; i < std::min(result.busy.size(), kMostNamed); ++i)
        where += (i > 0 ? "; " : "") + result.busy[i];
    if (result.busy.size() > kMostNamed)
        where += " and " + std::to_string(result.busy.size() - kMostNamed) + " more";
    return "Not finished: somebody else sends on this line (" + where + "), so that " +
           std::to_string(result.unasked) +
           " requests were not sent. Silence whoever sends, and scan again.";
}

} // namespace pelvan
