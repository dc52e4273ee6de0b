#include "console/loopback_test.h"

#include "console/send_outcome.h"

namespace pelvan {
namespace {

constexpr char kTitle[] = "Verify Communications Port";
constexpr char kIntroduction[] =
    "This will verify your Communications Port selection.\r"
    "This procedure only works with full duplex serial connections.\r\n\n"
    "Please short together the transmit and receive pins(RS-232=pins 2 & 3).\r\n\n"
    "Click OK to continue.";
constexpr char kRemoveJumper[] = "Now remove the jumper.\r\n\nClick OK to continue.";
constexpr char kEchoText[] = "This message should echo back!";
constexpr char kNoEchoText[] = "This message should not echo back!";
constexpr char kPassed[] = "Test Passed!";
// The two failures are told apart by "or" and "and": with the jumper in, the wiring or the chosen
// port may be wrong; with it out, the port has echoed once and both are to be looked at.
constexpr char kNoEcho[] =
    "Test failed. Check the wiring or verify the comm port and it's settings.";
constexpr char kStillEchoes[] =
    "Test failed. Check the wiring and verify the comm port and it's settings.";

constexpr char kEchoQuestion[] =
    "Bytes come back although nothing is joined. Two-wire converters (RS-485) give back what is "
    "sent. Is there one on this line, and shall its echo be taken out from now on?";

constexpr float kTimeoutMs = 2000;
constexpr std::int16_t kQuietChars = 8;

} // namespace

LoopbackResult verify_port(Link& link, Clock& clock, std::int16_t channel,
                           LoopbackListener& listener) {
    const auto comes_back = [&](const char* text) {
        listener.sending();
        ExchangeTimes times(link.countdowns(), clock);
        const std::string received =
            link.transmit(channel, text, kTimeoutMs, kQuietChars,
                          [&](std::string_view echo) { return echo == text; });
        times.end();
        listener.exchanged(times.row(text, received));
        return received == text;
    };
    // Between the halves somebody moves a jumper: nobody else's bytes may come back meanwhile.
    const LineClaim claim = link.claim();
    const Link::EchoKept kept(link);
    if (!claim) {
        listener.message(link.refusal().c_str(), kTitle);
        return LoopbackResult::Failed;
    }
    listener.message(kIntroduction, kTitle);
    listener.jumper_expected(true);
    if (!comes_back(kEchoText)) {
        listener.message(kNoEcho, kTitle);
        return LoopbackResult::Failed;
    }
    listener.message(kRemoveJumper, kTitle);
    listener.jumper_expected(false);
    const bool passed = !comes_back(kNoEchoText);
    listener.message(passed ? kPassed : kStillEchoes, kTitle);
    return passed ? LoopbackResult::Passed : LoopbackResult::EchoesWithoutJumper;
}

void offer_echo(const ConfigState& config, ChannelTable& channels, std::int16_t channel,
                Dialogs& dialogs) {
    const std::string key = ini_key::echo(channel);
    const auto on = [&] {
        return ini_read_string(ini_key::kCommsSection, key, {}, config.gIniFile) == ini_key::kYes;
    };
    if (on() || dialogs.message_box(kEchoQuestion, kTitle, MessageButtons::YesNoPreferNo) !=
                    MessageAnswer::Yes)
        return;
    ini_write_string(ini_key::kCommsSection, key, ini_key::kYes, config.gIniFile);
    if (!on())
        dialogs.message_box("This could not be written to " + config.gIniFile + ".", kTitle);
    else
        channels.init_comms();
}

} // namespace pelvan
