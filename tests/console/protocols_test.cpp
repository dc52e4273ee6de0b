// The console on simulated controllers: its exchanges in the protocols Full, Xon and Tellura/AB,
// the lines of the history, the loop-back test and the switch for bad checksums.
#include "console/loopback_test.h"
#include "console_rig.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

constexpr char kDevice[] = "simulated:742,address=9";
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

class SimulatedConsole : public ::testing::Test, protected testing::ConsoleRig {};

TEST_F(SimulatedConsole, FullCommands) {
    start(Texts(4, kDevice), protocol::kFull);
    MousePointer during = MousePointer::Normal;
    const Subscription watching =
        history.frmCommand.list.watch_lines([&](ListChange, int) { during = console.Pointer(); });
    const std::vector<std::tuple<std::string, std::string, std::string>> cases{
        {"9", "? MODEL", "? MODEL > 742"},
        {"9", "= SP1 50", "= SP1 50 > MESSAGE COMPLETED"},
        {"9", "= SP1 5000", "= SP1 5000 > Input out of limit"},
        {"8", "? C1", "? C1 > COULDN'T CONNECT TO DEVICE"},
        {"nine", "? C1", "? C1 > COULDN'T CONNECT TO DEVICE"}, // asked at address 1 instead
        {"9", "", " > Command not found"},
    };
    for (const auto& [address, command, pair] : cases) {
        console.text.set_entry({address, command});
        EXPECT_EQ(send(), pair);
    }
    EXPECT_EQ(during, MousePointer::Hourglass);
    EXPECT_EQ(console.Pointer(), MousePointer::Normal);
    EXPECT_EQ(said(), Texts{"Device address is not valid. Defaulting to 1"});
}

TEST_F(SimulatedConsole, XonCommands) {
    start(Texts(3, kDevice), protocol::kXon);
    EXPECT_EQ(send(), "? C1 > 25.0");
    console.text.set_entry({"1", ""});
    EXPECT_EQ(send(), " > No response from the controller.");
    // What is no text is shown as bytes.
    EXPECT_EQ(printable("25.0\r\n"), "25.0");
    EXPECT_EQ(printable({"\x02\x32\0\xE9\r5\r", 7}), "<02>2<00><E9><0D>5");
}

TEST_F(SimulatedConsole, TelluraPackets) {
    start(Texts(4, kDevice), protocol::kTellura);
    const std::pair<TelluraEntry, std::string> cases[] = {
        {{"9", "012c", "2", "00 10", true, TelluraCheck::Bcc}, "  Written"},
        {{"9", "0005", "2", "", false, TelluraCheck::Bcc}, "  Refused with status 50"},
        {{"1", "0000", "2", "", false, TelluraCheck::Bcc}, " > Bad or incomplete Packet!"}};
    for (const auto& [entry, end] : cases) {
        console.tellura.set_entry(entry);
        EXPECT_TRUE(send().ends_with(end)) << pairs().back();
    }
    console.tellura.set_entry({"9", "0000", "2", "", false, TelluraCheck::Bcc});
    EXPECT_EQ(send(), "10 02 10 10 00 01 00 00 00 00 00 02 10 03 ED > "
                      "10 02 00 10 10 41 00 00 00 02 E6 10 03 C7  Data: 02 E6");
    EXPECT_TRUE(console.lbl_Status.Caption().starts_with("15 bytes sent, 14 received, "))
        << console.lbl_Status.Caption();
    console.tellura.TxtTelluraAddress.set_Text("0");
    send();
    console.tellura.set_entry({"9", "0000", "1.5", "", false, TelluraCheck::Bcc});
    send();
    EXPECT_EQ(said(), (Texts{"Invalid device address!", "Invalid number of bytes!"}));
    EXPECT_EQ(pairs().size(), 4U);
}

