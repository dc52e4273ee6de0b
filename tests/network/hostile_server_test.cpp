// Servers that serve badly. Everything must end in the number of an error, within its time.
#include <gtest/gtest.h>

#include "network/network_rig.h"
#include "network/tcp_server.h"
#include "platform/run_time_error.h"
#include "support/frames.h"

using namespace pelvan;
using namespace pelvan::testing;

// The library forgets the requests to a server that never answers them.
extern "C" const char* __lsan_default_suppressions() { // NOLINT: the sanitizer's name
    return "leak:libgensio";
}

namespace {

constexpr NetworkPatience kShort{400, 200, 10000};

const std::string kWillComPort = bytes("FF FB 2C");
const std::string kDoComPort = bytes("FF FD 2C");

/// A server's confirmation of a setting.
std::string confirm(const std::string& code_and_value) {
    return bytes("FF FA 2C " + code_and_value + " FF F0");
}

/// Takes part in the agreement and confirms 9600,N,8,1.
void agree(int client) {
    receive_until(client, kWillComPort);
    send_all(client, kDoComPort);
    receive_until(client, bytes("FF FA 2C 04 01 FF F0")); // the last of the format
    send_all(client,
             confirm("65 00 00 25 80") + confirm("66 08") + confirm("67 01") + confirm("68 01"));
}

} // namespace

TEST(HostileServer, OpeningsEndInTheRightNumberWithinTheirTime) {
    struct Case {
        const char* what;
        const char* scheme;
        std::function<void(int)> serve;
        int error;
    };
    const std::string garbage = bytes("00 FF FA FF FF 2C FF FA 2C 65") + std::string(20000, '\xFA');
    const std::vector<Case> cases{
        {"closes at once", "rfc2217", [](int) {}, 8010},
        {"is silent", "rfc2217", wait_for_end, 8015},
        {"sends garbage", "rfc2217",
         [&](int client) {
             send_all(client, garbage);
             wait_for_end(client);
         },
         8015},
        {"refuses", "rfc2217",
         [](int client) {
             send_all(client, bytes("FF FE 2C FF FC 2C"));
             wait_for_end(client);
         },
         8015},
        {"agrees and says no more", "rfc2217",
         [](int client) {
             send_all(client, kDoComPort);
             wait_for_end(client);
         },
         8015},
        {"agrees and goes", "rfc2217",
         [](int client) {
             send_all(client, kDoComPort);
             receive_until(client, bytes("FF FA 2C 04 01 FF F0"));
         },
         8010},
        {"takes another rate", "rfc2217",
         [](int client) {
             send_all(client, kDoComPort);
             receive_until(client, bytes("FF FA 2C 04 01 FF F0"));
             send_all(client, confirm("65 00 00 4B 00") + confirm("66 08") + confirm("67 01") +
                                  confirm("68 01"));
             wait_for_end(client);
         },
         8015},
    };
    for (const Case& row : cases) {
        const TcpServer server(row.serve);
        NetworkRig rig(server.device(row.scheme), kShort);
        const double begun = rig.tick->precise_ms();
        EXPECT_EQ(rig.open(), row.error) << row.what << ": " << rig.lines.trouble(rig.device);
        EXPECT_LT(rig.tick->precise_ms() - begun, 1500) << row.what;
        EXPECT_NE(rig.lines.trouble(rig.device), "") << row.what;
        EXPECT_EQ(rig.port.CommID(), -1);
    }
}

TEST(HostileServer, AnAttemptTellsThatItConnectedAndAsksForAKnownHostNoMore) {
    const TcpServer server(wait_for_end);
    std::string error;
    const OpenNetworkLine open = network_module_in(PELVAN_MODULES)(error);
    ASSERT_NE(open, nullptr) << error;
    NetworkAttempt first;
    first.address =
        parse_network_address("rfc2217://localhost:" + std::to_string(server.port())).value();
    first.timeout_ms = 200;
    NetworkAttempt second;
    second.address = {true, "no-such-host.invalid", server.port()};
    second.timeout_ms = 200;
    for (NetworkAttempt* attempt : {&first, &second}) {
        NetworkOpening opening;
        open(*attempt, opening);
        EXPECT_EQ(attempt->phase, NetworkPhase::Setting) << opening.reason;
        EXPECT_EQ(opening.error, 8015);
        second.looked_up = first.looked_up;
    }
}

TEST(HostileServer, HostsThatAreNotThereAreErrorsOfThePort) {
    // With its queue full a listener lets nobody in and sends nobody away, like a host that is
    // gone.
    const Listener full(0);
    std::vector<std::unique_ptr<NetworkRig>> queue;
    for (int i = 0; i < 3; ++i) {
        queue.push_back(std::make_unique<NetworkRig>(full.device("tcp"), kShort));
        static_cast<void>(queue.back()->open());
    }
    EXPECT_EQ(queue.back()->lines.trouble(full.device("tcp")), "the host does not answer");
    EXPECT_EQ(queue.back()->open(), 8010);

    const int closed = Listener().port();
    NetworkRig refused("rfc2217://127.0.0.1:" + std::to_string(closed));
    EXPECT_EQ(refused.open(), 8010);
    EXPECT_NE(refused.lines.trouble(refused.device).find("no server listens"), std::string::npos);

    NetworkRig unknown("tcp://no-such-host.invalid:4001", kShort);
    const int error = unknown.open(); // without a name server it cannot be told
    EXPECT_TRUE(error == 8002 || error == 8010) << error;
}

