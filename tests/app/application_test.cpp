#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "app/application.h"
#include "support/configuration.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class ApplicationTest : public ::testing::Test {
  protected:
    /// The response to a Modbus command.
    const std::string& send(std::size_t type, const std::string& start, const std::string& values) {
        app.console.modbus.set_entry({type, "1", start, values, false});
        app.console.cmd_SendCommand.press();
        const ListBox& responses = app.history.frmResponse.list;
        return responses.List(responses.ListCount() - 1);
    }

    testing::TempDir dir;
    const std::string ini = dir.file("pelvan7.ini");
    testing::FakeTick tick;
    testing::FakeClock clock;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    Application app{{tick, clock, dialogs, desktop, dir.path()}, open_serial_device};
};

TEST_F(ApplicationTest, StartsWithoutAConfigurationFile) {
    app.frame.Load();
    EXPECT_EQ(desktop.help_file, "Pelvan7.hlp");
    EXPECT_EQ(app.console.text.txt_CommsCommand.Text(), "? C1");
    EXPECT_EQ(app.console.opt_Protocol.Value(), 1);
    EXPECT_EQ(app.session.serial.gCommDevice.at(0)->CommPort(), 2);
    EXPECT_EQ(testing::read_file(ini), "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=1\r\n");
    EXPECT_TRUE(dialogs.shown.empty());
}

/// Port Settings, a device, Save, Send; the first reply and no box.
TEST_F(ApplicationTest, ReachesAFirstReplyInFourActions) {
    app.frame.Load();
    app.console.modbus.opt_DataFormat.set_Value(2);
    app.frame.mnuPortSettings.choose();
    app.comms_settings.picker.cmb_Device.set_Text("simulated:742");
    app.comms_settings.cmd_SaveChanges[1].press();
    EXPECT_FALSE(app.comms_settings.Visible());
    EXPECT_EQ(send(2, "0", "1"), "742");
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ApplicationTest, ArrangesTheThreeWindowsByTheScreen) {
    desktop.screen = {1000, 800};
    app.frame.Load();
    EXPECT_EQ(app.console.Position(), (TwipRect{0, 0, 14550, 2750}));
    EXPECT_EQ(app.history.frmCommand.Position(), (TwipRect{0, 2750, 3150, 8280}));
    EXPECT_EQ(app.history.frmResponse.Position(), (TwipRect{3150, 2750, 11400, 8280}));
    EXPECT_EQ(app.history.frmResponse.hscrl_List.Max(), -20000);
    app.history.frmCommand.Unload();
    app.console.Move({5, 5, 5, 5});
    app.frame.mnuArrange.choose();
    EXPECT_TRUE(app.history.frmCommand.Visible());
    EXPECT_EQ(app.console.Position().height, 2750);
}

TEST_F(ApplicationTest, HostileConfigurationFilesStillStart) {
    std::string binary;
    for (int i = 0; i < 3000; ++i)
        binary += static_cast<char>(i * 37 % 256);
    testing::configure_devices(dir, Texts(5));
    const std::string section = "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=";
    const std::tuple<std::string, std::size_t, std::size_t> cases[] = {
        {testing::read_file(ini), 1, 4}, // five channels
        {section + "9\r\n", 1, 1},       {section + "-1\r\n", 1, 1}, {binary, 0, 1}, {"", 0, 1},
    };
    for (const auto& [text, messages, channels] : cases) {
        testing::write_file(ini, text);
        dialogs.shown.clear();
        Application fresh({tick, clock, dialogs, desktop, dir.path()}, open_serial_device);
        fresh.frame.Load();
        EXPECT_EQ(dialogs.texts(), Texts(messages, "SUBSCRIPT OUT OF RANGE ERROR")) << text;
        EXPECT_EQ(fresh.console.opt_Protocol.Value(), 1);
        EXPECT_EQ(fresh.session.serial.gCommDevice.size(), channels);
    }
}

