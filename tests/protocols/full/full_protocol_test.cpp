#include <gtest/gtest.h>

#include "protocols/full/full_protocol.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

/// A script's pieces between strokes answer one message each.
struct FullTest : ::testing::Test, SerialRig {
    FullTest() { build({"1;9600,N,8,1;1"}); }

    /// The reply's text, a "+" before that of a command that was completed, a "*" before a damaged
    /// one.
    std::string run(const std::string& command, const std::string& script, int address = 1) {
        ports[0]->outputs.clear();
        ports[0]->replies.clear();
        for (const std::string& reply : split(wire(script), '|'))
            ports[0]->replies.push_back({{0.5, reply}});
        const auto device = static_cast<std::int16_t>(address);
        const FullReply reply = full.full_command(command, device, 5000);
        return (reply.damaged ? "*" : reply.completed ? "+" : "") + reply.text;
    }
    /// What was sent since `run` began, a stroke behind each message.
    std::string sent() { return ports[0]->sent("|"); }

    FullProtocol full{link, dialogs};
};

TEST_F(FullTest, DialoguesAndTheirOutcomes) {
    const char* const unknown = "DEVICE ERROR COULDN'T BE DETECTED";
    // Command, answers, what was sent, result.
    const std::tuple<const char*, const char*, const char*, const char*> dialogues[] = {
        {"? C1", "1^|^|{25.0}", "1#|{? C1}|$|$|~$|", "+25.0"},
        // Only the end decides; that the rest is damaged is told.
        {"? C1", "1^|^|}", "1#|{? C1}|$|$|~$|", "*"},
        {"? C1", "1^|^|25.0}", "1#|{? C1}|$|$|~$|", "*5.0"},
        {"? C1", "1^|^|{2{25.0}", "1#|{? C1}|$|$|~$|", "*2\00225.0"},
        {"= SP1 5", "1^|^", "1#|{= SP1 5}|~$|", "+MESSAGE COMPLETED"},
        // A response without its end: then whole, never whole, whole only for the NAK.
        {"? C1", "1^|^|{25|{25}|{25.0}", "1#|{? C1}|$|!|$|$|~$|", "+25.0"},
        {"? C1", "1^|^|{25|{25", "1#|{? C1}|$|!|~$|", "NAK NOT RECEIVED"},
        {"? C1", "1^|^||{25}|", "1#|{? C1}|$|!|$|~$|", "NOT RECEIVED"},
        // Silence; another device.
        {"? C1", "", "1#|", "COULDN'T CONNECT TO DEVICE"},
        {"? C1", "2^", "1#|", "COULDN'T CONNECT TO DEVICE"},
        // Refused for a reason, for none, for one that is lost.
        {"= C1 1", "1^|!|^|{ 26}", "1#|{= C1 1}|{? ER2}|$|$|~$|", "Read only command"},
        {"= C1 1", "1^|!|!", "1#|{= C1 1}|{? ER2}|~$|", unknown},
        {"= C1 1", "1^|!|^|", "1#|{= C1 1}|{? ER2}|$|~$|", unknown}};
    for (const auto& [command, script, messages, result] : dialogues) {
        EXPECT_EQ(run(command, script), result) << script;
        EXPECT_EQ(sent(), wire(messages)) << script;
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(FullTest, ErrorCodesInWords) {
    const auto text_of = [this](const std::string& code) {
        return run("= SP1 1", "1^|!|^|{" + code + "}");
    };
    std::string known;
    for (int code = -1; code <= 43; ++code)
        if (const std::string text = text_of(std::to_string(code)); text != "Unknown Error")
            known += std::to_string(code) + " " + text + "|";
    EXPECT_EQ(known, "0 No comms error|1 Transmit buffer overflow|2 Receive buffer overflow|"
                     "3 Framing error|4 Overrun error|5 Parity error|6 Talking out of turn|"
                     "7 Invalid reply|8 Noise error|20 Command not found|21 Parameter not found|"
                     "22 Incomplete command line|23 Invalid character|"
                     "24 Number of character overflow|25 Input out of limit|26 Read only command|"
                     "27 Write only command|28 Parameter not active|30 Request to RUN invalid|"
                     "31 Request to HOLD invalid|32 Command invalid in RUN mode|"
                     "33 Command invalid in HOLD mode|34 Output 3 is not an Event|"
                     "35 Output 4 is not an Event|38 Asterisk not allowed|39 Infinite loop error|"
                     "40 Output 2 is not an Event|41 Asterisk expected|");
    EXPECT_EQ(text_of("25.5"), "Unknown Error");
    EXPECT_EQ(text_of("nothing"), "No comms error");
}

TEST_F(FullTest, AddressesTheMessageForABadOneAndForACommandOfNeitherKind) {
    std::string sent_to;
    for (const int address : {0, 9, 10, 32, 33, -1}) {
        static_cast<void>(run("? C1", "", address));
        sent_to += sent();
    }
    EXPECT_EQ(sent_to, wire("0#|9#|A#|W#|1#|1#|"));
    EXPECT_EQ(dialogs.shown.size(), 2U);
    dialogs.on_message = [&](const std::string& text) {
        EXPECT_EQ(text, "Beginning of comms command not valid (= or ?)");
        EXPECT_EQ(sent(), wire("1#|{C1}|")) << "questioned once it was sent";
    };
    EXPECT_EQ(run("C1", "1^|^"), "");
    EXPECT_EQ(sent(), wire("1#|{C1}|~$|"));
    EXPECT_EQ(run("C1", "1^|!|^|{20}"), "Command not found");
    dialogs.on_message = {};
    EXPECT_EQ(run("", "1^|^"), "");
    EXPECT_EQ(dialogs.shown.size(), 4U);
}

TEST(FullMessages, EndWithTheirLastCharacter) {
    for (const char* whole : {"^", "!", "$", "1^", "{}", "{12.5}", "12.5}"})
        EXPECT_TRUE(ends_full_message(wire(whole))) << whole;
    for (const char* piece : {"", "1", "{", "{12.5", "{12^", "{!"})
        EXPECT_FALSE(ends_full_message(wire(piece))) << piece;
}

TEST_F(FullTest, ASilentDeviceIsGivenUpQuickly) {
    const double begun = tick.now();
    static_cast<void>(run("? C1", ""));
    EXPECT_NEAR(tick.now() - begun, 250, 50);
}

} // namespace pelvan::testing
