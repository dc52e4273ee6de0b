// The command line, an argument a line: it is understood or refused in one line, and nothing that
// it names is touched.
#include <sstream>

#include "harness.h"
#include "support/fake_time.h"
#include "terminal/commands.h"
#include "terminal/shown_stream.h"
#include "text/strings.h"

namespace pelvan::fuzz {
namespace {

void run(Input& input) {
    std::vector<std::string> arguments = split(input.rest(), '\n');
    if (arguments.back().empty()) arguments.pop_back();
    testing::FakeTick tick;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    ShownStream shown_out(out);
    ShownStream shown_err(err);
    std::atomic<bool> stop{true};
    TerminalEnvironment environment{
        shown_out,
        shown_err,
        tick,
        clock,
        [](const std::string&, const LineSettings&) -> std::unique_ptr<SerialLine> {
            throw RunTimeError(error_number::kInvalidPortNumber);
        },
        "",
        stop};
    const AskedFor asked = read_arguments(arguments, environment);
    shown_out.flush();
    shown_err.flush();
    const std::string message = err.str();
    require(!asked.command || !asked.code, "a command is run or refused");
    if (asked.code == exit_code::kDone) require(!out.str().empty(), "help is printed");
    require((asked.code == exit_code::kBadOption) == !message.empty(), "a refusal has its message");
    if (message.empty()) return;
    require(message.starts_with("pelvan7: ") && message.find('\n') == message.size() - 1,
            "a message is one line");
}

const Target target("terminal_arguments", run);

} // namespace
} // namespace pelvan::fuzz
