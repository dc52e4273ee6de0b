#include <poll.h>

#include <algorithm>
#include <utility>

#include "listen/burst.h"
#include "listen/capture_file.h"
#include "listen/frame_text.h"
#include "terminal/commands.h"
#include "text/bytes.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is noticed soon.
constexpr int kWaitMs = 50;
/// A simulated line has no handle to wait at: it is asked this often.
constexpr int kAskEveryMs = 5;
constexpr double kMsPerSecond = 1000;
constexpr int kMaxChannel = 3;

struct ListenCommand {
    int channel = kModbusChannel;
    ListenOptions options;
    int timeout = 0;
    double seconds = 0;
    bool seconds_given = false;
    bool times = false;
    bool frames = false;
    std::string capture;
};

std::string summary(const TimeSummary& times) {
    if (times.count == 0) return "-";
    const auto shown = [](double ms) { return plain_single(round_half_even(ms * 10) / 10); };
    return shown(times.minimum) + "/" + shown(times.mean()) + "/" + shown(times.maximum);
}

void print_row(std::ostream& out, const std::string& name, const TrafficRow& row) {
    out << "  " << name << ": " << row.requests << " requests (" << row.unanswered
        << " unanswered), " << row.replies << " replies (" << row.exceptions
        << " exceptions), reply time " << summary(row.reply) << " ms, gap " << summary(row.gap)
        << " ms\n";
}

void print_statistics(std::ostream& out, const ListenMonitor& monitor) {
    for (const Statistic* statistic : monitor.statistics().all())
        out << statistic->caption() << ": " << (statistic->text().empty() ? "0" : statistic->text())
            << "\n";
    out << line_errors_sentence(monitor.line_errors()) << "\n";
    const TrafficCounts& traffic = monitor.traffic().counts();
    if (traffic.all().requests + traffic.all().replies + traffic.damaged() == 0) return;
    out << "Modbus traffic (times as minimum/mean/maximum):\n";
    print_row(out, "all", traffic.all());
    for (const auto& [address, row] : traffic.by_address())
        print_row(out, "address " + std::to_string(address), row);
    for (const auto& [function, row] : traffic.by_function())
        print_row(out, "function " + std::to_string(function), row);
    out << "  no Modbus frame: " << traffic.damaged() << " pieces\n";
}

/// Prints and captures the frames as they become known.
class FrameOutput {
  public:
    FrameOutput(const ListenCommand& command, const Traffic& traffic,
                TerminalEnvironment& environment)
        : traffic_(traffic), out_(environment.out), err_(environment.err),
          capture_path_(command.capture), prints_(command.frames) {
        if (!capture_path_.empty()) naming_capture([this] { capture_.emplace(capture_path_); });
        if (prints_) out_ << "Times are those of the lumps in which the bytes arrive.\n";
    }

    /// What came since the last call. Raises the errors of the capture's file.
    void catch_up() {
        next_ = std::max(next_, traffic_.first_number());
        for (; next_ < traffic_.next_number(); ++next_) {
            tell_unanswered();
            const ListenedFrame& frame = traffic_.frame(next_);
            if (capture_) naming_capture([&] { capture_->add(frame); });
            if (frame.answer == Answer::Awaited) request_ = next_;
            if (prints_) out_ << frame_line(frame) << std::endl;
        }
        tell_unanswered();
    }

  private:
    /// The message of a full disk names no file.
    template <class Work> void naming_capture(Work write) {
        try {
            write();
        } catch (const RunTimeError&) {
            err_ << "pelvan7: the capture \"" << capture_path_ << "\" cannot be written\n";
            throw;
        }
    }
    /// Once a request that was printed turns out to have no reply.
    void tell_unanswered() {
        if (!request_ || *request_ < traffic_.first_number()) return;
        const ListenedFrame& request = traffic_.frame(*request_);
        if (request.answer == Answer::Awaited) return;
        request_.reset();
        if (request.answer != Answer::Missing || !prints_) return;
        out_ << "No reply to the request of " << frame_cell(request, FrameColumn::Time)
             << ": address " << request.info.address << ", function " << request.info.function
             << std::endl;
    }

    const Traffic& traffic_;
    std::ostream& out_;
    std::ostream& err_;
    std::string capture_path_;
    bool prints_;
    std::optional<CaptureWriter> capture_;
    std::size_t next_ = 0;
    std::optional<std::size_t> request_; // the last one, while nobody knows
};

