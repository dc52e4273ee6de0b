#include "badrequests/report.h"
#include "console/protocol_number.h"
#include "serial/careful_exchange.h"
#include "terminal/commands.h"
#include "terminal/json.h"

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;

struct Options {
    int protocol = protocol::kModbus;
    std::string address;
    std::string other_address;
    std::string read; // by --register, --text or --parameter
    TelluraCheck check = TelluraCheck::Bcc;
    double wait_s = 1;
    bool yes = false;
    bool json = false;
};

/// What is not given is the protocol's own default.
BadRequestOptions wanted(const Options& options) {
    BadRequestOptions all = default_options(options.protocol);
    if (!options.address.empty()) all.address = options.address;
    if (!options.other_address.empty()) all.other_address = options.other_address;
    if (!options.read.empty()) all.read = options.read;
    all.check = options.check;
    all.wait_ms = options.wait_s * kMsPerSecond;
    return all;
}

/// Prints each line when it is there; an interrupt ends the series.
class PrintingRun : public BadRequestListener {
  public:
    PrintingRun(TerminalEnvironment& environment, bool json)
        : environment_(environment), json_(json) {}
    void sending(int number, int of, const std::string& name) override {
        environment_.err << "pelvan7: " << number << " of " << of << ": " << name << std::endl;
    }
    void listed(const BadRequestLine& line) override {
        if (json_) return;
        for (const std::string& text : report_lines(line))
            environment_.out << text << "\n";
        environment_.out.flush();
    }
    bool go_on() override { return !environment_.stop; }

  private:
    TerminalEnvironment& environment_;
    bool json_;
};

Json report_json(const BadRequestResult& result) {
    Json lines = Json::array();
    for (const BadRequestLine& line : result.lines)
        lines.add(Json::object()
                      .set("name", line.name)
                      .set("sent", line.sent)
                      .set("expected", line.expected)
                      .set("came", line.answer)
                      .set("verdict", word_of(line.verdict))
                      .set("reason", line.reason));
    return Json::object()
        .set("tested", result.title)
        .set("port", result.port)
        .set("requests", std::move(lines))
        .set("good", result.all_good())
        .set("end", result.end);
}

int bad_requests(const Options& options, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    Core& app = terminal.app();
    const BadRequestOptions all = wanted(options);
    std::string refusal;
    const auto series = make_series(all, app.bad_request_link, app.messages, refusal);
    if (!series) {
        environment.err << "pelvan7: " << refusal << "\n";
        return exit_code::kBadOption;
    }
    if (!options.yes) {
        terminal.answer_questions_yes(false);
        app.services.dialogs.message_box(confirmation(*series));
        environment.err << "pelvan7: nothing was sent; --yes sends them\n";
        return exit_code::kFailed;
    }
    PrintingRun printer(environment, options.json);
    BadRequestRun run(app.bad_request_link, app.messages, printer);
    const BadRequestResult result = run.run(all);
    if (options.json)
        environment.out << report_json(result).text() << "\n";
    else if (!result.lines.empty())
        environment.out << report_sum(result) << "\n";
    environment.out.flush();
    if (!result.end.empty()) environment.err << "pelvan7: " << result.end << "\n";
    await_late_answer(app.bad_request_link);
    return result.all_good() ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_bad_requests_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<Options>();
    CLI::App* command = cli.add_subcommand(
        "bad-requests", "Send a controller requests that are wrong on purpose and print what it "
                        "does. They only read. 0 only when every verdict is good");
    add_choice(*command, "--protocol", options->protocol, protocol_names(),
               "full, modbus (the default), xon or tellura");
    command->add_option("--address", options->address, "Address of the controller (default: 1)");
    command->add_option("--other-address", options->other_address,
                        "An address that nobody on the line has (default: 247 in Modbus, 32 else)");
    CLI::Option* number = command->add_option(
        "--register", options->read, "Modbus: a register that the controller has (default: 0)");
    CLI::Option* text = command->add_option("--text", options->read,
                                            "Full, Xon: a command that reads (default: \"? C1\")");
    CLI::Option* parameter =
        command->add_option("--parameter", options->read,
                            "Tellura/AB: a parameter that the controller has (default: 01ca)");
    add_choice(*command, "--check", options->check,
               Choices<TelluraCheck>{{"bcc", TelluraCheck::Bcc}, {"crc", TelluraCheck::Crc}},
               "Tellura/AB: bcc (the default) or crc");
    command
        ->add_option("--wait", options->wait_s,
                     "Seconds that an answer to a bad request is waited for, 0.1 to 10")
        ->check(
            CLI::Range(kMinBadRequestWaitMs / kMsPerSecond, kMaxBadRequestWaitMs / kMsPerSecond))
        ->capture_default_str();
    command->add_flag("--yes", options->yes, "Send them; without this nothing is sent");
    command->add_flag("--json", options->json, "Print the result as JSON");
    command->callback([options, &chosen, number, text, parameter] {
        const bool texts =
            options->protocol == protocol::kFull || options->protocol == protocol::kXon;
        const CLI::Option* own = options->protocol == protocol::kModbus ? number
                                 : texts                                ? text
                                                                        : parameter;
        for (const CLI::Option* option : {number, text, parameter})
            if (option != own && option->count() > 0)
                throw CLI::ValidationError(option->get_name(), "goes with another protocol");
        chosen = [options](TerminalEnvironment& environment) {
            return bad_requests(*options, environment);
        };
    });
}

} // namespace pelvan
