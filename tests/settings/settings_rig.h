// The windows of the port settings on scripted ports, fake dialogs and a list of devices of the
// test's own.
#pragma once

#include <gtest/gtest.h>

#include "settings/comms_settings_form.h"
#include "settings/serial_devices_form.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct SettingsTest : ::testing::Test, SerialRig {
    [[nodiscard]] std::string key(const std::string& section, const std::string& name) const {
        return ini_read_string(section, name, "(none)", config.gIniFile);
    }
    PortDevices::DeviceList list_devices{[] {
        return std::vector<SerialDevice>{
            {"/dev/serial/by-id/usb-Maker_Adapter-if00", "/dev/ttyUSB7", "Maker Adapter"}};
    }};
};

} // namespace pelvan::testing
