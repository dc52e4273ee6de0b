#include <gtest/gtest.h>

#include "console/console_form.h"
#include "console/start_up.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::frame;

/// The console on a scripted port: channel 1 at 9600, a reply for whatever is sent.
class ConsoleTest : public ::testing::Test {
  protected:
    ConsoleTest() {
        rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        console.modbus.txt_Address.set_Text("1");
    }
    testing::FakeSerialPort& port() { return *rig.ports[1]; }
    void choose(int type, const std::string& start, const std::string& values, bool hex = false) {
        console.modbus.set_entry({static_cast<std::size_t>(type), "1", start, values, hex});
    }
    void send(DataFormat format = DataFormat::Decimal) {
        console.modbus.opt_DataFormat.set_Value(static_cast<int>(format));
        console.cmd_SendCommand.press();
    }
    int lines() { return history.frmCommand.list.ListCount(); }

    testing::SerialRig rig;
    testing::FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    ModbusState state;
    Modbus protocol{state};
    History history{services};
    Senders senders{rig.link, protocol, rig.clock, rig.dialogs};
    frm_Pelvan5VB console{services, rig.config, rig.table, rig.link, senders, history};
};

TEST_F(ConsoleTest, EachCommandTypeBuildsItsFrame) {
    const std::vector<std::tuple<int, std::string, bool, std::string>> cases{
        {0, "9", false, "01 01 00 07 00 09"},
        {4, "1", false, "01 05 00 07 00 01"},
        {5, "-2", false, "01 06 00 07 FF FE"},
        {5, "fffe", true, "01 06 00 07 FF FE"},
        {7, "1,0 1", false, "01 0F 00 07 00 03 06 00 01 00 00 00 01"},
        {8, "1 -1", false, "01 10 00 07 00 02 04 00 01 FF FF"},
        {9, "2", false, "01 03 00 07 00 04"},
        {10, "65541", false, "01 10 00 07 00 02 04 00 01 00 05"},
        {10, "-1", false, "01 10 00 07 00 02 04 FF FF FF FF"},
        {10, "FFFF0002", true, "01 10 00 07 00 02 04 FF FF 00 02"},
        {11, "291", false, "01 08 00 00 01 23"}, // sub-function 0 whatever the box says
    };
    for (const auto& [type, values, hex, request] : cases) {
        choose(type, "7", values, hex);
        send();
        EXPECT_EQ(port().outputs.back(), frame(request)) << type << " " << values;
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(ConsoleTest, RefusedRequestsShowTheirTextAndSendNothing) {
    std::string many;
    for (int i = 0; i < 128; ++i)
        many += "1 ";
    const std::vector<std::pair<std::string, std::vector<ModbusEntry>>> cases{
        {"Bad ADDRESS entered.",
         {{2, "248", "0", "1", false},
          {2, "one", "0", "1", false},
          {2, "99999999999", "0", "1", false}}},
        {"Bad REGISTER entered.", {{2, "1", "65536", "1", false}, {2, "1", "1.5", "1", false}}},
        {"Bad DATA VALUE entered.",
         {{5, "1", "0", "32768", false},
          {5, "1", "0", "10000", true},
          {5, "1", "0", "", false},
          {8, "1", "0", "1 two 3", false},
          {10, "1", "0", "2147483648", false},
          {10, "1", "0", "1FFFFFFFF", true},
          {8, "1", "0", many, false}}}};
    for (const auto& [text, entries] : cases)
        for (const ModbusEntry& entry : entries) {
            console.modbus.set_entry(entry);
            send();
            EXPECT_EQ(rig.dialogs.texts(), Texts{text}) << entry.values;
            rig.dialogs.shown.clear();
        }
    EXPECT_TRUE(port().outputs.empty());
    EXPECT_EQ(lines(), 0);
}

TEST_F(ConsoleTest, RepliesInEachFormatAndTheirLackInWords) {
    using enum DataFormat;
    const std::string answer = frame("01 03 04 02 D5 FF FF");
    const std::string request = "1 3 100 2 133 212 ";
    const std::vector<std::tuple<int, DataFormat, std::string, std::string, std::string>> cases{
        {2, Decimal, answer, request, "1 3 4 725 -1 235 195 "},
        {2, Hex, answer, "01 03 0064 0002 85 D4 ", "01 03 04 02D5 FFFF EB C3 "},
        {2, SmartDec, answer, "100 2", "725 -1"},
        {9, SmartDec, frame("01 03 08 00 01 00 05 FF FF FF FE"), "100 4", "65541 -2"},
        {9, SmartDec, frame("01 83 02"), "100 4", "Exception Error: 131 2"},
        {2, Decimal, "\x01\x83", request, "Incomplete reply, bytes in hex: 01 83"},
        {2, Decimal, "", request, "No response from the controller at address 1."},
    };
    for (const auto& [type, format, reply, command, response] : cases) {
        port().replies.push_back({{5, reply}});
        choose(type, "100", "2");
        send(format);
        EXPECT_EQ(history.frmCommand.list.List(lines() - 1), command);
        EXPECT_EQ(history.frmResponse.list.List(lines() - 1), response);
    }
    port().replies.push_back({{5, answer}});
    send();
    EXPECT_TRUE(console.lbl_Status.Caption().starts_with("8 bytes sent, 9 received, 6"))
        << console.lbl_Status.Caption();
    console.modbus.txt_Address.set_Text("0");
    send();
    EXPECT_EQ(history.frmResponse.list.List(lines() - 1), "Broadcast: no controller answers.");
}

TEST_F(ConsoleTest, AFullResponseThatTwiceLacksItsEndIsNoReply) {
    for (const char* answer : {"1^", "^", "{7", "}", "{7"})
        rig.ports[0]->replies.push_back({{1, testing::wire(answer)}});
    const SendOutcome outcome = senders.text.send(TextProtocol::Full, {"1", "? C1"});
    EXPECT_EQ(outcome.row->response, "NOT RECEIVED");
    EXPECT_EQ(outcome.kind, SendOutcome::Kind::NoReply);
}

TEST_F(ConsoleTest, ArrowKeysRecallAndEnterSends) {
    for (const std::string start : {"10", "20", "30"}) {
        choose(2, start, "1");
        console.modbus.txt_Register.KeyDown(Key::Enter);
    }
    EXPECT_EQ(port().outputs.size(), 3U);
    const auto shown = [&](Key key) {
        console.modbus.txt_Register.KeyDown(key);
        return console.modbus.txt_Register.Text();
    };
    using enum Key;
    for (const auto& [key, text] :
         {std::pair{Up, "20"}, {Up, "10"}, {Up, "10"}, {Down, "20"}, {Down, "30"}, {Down, "30"}})
        EXPECT_EQ(shown(key), text);
    console.modbus.txt_Register.set_Text("4x");
    EXPECT_EQ(shown(Up), "30");
    EXPECT_EQ(shown(Down), "4x");
}

TEST_F(ConsoleTest, LoadingSelectsTheSavedProtocolAndWritesItBack) {
    const std::string ini = rig.dir.file("pelvan7.ini");
    for (const auto& [saved, expected] : std::vector<std::pair<std::string, int>>{
             {"", 1}, {"DEFAULT PROTOCOL=3\r\n", 3}, {"DEFAULT PROTOCOL=words\r\n", 0}}) {
        testing::write_file(ini, "[COMMS CONTROLS]\r\n" + saved);
        frm_Pelvan5VB fresh(services, rig.config, rig.table, rig.link, senders, history);
        fresh.Load();
        EXPECT_EQ(fresh.opt_Protocol.Value(), expected);
        EXPECT_EQ(fresh.text.txt_CommsCommand.Text(), "? C1");
        EXPECT_EQ(fresh.modbus.Fram_Modbus.Visible(), expected == 1);
        EXPECT_EQ(testing::read_file(ini),
                  "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=" + std::to_string(expected) + "\r\n");
    }
}

TEST_F(ConsoleTest, AFifthChannelKeepsNothingElseFromHappening) {
    const std::string channel = ";9600,N,8,1;1";
    rig.dialogs.shown.clear();
    EXPECT_EQ(testing::error_of([&] {
                  rig.build({"1" + channel, "2" + channel, "3" + channel, "4" + channel, "5;x;1"});
              }),
              9);
    EXPECT_EQ(rig.dialogs.texts(), Texts{"Port settings are not valid in 'sub init_comms**'"});
    EXPECT_EQ(testing::error_of([&] { console.Load(); }), 9);
    EXPECT_EQ(console.text.txt_CommsCommand.Text(), "? C1");
    EXPECT_EQ(testing::error_of([&] { console.opt_Protocol.set_Value(2); }), 9);
    EXPECT_EQ(saved_protocol(rig.config), 2);
    EXPECT_EQ(rig.state.gCommDevice.size(), 4U);
}

TEST_F(ConsoleTest, ChoosingAProtocolRebuildsBeforeItWrites) {
    choose(2, "0", "1");
    send();
    EXPECT_TRUE(port().PortOpen());
    const auto written = [&] {
        return ini_read_string("COMMS CONTROLS", "DEFAULT PROTOCOL", "none", rig.config.gIniFile);
    };
    const Subscription rebuilding =
        rig.table.before_rebuild.subscribe([&] { EXPECT_EQ(written(), "none"); });
    console.opt_Protocol.set_Value(2);
    EXPECT_EQ(rig.closings, Texts{"port 2"});
    EXPECT_EQ(written(), "2");
}

} // namespace
} // namespace pelvan
