#include "settings_rig.h"
#include "support/cases.h"
#include "text/strings.h"

namespace pelvan::testing {

using std::string_literals::operator""s;

class CommsSettingsTest : public SettingsTest, private SettingsHost {
  protected:
    [[nodiscard]] int selected_protocol() const override { return selected; }
    void hold_windows(bool held) override { holds += held ? "+" : "-"; }
    void open(int protocol) {
        selected = protocol;
        form.Show();
    }
    std::array<TextBox*, 5> boxes(std::size_t frame) {
        return {&form.txt_Port[frame], &form.txt_Baud[frame], &form.txt_Parity[frame],
                &form.txt_DataBits[frame], &form.txt_StopBits[frame]};
    }
    /// Types "port;baud;parity;data bits;stop bits" and saves.
    void save(std::size_t frame, const std::string& fields) {
        for (std::size_t i = 0; const std::string& text : split(fields, ';'))
            boxes(frame)[i++]->set_Text(text);
        form.cmd_SaveChanges[frame].press();
    }
    std::string shown(std::size_t frame) {
        std::string out;
        for (TextBox* box : boxes(frame))
            out += box->Text() + ";";
        return out;
    }
    /// Of a channel, behind "DEVICE ".
    std::string device_key(const std::string& name) const {
        return key(ini_key::kCommsSection, "DEVICE " + name);
    }

