#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include <filesystem>
#include <future>

#include "simulator/line/pty_server.h"
#include "support/frames.h"
#include "support/temp_dir.h"

using namespace pelvan::simulator;
using namespace pelvan::testing;

namespace {

/// A server in a thread of its own, ready when constructed and stopped when it goes.
struct Server {
    Server(const std::string& device, const std::string& link) {
        const PtyServerOptions options{parse_simulated_device(device).value(), link};
        std::promise<std::string> reported;
        result = std::async(std::launch::async, [this, options, &reported] {
            return serve_on_pty(options, stop,
                                [&](const std::string& line) { reported.set_value(line); });
        });
        report = reported.get_future().get();
    }
    ~Server() { stop = true; }

    std::string report;
    std::atomic<bool> stop{false};
    std::future<int> result; // waits for the thread when it goes
};

/// Opens, writes, reads so many bytes (or what comes in 3 s), closes.
std::string exchange(const std::string& path, const std::string& request, std::size_t count) {
    const int fd = ::open(path.c_str(), O_RDWR | O_NOCTTY);
    if (::write(fd, request.data(), request.size()) < 0) return "not open";
    std::string reply;
    pollfd watched{fd, POLLIN, 0};
    char byte = 0;
    while (reply.size() < count && ::poll(&watched, 1, 3000) > 0 && ::read(fd, &byte, 1) == 1)
        reply += byte;
    ::close(fd);
    return reply;
}

} // namespace

TEST(PtyServer, ServesClientsOneAfterAnotherAndTakesItsLinkAway) {
    const TempDir dir;
    const std::string link = dir.file("port");
    Server server("simulated:742", link);
    EXPECT_NE(server.report.find(link), std::string::npos);
    // Carriage return, line feed and the control characters of line editing all pass unchanged.
    const std::string write = frame("01 06 01 2C 0D 0A");
    EXPECT_EQ(exchange(link, write, 8), write);
    EXPECT_EQ(exchange(link, frame("01 03 01 2C 00 01"), 7), frame("01 03 02 0D 0A"));
    server.stop = true;
    EXPECT_EQ(server.result.get(), 0);
    EXPECT_NE(::access(link.c_str(), F_OK), 0);
}

TEST(PtyServer, ReplacesALinkToAPseudoTerminalAndNothingElse) {
    const TempDir dir;
    const std::string stale = dir.file("stale");
    ASSERT_EQ(::symlink("/dev/pts/98765", stale.c_str()), 0);
    const Server server("simulated:loopback", stale);
    EXPECT_EQ(exchange(stale, "echo\r\n", 6), "echo\r\n");
    write_file(dir.file("file"), "keep");
    const std::vector<std::string> targets{dir.file("file"), "/dev/ttyS0", "/nowhere", "/dev/pts",
                                           "/dev/pts/3/../../null"};
    for (const std::string& target : targets) {
        const std::string link = dir.file("link");
        ASSERT_EQ(::symlink(target.c_str(), link.c_str()), 0);
        Server refused("simulated:742", link);
        refused.stop = true;
        EXPECT_EQ(refused.result.get(), 1) << target;
        EXPECT_NE(refused.report.find(link + " exists"), std::string::npos) << refused.report;
        EXPECT_EQ(std::filesystem::read_symlink(link), target);
        std::filesystem::remove(link);
    }
    Server refused("simulated:742", dir.file("file"));
    refused.stop = true;
    EXPECT_EQ(refused.result.get(), 1);
    EXPECT_EQ(read_file(dir.file("file")), "keep");
}
