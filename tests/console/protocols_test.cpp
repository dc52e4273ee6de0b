// The console's exchanges in the protocols Full, Xon and Tellura/AB.
#include "console_rig.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::ConsoleRig;

constexpr char kDevice[] = "simulated:742,address=9";

TEST(ConsoleProtocols, FullCommands) {
    ConsoleRig rig(Texts(4, kDevice), protocol::kFull);
    TextPanel& panel = rig.console.text;
    MousePointer during = MousePointer::Normal;
    const Subscription watching = rig.history.frmCommand.list.watch_lines(
        [&](ListChange, int) { during = rig.console.Pointer(); });
    const std::vector<std::tuple<std::string, std::string, std::string>> cases{
        {"9", "? MODEL", "? MODEL > 742"},
        {"9", "= SP1 50", "= SP1 50 > MESSAGE COMPLETED"},
        {"9", "= SP1 5000", "= SP1 5000 > Input out of limit"},
        {"8", "? C1", "? C1 > COULDN'T CONNECT TO DEVICE"},
        {"nine", "? C1", "? C1 > COULDN'T CONNECT TO DEVICE"}, // asked at address 1 instead
        {"9", "", " > Command not found"},
    };
    for (const auto& [address, command, pair] : cases) {
        panel.set_entry({address, command});
        EXPECT_EQ(rig.send(), pair);
    }
    EXPECT_EQ(during, MousePointer::Hourglass);
    EXPECT_EQ(rig.console.Pointer(), MousePointer::Normal);
    EXPECT_EQ(rig.dialogs.texts(), Texts{"Device address is not valid. Defaulting to 1"});
}

TEST(ConsoleProtocols, XonCommands) {
    ConsoleRig rig({kDevice, kDevice, kDevice}, protocol::kXon);
    EXPECT_EQ(rig.send(), "? C1 > 25.0");
    rig.console.text.set_entry({"1", ""});
    EXPECT_EQ(rig.send(), " > No response from the controller.");
}

TEST(ConsoleProtocols, RepliesThatAreNoTextAreShownAsBytes) {
    EXPECT_EQ(printable("25.0\r\n"), "25.0");
    EXPECT_EQ(printable(std::string("\x02"
                                    "2\0\xE9\r5\r",
                                    7)),
              "<02>2<00><E9><0D>5");
}

TEST(ConsoleProtocols, TelluraPackets) {
    ConsoleRig rig(Texts(4, kDevice), protocol::kTellura);
    TelluraPanel& panel = rig.console.tellura;
    const std::vector<std::pair<TelluraEntry, std::string>> cases{
        {{"9", "0000", "2", "", false, TelluraCheck::Bcc},
         "10 02 10 10 00 01 00 00 00 00 00 02 10 03 ED > "
         "10 02 00 10 10 41 00 00 00 02 E6 10 03 C7  Data: 02 E6"},
        {{"9", "012c", "2", "00 10", true, TelluraCheck::Bcc},
         "10 02 10 10 00 08 00 00 00 01 2C 00 10 10 10 03 AB > "
         "10 02 00 10 10 48 00 00 00 10 03 A8  Written"},
        {{"9", "0005", "2", "", false, TelluraCheck::Bcc},
         "10 02 10 10 00 01 00 00 00 00 05 02 10 03 E8 > "
         "10 02 00 10 10 41 50 00 00 10 03 5F  Refused with status 50"},
        {{"1", "0000", "2", "", false, TelluraCheck::Bcc},
         "10 02 08 00 01 00 00 00 00 00 02 10 03 F5 > Bad or incomplete Packet!"},
    };
    for (const auto& [entry, pair] : cases) {
        panel.set_entry(entry);
        EXPECT_EQ(rig.send(), pair);
    }
    panel.set_entry(cases[0].first);
    rig.send();
    EXPECT_TRUE(rig.console.lbl_Status.Caption().starts_with("15 bytes sent, 14 received, "))
        << rig.console.lbl_Status.Caption();
    for (const auto& [address, count] : {std::pair{"0", "2"}, {"9", "1.5"}}) {
        panel.set_entry({address, "0000", count, "", false, TelluraCheck::Bcc});
        rig.send();
    }
    EXPECT_EQ(rig.dialogs.texts(), (Texts{"Invalid device address!", "Invalid number of bytes!"}));
    EXPECT_EQ(rig.pairs().size(), 5U);
}

TEST(ConsoleProtocols, TelluraDataThatSpellBadAreDataLikeOthers) {
    ConsoleRig rig;
    rig.build(Texts(4, "1;9600,N,8,1;1"));
    const std::string reply = "10 02 00 08 41 00 00 00 42 41 44 10 03 F0";
    rig.ports[3]->replies = {{{5, testing::bytes("10 06 " + reply)}}};
    EXPECT_EQ(rig.senders.tellura.send({}).row->response, reply + "  Data: 42 41 44");
}

TEST(ConsoleProtocols, ADamagedTelluraReplyIsToldSo) {
    ConsoleRig rig(Texts(4, "simulated:742,crc=1"), protocol::kTellura);
    for (const auto& [check, mark] : {std::pair{TelluraCheck::Bcc, "  <--BCC ERROR!"},
                                      std::pair{TelluraCheck::Crc, "  <--CRC ERROR!"}}) {
        rig.console.tellura.set_entry({"1", "0000", "2", "", false, check});
        EXPECT_TRUE(rig.send().ends_with(mark));
    }
}

TEST(ConsoleProtocols, EachProtocolRecallsItsOwnCommands) {
    ConsoleRig rig(Texts(4, kDevice), protocol::kFull);
    frm_Pelvan5VB& console = rig.console;
    TextBox& command = console.text.txt_CommsCommand;
    console.text.set_entry({"8", "? C1"});
    command.KeyDown(Key::Enter);
    console.opt_Protocol.set_Value(protocol::kXon);
    command.set_Text("? REVISION");
    command.KeyDown(Key::Enter);
    EXPECT_TRUE(command.KeyDown(Key::Up)) << "or the key would go on to the protocol";
    EXPECT_EQ(command.Text(), "? REVISION");
    console.opt_Protocol.set_Value(protocol::kTellura);
    console.tellura.TxtParameterAddress.set_Text("0000");
    console.tellura.TxtParameterAddress.KeyDown(Key::Enter);
    console.tellura.TxtParameterAddress.set_Text("0001");
    EXPECT_TRUE(console.tellura.TxtData.KeyDown(Key::Up));
    EXPECT_EQ(console.tellura.TxtParameterAddress.Text(), "0000");
    console.opt_Protocol.set_Value(protocol::kFull);
    EXPECT_TRUE(command.KeyDown(Key::Up));
    EXPECT_EQ(console.text.entry(), (TextEntry{"8", "? C1"}));
}

} // namespace
} // namespace pelvan