TEST_F(SimulatedConsole, TelluraDataThatSpellBadAreDataAndDamagedRepliesAreToldSo) {
    build(Texts(4, "1;9600,N,8,1;1"));
    const std::string reply = "10 02 00 08 41 00 00 00 42 41 44 10 03 F0";
    ports[3]->replies = {{{5, testing::bytes("10 06 " + reply)}}};
    EXPECT_EQ(senders.tellura.send({}).row->response, reply + "  Data: 42 41 44");
    start(Texts(4, "simulated:742,crc=1"), protocol::kTellura);
    for (const auto& [check, mark] : {std::pair{TelluraCheck::Bcc, "  <--BCC ERROR!"},
                                      std::pair{TelluraCheck::Crc, "  <--CRC ERROR!"}}) {
        console.tellura.set_entry({"1", "0000", "2", "", false, check});
        EXPECT_TRUE(send().ends_with(mark));
    }
}

TEST_F(SimulatedConsole, EachProtocolRecallsItsOwnCommands) {
    start(Texts(4, kDevice), protocol::kFull);
    TextBox& command = console.text.txt_CommsCommand;
    TextBox& parameter = console.tellura.TxtParameterAddress;
    console.text.set_entry({"8", "? C1"});
    command.KeyDown(Key::Enter);
    console.opt_Protocol.set_Value(protocol::kXon);
    command.set_Text("? REVISION");
    command.KeyDown(Key::Enter);
    EXPECT_TRUE(command.KeyDown(Key::Up)) << "or the key would go on to the protocol";
    EXPECT_EQ(command.Text(), "? REVISION");
    console.opt_Protocol.set_Value(protocol::kTellura);
    parameter.set_Text("0000");
    parameter.KeyDown(Key::Enter);
    parameter.set_Text("0001");
    EXPECT_TRUE(console.tellura.TxtData.KeyDown(Key::Up));
    EXPECT_EQ(parameter.Text(), "0000");
    console.opt_Protocol.set_Value(protocol::kFull);
    EXPECT_TRUE(command.KeyDown(Key::Up));
    EXPECT_EQ(console.text.entry(), (TextEntry{"8", "? C1"}));
}

TEST_F(SimulatedConsole, ALineOfTheHistoryComesBackIntoTheFieldsOrIsSentAgain) {
    start(Texts(4, "simulated:742"), protocol::kFull);
    ListBox& lines = history.frmCommand.list;
    HistoryForm& replies = history.frmResponse;
    const TextEntry full{"1", "? MODEL"};
    const ModbusEntry modbus_entry{9, "1", "0", "1", false};
    console.text.set_entry(full);
    send();
    console.opt_Protocol.set_Value(protocol::kModbus);
    console.modbus.set_entry(modbus_entry);
    send();
    console.modbus.set_entry({2, "1", "5", "1", false});
    console.text.txt_CommsCommand.set_Text("");
    lines.set_ListIndex(0);
    replies.mnuSendAgain.choose();
    EXPECT_EQ(pairs().back(), "? MODEL > 742");
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kModbus) << "the fields stay as they are";
    EXPECT_EQ(console.text.txt_CommsCommand.Text(), "");
    lines.set_ListIndex(1);
    replies.list.DblClick();
    EXPECT_EQ(console.modbus.entry(), modbus_entry);
    EXPECT_TRUE(console.Visible());
    lines.set_ListIndex(2); // the line that was sent again
    EXPECT_TRUE(lines.KeyDown(Key::Enter));
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kFull);
    EXPECT_EQ(console.text.entry(), full);

    Link other{table, countdowns, dialogs, log, "Save/Restore Setup"};
    const LineClaim claim = other.claim();
    said();
    lines.set_ListIndex(1);
    replies.mnuSendAgain.choose();
    replies.mnuRecall.choose();
    EXPECT_EQ(said(), Texts(2, "The line is in use by Save/Restore Setup."));
    EXPECT_EQ(pairs().size(), 3U);
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kFull);
    const std::string longest(3000, 'x');
    history.add({"", longest, "", "", 0, {0, TextEntry{"1", longest}}});
    replies.mnuRecall.choose();
    EXPECT_EQ(said().size(), 1U) << "too long to be kept";
}

