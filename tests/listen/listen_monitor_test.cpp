#include "listen/listen_monitor.h"

#include <gtest/gtest.h>

#include "listen_rig.h"
#include "support/error_of.h"

namespace pelvan {
namespace {

using testing::error_of;
using testing::read_file;
using Texts = std::vector<std::string>;

class ListenMonitorTest : public ::testing::Test, public testing::ListenRig {
  protected:
    const std::string request = testing::frame("01 03 00 64 00 02");
    const std::string reply = testing::frame("01 03 04 02 D5 FF FF");
};

TEST_F(ListenMonitorTest, RendersByFormatAndDirectionAndSendsNothing) {
    using enum ListenFormat;
    using enum ListenDirection;
    const std::vector<std::tuple<ListenFormat, ListenDirection, std::string, std::string>> cases{
        {Decimal, ToDevice, request, "1 3 100 2 133 212 "},
        {Decimal, FromDevice, reply, "1 3 4 725 -1 235 195 "},
        {Hex, ToDevice, request, "01 03 0064 0002 85 D4 "},
        {Hex, FromDevice, reply, "01 03 04 02D5 FFFF EB C3 "},
        {Raw, ToDevice, request, "1 3 0 100 0 2 133 212"},
        {Raw, FromDevice, "\xC8", "200"},
    };
    monitor.ListenStart(1);
    for (const auto& [format, direction, bytes, line] : cases) {
        monitor.options = {format, direction, false};
        burst_at(tick.now() + 100, bytes);
        EXPECT_EQ(lines.back(), line);
    }
    EXPECT_TRUE(port().outputs.empty());
}

TEST_F(ListenMonitorTest, EveryByteRaisesTheEventOnlyWhileListening) {
    monitor.ListenStart(1);
    EXPECT_EQ(port().RThreshold(), 1);
    int threshold_inside = -1;
    const Subscription adding = monitor.line_added.subscribe(
        [&](const std::string&, const Burst&) { threshold_inside = port().RThreshold(); });
    burst_at(2000, "x");
    EXPECT_EQ(threshold_inside, 0);
    Subscription failing = monitor.hit_counted.subscribe(
        [](const Burst*) { throw RunTimeError(error_number::kDiskFull); });
    EXPECT_EQ(error_of([&] { burst_at(2100, "w"); }), error_number::kDiskFull);
    failing.end();
    EXPECT_EQ(hits(), "2");
    EXPECT_EQ(port().RThreshold(), 1);
    monitor.ListenStop();
    EXPECT_EQ(port().RThreshold(), 0);
    port().OnComm.raise(); // an event that was on its way
    EXPECT_EQ(lines, (Texts{"x", "w"}));
}

TEST_F(ListenMonitorTest, CountsAndTimesASessionAndForgetsOnlyWhenTold) {
    const auto rates = [this] { return Texts{hits(), statistics()[4], statistics()[5]}; };
    monitor.ListenStart(1);
    burst_at(2000, "a");
    EXPECT_EQ(rates(), (Texts{"1", "", ""}));
    EXPECT_NEAR(std::stod(statistics()[1]), 8, 1);
    burst_at(2500, "b");
    EXPECT_EQ(statistics()[5], "120");
    burst_at(2750, "c");
    EXPECT_EQ(rates(), (Texts{"3", "237", "240"}));
    EXPECT_NEAR(std::stod(statistics()[2]), 0.758, 0.001);
    EXPECT_NEAR(std::stod(statistics()[3]), 3 * 60000 / 758.0, 1);
    burst_at(2750 + 3600000, "d");
    EXPECT_EQ(rates(), (Texts{"4", "237", "240"})); // highest average, shortest gap
    monitor.ListenStop();
    monitor.ListenStart(1);
    burst_at(2850 + 3600000, "e");
    EXPECT_EQ(rates(), (Texts{"1", "237", "240"})); // the first burst of a session has no rate
    monitor.clear();
    EXPECT_EQ(statistics(), Texts(6));
    burst_at(2900 + 3600000, "f");
    EXPECT_EQ(rates(), (Texts{"2", "2068", "1200"})); // the session goes on
    // Written and compared as shown: seven hits in 7 ms are 59999.99999999999 a minute.
    ListenStats record;
    ListenStatistics exact(record);
    exact.begin(0);
    for (int hit = 0; hit < 7; ++hit)
        exact.add(hit, 7);
    EXPECT_EQ(exact.all()[3]->text(), "60000");
    EXPECT_EQ(exact.all()[4]->text(), "60000");
}

TEST_F(ListenMonitorTest, TenMinutesOfTrafficAt38400BaudLoseNothing) {
    // At this rate the settle time is 0: a burst ends as soon as nothing waits.
    build({"1;9600,N,8,1;1", "2;38400,N,8,1;1"});
    monitor.ListenStart(1);
    std::string sent;
    int bursts = 0;
    for (double ms = 0; ms < 10 * 60000; ms += 2 + bursts++ % 380 / 3.84) {
        sent += std::string(1 + static_cast<std::size_t>(bursts % 380), static_cast<char>(bursts));
        burst_at(2000 + ms, sent.substr(sent.size() - 1 - static_cast<std::size_t>(bursts % 380)));
    }
    for (const Burst& burst : monitor.traffic().bursts()) {
        ASSERT_EQ(sent.compare(0, burst.bytes.size(), burst.bytes), 0);
        sent.erase(0, burst.bytes.size());
    }
    EXPECT_EQ(sent, "");
    EXPECT_EQ(hits(), std::to_string(bursts));
}

TEST_F(ListenMonitorTest, LogsTheModbusChannelAsLongAsItCan) {
    monitor.options.log_to_file = true;
    for (const std::int16_t other : {std::int16_t{0}, std::int16_t{2}}) { // counted, no more
        monitor.ListenStart(other);
        burst_at(1500 + 100 * other, "unseen");
        EXPECT_EQ(hits(), "1");
    }
    monitor.ListenStart(1);
    burst_at(2000, request);
    burst_at(2100, "x");
    const std::string file = dir.file(ListenMonitor::kLogFileName);
    EXPECT_EQ(read_file(file), "1 3 100 2 133 212 \r\nx\r\n");
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(error_of([&] { burst_at(2200, "y"); }), error_number::kPathFileAccess);
    EXPECT_FALSE(monitor.options.log_to_file);
    EXPECT_EQ(status, "Logging switched off: listenlog.txt cannot be written.");
    burst_at(2300, "z");
    EXPECT_EQ(lines.size(), 4U);
    EXPECT_EQ(hits(), "4");
}

TEST_F(ListenMonitorTest, PortFailuresAndRebuildingEndTheListeningAndStartWorksAgain) {
    monitor.ListenStart(1);
    port().fail_next("InBufferCount", error_number::kCannotReadDevice);
    EXPECT_EQ(error_of([&] { burst_at(2000, "x"); }), error_number::kCannotReadDevice);
    EXPECT_FALSE(monitor.listening() || port().PortOpen());
    EXPECT_EQ(status, "Listening stopped: the port failed.");
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    monitor.ListenStart(1);
    EXPECT_EQ(dialogs.texts(), Texts{"INVALID PORT NUMBER"});
    EXPECT_FALSE(monitor.listening());
    EXPECT_EQ(status, "Not listening: the port could not be opened.");
    monitor.ListenStart(1);
    EXPECT_EQ(status, "Listening on channel 1, port 2, 9600,N,8,1.");
    rebuild();
    EXPECT_FALSE(monitor.listening());
    EXPECT_EQ(status, "Listening stopped: the ports were set up anew.");
    monitor.ListenStop(); // the port is gone
    monitor.ListenStart(1);
    burst_at(3000, "y");
    EXPECT_EQ(lines, Texts{"y"});
}

TEST_F(ListenMonitorTest, UnknownChannelListensOnChannelZeroAndTwinsOnTheOpenPort) {
    for (const std::int16_t none : {std::int16_t{4}, std::int16_t{-1}}) {
        monitor.ListenStart(1);
        EXPECT_EQ(error_of([&] { monitor.ListenStart(none); }), error_number::kSubscript);
        EXPECT_FALSE(monitor.listening());
        EXPECT_EQ(status, "Not listening: there is no such channel.");
        EXPECT_EQ(ports[1]->RThreshold(), 0);
    }
    monitor.ListenStart(3);
    EXPECT_EQ(listen.gListenChannel, 0);
    EXPECT_EQ(&port(), ports[0]);
    build({"1;9600,N,8,1;1", "1;9600,N,8,1;1"});
    std::int16_t zero = 0;
    table.open_port(zero);
    monitor.ListenStart(1);
    EXPECT_EQ(listen.gListenChannel, 1);
    EXPECT_EQ(&port(), ports[0]);
    EXPECT_EQ(ports[0]->RThreshold(), 1);
    // Lost while nobody listened: opened again.
    monitor.ListenStop();
    ports[0]->line_lost = true;
    monitor.ListenStart(1);
    EXPECT_TRUE(monitor.listening() && !ports[0]->lost());
    // A channel with other settings takes the port, and this one takes it back.
    build({"1;9600,N,8,1;1", "1;4800,N,8,1;1"});
    monitor.ListenStart(1);
    table.open_port(zero);
    EXPECT_FALSE(monitor.listening());
    EXPECT_EQ(status, "Listening stopped: another channel took the port over.");
    monitor.ListenStart(1);
    EXPECT_TRUE(monitor.listening());
    table.before_close.raise(*ports[0]); // not the one that is listened on
    EXPECT_TRUE(monitor.listening());
}

TEST_F(ListenMonitorTest, BurstsMayBeHugeBrokenAndEndless) {
    monitor.ListenStart(1);
    burst_at(2000, std::string(5000, '\1'));
    EXPECT_EQ(monitor.traffic().bursts().back().bytes.size(), 5000U);
    port().arrive({0, request.substr(0, 4)});
    port().arrive({7, request.substr(4)}); // shorter than the quiet pause
    port().check_receive();
    EXPECT_EQ(lines.back(), "1 3 100 2 133 212 ");
    // A line that never falls silent is cut by the time-out; half a second is the first choice.
    const std::vector<std::pair<int, double>> timeouts{{0, 500}, {1, 2000}, {2, 10000}};
    for (const auto& [index, ms] : timeouts) {
        if (index > 0) monitor.choose_timeout(index);
        for (int i = 0; i < 2100; ++i)
            port().arrive({i * 5.0, "n"});
        port().check_receive();
        EXPECT_NEAR(static_cast<double>(monitor.traffic().bursts().back().bytes.size()), ms / 5, 4);
        tick.advance(11000);
        port().Input();
    }
    // A flood becomes several bursts, none of which grows without end.
    constexpr std::size_t kChunk = 1 << 18;
    constexpr int kChunks = 40;
    std::size_t received = 0;
    for (int i = 0; i < kChunks; ++i)
        port().arrive({i * 5.0, std::string(kChunk, 'n')});
    while (received < kChunks * kChunk && port().InBufferCount() > 0) {
        port().check_receive();
        const std::size_t length = monitor.traffic().bursts().back().bytes.size();
        EXPECT_LE(length, std::size_t{2} << 20);
        received += length;
    }
    EXPECT_EQ(received, kChunks * kChunk);
}

} // namespace
} // namespace pelvan
