// The loop-back test and the switch for bad checksums.
#include <gtest/gtest.h>

#include "console/loopback_test.h"
#include "simulated_console.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::SimulatedConsole;

const std::string kIntroduction =
    "This will verify your Communications Port selection.\r"
    "This procedure only works with full duplex serial connections.\r\n\n"
    "Please short together the transmit and receive pins(RS-232=pins 2 & 3).\r\n\n"
    "Click OK to continue.";
const std::string kRemove = "Now remove the jumper.\r\n\nClick OK to continue.";
const std::string kEcho = "This message should echo back!";
const std::string kNoEcho = "This message should not echo back!";

TEST(LoopbackTest, EndsInOneOfThreeMessages) {
    SimulatedConsole rig(Texts(4, "simulated:loopback"), protocol::kXon);
    frm_Pelvan5VB& console = rig.app.console;
    struct Case {
        MenuEntry& jumper;
        Texts messages;
        Texts received;
    };
    const std::vector<Case> cases{
        {console.mnuJumperAsAsked, {kIntroduction, kRemove, "Test Passed!"}, {kEcho, ""}},
        {console.mnuJumperIn,
         {kIntroduction, kRemove,
          "Test failed. Check the wiring and verify the comm port and it's settings."},
         {kEcho, kNoEcho}},
        {console.mnuJumperOut,
         {kIntroduction,
          "Test failed. Check the wiring or verify the comm port and it's settings."},
         {""}},
    };
    MenuEntry* const entries[] = {&console.mnuverifyport, &rig.app.history.frmCommand.mnuverifyport,
                                  &rig.app.history.frmResponse.mnuverifyport};
    for (std::size_t i = 0; i < cases.size(); ++i) {
        rig.dialogs.shown.clear();
        rig.app.history.clear();
        cases[i].jumper.choose();
        entries[i]->choose();
        EXPECT_EQ(rig.dialogs.texts(), cases[i].messages);
        for (const auto& message : rig.dialogs.shown) {
            EXPECT_EQ(message.title, "Verify Communications Port");
            EXPECT_EQ(message.buttons, MessageButtons::Ok);
        }
        const Texts sent{kEcho, kNoEcho};
        ASSERT_EQ(rig.pairs(), static_cast<int>(cases[i].received.size()));
        for (int n = 0; n < rig.pairs(); ++n) {
            EXPECT_EQ(rig.app.history.frmCommand.list.List(n), sent[static_cast<std::size_t>(n)]);
            EXPECT_EQ(rig.app.history.frmResponse.list.List(n),
                      cases[i].received[static_cast<std::size_t>(n)]);
        }
    }
}

TEST(LoopbackTest, UsesTheChosenProtocolsChannel) {
    SimulatedConsole rig({"simulated:742", "simulated:742", "simulated:742", "simulated:loopback"},
                         protocol::kFull);
    rig.app.console.mnuverifyport.choose();
    EXPECT_EQ(rig.dialogs.shown.size(), 2U);
    rig.app.console.opt_Protocol.set_Value(protocol::kTellura);
    rig.app.console.mnuverifyport.choose();
    EXPECT_EQ(rig.dialogs.shown.back().text, "Test Passed!");
}

TEST(LoopbackTest, TheTenThousandAndFirstEntryStartsTheListsAnew) {
    SimulatedConsole rig({"simulated:loopback"}, protocol::kFull);
    for (int i = 0; i < 10000; ++i)
        rig.app.history.add("command", "response");
    rig.app.console.mnuverifyport.choose();
    EXPECT_EQ(rig.pairs(), 2);
    EXPECT_EQ(rig.app.history.frmResponse.list.ListCount(), 2);
}

TEST(BadChecksum, TicksFollowTheSwitch) {
    SimulatedConsole rig({"simulated:742", "simulated:742"}, protocol::kModbus);
    frm_Pelvan5VB& console = rig.app.console;
    MenuEntry* const entries[] = {&console.mnuGenbadCS, &rig.app.history.frmCommand.mnuGenbadCS,
                                  &rig.app.history.frmResponse.mnuGenbadCS};
    const auto expect_ticks = [&](bool on) {
        for (const MenuEntry* entry : entries)
            EXPECT_EQ(entry->Checked(), on);
    };
    EXPECT_EQ(console.chk_GenerateBadChecksum.Value(), 0);
    bool on = false;
    for (MenuEntry* entry : entries) {
        entry->choose();
        on = !on;
        EXPECT_EQ(console.chk_GenerateBadChecksum.Value(), on ? 1 : 0);
        expect_ticks(on);
    }
    console.chk_GenerateBadChecksum.set_Value(2);
    expect_ticks(false);
    console.mnuGenbadCS.choose();
    EXPECT_EQ(console.chk_GenerateBadChecksum.Value(), 2);
}

TEST(BadChecksum, SpoilsTheLastByteOfModbusRequestsOnly) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"a\x01", "a\xFF"}, {"a\xFE", "a\xFF"}, {"a\xFF", std::string("a\0", 2)}, {"", ""}};
    for (const auto& [frame, spoiled] : cases) {
        std::string text = frame;
        spoil_last_byte(text);
        EXPECT_EQ(text, spoiled);
    }
    SimulatedConsole rig(Texts(4, "simulated:742"), protocol::kModbus);
    frm_Pelvan5VB& console = rig.app.console;
    console.mnuGenbadCS.choose();
    console.modbus.set_entry({2, "1", "0", "1", false});
    console.cmd_SendCommand.press();
    EXPECT_EQ(rig.last_pair(), "1 3 0 1 132 255  > No response from the controller at address 1.");
    console.opt_Protocol.set_Value(protocol::kXon);
    console.text.txt_CommsCommand.set_Text("? MODEL");
    console.cmd_SendCommand.press();
    EXPECT_EQ(rig.last_pair(), "? MODEL > 742");
    console.opt_Protocol.set_Value(protocol::kModbus);
    console.mnuGenbadCS.choose();
    console.cmd_SendCommand.press();
    EXPECT_EQ(rig.last_pair().substr(0, 14), "1 3 0 1 132 10");
}

} // namespace
} // namespace pelvan
