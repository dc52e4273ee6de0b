#include "listen/listen_form.h"

#include <gtest/gtest.h>

#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

using testing::read_file;
using Texts = std::vector<std::string>;

/// The monitor on scripted ports; settle time 2 ms, so a burst ends after 8 ms of silence.
class ListenTest : public ::testing::Test {
  protected:
    ListenTest() {
        rig.tick.step_ms = 0.001;
        rig.build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
        rig.table.before_rebuild = [this] { form.ports_rebuilt(); };
        rig.table.before_close = [this](SerialPort& port) { form.port_closing(port); };
        form.Load();
    }
    void start(std::int16_t on_channel = 1) {
        channel = on_channel;
        form.mnuStartListen.choose();
    }
    testing::FakeSerialPort& port() { return *rig.ports.at(static_cast<std::size_t>(channel)); }
    /// A burst that arrives whole at this moment of the tick.
    void burst_at(double ms, const std::string& text) {
        rig.tick.advance(ms - rig.tick.now());
        port().arrive({0, text});
        port().check_receive();
    }
    Texts lines() {
        Texts out;
        for (int i = 0; i < form.lst_CommsCommand.ListCount(); ++i)
            out.push_back(form.lst_CommsCommand.List(i));
        return out;
    }
    static double box(const TextBox& from) { return std::stod(from.Text()); }
    /// Hits, highest average and burst rate.
    std::string boxes() {
        return form.txt_HitCount.Text() + "|" + form.txt_MaxHits.Text() + "|" +
               form.txt_BurstHitRate.Text();
    }

    testing::SerialRig rig;
    testing::FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    ListenState state;
    std::int16_t channel = 1;
    frm_Listen form{services, rig.link, modbus, state, [this] { return channel; }};
    const std::string request = testing::frame("01 03 00 64 00 02");
    const std::string reply = testing::frame("01 03 04 02 D5 FF FF");
};

TEST_F(ListenTest, RendersByFormatAndDirectionAndSendsNothing) {
    const std::vector<std::tuple<int, int, std::string, std::string>> cases{
        {0, 0, request, "1 3 100 2 133 212 "},     {0, 1, reply, "1 3 4 725 -1 235 195 "},
        {1, 0, request, "01 03 0064 0002 85 D4 "}, {1, 1, reply, "01 03 04 02D5 FFFF EB C3 "},
        {2, 0, request, "1 3 0 100 0 2 133 212"},  {2, 1, "\xC8", "200"},
    };
    start();
    double at = 2000;
    for (const auto& [format, direction, burst, line] : cases) {
        form.opt_DataFormat.set_Value(format);
        EXPECT_EQ(form.opt_DataDirection.option(1).enabled, format != 2);
        form.opt_DataDirection.set_Value(direction);
        burst_at(at += 100, burst);
        EXPECT_EQ(lines().back(), line) << format << direction;
        EXPECT_EQ(form.lst_CommsCommand.ListIndex(), form.lst_CommsCommand.ListCount() - 1);
    }
    EXPECT_TRUE(port().outputs.empty());
}

TEST_F(ListenTest, EveryByteRaisesTheEventOnlyWhileListening) {
    start();
    EXPECT_EQ(port().RThreshold(), 1);
    int threshold_inside = -1;
    form.lst_CommsCommand.watch_lines(
        [&](ListChange, int) { threshold_inside = port().RThreshold(); });
    burst_at(2000, "x");
    EXPECT_EQ(threshold_inside, 0);
    form.traffic_changed = [](const Burst*) { throw RunTimeError(error_number::kDiskFull); };
    EXPECT_EQ(testing::error_of([&] { burst_at(2100, "w"); }), error_number::kDiskFull);
    form.traffic_changed = nullptr;
    EXPECT_EQ(form.txt_HitCount.Text(), "2");
    EXPECT_EQ(port().RThreshold(), 1);
    form.mnuStopListen.choose();
    EXPECT_EQ(port().RThreshold(), 0);
    burst_at(3000, "y");
    port().OnComm(); // an event that was on its way
    EXPECT_EQ(lines(), (Texts{"x", "w"}));
}

