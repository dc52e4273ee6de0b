// "scan": looking for controllers on a line.
#include <algorithm>

#include "console/protocol_number.h"
#include "console/start_up.h"
#include "scan/scan_channel.h"
#include "terminal/commands.h"
#include "terminal/json.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kProgressStep = 10; // percent
constexpr double kQuietMs = 2000; // between two lines of progress
constexpr const char* kLineModes[] = {"clear", "set", "toggle"};

struct ScanCommandOptions {
    ScanOptions scan;
    int port = 0; // that of the channel which the console has selected
    bool json = false;
};

/// Progress and remarks are lines on standard error, an interrupt ends the scan.
class TerminalScan : public ScanListener {
  public:
    explicit TerminalScan(TerminalEnvironment& environment) : environment_(environment) {}

    void probing(const ScanProgress& progress) override {
        const int percent = static_cast<int>(100 * progress.done) / kProgressStep * kProgressStep;
        const double now_ms = environment_.tick.precise_ms();
        if (percent <= shown_ || now_ms - said_ms_ < kQuietMs) return;
        say(std::to_string(percent) + " %, about " + scan_time_text(progress.left_ms) + " left");
        shown_ = percent;
        said_ms_ = now_ms;
    }
    void found(const ScanFind& find) override { say("found: " + find_text(find)); }
    void remark(const std::string& sentence) override {
        remarks_.push_back(sentence);
        say(sentence);
    }
    bool go_on() override { return !environment_.stop; }

    void say(const std::string& text) { environment_.err << "pelvan7: " << text << std::endl; }
    [[nodiscard]] const std::vector<std::string>& remarks() const { return remarks_; }

  private:
    TerminalEnvironment& environment_;
    int shown_ = 0; // percent
    double said_ms_ = environment_.tick.precise_ms();
    std::vector<std::string> remarks_;
};

const char* end_word(ScanEnd how) {
    switch (how) {
    case ScanEnd::Completed:
        return "completed";
    case ScanEnd::FoundFirst:
        return "found";
    case ScanEnd::Cancelled:
        return "cancelled";
    case ScanEnd::Failed:
        return "failed";
    case ScanEnd::Refused:
        break;
    }
    return "refused";
}

Json find_json(const ScanFind& find) {
    const bool addressed = find.protocol != ScanProtocol::Xon;
    Json json = Json::object();
    json.set("protocol", scan_protocol_name(find.protocol))
        .set("address", addressed ? Json(find.address) : Json())
        .set("settings", settings_text(find.line));
    if (find.protocol == ScanProtocol::Tellura) json.set("check", find.crc ? "crc" : "bcc");
    return json.set("model", find.answer.model.empty() ? Json() : Json(find.answer.model))
        .set("answer", find.answer.words)
        .set("reply_ms", round_half_even(find.reply_ms))
        .set("after_ms", round_half_even(find.after_ms));
}

Json unsure_json(const std::vector<UnsureAnswer>& answers) {
    Json all = Json::array();
    for (const UnsureAnswer& answer : answers)
        all.add(
            Json::object()
                .set("protocol", scan_protocol_name(answer.protocol))
                .set("address",
                     answer.protocol != ScanProtocol::Xon ? Json(answer.address) : Json())
                .set("settings", settings_text(answer.line))
                .set("patience_ms", answer.patience_ms > 0 ? Json(answer.patience_ms) : Json()));
    return all;
}

void print_json(const ScanResult& result, int port, const TerminalScan& scan, std::ostream& out) {
    Json finds = Json::array();
    for (const ScanFind& find : result.finds)
        finds.add(find_json(find));
    Json json = Json::object();
    json.set("port", port)
        .set("end", end_word(result.how))
        .set("reason", result.reason)
        .set("finds", std::move(finds))
        .set("unsure", unsure_json(result.unsure))
        .set("remarks", Json(scan.remarks()))
        .set("requests", static_cast<double>(result.probes))
        .set("unasked", static_cast<double>(result.unasked))
        .set("taken_ms", round_half_even(result.taken_ms));
    out << json.text() << "\n";
}

