#include "settings_rig.h"
#include "text/strings.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class CommsSettingsTest : public ::testing::Test, private SettingsHost {
  protected:
    [[nodiscard]] int selected_protocol() const override { return selected; }
    void hold_windows(bool held) override { holds.push_back(held); }
    void open(int protocol) {
        selected = protocol;
        form.Show();
    }
    std::array<TextBox*, 5> boxes(std::size_t frame) {
        return {&form.txt_Port[frame], &form.txt_Baud[frame], &form.txt_Parity[frame],
                &form.txt_DataBits[frame], &form.txt_StopBits[frame]};
    }
    /// "port;baud;parity;data bits;stop bits".
    void type(std::size_t frame, const std::string& fields) {
        const auto texts = split(fields, ';');
        for (std::size_t i = 0; i < 5; ++i)
            boxes(frame)[i]->set_Text(texts[i]);
    }
    std::string shown(std::size_t frame) {
        std::string out;
        for (TextBox* box : boxes(frame))
            out += ";" + box->Text();
        return out.substr(1);
    }
    std::string key(const std::string& name) const { return rig.key(ini_key::kCommsSection, name); }

    testing::SettingsRig rig;
    int selected = 0;
    std::vector<bool> holds;
    frm_CommsSettings form{rig.services, rig.config, rig.table, *this, rig.list_devices};
};

TEST_F(CommsSettingsTest, ActivationRebuildsAndShowsTheSelectedProtocolsFrameFilled) {
    rig.build({"1;9600,N,8,1;0", "2;19200,E,7,2;1", "5;300,O,8,1;5"});
    std::int16_t channel = 0;
    static_cast<void>(rig.table.open_port(channel));
    const Texts filled{"1;9600;N;8;1", "2;19200;E;7;2", "5;300;O;8;1"};
    for (std::size_t protocol = 0; protocol < filled.size(); ++protocol) {
        open(static_cast<int>(protocol));
        EXPECT_EQ(shown(protocol), filled[protocol]);
        EXPECT_EQ(form.ComboRTSMode[protocol].ListIndex(), static_cast<int>(protocol));
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(form.fram_Protocol[i].Visible(), i == protocol);
        EXPECT_FALSE(form.changed(static_cast<int>(protocol)));
    }
    EXPECT_EQ(rig.closings, Texts{"port 1"});
}

TEST_F(CommsSettingsTest, WhatIsNotValidIsReportedAndNotWritten) {
    rig.build({"1;9600,N,8,1;0"});
    open(0);
    const std::string before = testing::read_file(rig.config.gIniFile);
    type(0, "0;7;N;8;3");
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(rig.dialogs.texts(),
              (Texts{" The Comm Port specified is not valid, data will not be saved",
                     " The Baud Rate specified is not valid, data will not be saved",
                     " The Data Bits specified is not valid, data will not be saved"}));
    EXPECT_EQ(testing::read_file(rig.config.gIniFile), before);
    EXPECT_TRUE(form.Visible());
    EXPECT_THROW(form.txt_Baud_Change(4), RunTimeError);
}

TEST_F(CommsSettingsTest, SavesAsTypedRebuildsAndCloses) {
    rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
    const std::vector<std::tuple<int, std::size_t, std::string>> cases{
        {1, 1, "2"}, {2, 2, "5"}, {1, 2, "2"}, // the console's protocol, the frame, the stored mode
    };
    for (const auto& [protocol, frame, mode] : cases) {
        open(protocol);
        type(frame, " 9;600;o;7;2");
        form.ComboRTSMode[frame].set_ListIndex(2);
        form.cmd_SaveChanges[frame].press();
        const std::string device = "DEVICE " + std::to_string(frame);
        EXPECT_EQ(key(device + " PORT SETTING "), "600,o,7,2");
        EXPECT_EQ(key(device + " RTS Mode "), mode);
        EXPECT_EQ(rig.state.gCommDevice[frame]->CommPort(), 9);
        EXPECT_TRUE(rig.state.gRtsToggle[frame]);
        EXPECT_FALSE(form.Visible());
    }
    EXPECT_TRUE(rig.dialogs.shown.empty());
    EXPECT_EQ(holds, (std::vector<bool>{true, false, true, false, true, false}));
}

TEST_F(CommsSettingsTest, ClosingAsksForChangedFramesButNeverForTellura) {
    rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1", "4;9600,N,8,1;1"});
    open(3);
    for (const std::size_t frame : {0U, 1U, 2U, 3U})
        form.txt_Baud[frame].set_Text("300");
    form.txt_Port[1].set_Text("12");
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Yes, MessageAnswer::No};
    bool all_selected = false;
    const Subscription selecting = form.txt_Port[1].watch_select_all([&] { all_selected = true; });
    form.cmd_OK[3].press();
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(rig.dialogs.texts(), (Texts{"Some data has changed for Full Protocol.  Save?",
                                          "Some data has changed for Modbus Protocol.  Save?",
                                          "Some data has changed for Xon Protocol.  Save?"}));
    EXPECT_EQ(rig.dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_TRUE(all_selected) << "the focus went to the last frame with a Yes";
    EXPECT_EQ(holds, std::vector<bool>{true}) << "still open, still held";
    form.cmd_OK[0].press(); // No to all
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(holds, (std::vector<bool>{true, false}));
    EXPECT_EQ(key("DEVICE 0 PORT SETTING "), "9600,N,8,1");
}

