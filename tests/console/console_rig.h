// The console on simulated controllers and a fake tick, without the rest of the program.
#pragma once

#include <vector>

#include "config/device_map.h"
#include "console/console_form.h"
#include "platform/line_port.h"
#include "simulator/line/simulator_registry.h"
#include "support/configuration.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"

namespace pelvan::testing {

struct ConsoleRig {
    /// `devices` stand behind channels 0, 1 ... at 9600.
    ConsoleRig(const std::vector<std::string>& devices, int protocol_number) {
        configure_devices(dir, devices,
                          "DEFAULT PROTOCOL=" + std::to_string(protocol_number) + "\r\n");
        console.Load();
    }

    /// "command > reply" of every pair in the history.
    [[nodiscard]] std::vector<std::string> pairs() const {
        std::vector<std::string> out;
        for (int i = 0; i < history.frmCommand.list.ListCount(); ++i)
            out.push_back(history.frmCommand.list.List(i) + " > " +
                          history.frmResponse.list.List(i));
        return out;
    }
    /// Presses Send; the newest pair.
    std::string send() {
        console.cmd_SendCommand.press();
        return pairs().back();
    }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    FakeDesktop desktop;
    Services services{tick, clock, dialogs, desktop, dir.path()};
    ConfigState config;
    SerialState serial;
    ModbusState modbus_state;
    simulator::SimulatorRegistry simulators{tick};
    ErrorLog log{clock, dir.file("errors")};
    frm_Comms comms{[this] {
        return std::make_unique<LinePort>(
            [this](int port) { return device_for_port(port, config.gIniFile); },
            [this](const std::string& device, const LineSettings& settings) {
                return simulators.open(device, settings);
            });
    }};
    ChannelTable table{serial, config, comms, dialogs, log};
    CountdownPool countdowns{serial, tick};
    Link link{table, countdowns, dialogs, log, "Command Center"};
    Modbus modbus{modbus_state};
    History history{services};
    Senders senders{link, modbus, clock, dialogs};
    frm_Pelvan5VB console{services, config, table, link, senders, history};
    Subscription jumper =
        console.simulated_jumper_moved.subscribe([this](bool in) { simulators.set_jumper(in); });
};

} // namespace pelvan::testing
