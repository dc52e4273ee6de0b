// How the Data Logging window shows the logger: set, readings, timer, status, and that nothing is
// polled.
#include "logging/logging_form.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::int32_t kNotInUse = -1;
/// Less than a row of a silent controller takes, and more than all rows of most quick ones: their
/// marks would go and come with every pass.
constexpr double kShowEveryMs = 1000;

constexpr char kLoadAgain[] = "No row is polled: load the set again (Ctrl+O)";
constexpr char kEditAgain[] = "No row is polled: edit a cell of each row, or load a set (Ctrl+O)";
constexpr char kNoRow[] = "No row is polled: fill in a row, or load a set (Ctrl+O)";

/// The first, and how many there are: all of them are told when somebody starts.
std::string objections_text(const std::vector<std::string>& objections) {
    if (objections.empty()) return {};
    const std::size_t others = objections.size() - 1;
    return objections.front() +
           (others > 0 ? " (" + plain_number(static_cast<double>(others)) + " more)" : "");
}

} // namespace

void frm_DataLogging::show_set() {
    const LogSet& set = logger_.set();
    const auto parts = interval_parts(set.interval_seconds);
    for (std::size_t i = 0; i < parts.size(); ++i)
        scrl_LoggingInterval[i].set_Value(parts[i]);
    for (std::size_t i = 0; i < parts.size(); ++i)
        txt_LoggingInterval[i].set_Text(plain_number(scrl_LoggingInterval[i].Value()));
    txt_LogFilename.set_Text(set.file_name);
    chk_LogToFile.set_Value(set.log_to_file ? 1 : 0);
    chk_SingleLine.set_Value(set.single_line ? 1 : 0);
    chk_Together.set_Value(set.together ? 1 : 0);
    for (int row = 1; row <= kLogRows; ++row)
        show_row(row);
}

void frm_DataLogging::show_row(int row) {
    const LogSetRow& shown = logger_.set().row(row);
    for (std::size_t column = 0; column < shown.texts.size(); ++column)
        MSFlexGrid1.set_TextMatrix(row, static_cast<int>(column), shown.texts[column]);
    MSFlexGrid1.set_TextMatrix(row, log_column::kValue, logger_.reading(row).value);
    MSFlexGrid1.set_TextMatrix(row, log_column::kName, shown.name);
    MSFlexGrid1.set_TextMatrix(row, log_column::kUnit, shown.unit);
    MSFlexGrid1.set_RowData(row, shown.in_use ? row : kNotInUse);
}

void frm_DataLogging::show_timer() {
    tmr_LoggingInterval.set_Interval(logger_.timer().tick_ms());
    if (logger_.timer().running())
        tmr_LoggingInterval.start();
    else
        tmr_LoggingInterval.stop();
}

void frm_DataLogging::show_status() {
    const bool in_pass = logger_.in_pass();
    set_Pointer(in_pass ? MousePointer::Hourglass : MousePointer::Normal);
    const std::string& message = logger_.port_message();
    lbl_Message.set_Caption(message.empty() ? logger_.outage() : message);
    if (!in_pass) lbl_Status.set_Caption(status_text(logger_.status()));
    show_not_polled();
}

/// Rows go out of use when somebody comes back to the window, while the logging goes on: caption,
/// label and marks keep the words that they had, so the truth has to stand beside them.
void frm_DataLogging::show_not_polled() {
    const LogSet& set = logger_.set();
    const bool none = set.rows_in_use() == 0;
    const char* text = knows_set() ? kLoadAgain : set.any_row_filled() ? kEditAgain : kNoRow;
    const std::string objections = objections_text(logger_.objections());
    lbl_NotPolled.set_Caption(none ? text : objections);
    lbl_NotPolled.set_Visible(none || !objections.empty());
    cmd_LoadAgain.set_Caption(knows_set() ? "Load A&gain" : "Load Set...");
    cmd_LoadAgain.set_Visible(none);
    Label4.hold(none ? "No row is polled." : "");
    set_Note(none && logger_.timer().running() ? "no row is polled" : "");
}

bool frm_DataLogging::knows_set() const {
    return !set_file_.empty() && fileexists(set_file_);
}

/// A pass on silent controllers takes minutes: what the rows before this one gave is shown
/// meanwhile.
void frm_DataLogging::show_pass(int row) {
    const LogSet& set = logger_.set();
    int first = 1;
    while (first < row && !set.row(first).in_use)
        ++first;
    const double now = services_.tick.timeGetTime();
    if (row == first) shown_at_ = now;
    if (tick_span(shown_at_, now) < kShowEveryMs) return;
    lbl_Status.set_Caption("Pass under way, asking for row " + plain_number(row) + ".");
    services_.desktop.paint_windows();
    shown_at_ = now;
}

void frm_DataLogging::show_active(bool active) {
    enable_interval(!active);
    Label4.set_Visible(active);
    set_Caption(active ? "Data Logging - ACTIVE" : "Data Logging");
    show_status();
}

void frm_DataLogging::enable_interval(bool on) {
    for (std::size_t i = 0; i < scrl_LoggingInterval.size(); ++i) {
        scrl_LoggingInterval[i].set_Enabled(on);
        txt_LoggingInterval[i].set_Enabled(on);
    }
}

} // namespace pelvan