TEST_F(ApplicationTest, ReadsASimulatedControllerThatOutlivesTheRebuildingOfTheChannels) {
    testing::configure_devices(dir, {"", "simulated:742"});
    app.frame.Load();
    app.console.modbus.opt_DataFormat.set_Value(2);
    EXPECT_EQ(send(2, "0", "1"), "742");
    send(5, "300", "-15");
    app.console.opt_Protocol.set_Value(0);
    app.console.opt_Protocol.set_Value(1);
    EXPECT_EQ(send(2, "300", "1"), "-15");
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ApplicationTest, AMissingDeviceIsSaidAndTheProgramGoesOn) {
    testing::configure_devices(dir, {"", dir.file("unplugged")});
    app.frame.Load();
    EXPECT_EQ(send(2, "0", "1"), "Not sent: the port is not open.");
    EXPECT_EQ(dialogs.texts().at(0), "INVALID PORT NUMBER");
}

TEST_F(ApplicationTest, TheStatusBarTellsTheChosenProtocolsLineAndWhatIsMissing) {
    const LinePanel& panel = app.frame.line;
    app.frame.Load();
    EXPECT_EQ(panel.cmd_Line.Caption(), "No port for Modbus: F9 sets it up");
    panel.cmd_Line.Click();
    EXPECT_TRUE(app.comms_settings.Visible());
    testing::configure_devices(dir, {"simulated:none", "simulated:742"});
    for (const auto& [number, state] :
         {std::pair{0, "Full | Port 1 | simulated:none | 9600,N,8,1 | not understood"},
          {1, "Modbus | Port 2 | simulated:742 | 9600,N,8,1 | closed"}}) {
        app.console.opt_Protocol.set_Value(number);
        panel.tmr_Line.Tick();
        EXPECT_EQ(panel.cmd_Line.Caption(), state);
        EXPECT_EQ(panel.trouble(), number == 0);
    }
    send(2, "0", "1");
    const auto user = [&] { // of the port that is open now
        panel.tmr_Line.Tick();
        const std::string& text = panel.cmd_Line.Caption();
        return text.substr(text.find("open") + 4);
    };
    EXPECT_EQ(user(), "");
    app.data_logger.start();
    EXPECT_EQ(user(), " | in use by Data Logging");
    LineClaim claim = app.transfer_link.claim();
    EXPECT_EQ(user(), " | in use by Save/Restore Setup");
    claim.release();
    app.data_logger.stop();
    app.listen_monitor.ListenStart(1);
    EXPECT_EQ(user(), " | in use by Listening Mode");
    EXPECT_FALSE(panel.lbl_BadChecksum.Visible());
    app.console.mnuGenbadCS.choose();
    EXPECT_TRUE(panel.lbl_BadChecksum.Visible());
}

TEST_F(ApplicationTest, AnErrorThatNobodyTrapsEndsItsHandlerWithAMessage) {
    const std::pair<std::function<void()>, std::string> cases[] = {
        {[] { throw RunTimeError(error_number::kSubscript); }, "SUBSCRIPT OUT OF RANGE ERROR"},
        {[] { throw std::bad_alloc(); }, "OUT OF MEMORY ERROR"},
        {[] { static_cast<void>(std::vector<int>().at(1)); }, "INTERNAL ERROR"}};
    for (const auto& [handler, message] : cases) {
        dialogs.shown.clear();
        EXPECT_FALSE(app.events.run(handler));
        EXPECT_EQ(dialogs.texts(), Texts{message});
    }
    EXPECT_TRUE(app.events.run([] {}));
}

TEST_F(ApplicationTest, WhileAScriptIsSentTheOtherToolsAreOutOfReach) {
    app.frame.Load();
    testing::write_file(dir.file("script.txt"), "? C1\r\n");
    dialogs.files.push_back(dir.file("script.txt"));
    desktop.on_turn = [&] {
        for (MenuEntry* entry :
             {&app.frame.mnuListen, &app.frame.mnuTransfer, &app.frame.mnuDataLogging,
              &app.frame.mnuPortSettings, &app.frame.mnuSerialDevices})
            EXPECT_FALSE(entry->Enabled()) << entry->Name();
    };
    app.console.mnuSendSetupFile.choose();
    EXPECT_GT(desktop.turns, 0);
    EXPECT_TRUE(app.frame.mnuPortSettings.Enabled());
    {
        const LineClaim claim = app.transfer_link.claim();
        EXPECT_EQ(app.frame.mnuDataLogging.ToolTipText(),
                  "The line is in use by Save/Restore Setup.");
        EXPECT_TRUE(app.frame.mnuTransfer.Enabled()) << "its window can still be reached";
        EXPECT_FALSE(app.console.cmd_SendCommand.Enabled());
    }
    EXPECT_TRUE(app.console.cmd_SendCommand.Enabled());
}