TEST_F(CommsSettingsTest, NamesAndAddsTheKeysThatHideASavedChannel) {
    rig.rebuild(); // no file
    for (const bool add : {false, true}) {
        open(2);
        EXPECT_EQ(shown(2), ";19200;;;") << "not in the table";
        EXPECT_FALSE(form.picker.cmd_AssignDevice.Enabled());
        EXPECT_FALSE(form.changed(2));
        type(2, "3;4800;e;7;2");
        rig.dialogs.answers = {add ? MessageAnswer::Yes : MessageAnswer::No};
        form.cmd_SaveChanges[2].press();
        EXPECT_FALSE(form.Visible());
        EXPECT_EQ(rig.state.gCommDevice.size(), add ? 3U : 1U);
    }
    const std::string missing = "\n    DEVICE 0 COMM PORT \n    DEVICE 1 COMM PORT \n";
    EXPECT_NE(rig.dialogs.texts().at(0).find(missing), std::string::npos);
    EXPECT_EQ(rig.state.gCommDevice[2]->Settings(), "4800,e,7,2");
    EXPECT_EQ(key("DEVICE 1 PORT SETTING "), "9600,N,8,1");
    EXPECT_EQ(rig.state.gCommDevice[0]->CommPort(), 2);
}

TEST_F(CommsSettingsTest, StaysOpenWhenTheFileCannotBeWritten) {
    namespace fs = std::filesystem;
    const auto protect = [this] {
        fs::permissions(rig.dir.path(), fs::perms::owner_read | fs::perms::owner_exec);
    };
    const std::string said = " could not be written to " + rig.config.gIniFile + ".";
    rig.build({"1;9600,N,8,1;0"});
    open(0);
    type(0, "3;4800;e;7;2");
    protect();
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(rig.dialogs.texts(), Texts{"The settings" + said});
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(shown(0), "3;4800;e;7;2");
    EXPECT_TRUE(form.changed(0)) << "closing asks";

    // The settings are written, the channels before them are not.
    fs::permissions(rig.dir.path(), fs::perms::owner_all);
    open(2);
    type(2, "4;4800;e;7;2");
    rig.dialogs.shown.clear();
    rig.dialogs.answers = {MessageAnswer::Yes};
    rig.dialogs.on_message = [&](const std::string& text) {
        if (text.ends_with("?")) protect();
    };
    form.cmd_SaveChanges[2].press();
    ASSERT_EQ(rig.dialogs.shown.size(), 2U);
    EXPECT_EQ(rig.dialogs.shown[1].text, "The missing channels" + said);
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(key("DEVICE 2 COMM PORT "), "4");
    EXPECT_FALSE(form.changed(2));
}

TEST_F(CommsSettingsTest, NothingIsStoredWhileAToolHasTheLines) {
    rig.build({"1;9600,N,8,1;0"});
    open(0);
    const std::string before = testing::read_file(rig.config.gIniFile);
    const LineUser transfer{"Save/Restore Setup"};
    const LineClaim claim = rig.table.line_use().claim(transfer);
    type(0, "3;4800;e;7;2");
    form.cmd_SaveChanges[0].press();
    form.picker.cmb_Device.set_ListIndex(1);
    form.picker.cmd_AssignDevice.press();
    EXPECT_EQ(rig.dialogs.texts(), Texts(2, "The line is in use by Save/Restore Setup."));
    EXPECT_EQ(testing::read_file(rig.config.gIniFile), before);
    EXPECT_TRUE(form.Visible());
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

TEST_F(CommsSettingsTest, AFifthChannelIsReportedAndTheWindowWorksAllTheSame) {
    EXPECT_THROW(rig.build(Texts(5, "1;9600,N,8,1;0")), RunTimeError);
    EXPECT_THROW(form.Show(), RunTimeError);
    EXPECT_TRUE(form.fram_Protocol[0].Visible());
    EXPECT_EQ(form.txt_Port[0].Text(), "1");
    type(0, "3;9600;N;8;1");
    EXPECT_THROW(form.cmd_SaveChanges[0].press(), RunTimeError);
    EXPECT_EQ(key("DEVICE 0 COMM PORT "), "3");
    EXPECT_FALSE(form.Visible());
    EXPECT_FALSE(holds.back());
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

} // namespace
} // namespace pelvan
