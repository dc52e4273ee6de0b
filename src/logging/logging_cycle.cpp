// Start and stop, the tick, and one pass over the rows in use.
#include <cmath>
#include <limits>

#include "logging/logging_form.h"
#include "logging/row_value.h"
#include "platform/run_time_error.h"
#include "serial/errors.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr std::int16_t kNothingAdded = -1;
constexpr int kMostGathered = 99;      // more lines than that are written at once
constexpr int kEveryPassFrom = 6;      // seconds: at longer intervals every pass is written
constexpr double kClockJumpMs = 60000; // the machine slept, or its clock was set
constexpr double kRead32 = 32;
constexpr double kReadHoldingRegisters = 3;

std::string trend_name(const LogRow& row) {
    std::string name = "Address " + plain_number(row.address) + " register " +
                       plain_number(static_cast<double>(row.start_register));
    if (row.command == kRead32) return name + " (32-bit)";
    if (row.command == kReadHoldingRegisters) return name;
    return name + " (command " + plain_number(row.command) + ")";
}

std::string seconds_text(double ms, double step) {
    return plain_number(round_half_even(ms / step) * step / 1000) + " s";
}

} // namespace

void frm_DataLogging::mnuStartLogging_Click() {
    state_.gLogBufferCount = kNothingAdded;
    RunLoggingPass(); // the first values appear without waiting one interval
    tmr_LoggingInterval.start();
    enable_interval(false);
    Label4.set_Visible(true);
    set_Caption("Data Logging - ACTIVE");
    pass_ended();
}

void frm_DataLogging::mnuStopLogging_Click() {
    show_stopped();
    // Required: the count is not reset, so closing the window writes the same lines again.
    if (chk_LogToFile.checked() && state_.gLogBufferCount >= 0) FlushLogBuffer();
}

void frm_DataLogging::enable_interval(bool on) {
    for (std::size_t i = 0; i < 3; ++i) {
        scrl_LoggingInterval[i].set_Enabled(on);
        txt_LoggingInterval[i].set_Enabled(on);
    }
}

void frm_DataLogging::show_stopped() {
    tmr_LoggingInterval.stop();
    enable_interval(true);
    Label4.set_Visible(false);
    set_Caption("Data Logging");
    show_status();
}

void frm_DataLogging::tmr_LoggingInterval_Timer() {
    tmr_LoggingInterval.stop();
    ++tick_total_;
    tick_count_ = int32_from(tick_count_ + 1.0);
    // Required: a test for equality. An interval that is made shorter than the ticks already
    // counted is not met again until the count starts anew; the status line says so.
    const bool due = tick_count_ == interval_seconds_;
    if (due) {
        RunLoggingPass();
        tick_count_ = 0;
    }
    // The time of a pass is thus added to the interval.
    tmr_LoggingInterval.start();
    if (due)
        pass_ended();
    else
        show_status();
}

void frm_DataLogging::RunLoggingPass() {
    if (in_pass_) return; // a message box of a pass stands; no second pass inside the first
    in_pass_ = true;
    tmr_LoggingInterval.stop();
    try {
        const Hourglass busy(*this);
        poll_and_flush();
        in_pass_ = false;
    } catch (...) {
        // Going on would bring the same message back with every pass. What the buffer holds stays.
        in_pass_ = false;
        tick_count_ = 0;
        show_stopped();
        throw;
    }
    tmr_LoggingInterval.start();
}

void frm_DataLogging::pass_ended() {
    show_status();
    if (pass_done) pass_done();
}

void frm_DataLogging::poll_and_flush() {
    const std::uint32_t begun = services_.tick.timeGetTime();
    last_pass_at_ = time_text(services_.clock.now());
    lbl_Message.set_Caption("");
    {
        // The pass is the reader's only work for hours: what the port has to say must not hold it.
        const MessageGate::Diversion quiet(messages_, [this](const std::string& text) {
            if (lbl_Message.Caption().empty()) lbl_Message.set_Caption("Port: " + text);
        });
        PollLogRows();
    }
    last_pass_ms_ = services_.tick.timeGetTime() - begun;
    const bool due =
        state_.gLogBufferCount > kMostGathered || state_.gLogIntervalSeconds >= kEveryPassFrom;
    // The count starts anew only when the lines are in the file: those that could not be written
    // are tried again with the next flush.
    if (!chk_LogToFile.checked() || !due) return;
    if (FlushLogBuffer())
        state_.gLogBufferCount = kNothingAdded;
    else
        buffer_.make_room(kLogRows); // the next pass must find room: logging goes on
}

