// How long a data-logging pass of 100 rows at 9600 takes over a pseudo-terminal to a slave that
// answers at once, against the 100 quiet pauses that the rules ask for; and how long a million
// readings of the trend take to be thinned out for a drawing.
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "app/application.h"
#include "terminal/terminal_dialogs.h"

namespace {

using namespace pelvan;
using Moment = std::chrono::steady_clock;

constexpr int kPasses = 3;
constexpr double kQuietMs = 30 * 2; // quiet characters x settle time at 9600
constexpr double kCharMs = 10.0 / 9600 * 1000;
constexpr int kExchangeBytes = 8 + 7;

double ms_since(Moment::time_point begin) {
    return std::chrono::duration<double, std::milli>(Moment::now() - begin).count();
}

int open_master(std::string& slave) {
    const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
    std::array<char, 64> name{};
    if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
        ::ptsname_r(master, name.data(), name.size()) != 0)
        std::exit(1);
    slave = name.data();
    termios raw{};
    ::tcgetattr(master, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(master, TCSANOW, &raw);
    return master;
}

/// Answers every request of eight bytes with one register, without a pause.
void answer(int master, const std::atomic<bool>& done) {
    ModbusState state;
    Modbus modbus(state);
    std::string reply("\x01\x03\x02\x02\xD5", 5);
    modbus.ModbusCrc(reply);
    reply += static_cast<char>(state.gCrcLow);
    reply += static_cast<char>(state.gCrcHigh);
    std::size_t heard = 0;
    while (!done) {
        pollfd watched{master, POLLIN, 0};
        if (::poll(&watched, 1, 100) <= 0) continue;
        std::array<char, 64> bytes{};
        const ssize_t got = ::read(master, bytes.data(), bytes.size());
        if (got <= 0) continue;
        heard += static_cast<std::size_t>(got);
        if (heard < 8) continue;
        heard = 0;
        if (::write(master, reply.data(), reply.size()) < 0) return;
    }
}

void write_files(const std::string& directory, const std::string& slave) {
    std::ofstream(directory + "/pelvan7.ini")
        << "[COMMS CONTROLS]\nDEVICE 0 COMM PORT =1\nDEVICE 0 PORT SETTING =9600,N,8,1\n"
           "DEVICE 1 COMM PORT =2\nDEVICE 1 PORT SETTING =9600,N,8,1\nDEVICE 1 RTS Mode =1\n"
           "[SERIAL DEVICES]\nPORT 1=simulated:742\nPORT 2="
        << slave << "\n";
    std::ofstream set(directory + "/set.PV5");
    set << "[LOGGING DATA DEVICE AND REGISTER SET]\nLOG TO FILE=TRUE\nLOGGING FILENAME="
        << directory << "/log.txt\n";
    for (int n = 1; n <= kLogRows; ++n)
        set << n << "DEVICEADDRESS=1\n" << n << "DEVICECOMMAND=3\n" << n << "DEVICEREGISTER=100\n";
}

void time_passes() {
    std::string pattern = (std::filesystem::temp_directory_path() / "pelvanXXXXXX").string();
    const std::string directory = ::mkdtemp(pattern.data());
    std::string slave;
    const int master = open_master(slave);
    const int held = ::open(slave.c_str(), O_RDWR | O_NOCTTY);
    write_files(directory, slave);
    std::atomic<bool> done{false};
    std::thread answering(answer, master, std::cref(done));
    const auto tick = make_system_tick();
    const auto clock = make_system_clock();
    TerminalDialogs dialogs(std::cerr);
    TerminalDesktop desktop;
    Application app({*tick, *clock, dialogs, desktop, directory}, open_serial_device);
    app.console.Load();
    app.data_logger.read_set(directory + "/set.PV5");
    const double quiet = kLogRows * kQuietMs;
    const double bytes = kLogRows * kExchangeBytes * kCharMs;
    for (int i = 0; i < kPasses; ++i) {
        const auto begin = Moment::now();
        app.data_logger.RunLoggingPass();
        const double took = ms_since(begin);
        int answered = 0;
        for (int row = 1; row <= kLogRows; ++row)
            answered += app.data_logger.reading(row).state == RowState::Answered ? 1 : 0;
        std::printf("pass of %d rows (%d answered): %.1f ms; quiet pauses %.0f ms: %+.2f %%; with "
                    "the bytes' time %.0f ms: %+.2f %%\n",
                    kLogRows, answered, took, quiet, (took / quiet - 1) * 100, quiet + bytes,
                    (took / (quiet + bytes) - 1) * 100);
    }
    done = true;
    answering.join();
    ::close(held);
    ::close(master);
    std::filesystem::remove_all(directory);
}

void time_trend() {
    for (const int rows : {12, kLogRows}) {
        Trend trend(rows);
        for (std::size_t pass = 0; pass < Trend::kDay; ++pass) {
            trend.begin_pass(static_cast<double>(pass) * 1000);
            for (int row = 0; row < rows; ++row)
                trend.record(row, "row", static_cast<double>((pass * 7919 + 13) % 1000));
        }
        const auto begin = Moment::now();
        std::size_t points = 0;
        for (int row = 0; row < rows; ++row)
            points += trend.points(row, trend.span(), 800).size();
        std::printf("trend: %zu readings thinned out to %zu points in %.1f ms\n",
                    Trend::kDay * static_cast<std::size_t>(rows), points, ms_since(begin));
    }
}

} // namespace

int main() {
    time_trend();
    time_passes();
}