/// Sleeps until bytes are there, the port is lost, or a short while has passed.
void wait_for_bytes(const SerialPort& port) {
    pollfd watched{port.CommID(), POLLIN, 0};
    if (watched.fd >= 0)
        ::poll(&watched, 1, kWaitMs);
    else
        ::poll(nullptr, 0, kAskEveryMs);
}

/// Listens until the time is over or an interrupt comes; false when the port or a file failed, or
/// when the device was gone at the end.
bool listen_on(Core& app, const ListenCommand& command, FrameOutput& frames,
               TerminalEnvironment& environment) {
    const double begin = environment.tick.timeGetTime();
    const auto over = [&] {
        return command.seconds_given &&
               tick_span(begin, environment.tick.timeGetTime()) >= command.seconds * kMsPerSecond;
    };
    while (app.listen_monitor.listening() && !environment.stop && !over()) {
        SerialPort& port = *app.session.listen.gListenDevice;
        wait_for_bytes(port);
        // A script must be told of a log or a capture that could not be written, so that ends it.
        const bool well = app.events.run([&] {
            port.check_receive();
            app.listen_monitor.settle();
            frames.catch_up();
        });
        if (!well) return false;
    }
    return app.listen_monitor.listening() && !app.listen_monitor.device_gone();
}

int listen(const ListenCommand& command, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Core& app = terminal.app();
    ListenMonitor& monitor = app.listen_monitor;
    monitor.options = command.options;
    monitor.choose_timeout(command.timeout);
    std::optional<FrameOutput> output;
    if (!app.events.run([&] { output.emplace(command, monitor.traffic(), environment); }))
        return exit_code::kFailed;
    FrameOutput& frames = *output;
    const Subscription printed =
        monitor.line_added.subscribe([&](const std::string& line, const Burst& burst) {
            if (command.frames) return;
            if (command.times) environment.out << burst_note(burst) << "  ";
            environment.out << ascii_with_escapes(line) << std::endl;
        });
    monitor.ListenStart(static_cast<std::int16_t>(command.channel));
    const auto trouble = [&] { return std::pair(monitor.device_gone(), monitor.has_cut_burst()); };
    auto known = trouble();
    const Subscription told = monitor.status_changed.subscribe([&](const std::string& status) {
        if (monitor.listening() && trouble() != known)
            environment.err << "pelvan7: " << status << std::endl;
        known = trouble();
    });
    if (!monitor.listening()) return exit_code::kFailed; // its message was shown
    bool well = listen_on(app, command, frames, environment);
    monitor.ListenStop();
    well = app.events.run([&frames] { frames.catch_up(); }) && well;
    print_statistics(environment.out, monitor);
    return well ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_listen_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<ListenCommand>();
    CLI::App* command = cli.add_subcommand(
        "listen", "Print what arrives on a channel, sending nothing; Ctrl+C ends with statistics");
    command->add_option("--channel", options->channel, "Channel 0 to 3; 1 is shown, all counted")
        ->check(CLI::Range(0, kMaxChannel))
        ->capture_default_str();
    add_choice(*command, "--format", options->options.format,
               Choices<ListenFormat>{{"decimal", ListenFormat::Decimal},
                                     {"hex", ListenFormat::Hex},
                                     {"raw", ListenFormat::Raw}},
               "decimal, hex or raw");
    add_choice(*command, "--direction", options->options.direction,
               Choices<ListenDirection>{{"to", ListenDirection::ToDevice},
                                        {"from", ListenDirection::FromDevice}},
               "to (requests) or from (replies) the device");
    add_choice(*command, "--timeout", options->timeout,
               Choices<int>{{".5", 0}, {"1", 1}, {"10", 2}},
               "Longest reception of one burst: .5, 1 or 10, as in the window");
    command->add_option("--seconds", options->seconds, "End after so many seconds")
        ->check(is_number())
        ->check([](const std::string& text) {
            return leading_number(text) < 0 ? "give a number from 0" : "";
        });
    command->add_option("--pcap", options->capture, "Write the frames to a file for Wireshark");
    command->add_flag("--times", options->times, "Show time, gap and kind before each line");
    command->add_flag("--frames", options->frames,
                      "Print Modbus frames of both directions, put together by length and check: "
                      "time, gap, reply time, kind, address, function, registers = values, check");
    command->add_flag("--log", options->options.log_to_file,
                      "Append the lines to listenlog.txt too");
    command->callback([options, command, &chosen] {
        options->seconds_given = command->count("--seconds") > 0;
        chosen = [options](TerminalEnvironment& environment) {
            return listen(*options, environment);
        };
    });
}

} // namespace pelvan
