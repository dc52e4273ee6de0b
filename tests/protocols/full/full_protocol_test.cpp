#include <gtest/gtest.h>

#include <map>

#include "protocols/full/full_protocol.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using testing::wire;

/// A script's pieces between strokes answer one message each.
class FullTest : public ::testing::Test {
  protected:
    FullTest() { rig.build({"1;9600,N,8,1;1"}); }

    std::string run(const std::string& command, const std::string& script,
                    std::int16_t address = 1) {
        port().outputs.clear();
        port().replies.clear();
        for (const std::string& reply : split(wire(script), '|'))
            port().replies.push_back({{0.5, reply}});
        const FullReply reply = full.full_command(command, address, 5000);
        completed = reply.completed;
        return reply.text;
    }
    /// What was sent since `run` began, strokes between the messages.
    [[nodiscard]] std::string sent() {
        std::string all;
        for (const std::string& output : port().outputs)
            all += (all.empty() ? "" : "|") + output;
        return all;
    }
    testing::FakeSerialPort& port() { return *rig.ports[0]; }

    testing::SerialRig rig;
    FullProtocol full{rig.link, rig.dialogs};
    bool completed = false; // the last command
};

TEST_F(FullTest, DialoguesAndTheirOutcomes) {
    const char* const unknown = "DEVICE ERROR COULDN'T BE DETECTED";
    // Command, answers, what was sent, result, whether it completed.
    const std::vector<std::tuple<const char*, const char*, const char*, const char*, bool>> cases{
        {"? C1", "1^|^|{25.0}", "1#|{? C1}|$|$|~$", "25.0", true},
        {"? C1", "1^|^|}", "1#|{? C1}|$|$|~$", "", true},
        {"= SP1 5", "1^|^", "1#|{= SP1 5}|~$", "MESSAGE COMPLETED", true},
        // A response without its end: then whole, never whole, whole only for the NAK.
        {"? C1", "1^|^|{25|{25}|{25.0}", "1#|{? C1}|$|!|$|$|~$", "25.0", true},
        {"? C1", "1^|^|{25|{25", "1#|{? C1}|$|!|~$", "NAK NOT RECEIVED", false},
        {"? C1", "1^|^||{25}|", "1#|{? C1}|$|!|$|~$", "NOT RECEIVED", false},
        // Silence; another device.
        {"? C1", "", "1#", "COULDN'T CONNECT TO DEVICE", false},
        {"? C1", "2^", "1#", "COULDN'T CONNECT TO DEVICE", false},
        // Refused for a reason, for none, for one that is lost.
        {"= C1 1", "1^|!|^|{ 26}", "1#|{= C1 1}|{? ER2}|$|$|~$", "Read only command", false},
        {"= C1 1", "1^|!|!", "1#|{= C1 1}|{? ER2}|~$", unknown, false},
        {"= C1 1", "1^|!|^|", "1#|{= C1 1}|{? ER2}|$|~$", unknown, false},
    };
    for (const auto& [command, script, messages, result, completes] : cases) {
        EXPECT_EQ(run(command, script), result) << script;
        EXPECT_EQ(sent(), wire(messages)) << script;
        EXPECT_EQ(completed, completes) << script;
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(FullTest, ErrorCodesInWords) {
    const std::string unknown = "Unknown Error";
    const std::map<int, std::string> texts{{0, "No comms error"},
                                           {1, "Transmit buffer overflow"},
                                           {2, "Receive buffer overflow"},
                                           {3, "Framing error"},
                                           {4, "Overrun error"},
                                           {5, "Parity error"},
                                           {6, "Talking out of turn"},
                                           {7, "Invalid reply"},
                                           {8, "Noise error"},
                                           {20, "Command not found"},
                                           {21, "Parameter not found"},
                                           {22, "Incomplete command line"},
                                           {23, "Invalid character"},
                                           {24, "Number of character overflow"},
                                           {25, "Input out of limit"},
                                           {26, "Read only command"},
                                           {27, "Write only command"},
                                           {28, "Parameter not active"},
                                           {30, "Request to RUN invalid"},
                                           {31, "Request to HOLD invalid"},
                                           {32, "Command invalid in RUN mode"},
                                           {33, "Command invalid in HOLD mode"},
                                           {34, "Output 3 is not an Event"},
                                           {35, "Output 4 is not an Event"},
                                           {38, "Asterisk not allowed"},
                                           {39, "Infinite loop error"},
                                           {40, "Output 2 is not an Event"},
                                           {41, "Asterisk expected"}};
    const auto text_of = [&](const std::string& code) {
        return run("= SP1 1", "1^|!|^|{" + code + "}");
    };
    for (int code = -1; code <= 43; ++code) {
        const auto text = texts.find(code);
        EXPECT_EQ(text_of(std::to_string(code)), text == texts.end() ? unknown : text->second);
    }
    EXPECT_EQ(text_of("25.5"), unknown);
    EXPECT_EQ(text_of("nothing"), texts.at(0));
}

TEST_F(FullTest, AddressesAndTheMessageForABadOne) {
    const std::vector<std::pair<std::int16_t, std::string>> cases{{0, "0"},  {9, "9"},  {10, "A"},
                                                                  {32, "W"}, {33, "1"}, {-1, "1"}};
    for (const auto& [address, text] : cases) {
        static_cast<void>(run("? C1", "", address));
        EXPECT_EQ(sent(), wire(text + "#")) << address;
    }
    EXPECT_EQ(rig.dialogs.shown.size(), 2U);
}

TEST_F(FullTest, ACommandOfNeitherKindIsSentAndThenQuestioned) {
    rig.dialogs.on_message = [&](const std::string& text) {
        EXPECT_EQ(text, "Beginning of comms command not valid (= or ?)");
        EXPECT_EQ(port().outputs.size(), 2U);
    };
    EXPECT_EQ(run("C1", "1^|^"), "");
    EXPECT_EQ(sent(), wire("1#|{C1}|~$"));
    EXPECT_FALSE(completed);
    EXPECT_EQ(run("", "1^|^"), "");
    EXPECT_EQ(run("C1", "1^|!|^|{20}"), "Command not found");
    EXPECT_EQ(rig.dialogs.shown.size(), 2U);
}

TEST_F(FullTest, ASilentDeviceIsGivenUpQuickly) {
    const double begun = rig.tick.now();
    static_cast<void>(run("? C1", ""));
    EXPECT_NEAR(rig.tick.now() - begun, 250, 50);
}

} // namespace
} // namespace pelvan
