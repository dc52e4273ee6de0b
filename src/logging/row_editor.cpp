// The grid's cell editor.
#include <array>

#include "logging/logging_form.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kCommandPrompt[] = "Select the Command Value:\r\r"
                                  "1 - Read Coil Status\r"
                                  "2 - Read Input Status\r"
                                  "3 - Read Holding Registers\r"
                                  "32 - Read 32-bit Holding Registers\r"
                                  "4 - Read Input Registers";

bool is_read_command(double value) {
    return value == 1 || value == 2 || value == 3 || value == 4 || value == 32;
}

struct ColumnRule {
    const char* prompt;
    const char* default_text;
    bool (*accepts)(double);
};

/// By column; columns 0 and 5 cannot be edited.
constexpr std::array<ColumnRule, 6> kRules{{
    {nullptr, nullptr, nullptr},
    {"Enter Address between 1 and 247.", "1", [](double v) { return v >= 1 && v <= 247; }},
    {kCommandPrompt, "", is_read_command},
    {"Enter the Register number.", "", [](double v) { return v >= 0 && v <= 65535; }},
    // The lower bound is deliberate: a negative count multiplies by a power of ten.
    {"Enter the Number of decimal places.", "0", [](double v) { return v >= -4 && v <= 5; }},
    {nullptr, nullptr, nullptr},
}};

} // namespace

void frm_DataLogging::MSFlexGrid1_MouseUp(bool left) {
    const int row = MSFlexGrid1.Row();
    const int column = MSFlexGrid1.Col();
    const ColumnRule& rule = kRules[static_cast<std::size_t>(column)];
    if (!left || tmr_LoggingInterval.running() || row < 1 || !rule.accepts) return;
    const std::string answer =
        services_.dialogs.input_box(rule.prompt, "Enter Value", rule.default_text);
    const bool accepted = is_numeric(answer) && rule.accepts(leading_number(answer));
    // Required: an empty answer, which is also what Cancel gives, empties the cell.
    if (!answer.empty() && !accepted)
        services_.dialogs.message_box("Value is out of range!");
    else
        MSFlexGrid1.set_TextMatrix(row, column, answer);
    bool complete = true;
    for (int each = log_column::kAddress; each <= log_column::kDecimals; ++each)
        complete = complete && !MSFlexGrid1.TextMatrix(row, each).empty();
    MSFlexGrid1.set_RowData(row, complete ? row : kNotInUse);
    MSFlexGrid1.set_TextMatrix(row, log_column::kLog, complete ? "Yes" : "No");
}

} // namespace pelvan
