// The transfer window on a scripted port: a table of registers that answers functions 3 and 6, on a
// fake tick, with the program's directory in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include "support/serial_rig.h"
#include "transfer/download_parm_form.h"

namespace pelvan::testing {

class ScriptedController {
  public:
    ScriptedController() {
        rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;0"});
        rig.ports[1]->responder = [this](const std::string& request) { return answer(request); };
        registers = {{0, 742}, {1, 7421}, {2, 1518}, {3, 17}, {4, 203}, {1602, 0}};
        std::filesystem::create_directory(rig.dir.file("Reg Downloads"));
        std::filesystem::create_directory(rig.dir.file("Download Sequences"));
        form.cmbAddress.set_Text("1");
    }

    void write_sequence(const std::string& name, const std::string& text) {
        write_file(rig.dir.file("Download Sequences/" + name), text);
    }
    [[nodiscard]] std::string saved(const std::string& name) const {
        return read_file(rig.dir.file("Reg Downloads/" + name));
    }
    [[nodiscard]] std::string path(const std::string& name) const {
        return rig.dir.file("Reg Downloads/" + name);
    }
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(path(name));
    }
    [[nodiscard]] static std::vector<std::string> lines(const ListBox& list) {
        std::vector<std::string> out;
        for (int i = 0; i < list.ListCount(); ++i)
            out.push_back(list.List(i));
        return out;
    }
    void download_to(const std::string& name) {
        rig.dialogs.files.push_back(path(name));
        form.cmdDownload.press();
    }
    void upload_from(const std::string& name) {
        rig.dialogs.files.push_back(path(name));
        form.cmdUpload.press();
    }

    SerialRig rig;
    FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    ModbusState state;
    Modbus modbus{state};
    frm_DownloadParm form{services, rig.link, modbus};

    std::map<int, int> registers;
    std::set<int> refused;              // writes answered with exception 3
    std::map<int, int> silent;          // requests to a register that stay unanswered yet
    std::map<int, std::string> instead; // replies (whole) to a read of a register
    std::vector<std::pair<int, int>> writes;

  private:
    std::vector<Arrival> answer(const std::string& request) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const int number = byte(2) * 256 + byte(3);
        const int value = static_cast<std::int16_t>(byte(4) * 256 + byte(5));
        if (byte(1) == 6) writes.emplace_back(number, value);
        if (silent[number] > 0) {
            --silent[number];
            return {};
        }
        if (byte(1) == 3 && instead.contains(number)) return {{5, instead[number]}};
        if (byte(1) == 6 && refused.contains(number)) return {{5, sealed({byte(0), 0x86, 3})}};
        if (byte(1) == 6) {
            registers[number] = value;
            return {{5, request}};
        }
        if (!registers.contains(number)) return {{5, sealed({byte(0), 0x83, 2})}};
        const int held = registers[number];
        return {{5, sealed({byte(0), 3, 2, (held >> 8) & 0xFF, held & 0xFF})}};
    }

  public:
    /// A frame of these bytes with its CRC.
    std::string sealed(const std::vector<int>& bytes) {
        std::string frame;
        for (const int byte : bytes)
            frame += static_cast<char>(byte);
        ModbusState crc_state;
        Modbus(crc_state).ModbusCrc(frame);
        frame += static_cast<char>(crc_state.gCrcLow);
        frame += static_cast<char>(crc_state.gCrcHigh);
        return frame;
    }
};

} // namespace pelvan::testing
