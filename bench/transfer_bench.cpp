// What saving 500 registers adds to the time that its rules and the line require: the window is on
// the screen and repainted, a slave in a thread answers over a pseudo-terminal when the bytes of
// request and reply would have passed at 9600 baud. Required = the quiet pauses and
// the time of the bytes. On a busy machine the median register tells more than the sum.
#include <QApplication>
#include <QEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <numeric>
#include <thread>
#include <vector>

#include "app/application.h"
#include "desktop/windows/transfer_window.h"
#include "support/fake_dialogs.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace {

using namespace pelvan;
using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr int kRegisters = 500;
constexpr std::size_t kRequestBytes = 8;
constexpr std::size_t kReplyBytes = 7;
constexpr double kByteMs = 10 * 1000.0 / 9600;
constexpr double kQuietMs = 60;

class Slave {
  public:
    explicit Slave(const testing::PtyPair& line) : line_(line), thread_([this] { serve(); }) {}
    void stop() {
        stop_ = true;
        thread_.join();
    }
    std::vector<double> times; // time that the bytes of each exchange took; to be read when stopped

  private:
    void serve() {
        ModbusState state;
        Modbus modbus(state);
        std::string reply{"\x01\x03\x02\x02\xE6", 5}; // 742
        modbus.ModbusCrc(reply);
        reply += static_cast<char>(state.gCrcLow);
        reply += static_cast<char>(state.gCrcHigh);
        while (!stop_) {
            if (line_.receive(kRequestBytes, 100).size() != kRequestBytes) continue;
            const auto heard = SteadyClock::now();
            std::this_thread::sleep_until(heard +
                                          Milliseconds(kByteMs * (kRequestBytes + kReplyBytes)));
            // A busy machine wakes this thread late: that is the line's time, not the program's.
            times.push_back(Milliseconds(SteadyClock::now() - heard).count());
            line_.send(reply);
        }
    }
    const testing::PtyPair& line_;
    std::atomic<bool> stop_{false};
    std::thread thread_;
};

class QtEvents : public testing::FakeDesktop {
  public:
    void let_events_run() override {
        const auto begun = SteadyClock::now();
        QCoreApplication::processEvents();
        const auto ended = SteadyClock::now();
        spent.push_back(Milliseconds(ended - begun).count());
        cycles.push_back(Milliseconds(ended - last_).count());
        last_ = ended;
    }
    std::vector<double> spent;  // in the window's events, by register
    std::vector<double> cycles; // from the end of one register to the end of the next

  private:
    SteadyClock::time_point last_ = SteadyClock::now();
};

class Repaints : public QObject {
  public:
    int count = 0;

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) ++count;
        return QObject::eventFilter(watched, event);
    }
};

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void prepare(const testing::TempDir& dir) {
    testing::write_file(dir.file("pelvan7.ini"),
                        "[COMMS CONTROLS]\r\n"
                        "DEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=9600,N,8,1\r\n"
                        "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                        "DEVICE 1 RTS Mode=1\r\n");
    std::filesystem::create_directory(dir.file("Download Sequences"));
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int i = 0; i < kRegisters; ++i)
        sequence += std::to_string(100 + i) + "\r\n";
    testing::write_file(dir.file("Download Sequences/742.cds"), sequence);
}

} // namespace

int main(int argc, char** argv) {
    QApplication qt(argc, argv);
    testing::TempDir dir;
    prepare(dir);
    testing::PtyPair line(testing::PtyPair::Slave::KeepOpen);
    testing::write_file(dir.file("pelvan7.ini"), testing::read_file(dir.file("pelvan7.ini")) +
                                                     "[SERIAL DEVICES]\r\nPORT 2=" + line.path() +
                                                     "\r\n");
    const auto tick = make_system_tick();
    const auto clock = make_system_clock();
    testing::FakeDialogs dialogs;
    dialogs.files.push_back(dir.file("setup.txt"));
    QtEvents events;
    Application app({*tick, *clock, dialogs, events, dir.path()}, open_serial_device);
    app.session.config.gIniFile = dir.file("pelvan7.ini");
    app.channels.init_comms();

    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    layout->addWidget(desktop::make_transfer(
        {[](const std::function<void()>& handler) { handler(); }, &window, nullptr}, app.transfer));
    window.resize(900, 600);
    window.show();
    Repaints repaints;
    window.findChild<QWidget*>("List1")
        ->findChild<QWidget*>("qt_scrollarea_viewport")
        ->installEventFilter(&repaints);
    QCoreApplication::processEvents();

    Slave slave(line);
    const auto begun = SteadyClock::now();
    app.transfer.cmdDownload.press();
    const double taken = Milliseconds(SteadyClock::now() - begun).count();
    slave.stop();
    const bool complete = dialogs.texts().back() == "Downloading Process Complete.";
    const double required = static_cast<double>(slave.times.size()) * kQuietMs +
                            std::accumulate(slave.times.begin(), slave.times.end(), 0.0);
    std::printf(
        "%zu exchanges, %s: %.0f ms, required %.0f ms, %.2f %% more; list painted %d times\n",
        slave.times.size(), complete ? "complete" : "NOT COMPLETE", taken, required,
        100 * (taken - required) / required, repaints.count);
    const double median_required = kQuietMs + median(slave.times);
    const double median_taken = median(events.cycles);
    std::printf(
        "median register: %.2f ms, required %.2f ms, %.2f %% more; of it in events %.2f ms\n",
        median_taken, median_required, 100 * (median_taken - median_required) / median_required,
        median(events.spent));
    qDeleteAll(window.children());
    return complete ? 0 : 1;
}
