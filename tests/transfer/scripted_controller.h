// The transfer window on a scripted port: a table of registers that answers functions 3 and 6, on a
// fake tick, with the program's directory in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include "support/frames.h"
#include "support/serial_rig.h"
#include "transfer/download_parm_form.h"

namespace pelvan::testing {

using Lines = std::vector<std::string>;
using Writes = std::vector<std::pair<int, int>>;

class ScriptedController : public ::testing::Test {
  protected:
    ScriptedController() {
        rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;0"});
        rig.ports[1]->responder = [this](const std::string& request) { return answer(request); };
        std::filesystem::create_directory(rig.dir.file("Reg Downloads"));
        std::filesystem::create_directory(rig.dir.file("Download Sequences"));
        form.cmbAddress.set_Text("1");
    }

    void write_sequence(const std::string& name, const std::string& text) {
        write_file(rig.dir.file("Download Sequences/" + name), text);
    }
    [[nodiscard]] std::string path(const std::string& name) const {
        return rig.dir.file("Reg Downloads/" + name);
    }
    [[nodiscard]] std::string saved(const std::string& name) const { return read_file(path(name)); }
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(path(name));
    }
    [[nodiscard]] static Lines lines(const ListBox& list) {
        Lines out;
        for (int i = 0; i < list.ListCount(); ++i)
            out.push_back(list.List(i));
        return out;
    }
    [[nodiscard]] std::string last_message() const { return rig.dialogs.shown.back().text; }
    void press(Button& button, const std::string& name = "a.txt") {
        rig.dialogs.files = {path(name)};
        button.press();
    }
    void download(const std::string& name = "a.txt") { press(form.cmdDownload, name); }
    void upload() { press(form.cmdUpload); }
    void compare() { press(form.cmdCompare); }

    void expect_usable(bool) {
        EXPECT_TRUE(form.cmdDownload.Enabled());
        EXPECT_TRUE(form.cmbAddress.Enabled());
        EXPECT_FALSE(form.cmdCancel.Enabled());
        EXPECT_EQ(form.Pointer(), MousePointer::Normal);
        EXPECT_EQ(form.ProgressBar1.Value(), 0);
    }

    SerialRig rig;
    FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    ModbusState state;
    Modbus modbus{state};
    frm_DownloadParm form{services, rig.link, modbus};

    std::map<int, int> registers{{0, 742}, {1, 7421}, {2, 1518}, {3, 17}, {4, 203}, {1602, 0}};
    std::set<int> refused;              // writes answered with exception 3
    std::map<int, int> silent;          // requests to a register that stay unanswered yet
    std::map<int, std::string> instead; // replies (whole) to a read of a register
    Writes writes;
    std::function<void(int number)> on_write;

  private:
    std::vector<Arrival> answer(const std::string& request) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const std::string address = request.substr(0, 1);
        const int number = byte(2) * 256 + byte(3);
        const int value = static_cast<std::int16_t>(byte(4) * 256 + byte(5));
        const bool is_write = byte(1) == 6;
        if (is_write) writes.emplace_back(number, value);
        if (is_write && on_write) on_write(number);
        if (silent[number] > 0) {
            --silent[number];
            return {};
        }
        if (is_write && refused.contains(number)) return {{5, sealed(address + "\x86\x03")}};
        if (is_write) {
            registers[number] = value;
            return {{5, request}};
        }
        if (instead.contains(number)) return {{5, instead[number]}};
        if (!registers.contains(number)) return {{5, sealed(address + "\x83\x02")}};
        const int held = registers[number];
        return {{5, sealed(address + "\3\2" + static_cast<char>(held >> 8) +
                           static_cast<char>(held & 0xFF))}};
    }
};

} // namespace pelvan::testing