void print_table(const std::vector<ScanFind>& finds, std::ostream& out) {
    std::vector<FindColumns> rows{find_headings()};
    std::transform(finds.begin(), finds.end(), std::back_inserter(rows), columns_of);
    std::array<std::size_t, kFindColumns> widths{};
    for (const FindColumns& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    for (const FindColumns& row : rows) {
        std::string line;
        for (std::size_t i = 0; i + 1 < row.size(); ++i)
            line += row[i] + std::string(widths[i] - row[i].size() + 2, ' ');
        out << line << row.back() << "\n";
    }
}

/// `directory`: that of --directory, which a command that is typed later needs again.
void say_outcome(const ScanResult& result, const ScanOptions& options, const std::string& directory,
                 TerminalScan& scan) {
    const std::string time = scan_time_text(result.taken_ms);
    if (result.how == ScanEnd::Cancelled) scan.say("interrupted after " + time);
    if (const std::string unfinished = unfinished_text(result); !unfinished.empty())
        scan.say(unfinished);
    else if (result.finds.empty() && result.unsure.empty() && result.how == ScanEnd::Completed)
        scan.say((result.garbled ? "no valid answer came in " : "no controller answered in ") +
                 time + (result.strays ? ", but bytes that nobody was asked for" : ""));
    if (const std::string unsure = unsure_text(result, "--patience"); !unsure.empty())
        scan.say(unsure + " This took " + time + ".");
    if (result.finds.size() != 1) return;
    const ScanFind& find = result.finds.front();
    const auto& names = protocol_names();
    const auto name = std::find_if(names.begin(), names.end(), [&find](const auto& choice) {
        return choice.second == static_cast<int>(find.protocol);
    });
    const std::string place = directory.empty() ? "" : "--directory '" + directory + "' ";
    scan.say("to use it: pelvan7 " + place + "ports set " + name->first + " --port " +
             std::to_string(options.port) + " --settings " + settings_text(find.line) +
             " --lines " + kLineModes[options.line_mode] + (find.echo ? " --echo yes" : ""));
}

int scan_line(const ScanCommandOptions& given, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    Core& app = terminal.app();
    if (!terminal.start()) return exit_code::kFailed;
    const auto& devices = app.session.serial.gCommDevice;
    const int selected = saved_protocol(app.session.config);
    const bool known = selected >= 0 && selected < static_cast<int>(devices.size());
    const int port = given.port > 0
                         ? given.port
                         : devices[known ? static_cast<std::size_t>(selected) : 0]->CommPort();
    ScanOptions options = given.scan;
    prepare_scan(options, app.session.serial, app.session.config, static_cast<std::int16_t>(port),
                 selected);
    TerminalScan listener(environment);
    const std::vector<ScanStep> plan = plan_scan(options);
    listener.say("port " + std::to_string(port) + ", " + std::to_string(probes_of(plan)) +
                 " requests, about " + scan_time_text(estimated_ms(plan, options.patience_ms)));
    const ScanResult result = app.bus_scan.run(options, listener);
    if (given.json)
        print_json(result, port, listener, environment.out);
    else if (!result.finds.empty())
        print_table(result.finds, environment.out);
    if (!result.reason.empty() && !terminal.has_told(result.reason)) listener.say(result.reason);
    say_outcome(result, options, environment.directory_found ? "" : environment.directory,
                listener);
    const bool first = result.how == ScanEnd::FoundFirst;
    const bool done = first || (result.how == ScanEnd::Completed && result.unsure.empty());
    return done && result.unasked == 0 && !result.finds.empty() ? exit_code::kDone
                                                                : exit_code::kFailed;
}

std::string unknown_choice(const std::string& word, const std::string& words) {
    return "\"" + word + "\" is no choice, choose of " + words;
}

/// An option that takes several of the words, parted by commas, in any case.
template <class Value>
void add_choices(CLI::App& command, const std::string& name, std::vector<Value>& target,
                 const Choices<Value>& choices, const std::string& description) {
    std::string words;
    for (const auto& [word, value] : choices)
        words += (words.empty() ? "" : ",") + word;
    const auto choose = [&target, choices, name, words](const std::string& text) {
        target.clear();
        for (const std::string& word : split(text, ',')) {
            const auto found = std::find_if(choices.begin(), choices.end(), [&](const auto& one) {
                return CLI::ignore_case(word) == one.first;
            });
            if (found == choices.end())
                throw CLI::ValidationError(name, unknown_choice(word, words));
            if (std::find(target.begin(), target.end(), found->second) == target.end())
                target.push_back(found->second);
        }
    };
    command.add_option_function<std::string>(name, choose, description);
}

Choices<int> number_choices(const std::vector<int>& numbers) {
    Choices<int> choices;
    for (const int number : numbers)
        choices.emplace_back(std::to_string(number), number);
    return choices;
}

/// "1-247" or "5".
void set_addresses(const std::string& text, ScanOptions& options) {
    const auto dash = text.find('-');
    const auto first = whole_number(text.substr(0, dash), 0, kMaxScanAddress);
    const auto last =
        dash == text.npos ? first : whole_number(text.substr(dash + 1), 0, kMaxScanAddress);
    if (!first || !last || *last < *first)
        throw CLI::ValidationError("--addresses", "give 5 or 1-32, from 0 to 247");
    options.first_address = static_cast<int>(*first);
    options.last_address = static_cast<int>(*last);
}

void add_scan_options(CLI::App& command, ScanOptions& scan) {
    Choices<ScanProtocol> protocols;
    for (const auto& [name, number] : protocol_names())
        protocols.emplace_back(name, static_cast<ScanProtocol>(number));
    add_choices(command, "--protocol", scan.protocols, protocols,
                "Those to try: full,modbus,xon,tellura (default: all)");
    add_choices(command, "--baud", scan.baud_rates, number_choices(scan_baud_rates()),
                "Rates to try (default: 9600,19200,38400,4800)");
    command.add_option_function<std::string>(
        "--parity",
        [&scan](const std::string& text) {
            scan.parities = upper_case(text);
            std::erase(scan.parities, ',');
            if (scan.parities.empty() || scan.parities.find_first_not_of("NEO") != text.npos)
                throw CLI::ValidationError("--parity", "choose of n,e,o");
        },
        "Parities to try: n,e,o (default: all)");
    add_choices(command, "--stop", scan.stop_bits, number_choices({1, 2}),
                "Stop bits to try: 1,2 (default: 1)");
    add_choices(command, "--bits", scan.data_bits, number_choices({8, 7}),
                "Data bits to try: 8,7; 7 for full and xon alone (default: 8)");
    command.add_option_function<std::string>(
        "--addresses", [&scan](const std::string& text) { set_addresses(text, scan); },
        "Addresses to try, as far as a protocol has them: 5 or 1-32 (default: all)");
    command
        .add_option("--patience", scan.patience_ms,
                    "Milliseconds that a controller may take to begin its answer (default: 90)")
        ->check(CLI::Range(kMinScanPatienceMs, kMaxScanPatienceMs));
    command.add_flag("--first", scan.stops_at_first, "End with the first controller found");
}

} // namespace

void add_scan_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<ScanCommandOptions>();
    CLI::App* command =
        cli.add_subcommand("scan", "Search a line for controllers; nothing but reads is sent");
    command
        ->add_option("--port", options->port,
                     "Port number (default: that of the protocol that the console has selected)")
        ->check(CLI::Range(kMinPortNumber, kMaxPortNumber));
    add_scan_options(*command, options->scan);
    command->add_flag("--json", options->json, "Print the result as JSON");
    command->callback([options, command, &chosen] {
        for (const char* format : {"--baud", "--parity", "--stop", "--bits"})
            options->scan.only_chosen |= command->count(format) > 0;
        chosen = [options](TerminalEnvironment& environment) {
            return scan_line(*options, environment);
        };
    });
}

} // namespace pelvan
