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
    ModbusPanel& fields = console.modbus;
    TelluraPanel& tellura = console.tellura;
    std::string focused;
    std::vector<Subscription> watches;
    for (TextBox* box :
         {&fields.txt_Address, &fields.txt_Register, &fields.txt_Values, &tellura.TxtTelluraAddress,
          &tellura.TxtParameterAddress, &tellura.TxtNoBytes, &tellura.TxtData}) {
        watches.push_back(box->watch_focus([&, box](bool& moved) {
            focused = box->Name();
            moved = true; // as a window whose focus is there already
        }));
        watches.push_back(box->watch_select_all([&, box] { focused += box->Name() + "!"; }));
    }
    const auto expect = [&](const TextBox& box) {
        focused.clear();
        send();
        EXPECT_EQ(focused, box.Name() + box.Name() + "!");
    };
    enter("2;500;1;1");
    expect(fields.txt_Address);
    enter("2;1;x;1");
    expect(fields.txt_Register);
    enter("5;1;1;x");
    expect(fields.txt_Values);
    build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1", "4;9600,N,8,1;1"});
    console.opt_Protocol.set_Value(protocol::kTellura);
    const std::vector<std::pair<TelluraEntry, TextBox*>> wrong{
        {{"33", "01ca", "2", "", false, TelluraCheck::Bcc}, &tellura.TxtTelluraAddress},
        {{"1", "01c", "2", "", false, TelluraCheck::Bcc}, &tellura.TxtParameterAddress},
        {{"1", "01ca", "0", "", false, TelluraCheck::Bcc}, &tellura.TxtNoBytes},
        {{"1", "01ca", "2", "xy", true, TelluraCheck::Bcc}, &tellura.TxtData}};
    for (const auto& [entry, box] : wrong) {
        tellura.set_entry(entry);
        expect(*box);
    }
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
    EXPECT_EQ(told, (Texts{"Sending ...", "painted before output 0",
                           "refused: no such register (exception 2)"}));
    told.clear();
    enter("2;248;100;2");
    send();
    EXPECT_EQ(told, Texts{"Bad ADDRESS entered."});
    told.clear();
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
        {senders.tellura.send({"1", "01ca", "2", "", false, TelluraCheck::Bcc}),
         "Bad or incomplete Packet!"}};
    for (const auto& [outcome, listed] : others) {
        EXPECT_EQ(outcome.kind, SendOutcome::Kind::NotSent);
        EXPECT_EQ(outcome.status, "Not sent: the port is not open.");
        EXPECT_EQ(outcome.row->response, listed);
    }
    EXPECT_FALSE(table.late_answers().any_doubtful(tick.now()));
}

TEST_F(ConsoleTest, AFullResponseThatTwiceLacksItsEndIsNoReply) {
    for (const char* answer : {"1^", "^", "{7", "}", "{7"})
        ports[0]->replies.push_back({{1, testing::wire(answer)}});
    const SendOutcome outcome = senders.text.send(TextProtocol::Full, {"1", "? C1"});
    EXPECT_EQ(outcome.row->response, "NOT RECEIVED");
    EXPECT_EQ(outcome.kind, SendOutcome::Kind::NoReply);
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

TEST(ConsoleHistory, ALineComesBackIntoTheFieldsOrIsSentAgain) {
    testing::ConsoleRig rig(std::vector<std::string>(4, "simulated:742"), protocol::kFull);
    frm_Pelvan5VB& console = rig.console;
    ListBox& lines = rig.history.frmCommand.list;
    HistoryForm& replies = rig.history.frmResponse;
    const TextEntry full{"1", "? MODEL"};
    const ModbusEntry modbus{9, "1", "0", "1", false};
    console.text.set_entry(full);
    rig.send();
    console.opt_Protocol.set_Value(protocol::kModbus);
    console.modbus.set_entry(modbus);
    console.modbus.opt_DataFormat.set_Value(2);
    rig.send();
    console.modbus.set_entry({2, "1", "5", "1", false});
    lines.set_ListIndex(0);
    replies.mnuSendAgain.choose();
    EXPECT_EQ(rig.pairs().back(), "? MODEL > 742");
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kModbus) << "the fields stay as they are";
    EXPECT_EQ(console.modbus.txt_Register.Text(), "5");
    lines.set_ListIndex(1);
    replies.list.DblClick();
    EXPECT_EQ(console.modbus.entry(), modbus);
    EXPECT_TRUE(console.Visible());
    lines.set_ListIndex(2); // the line that was sent again
    console.text.txt_CommsCommand.set_Text("");
    EXPECT_TRUE(lines.KeyDown(Key::Enter));
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kFull);
    EXPECT_EQ(console.text.entry(), full);

    Link other{rig.table, rig.countdowns, rig.dialogs, rig.log, "Save/Restore Setup"};
    const LineClaim claim = other.claim();
    rig.said();
    lines.set_ListIndex(1);
    replies.mnuSendAgain.choose();
    replies.mnuRecall.choose();
    EXPECT_EQ(rig.said(), Texts(2, "The line is in use by Save/Restore Setup."));
    EXPECT_EQ(rig.pairs().size(), 3U);
    EXPECT_EQ(console.opt_Protocol.Value(), protocol::kFull);
    rig.history.add(
        {"", std::string(3000, 'x'), "", "", 0, {0, TextEntry{"1", std::string(3000, 'x')}}});
    replies.mnuRecall.choose();
    EXPECT_EQ(rig.said().size(), 1U) << "too long to be kept";
}

TEST_F(ConsoleTest, LoadingSelectsTheSavedProtocolAndWritesItBack) {
    const std::string ini = dir.file("pelvan7.ini");
    for (const auto& [saved, expected] : std::vector<std::pair<std::string, int>>{
             {"", 1}, {"DEFAULT PROTOCOL=3\r\n", 3}, {"DEFAULT PROTOCOL=words\r\n", 0}}) {
        testing::write_file(ini, "[COMMS CONTROLS]\r\n" + saved);
        frm_Pelvan5VB fresh(services, config, table, link, senders, history, repeat);
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
    dialogs.shown.clear();
    EXPECT_EQ(error_of([&] {
                  build({"1" + channel, "2" + channel, "3" + channel, "4" + channel, "5;x;1"});
              }),
              9);
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
    const auto written = [&] {
        return ini_read_string("COMMS CONTROLS", "DEFAULT PROTOCOL", "none", config.gIniFile);
    };
    const Subscription rebuilding =
        table.before_rebuild.subscribe([&] { EXPECT_EQ(written(), "none"); });
    console.opt_Protocol.set_Value(2);
    EXPECT_EQ(closings, Texts{"port 2"});
    EXPECT_EQ(written(), "2");
}

} // namespace
} // namespace pelvan
