#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <thread>

#include "bytes.h"
#include "simulator/pty_server.h"
#include "support/temp_dir.h"

using namespace pelvan::simulator;
using pelvan::testing::frame;
using pelvan::testing::hex_of;
using pelvan::testing::read_file;
using pelvan::testing::TempDir;
using pelvan::testing::write_file;

namespace {

/// A server in a thread of its own, ready when constructed and stopped when it goes.
class Server {
  public:
    explicit Server(const PtyServerOptions& options)
        : thread_([this, options] {
              result = serve_on_pty(options, stop_, [this](const std::string& line) {
                  const std::lock_guard lock(mutex_);
                  report_ = line;
                  reported_.notify_one();
              });
          }) {
        std::unique_lock lock(mutex_);
        reported_.wait(lock, [this] { return !report_.empty(); });
    }
    ~Server() { end(); }
    void end() {
        stop_ = true;
        if (thread_.joinable()) thread_.join();
    }
    [[nodiscard]] const std::string& report() const { return report_; }
    int result = -1;

  private:
    std::atomic<bool> stop_{false};
    std::mutex mutex_;
    std::condition_variable reported_;
    std::string report_;
    std::thread thread_;
};

/// Opens, writes, reads so many bytes (or what comes in 3 s), closes.
std::string exchange(const std::string& path, const std::string& request, std::size_t count) {
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    if (fd < 0) return "not opened";
    std::string reply;
    EXPECT_EQ(::write(fd, request.data(), request.size()), static_cast<ssize_t>(request.size()));
    pollfd watched{fd, POLLIN, 0};
    while (reply.size() < count && ::poll(&watched, 1, 3000) > 0) {
        char byte = 0;
        if (::read(fd, &byte, 1) != 1) break;
        reply += byte;
    }
    ::close(fd);
    return reply;
}

} // namespace

TEST(PtyServer, ServesClientsOneAfterAnotherAndTakesItsLinkAway) {
    const TempDir dir;
    const std::string link = dir.file("port");
    Server server({SimulatedDevice{}, link});
    EXPECT_NE(server.report().find(link), std::string::npos);
    // Carriage return, line feed and the control characters of line editing all pass unchanged.
    const std::string write = frame("01 06 01 2C 0D 0A");
    EXPECT_EQ(hex_of(exchange(link, write, 8)), hex_of(write));
    EXPECT_EQ(hex_of(exchange(link, frame("01 03 01 2C 00 01"), 7)),
              hex_of(frame("01 03 02 0D 0A")));
    server.end();
    EXPECT_EQ(server.result, 0);
    EXPECT_NE(::access(link.c_str(), F_OK), 0);
}

TEST(PtyServer, ServesTheLoopBackPlug) {
    const TempDir dir;
    const std::string link = dir.file("port");
    const Server server({parse_simulated_device("simulated:loopback").value(), link});
    EXPECT_EQ(exchange(link, "echo\r\n", 6), "echo\r\n");
}

TEST(PtyServer, ReplacesAStaleLinkButNoFile) {
    const TempDir dir;
    const std::string stale = dir.file("stale");
    ASSERT_EQ(::symlink("/nowhere", stale.c_str()), 0);
    {
        const Server server({SimulatedDevice{}, stale});
        EXPECT_EQ(exchange(stale, frame("01 03 00 00 00 01"), 7), frame("01 03 02 02 E6"));
    }
    const std::string file = dir.file("file");
    write_file(file, "keep");
    Server refused({SimulatedDevice{}, file});
    refused.end();
    EXPECT_EQ(refused.result, 1);
    EXPECT_EQ(read_file(file), "keep");
}
