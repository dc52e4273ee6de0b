#include <gtest/gtest.h>

#include <filesystem>

#include "app/application.h"
#include "config/ini.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class ApplicationTest : public ::testing::Test {
  protected:
    void write_ini(const std::string& text) { testing::write_file(dir.file("pelvan7.ini"), text); }
    [[nodiscard]] std::string ini() const { return testing::read_file(dir.file("pelvan7.ini")); }
    static std::string channel(int n, const std::string& port) {
        const std::string device = "DEVICE " + std::to_string(n);
        return device + " COMM PORT =" + port + "\r\n" + device + " PORT SETTING =9600,N,8,1\r\n";
    }

    testing::TempDir dir;
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
    ASSERT_EQ(app.session.serial.gCommDevice.size(), 1U);
    EXPECT_EQ(app.session.serial.gCommDevice[0]->CommPort(), 2);
    EXPECT_EQ(ini(), "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=1\r\n");
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
    std::string five = "[COMMS CONTROLS]\r\n";
    for (int n = 0; n < 5; ++n)
        five += channel(n, "3");
    struct Case {
        std::string text;
        Texts messages;
        int protocol;
    };
    const std::vector<Case> cases{
        {"", {}, 1},
        {binary, {}, 1},
        {"[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=9\r\n", {"SUBSCRIPT OUT OF RANGE ERROR"}, 1},
        {"[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=-1\r\n", {"SUBSCRIPT OUT OF RANGE ERROR"}, 1},
        {five, {"SUBSCRIPT OUT OF RANGE ERROR"}, 1},
    };
    for (const Case& each : cases) {
        write_ini(each.text);
        testing::FakeDialogs own;
        Application fresh({tick, clock, own, desktop, dir.path()}, open_serial_device);
        fresh.frame.Load();
        EXPECT_EQ(own.texts(), each.messages) << each.text;
        EXPECT_EQ(fresh.console.opt_Protocol.Value(), each.protocol);
        EXPECT_GE(fresh.session.serial.gCommDevice.size(), 1U);
        EXPECT_LE(fresh.session.serial.gCommDevice.size(), 4U);
    }
}

TEST_F(ApplicationTest, ReadsASimulatedControllerEndToEnd) {
    write_ini("[COMMS CONTROLS]\r\n" + channel(0, "1") + channel(1, "2") +
              "[SERIAL DEVICES]\r\nPORT 2=simulated:742\r\n");
    app.frame.Load();
    app.console.opt_DataFormat.set_Value(2);
    app.console.modbus.set_entry({2, "1", "0", "1", false});
    app.console.cmd_SendCommand.press();
    EXPECT_EQ(app.history.frmResponse.list.List(0), "742");
    // The controller outlives the rebuilding of the channels.
    app.console.modbus.set_entry({5, "1", "300", "-15", false});
    app.console.cmd_SendCommand.press();
    app.console.opt_Protocol.set_Value(0);
    app.console.opt_Protocol.set_Value(1);
    app.console.modbus.set_entry({2, "1", "300", "1", false});
    app.console.cmd_SendCommand.press();
    EXPECT_EQ(app.history.frmResponse.list.List(2), "-15");
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(ApplicationTest, ClosingTheFrameWritesTheLogAndAsksDuringATransfer) {
    write_ini("[COMMS CONTROLS]\r\n" + channel(0, "1") + channel(1, "2") +
              "[SERIAL DEVICES]\r\nPORT 2=simulated:742\r\n");
    bool ended = false;
    app.console.end_program = [&] { ended = true; };
    app.frame.Load();
    app.logging.Show();
    testing::write_file(dir.file("set.PV5"),
                        "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOG TO FILE=TRUE\r\n"
                        "LOGGING INTERVAL=2\r\nLOGGING FILENAME=" +
                            dir.file("log") + "\r\n1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n");
    app.logging.ReadLogSet(dir.file("set.PV5"));
    app.logging.mnuStartLogging.choose();
    EXPECT_EQ(testing::read_file(dir.file("log")), "");

    std::filesystem::create_directory(dir.file("Download Sequences"));
    testing::write_file(dir.file("Download Sequences/742.cds"), "NO\n-\n-\n-\n0\n1\n2\n3\n");
    dialogs.files.push_back(dir.file("setup.txt"));
    dialogs.answers = {MessageAnswer::No, MessageAnswer::Yes};
    desktop.on_turn = [&, turn = 0]() mutable {
        if (++turn > 2) return;
        EXPECT_EQ(app.frame.Unload(), turn == 2);
        EXPECT_EQ(ended, turn == 2);
    };
    app.transfer.Show();
    app.transfer.cmdDownload.press();
    EXPECT_TRUE(ended);
    EXPECT_FALSE(app.transfer.run().completed);
    EXPECT_NE(testing::read_file(dir.file("log")).find("742"), std::string::npos);
}

TEST_F(ApplicationTest, AMissingDeviceIsSaidAndTheProgramGoesOn) {
    write_ini("[COMMS CONTROLS]\r\n" + channel(0, "1") + channel(1, "2") +
              "[SERIAL DEVICES]\r\nPORT 2=" + dir.file("unplugged") + "\r\n");
    app.frame.Load();
    app.console.cmd_SendCommand.press();
    ASSERT_FALSE(dialogs.shown.empty());
    EXPECT_EQ(dialogs.shown[0].text, "INVALID PORT NUMBER");
    EXPECT_EQ(app.history.frmResponse.list.List(0),
              "No response from the controller at address 1.");
}

} // namespace
} // namespace pelvan