TEST_F(SimulatedConsole, TheLoopbackTestEndsInOneOfThreeMessages) {
    start({"simulated:742", "simulated:742", "simulated:loopback"}, protocol::kXon);
    const std::string settings = " verify the comm port and it's settings.";
    const std::string failed = "Test failed. Check the wiring ";
    const std::vector<std::tuple<MenuEntry*, MenuEntry*, Texts, Texts>> cases{
        {&console.mnuJumperAsAsked,
         &console.mnuverifyport,
         {kIntroduction, kRemove, "Test Passed!"},
         {kEcho + " > " + kEcho, kNoEcho + " > "}},
        {&console.mnuJumperIn,
         &history.frmCommand.mnuverifyport,
         {kIntroduction, kRemove, failed + "and" + settings, kEchoQuestion},
         {kEcho + " > " + kEcho, kNoEcho + " > " + kNoEcho}},
        {&console.mnuJumperOut,
         &history.frmResponse.mnuverifyport,
         {kIntroduction, failed + "or" + settings},
         {kEcho + " > "}},
    };
    Link other{table, countdowns, dialogs, log};
    dialogs.on_message = [&](const std::string& text) {
        EXPECT_NE(other.refusal().empty(), text != kEchoQuestion)
            << "its bytes would come between: " << text;
    };
    for (const auto& [chosen, entry, messages, exchanges] : cases) {
        history.clear();
        chosen->choose();
        entry->choose();
        EXPECT_EQ(dialogs.shown.back().title, "Verify Communications Port");
        EXPECT_EQ(said(), messages);
        EXPECT_EQ(pairs(), exchanges);
    }
    console.mnuJumperAsAsked.choose();
    console.opt_Protocol.set_Value(protocol::kFull); // and its channel
    console.mnuverifyport.choose();
    EXPECT_EQ(said().back(), failed + "or" + settings);
}

TEST_F(SimulatedConsole, ALineThatEchoesIsSetToThatWhenSomebodySaysSo) {
    start(Texts(3, "simulated:742,echo=1"), protocol::kXon);
    console.text.txt_CommsCommand.set_Text("? MODEL");
    EXPECT_EQ(send(), "? MODEL > ? MODEL<0D>742");
    console.mnuverifyport.choose(); // its answer is No
    EXPECT_FALSE(table.exchange_way(2).echo);
    dialogs.answers = {MessageAnswer::Yes};
    console.mnuverifyport.choose();
    EXPECT_TRUE(table.exchange_way(2).echo);
    EXPECT_FALSE(table.exchange_way(1).echo);
    EXPECT_EQ(send(), "? MODEL > 742");
    said();
    console.mnuverifyport.choose(); // it finds the same, and has nothing to offer
    EXPECT_EQ(said().size(), 3U);
    EXPECT_EQ(pairs().back(), kNoEcho + " > " + kNoEcho);
}

TEST_F(SimulatedConsole, BadChecksumsAreThoseOfModbusAndTheirTicksFollowTheSwitch) {
    for (const auto& [frame, corrupt] :
         {std::pair<std::string, std::string>{"a\x01", "a\xFF"}, {"a\xFF", {"a\0", 2}}, {"", ""}}) {
        std::string text = frame;
        corrupt_last_byte(text);
        EXPECT_EQ(text, corrupt);
    }
    start(Texts(3, "simulated:742"), protocol::kModbus);
    MenuEntry* const entries[] = {&console.mnuGenbadCS, &history.frmCommand.mnuGenbadCS,
                                  &history.frmResponse.mnuGenbadCS};
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
    EXPECT_EQ(send(), "1 3 0 1 132 255  > No response from the controller at address 1.");
    console.opt_Protocol.set_Value(protocol::kXon);
    console.text.txt_CommsCommand.set_Text("? MODEL");
    EXPECT_EQ(send(), "? MODEL > 742");
}

} // namespace
} // namespace pelvan
