// What exchanges that end with the reply's frame take, beside a libmodbus client on the same
// pseudo-terminal in the same run: the two ask in turn, and a slave in a thread answers at once.
// The distance that a request keeps from the bytes before it is part of our time and of no use of
// libmodbus'. Then a save of registers from a slave at the pace of the line, with the share of the
// processor that it takes. Prints medians, 95th percentiles and the load of the machine.
#include <modbus.h>
#include <sys/resource.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "config/ini.h"
#include "platform/line_port.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/whole_reply.h"
#include "support/fake_dialogs.h"
#include "support/pty_pair.h"
#include "support/recording_listener.h"
#include "support/temp_dir.h"
#include "transfer/download.h"

namespace {

using namespace pelvan;
using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kExchanges = 400;
constexpr int kInTurn = 20;
constexpr int kRegisters = 500;
constexpr int kReadRegisters = 10; // of the exchanges
constexpr std::size_t kRequestBytes = 8;
constexpr double kAllowedFactor = 1.2; // of libmodbus' time

std::string sealed(std::string frame) {
    const unsigned crc = modbus_crc(frame);
    return frame + static_cast<char>(crc & 0xFFU) + static_cast<char>(crc >> 8U);
}

/// Answers reads with 742 in every register; at the pace of the line when it is told that of a
/// byte.
class Slave {
  public:
    Slave(const testing::PtyPair& line, double byte_ms)
        : line_(line), byte_ms_(byte_ms), thread_([this] { serve(); }) {}
    ~Slave() {
        stop_ = true;
        thread_.join();
    }

  private:
    void serve() {
        while (!stop_) {
            const std::string request = line_.receive(kRequestBytes, 100);
            if (request.size() != kRequestBytes) continue;
            const auto heard = SteadyClock::now();
            std::string reply = request.substr(0, 2) + static_cast<char>(2 * request[5]);
            for (int i = 0; i < request[5]; ++i)
                reply += "\x02\xE6";
            reply = sealed(reply);
            const auto bytes = static_cast<double>(kRequestBytes + reply.size());
            if (byte_ms_ > 0) std::this_thread::sleep_until(heard + Milliseconds(byte_ms_ * bytes));
            line_.send(reply);
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
    std::unique_ptr<TickSource> tick = make_system_tick();
    std::unique_ptr<Clock> clock = make_system_clock();
    ConfigState config{dir.file("pelvan7.ini")};
    SerialState state;
    std::string path;
    frm_Comms comms{[this] {
        return std::make_unique<LinePort>([this](int) { return path; }, open_serial_device);
    }};
    ErrorLog log{*clock, dir.file("errors")};
    ChannelTable table{state, config, comms, dialogs, log};
    CountdownPool countdowns{state, *tick};
    Link link{table, countdowns, dialogs, log};
};

struct Times {
    std::vector<double> ms;
    void add(SteadyClock::time_point begun) {
        ms.push_back(Milliseconds(SteadyClock::now() - begun).count());
    }
    double at(std::size_t percent) {
        std::sort(ms.begin(), ms.end());
        return ms[std::min(ms.size() * percent / 100, ms.size() - 1)];
    }
};

void compare(int baud_rate) {
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    const Slave slave(line, 0);
    modbus_t* const other = modbus_new_rtu(line.path().c_str(), baud_rate, 'N', 8, 1);
    // First, because our port keeps others out.
    if (!other || modbus_set_slave(other, 1) != 0 || modbus_connect(other) != 0) return;
    Program program(line, baud_rate, "COMPLETE");
    const std::string request = sealed({1, 3, 0, 0, 0, kReadRegisters});
    Times ours, theirs;
    int wrong = 0;
    const auto ask = [&] {
        const auto begun = SteadyClock::now();
        const std::string reply = program.link.transmit(
            kModbusChannel, request, kModbusTimeoutMs, kModbusQuietChars,
            [&](std::string_view received) { return is_whole_reply(request, received); });
        ours.add(begun);
        return is_whole_reply(request, reply);
    };
    const auto ask_by_other = [&] {
        std::array<std::uint16_t, kReadRegisters> values{};
        const auto begun = SteadyClock::now();
        const int count = modbus_read_registers(other, 0, kReadRegisters, values.data());
        theirs.add(begun);
        return count == kReadRegisters;
    };
    for (int i = 0; i < kExchanges / kInTurn; ++i) {
        for (int k = 0; k < kInTurn; ++k)
            wrong += ask() ? 0 : 1;
        for (int k = 0; k < kInTurn; ++k)
            wrong += ask_by_other() ? 0 : 1;
    }
    modbus_close(other);
    modbus_free(other);
    const double distance = program.table.exchange_way(kModbusChannel).distance_ms;
    std::printf("%6d baud: distance %.3f ms, %d of %d failed\n", baud_rate, distance, wrong,
                2 * kExchanges);
    for (const std::size_t percent : {50U, 95U}) {
        const double limit = kAllowedFactor * theirs.at(percent) + distance;
        std::printf("  %zu %%: %.3f ms, libmodbus %.3f ms, allowed %.3f ms: %s\n", percent,
                    ours.at(percent), theirs.at(percent), limit,
                    ours.at(percent) <= limit ? "met" : "NOT MET");
    }
}

double processor_ms() {
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    const auto ms = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) * 1000 + static_cast<double>(time.tv_usec) / 1000;
    };
    return ms(usage.ru_utime) + ms(usage.ru_stime);
}

void save(int baud_rate, const char* way) {
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    const double byte_ms = 10 * 1000.0 / baud_rate;
    const Slave slave(line, byte_ms);
    Program program(line, baud_rate, way);
    std::filesystem::create_directory(program.dir.file("Download Sequences"));
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int i = 0; i < kRegisters; ++i)
        sequence += std::to_string(100 + i) + "\r\n";
    testing::write_file(program.dir.file("Download Sequences/742.cds"), sequence);
    ModbusState state;
    Modbus modbus(state);
    testing::RecordingListener listener;
    listener.file = program.dir.file("setup.txt");
    CancelFlag cancel;
    const auto begun = SteadyClock::now();
    const double processor_before = processor_ms();
    const TransferResult result =
        Download(TransferContext{program.link, modbus, *program.clock, program.dir.path(),
                                 DeviceAddress("1"), listener, cancel})
            .run();
    const double taken = Milliseconds(SteadyClock::now() - begun).count();
    std::printf(
        "save of %d registers, %d baud, %s: %.1f s, bytes alone %.1f s, processor %.2f %%%s\n",
        kRegisters, baud_rate, way, taken / 1000, kRegisters * byte_ms * (kRequestBytes + 7) / 1000,
        100 * (processor_ms() - processor_before) / taken,
        result.completed ? "" : ", NOT COMPLETE");
}

void print_load() {
    std::string load;
    std::getline(std::ifstream("/proc/loadavg"), load);
    std::printf("load: %s\n", load.c_str());
}

} // namespace

int main(int argc, char** argv) {
    print_load();
    for (const int baud_rate : {9600, 19200, 38400})
        compare(baud_rate);
    save(9600, "COMPLETE");
    save(38400, "COMPLETE");
    if (argc > 1 && std::string(argv[1]) == "quiet") save(9600, "QUIET");
    print_load();
}
