// Set files: a log set saved to, and loaded from, a sectioned file.
#include "logging/logging_form.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kSection[] = "LOGGING DATA DEVICE AND REGISTER SET";
constexpr char kInterval[] = "LOGGING INTERVAL";
constexpr char kFileName[] = "LOGGING FILENAME";
constexpr char kLogToFile[] = "LOG TO FILE";
constexpr char kStartMode[] = "START MODE";
constexpr char kNoAddress[] = "NO DEVICE ADDRESS";

constexpr char kDefaultLogFile[] = "DATASET.LOG";
constexpr char kDefaultSetFile[] = "CNTRLSET.PV5";
constexpr char kExtension[] = "PV5";
constexpr char kFilter[] = "Log Sets (*.PV5)|*.PV5|All Files (*.*)|*.*|";

struct RowKey {
    int column;
    const char* name; // behind the row's number
};
constexpr std::array<RowKey, 4> kRowKeys{{{log_column::kAddress, "DEVICEADDRESS"},
                                          {log_column::kCommand, "DEVICECOMMAND"},
                                          {log_column::kRegister, "DEVICEREGISTER"},
                                          {log_column::kDecimals, "DEVICEREGISTERDECIMAL"}}};

std::string row_key(int row, const RowKey& key) {
    return std::to_string(row) + key.name;
}

} // namespace

void frm_DataLogging::ChooseAndReadSet() {
    FileDialogRequest request;
    request.title = "Load Set";
    request.filter = kFilter;
    request.initial_directory = set_file_.empty() ? services_.application_directory : set_file_;
    request.file_name = std::string("*.") + kExtension;
    request.default_extension = kExtension;
    request.must_exist = true;
    const auto chosen = services_.dialogs.open_file(request);
    if (!chosen) return;
    set_file_ = *chosen;
    ReadLogSet(set_file_);
}

void frm_DataLogging::ChooseAndWriteSet() {
    // The default name is remembered before the dialog and so also when it is cancelled.
    if (set_file_.empty()) set_file_ = path_in(services_.application_directory, kDefaultSetFile);
    FileDialogRequest request;
    request.title = "Save Set";
    request.filter = kFilter;
    request.initial_directory = set_file_;
    request.file_name = set_file_;
    request.default_extension = kExtension;
    request.overwrite_prompt = true;
    request.refuse_read_only = true;
    const auto chosen = services_.dialogs.save_file(request);
    if (!chosen) return;
    set_file_ = *chosen;
    WriteLogSet(set_file_);
}

void frm_DataLogging::ReadLogSet(const std::string& file) {
    read_set(file);
    apply_start_mode(file);
}

void frm_DataLogging::read_set(const std::string& file) {
    read_interval(file);
    txt_LogFilename.set_Text(ini_read_string(
        kSection, kFileName, path_in(services_.application_directory, kDefaultLogFile), file));
    chk_LogToFile.set_Value(ini_read_string(kSection, kLogToFile, "FALSE", file) == "TRUE" ? 1 : 0);
    for (int row = 1; row <= kLogRows; ++row) {
        MSFlexGrid1.set_RowData(row, kNotInUse);
        // Required: column 0 keeps its old marks.
        for (int column = log_column::kAddress; column <= log_column::kValue; ++column)
            MSFlexGrid1.set_TextMatrix(row, column, "");
        set_row_state(row, RowState::NotPolled);
    }
    read_rows(file);
}

void frm_DataLogging::read_interval(const std::string& file) {
    const int seconds =
        int16_from(leading_number(ini_read_string(kSection, kInterval, "10", file)));
    const int hours = seconds / 3600;
    const int rest = seconds - hours * 3600;
    const std::array<int, 3> parts{hours, rest / 60, rest % 60};
    for (std::size_t i = 0; i < parts.size(); ++i)
        scrl_LoggingInterval[i].set_Value(parts[i]);
    for (std::size_t i = 0; i < parts.size(); ++i)
        txt_LoggingInterval[i].set_Text(plain_number(scrl_LoggingInterval[i].Value()));
}

void frm_DataLogging::read_rows(const std::string& file) {
    // Required: the first missing address ends the list, so rows behind a gap are not found again.
    for (int row = 1;; ++row) {
        const std::string address =
            ini_read_string(kSection, row_key(row, kRowKeys[0]), kNoAddress, file);
        if (address == kNoAddress) return;
        MSFlexGrid1.set_TextMatrix(row, log_column::kAddress, address);
        for (std::size_t i = 1; i < kRowKeys.size(); ++i)
            MSFlexGrid1.set_TextMatrix(
                row, kRowKeys[i].column,
                ini_read_string(kSection, row_key(row, kRowKeys[i]), "", file));
        MSFlexGrid1.set_RowData(row, row);
        MSFlexGrid1.set_TextMatrix(row, log_column::kLog, "Yes");
    }
}

void frm_DataLogging::apply_start_mode(const std::string& file) {
    if (ini_read_string(kSection, kStartMode, "MANUAL", file) == "AUTO") {
        // Required: the caption, the label and the interval controls stay as they are.
        RunLoggingPass();
        tmr_LoggingInterval.start();
        pass_ended();
        return;
    }
    tmr_LoggingInterval.stop();
    tick_count_ = 0;
    // The name is the new set's already: lines of the set before go into the new file.
    if (chk_LogToFile.checked()) FlushLogBuffer();
    show_status();
}

void frm_DataLogging::WriteLogSet(const std::string& file) {
    ini_write_string(kSection, kInterval, plain_number(interval_seconds_), file);
    ini_write_string(kSection, kFileName, txt_LogFilename.Text(), file);
    ini_write_string(kSection, kLogToFile, chk_LogToFile.checked() ? "TRUE" : "FALSE", file);
    // Required: rows keep their numbers, and keys of rows that are no longer in use stay in a file
    // that had them.
    for (int row = 1; row <= kLogRows; ++row)
        if (in_use(row)) write_row(row, file);
}

void frm_DataLogging::write_row(int row, const std::string& file) {
    for (const RowKey& key : kRowKeys)
        ini_write_string(kSection, row_key(row, key), MSFlexGrid1.TextMatrix(row, key.column),
                         file);
}

} // namespace pelvan
