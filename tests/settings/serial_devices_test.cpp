#include <algorithm>

#include "settings_rig.h"
#include "support/cases.h"

namespace pelvan::testing {

struct SerialDevicesTest : SettingsTest {
    SerialDevicesTest() {
        build({"3;9600,N,8,1;0"});
        form.Show();
    }
    /// Chooses a device for a port by the beginning of its line.
    void choose(int port, const std::string& beginning) {
        form.lst_Ports.set_ListIndex(port - 1);
        const auto& items = form.picker.cmb_Device.items();
        const auto chosen = std::ranges::find_if(
            items, [&](const std::string& item) { return item.starts_with(beginning); });
        form.picker.cmb_Device.set_ListIndex(static_cast<int>(chosen - items.begin()));
    }
    void assign(int port, const std::string& beginning) {
        choose(port, beginning);
        form.picker.cmd_AssignDevice.press();
    }
    /// What the file says of a port, and its line.
    std::string shown(int port) {
        return key("SERIAL DEVICES", "PORT " + std::to_string(port)) + ", " +
               form.lst_Ports.List(port - 1);
    }

    frm_SerialDevices form{services, config, table, lookup};
};

TEST_F(SerialDevicesTest, AssignsDevicesToAnyNumberAndClosesTheOpenPorts) {
    open_port(0);
    EXPECT_EQ(form.lst_Ports.ListCount(), 16);
    const std::string device = plugged[0].path;
    assign(16, device + " (/dev/ttyUSB7), Maker");
    EXPECT_EQ(shown(16), device + ", PORT 16  " + device + ": may be opened");
    EXPECT_TRUE(form.lst_Ports.List(2).ends_with("no device, used by Full"));
    EXPECT_EQ(form.lst_Ports.ListIndex(), 15) << "the selection stays";
    EXPECT_EQ(closings, std::vector<std::string>{"port 3"});
    for (const std::string simulated : {"simulated:742", "simulated:730", "simulated:loopback"}) {
        assign(1, simulated);
        EXPECT_EQ(shown(1), simulated + ", PORT 1   " + simulated + ": simulated, may be opened");
    }
    assign(16, "(no assignment)");
    EXPECT_EQ(shown(16), ", PORT 16  no device");
    EXPECT_TRUE(dialogs.shown.empty());
    config.gIniFile = dir.file("no/such/directory.ini");
    assign(2, "simulated:742");
    EXPECT_EQ(dialogs.shown.size(), 1U) << "it could not be written";
    EXPECT_TRUE(form.picker.lbl_DeviceState.Caption().starts_with("Port 2: no device"));
    EXPECT_TRUE(form.picker.pending());
}

TEST_F(SerialDevicesTest, AHandWrittenDeviceStaysInTheList) {
    states["/dev/null"] = DeviceState::NotSerial;
    for (const auto& [device, meaning] :
         cases("/nowhere->not there|/dev/null->not a serial device|"
               "simulated:742,address=5->simulated, may be opened|simulated:900->not understood")) {
        ini_write_string("SERIAL DEVICES", "PORT 4", device, config.gIniFile);
        form.picker.cmd_RefreshDevices.press();
        form.lst_Ports.set_ListIndex(3);
        EXPECT_EQ(form.picker.cmb_Device.Text(), device);
        EXPECT_EQ(shown(4), device + ", PORT 4   " + device + ": " + meaning);
        form.lst_Ports.set_ListIndex(0);
    }
}

TEST_F(SerialDevicesTest, ClosingDropsNoDeviceThatWasChosen) {
    choose(5, "simulated:742");
    choose(6, plugged[0].path);
    choose(7, "simulated:730");
    choose(7, "(no assignment)"); // as it was
    form.Unload();
    EXPECT_EQ(dialogs.texts().back(), "Chosen, but not assigned yet:\nPort 5: simulated:742\n"
                                      "Port 6: " +
                                          plugged[0].path + "\nAssign it?");
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 5"), "(none)") << "No";

    form.Show();
    choose(5, "simulated:742");
    choose(6, plugged[0].path);
    {
        const LineUser transfer{"Save/Restore Setup"};
        const LineClaim claim = table.line_use().claim(transfer);
        form.cmd_Close.press();
        EXPECT_EQ(dialogs.texts().back(), "The line is in use by Save/Restore Setup.");
    }
    states.clear(); // pulled out
    form.cmd_Close.press();
    EXPECT_EQ(dialogs.texts().back(), plugged[0].path + " is not there. Keep it all the same?");
    EXPECT_TRUE(form.Visible());
    EXPECT_EQ(form.lst_Ports.ListIndex(), 5) << "the one that is left";
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 5"), "simulated:742");
    dialogs.answers = {MessageAnswer::Yes};
    form.cmd_Close.press();
    EXPECT_FALSE(form.Visible());
    EXPECT_EQ(key("SERIAL DEVICES", "PORT 6"), plugged[0].path);
}

} // namespace pelvan::testing
