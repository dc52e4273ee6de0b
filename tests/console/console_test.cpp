#include <gtest/gtest.h>

#include "console/console_form.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

/// The console on a scripted port: channel 1 at 9600, a reply for whatever is sent.
class ConsoleTest : public ::testing::Test {
  protected:
    ConsoleTest() {
        rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        console.modbus.txt_Address.set_Text("1");
    }
    static std::string bytes(std::initializer_list<int> values) {
        std::string out;
        for (const int value : values)
            out += static_cast<char>(value);
        return out;
    }
    std::string with_crc(const std::string& frame) {
        protocol.ModbusCrc(frame);
        return frame + bytes({state.gCrcLow, state.gCrcHigh});
    }
    void reply(const std::string& frame) { port().replies.push_back({{5, frame}}); }
    testing::FakeSerialPort& port() { return *rig.ports[1]; }
    void choose(int type, const std::string& start, const std::string& values, bool hex = false) {
        console.modbus.set_entry({static_cast<std::size_t>(type), "1", start, values, hex});
    }
    void send(DataFormat format = DataFormat::Decimal) {
        console.opt_DataFormat.set_Value(static_cast<int>(format));
        console.cmd_SendCommand.press();
    }
    std::string last_command() { return history.frmCommand.list.List(lines() - 1); }
    std::string last_response() { return history.frmResponse.list.List(lines() - 1); }
    int lines() { return history.frmCommand.list.ListCount(); }

    testing::SerialRig rig;
    testing::FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    ModbusState state;
    Modbus protocol{state};
    History history{services};
    frm_Pelvan5VB console{services, rig.config, rig.table, rig.link, protocol, history};
};

TEST_F(ConsoleTest, ReadOfHoldingRegistersInEachFormat) {
    const std::string answer = with_crc(bytes({1, 3, 4, 0x02, 0xD5, 0xFF, 0xFF}));
    const std::vector<std::tuple<DataFormat, std::string, std::string>> cases{
        {DataFormat::Decimal, "1 3 100 2 ", "1 3 4 725 -1 "},
        {DataFormat::Hex, "01 03 0064 0002 ", "01 03 04 02D5 FFFF "},
        {DataFormat::SmartDec, "", "725 -1"},
    };
    for (const auto& [format, command, response] : cases) {
        choose(2, "100", "2");
        reply(answer);
        send(format);
        EXPECT_EQ(last_command().substr(0, command.size()), command);
        EXPECT_EQ(last_response().substr(0, response.size()), response);
    }
    EXPECT_EQ(port().outputs[0], with_crc(bytes({1, 3, 0, 100, 0, 2})));
}

