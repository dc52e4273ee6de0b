#include "simulator/line/tcp_server.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <future>

#include "support/frames.h"
#include "text/numbers.h"

using namespace pelvan::simulator;
using namespace pelvan::testing;

namespace {

/// A server in a thread of its own, ready when constructed and stopped when it goes.
struct Server {
    explicit Server(TcpServerOptions options) {
        options.settings.baud_rate = 115200;
        std::promise<std::string> reported;
        result = std::async(std::launch::async, [this, options, &reported] {
            return serve_on_tcp(options, stop,
                                [&](const std::string& line) { reported.set_value(line); });
        });
        report = reported.get_future().get();
        port = static_cast<int>(pelvan::leading_number(report.substr(report.rfind("1:") + 2)));
    }
    ~Server() { stop = true; }

    std::string report;
    int port = 0;
    std::atomic<bool> stop{false};
    std::future<int> result; // waits for the thread when it goes
};

struct Client {
    explicit Client(int port) {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        address.sin_port = htons(static_cast<std::uint16_t>(port));
        connected = ::connect(socket, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    }
    ~Client() { ::close(socket); }
    /// Sends, and reads so many bytes, or what comes in 3 s.
    std::string exchange(const std::string& request, std::size_t count) const {
        if (::send(socket, request.data(), request.size(), MSG_NOSIGNAL) < 0) return "gone";
        std::string reply;
        pollfd watched{socket, POLLIN, 0};
        char byte = 0;
        while (reply.size() < count && ::poll(&watched, 1, 3000) > 0 &&
               ::recv(socket, &byte, 1, 0) == 1)
            reply += byte;
        return reply;
    }
    int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    bool connected = false;
};

} // namespace

TEST(TcpServer, ServesOneControllerToSeveralClientsUntilItIsStopped) {
    Server server({*parse_simulated_device("simulated:742"), "127.0.0.1", 0, {}});
    EXPECT_NE(server.report.find("Serving model 742 at address 1 on tcp://127.0.0.1:"),
              std::string::npos);
    EXPECT_NE(server.report.find("to this machine alone"), std::string::npos);
    const std::string write = frame("01 06 01 2C 0D 0A");
    const Client first(server.port);
    {
        const Client second(server.port);
        ASSERT_TRUE(first.connected && second.connected);
        EXPECT_EQ(second.exchange(write, write.size()), write);
    }
    EXPECT_EQ(first.exchange(frame("01 03 01 2C 00 01"), 7), frame("01 03 02 0D 0A"));
    // A port that is taken, and an address that is none of this machine's.
    for (const char* address : {"127.0.0.1", "192.0.2.1", "no such host"}) {
        Server refused({{}, address, server.port, {}});
        refused.stop = true;
        EXPECT_EQ(refused.result.get(), 1) << address;
        EXPECT_NE(refused.report.find("Cannot listen on"), std::string::npos) << refused.report;
    }
    server.stop = true;
    EXPECT_EQ(server.result.get(), 0);
}

TEST(TcpServer, ServesThePlugToAllWhereItIsToldTo) {
    Server server({*parse_simulated_device("simulated:loopback"), "0.0.0.0", 0, {}});
    EXPECT_NE(server.report.find("every machine that reaches"), std::string::npos);
    server.port = static_cast<int>(
        pelvan::leading_number(server.report.substr(server.report.find("0.0.0.0:") + 8)));
    EXPECT_EQ(Client(server.port).exchange("echo\xFF", 5), "echo\xFF");
}
