#include "logging/log_set.h"

#include <algorithm>
#include <cmath>

#include "platform/run_time_error.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kCommandPrompt[] = "Select the Command Value:\r\r"
                                  "1 - Read Coil Status\r"
                                  "2 - Read Input Status\r"
                                  "3 - Read Holding Registers\r"
                                  "32 - Read 32-bit Holding Registers\r"
                                  "4 - Read Input Registers";

bool is_read_command(double value) {
    using namespace log_command;
    return value == kReadCoils || value == kReadInputStatus || value == kReadHoldingRegisters ||
           value == kReadInputRegisters || value == kRead32;
}

bool is_write_command(const LogSetRow& row) {
    // Rounded as it is for the request.
    const double function = round_half_even(leading_number(row.texts[log_column::kCommand]));
    return function == 5 || function == 6 || function == 15 || function == 16;
}

struct ColumnRule {
    CellQuestion question;
    bool (*accepts)(double);
};

/// From column 1 on.
constexpr std::array<ColumnRule, 4> kRules{{
    {{"Enter Address between 1 and 247.", "1"}, [](double v) { return v >= 1 && v <= 247; }},
    {{kCommandPrompt, ""}, is_read_command},
    {{"Enter the Register number.", ""}, [](double v) { return v >= 0 && v <= 65535; }},
    // The lower bound is deliberate: a negative count multiplies by a power of ten.
    {{"Enter the Number of decimal places.", "0"}, [](double v) { return v >= -4 && v <= 5; }},
}};

bool is_control(char c) {
    const auto code = static_cast<unsigned char>(c);
    return code < 0x20 || code == 0x7F;
}

/// In use, and "Yes", when nothing is missing.
void mark(LogSetRow& row) {
    row.in_use = std::none_of(row.texts.begin() + log_column::kAddress, row.texts.end(),
                              [](const std::string& text) { return text.empty(); });
    row.texts[log_column::kLog] = row.in_use ? "Yes" : "No";
}

/// Any text may stand in a column: nothing here raises.
bool is_neighbour(const LogSetRow& row, const LogSetRow& next) {
    const auto step = [&](std::size_t column) {
        return leading_number(next.texts[column]) - leading_number(row.texts[column]);
    };
    const double command = leading_number(row.texts[log_column::kCommand]);
    const double first = leading_number(row.texts[log_column::kRegister]);
    const bool of_registers = command == log_command::kReadHoldingRegisters ||
                              command == log_command::kReadInputRegisters;
    return of_registers && first == std::floor(first) && step(log_column::kAddress) == 0 &&
           step(log_column::kCommand) == 0 && step(log_column::kRegister) == 1;
}

const ColumnRule* rule_of(int column) {
    if (column < log_column::kAddress || column > log_column::kDecimals) return nullptr;
    return &kRules[static_cast<std::size_t>(column - log_column::kAddress)];
}

} // namespace

LogRow LogSetRow::numbers() const {
    const auto number = [this](std::size_t column) { return leading_number(texts[column]); };
    return {int16_from(number(log_column::kAddress)), number(log_column::kCommand),
            static_cast<float>(number(log_column::kRegister)), number(log_column::kDecimals)};
}

bool LogSetRow::reads_holding_registers() const {
    const double command = leading_number(texts[log_column::kCommand]);
    return command == log_command::kReadHoldingRegisters || command == log_command::kRead32;
}

bool LogSetRow::filled() const {
    return !name.empty() || !unit.empty() ||
           std::any_of(texts.begin() + log_column::kAddress, texts.end(),
                       [](const std::string& text) { return !text.empty(); });
}

const LogSetRow& LogSet::row(int number) const {
    return rows[checked_index(number - 1, rows.size())];
}

LogSetRow& LogSet::row(int number) {
    return rows[checked_index(number - 1, rows.size())];
}

void LogSet::take_rows_out_of_use() {
    for (LogSetRow& each : rows)
        each.in_use = false;
}

int LogSet::rows_in_use() const {
    return static_cast<int>(
        std::count_if(rows.begin(), rows.end(), [](const LogSetRow& each) { return each.in_use; }));
}

bool LogSet::any_row_filled() const {
    return std::any_of(rows.begin(), rows.end(),
                       [](const LogSetRow& each) { return each.filled(); });
}

bool LogSet::same_rows(const LogSet& other) const {
    return std::equal(rows.begin(), rows.end(), other.rows.begin(),
                      [](const LogSetRow& one, const LogSetRow& two) {
                          return std::equal(one.texts.begin() + log_column::kAddress,
                                            one.texts.end(),
                                            two.texts.begin() + log_column::kAddress) &&
                                 one.name == two.name && one.unit == two.unit;
                      });
}

std::vector<int> LogSet::writing_rows() const {
    std::vector<int> numbers;
    for (int number = 1; number <= kLogRows; ++number)
        if (row(number).in_use && is_write_command(row(number))) numbers.push_back(number);
    return numbers;
}

std::array<int, kLogRows + 1> neighbours_in(const LogSet& set) {
    std::array<int, kLogRows + 1> counts{};
    int next = 0; // the row in use behind this one
    for (int number = kLogRows; number >= 1; --number) {
        const LogSetRow& row = set.row(number);
        if (!row.in_use) continue;
        const bool goes_on = next > 0 && is_neighbour(row, set.row(next));
        counts[static_cast<std::size_t>(number)] =
            goes_on ? counts[static_cast<std::size_t>(next)] + 1 : 1;
        next = number;
    }
    return counts;
}

std::array<int, 3> interval_parts(std::int32_t seconds) {
    return {seconds / 3600, seconds % 3600 / 60, seconds % 60};
}

const CellQuestion* cell_question(int column) {
    const ColumnRule* rule = rule_of(column);
    return rule ? &rule->question : nullptr;
}

bool enter_cell(LogSetRow& row, int column, const std::string& answer) {
    const ColumnRule* rule = rule_of(column);
    if (!rule) throw RunTimeError(error_number::kSubscript);
    const bool accepted =
        answer.empty() || (is_numeric(answer) && rule->accepts(leading_number(answer)));
    if (accepted) row.texts[static_cast<std::size_t>(column)] = answer;
    mark(row);
    return accepted;
}

bool enter_label(LogSetRow& row, int column, const std::string& answer) {
    if (column != log_column::kName && column != log_column::kUnit)
        throw RunTimeError(error_number::kSubscript);
    const bool is_name = column == log_column::kName;
    const std::string text = trim(answer);
    const bool accepted = text.size() <= (is_name ? kMaxRowName : kMaxRowUnit) &&
                          std::none_of(text.begin(), text.end(), is_control);
    if (accepted) (is_name ? row.name : row.unit) = text;
    mark(row);
    return accepted;
}

} // namespace pelvan
