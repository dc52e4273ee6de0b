// The terminal's commands on hostile lines: an argument a line up to an empty one, then the bytes
// that the lines go by. A command ends, with one of its codes.
#include <sstream>

#include "harness.h"
#include "hostile_line.h"
#include "support/fake_time.h"
#include "terminal/terminal.h"
#include "working_directory.h"

namespace pelvan::fuzz {
namespace {

/// Arguments that touch nothing outside of the working directory and take no real time: no path,
/// no device that is served.
std::vector<std::string> arguments_of(Input& input) {
    std::vector<std::string> arguments;
    for (std::string_view line = input.line(); !line.empty(); line = input.line()) {
        if (line.find('/') == line.npos && line.find("simulate") == line.npos)
            arguments.emplace_back(line);
    }
    return arguments;
}

void run(Input& input) {
    const std::vector<std::string> arguments = arguments_of(input);
    fill_working_directory(input);
    testing::FakeTick tick;
    tick.step_ms = 2;
    testing::FakeClock clock;
    simulator::SimulatorRegistry controllers(tick);
    std::ostringstream out;
    std::ostringstream err;
    const bool listens = std::find(arguments.begin(), arguments.end(), "listen") != arguments.end();
    std::atomic<bool> stop{listens};
    TerminalEnvironment environment{
        out, err, tick, clock, HostileLine::opener(input, tick, controllers), working_directory(),
        stop};
    int waits = 0;
    environment.wait_ms = [&](int ms) {
        require(ms >= 0, "time goes forward");
        tick.advance(ms);
        if (++waits > 100) stop = true;
    };
    const std::optional<int> code = run_terminal(arguments, environment);
    require(!code || (*code >= exit_code::kDone && *code <= exit_code::kBadOption),
            "a command ends with a code");
    require(!code || *code != exit_code::kBadOption || !err.str().empty(), "a refusal is told");
    require(err.str().find("INTERNAL ERROR") == std::string::npos, "no fault of its own");
}

const Target target("terminal_commands", run);

} // namespace
} // namespace pelvan::fuzz
