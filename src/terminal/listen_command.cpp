#include <poll.h>

#include <cctype>

#include "listen/capture_file.h"
#include "terminal/commands.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// How long one wait lasts at most, so that an interrupt is heard soon.
constexpr int kWaitMs = 50;
/// A simulated line has no handle to wait at: it is asked this often.
constexpr int kAskEveryMs = 5;
constexpr double kMsPerSecond = 1000;
constexpr int kHighestChannel = 3;

struct ListenOptions {
    int channel = 1;
    int format = 0;
    int direction = 0;
    int timeout = 0;
    double seconds = 0;
    bool seconds_given = false;
    bool times = false;
    bool log = false;
    std::string capture;
};

/// A line that a terminal shows as one line, whatever bytes the controller sent.
std::string printable(const std::string& line) {
    std::string out;
    for (const char character : line) {
        const auto code = static_cast<unsigned char>(character);
        if (code >= ' ' && code < 0x7F)
            out += character;
        else
            out += "\\x" + hex_text(code, 2);
    }
    return out;
}

std::string summary(const TimeSummary& times) {
    if (times.count == 0) return "-";
    const auto shown = [](double ms) { return plain_single(round_half_even(ms * 10) / 10); };
    return shown(times.minimum) + "/" + shown(times.mean()) + "/" + shown(times.maximum);
}

void print_row(std::ostream& out, const std::string& name, const TrafficRow& row) {
    out << "  " << name << ": " << row.requests << " requests, " << row.replies << " replies ("
        << row.exceptions << " exceptions), reply time " << summary(row.reply) << " ms, gap "
        << summary(row.gap) << " ms\n";
}

void print_statistics(std::ostream& out, frm_Listen& form) {
    const std::pair<const Label*, const TextBox*> boxes[] = {
        {&form.lbl_HitCount, &form.txt_HitCount},
        {&form.lbl_LastHitTime, &form.txt_LastHitTime},
        {&form.lbl_TotalHitTime, &form.txt_TotalHitTime},
        {&form.lbl_HitsPerMinute, &form.txt_HitsPerMinute},
        {&form.lbl_MaxHits, &form.txt_MaxHits},
        {&form.lbl_BurstHitRate, &form.txt_BurstHitRate}};
    for (const auto& [label, box] : boxes)
        out << label->Caption() << ": " << (box->Text().empty() ? "0" : box->Text()) << "\n";
    const Traffic& traffic = form.traffic();
    if (traffic.all().requests + traffic.all().replies + traffic.damaged() == 0) return;
    out << "Modbus traffic (times as minimum/mean/maximum):\n";
    print_row(out, "all", traffic.all());
    for (const auto& [address, row] : traffic.by_address())
        print_row(out, "address " + std::to_string(address), row);
    for (const auto& [function, row] : traffic.by_function())
        print_row(out, "function " + std::to_string(function), row);
    out << "  no Modbus frame: " << traffic.damaged() << " bursts\n";
}

/// Sleeps until bytes are there, the port is lost, or a short while has passed.
void wait_for_bytes(const SerialPort& port) {
    pollfd watched{port.CommID(), POLLIN, 0};
    if (watched.fd >= 0)
        ::poll(&watched, 1, kWaitMs);
    else
        ::poll(nullptr, 0, kAskEveryMs);
}

/// Listens until the time is over or an interrupt comes; false when the port or a file failed.
bool listen_on(Application& app, const ListenOptions& options, TerminalEnvironment& environment) {
    const double begin = environment.tick.timeGetTime();
    const auto over = [&] {
        return options.seconds_given &&
               tick_span(begin, environment.tick.timeGetTime()) >= options.seconds * kMsPerSecond;
    };
    const ListenState& state = app.session.listen;
    while (state.gListening && !environment.stop && !over()) {
        wait_for_bytes(*state.gListenDevice);
        // A script must hear of a log or a capture that could not be written, so that ends it too.
        if (!app.events.run([&] { state.gListenDevice->check_receive(); })) return false;
    }
    return state.gListening;
}

/// Prints every line as it is added, with its times once they are known.
void print_lines(frm_Listen& form, bool times, std::ostream& out) {
    ListBox& list = times ? form.lst_Times : form.lst_CommsCommand;
    list.watch_lines([&form, &out, times](ListChange change, int index) {
        if (change != ListChange::Added) return;
        if (times) out << form.lst_Times.List(index) << "  ";
        out << printable(form.lst_CommsCommand.List(index)) << std::endl;
    });
}

int listen(const ListenOptions& options, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Application& app = terminal.app();
    frm_Listen& form = app.listen;
    form.Load();
    form.opt_DataFormat.set_Value(options.format);
    form.opt_DataDirection.set_Value(options.direction);
    form.opt_CharacterDelay.set_Value(options.timeout);
    if (options.log) form.Loglistenlist.choose();
    std::optional<CaptureWriter> capture;
    if (!options.capture.empty()) capture.emplace(options.capture);
    form.traffic_changed = [&capture](const Burst* burst) {
        if (capture && burst) capture->add(*burst);
    };
    print_lines(form, options.times, environment.out);
    form.ListenStart(static_cast<std::int16_t>(options.channel));
    if (!app.session.listen.gListening) return exit_code::kFailed; // its message was shown
    const bool well = listen_on(app, options, environment);
    form.ListenStop();
    print_statistics(environment.out, form);
    return well ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_listen_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<ListenOptions>();
    CLI::App* command = cli.add_subcommand(
        "listen", "Print what arrives on a channel, sending nothing; Ctrl+C ends with statistics");
    command->add_option("--channel", options->channel, "Channel 0 to 3; 1 is shown, all counted")
        ->check(CLI::Range(0, kHighestChannel))
        ->capture_default_str();
    add_choice(*command, "--format", options->format,
               Choices<int>{{"decimal", 0}, {"hex", 1}, {"raw", 2}}, "decimal, hex or raw");
    add_choice(*command, "--direction", options->direction, Choices<int>{{"to", 0}, {"from", 1}},
               "to (requests) or from (replies) the device");
    add_choice(*command, "--timeout", options->timeout,
               Choices<int>{{".5", 0}, {"1", 1}, {"10", 2}},
               "Longest reception of one burst: .5, 1 or 10, as in the window");
    command->add_option("--seconds", options->seconds, "End after so many seconds")
        ->check(CLI::NonNegativeNumber);
    command->add_option("--pcap", options->capture, "Write the bursts to a file for Wireshark");
    command->add_flag("--times", options->times, "Show time, gap and kind before each line");
    command->add_flag("--log", options->log, "Append the lines to listenlog.txt too");
    command->callback([options, command, &chosen] {
        options->seconds_given = command->count("--seconds") > 0;
        chosen = [options](TerminalEnvironment& environment) {
            return listen(*options, environment);
        };
    });
}

} // namespace pelvan
