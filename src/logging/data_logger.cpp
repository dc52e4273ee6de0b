#include "logging/data_logger.h"

#include "logging/log_set_file.h"
#include "logging/row_value.h"
#include "platform/run_time_error.h"
#include "serial/errors.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::int16_t kDefaultTickMs = 1000;
constexpr std::int16_t kNothingAdded = -1;
constexpr char kStrayBytes[] = "Bytes came between two requests: an answer came late or twice. "
                               "Readings before that may belong to other rows.";
constexpr int kMaxGathered = 99;  // more lines than that are written at once
constexpr int kEveryPassFrom = 6; // seconds: at longer intervals every pass is written

std::string date_and_time(const LocalTime& now) {
    return date_text(now) + ", " + time_text(now);
}

} // namespace

/// Marks the pass as under way for as long as it lives.
class DataLogger::PassUnderWay {
  public:
    explicit PassUnderWay(DataLogger& logger) : logger_(logger) {
        logger_.in_pass_ = true;
        logger_.pass_ends_ = false;
        logger_.set_port_message("");
        logger_.status_changed.raise();
    }
    PassUnderWay(const PassUnderWay&) = delete;
    PassUnderWay& operator=(const PassUnderWay&) = delete;
    ~PassUnderWay() { logger_.in_pass_ = false; }

  private:
    DataLogger& logger_;
};

DataLogger::DataLogger(const Services& services, MessageRouter& messages, const ConfigState& config,
                       Link& link, Modbus& modbus, LoggingState& state)
    : services_(services), messages_(messages), config_(config), state_(state), link_(link),
      poller_(link, modbus), buffer_(state, services.dialogs),
      timer_changes_(timer_.changed.subscribe([this] { timer_changed.raise(); })),
      device_back_(
          link_.device_back.subscribe([this](const Outage& outage) { note_outage(outage); })) {
    reset();
}

void DataLogger::reset() {
    timer_.stop();
    timer_.reset_count();
    set_ = LogSet{};
    set_file_.clear();
    writes_allowed_ = false;
    readings_.fill({"", RowState::NotPolled});
    last_pass_.reset();
    skipped_passes_ = 0;
    outage_.clear();
    set_port_message("");
    set_file_name("");
    set_interval(set_.interval_seconds);
    set_replaced.raise();
}

void DataLogger::set_interval(std::int32_t seconds) {
    set_.interval_seconds = seconds == 0 ? 1 : seconds; // an interval of zero is never allowed
    state_.gLogIntervalSeconds = set_.interval_seconds;
    status_changed.raise();
}

void DataLogger::set_file_name(const std::string& name) {
    set_.file_name = name;
    state_.gLogFileName = name;
}

bool DataLogger::enter_cell(int row, int column, const std::string& answer) {
    return pelvan::enter_cell(set_.row(row), column, answer);
}

bool DataLogger::enter_label(int row, int column, const std::string& answer) {
    const bool accepted = pelvan::enter_label(set_.row(row), column, answer);
    recorder_.name_rows(set_);
    return accepted;
}

void DataLogger::read_tick_length() {
    const int tick_ms = ini_read_int(ini_key::kCommsSection, ini_key::kTimerOffset, kDefaultTickMs,
                                     config_.gIniFile);
    if (tick_ms < 0) throw RunTimeError(error_number::kInvalidPropertyValue);
    timer_.set_tick_ms(tick_ms);
    status_changed.raise();
}

void DataLogger::apply_start_mode(const std::string& file) {
    if (starts_when_loaded(file) && RunLoggingPass()) {
        pass_ended();
        return;
    }
    timer_.stop();
    timer_.reset_count();
    // The name is the new set's already: lines of the set before go into the new file.
    if (set_.log_to_file) FlushLogBuffer();
    stopped.raise();
    status_changed.raise();
}

void DataLogger::load_again(const std::string& file) {
    const bool ran = timer_.running();
    if (ran && set_.log_to_file && buffer_.waiting() > 0 && FlushLogBuffer())
        state_.gLogBufferCount = kNothingAdded;
    ReadLogSet(file);
    if (ran && !timer_.running()) start();
}

bool DataLogger::FlushLogBuffer() {
    const std::string objection = file_objection();
    if (objection.empty()) return buffer_.FlushLogBuffer();
    if (buffer_.waiting() == 0) return true;
    services_.dialogs.message_box(objection, "WARNING", MessageButtons::Ok,
                                  MessageIcon::Exclamation);
    return false;
}

bool DataLogger::start() {
    if (!may_poll()) return false;
    state_.gLogBufferCount = kNothingAdded;
    outage_.clear();
    RunLoggingPass(); // the first values appear without waiting one interval
    // What was counted before an earlier stop may be more than the interval, and the test for
    // equality would then never be met.
    timer_.reset_count();
    pass_ended();
    return true;
}

bool DataLogger::stop() {
    timer_.stop();
    stopped.raise();
    // Required: the count is not reset, so closing the window writes the same lines again.
    return !set_.log_to_file || state_.gLogBufferCount < 0 || FlushLogBuffer();
}

void DataLogger::tick() {
    bool due = false;
    {
        // The time of a pass is thus added to the interval.
        const LoggingTimer::Pause pause(timer_);
        timer_.count_tick();
        // Required: a test for equality. An interval that is made shorter than the ticks already
        // counted is not met again until the count starts again; the status line says so.
        due = timer_.ticks() == set_.interval_seconds;
        if (due) {
            RunLoggingPass();
            timer_.reset_count();
        }
    }
    if (due)
        pass_ended();
    else
        status_changed.raise();
}

