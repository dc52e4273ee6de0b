// Who may use the lines, and what happens to ports that somebody wants to rebuild meanwhile.
#include "serial/line_use.h"

#include <gtest/gtest.h>

#include "support/error_of.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

TEST(LineUseTest, AClaimEndsWithItsLastHandle) {
    LineUse use;
    const LineUser setup{"Save/Restore Setup"}, scripts{"Command scripts"};
    std::string changes;
    const Subscription watching =
        use.changed.subscribe([&] { changes += use.refusal(nullptr).empty() ? "-" : "+"; });
    {
        LineClaim outer = use.claim(setup);
        const LineClaim inner = use.claim(setup);
        EXPECT_TRUE(outer && inner);
        LineClaim refused = use.claim(scripts);
        EXPECT_FALSE(refused);
        EXPECT_EQ(use.refusal(&setup), "");
        EXPECT_EQ(use.refusal(&scripts), "The line is in use by Save/Restore Setup.");
        LineClaim moved = std::move(outer);
        moved = std::move(refused); // releases what it held
        EXPECT_FALSE(moved);
        EXPECT_NE(use.refusal(&scripts), "");
    }
    EXPECT_EQ(use.refusal(&scripts), "");
    EXPECT_TRUE(use.claim(scripts));
    EXPECT_EQ(changes, "+-+-");
}

class SharedLineTest : public ::testing::Test, public testing::SerialRig {
  protected:
    SharedLineTest() { build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"}); }
    std::string ask(Link& by) {
        ports[0]->replies.push_back({{1, "reply"}});
        return by.transmit(0, "ask", 50, 8);
    }
    Link setup{table, countdowns, dialogs, log, "Save/Restore Setup"};
};

TEST_F(SharedLineTest, WhileClaimedOnlyTheHolderTransmitsAndNobodyRebuilds) {
    const std::string sentence = "The line is in use by Save/Restore Setup.";
    auto* const before = ports[0];
    try {
        const LineClaim claim = setup.claim();
        EXPECT_FALSE(link.claim());
        EXPECT_EQ(ask(setup), "reply");
        EXPECT_EQ(ask(link), "");
        EXPECT_EQ(link.refusal(), sentence);
        EXPECT_EQ(ports[0]->outputs.size(), 1U) << "the line was not touched";
        EXPECT_FALSE(table.init_comms());
        EXPECT_EQ(ports[0], before);
        EXPECT_EQ(dialogs.texts(), (Texts{sentence, sentence}));
        throw RunTimeError(error_number::kDiskFull);
    } catch (const RunTimeError&) { // however the operation ends
    }
    EXPECT_EQ(link.refusal(), "");
    EXPECT_EQ(ask(link), "reply");
    EXPECT_TRUE(table.init_comms());
}

TEST_F(SharedLineTest, ARebuildAskedForInAnErrorBoxFollowsTheExchange) {
    ask(link);
    ports[0]->fail_next("Output", error_number::kCannotReadDevice);
    bool asked = false;
    dialogs.on_message = [&](const std::string&) {
        if (std::exchange(asked, true)) return;
        const auto count = ports.size();
        EXPECT_TRUE(table.init_comms());
        EXPECT_EQ(ports.size(), count) << "nothing is rebuilt under the exchange";
    };
    EXPECT_EQ(ask(link), "");
    EXPECT_EQ(ports.size(), 4U) << "rebuilt when the exchange had ended";
    ports = {ports[2], ports[3]};
    EXPECT_EQ(ask(link), "reply");
}

TEST_F(SharedLineTest, ARebuildAskedForInABoxOfOpeningOrRebuildingFollowsItToo) {
    ports[0]->fail_next("PortOpen", 8005);
    bool asked = false;
    dialogs.on_message = [&](const std::string&) {
        if (!std::exchange(asked, true)) table.init_comms();
    };
    std::int16_t channel = 0;
    EXPECT_EQ(table.open_port(channel), 0);
    EXPECT_EQ(ports.size(), 4U);
    ini_write_string("COMMS CONTROLS", "DEVICE 1 PORT SETTING ", "short", config.gIniFile);
    asked = false;
    rebuild();
    EXPECT_EQ(state.gCommDevice.size(), 2U);
    EXPECT_EQ(ports.size(), 4U) << "once, and once again";
}

TEST_F(SharedLineTest, AnExchangeOnAnEmptyTableIsLoggedAndReturnsNothing) {
    ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "99", config.gIniFile);
    std::string reply = "none yet";
    bool asked = false;
    dialogs.on_message = [&](const std::string&) { // the box about the bad port number stands
        if (std::exchange(asked, true)) return;
        reply = link.transmit(0, "ask", 50, 8);
        ini_write_string("COMMS CONTROLS", "DEVICE 0 COMM PORT ", "1", config.gIniFile);
    };
    rebuild();
    EXPECT_EQ(reply, "");
    EXPECT_TRUE(log_text().ends_with("open_port, ERROR #,  9 \r\n")) << log_text();
    EXPECT_EQ(state.gCommDevice.size(), 2U);
}

} // namespace
} // namespace pelvan