TEST_F(ApplicationTest, ClosingTheFrameWritesTheLogAndAsksDuringATransfer) {
    testing::configure_devices(dir, {"", "simulated:742"});
    bool ended = false;
    const Subscription closing = app.console.closed.subscribe([&] { ended = true; });
    app.frame.Load();
    app.logging.Show();
    testing::write_file(dir.file("set.PV5"),
                        "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOG TO FILE=TRUE\r\n"
                        "LOGGING INTERVAL=2\r\nLOGGING FILENAME=" +
                            dir.file("log") +
                            "\r\n1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n"
                            "1DEVICEREGISTER=0\r\n");
    app.data_logger.ReadLogSet(dir.file("set.PV5"));
    app.logging.mnuStartLogging.choose();
    EXPECT_EQ(testing::read_file(dir.file("log")), "");

    std::filesystem::create_directory(dir.file("Download Sequences"));
    testing::write_file(dir.file("Download Sequences/742.cds"), "NO\n-\n-\n-\n0\n1\n2\n3\n");
    dialogs.files.push_back(dir.file("setup.txt"));
    dialogs.answers = {MessageAnswer::No, MessageAnswer::Yes, MessageAnswer::Yes};
    desktop.on_turn = [&, turn = 0]() mutable {
        if (++turn > 2) return;
        EXPECT_FALSE(app.frame.Unload());
        EXPECT_FALSE(ended);
    };
    app.transfer.Show();
    app.transfer.cmdDownload.press();
    EXPECT_TRUE(ended);
    EXPECT_TRUE(app.transfer.canceled());
    EXPECT_NE(testing::read_file(dir.file("log")).find("742"), std::string::npos);
}

/// A controller that was found on the only channel's port, by another protocol than that one's.
TEST_F(ApplicationTest, PutsFoundSettingsIntoTheirChannel) {
    testing::configure_devices(dir, {"simulated:742,line=38400/N/8/1,echo=1"});
    app.frame.Load();
    app.frame.mnuBusScan.choose();
    frm_BusScan& scan = app.scan;
    for (const int other : {0, 1, 3})
        scan.chk_Protocol[static_cast<std::size_t>(other)].set_Value(0);
    scan.chk_StopAtFirst.set_Value(1);
    EXPECT_EQ(app.console.mnuDiagnostics.children.at(1), &app.frame.mnuBusScan);
    desktop.on_turn = [&] { EXPECT_FALSE(app.frame.mnuPortSettings.Enabled()); };
    scan.cmd_Start.press();
    desktop.on_turn = nullptr;
    EXPECT_EQ(scan.lst_Found.ListCount(), 1) << scan.lbl_Status.Caption();
    dialogs.answers = {MessageAnswer::No, MessageAnswer::Yes}; // Modbus, before Xon, gets a port
    scan.cmd_Use.press();
    EXPECT_TRUE(scan.lbl_Status.Caption().starts_with("Saved, but Xon cannot be used before"));
    scan.cmd_Use.press();
    const std::string done = "Xon uses port 1 with 38400,N,8,1 now. The echo of the line is taken "
                             "out. Replies come cut at this rate unless they end with their frame: "
                             "see Port Settings. Full ";
    EXPECT_EQ(scan.lbl_Status.Caption().substr(0, done.size()), done);
    ASSERT_EQ(app.session.serial.gCommDevice.size(), 3U);
    EXPECT_EQ(app.session.serial.gCommDevice[2]->Settings(), "38400,N,8,1");
    const std::string text = testing::read_file(ini);
    for (const char* key : {"PORT SETTING=38400,N,8,1", "RTS Mode=3", "ECHO=YES"})
        EXPECT_NE(text.find(std::string("DEVICE 2 ") + key), std::string::npos) << text;
}