    int selected = 0;
    std::string holds;
    frm_CommsSettings form{services, config, table, *this, lookup};
};

TEST_F(CommsSettingsTest, HowALineIsUsedIsRecommendedAndSavedForItsChannelAlone) {
    plugged.clear();
    build({"1;9600,N,8,1;0", "2;9600,N,8,1;1"});
    const std::string file = read_file(config.gIniFile);
    open(1);
    form.cmd_SaveChanges[1].press();
    EXPECT_EQ(read_file(config.gIniFile), file) << "nothing is written that was not chosen";
    open(1);
    const Label& advice = form.exchange.lbl_Advice;
    EXPECT_EQ(advice.Caption(), "");
    form.txt_Baud[1].set_Text("38400");
    EXPECT_TRUE(advice.Caption().starts_with("Recommended: at this baud rate"));
    form.exchange.chk_Complete.set_Value(1);
    EXPECT_EQ(advice.Caption(), "");
    const std::tuple<CheckBox&, std::string, const char*, const char*, bool ExchangeWay::*>
        choices[] = {
            {form.exchange.chk_Complete, "EXCHANGE", "COMPLETE", "QUIET", &ExchangeWay::complete},
            {form.exchange.chk_Echo, "ECHO", "YES", "NO", &ExchangeWay::echo}};
    for (const auto& [box, name, on, off, used] : choices)
        for (const char* const value : {on, off}) {
            open(0);
            EXPECT_EQ(box.Value(), 0) << name;
            open(1);
            EXPECT_EQ(box.Value(), value == off) << name;
            box.set_Value(value == on);
            EXPECT_TRUE(form.changed(1)) << name;
            form.cmd_SaveChanges[1].press();
            EXPECT_EQ(device_key("1 " + name) + device_key("0 " + name), value + "(none)"s);
            EXPECT_EQ(table.exchange_way(1).*used, value == on) << name;
            EXPECT_FALSE(table.exchange_way(0).*used) << name;
        }
}

TEST(PortSettings, EachFieldIsCheckedInOrder) {
    // Port, baud, parity, data bits, stop bits; what the messages call not valid: data bits also
    // for the stop bits. 1.5 lies between 1 and 16.
    for (const auto& [typed, wrong] :
         cases("16;38400;e;7;2->| 1 ;300;O;8;1->|1.5;1200;E;8;1->|17;9600;N;8;1->,Comm Port|"
               "x;9600;n;8;1->,Comm Port|1;14400;n;8;1->,Baud Rate|1;115200;n;8;1->,Baud Rate|"
               "1;300;none;8;1->,Parity|1;300;;8;1->,Parity|1;300;O;8;1.5->,Data Bits|"
               "0;7;x;9;3->,Comm Port,Baud Rate,Parity,Data Bits,Data Bits")) {
        const auto field = split(typed, ';');
        auto messages = split(wrong, ',');
        messages.erase(messages.begin());
        for (std::string& message : messages)
            message = " The " + message + " specified is not valid, data will not be saved";
        EXPECT_EQ(ValidatePortSettings({field[0], field[1], field[2], field[3], field[4], 0}),
                  messages)
            << typed;
    }
}

TEST_F(CommsSettingsTest, FramesAreRecommendedOverANetwork) {
    build({"1;9600,N,8,1;0", "2;9600,N,8,1;1"});
    ini_write_string("SERIAL DEVICES", "PORT 2", "tcp://host:4001", config.gIniFile);
    open(1);
    EXPECT_TRUE(form.exchange.lbl_Advice.Caption().starts_with("Recommended: over a network"));
    form.exchange.chk_Complete.set_Value(1);
    EXPECT_EQ(form.exchange.lbl_Advice.Caption(), "");
}

TEST(ExchangeAdvice, SaysWhyAndWhatIsKnown) {
    EXPECT_EQ(exchange_advice(9600, false, false, {16, 12}, {}), "");
    EXPECT_EQ(exchange_advice(9600, false, false, {23, 16.2}, 16),
              "Recommended: the adapter delivers in lumps. Up to 23 bytes came at once, with up to "
              "16 ms between two lumps of a reply. The adapter's latency timer is 16 ms.");
    EXPECT_EQ(exchange_advice(38400, true, false, {23, 0}, {}), "Up to 23 bytes came at once.");
}

TEST_F(CommsSettingsTest, ActivationRebuildsAndShowsTheSelectedProtocolsFrameFilled) {
    build({"1;9600,N,8,1;0", "2;19200,E,7,2;1", "5;300,O,8,1;5"});
    open_port(0);
    const Texts filled{"1;9600;N;8;1;", "2;19200;E;7;2;", "5;300;O;8;1;"};
    for (std::size_t protocol = 0; protocol < filled.size(); ++protocol) {
        const int number = static_cast<int>(protocol);
        open(number);
        EXPECT_EQ(shown(protocol), filled[protocol]);
        EXPECT_EQ(form.ComboRTSMode[protocol].ListIndex(), number);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_EQ(form.fram_Protocol[i].Visible(), i == protocol);
        EXPECT_FALSE(form.changed(number));
    }
    EXPECT_EQ(closings, Texts{"port 1"});
}

TEST_F(CommsSettingsTest, NothingIsStoredThatIsNotValidOrWhileAToolHasTheLines) {
    build({"1;9600,N,8,1;0"});
    open(0);
    const std::string before = read_file(config.gIniFile);
    int whole = 0; // what is typed next replaces it
    const auto counted = form.txt_StopBits[0].watch_select_all([&] { ++whole; });
    save(0, "1;9600;N;8;3");
    EXPECT_GE(whole, 1);
    dialogs.shown.clear();
    save(0, "0;7;N;8;3");
    const LineUser transfer{"Save/Restore Setup"};
    const LineClaim claim = table.line_use().claim(transfer);
    save(0, "3;4800;e;7;2");
    const std::string end = " specified is not valid, data will not be saved";
    const std::string in_use = "The line is in use by Save/Restore Setup.";
    EXPECT_EQ(dialogs.texts(), (Texts{" The Comm Port" + end, " The Baud Rate" + end,
                                      " The Data Bits" + end, in_use}));
    EXPECT_EQ(read_file(config.gIniFile), before);
    EXPECT_TRUE(form.Visible());
    EXPECT_THROW(form.txt_Baud_Change(4), RunTimeError);
}

TEST_F(CommsSettingsTest, SavesAsTypedRebuildsAndCloses) {
    plugged.clear();
    build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
    // The console's protocol, the frame, the stored mode.
    for (const auto& [protocol, frame, mode] :
         {std::tuple{1, 1U, "2"}, {2, 2U, "5"}, {1, 2U, "2"}}) {
        open(protocol);
        form.ComboRTSMode[frame].set_ListIndex(2);
        save(frame, " 9;600;o;7;2");
        EXPECT_EQ(device_key(std::to_string(frame) + " PORT SETTING "), "600,o,7,2");
        EXPECT_EQ(device_key(std::to_string(frame) + " RTS Mode "), mode);
        EXPECT_EQ(state.gCommDevice[frame]->CommPort(), 9);
        EXPECT_TRUE(state.gRtsToggle[frame]);
        EXPECT_FALSE(form.Visible());
    }
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_EQ(holds, "+-+-+-");
}

TEST_F(CommsSettingsTest, ClosingAsksForChangedFramesButNeverForTellura) {
    build({"1;9600,N,8,1;0", "2;9600,N,8,1;1", "3;9600,N,8,1;1", "4;9600,N,8,1;1"});
    open(3);
    for (TextBox& baud : form.txt_Baud)
        baud.set_Text("300");
    form.txt_Port[1].set_Text("12");
    dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Yes, MessageAnswer::No};
    bool all_selected = false;
    const Subscription selecting = form.txt_Port[1].watch_select_all([&] { all_selected = true; });
    form.cmd_OK[3].press();
    EXPECT_EQ(dialogs.texts(), (Texts{"Some data has changed for Full Protocol.  Save?",
                                      "Some data has changed for Modbus Protocol.  Save?",
                                      "Some data has changed for Xon Protocol.  Save?"}));
    EXPECT_EQ(dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_TRUE(all_selected) << "the focus went to the last frame with a Yes";
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(holds, "+") << "still open, still held";
    form.cmd_OK[0].press(); // No to all
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(holds, "+-");
    EXPECT_EQ(device_key("0 PORT SETTING "), "9600,N,8,1");
}

/// What is filled in for a channel that the file does not know: with Save alone it works.
TEST_F(CommsSettingsTest, AnUnknownChannelBeginsWithTheOnlyDeviceAndAFreeNumber) {
    const SerialDevice maker = adapter("Maker"), other = adapter("Other");
    const SerialDevice board{"/dev/ttyS0", "/dev/ttyS0", "", true};
    states[other.path] = states[board.path] = DeviceState::Openable;
    const std::string defaults = ";9600;N;8;1;";
    const std::string channel_on_4 =
        "\n[COMMS CONTROLS]\nDEVICE 0 COMM PORT=4\nDEVICE 0 PORT SETTING=1200,E,7,2";
    // Devices; the file behind the section of the devices; boxes; the device in the box.
    const std::tuple<std::vector<SerialDevice>, std::string, std::string, std::string> cases[] = {
        {{}, "", "1" + defaults, ""},
        {{maker}, "", "1" + defaults, maker.path},
        {{board}, "", "1" + defaults, board.path},
        {{maker, board}, "", "3" + defaults, maker.path}, // 1 is the board's, 2 the default of Full
        {{maker, other}, "", "1" + defaults, ""},
        {{maker}, "PORT 7=" + maker.path, "7" + defaults, maker.path},
        {{maker}, "PORT 1=simulated:742", "3" + defaults, maker.path},
        {{maker}, "PORT 4=" + maker.path + channel_on_4, "4;1200;E;7;2;", maker.path}};
    for (const auto& [devices, file, fields, device] : cases) {
        plugged = devices;
        built_in = !plugged.empty() && plugged.back().built_in ? board.path : "";
        write_file(config.gIniFile, "[SERIAL DEVICES]\n" + file + "\n");
        open(1);
        EXPECT_EQ(shown(1) + form.picker.device(), fields + device) << file;
        EXPECT_FALSE(form.changed(1));
        form.cmd_SaveChanges[1].press();
        EXPECT_FALSE(form.Visible());
        const int port = state.gCommDevice.at(1)->CommPort();
        EXPECT_EQ(form.picker.devices().standing(port), device);
        EXPECT_EQ(state.gCommDevice[0]->Settings(), state.gCommDevice[1]->Settings());
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(CommsSettingsTest, AChosenDeviceIsAssignedOrAskedAbout) {
    build({"3;9600,N,8,1;0", "4;9600,E,7,1;1"});
    ini_write_string("SERIAL DEVICES", "PORT 4", plugged[0].path, config.gIniFile);
    open(0);
    ComboBox& box = form.picker.cmb_Device;
    box.set_Text(" simulated:742 ");
    form.cmd_OK[0].press(); // and No
    EXPECT_EQ(dialogs.texts(), Texts{"Some data has changed for Full Protocol.  Save?"});
    open(0);
    EXPECT_EQ(form.picker.device(), "") << "an adapter that has a number is not proposed";
    box.set_Text(" simulated:742 ");
    form.txt_Port[0].set_Text("4"); // has a device of its own
    EXPECT_EQ(form.picker.device(), plugged[0].path);
    EXPECT_EQ(form.lbl_PortUse.Caption(), "Modbus uses this port too. Modbus has 9600,E,7,1, so "
                                          "each command closes the port of the other protocol.");
    form.txt_DataBits[0].set_Text("7");
    form.txt_Parity[0].set_Text("E");
    EXPECT_EQ(form.lbl_PortUse.Caption(), "Modbus uses this port too.");
    form.txt_Port[0].set_Text("14");
    EXPECT_EQ(form.picker.device(), "simulated:742") << "goes along";
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 14"), "simulated:742");
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 3"), "(none)");
    open(0);
    box.set_ListIndex(1); // the adapter: its own number, no second one
    EXPECT_EQ(form.txt_Port[0].Text(), "4");
    form.txt_Port[0].set_Text("14");
    box.set_Text(plugged[0].path);
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(device_key("0 COMM PORT "), "4");
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 14"), "simulated:742");
}

TEST_F(CommsSettingsTest, AnotherAdapterInTheOnesPlaceIsUsedWhenSomebodySaysSo) {
    build({"3;9600,N,8,1;0"});
    strange = "/dev/ttyUSB0";
    ini_write_string("SERIAL DEVICES", "PORT 3", strange, config.gIniFile);
    for (const MessageAnswer answer : {MessageAnswer::No, MessageAnswer::Yes}) {
        open(0);
        EXPECT_EQ(form.picker.lbl_DeviceState.Caption(),
                  "Port 3: /dev/ttyUSB0: another adapter has its name, used by Full");
        dialogs.answers = {answer};
        form.cmd_SaveChanges[0].press();
        EXPECT_EQ(dialogs.texts(), Texts{"/dev/ttyUSB0 is another adapter now than when it was "
                                         "opened: usb-Other-if00. Use this one from now on?"});
        dialogs.shown.clear();
        EXPECT_EQ(strange.empty(), answer == MessageAnswer::Yes);
    }
    open(0);
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(dialogs.texts(), Texts{});
}

/// Of a device that is typed: what is said, with a question mark where it may be kept.
TEST_F(CommsSettingsTest, SaysWhatSpeaksAgainstADevice) {
    states["/dev/null"] = DeviceState::NotSerial;
    states["/dev/ttyS9"] = DeviceState::NoHardware;
    states["/dev/no"] = DeviceState::NoPermission;
    const std::string cut(120, 'x'), keep = " Keep it all the same?";
    const std::pair<std::string, std::string> cases[] = {
        {"/dev/100% my tty", "/dev/100% my tty is not there." + keep},
        {"/dev/ttyS9", "/dev/ttyS9 has no hardware behind it." + keep},
        {"/dev/no", "You may not open /dev/no." + keep},
        {"/dev/null", "/dev/null is not a serial device."},
        {"ttyUSB0", "\"ttyUSB0\" is no path: type all of it, as in /dev/ttyUSB0."},
        {"tcp://host", "\"tcp://host\" names no port: write tcp://host:port."},
        {"telnet://host:23", "\"telnet://host:23\" is no port over the network: these begin with "
                             "tcp:// or rfc2217://."},
        {"simulated:900", "No simulated device is called \"simulated:900\"."},
        {"'/dev/x'", "The file cannot hold the device \"'/dev/x'\"."},
        {"/dev/a\nPORT 1=b", "The file cannot hold the device \"/dev/a\nPORT 1=b\"."},
        {cut + cut + cut, "The file cannot hold the device \"" + cut.substr(3) + "...\"."}};
    for (const auto& [device, sentence] : cases) {
        build({"3;9600,N,8,1;0"});
        open(0);
        form.picker.cmb_Device.set_Text(device);
        dialogs.shown.clear();
        const bool may_stay = sentence.ends_with(keep);
        if (may_stay) dialogs.answers = {MessageAnswer::Yes};
        const std::string before = read_file(config.gIniFile);
        form.cmd_SaveChanges[0].press();
        EXPECT_EQ(dialogs.texts(), Texts{sentence});
        EXPECT_EQ(form.Visible(), !may_stay);
        EXPECT_EQ(key("SERIAL DEVICES", "PORT 3"), may_stay ? device : "(none)");
        EXPECT_EQ(read_file(config.gIniFile) == before, !may_stay);
        form.Unload();
    }
    plugged = {adapter("Maker")}; // proposed, and pulled out before Save
    build({"3;9600,N,8,1;0"});
    open(0);
    states.clear();
    form.cmd_SaveChanges[0].press();
    EXPECT_EQ(dialogs.texts().back(), plugged[0].path + " is not there." + keep);
}

TEST_F(CommsSettingsTest, OffersPortsToTheChannelsThatHideASavedOne) {
    const std::string question = "Xon can be used only when the Full and Modbus protocols have a "
                                 "port too. Give them port 2?";
    plugged.clear();
    rebuild(); // no file
    open(2);
    EXPECT_EQ(form.chk_GivePorts.Caption(), "Xon can be used only when the Full and Modbus "
                                            "protocols have a port too. &Give them port 2?");
    form.chk_GivePorts.set_Value(0);
    save(2, "2;4800;e;7;2");
    EXPECT_EQ(state.gCommDevice.size(), 1U);
    open(2);
    EXPECT_EQ(shown(2), "2;4800;e;7;2;") << "from the file, though hidden";
    save(2, "2;4800;e;7;2");
    ASSERT_EQ(state.gCommDevice.size(), 3U);
    for (const SerialPort* device : state.gCommDevice) // or each would close the others'
        EXPECT_EQ(std::to_string(device->CommPort()) + device->Settings(), "24800,e,7,2");
    EXPECT_TRUE(dialogs.shown.empty());

    open(2); // without a gap, which somebody makes meanwhile
    write_file(config.gIniFile, "");
    dialogs.answers = {MessageAnswer::Yes};
    save(2, "5;4800;e;7;2");
    EXPECT_EQ(dialogs.texts(), Texts{question});
    EXPECT_EQ(device_key("1 COMM PORT ") + device_key("1 PORT SETTING "), "29600,N,8,1");
}

TEST_F(CommsSettingsTest, StaysOpenWhenTheFileCannotBeWritten) {
    using std::filesystem::perms;
    const auto allow = [this](perms what) { std::filesystem::permissions(dir.path(), what); };
    const std::string said = " could not be written to " + config.gIniFile + ".";
    build({"1;9600,N,8,1;0"});
    open(0);
    allow(perms::owner_read | perms::owner_exec);
    save(0, "3;4800;e;7;2");
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(shown(0), "3;4800;e;7;2;");
    EXPECT_TRUE(form.changed(0)) << "closing asks";
    // The settings are written, the channels before them are not.
    allow(perms::owner_all);
    open(2);
    dialogs.answers = {MessageAnswer::Yes};
    form.chk_GivePorts.set_Visible(false); // ask
    dialogs.on_message = [&](const std::string& text) {
        if (text.ends_with("?")) allow(perms::owner_read | perms::owner_exec);
    };
    save(2, "4;4800;e;7;2");
    const Texts texts = dialogs.texts();
    EXPECT_EQ((Texts{texts.front(), texts.back()}),
              (Texts{"The settings" + said, "The missing channels" + said}));
    EXPECT_EQ(texts.size(), 3U);
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(device_key("2 COMM PORT "), "4");
    EXPECT_FALSE(form.changed(2));
}

TEST_F(CommsSettingsTest, LockActsOnTheModbusFrameAlone) {
    for (const bool locked : {true, false}) {
        form.LockDataOptionmenu.choose();
        EXPECT_EQ(form.LockDataOptionmenu.Checked(), locked);
        for (TextBox* box : {&form.txt_Parity[1], &form.txt_DataBits[1], &form.txt_StopBits[1]})
            EXPECT_EQ(box->Enabled(), !locked);
        EXPECT_TRUE(form.txt_Parity[0].Enabled() && form.txt_Baud[1].Enabled());
    }
}

TEST_F(CommsSettingsTest, AFifthChannelIsReportedAndTheWindowWorksAllTheSame) {
    EXPECT_THROW(build(Texts(5, "1;9600,N,8,1;0")), RunTimeError);
    EXPECT_THROW(form.Show(), RunTimeError);
    EXPECT_TRUE(form.fram_Protocol[0].Visible());
    EXPECT_EQ(shown(0), "1;9600;N;8;1;");
    EXPECT_THROW(save(0, "3;9600;N;8;1"), RunTimeError);
    EXPECT_EQ(device_key("0 COMM PORT "), "3");
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(holds.back(), '-');
    EXPECT_TRUE(dialogs.shown.empty());
}

} // namespace pelvan::testing
