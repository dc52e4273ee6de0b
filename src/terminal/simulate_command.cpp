#include "simulator/line/pty_server.h"
#include "simulator/line/tcp_server.h"
#include "terminal/commands.h"

namespace pelvan {
namespace {

constexpr int kNoTcp = -1;
constexpr int kMaxTcpPort = 65535;

struct SimulateOptions {
    std::string model = "742";
    int address = 1;
    int speed = 1;
    std::string link;
    int tcp_port = kNoTcp;
    std::string listen = "127.0.0.1";
    int baud_rate = 9600;
    std::string faults; // further options of a simulated device's text
};

int simulate(const SimulateOptions& options, TerminalEnvironment& environment) {
    std::string text = "simulated:" + options.model;
    if (options.model != "loopback") text += ",address=" + std::to_string(options.address);
    if (options.speed != 1) text += ",speed=" + std::to_string(options.speed);
    if (!options.faults.empty()) text += "," + options.faults;
    const auto device = simulator::parse_simulated_device(text);
    if (!device) {
        environment.err << "pelvan7: no simulated device is called \"" << text << "\"\n";
        return exit_code::kBadOption;
    }
    std::string last;
    const auto report = [&](const std::string& line) {
        last = line;
        // A line while it serves; why it cannot otherwise.
        if (line.rfind("Serving", 0) == 0) environment.out << line << std::endl;
    };
    LineSettings settings;
    settings.baud_rate = options.baud_rate;
    const int code =
        options.tcp_port == kNoTcp
            ? simulator::serve_on_pty({*device, options.link}, environment.stop, report)
            : simulator::serve_on_tcp({*device, options.listen, options.tcp_port, settings},
                                      environment.stop, report);
    if (code == 0) return exit_code::kDone;
    environment.err << "pelvan7: " << last << "\n";
    return exit_code::kFailed;
}

} // namespace

void add_simulate_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* command = cli.add_subcommand(
        "simulate",
        "Serve a simulated controller on a pseudo-terminal, or a TCP port, until interrupted");
    command->add_option("--model", options->model, "742 (with ramp profiles), 730, or loopback")
        ->capture_default_str();
    command->add_option("--address", options->address, "Controller address")->capture_default_str();
    command
        ->add_option("--speed", options->speed,
                     "How many times faster the controller's clock runs, 1 to 3600")
        ->capture_default_str();
    CLI::Option* link = command->add_option("--link", options->link,
                                            "Symbolic link to make to the pseudo-terminal");
    CLI::Option* tcp =
        command
            ->add_option(
                "--tcp", options->tcp_port,
                "TCP port to serve on instead, for this machine alone; 0: one that is free")
            ->check(CLI::Range(0, kMaxTcpPort))
            ->excludes(link);
    command
        ->add_option(
            "--listen", options->listen,
            "Address to serve on with --tcp: 0.0.0.0 and :: are all of this machine's, and "
            "let every machine in that reaches them")
        ->needs(tcp)
        ->capture_default_str();
    command
        ->add_option("--baud", options->baud_rate,
                     "Baud rate whose pace the bytes keep with --tcp, 300 to 115200")
        ->check(CLI::Range(300, 115200))
        ->needs(tcp)
        ->capture_default_str();
    command->add_option(
        "--faults", options->faults,
        "Faults and their rates, such as lost=0.02,late=0.01,seed=7; refuse=REGISTER");
    command->callback([options, &chosen] {
        chosen = [options](TerminalEnvironment& environment) {
            return simulate(*options, environment);
        };
    });
}

} // namespace pelvan
