// Time from the start of a process to its frame on the screen, and its resident memory then: this
// program against a bare Qt window with an empty multiple-document area, in turn. Needs a display.
// `startup_bench DIRECTORY` starts `startup_bench_bare` and itself in turn; the same source makes
// both.
#include <sys/wait.h>
#include <unistd.h>

#include <QApplication>
#include <QMainWindow>
#include <QMdiArea>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <vector>

#ifndef PELVAN_BENCH_BARE
#include "desktop/windows/main_window.h"
#endif

namespace {

constexpr int kRounds = 21;

double now_ms() {
    return std::chrono::duration<double, std::milli>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

double resident_mib() {
    std::ifstream statm("/proc/self/statm");
    double pages = 0;
    statm >> pages >> pages;
    return pages * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024 * 1024);
}

double processor_ms() {
    return 1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

/// Prints the figures when the first widget has been painted and again when no paint has followed
/// for a moment, then ends the process.
class PaintWatch : public QObject {
  public:
    explicit PaintWatch(double begun) : begun_(begun) {
        settled_.setSingleShot(true);
        settled_.setInterval(kSettleMs);
        connect(&settled_, &QTimer::timeout, this, [this] {
            std::printf("%.3f %.3f %.3f %.3f\n", first_ms_, last_ms_, processor_ms_,
                        resident_mib());
            std::fflush(stdout);
            QCoreApplication::exit(0);
        });
    }

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint)
            QMetaObject::invokeMethod(
                this, [this] { painted(); }, Qt::QueuedConnection);
        return QObject::eventFilter(watched, event);
    }

  private:
    static constexpr int kSettleMs = 300;
    void painted() {
        last_ms_ = now_ms() - begun_;
        processor_ms_ = processor_ms();
        if (first_ms_ == 0) first_ms_ = last_ms_;
        settled_.start();
    }
    double begun_;
    double first_ms_ = 0;
    double last_ms_ = 0;
    double processor_ms_ = 0;
    QTimer settled_;
};

#ifdef PELVAN_BENCH_BARE
int open_window(const char*) {
    QMainWindow window;
    window.setCentralWidget(new QMdiArea(&window));
    window.showMaximized();
    return QApplication::exec();
}
#else
int open_window(const char* directory) {
    pelvan::desktop::MainWindow window(directory);
    window.open();
    return QApplication::exec();
}
#endif

struct Sample {
    double first_ms = 0;
    double last_ms = 0;
    double processor_ms = 0;
    double mib = 0;
};

Sample start(const std::string& program, const std::string& directory) {
    const std::string command =
        program + " " + std::to_string(now_ms()) + " '" + directory + "' 2>/dev/null";
    Sample sample;
    FILE* child = popen(command.c_str(), "r");
    if (child == nullptr || std::fscanf(child, "%lf %lf %lf %lf", &sample.first_ms, &sample.last_ms,
                                        &sample.processor_ms, &sample.mib) != 4)
        std::fprintf(stderr, "no figures from %s\n", program.c_str());
    pclose(child);
    return sample;
}

void print(const char* name, std::vector<Sample> samples) {
    const auto middle = [&](double Sample::*field) {
        std::sort(samples.begin(), samples.end(),
                  [field](const Sample& a, const Sample& b) { return a.*field < b.*field; });
        return samples[samples.size() / 2].*field;
    };
    const double first = middle(&Sample::first_ms);
    const double last = middle(&Sample::last_ms);
    const double processor = middle(&Sample::processor_ms);
    std::printf(
        "%-16s frame painted after %5.1f ms, everything after %5.1f ms (%.1f ms of processor "
        "time), %5.1f MiB resident; medians of %zu\n",
        name, first, last, processor, middle(&Sample::mib), samples.size());
}

} // namespace

int main(int argc, char** argv) {
    if (argc >= 3) {
        PaintWatch watch(std::stod(argv[1]));
        QApplication application(argc, argv);
        application.installEventFilter(&watch);
        return open_window(argv[2]);
    }
    const std::string directory = argc == 2 ? argv[1] : ".";
    const std::string full = argv[0];
    std::vector<Sample> bare_samples;
    std::vector<Sample> full_samples;
    for (int i = 0; i < kRounds; ++i) {
        bare_samples.push_back(start(full + "_bare", directory));
        full_samples.push_back(start(full, directory));
    }
    print("bare Qt window", bare_samples);
    print("Pelvan 7", full_samples);
}
