#include "console/loopback_test.h"

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

constexpr float kTimeoutMs = 2000;
constexpr std::int16_t kQuietChars = 8;

} // namespace

bool verify_port(Services& services, Link& link, History& history, Form& form, std::int16_t channel,
                 const std::function<void(bool in)>& jumper_moved) {
    const auto comes_back = [&](const char* text) {
        const Hourglass busy(form);
        history.sending();
        const std::string received = link.transmit(channel, text, kTimeoutMs, kQuietChars);
        history.add(text, received);
        return received == text;
    };
    Dialogs& dialogs = services.dialogs;
    dialogs.message_box(kIntroduction, kTitle);
    if (jumper_moved) jumper_moved(true);
    if (!comes_back(kEchoText)) {
        dialogs.message_box(kNoEcho, kTitle);
        return false;
    }
    dialogs.message_box(kRemoveJumper, kTitle);
    if (jumper_moved) jumper_moved(false);
    const bool passed = !comes_back(kNoEchoText);
    dialogs.message_box(passed ? kPassed : kStillEchoes, kTitle);
    return passed;
}

void spoil_last_byte(std::string& frame) {
    if (!frame.empty()) frame.back() = frame.back() == '\xFF' ? '\0' : '\xFF';
}

} // namespace pelvan
