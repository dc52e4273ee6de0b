#include "config/device_map.h"
#include "console/loopback_test.h"
#include "console/start_up.h"
#include "terminal/commands.h"

namespace pelvan {
namespace {

constexpr int kNotGiven = -1;
constexpr int kDefaultPauseSeconds = 10;
constexpr int kMaxPauseSeconds = 600;
constexpr double kMsPerSecond = 1000;
/// How long one wait lasts at most, so that an interrupt is noticed soon.
constexpr int kWaitMs = 50;

enum class Jumper { Asked, In, Out };

struct VerifyOptions {
    int protocol = kNotGiven; // then the one that the console has selected
    int pause_seconds = kNotGiven;
    Jumper jumper = Jumper::Asked;
    bool yes = false;
};

bool is_simulated_channel(const Core& app, int channel) {
    const auto& devices = app.session.serial.gCommDevice;
    if (channel >= static_cast<int>(devices.size())) return false;
    const auto device = device_for_port(devices[static_cast<std::size_t>(channel)]->CommPort(),
                                        app.session.config.gIniFile);
    return device && simulator::is_simulated(*device);
}

/// The time in which somebody moves the jumper; an interrupt ends the command.
void wait_for_jumper(TerminalEnvironment& environment, int seconds) {
    if (seconds <= 0) return;
    environment.err << "pelvan7: going on in " << seconds << " seconds" << std::endl;
    const std::uint32_t begun = environment.tick.timeGetTime();
    while (environment.tick.timeGetTime() - begun < seconds * kMsPerSecond) {
        if (environment.stop) throw CommandAborted{"interrupted"};
        environment.wait_ms(kWaitMs);
    }
}

/// The test without a window: messages are lines, and what they ask for is waited for.
class LoopbackRun : public LoopbackListener {
  public:
    LoopbackRun(Core& app, TerminalEnvironment& environment, Jumper jumper, int pause)
        : app_(app), environment_(environment), jumper_(jumper), pause_(pause) {}
    void message(const char* text, const char* title) override {
        app_.services.dialogs.message_box(text, title);
    }
    void jumper_expected(bool in) override {
        app_.simulators.set_jumper(jumper_ == Jumper::Asked ? in : jumper_ == Jumper::In);
        wait_for_jumper(environment_, pause_);
    }
    void exchanged(const HistoryRow&) override {}

  private:
    Core& app_;
    TerminalEnvironment& environment_;
    Jumper jumper_;
    int pause_; // seconds
};

int verify(const VerifyOptions& options, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    Core& app = terminal.app();
    terminal.answer_questions_yes(options.yes);
    if (!terminal.start()) return exit_code::kFailed;
    const int channel =
        options.protocol == kNotGiven ? saved_protocol(app.session.config) : options.protocol;
    int pause = options.pause_seconds;
    if (pause == kNotGiven) pause = is_simulated_channel(app, channel) ? 0 : kDefaultPauseSeconds;
    LoopbackRun run(app, environment, options.jumper, pause);
    const auto tested = static_cast<std::int16_t>(channel);
    const LoopbackResult result = verify_port(app.link, app.services.clock, tested, run);
    if (result == LoopbackResult::EchoesWithoutJumper)
        offer_echo(app.session.config, app.channels, tested, app.services.dialogs);
    return result == LoopbackResult::Passed ? exit_code::kDone : exit_code::kFailed;
}

} // namespace

void add_verify_port_command(CLI::App& cli, ChosenCommand& chosen) {
    auto options = std::make_shared<VerifyOptions>();
    CLI::App* command =
        cli.add_subcommand("verify-port", "Loop-back test of a port and its wiring");
    add_choice(*command, "--protocol", options->protocol, protocol_names(),
               "Whose channel to test: full, modbus, xon or tellura (default: the one that the "
               "console has selected)");
    command
        ->add_option("--pause", options->pause_seconds,
                     "Seconds for moving the jumper at each message (default: 10; 0 on simulated "
                     "devices)")
        ->check(CLI::Range(0, kMaxPauseSeconds));
    add_choice(*command, "--jumper", options->jumper,
               Choices<Jumper>{{"asked", Jumper::Asked}, {"in", Jumper::In}, {"out", Jumper::Out}},
               "Jumper of simulated:loopback: asked (moved as the messages ask), in or out");
    command->add_flag("--yes", options->yes,
                      "When bytes come back without the jumper, set the channel to take out the "
                      "echo of a two-wire converter");
    command->callback([options, &chosen] {
        chosen = [options](TerminalEnvironment& environment) {
            return verify(*options, environment);
        };
    });
}

} // namespace pelvan
