#include <gtest/gtest.h>

#include "settings_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class CommsSettingsTest : public ::testing::Test {
  protected:
    CommsSettingsTest() {
        form.selected_protocol = [this] { return selected; };
        form.hold_windows = [this](bool held) { holds.push_back(held); };
    }
    void open(int protocol) {
        selected = protocol;
        form.Show();
    }
    /// Port, baud, parity, data bits, stop bits.
    void type(std::size_t frame, const std::array<std::string, 5>& fields) {
        form.txt_Port[frame].set_Text(fields[0]);
        form.txt_Baud[frame].set_Text(fields[1]);
        form.txt_Parity[frame].set_Text(fields[2]);
        form.txt_DataBits[frame].set_Text(fields[3]);
        form.txt_StopBits[frame].set_Text(fields[4]);
    }
    std::array<std::string, 5> boxes(std::size_t frame) {
        return {form.txt_Port[frame].Text(), form.txt_Baud[frame].Text(),
                form.txt_Parity[frame].Text(), form.txt_DataBits[frame].Text(),
                form.txt_StopBits[frame].Text()};
    }

    testing::SettingsRig rig;
    int selected = 0;
    std::vector<bool> holds;
    frm_CommsSettings form{rig.services, rig.config, rig.table, rig.list_devices};
};

const std::array<std::string, 5> kGood{"3", "4800", "e", "7", "2"};
const std::array<std::string, 5> kAllBad{"0", "7", "x", "9", "3"};

TEST_F(CommsSettingsTest, ActivationRebuildsAndShowsTheSelectedProtocolsFrameFilled) {
    rig.build({"1;9600,N,8,1;0", "2;19200,E,7,2;1", "5;300,O,8,1;5"});
    std::int16_t channel = 0;
    static_cast<void>(rig.table.open_port(channel));
    const std::vector<std::array<std::string, 5>> filled{
        {"1", "9600", "N", "8", "1"}, {"2", "19200", "E", "7", "2"}, {"5", "300", "O", "8", "1"}};
    for (std::size_t protocol = 0; protocol < filled.size(); ++protocol) {
        open(static_cast<int>(protocol));
        EXPECT_EQ(boxes(protocol), filled[protocol]);
        EXPECT_EQ(form.ComboRTSMode[protocol].ListIndex(), static_cast<int>(protocol));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(form.fram_Protocol[i].Visible(), i == protocol);
        EXPECT_FALSE(form.changed(static_cast<int>(protocol)));
    }
    EXPECT_EQ(rig.closings, Texts{"port 1"});
}

