// The serial link on fakes: scripted ports on a fake tick, scripted dialogs, a configuration file
// and an error log in a directory of their own.
#pragma once

#include <string>
#include <vector>

#include "serial/link.h"
#include "support/fake_dialogs.h"
#include "support/fake_serial_port.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

class SerialRig {
  public:
    SerialRig() { config.gIniFile = dir.file("pelvan7.ini"); }

    /// Writes the channels' keys, one "port;settings;mode" a channel, and builds the table.
    void build(const std::vector<std::string>& channels) {
        std::string text = "[COMMS CONTROLS]\r\n";
        for (std::size_t n = 0; n < channels.size(); ++n) {
            const auto first = channels[n].find(';');
            const auto second = channels[n].find(';', first + 1);
            const std::string device = "DEVICE " + std::to_string(n);
            text += device + " COMM PORT =" + channels[n].substr(0, first) + "\r\n";
            text += device + " PORT SETTING =" + channels[n].substr(first + 1, second - first - 1) +
                    "\r\n";
            text += device + " RTS Mode =" + channels[n].substr(second + 1) + "\r\n";
        }
        write_file(config.gIniFile, text);
        rebuild();
    }
    void rebuild() {
        ports.clear();
        table.init_comms();
    }
    [[nodiscard]] std::string log_text() const { return read_file(dir.file("errors")); }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    ConfigState config;
    SerialState state;
    std::vector<FakeSerialPort*> ports; // of the current table, by element
    std::vector<std::string> closings;
    frm_Comms comms{[this] {
        auto port = std::make_unique<FakeSerialPort>(tick);
        port->on_destroy = [this](FakeSerialPort& gone) {
            if (gone.PortOpen()) closings.push_back("port " + std::to_string(gone.CommPort()));
        };
        return port;
    }};
    Subscription elements = comms.element_changed.subscribe([this](SerialPort* port) {
        if (port) ports.push_back(static_cast<FakeSerialPort*>(port));
    });
    ErrorLog log{clock, dir.file("errors")};
    ChannelTable table{state, config, comms, dialogs, log};
    CountdownPool countdowns{state, tick};
    Link link{table, countdowns, dialogs, log};
};

} // namespace pelvan::testing
