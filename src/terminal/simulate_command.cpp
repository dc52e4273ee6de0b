#include "simulator/line/pty_server.h"
#include "terminal/commands.h"

namespace pelvan {
namespace {

struct SimulateOptions {
    std::string model = "742";
    int address = 1;
    int speed = 1;
    std::string link;
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
    const int code = simulator::serve_on_pty({*device, options.link}, environment.stop,
                                             [&](const std::string& line) {
                                                 last = line;
                                                 // A line while it serves; why it cannot otherwise.
                                                 if (line.rfind("Serving", 0) == 0)
                                                     environment.out << line << std::endl;
                                             });
    if (code == 0) return exit_code::kDone;
    environment.err << "pelvan7: " << last << "\n";
    return exit_code::kFailed;
}

} // namespace

void add_simulate_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<SimulateOptions>();
    CLI::App* command = cli.add_subcommand(
        "simulate", "Serve a simulated controller on a pseudo-terminal until interrupted");
    command->add_option("--model", options->model, "742 (with ramp profiles), 730, or loopback")
        ->capture_default_str();
    command->add_option("--address", options->address, "Controller address")->capture_default_str();
    command
        ->add_option("--speed", options->speed,
                     "How many times faster the controller's clock runs, 1 to 3600")
        ->capture_default_str();
    command->add_option("--link", options->link, "Symbolic link to make to the pseudo-terminal");
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
