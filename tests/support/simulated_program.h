// The whole program on a fake tick, its console loaded; its devices are simulated as a rule.
#pragma once

#include <vector>

#include "app/application.h"
#include "support/configuration.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"

namespace pelvan::testing {

struct SimulatedProgram {
    /// `devices` stand behind channels 0, 1 ... at 9600; those that are not simulated are opened by
    /// `open_line`, and do not exist without one.
    explicit SimulatedProgram(const std::vector<std::string>& devices, int protocol_number,
                              const LineOpener& open_line = no_device)
        : app(Services{tick, clock, dialogs, desktop, dir.path()}, open_line) {
        configure_devices(dir, devices,
                          "DEFAULT PROTOCOL=" + std::to_string(protocol_number) + "\r\n");
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
