// What an exchange adds to the time that its rules require: the request is written to a
// pseudo-terminal, a slave in a thread answers at once, and the reply is collected until the quiet
// pause has passed. Added = measured time - quiet pause. Prints median and 95th percentile.
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>
#include <vector>

#include "platform/line_port.h"
#include "protocols/modbus/modbus.h"
#include "serial/link.h"
#include "support/fake_dialogs.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace {

using namespace pelvan;

constexpr int kExchanges = 200;
constexpr std::size_t kRequestBytes = 8;

/// Answers every request with the same reply to a read of ten registers.
class AnsweringSlave {
  public:
    explicit AnsweringSlave(const testing::PtyPair& line)
        : line_(line), thread_([this] { serve(); }) {}
    ~AnsweringSlave() {
        stop_ = true;
        thread_.join();
    }

  private:
    void serve() {
        const std::string reply(25, '\x01');
        while (!stop_)
            if (line_.receive(kRequestBytes, 100).size() == kRequestBytes) line_.send(reply);
    }
    const testing::PtyPair& line_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

void measure(int baud_rate) {
    testing::TempDir dir;
    testing::FakeDialogs dialogs;
    const auto tick = make_system_tick();
    const auto clock = make_system_clock();
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    ConfigState config{dir.file("pelvan7.ini")};
    testing::write_file(config.gIniFile, "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                                         "DEVICE 0 PORT SETTING=" +
                                             std::to_string(baud_rate) +
                                             ",N,8,1\r\nDEVICE 0 RTS Mode=1\r\n");
    SerialState state;
    frm_Comms comms([&] {
        return std::make_unique<LinePort>([&](int) { return line.path(); }, open_serial_device);
    });
    ErrorLog log(*clock, dir.file("errors"));
    ChannelTable table(state, config, comms, dialogs, log);
    CountdownPool countdowns(state, *tick);
    Link link(table, countdowns, dialogs, log);
    table.init_comms();

    AnsweringSlave slave(line);
    const double required_ms = kModbusQuietChars * state.gCharTime[0];
    std::vector<double> added;
    for (int i = 0; i < kExchanges; ++i) {
        const auto begun = std::chrono::steady_clock::now();
        const std::string reply = link.transmit(0, std::string(kRequestBytes, '\x03'),
                                                kModbusTimeoutMs, kModbusQuietChars);
        const std::chrono::duration<double, std::milli> taken =
            std::chrono::steady_clock::now() - begun;
        if (!reply.empty()) added.push_back(taken.count() - required_ms);
    }
    std::sort(added.begin(), added.end());
    std::printf("%5d baud: quiet pause %4.0f ms, added: median %.3f ms, 95th percentile %.3f ms "
                "(%zu replies)\n",
                baud_rate, required_ms, added[added.size() / 2], added[added.size() * 95 / 100],
                added.size());
}

} // namespace

int main() {
    for (const int baud_rate : {9600, 19200, 38400})
        measure(baud_rate);
}