TEST(HostileServer, PlainBytesPassAsTheyAreInPiecesAndBothWays) {
    std::string all;
    for (int i = 0; i < 256; ++i)
        all += static_cast<char>(i);
    for (const bool ipv6 : {false, true}) {
        const TcpServer server(
            [&](int client) {
                const std::string got = receive_until(client, all);
                for (const char byte : got)
                    send_all(client, std::string(1, byte));
                wait_for_end(client);
            },
            ipv6);
        if (!server.good()) continue; // no IPv6 on this machine
        NetworkRig rig("tcp://" + std::string(ipv6 ? "[::1]" : "localhost") + ":" +
                       std::to_string(server.port()));
        ASSERT_EQ(rig.open(), 0) << rig.lines.trouble(rig.device);
        EXPECT_GE(rig.port.CommID(), 0);
        EXPECT_EQ(rig.exchange(all, all.size()), all);
        EXPECT_FALSE(rig.port.line_errors());
    }
}

TEST(HostileServer, AServerThatGoesIsALostPortAndMayComeBack) {
    const TcpServer server([](int client) {
        receive_until(client, "?");
        send_all(client, "last");
    });
    NetworkRig rig(server.device("tcp"));
    for (int i = 0; i < 2; ++i) {
        ASSERT_EQ(rig.open(), 0);
        EXPECT_FALSE(rig.port.lost());
        EXPECT_EQ(rig.exchange("?", 4), "last");
        while (!rig.port.lost()) // the farewell may still be on its way
            std::this_thread::yield();
        EXPECT_EQ(error_of([&] { rig.port.set_Output("x"); }), 57);
        static_cast<void>(error_of([&] { rig.port.InBufferCount(); }));
        EXPECT_EQ(error_of([&] { rig.port.InBufferCount(); }), 8020);
        EXPECT_NE(rig.lines.trouble(rig.device).find("lost"), std::string::npos);
        rig.port.set_PortOpen(false);
    }
}

TEST(HostileServer, OneThatGoesInTheMiddleOfAWriteEndsItWithAnError) {
    const TcpServer server([](int client) { // with bytes unread, which resets the connection
        pollfd watched{client, POLLIN, 0};
        ::poll(&watched, 1, 3000);
    });
    NetworkRig rig(server.device("tcp"));
    ASSERT_EQ(rig.open(), 0);
    EXPECT_EQ(error_of([&] { rig.port.set_Output(std::string(20'000'000, 'x')); }), 57);
}

TEST(HostileServer, XoffHoldsAPlainLineIsNoDataAndEndsInAnErrorAtLast) {
    std::string heard;
    const TcpServer server([&](int client) {
        send_all(client, "a\x13"
                         "b"); // XOFF
        pollfd watched{client, POLLIN, 0};
        heard = ::poll(&watched, 1, 100) > 0 ? "not held" : "held";
        send_all(client, "\x11"); // XON
        receive_until(client, "?");
        send_all(client, "done\x13"); // and never XON
        wait_for_end(client);
    });
    NetworkRig rig(server.device("tcp"));
    rig.port.set_Handshaking(1);
    ASSERT_EQ(rig.open(), 0);
    EXPECT_EQ(rig.read(2), "ab");
    EXPECT_EQ(rig.exchange("?", 4), "done");
    EXPECT_EQ(heard, "held");
    EXPECT_EQ(error_of([&] { rig.port.set_Output("x"); }), 57);
    EXPECT_FALSE(rig.port.lost());
}

TEST(HostileServer, Rfc2217CarriesDataWiresAndErrors) {
    std::string wires;
    const TcpServer server([&](int client) {
        send_all(client, "a device that talks before anybody asks\xFF\xFF"); // and goes on
        agree(client);
        receive_until(client, "\xFF\xFF?"); // doubled on the wire
        // Overrun, parity, framing and break of the far port, then data, then parity once more.
        send_all(client, confirm("6A 1E") + "x\xFF\xFFy" + confirm("6A 04"));
        wires = receive_until(client, bytes("FF FA 2C 05 0B FF F0"));
        send_all(client, "end");
        wait_for_end(client);
    });
    NetworkRig rig(server.device("rfc2217"));
    ASSERT_EQ(rig.open(), 0) << rig.lines.trouble(rig.device);
    EXPECT_EQ(rig.port.line_errors(), LineErrors{});
    EXPECT_EQ(rig.exchange("\xFF?", 3), "x\xFFy");
    rig.port.EscapeCommFunction(EscapeCode::CLRDTR);
    rig.port.EscapeCommFunction(EscapeCode::SETRTS);
    EXPECT_EQ(rig.read(3), "end");
    EXPECT_EQ(wires, bytes("FF FA 2C 05 09 FF F0 FF FA 2C 05 0B FF F0"));
    EXPECT_EQ(rig.port.line_errors(), (LineErrors{2, 1, 1, 1}));
}