TEST_F(ListenTest, CountsAndTimesASessionAndClearsOnlyWhenToldOrOpenedAgain) {
    form.Loglistenlist.choose();
    form.mnuShowTimes.choose();
    start();
    burst_at(2000, "a");
    EXPECT_EQ(boxes(), "1||");
    EXPECT_NEAR(box(form.txt_LastHitTime), 8, 1);
    burst_at(2500, "b");
    EXPECT_EQ(form.txt_BurstHitRate.Text(), "120");
    burst_at(2750, "c");
    EXPECT_EQ(boxes(), "3|237|240");
    EXPECT_NEAR(box(form.txt_TotalHitTime), 0.758, 0.001);
    EXPECT_NEAR(box(form.txt_HitsPerMinute), 3 * 60000 / 758.0, 1);
    burst_at(2750 + 3600000, "d");
    EXPECT_EQ(boxes(), "4|237|240"); // the highest average and the shortest gap stay
    form.mnuStopListen.choose();
    start();
    burst_at(2850 + 3600000, "e");
    EXPECT_EQ(boxes(), "1|237|240"); // the first burst of a session has no rate
    EXPECT_EQ(lines(), (Texts{"a", "b", "c", "d", "e"}));
    form.mnuClearScreen.choose();
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(boxes(), "||");
    burst_at(2900 + 3600000, "f");
    EXPECT_EQ(form.txt_HitCount.Text(), "2"); // the session goes on
    form.mnuExitListen.choose();
    EXPECT_FALSE(state.gListening);
    form.Load();
    EXPECT_TRUE(lines().empty() && form.traffic().bursts().empty());
    EXPECT_EQ(boxes(), "||");
    EXPECT_FALSE(form.Loglistenlist.Checked() || form.mnuShowTimes.Checked());
    EXPECT_FALSE(form.lst_Times.Visible());
}

TEST_F(ListenTest, TenMinutesOfTrafficAt38400BaudLoseNothing) {
    // At this rate the settle time is 0: a burst ends as soon as nothing waits.
    rig.build({"1;9600,N,8,1;1", "2;38400,N,8,1;1"});
    constexpr int kBytesPerMs = 4; // 3.84
    std::string sent;
    std::string heard;
    form.traffic_changed = [&](const Burst* burst) { heard += burst->bytes; };
    start();
    int bursts = 0;
    for (int ms = 0; ms < 10 * 60000; ++bursts) {
        const int length = 1 + bursts % 380;
        const std::string burst(static_cast<std::size_t>(length), static_cast<char>(bursts * 31));
        sent += burst;
        burst_at(2000 + ms, burst);
        ms += 1 + length / kBytesPerMs;
        // The lists are emptied when they hold more than ten thousand lines.
        ASSERT_EQ(form.lst_CommsCommand.ListCount(), bursts % 10001 + 1);
        ASSERT_EQ(form.lst_Times.ListCount(), bursts % 10001 + 1);
    }
    EXPECT_GT(bursts, 10001);
    EXPECT_TRUE(heard == sent);
    EXPECT_EQ(form.txt_HitCount.Text(), std::to_string(bursts));
}

TEST_F(ListenTest, CopiesOnControlCAndLogsWhenTickedAsLongAsItCan) {
    form.pop_up = [](MenuEntry& menu) { menu.children.at(0)->choose(); };
    form.Form_MouseUp(1);
    EXPECT_FALSE(form.Loglistenlist.Checked());
    form.Form_MouseUp(2);
    EXPECT_TRUE(form.Loglistenlist.Checked());
    for (const std::int16_t other : {std::int16_t{0}, std::int16_t{2}}) { // counted, no more
        start(other);
        burst_at(1500 + 100 * other, "unseen");
        EXPECT_EQ(form.txt_HitCount.Text(), "1");
    }
    start();
    burst_at(2000, request);
    burst_at(2100, "x");
    EXPECT_FALSE(form.lst_CommsCommand_KeyDown(true, 'x') ||
                 form.lst_CommsCommand_KeyDown(false, 'c'));
    EXPECT_TRUE(form.lst_CommsCommand_KeyDown(true, 'C'));
    EXPECT_EQ(desktop.clipboard, "1 3 100 2 133 212 \r\nx\r\n");
    const std::string log = rig.dir.file(frm_Listen::kLogFileName);
    EXPECT_EQ(read_file(log), "1 3 100 2 133 212 \r\nx\r\n");
    std::filesystem::remove(log);
    std::filesystem::create_directory(log);
    EXPECT_NE(testing::error_of([&] { burst_at(2200, "y"); }), 0);
    EXPECT_FALSE(form.Loglistenlist.Checked());
    burst_at(2300, "z");
    EXPECT_EQ(lines().size(), 4U);
}

