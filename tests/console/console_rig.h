// The console on scripted ports or on simulated controllers, without the rest of the program.
#pragma once

#include <gtest/gtest.h>

#include "console/console_form.h"
#include "support/simulated_ports.h"

namespace pelvan::testing {

/// What sends commands, without a window.
struct SendersRig : SerialRig {
    SendOutcome send_modbus(std::size_t type, const std::string& start, const std::string& values) {
        return senders.modbus.send({type, "1", start, values, false}, {DataFormat::SmartDec});
    }
    /// Until no answer is late any more.
    void let_doubts_pass() { tick.advance(LateAnswers::kDoubtMs + 1); }

    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    Link link{table, countdowns, gate, log, "Command Center"};
    Senders senders{link, modbus, clock, dialogs};
};

struct ConsoleRig : SendersRig {
    /// Loads the console with `devices` behind channels 0, 1 ... at 9600.
    void start(const std::vector<std::string>& devices, int protocol_number) {
        simulated.emplace(*this);
        config.gIniFile.clear(); // the console finds it
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
        return pairs().empty() ? "" : pairs().back();
    }
    /// The texts of the messages since the last look.
    std::vector<std::string> said() {
        const auto texts = dialogs.texts();
        dialogs.shown.clear();
        return texts;
    }

    std::optional<SimulatedPorts> simulated;
    History history{services};
    Repeat repeat{link, tick, gate};
    frm_Pelvan5VB console{services, config, table, link, senders, history, repeat};
    Subscription jumper = console.simulated_jumper_moved.subscribe(
        [this](bool in) { simulated->simulators.set_jumper(in); });
};

} // namespace pelvan::testing
