// Data logging without a window: holds the log set, polls its rows at the interval, gathers log
// lines and keeps the readings for curves. One pass polls every row in use once. A front end ticks
// it while its timer runs, shows what the events tell of, and puts into the set what was entered.
//
// The read of one row is LogPoller's, the waiting lines are LogBuffer's, stopping and starting the
// timer is LoggingTimer's, the readings that are kept for curves are Trend's.
#pragma once

#include "config/ini.h"
#include "logging/log_buffer.h"
#include "logging/log_poller.h"
#include "logging/logging_status.h"
#include "logging/logging_timer.h"
#include "logging/trend_recorder.h"
#include "platform/message_router.h"
#include "platform/services.h"

namespace pelvan {

class DataLogger {
  public:
    /// All must outlive this.
    DataLogger(const Services& services, MessageRouter& messages, const ConfigState& config,
               Link& link, Modbus& modbus, LoggingState& state);

    /// Stops and forgets the set, the readings and the status; the trend stays.
    void reset();

    [[nodiscard]] const LogSet& set() const { return set_; }
    /// Zero becomes one second.
    void set_interval(std::int32_t seconds);
    void set_file_name(const std::string& name);
    void set_log_to_file(bool on) { set_.log_to_file = on; }
    void set_single_line(bool on) { set_.single_line = on; }
    /// Takes effect with the next pass.
    void set_together(bool on) { set_.together = on; }
    /// As `enter_cell`.
    [[nodiscard]] bool enter_cell(int row, int column, const std::string& answer);
    /// As `enter_label`; a curve of the row goes on under the new name.
    [[nodiscard]] bool enter_label(int row, int column, const std::string& answer);
    void take_rows_out_of_use() { set_.take_rows_out_of_use(); }
    /// From the configuration file; 380 for a negative one.
    void read_tick_length();

    /// Replaces the log set by the file's and starts or stops logging as its "START MODE" says. A
    /// missing file reads as all defaults. 6 or 380 for an interval as `read_log_set` has it, 9 for
    /// a 101st row when the first hundred are in the set.
    void ReadLogSet(const std::string& file);
    /// The part of `ReadLogSet` before the start mode.
    void read_set(const std::string& file);
    /// Reads the set again and, when logging ran, goes on with it. Lines that wait are written
    /// before, once. Errors as `ReadLogSet`; blocks for a pass when logging goes on.
    void load_again(const std::string& file);
    /// Whether rows, interval and the options that a file keeps are still those of the file.
    [[nodiscard]] bool agrees_with(const std::string& file) const;
    /// A failed write goes unnoticed.
    void WriteLogSet(const std::string& file);

    /// What speaks against polling the set, a sentence each: rows that are read as other numbers,
    /// and a log file that may not be written.
    [[nodiscard]] std::vector<std::string> objections() const;

    /// The set may write to controllers: nothing is asked before its first pass. Until it is
    /// replaced.
    void allow_writes() { writes_allowed_ = true; }

    /// Runs a pass at once, then one at every interval. Blocks for the pass. False when the
    /// log file is one of the program's own, which is shown, or when the set writes
    /// to controllers and somebody who was asked did not want that. Rows that are read as other
    /// numbers are polled as they are read: what a file holds is not checked, only told.
    bool start();
    /// False when lines wait that could not be written.
    bool stop();
    /// One tick of the timer. Blocks for a pass when one is due.
    void tick();
    /// Stops, and writes the buffer whatever its count.
    void close();

    /// Polls every row in use once, flushes by rule and starts the timer. Blocks for all exchanges.
    /// A run-time error ends logging, so that it does not come back with every pass, and is passed
    /// on. Nothing while a pass is under way already. Before the first pass of a set that writes to
    /// controllers a question says so; false, and logging ends, when the answer is no. While
    /// another tool has the line the pass is skipped and counted; its rows say so.
    bool RunLoggingPass();
    void PollLogRows();
    /// Ends the pass under way before its next row.
    void end_pass() { pass_ends_ = true; }
    /// False when a warning was shown.
    bool FlushLogBuffer();

    [[nodiscard]] const LoggingTimer& timer() const { return timer_; }
    [[nodiscard]] bool in_pass() const { return in_pass_; }
    [[nodiscard]] const LogReading& reading(int row) const; // 9 outside
    [[nodiscard]] LoggingStatus status() const;
    /// What the port had to say first during the last pass, and that it is there again; empty when
    /// nothing.
    [[nodiscard]] const std::string& port_message() const { return port_message_; }
    /// For how long, and until when, the device was gone last since the logging began, or did not
    /// open; empty when neither was so.
    [[nodiscard]] const std::string& outage() const { return outage_; }
    [[nodiscard]] Trend& trend() { return trend_; }

    /// The set was replaced as a whole.
    Event<> set_replaced;
    /// The reading of a row changed.
    Event<int> row_changed;
    Event<> timer_changed;
    /// Status, port message or `in_pass` changed.
    Event<> status_changed;
    /// Logging was stopped, or ended by a run-time error.
    Event<> stopped;
    /// Raised before a row is polled: the moment for `end_pass`, and to show the rows before it.
    Event<int> before_row;
    /// After a pass of the start, the timer or an automatic set, when what follows it is done too.
    Event<> pass_done;

  private:
    class PassUnderWay;
    [[nodiscard]] bool may_poll();
    [[nodiscard]] std::string file_objection() const;
    [[nodiscard]] bool skips_pass();
    void apply_start_mode(const std::string& file);
    void poll();
    void flush_if_due();
    void poll_row(int row, int neighbours, std::string& record);
    void set_reading(int row, const LogReading& reading);
    void set_port_message(const std::string& text);
    void note_outage(const Outage& outage);
    void end_logging();
    void pass_ended();

    Services services_;
    MessageRouter& messages_;
    const ConfigState& config_;
    LoggingState& state_;
    Link& link_;
    LogSet set_;
    std::string set_file_; // that the set was read from or saved in last
    LogPoller poller_;
    LogBuffer buffer_;
    Trend trend_{kLogRows};
    TrendRecorder recorder_{trend_};
    LoggingTimer timer_;
    Subscription timer_changes_;
    bool in_pass_ = false;
    bool pass_ends_ = false;
    bool writes_allowed_ = false;               // by this set
    std::array<LogReading, kLogRows> readings_; // row 1 first
    std::optional<LoggingStatus::Pass> last_pass_;
    int skipped_passes_ = 0;
    std::string port_message_;
    std::string outage_;
    Subscription device_back_;
};

} // namespace pelvan