TEST_F(ApplicationTest, AsksTheFoundControllerFromTheConsole) {
    testing::configure_devices(dir, {"", "", "", "simulated:742,address=3"});
    app.frame.Load();
    TelluraPanel& tellura = app.console.tellura;
    tellura.TxtParameterAddress.set_Text("0001");
    tellura.OptErrorChecking.set_Value(1);
    app.console.opt_Protocol.set_Value(3);
    app.frame.mnuBusScan.choose();
    for (const std::size_t other : {0U, 1U, 2U})
        app.scan.chk_Protocol[other].set_Value(0);
    app.scan.chk_StopAtFirst.set_Value(1);
    app.scan.cmd_Start.press();
    app.scan.cmd_Use.press();
    EXPECT_TRUE(app.scan.lbl_Status.Caption().ends_with(" The Command Center asks address 3."))
        << app.scan.lbl_Status.Caption();
    EXPECT_EQ(tellura.TxtTelluraAddress.Text(), "3");
    EXPECT_EQ(tellura.TxtParameterAddress.Text(), "0001");
    EXPECT_EQ(tellura.OptErrorChecking.Value(), 0);
}

TEST_F(ApplicationTest, ClosingTheFrameEndsAScanFirst) {
    testing::configure_devices(dir, {"", "simulated:742"});
    app.frame.Load();
    app.scan.Show();
    bool ended = false;
    const Subscription closing = app.console.closed.subscribe([&] { ended = true; });
    desktop.on_turn = [&, turn = 0]() mutable {
        if (++turn != 20) return;
        EXPECT_FALSE(app.frame.Unload());
        EXPECT_FALSE(ended);
    };
    app.scan.cmd_Start.press();
    EXPECT_TRUE(ended);
    EXPECT_TRUE(app.channels.line_use().holder().empty());
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ApplicationTest, ClosingTheFrameEndsBadRequestsFirst) {
    testing::configure_devices(dir, {"", "simulated:742"});
    bool ended = false;
    const Subscription closing = app.console.closed.subscribe([&] { ended = true; });
    app.frame.Load();
    app.history.frmResponse.mnuDiagnostics.children.back()->choose();
    EXPECT_TRUE(app.bad_requests.Visible());
    dialogs.answers = {MessageAnswer::Yes};
    desktop.on_turn = [&] {
        if (!app.bad_requests.running() || app.bad_requests.lst_Lines.ListCount() < 2) return;
        EXPECT_FALSE(app.console.cmd_SendCommand.Enabled());
        EXPECT_FALSE(app.frame.Unload());
        EXPECT_FALSE(ended);
    };
    app.bad_requests.cmdStart.press();
    EXPECT_TRUE(ended);
}

void collect_shortcuts(const std::vector<MenuEntry*>& entries, std::multiset<std::string>& keys) {
    for (const MenuEntry* entry : entries) {
        if (!entry) continue; // a line between entries
        if (!entry->shortcut().empty()) keys.insert(entry->shortcut());
        collect_shortcuts(entry->children, keys);
    }
}

/// A key that two entries have does nothing.
TEST_F(ApplicationTest, NoKeyBelongsToTwoEntriesOfAWindowAndItsFrame) {
    for (Form* form : std::initializer_list<Form*>{
             &app.console, &app.history.frmCommand, &app.history.frmResponse, &app.listen,
             &app.transfer, &app.logging, &app.profile_logic, &app.scan, &app.bad_requests,
             &app.comms_settings}) {
        std::multiset<std::string> keys;
        collect_shortcuts(app.frame.menus, keys);
        collect_shortcuts(form->menus, keys);
        EXPECT_GT(keys.size(), 5U);
        for (const std::string& key : keys)
            EXPECT_EQ(keys.count(key), 1U) << form->Name() << ": " << key;
    }
}

} // namespace
} // namespace pelvan
