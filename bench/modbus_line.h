// What the benches of the Modbus line share: channel 1 of the program on a pseudo-terminal, and a
// slave behind it. A pseudo-terminal carries bytes at once: the slave gives them the time that a
// UART takes, a byte at a time.
#pragma once

#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <thread>

#include "config/ini.h"
#include "platform/line_port.h"
#include "platform/message_router.h"
#include "platform/services.h"
#include "protocols/modbus/crc.h"
#include "serial/link.h"
#include "simulator/line/wire.h"
#include "support/fake_dialogs.h"
#include "support/pty_pair.h"
#include "support/recording_listener.h"
#include "support/temp_dir.h"
#include "transfer/download.h"

namespace pelvan::bench {

using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr std::size_t kRequestBytes = 8;
constexpr int kModel = 742;
constexpr int kFirstRegister = 1000; // of those that are logged or saved

inline std::string sealed(std::string frame) {
    const unsigned crc = modbus_crc(frame);
    return frame + static_cast<char>(crc & 0xFFU) + static_cast<char>(crc >> 8U);
}

inline double since_ms(SteadyClock::time_point begun) {
    return Milliseconds(SteadyClock::now() - begun).count();
}

/// Processor time of the calling thread.
inline double processor_ms() {
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    const auto ms = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
    };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

inline void print_load() {
    std::string load;
    std::getline(std::ifstream("/proc/loadavg"), load);
    std::printf("load: %s\n", load.c_str());
}

/// Answers reads: register 0 holds model 742, every other its own number. At once, or, when it is
/// told the time of a byte, at the pace of the line, 3.5 characters behind the request.
class Slave {
  public:
    Slave(const testing::PtyPair& line, double byte_ms)
        : line_(line), byte_ms_(byte_ms), thread_([this] { serve(); }) {}
    Slave(const Slave&) = delete;
    Slave& operator=(const Slave&) = delete;
    ~Slave() {
        stop_ = true;
        thread_.join();
    }

  private:
    void serve() {
        while (!stop_) {
            const std::string request = line_.receive(kRequestBytes, 100);
            const auto heard = SteadyClock::now();
            if (request.size() == kRequestBytes) send(reply_to(request), heard);
        }
    }
    static std::string reply_to(const std::string& request) {
        std::string reply = request.substr(0, 2) + static_cast<char>(2 * request[5]);
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const int first = byte(2) * 256 + byte(3);
        for (int i = first; i < first + byte(5); ++i) {
            const int value = i == 0 ? kModel : i;
            reply += {static_cast<char>(value / 256), static_cast<char>(value % 256)};
        }
        return sealed(reply);
    }
    void send(const std::string& reply, SteadyClock::time_point heard) const {
        if (byte_ms_ <= 0) return line_.send(reply);
        constexpr double kTurnaroundCharacters = 3.5;
        simulator::PacedQueue wire(byte_ms_);
        wire.send((kRequestBytes + kTurnaroundCharacters) * byte_ms_, reply);
        while (!wire.empty()) {
            std::this_thread::sleep_until(heard + Milliseconds(wire.next_ms()));
            // A busy machine wakes this thread late: what is due by then comes in one lump.
            line_.send(wire.take(since_ms(heard)));
        }
    }

    const testing::PtyPair& line_;
    const double byte_ms_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

/// Channel 1 of the program on the pseudo-terminal.
struct Program {
    Program(const testing::PtyPair& line, int baud_rate, const char* way) {
        const std::string setting = std::to_string(baud_rate) + ",N,8,1\r\n";
        testing::write_file(
            config.gIniFile,
            "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=" + setting +
                "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=" + setting +
                "DEVICE 1 RTS Mode=1\r\nDEVICE 1 EXCHANGE=" + way);
        path = line.path();
        table.init_comms();
    }
    testing::TempDir dir;
    testing::FakeDialogs dialogs;
    testing::FakeDesktop desktop;
    MessageRouter messages{dialogs};
    std::unique_ptr<TickSource> tick = make_system_tick();
    std::unique_ptr<Clock> clock = make_system_clock();
    Services services{*tick, *clock, messages, desktop, dir.path()};
    ConfigState config{dir.file("pelvan7.ini")};
    SerialState state;
    std::string path;
    frm_Comms comms{[this] {
        return std::make_unique<LinePort>([this](int) { return path; }, open_serial_device);
    }};
    ErrorLog log{*clock, dir.file("errors")};
    ChannelTable table{state, config, comms, messages, log};
    CountdownPool countdowns{state, *tick};
    Link link{table, countdowns, messages, log};
};

/// The model's .cds file, of so many registers that follow one another.
inline void write_sequence(const testing::TempDir& dir, int registers) {
    std::filesystem::create_directory(dir.file("Download Sequences"));
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int i = 0; i < registers; ++i)
        sequence += std::to_string(kFirstRegister + i) + "\r\n";
    testing::write_file(dir.file("Download Sequences/742.cds"), sequence);
}

struct TimedSave {
    double taken_ms = 0;
    double processor_ms = 0;
    bool completed = false;
    std::string file; // what was saved
};

/// Saves so many registers from a slave at the pace of the line.
inline TimedSave time_save(int baud_rate, const char* way, int registers, bool together = false) {
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    const Slave slave(line, 10 * 1000.0 / baud_rate);
    Program program(line, baud_rate, way);
    write_sequence(program.dir, registers);
    ModbusState state;
    Modbus modbus(state);
    testing::RecordingListener listener;
    listener.file = program.dir.file("setup.txt");
    CancelFlag cancel;
    const auto begun = SteadyClock::now();
    const double processor_before = processor_ms();
    const TransferResult result =
        Download(TransferContext{program.link, modbus, *program.clock, program.dir.path(),
                                 DeviceAddress("1"), listener, cancel, together})
            .run();
    return {since_ms(begun), processor_ms() - processor_before, result.completed,
            testing::read_file(*listener.file)};
}

} // namespace pelvan::bench