bool frm_DataLogging::FlushLogBuffer() {
    last_flush_worked_ = buffer_.FlushLogBuffer();
    return last_flush_worked_;
}

void frm_DataLogging::PollLogRows() {
    const LocalTime now = services_.clock.now();
    std::string record = date_text(now) + ", " + time_text(now);
    poller_.begin_pass();
    begin_trend_pass();
    for (int row = 1; row <= kLogRows; ++row)
        set_row_state(row, RowState::NotPolled);
    for (int row = 1; row <= kLogRows; ++row) {
        if (!in_use(row)) continue;
        if (interrupted && interrupted()) return; // a record of half the rows would mislead
        poll_row(row, record);
    }
    // Required: only this check box counts here. Without "Log To File" every pass adds a record
    // that nothing flushes, and the 203rd overflows the buffer.
    if (chk_SingleLine.checked()) buffer_.append(record);
}

void frm_DataLogging::poll_row(int row, std::string& record) {
    const LogRow numbers = row_numbers(row);
    const LogReading reading = poller_.poll(numbers);
    MSFlexGrid1.set_TextMatrix(row, log_column::kValue, reading.value);
    set_row_state(row, reading.state);
    trend_.record(row - 1, trend_name(numbers),
                  reading.state == RowState::Answered ? leading_number(reading.value)
                                                      : std::numeric_limits<double>::quiet_NaN());
    if (!chk_LogToFile.checked()) return;
    const std::string fields = ", " + signed_number(numbers.address) + ", " +
                               signed_single(numbers.start_register) + ", " + reading.value;
    if (chk_SingleLine.checked()) {
        record += fields;
    } else {
        const LocalTime now = services_.clock.now();
        buffer_.append(date_text(now) + ", " + time_text(now) + fields);
    }
}

LogRow frm_DataLogging::row_numbers(int row) const {
    const auto number = [&](int column) {
        return leading_number(MSFlexGrid1.TextMatrix(row, column));
    };
    return {int16_from(number(log_column::kAddress)), number(log_column::kCommand),
            static_cast<float>(number(log_column::kRegister)), number(log_column::kDecimals)};
}

void frm_DataLogging::begin_trend_pass() {
    const std::uint32_t tick = services_.tick.timeGetTime();
    const double calendar_ms = calendar_milliseconds(services_.clock.now());
    // The clock tells whole seconds and may be set back; the tick is finer and never does.
    trend_ms_ += tick - trend_tick_;
    trend_tick_ = tick;
    if (!trend_begun_ || calendar_ms > trend_ms_ + kClockJumpMs) trend_ms_ = calendar_ms;
    trend_begun_ = true;
    for (int row = 1; row <= kLogRows; ++row)
        if (!in_use(row)) trend_.forget(row - 1);
    trend_.begin_pass(trend_ms_);
}

void frm_DataLogging::show_status() {
    std::string text;
    if (!last_pass_at_.empty()) {
        text = "Last pass " + last_pass_at_ + ", " + seconds_text(last_pass_ms_, 10);
        if (last_pass_ms_ > interval_seconds_ * 1000.0) text += " (longer than the interval)";
        text += ". ";
    }
    lbl_Status.set_Caption(text + next_pass_text() +
                           " Lines waiting: " + plain_number(buffer_.waiting()) + ".");
}

std::string frm_DataLogging::next_pass_text() const {
    if (!tmr_LoggingInterval.running()) return "Logging is stopped.";
    if (tmr_LoggingInterval.Interval() == 0) return "Next pass: never, TIMER OFFSET is 0.";
    const std::int32_t ticks = interval_seconds_ - tick_count_;
    if (ticks <= 0)
        return "Next pass: never, the interval is not longer than the " +
               plain_number(tick_count_) + " ticks counted already.";
    return "Next pass in " +
           seconds_text(static_cast<double>(ticks) * tmr_LoggingInterval.Interval(), 1000) + ".";
}

} // namespace pelvan
