// The windows of the port settings on scripted ports, fake dialogs and a machine with devices of
// the test's own.
#pragma once

#include <gtest/gtest.h>

#include <map>

#include "settings/comms_settings_form.h"
#include "settings/serial_devices_form.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct SettingsTest : ::testing::Test, SerialRig {
    SettingsTest() {
        lookup.stranger = [this](const std::string& device) {
            return !strange.empty() && device == strange ? "usb-Other-if00" : "";
        };
        lookup.adopt = [this](const std::string&) { strange.clear(); };
    }
    [[nodiscard]] std::string key(const std::string& section, const std::string& name) const {
        return ini_read_string(section, name, "(none)", config.gIniFile);
    }
    /// What an adapter is plugged in as.
    static SerialDevice adapter(const std::string& name) {
        return {"/dev/serial/by-id/usb-" + name + "-if00", "/dev/ttyUSB7", name};
    }

    std::vector<SerialDevice> plugged{adapter("Maker")};
    std::map<std::string, DeviceState> states{{plugged[0].path, DeviceState::Openable}};
    std::string built_in; // behind number 1
    std::string strange;  // a device whose name another adapter has taken
    DeviceLookup lookup{[this] { return plugged; },
                        [this](const std::string& path) {
                            const auto found = states.find(path);
                            return found == states.end() ? DeviceState::Missing : found->second;
                        },
                        [this](int number) {
                            const bool has = number == 1 && !built_in.empty();
                            return has ? std::optional(built_in) : std::nullopt;
                        }};
};

} // namespace pelvan::testing