TEST_F(ConsoleTest, EachCommandTypeBuildsItsFrame) {
    const std::vector<std::tuple<int, std::string, bool, std::string>> cases{
        {0, "9", false, bytes({1, 1, 0, 7, 0, 9})},
        {4, "1", false, bytes({1, 5, 0, 7, 0, 1})},
        {5, "-2", false, bytes({1, 6, 0, 7, 0xFF, 0xFE})},
        {5, "fffe", true, bytes({1, 6, 0, 7, 0xFF, 0xFE})},
        {7, "1,0 1", false, bytes({1, 15, 0, 7, 0, 3, 6, 0, 1, 0, 0, 0, 1})},
        {8, "1 -1", false, bytes({1, 16, 0, 7, 0, 2, 4, 0, 1, 0xFF, 0xFF})},
        {9, "2", false, bytes({1, 3, 0, 7, 0, 4})},
        {10, "65541", false, bytes({1, 16, 0, 7, 0, 2, 4, 0, 1, 0, 5})},
        {10, "-1", false, bytes({1, 16, 0, 7, 0, 2, 4, 0xFF, 0xFF, 0xFF, 0xFF})},
        {10, "FFFF0002", true, bytes({1, 16, 0, 7, 0, 2, 4, 0xFF, 0xFF, 0, 2})},
        {11, "291", false, bytes({1, 8, 0, 0, 1, 0x23})}, // sub-function 0 whatever the box says
    };
    for (const auto& [type, values, hex, frame] : cases) {
        choose(type, "7", values, hex);
        send();
        EXPECT_EQ(port().outputs.back(), with_crc(frame)) << type << " " << values;
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
          {2, "", "0", "1", false},
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

TEST_F(ConsoleTest, RepliesAndTheirLackAreSaidInWords) {
    choose(9, "0", "2");
    reply(with_crc(bytes({1, 3, 8, 0, 1, 0, 5, 0xFF, 0xFF, 0xFF, 0xFE})));
    send(DataFormat::SmartDec);
    EXPECT_EQ(last_response(), "65541 -2");
    reply(with_crc(bytes({1, 0x83, 2})));
    send(DataFormat::SmartDec);
    EXPECT_EQ(last_response(), "Exception Error: 131 2");
    choose(2, "0", "1");
    send();
    EXPECT_EQ(last_response(), "No response from the controller at address 1.");
    reply(bytes({1, 0x83}));
    send();
    EXPECT_EQ(last_response(), "Incomplete reply, bytes in hex: 01 83");
    console.modbus.txt_Address.set_Text("0");
    send();
    EXPECT_EQ(last_response(), "Broadcast: no controller answers.");
}

TEST_F(ConsoleTest, HistoryPairsLinesAndStartsAnewAfterTenThousand) {
    for (int i = 1; i <= History::kLineLimit; ++i)
        history.add("ask " + std::to_string(i), "answer " + std::to_string(i));
    EXPECT_EQ(lines(), 10000);
    history.frmResponse.list.set_ListIndex(41);
    EXPECT_EQ(history.frmCommand.list.ListIndex(), 41);
    history.frmResponse.mnuCopyLine.choose();
    EXPECT_EQ(desktop.clipboard, "answer 42");
    history.add("next", "reply");
    EXPECT_EQ(lines(), 1);
    EXPECT_EQ(history.frmResponse.list.ListCount(), 1);
    history.frmCommand.mnuCopyAll.choose();
    EXPECT_EQ(desktop.clipboard, "next\r\n");
}

TEST_F(ConsoleTest, ArrowKeysRecallAndEnterSends) {
    for (const std::string start : {"10", "20", "30"}) {
        choose(2, start, "1");
        console.modbus.txt_Register.KeyDown(Key::Enter);
    }
    EXPECT_EQ(port().outputs.size(), 3U);
    auto shown = [&](Key key) {
        console.modbus.txt_Register.KeyDown(key);
        return console.modbus.txt_Register.Text();
    };
    EXPECT_EQ(shown(Key::Up), "20");
    EXPECT_EQ(shown(Key::Up), "10");
    EXPECT_EQ(shown(Key::Up), "10");
    EXPECT_EQ(shown(Key::Down), "20");
    EXPECT_EQ(shown(Key::Down), "30");
    EXPECT_EQ(shown(Key::Down), "30");
    console.modbus.txt_Register.set_Text("4x");
    EXPECT_EQ(shown(Key::Up), "30");
    EXPECT_EQ(shown(Key::Down), "4x");
}

TEST_F(ConsoleTest, LoadingSelectsTheSavedProtocolAndWritesItBack) {
    const std::string ini = rig.dir.file("pelvan7.ini");
    for (const auto& [saved, expected] : std::vector<std::pair<std::string, int>>{
             {"", 1}, {"DEFAULT PROTOCOL=3\r\n", 3}, {"DEFAULT PROTOCOL=words\r\n", 0}}) {
        testing::write_file(ini, "[COMMS CONTROLS]\r\n" + saved);
        frm_Pelvan5VB fresh(services, rig.config, rig.table, rig.link, protocol, history);
        fresh.Load();
        EXPECT_EQ(rig.config.gIniFile, ini);
        EXPECT_EQ(fresh.opt_Protocol.Value(), expected);
        EXPECT_EQ(fresh.text.txt_CommsCommand.Text(), "? C1");
        EXPECT_EQ(fresh.modbus.Fram_Modbus.Visible(), expected == 1);
        EXPECT_EQ(testing::read_file(ini),
                  "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=" + std::to_string(expected) + "\r\n");
    }
}

TEST_F(ConsoleTest, ChoosingAProtocolRebuildsBeforeItWrites) {
    choose(2, "0", "1");
    send();
    EXPECT_TRUE(port().PortOpen());
    std::string written_at_rebuild = "none";
    rig.table.before_rebuild = [&] {
        written_at_rebuild =
            ini_read_string("COMMS CONTROLS", "DEFAULT PROTOCOL", "none", rig.config.gIniFile);
    };
    console.opt_Protocol.set_Value(2);
    EXPECT_EQ(written_at_rebuild, "none");
    EXPECT_EQ(rig.closings, Texts{"port 2"});
    EXPECT_EQ(ini_read_int("COMMS CONTROLS", "DEFAULT PROTOCOL", 9, rig.config.gIniFile), 2);
}

} // namespace
} // namespace pelvan
