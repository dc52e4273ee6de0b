#include "console/start_up.h"
#include "console_rig.h"
#include "support/cases.h"
#include "support/error_of.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::cases;
using testing::error_of;
using testing::frame;

/// The console on a scripted port: channel 1 at 9600, a reply for whatever is sent.
class ConsoleTest : public ::testing::Test, protected testing::ConsoleRig {
  protected:
    ConsoleTest() {
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        console.modbus.txt_Address.set_Text("1");
    }
    testing::FakeSerialPort& port() { return *ports[1]; }
    /// "type;address;register;values", and ";hex" where the values are.
    void enter(const std::string& entry) {
        const auto field = split(entry, ';');
        console.modbus.set_entry(
            {std::stoul(field[0]), field[1], field[2], field[3], field.size() > 4});
    }
};

TEST_F(ConsoleTest, EachCommandTypeBuildsItsFrame) {
    for (const auto& [entry, request] :
         cases("0;1;7;9->01 01 00 07 00 09|4;1;7;1->01 05 00 07 00 01|5;1;7;-2->01 06 00 07 FF FE|"
               "5;1;7;fffe;hex->01 06 00 07 FF FE|7;1;7;1,0 1->01 0F 00 07 00 03 06 00 01 00 00 00 "
               "01|"
               "8;1;7;1 -1->01 10 00 07 00 02 04 00 01 FF FF|9;1;7;2->01 03 00 07 00 04|"
               "10;1;7;65541->01 10 00 07 00 02 04 00 01 00 05|"
               "10;1;7;-1->01 10 00 07 00 02 04 FF FF FF FF|"
               "10;1;7;FFFF0002;hex->01 10 00 07 00 02 04 FF FF 00 02|"
               "11;1;7;291->01 08 00 00 01 23")) { // sub-function 0 whatever the box says
        enter(entry);
        send();
        EXPECT_EQ(port().outputs.back(), frame(request)) << entry;
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ConsoleTest, RefusedRequestsShowTheirTextAndSendNothing) {
    std::string many = "1";
    for (int i = 1; i < 128; ++i)
        many += " 1";
    for (const auto& [entry, wrong] :
         cases("2;248;0;1->ADDRESS|2;one;0;1->ADDRESS|2;99999999999;0;1->ADDRESS|"
               "2;1;65536;1->REGISTER|2;1;1.5;1->REGISTER|5;1;0;32768->DATA VALUE|"
               "5;1;0;10000;hex->DATA VALUE|5;1;0;->DATA VALUE|8;1;0;1 two 3->DATA VALUE|"
               "10;1;0;2147483648->DATA VALUE|10;1;0;1FFFFFFFF;hex->DATA VALUE|8;1;0;" +
               many + "->DATA VALUE")) {
        enter(entry);
        send();
        EXPECT_EQ(said(), Texts{"Bad " + wrong + " entered."}) << entry;
    }
    EXPECT_TRUE(port().outputs.empty() && pairs().empty());
}

TEST_F(ConsoleTest, ARefusedBoxHasTheFocusAndItsTextSelected) {
    const auto expect_focus = [&](TextBox& box, const std::string& wrong) {
        std::string seen;
        const Subscription focus = box.watch_focus([&](bool& moved) {
            seen += "focused ";
            moved = true; // as a window whose focus is there already
        });
        const Subscription selection = box.watch_select_all([&] { seen += "selected"; });
        const std::string right = box.Text();
        box.set_Text(wrong);
        send();
        EXPECT_EQ(seen, "focused selected") << box.Name();
        box.set_Text(right);
    };
    expect_focus(console.modbus.txt_Address, "500");
    expect_focus(console.modbus.txt_Register, "x");
    expect_focus(console.modbus.txt_Values, "x");
    build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1", "4;9600,N,8,1;1"});
    console.opt_Protocol.set_Value(protocol::kTellura);
    expect_focus(console.tellura.TxtTelluraAddress, "33");
    expect_focus(console.tellura.TxtParameterAddress, "01c");
    expect_focus(console.tellura.TxtNoBytes, "0");
    console.tellura.OptReadWrite.set_Value(1);
    expect_focus(console.tellura.TxtData, "xy");
}

TEST_F(ConsoleTest, ACountNeverBecomesAValue) {
    ModbusPanel& fields = console.modbus;
    const auto text_of = [&](int type) {
        fields.cmb_CommandType.set_ListIndex(type);
        return fields.txt_Values.Text();
    };
    fields.txt_Values.set_Text("12");
    EXPECT_EQ(text_of(5), "") << "nothing is written that nobody entered";
    fields.txt_Values.set_Text("700");
    for (const auto& [type, text] :
         {std::pair{8, "700"}, {2, "12"}, {9, "12"}, {11, "0"}, {10, "700"}, {0, "12"}})
        EXPECT_EQ(text_of(type), text) << type;
    fields.set_entry({5, "1", "300", "-1", false});
    EXPECT_EQ(fields.txt_Values.Text(), "-1");
    EXPECT_EQ(text_of(3), "12");
}

TEST_F(ConsoleTest, RepliesInEachFormatAndTheirLackInWords) {
    using enum DataFormat;
    const std::string answer = frame("01 03 04 02 D5 FF FF");
    const std::string request = "1 3 100 2 133 212  > ";
    const std::vector<std::tuple<int, DataFormat, std::string, std::string>> replies{
        {2, Decimal, answer, request + "1 3 4 725 -1 235 195 "},
        {2, Hex, answer, "01 03 0064 0002 85 D4  > 01 03 04 02D5 FFFF EB C3 "},
        {2, SmartDec, answer, "100 2 > 725 -1"},
        {9, SmartDec, frame("01 03 08 00 01 00 05 FF FF FF FE"), "100 4 > 65541 -2"},
        {9, SmartDec, frame("01 83 02"), "100 4 > Exception Error: 131 2"},
        {2, Decimal, "\x01\x83", request + "Incomplete reply, bytes in hex: 01 83"},
        {2, Decimal, "", request + "No response from the controller at address 1."},
    };
    for (const auto& [type, format, reply, pair] : replies) {
        port().replies.push_back({{5, reply}});
        enter(std::to_string(type) + ";1;100;2");
        console.modbus.opt_DataFormat.set_Value(static_cast<int>(format));
        EXPECT_EQ(send(), pair);
    }
    port().replies.push_back({{5, answer}});
    send();
    EXPECT_TRUE(console.lbl_Status.Caption().starts_with("8 bytes sent, 9 received, 6"))
        << console.lbl_Status.Caption();
    console.modbus.txt_Address.set_Text("0");
    EXPECT_TRUE(send().ends_with(" > Broadcast: no controller answers."));
}

TEST_F(ConsoleTest, SaysSendingWhenItSendsAndWhatBecameOfIt) {
    Texts told;
    const Subscription captions =
        console.lbl_Status.watch([&] { told.push_back(console.lbl_Status.Caption()); });
    const Subscription painting = console.lbl_Status.watch_refresh(
        [&] { told.push_back("painted before output " + std::to_string(port().outputs.size())); });
    port().replies.push_back({{5, frame("01 83 02")}});
    enter("2;1;100;2");
    send();
    EXPECT_EQ(std::exchange(told, {}), (Texts{"Sending ...", "painted before output 0",
                                              "refused: no such register (exception 2)"}));
    enter("2;248;100;2");
    send();
    EXPECT_EQ(std::exchange(told, {}), Texts{"Bad ADDRESS entered."});
    rebuild();
    port().fail_next("PortOpen", 8002);
    enter("2;1;100;2");
    EXPECT_TRUE(send().ends_with(" > Not sent: the port is not open."));
    EXPECT_EQ(told, Texts{"Not sent: the port is not open."});

    for (int i = 0; i < 20; ++i)
        ports[0]->fail_next("PortOpen", 8002);
    const std::pair<SendOutcome, std::string> others[] = {
        {senders.text.send(TextProtocol::Full, {"1", "? C1"}), "COULDN'T CONNECT TO DEVICE"},
        {senders.text.send(TextProtocol::Xon, {"", "? C1"}), "Not sent: the port is not open."},
        {senders.tellura.send({}), "Bad or incomplete Packet!"}};
    for (const auto& [outcome, listed] : others) {
        EXPECT_EQ(outcome.kind, SendOutcome::Kind::NotSent);
        EXPECT_EQ(outcome.status, "Not sent: the port is not open.");
        EXPECT_EQ(outcome.row->response, listed);
    }
    EXPECT_FALSE(table.late_answers().any_doubtful(tick.now()));
}

TEST_F(ConsoleTest, ArrowKeysRecallAndEnterSends) {
    for (const std::string start : {"10", "20", "30"}) {
        enter("2;1;" + start + ";1");
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
    const std::string ini = dir.file("pelvan7.ini");
    const std::string section = "[COMMS CONTROLS]\r\n";
    for (const auto& [saved, expected] :
         {std::pair{"", 1}, {"DEFAULT PROTOCOL=3\r\n", 3}, {"DEFAULT PROTOCOL=words\r\n", 0}}) {
        testing::write_file(ini, section + saved);
        frm_Pelvan5VB fresh(services, config, table, link, senders, history, repeat);
        fresh.Load();
        EXPECT_EQ(fresh.opt_Protocol.Value(), expected);
        EXPECT_EQ(fresh.text.txt_CommsCommand.Text(), "? C1");
        EXPECT_EQ(fresh.modbus.Fram_Modbus.Visible(), expected == 1);
        EXPECT_EQ(testing::read_file(ini),
                  section + "DEFAULT PROTOCOL=" + std::to_string(expected) + "\r\n");
    }
}

TEST_F(ConsoleTest, AFifthChannelKeepsNothingElseFromHappening) {
    const std::string channel = ";9600,N,8,1;1";
    dialogs.shown.clear();
    const Texts five{"1" + channel, "2" + channel, "3" + channel, "4" + channel, "5;x;1"};
    EXPECT_EQ(error_of([&] { build(five); }), 9);
    EXPECT_EQ(dialogs.texts(), Texts{"Port settings are not valid in 'sub init_comms**'"});
    EXPECT_EQ(error_of([&] { console.Load(); }), 9);
    EXPECT_EQ(console.text.txt_CommsCommand.Text(), "? C1");
    EXPECT_EQ(error_of([&] { console.opt_Protocol.set_Value(2); }), 9);
    EXPECT_EQ(saved_protocol(config), 2);
    EXPECT_EQ(state.gCommDevice.size(), 4U);
}

TEST_F(ConsoleTest, ChoosingAProtocolRebuildsBeforeItWrites) {
    enter("2;1;0;1");
    send();
    EXPECT_TRUE(port().PortOpen());
    const Subscription rebuilding =
        table.before_rebuild.subscribe([&] { EXPECT_EQ(saved_protocol(config), 1); });
    console.opt_Protocol.set_Value(2);
    EXPECT_EQ(closings, Texts{"port 2"});
    EXPECT_EQ(saved_protocol(config), 2);
}

/// Sending a command again and again: the engine, and the console's controls.
class RepeatTest : public ConsoleTest {
  protected:
    RepeatTest() {
        console.Load();
        enter("2;1;100;1");
    }
    /// Loading the console has built the channels anew: the last one made is that of channel 1.
    testing::FakeSerialPort& port() { return *ports.back(); }
    /// The window's timer runs until that much time has passed.
    void run_for(double ms) {
        const double end = tick.now() + ms;
        while (tick.now() < end && panel.tmr_Repeat.running()) {
            tick.advance(panel.tmr_Repeat.Interval());
            panel.tmr_Repeat.Tick();
        }
    }
    [[nodiscard]] const RepeatCounts& counts() const { return repeat.counts(); }
    /// The line of the counts, without the times.
    [[nodiscard]] std::string shown() const {
        return panel.lbl_Repeat.Caption().substr(0, panel.lbl_Repeat.Caption().find(';'));
    }

    RepeatPanel& panel = console.repeat;
};

TEST_F(RepeatTest, CountsRepliesFailuresAndTimesAtItsInterval) {
    for (const double ms : {5.0, 15.0, 10.0})
        port().replies.push_back({{ms, frame("01 03 02 02 D5")}});
    port().replies.push_back({{1, frame("01 83 02")}});
    const double begin = tick.now();
    panel.txt_RepeatInterval.set_Text("0,5");
    console.mnuFile.children[1]->choose();
    run_for(1300);
    const auto& times = counts().replies;
    EXPECT_NEAR(times.maximum - times.minimum, 10, 2);
    EXPECT_NEAR(times.mean(), (times.maximum + times.minimum) / 2, 2);
    EXPECT_EQ(pairs().size(), 4U);
    EXPECT_NEAR(port().events.back().at_ms - begin, 1500, 20);
    EXPECT_TRUE(console.lbl_Status.Caption().find("exception 2") != std::string::npos);
    EXPECT_EQ(shown(), "Repeating: 3 replies, 1 failure");
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_TRUE(console.modbus.txt_Register.KeyDown(Key::Escape));
    EXPECT_FALSE(panel.running() || panel.tmr_Repeat.running());
    EXPECT_EQ(shown(), "Repeat stopped: 3 replies, 1 failure");
}

TEST_F(RepeatTest, OthersSendBetweenAndAClaimPausesIt) {
    panel.cmd_Repeat.press();
    console.modbus.txt_Register.set_Text("7");
    send();
    run_for(1000);
    ASSERT_EQ(port().outputs.size(), 3U);
    EXPECT_EQ(port().outputs[0], port().outputs[2]) << "not what the fields hold now";
    EXPECT_NE(port().outputs[0], port().outputs[1]);
    Link other{table, countdowns, gate, log, "Save/Restore Setup"};
    LineClaim claim = other.claim();
    run_for(5000);
    EXPECT_EQ(port().outputs.size(), 3U);
    EXPECT_EQ(shown(),
              "Repeat paused. The line is in use by Save/Restore Setup. 0 replies, 2 failures");
    EXPECT_TRUE(panel.cmd_Repeat.Enabled()) << "it can be stopped";
    claim.release();
    run_for(1000);
    EXPECT_EQ(port().outputs.size(), 4U);
    console.set_Enabled(false); // while the port settings are open
    run_for(3000);
    EXPECT_EQ(port().outputs.size(), 4U);
    console.set_Enabled(true);
    console.Unload();
    EXPECT_FALSE(panel.running());
    claim = other.claim();
    EXPECT_FALSE(panel.cmd_Repeat.Enabled());
}

TEST_F(RepeatTest, SaysWhatItCannotRepeatAndPutsNoBoxInItsWay) {
    for (const char* interval : {"", "0.05", "one", "3601"}) {
        panel.txt_RepeatInterval.set_Text(interval);
        panel.cmd_Repeat.press();
    }
    EXPECT_EQ(said(), Texts(4, "Enter an interval of 0.1 to 3600 seconds."));
    panel.txt_RepeatInterval.set_Text("1");
    console.modbus.txt_Values.set_Text("x");
    panel.cmd_Repeat.press();
    EXPECT_EQ(said(), Texts{"Bad DATA VALUE entered."});
    EXPECT_FALSE(panel.running());
    console.modbus.txt_Values.set_Text("1");
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    panel.cmd_Repeat.press();
    EXPECT_TRUE(said().empty());
    EXPECT_EQ(shown(), "Repeating: 0 replies, 1 failure");
    EXPECT_FALSE(counts().last_failure.starts_with("No response")) << counts().last_failure;
}

} // namespace
} // namespace pelvan
