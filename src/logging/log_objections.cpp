#include "logging/log_objections.h"

#include <cmath>
#include <filesystem>
#include <limits>
#include <system_error>

#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

struct NumberColumn {
    std::size_t column;
    const char* name;
    bool fits_16_bits; // beyond them the request would be an overflow
};

constexpr NumberColumn kColumns[] = {{log_column::kAddress, "address", true},
                                     {log_column::kCommand, "command", true},
                                     {log_column::kRegister, "register", false},
                                     {log_column::kDecimals, "decimal places", false}};

/// Why the text of a column is not polled with; nullptr when it may be.
const char* fault_of(const std::string& text, const NumberColumn& column) {
    constexpr double kMost = std::numeric_limits<std::int16_t>::max();
    if (!is_numeric(text)) return "no number";
    const double value = leading_number(text);
    if (value != std::floor(value)) return "no whole number";
    return column.fits_16_bits && std::abs(value) > kMost ? "beyond 32767" : nullptr;
}

bool is_same_file(const std::string& one, const std::string& other) {
    std::error_code error;
    return std::filesystem::equivalent(one, other, error) && !error;
}

} // namespace

std::string row_objection(const LogSetRow& row) {
    for (const NumberColumn& column : kColumns) {
        const std::string& text = row.texts[column.column];
        const std::string name = column.name;
        if (text.empty() && column.column == log_column::kDecimals) continue;
        if (text.empty()) return "the " + name + " is missing";
        const bool several = column.column == log_column::kDecimals;
        if (const char* const fault = fault_of(text, column))
            return "the " + name + " \"" + shown(text) + (several ? "\" are " : "\" is ") + fault;
    }
    return {};
}

std::string log_file_objection(const std::string& log_file, const std::string& set_file,
                               const std::string& configuration) {
    const std::string begin = "The log file " + log_file + " is the ";
    if (is_same_file(log_file, set_file)) return begin + "set file itself: choose another.";
    if (is_same_file(log_file, configuration))
        return begin + "configuration of the program: choose another.";
    return {};
}

std::vector<std::string> row_objections(const LogSet& set) {
    std::vector<std::string> sentences;
    for (int number = 1; number <= kLogRows; ++number) {
        if (!set.row(number).in_use) continue;
        const std::string objection = row_objection(set.row(number));
        if (!objection.empty())
            sentences.push_back("Row " + plain_number(number) + ": " + objection + ".");
    }
    return sentences;
}

} // namespace pelvan
