// The serial link on fakes: scripted ports on a fake tick, scripted dialogs, a configuration file
// and an error log in a directory of their own.
#pragma once

#include <string>
#include <vector>

#include "platform/message_router.h"
#include "platform/services.h"
#include "serial/link.h"
#include "support/fake_dialogs.h"
#include "support/fake_serial_port.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"
#include "text/strings.h"

namespace pelvan::testing {

class SerialRig {
  public:
    SerialRig() { config.gIniFile = dir.file("pelvan7.ini"); }

    /// Writes the channels' keys, one "port;settings;mode" a channel, and builds the table.
    void build(const std::vector<std::string>& channels) {
        std::string text = "[COMMS CONTROLS]\r\n";
        for (std::size_t n = 0; n < channels.size(); ++n) {
            const auto values = split(channels[n], ';');
            const std::string device = "DEVICE " + std::to_string(n);
            text += device + " COMM PORT =" + values[0] + "\r\n" + device +
                    " PORT SETTING =" + values[1] + "\r\n" + device + " RTS Mode =" + values[2] +
                    "\r\n";
        }
        write_file(config.gIniFile, text);
        rebuild();
    }
    /// Rebuilds the channels of the file with this way of exchanging: "QUIET", "COMPLETE".
    void exchange_by(const std::string& way) { set_channels(ini_key::exchange, way); }
    /// Gives a key of each channel a value and rebuilds them.
    void set_channels(std::string (*key)(int channel), const std::string& value) {
        const std::string head = "[COMMS CONTROLS]\r\n"; // the first of equal keys counts
        std::string text = read_file(config.gIniFile);
        for (int n = 0; n < static_cast<int>(kChannelLimit); ++n)
            text.insert(head.size(), key(n) + "=" + value + "\r\n");
        write_file(config.gIniFile, text);
        rebuild();
    }
    void rebuild() {
        ports.clear();
        table.init_comms();
    }
    std::int16_t open_port(std::int16_t channel) { return table.open_port(channel); }
    [[nodiscard]] std::string log_text() const { return read_file(dir.file("errors")); }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    MessageRouter gate{dialogs};
    FakeDesktop desktop;
    Services services{tick, clock, dialogs, desktop, dir.path()};
    ConfigState config;
    SerialState state;
    std::vector<FakeSerialPort*> ports; // of the current table, as far as they are fakes
    std::vector<std::string> closings;
    PortFactory make_port = [this] { return std::make_unique<FakeSerialPort>(tick, &closings); };
    frm_Comms comms{[this] { return make_port(); }};
    Subscription elements = comms.element_changed.subscribe([this](SerialPort* port) {
        if (auto* const fake = dynamic_cast<FakeSerialPort*>(port)) ports.push_back(fake);
    });
    ErrorLog log{clock, dir.file("errors")};
    ChannelTable table{state, config, comms, gate, log};
    CountdownPool countdowns{state, tick};
    Link link{table, countdowns, gate, log};
};

} // namespace pelvan::testing
