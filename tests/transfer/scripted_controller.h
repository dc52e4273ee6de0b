// Transfers on a scripted port: a table of registers that answers functions 3 and 6, on a fake
// tick, with the program's directory in a folder of its own.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <set>

#include "support/frames.h"
#include "support/recording_listener.h"
#include "support/serial_rig.h"
#include "transfer/comparison.h"
#include "transfer/download.h"
#include "transfer/upload.h"

namespace pelvan::testing {

using Writes = std::vector<std::pair<int, int>>;

constexpr char kCheckPort[] = "Download has been canceled. Need to check Comm Port Settings.";

/// A line of the list of errors.
inline std::string entry(const std::string& response, const std::string& number,
                         const std::string& value, const std::string& kind = "Error") {
    return response + std::string(15, ' ') + number + std::string(11, ' ') + value + "    " + kind;
}

class ScriptedController : public ::testing::Test {
  protected:
    ScriptedController() {
        rig.build({"1;9600,N,8,1;0", "2;9600,N,8,1;0"});
        connect();
        std::filesystem::create_directory(rig.dir.file("Reg Downloads"));
        std::filesystem::create_directory(rig.dir.file("Download Sequences"));
    }

    void exchange_by(const std::string& way) {
        rig.exchange_by(way);
        connect();
    }
    void write_sequence(const std::string& name, const std::string& text) {
        write_file(rig.dir.file("Download Sequences/" + name), text);
    }
    /// The last line is added.
    void write_setup(const std::string& body, const std::string& model = "  742") {
        write_file(path("a.txt"),
                   "*\r\n   Model #:" + model + "\r\n\r\n\r\n\r\n\r\n*\r\n" + body + "25 0\r\n");
    }
    [[nodiscard]] std::string path(const std::string& name) const {
        return rig.dir.file("Reg Downloads/" + name);
    }
    [[nodiscard]] std::string saved(const std::string& name) const { return read_file(path(name)); }
    [[nodiscard]] bool exists(const std::string& name) const {
        return std::filesystem::exists(path(name));
    }
    /// A transfer, on a listener that has forgotten the last one.
    template <class Transfer, class... File> TransferResult transfer(const File&... file) {
        const auto kept = std::exchange(ui, {});
        ui.answers = kept.answers;
        ui.on_turn = kept.on_turn;
        ui.file = path(file_name);
        cancel = {};
        writes.clear();
        asked.clear();
        return Transfer(TransferContext{rig.link, modbus, rig.clock, rig.dir.path(),
                                        DeviceAddress(address), ui, cancel, together})
            .run(file...);
    }
    TransferResult download(std::deque<bool> answers = {}) {
        ui.answers = std::move(answers);
        return transfer<Download>();
    }
    TransferResult upload(std::deque<bool> answers = {true}) {
        ui.answers = std::move(answers);
        return transfer<Upload>(path(file_name));
    }
    TransferResult compare() { return transfer<Comparison>(path(file_name)); }
    [[nodiscard]] FakeSerialPort& port() { return *rig.ports[1]; }

    SerialRig rig;
    ModbusState state;
    Modbus modbus{state};
    RecordingListener ui;
    CancelFlag cancel;
    std::string file_name = "a.txt";
    std::string address = "1";
    bool together = false; // neighbours are read with one request

    std::map<int, int> registers{{0, 742}, {1, 7421}, {2, 1518}, {3, 17}, {4, 203}, {1602, 0}};
    std::set<int> refused; // writes answered with exception 3
    // A reply to a read of several registers has what is said here of any of them.
    std::map<int, int> silent;          // requests to a register that stay unanswered yet
    std::map<int, std::string> instead; // replies (whole) to a read of a register
    std::map<int, int> reads;           // requests to read a register
    std::string asked;                  // "first x count" of each read of a transfer
    Writes writes;
    std::function<void(int number, int value)> on_write;
    std::function<double(int number)> delay_ms = [](int) { return 5; };
    std::map<int, double> doubled; // a reply that comes again, so many ms later

    void connect() {
        port().responder = [this](const std::string& request) { return answer(request); };
        port().discards_future = false;
    }

  private:
    std::vector<Arrival> answer(const std::string& request) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const int number = byte(2) * 256 + byte(3);
        const int value = static_cast<std::int16_t>(byte(4) * 256 + byte(5));
        const bool is_write = byte(1) == 6;
        if (is_write) writes.emplace_back(number, value);
        if (is_write && on_write) on_write(number, value);
        if (!is_write) asked += std::to_string(number) + "x" + std::to_string(value) + " ";
        const int end = number + (is_write ? 1 : value);
        const std::string reply =
            is_write ? written(request, number, value) : held(request[0], number, end);
        std::vector<Arrival> arrivals{{0, reply}};
        bool answers = true;
        for (int i = number; i < end; ++i) {
            if (!is_write) ++reads[i];
            answers = answers && (silent[i] == 0 || silent[i]-- == 0);
            arrivals[0].after_ms = std::max(arrivals[0].after_ms, delay_ms(i));
        }
        for (int i = number; i < end; ++i)
            if (doubled.contains(i)) arrivals.push_back({arrivals[0].after_ms + doubled[i], reply});
        return answers ? arrivals : std::vector<Arrival>{};
    }
    std::string written(const std::string& request, int number, int value) {
        if (refused.contains(number)) return sealed(request.substr(0, 1) + "\x86\x03");
        registers[number] = value;
        return request;
    }
    std::string held(char from, int number, int end) {
        std::string reply = from + std::string("\3") + static_cast<char>(2 * (end - number));
        for (; number < end; ++number) {
            if (instead.contains(number)) return instead[number];
            if (!registers.contains(number)) return sealed(from + std::string("\x83\x02"));
            const int value = registers[number];
            reply += {static_cast<char>(value >> 8), static_cast<char>(value & 0xFF)};
        }
        return sealed(reply);
    }
};

} // namespace pelvan::testing