TEST_F(ListenTest, PortFailuresAndRebuildingEndTheListeningAndStartWorksAgain) {
    start();
    port().fail_next("InBufferCount", error_number::kCannotReadDevice);
    EXPECT_EQ(testing::error_of([&] { burst_at(2000, "x"); }), error_number::kCannotReadDevice);
    EXPECT_FALSE(state.gListening || port().PortOpen());
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    start();
    EXPECT_EQ(rig.dialogs.texts(), Texts{"INVALID PORT NUMBER"});
    EXPECT_FALSE(state.gListening);
    start();
    rig.rebuild();
    EXPECT_FALSE(state.gListening);
    EXPECT_EQ(form.lbl_Status.Caption(), "Listening stopped: the ports were set up anew.");
    form.mnuStopListen.choose(); // the port is gone
    start();
    burst_at(3000, "y");
    EXPECT_EQ(lines(), Texts{"y"});
}

TEST_F(ListenTest, UnknownChannelListensOnChannelZeroAndTwinsOnTheOpenPort) {
    channel = 3;
    form.mnuStartListen.choose();
    EXPECT_EQ(state.gListenChannel, 0);
    EXPECT_EQ(state.gListenDevice, rig.ports[0]);
    rig.build({"1;9600,N,8,1;1", "1;9600,N,8,1;1"});
    std::int16_t zero = 0;
    rig.table.open_port(zero);
    start(1);
    EXPECT_EQ(state.gListenChannel, 1);
    EXPECT_EQ(state.gListenDevice, rig.ports[0]);
    EXPECT_EQ(rig.ports[0]->RThreshold(), 1);
    // Lost while nobody listened: opened anew.
    form.mnuStopListen.choose();
    rig.ports[0]->line_lost = true;
    start(1);
    EXPECT_TRUE(state.gListening);
    EXPECT_FALSE(rig.ports[0]->lost());
    // A channel with other settings takes the port.
    rig.build({"1;9600,N,8,1;1", "1;4800,N,8,1;1"});
    start(1);
    rig.table.open_port(zero);
    EXPECT_FALSE(state.gListening);
    EXPECT_EQ(form.lbl_Status.Caption(), "Listening stopped: another channel took the port over.");
    start(1); // and takes it back
    EXPECT_TRUE(state.gListening);
    start(0);
    form.port_closing(*rig.ports[1]); // not the one that is listened on
    EXPECT_TRUE(state.gListening);
    EXPECT_EQ(state.gListenDevice, rig.ports[0]);
}

TEST_F(ListenTest, BurstsMayBeHugeBrokenAndEndless) {
    start();
    burst_at(2000, std::string(5000, '\1'));
    EXPECT_EQ(form.traffic().bursts().back().bytes.size(), 5000U);
    port().arrive({0, request.substr(0, 4)});
    port().arrive({7, request.substr(4)}); // shorter than the quiet pause
    port().check_receive();
    EXPECT_EQ(lines().back(), "1 3 100 2 133 212 ");
    // A line that never falls silent is cut by the time-out; half a second is the first choice.
    const std::vector<std::pair<int, double>> timeouts{{0, 500}, {1, 2000}, {2, 10000}};
    for (const auto& [index, ms] : timeouts) {
        if (index > 0) form.opt_CharacterDelay.set_Value(index);
        for (int i = 0; i < 2100; ++i)
            port().arrive({i * 5.0, "n"});
        port().check_receive();
        EXPECT_NEAR(static_cast<double>(form.traffic().bursts().back().bytes.size()), ms / 5, 4);
        rig.tick.advance(11000);
        port().Input();
    }
}

} // namespace
} // namespace pelvan
