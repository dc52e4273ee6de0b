// What saving 500 registers adds to the time that its rules and the line require: the window is on
// the screen and repainted, a slave in a thread answers over a pseudo-terminal when the bytes of
// request and reply would have passed at 9600 baud. Required = the quiet pauses and
// the time of the bytes.
#include <QApplication>
#include <QEvent>
#include <QVBoxLayout>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "app/application.h"
#include "desktop/transfer_window.h"
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
    ~Slave() { thread_.join(); }
    void stop() { stop_ = true; }
    [[nodiscard]] int exchanges() const { return exchanges_; }
    /// Time that the bytes took.
    [[nodiscard]] double line_ms() const { return line_ms_; }

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
            line_ms_ = line_ms_ + Milliseconds(SteadyClock::now() - heard).count();
            line_.send(reply);
            ++exchanges_;
        }
    }
    const testing::PtyPair& line_;
    std::atomic<bool> stop_{false};
    std::atomic<int> exchanges_{0};
    std::atomic<double> line_ms_{0};
    std::thread thread_;
};

class QtEvents : public testing::FakeDesktop {
  public:
    void let_events_run() override {
        const auto begun = SteadyClock::now();
        QCoreApplication::processEvents();
        spent_ms += Milliseconds(SteadyClock::now() - begun).count();
    }
    double spent_ms = 0;
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
    const double required = slave.exchanges() * kQuietMs + slave.line_ms();
    std::printf("%d exchanges, %s: %.0f ms, required %.0f ms, %.2f %% more; "
                "of it in events %.0f ms; list painted %d times\n",
                slave.exchanges(), app.transfer.run().completed ? "complete" : "NOT COMPLETE",
                taken, required, 100 * (taken - required) / required, events.spent_ms,
                repaints.count);
    qDeleteAll(window.children());
    return app.transfer.run().completed ? 0 : 1;
}