TEST_F(CommsSettingsTest, OpensForAChannelThatTheTableDoesNotHave) {
    rig.rebuild();
    open(1);
    EXPECT_EQ(boxes(1), (std::array<std::string, 5>{"", "19200", "", "", ""}));
    EXPECT_FALSE(form.picker.cmd_AssignDevice.Enabled());
    form.cmd_OK[1].press();
    EXPECT_FALSE(form.Visible());
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(CommsSettingsTest, EachFieldIsCheckedAndReported) {
    const std::string port = " The Comm Port specified is not valid, data will not be saved";
    const std::string baud = " The Baud Rate specified is not valid, data will not be saved";
    const std::string parity = " The Parity specified is not valid, data will not be saved";
    const std::string bits = " The Data Bits specified is not valid, data will not be saved";
    const std::vector<std::pair<std::array<std::string, 5>, Texts>> cases{
        {kGood, {}},
        {{"16", "38400", "N", "8", "1"}, {}},
        {{"17", "38400", "N", "8", "1"}, {port}},
        {{"COM1", "38400", "N", "8", "1"}, {port}},
        {{"1", "115200", "n", "8", "1"}, {baud}},
        {{"1", "14400", "n", "8", "1"}, {baud}},
        {{"1", "300", "none", "8", "1"}, {parity}},
        {{"1", "300", "", "8", "1"}, {parity}},
        {{"1", "300", "O", "8", "1.5"}, {bits}},
        {kAllBad, {port, baud, parity, bits, bits}},
    };
    rig.build({"1;9600,N,8,1;0"});
    const std::string before = testing::read_file(rig.config.gIniFile);
    for (const auto& [fields, messages] : cases) {
        rig.dialogs.shown.clear();
        type(0, fields);
        EXPECT_EQ(form.ValidatePortSettings(0), messages.empty());
        EXPECT_EQ(rig.dialogs.texts(), messages);
    }
    form.cmd_SaveChanges_Click(0);
    EXPECT_EQ(testing::read_file(rig.config.gIniFile), before);
    EXPECT_THROW(form.txt_Baud_Change(4), RunTimeError);
}

TEST_F(CommsSettingsTest, SavesAsTypedRebuildsAndCloses) {
    rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
    const std::vector<std::tuple<int, int, std::string>> cases{
        {1, 1, "2"}, {2, 2, "5"}, {1, 2, "2"}, // the console's protocol, the frame, the stored mode
    };
    for (const auto& [protocol, frame, mode] : cases) {
        open(protocol);
        const auto i = static_cast<std::size_t>(frame);
        type(i, {" 9", "600", "o", "7", "2"});
        form.ComboRTSMode[i].set_ListIndex(2);
        form.cmd_SaveChanges[i].press();
        const std::string device = "DEVICE " + std::to_string(frame);
        EXPECT_EQ(rig.comms_key(device + " PORT SETTING "), "600,o,7,2");
        EXPECT_EQ(rig.comms_key(device + " RTS Mode "), mode);
        EXPECT_EQ(rig.state.gCommDevice[i]->CommPort(), 9);
        EXPECT_TRUE(rig.state.gRtsToggle[i]);
        EXPECT_FALSE(form.Visible());
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
    EXPECT_EQ(holds, (std::vector<bool>{true, false, true, false, true, false}));
}

TEST_F(CommsSettingsTest, ClosingAsksForChangedFramesButNeverForTellura) {
    rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1", "4;9600,N,8,1;1"});
    open(3);
    form.txt_Baud[3].set_Text("300");
    form.cmd_OK[3].press();
    EXPECT_TRUE(rig.dialogs.shown.empty());

    open(0);
    for (const std::size_t frame : {0U, 1U, 2U})
        form.txt_Baud[frame].set_Text("300");
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Yes, MessageAnswer::No};
    form.txt_Port[1].set_Text("12");
    form.cmd_OK[0].press();
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(rig.dialogs.texts(), (Texts{"Some data has changed for Full Protocol.  Save?",
                                          "Some data has changed for Modbus Protocol.  Save?",
                                          "Some data has changed for Xon Protocol.  Save?"}));
    EXPECT_EQ(rig.dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(form.txt_Port[1].SelLength(), 2) << "the focus went to the last frame with a Yes";
    EXPECT_TRUE(holds.back()) << "still open, still held";
    form.cmd_OK[0].press(); // No to all
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(holds, (std::vector<bool>{true, false, true, false}));
    EXPECT_EQ(rig.comms_key("DEVICE 0 PORT SETTING "), "9600,N,8,1");
}

TEST_F(CommsSettingsTest, NamesAndAddsTheKeysThatHideASavedChannel) {
    rig.rebuild(); // no file
    open(2);
    type(2, kGood);
    form.cmd_SaveChanges[2].press();
    ASSERT_EQ(rig.dialogs.shown.size(), 1U);
    EXPECT_NE(rig.dialogs.shown[0].text.find("DEVICE 0 COMM PORT"), std::string::npos);
    EXPECT_NE(rig.dialogs.shown[0].text.find("DEVICE 1 COMM PORT"), std::string::npos);
    EXPECT_EQ(rig.state.gCommDevice.size(), 1U) << "declined";
    EXPECT_FALSE(form.Visible());

    open(2);
    type(2, kGood);
    rig.dialogs.answers = {MessageAnswer::Yes};
    form.cmd_SaveChanges[2].press();
    ASSERT_EQ(rig.state.gCommDevice.size(), 3U);
    EXPECT_EQ(rig.state.gCommDevice[2]->Settings(), "4800,e,7,2");
    EXPECT_EQ(rig.comms_key("DEVICE 1 PORT SETTING "), "9600,N,8,1");
    EXPECT_EQ(rig.state.gCommDevice[0]->CommPort(), 2);
}

TEST_F(CommsSettingsTest, LockActsOnTheModbusFrameAlone) {
    for (const bool locked : {true, false}) {
        form.LockDataOptionmenu.choose();
        EXPECT_EQ(form.LockDataOptionmenu.Checked(), locked);
        for (TextBox* box : {&form.txt_Parity[1], &form.txt_DataBits[1], &form.txt_StopBits[1]})
            EXPECT_EQ(box->Enabled(), !locked);
        EXPECT_TRUE(form.txt_Parity[0].Enabled());
        EXPECT_TRUE(form.txt_Baud[1].Enabled());
    }
}

TEST_F(CommsSettingsTest, AFifthChannelIsReportedAndTheFrameFilledAllTheSame) {
    rig.build({"1;9600,N,8,1;0"});
    for (int n = 1; n < 5; ++n)
        ini_write_string(ini_key::kCommsSection, ini_key::comm_port(n), "1", rig.config.gIniFile);
    selected = 0;
    EXPECT_THROW(form.Show(), RunTimeError);
    EXPECT_TRUE(form.fram_Protocol[0].Visible());
    EXPECT_EQ(form.txt_Port[0].Text(), "1");
    EXPECT_TRUE(form.Unload());
    EXPECT_FALSE(holds.back());
}

} // namespace
} // namespace pelvan
