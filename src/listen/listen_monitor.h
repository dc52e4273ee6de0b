// The listen monitor: captures what arrives on one serial channel without sending anything. Every
// burst is a hit, counted in the statistics, and on the Modbus channel a line that subscribers get
// and that is, if wanted, appended to a text file. Collecting a burst is the link's business,
// rendering it the Modbus decoders', putting frames together and pairing them `Traffic`'s.
#pragma once

#include <string>
#include <vector>

#include "listen/burst.h"
#include "listen/line_error_count.h"
#include "listen/listen_statistics.h"
#include "listen/traffic.h"
#include "platform/event.h"
#include "platform/run_time_error.h"
#include "protocols/modbus/modbus.h"
#include "serial/link.h"

namespace pelvan {

enum class ListenFormat { Decimal, Hex, Raw };
enum class ListenDirection { ToDevice, FromDevice };

/// What may be changed at any time, also while listening: the next burst is treated by it.
struct ListenOptions {
    ListenFormat format = ListenFormat::Decimal;
    /// Whether bursts are decoded as requests or as replies; means nothing to the raw format.
    ListenDirection direction = ListenDirection::ToDevice;
    bool log_to_file = false;
};

/// Time-outs that can be chosen, in ms. Required: the one called "1 Sec" is two seconds.
inline constexpr std::array<float, 3> kListenTimeoutsMs{500, 2000, 10000};

class ListenMonitor {
  public:
    /// The log lies in `directory`.
    ListenMonitor(Link& link, Modbus& modbus, ListenState& state, Clock& clock,
                  std::string directory);

    /// Opens the channel's port and is notified of its receive event. Not listening afterwards when
    /// the port did not open, its message having been shown, or while another tool has claimed the
    /// lines; a claim that begins later makes it wait, and so does a device that goes. 9 for a
    /// channel outside 0 to 3.
    void ListenStart(std::int16_t channel);
    void ListenStop();
    /// Takes in one burst. Blocks as `Link::receive_reply` does, up to the chosen time-out. An
    /// error of a port that is not lost ends the listening and is raised; a log that cannot be
    /// written is switched off and its error raised after the burst has been counted.
    void ListenProcessEvent();
    /// Looks at the time, for `traffic`, at the line's errors, and for a device that has gone: to
    /// be called some times a second while listening.
    void settle();
    /// Appends one line to "listenlog.txt"; opens and closes the file for it. Raises file errors.
    void ListenLogLine(const std::string& line);

    ListenOptions options;
    /// `index` is one of `kListenTimeoutsMs`; 9 outside.
    void choose_timeout(int index);
    /// Forgets the statistics' values and the traffic; a session goes on.
    void clear();

    [[nodiscard]] bool listening() const { return state_.gListening; }
    [[nodiscard]] const ListenStatistics& statistics() const { return statistics_; }
    [[nodiscard]] const Traffic& traffic() const { return traffic_; }
    /// What the hardware has counted since the listening began or the statistics were cleared;
    /// nothing where its driver does not count.
    [[nodiscard]] std::optional<LineErrors> line_errors() const { return line_errors_.total(); }
    /// Whether the device that is listened on is gone: the listening goes on when it is back.
    [[nodiscard]] bool device_gone() const { return gone_.has_value(); }
    /// Whether a burst of this session ended with its time or its room, bytes still coming.
    [[nodiscard]] bool has_cut_burst() const { return cut_burst_; }
    /// The channel that is listened on, or was last.
    [[nodiscard]] int channel() const { return state_.gListenChannel; }
    [[nodiscard]] std::string log_path() const;
    /// Lines that were logged since the logging was switched on last.
    [[nodiscard]] long logged_lines() const { return logged_lines_; }
    /// Switches the logging on or off.
    void set_log_to_file(bool on);

    /// A burst of the Modbus channel, rendered; raised before the hit is counted.
    Event<const std::string& /*line*/, const Burst&> line_added;
    /// The statistics have changed, and so may have `traffic`. What a subscriber raises is passed
    /// on and disturbs nothing.
    Event<> hit_counted;
    /// A sentence on whether the monitor listens, to what, or why it stopped.
    Event<const std::string&> status_changed;

    static constexpr char kLogFileName[] = "listenlog.txt";

  private:
    /// The ports are about to be destroyed: ends the listening and says so.
    void ports_rebuilt();
    /// The port is about to be closed for another channel: ends the listening on it and says so.
    void port_closing(const SerialPort& port);
    /// Another tool has claimed the lines, or has released them.
    void claim_changed();
    void begin_listening(std::int16_t channel);
    void open_channel(std::int16_t channel);
    void close_lost(std::int16_t channel);
    void end(const std::string& status);
    void tell_listening(const std::string& note = {});
    void begin_session();
    void hear_port(SerialPort& port);
    void lose_device(SerialPort& port);
    void look_for_device();
    [[nodiscard]] SerialPort* reopened();
    [[nodiscard]] std::optional<std::string> collect(SerialPort& port);
    void note_flow();
    void take_in(double start_tick, const std::string& bytes);
    Burst record(double start_tick, double spent_ms, const std::string& bytes);
    void hear(double start_tick, const Burst& burst, double length_ms, const std::string& bytes);
    [[nodiscard]] double wire_time(std::size_t bytes) const;
    [[nodiscard]] std::string render(const std::string& bytes);
    [[nodiscard]] std::optional<RunTimeError> log(const std::string& line);

    Link& link_;
    Modbus& modbus_;
    ListenState& state_;
    Clock& clock_;
    std::string directory_;
    ListenStatistics statistics_{state_.gListenStats};
    BurstTimes burst_times_;
    Traffic traffic_;
    /// The lumps of the burst that is collected: when each was read, and the bytes until then.
    struct Lump {
        double tick;
        std::size_t end;
    };
    std::vector<Lump> lumps_;
    long logged_lines_ = 0;
    Subscription rebuild_ = link_.channels().before_rebuild.subscribe([this] { ports_rebuilt(); });
    Subscription closing_ = link_.channels().before_close.subscribe(
        [this](const SerialPort& port) { port_closing(port); });
    Subscription claim_ =
        link_.channels().line_use().changed.subscribe([this] { claim_changed(); });
    Subscription received_;
    bool waiting_ = false; // for the end of another tool's claim
    bool cut_burst_ = false;
    LineErrorCount line_errors_;
    struct Gone {
        double tick;        // at which it was noticed
        double looked_tick; // at which the device was looked for last
        double pause_ms;    // until it is looked for again
        std::string time;
    };
    std::optional<Gone> gone_;
};

} // namespace pelvan
