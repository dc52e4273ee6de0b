// The whole program on a fake tick, its console loaded; its devices are simulated as a rule.
#pragma once

#include <vector>

#include "app/application.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

struct SimulatedProgram {
    /// `devices` stand behind channels 0, 1 ... at 9600; those that are not simulated are opened by
    /// `open_line`, and do not exist without one.
    explicit SimulatedProgram(const std::vector<std::string>& devices, int protocol_number,
                              const LineOpener& open_line = no_device)
        : app(Services{tick, clock, dialogs, desktop, dir.path()}, open_line) {
        std::string channels =
            "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=" + std::to_string(protocol_number) + "\r\n";
        std::string ports = "[SERIAL DEVICES]\r\n";
        for (std::size_t n = 0; n < devices.size(); ++n) {
            const std::string number = std::to_string(n);
            const std::string port = std::to_string(n + 1);
            channels += "DEVICE " + number + " COMM PORT =" + port + "\r\nDEVICE " + number +
                        " PORT SETTING =9600,N,8,1\r\n";
            ports += "PORT " + port + "=" + devices[n] + "\r\n";
        }
        write_file(dir.file("pelvan7.ini"), channels + ports);
        app.console.Load();
    }

    /// "command > reply" of every pair in the history.
    [[nodiscard]] std::vector<std::string> pairs() const {
        std::vector<std::string> out;
        for (int i = 0; i < app.history.frmCommand.list.ListCount(); ++i)
            out.push_back(app.history.frmCommand.list.List(i) + " > " +
                          app.history.frmResponse.list.List(i));
        return out;
    }
    /// Presses Send; the newest pair.
    std::string send() {
        app.console.cmd_SendCommand.press();
        return pairs().back();
    }
    static std::unique_ptr<SerialLine> no_device(const std::string&, const LineSettings&) {
        throw RunTimeError(error_number::kInvalidPortNumber);
    }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    FakeDesktop desktop;
    Application app;
};

} // namespace pelvan::testing