void DataLogger::close() {
    timer_.stop();
    // Required: whatever the count, so that lines which `stop` wrote are written once more.
    if (set_.log_to_file) FlushLogBuffer();
}

bool DataLogger::RunLoggingPass() {
    if (in_pass_) return true; // a message box of a pass stands; no second pass inside the first
    if (!may_poll()) {
        end_logging();
        return false;
    }
    const LoggingTimer::Pause pause(timer_);
    timer_.start(); // goes on behind the pass, unless somebody stops it meanwhile
    if (skips_pass()) return true;
    try {
        const PassUnderWay under_way(*this);
        poll();
        flush_if_due();
    } catch (...) {
        // Going on would bring the same message back with every pass. What the buffer holds stays.
        end_logging();
        throw;
    }
    status_changed.raise();
    return true;
}

/// Requests between those of a transfer would disturb both, and wait for a line that is not free.
bool DataLogger::skips_pass() {
    const std::string reason = link_.refusal();
    if (reason.empty()) return false;
    ++skipped_passes_;
    for (int row = 1; row <= kLogRows; ++row)
        if (set_.row(row).in_use) set_reading(row, {reading(row).value, RowState::LineInUse});
    set_port_message("Pass skipped: " + reason);
    status_changed.raise();
    return true;
}

void DataLogger::end_logging() {
    timer_.stop();
    timer_.reset_count();
    stopped.raise();
    status_changed.raise();
}

void DataLogger::pass_ended() {
    status_changed.raise();
    pass_done.raise();
}

void DataLogger::poll() {
    const std::uint32_t begun = services_.tick.timeGetTime();
    last_pass_ = {services_.clock.now(), 0};
    {
        // The pass is the reader's only work for hours: what the port has to say must not hold it.
        const MessageRouter::Diversion quiet(messages_, [this](const std::string& text) {
            if (port_message_.empty()) set_port_message("Port: " + text);
        });
        PollLogRows();
    }
    last_pass_->took_ms = services_.tick.timeGetTime() - begun;
}

void DataLogger::flush_if_due() {
    const bool due =
        state_.gLogBufferCount > kMaxGathered || state_.gLogIntervalSeconds >= kEveryPassFrom;
    // The count starts again only when the lines are in the file: those that could not be written
    // are tried again with the next flush.
    if (!set_.log_to_file || !due) return;
    if (FlushLogBuffer())
        state_.gLogBufferCount = kNothingAdded;
    else
        buffer_.make_room(kLogRows); // the next pass must find room: logging goes on
}

void DataLogger::PollLogRows() {
    const LocalTime now = services_.clock.now();
    std::string record = date_and_time(now);
    poller_.begin_pass();
    recorder_.begin_pass(set_, now, services_.tick.timeGetTime());
    for (int row = 1; row <= kLogRows; ++row)
        set_reading(row, {reading(row).value, RowState::NotPolled});
    const auto neighbours = set_.together ? neighbours_in(set_) : std::array<int, kLogRows + 1>{};
    for (int row = 1; row <= kLogRows; ++row) {
        if (!set_.row(row).in_use) continue;
        before_row.raise(row);
        if (pass_ends_) return; // a record of half the rows would mislead
        poll_row(row, neighbours[static_cast<std::size_t>(row)], record);
    }
    // Required: only this option counts here. Without "Log To File" every pass adds a record that
    // nothing flushes, and the 203rd overflows the buffer.
    if (set_.single_line) buffer_.append(record);
}

void DataLogger::poll_row(int row, int neighbours, std::string& record) {
    const LogRow numbers = set_.row(row).numbers();
    const LogReading reading = poller_.poll(numbers, neighbours);
    set_reading(row, reading);
    const std::string remark = link_.take_remark();
    if (!remark.empty() && port_message_.empty()) set_port_message("Port: " + remark);
    if (reading.after_strays && port_message_.empty()) set_port_message(kStrayBytes);
    recorder_.record(row, numbers, reading);
    if (!set_.log_to_file) return;
    const std::string fields = ", " + signed_number(numbers.address) + ", " +
                               signed_single(numbers.start_register) + ", " + reading.value;
    if (set_.single_line)
        record += fields;
    else
        buffer_.append(date_and_time(services_.clock.now()) + fields);
}

const LogReading& DataLogger::reading(int row) const {
    return readings_[checked_index(row - 1, readings_.size())];
}

void DataLogger::set_reading(int row, const LogReading& reading) {
    LogReading& there = readings_[static_cast<std::size_t>(row - 1)];
    if (there == reading) return;
    there = reading;
    row_changed.raise(row);
}

void DataLogger::set_port_message(const std::string& text) {
    if (port_message_ == text) return;
    port_message_ = text;
    status_changed.raise();
}

/// Behind what the same pass has said of the device before.
void DataLogger::note_outage(const Outage& outage) {
    outage_ = outage_sentence(outage, time_text(services_.clock.now()));
    const std::string sentence = outage_sentence(outage);
    if (port_message_.find(sentence) != std::string::npos) return;
    const char* const joint = port_message_.ends_with('.') ? " " : ". ";
    set_port_message((port_message_.empty() ? "Port: " : port_message_ + joint) + sentence);
}

LoggingStatus DataLogger::status() const {
    return {last_pass_,      timer_.running(),      timer_.tick_ms(),
            timer_.ticks(),  set_.interval_seconds, buffer_.waiting(),
            skipped_passes_, set_.rows_in_use()};
}

} // namespace pelvan
