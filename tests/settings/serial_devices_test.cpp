#include "settings_rig.h"

namespace pelvan {
namespace {

class SerialDevicesTest : public ::testing::Test {
  protected:
    SerialDevicesTest() {
        rig.build({"3;9600,N,8,1;0"});
        form.Show();
    }
    std::string line(int port) { return form.lst_Ports.List(port - 1); }
    void assign(int port, const std::string& beginning) {
        form.lst_Ports.set_ListIndex(port - 1);
        const auto& items = form.picker.cmb_Device.items();
        for (std::size_t i = 0; i < items.size(); ++i)
            if (items[i].starts_with(beginning))
                form.picker.cmb_Device.set_ListIndex(static_cast<int>(i));
        form.picker.cmd_AssignDevice.press();
    }
    std::string assigned(int port) {
        return rig.key("SERIAL DEVICES", "PORT " + std::to_string(port));
    }

    testing::SettingsRig rig;
    frm_SerialDevices form{rig.services, rig.config, rig.table, rig.list_devices};
};

TEST_F(SerialDevicesTest, AssignsDevicesToAnyNumberAndClosesTheOpenPorts) {
    std::int16_t channel = 0;
    static_cast<void>(rig.table.open_port(channel));
    EXPECT_EQ(form.lst_Ports.ListCount(), 16);
    assign(16, "/dev/serial/by-id/usb-Maker_Adapter-if00 (/dev/ttyUSB7), Maker Adapter");
    EXPECT_EQ(assigned(16), "/dev/serial/by-id/usb-Maker_Adapter-if00");
    EXPECT_EQ(line(16), "PORT 16  /dev/serial/by-id/usb-Maker_Adapter-if00: not there");
    EXPECT_EQ(form.lst_Ports.ListIndex(), 15) << "the selection stays";
    EXPECT_EQ(rig.closings, std::vector<std::string>{"port 3"});
    for (const std::string device : {"simulated:742", "simulated:730", "simulated:loopback"}) {
        assign(1, device);
        EXPECT_EQ(assigned(1), device);
        EXPECT_EQ(line(1), "PORT 1   " + device + ": simulated, may be opened");
    }
    assign(16, "(no assignment)");
    EXPECT_EQ(assigned(16), "");
    EXPECT_EQ(line(16), "PORT 16  no device");
}

TEST_F(SerialDevicesTest, AHandWrittenDeviceStaysInTheList) {
    const std::pair<std::string, std::string> cases[] = {
        {"/nowhere", "not there"},
        {"/dev/null", "not a serial device"},
        {"simulated:742,address=5", "simulated, may be opened"},
        {"simulated:900", "not understood"}};
    for (const auto& [device, meaning] : cases) {
        ini_write_string("SERIAL DEVICES", "PORT 4", device, rig.config.gIniFile);
        form.picker.cmd_RefreshDevices.press();
        form.lst_Ports.set_ListIndex(3);
        EXPECT_EQ(form.picker.cmb_Device.Text(), device);
        EXPECT_EQ(line(4), "PORT 4   " + device + ": " + meaning);
        form.lst_Ports.set_ListIndex(0);
    }
}

TEST_F(SerialDevicesTest, SaysThatAnAssignmentCouldNotBeWritten) {
    rig.config.gIniFile = rig.dir.file("no/such/directory.ini");
    assign(2, "simulated:742");
    ASSERT_EQ(rig.dialogs.shown.size(), 1U);
    EXPECT_EQ(form.picker.lbl_DeviceState.Caption(), "Port 2: no device");
}

} // namespace
} // namespace pelvan
