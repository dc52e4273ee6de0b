// The loop-back test and the switch for bad checksums.
#include "console/loopback_test.h"
#include "console_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::ConsoleRig;

const std::string kIntroduction =
    "This will verify your Communications Port selection.\r"
    "This procedure only works with full duplex serial connections.\r\n\n"
    "Please short together the transmit and receive pins(RS-232=pins 2 & 3).\r\n\n"
    "Click OK to continue.";
const std::string kRemove = "Now remove the jumper.\r\n\nClick OK to continue.";
const std::string kEcho = "This message should echo back!";
const std::string kNoEcho = "This message should not echo back!";
const std::string kEchoQuestion =
    "Bytes come back although nothing is joined. Two-wire converters (RS-485) give back what is "
    "sent. Is there one on this line, and shall its echo be taken out from now on?";

TEST(LoopbackTest, EndsInOneOfThreeMessagesOnTheChosenProtocolsChannel) {
    ConsoleRig rig({"simulated:742", "simulated:742", "simulated:loopback"}, protocol::kXon);
    frm_Pelvan5VB& console = rig.console;
    const std::string settings = " the comm port and it's settings.";
    const std::string wiring_and = "Test failed. Check the wiring and verify" + settings;
    const std::string wiring_or = "Test failed. Check the wiring or verify" + settings;
    const std::vector<std::tuple<MenuEntry*, MenuEntry*, Texts, Texts>> cases{
        {&console.mnuJumperAsAsked,
         &console.mnuverifyport,
         {kIntroduction, kRemove, "Test Passed!"},
         {kEcho + " > " + kEcho, kNoEcho + " > "}},
        {&console.mnuJumperIn,
         &rig.history.frmCommand.mnuverifyport,
         {kIntroduction, kRemove, wiring_and, kEchoQuestion},
         {kEcho + " > " + kEcho, kNoEcho + " > " + kNoEcho}},
        {&console.mnuJumperOut,
         &rig.history.frmResponse.mnuverifyport,
         {kIntroduction, wiring_or},
         {kEcho + " > "}},
    };
    Link other{rig.table, rig.countdowns, rig.dialogs, rig.log};
    rig.dialogs.on_message = [&](const std::string& text) {
        EXPECT_NE(other.refusal().empty(), text != kEchoQuestion)
            << "its bytes would come between: " << text;
    };
    for (const auto& [jumper, entry, messages, pairs] : cases) {
        rig.history.clear();
        jumper->choose();
        entry->choose();
        EXPECT_EQ(rig.dialogs.shown.back().title, "Verify Communications Port");
        EXPECT_EQ(rig.said(), messages);
        EXPECT_EQ(rig.pairs(), pairs);
    }
    console.mnuJumperAsAsked.choose();
    console.opt_Protocol.set_Value(protocol::kFull);
    console.mnuverifyport.choose();
    EXPECT_EQ(rig.said().back(), wiring_or);
}

TEST(LoopbackTest, ALineThatEchoesIsSetToThatWhenSomebodySaysSo) {
    ConsoleRig rig(Texts(3, "simulated:742,echo=1"), protocol::kXon);
    rig.console.text.txt_CommsCommand.set_Text("? MODEL");
    EXPECT_EQ(rig.send(), "? MODEL > ? MODEL<0D>742");
    rig.console.mnuverifyport.choose(); // its answer is No
    EXPECT_FALSE(rig.table.exchange_way(2).echo);
    rig.dialogs.answers = {MessageAnswer::Yes};
    rig.console.mnuverifyport.choose();
    EXPECT_TRUE(rig.table.exchange_way(2).echo);
    EXPECT_FALSE(rig.table.exchange_way(1).echo);
    EXPECT_EQ(rig.send(), "? MODEL > 742");
    rig.said();
    rig.console.mnuverifyport.choose(); // it finds the same, and has nothing to offer
    EXPECT_EQ(rig.said().size(), 3U);
    EXPECT_EQ(rig.pairs().back(), kNoEcho + " > " + kNoEcho);
}

TEST(BadChecksum, CorruptsTheLastByteOfModbusRequestsOnlyAndItsTicksFollowTheSwitch) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"a\x01", "a\xFF"}, {"a\xFF", std::string("a\0", 2)}, {"", ""}};
    for (const auto& [frame, corrupt] : cases) {
        std::string text = frame;
        corrupt_last_byte(text);
        EXPECT_EQ(text, corrupt);
    }
    ConsoleRig rig(Texts(3, "simulated:742"), protocol::kModbus);
    frm_Pelvan5VB& console = rig.console;
    MenuEntry* const entries[] = {&console.mnuGenbadCS, &rig.history.frmCommand.mnuGenbadCS,
                                  &rig.history.frmResponse.mnuGenbadCS};
    const auto expect_ticks = [&](int value) {
        EXPECT_EQ(console.chk_GenerateBadChecksum.Value(), value);
        for (const MenuEntry* entry : entries)
            EXPECT_EQ(entry->Checked(), value == 1);
    };
    console.chk_GenerateBadChecksum.set_Value(2); // neither on nor off
    console.mnuGenbadCS.choose();
    expect_ticks(2);
    console.chk_GenerateBadChecksum.set_Value(0);
    for (const auto& [entry, value] : {std::pair{0, 1}, {1, 0}, {2, 1}}) {
        entries[entry]->choose();
        expect_ticks(value);
    }
    console.modbus.set_entry({2, "1", "0", "1", false});
    EXPECT_EQ(rig.send(), "1 3 0 1 132 255  > No response from the controller at address 1.");
    console.opt_Protocol.set_Value(protocol::kXon);
    console.text.txt_CommsCommand.set_Text("? MODEL");
    EXPECT_EQ(rig.send(), "? MODEL > 742");
}

} // namespace
} // namespace pelvan
