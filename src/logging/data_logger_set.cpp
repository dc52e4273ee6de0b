// The set of a DataLogger: read, saved, and whether it may be polled.
#include "logging/data_logger.h"
#include "logging/log_objections.h"
#include "logging/log_set_file.h"
#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kDefaultLogFile[] = "DATASET.LOG";

std::string write_question(const std::vector<int>& rows) {
    std::string numbers;
    for (const int row : rows)
        numbers += (numbers.empty() ? "" : ", ") + plain_number(row);
    const bool one = rows.size() == 1;
    return (one ? "Row " : "Rows ") + numbers + " of this log set " + (one ? "writes" : "write") +
           " to a controller with every pass, instead of reading. Poll this set all the same?";
}

} // namespace

void DataLogger::ReadLogSet(const std::string& file) {
    read_set(file);
    apply_start_mode(file);
}

void DataLogger::read_set(const std::string& file) {
    const bool complete =
        read_log_set(file, path_in(services_.application_directory, kDefaultLogFile), set_);
    set_file_ = file;
    set_file_name(set_.file_name);
    set_interval(set_.interval_seconds);
    writes_allowed_ = false;
    readings_.fill({"", RowState::NotPolled});
    set_replaced.raise();
    if (!complete)
        throw RunTimeError(error_number::kSubscript,
                           file + ": a set has " + plain_number(kLogRows) + " rows at most.");
}

bool DataLogger::agrees_with(const std::string& file) const {
    LogSet saved;
    return read_log_set(file, "", saved) && saved.same_rows(set_) &&
           saved.interval_seconds == set_.interval_seconds &&
           saved.log_to_file == set_.log_to_file && saved.together == set_.together;
}

void DataLogger::WriteLogSet(const std::string& file) {
    write_log_set(set_, file);
    set_file_ = file;
}

std::vector<std::string> DataLogger::objections() const {
    std::vector<std::string> sentences = row_objections(set_);
    const std::string of_file = set_.log_to_file ? file_objection() : std::string();
    if (!of_file.empty()) sentences.push_back(of_file);
    return sentences;
}

std::string DataLogger::file_objection() const {
    return log_file_objection(state_.gLogFileName, set_file_, config_.gIniFile);
}

bool DataLogger::may_poll() {
    const std::string of_file = set_.log_to_file ? file_objection() : std::string();
    const std::vector<int> writing = set_.writing_rows();
    if (of_file.empty() && (writes_allowed_ || writing.empty())) return true;
    const LoggingTimer::Pause pause(timer_); // no tick asks again while the box stands
    const auto show = [this](const std::string& text, MessageButtons buttons) {
        return services_.dialogs.message_box(text, "WARNING", buttons, MessageIcon::Exclamation);
    };
    if (!of_file.empty()) {
        show(of_file, MessageButtons::Ok);
        return false;
    }
    writes_allowed_ =
        show(write_question(writing), MessageButtons::YesNoPreferNo) == MessageAnswer::Yes;
    return writes_allowed_;
}

} // namespace pelvan
