// The monitor on scripted ports, and its window. The settle time is 2 ms, so a burst ends after 8
// ms of silence.
#include <gtest/gtest.h>

#include <algorithm>

#include "listen/listen_form.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

// Worked out apart from the program, ticks rounded to single precision where they are kept so.
TEST(ListenStatisticsTest, AreWorkedOutAndWrittenOverSeveralSessions) {
    ListenStats record;
    ListenStatistics statistics(record);
    const auto after = [&](double start, double end) {
        statistics.add(start, end);
        std::string texts;
        for (const Statistic* statistic : statistics.all())
            texts += statistic->text() + "|";
        return texts;
    };
    statistics.begin(1000);
    EXPECT_EQ(after(1000, 1008), "1|8|0.008|7500|||"); // the first burst has no rates
    EXPECT_EQ(after(1500, 1508), "2|8|0.508|236.220472440945|236|120|");
    EXPECT_EQ(after(1750, 1758), "3|8|0.758|237.467018469657|237|240|");
    EXPECT_EQ(after(3601750, 3601758), "4|8|3600.758|0.0666526325845836|237|240|");
    statistics.begin(3601850); // what is shown stays
    EXPECT_EQ(after(3601850, 3601850), "1|0|0.0000001|600000000|237|240|");
    statistics.clear();
    EXPECT_EQ(after(3601900, 3601908), "2|8|0.058|2068.96551724138|2068|1200|");
    EXPECT_EQ(after(3601900, 3601913), "3|13|0.063|2857.14285714286|2857|600000015|");
    statistics.begin(16777217); // kept as 16777216
    EXPECT_EQ(after(16777217, 16777225), "1|8|0.009|6666.66666666667|2857|600000015|");
    EXPECT_EQ(after(16777467, 16777475), "2|8|0.259|463.320463320463|2857|239|");
    statistics.clear();
    statistics.begin(0);
    for (int hit = 0; hit < 6; ++hit)
        after(hit, 7);
    // Compared and cut as written: the average is 59999.99999999999.
    EXPECT_EQ(after(6, 7), "7|1|0.007|60000|60000|60000|");
}

struct ListenTest : ::testing::Test, SerialRig {
    ListenTest() {
        tick.step_ms = 0.001;
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
        form.Load();
    }
    FakeSerialPort& port() { return static_cast<FakeSerialPort&>(*listen.gListenDevice); }
    /// A burst that arrives whole at this moment of the tick.
    void burst_at(double ms, const std::string& bytes) {
        tick.advance(ms - tick.now());
        port().arrive({0, bytes});
        port().check_receive();
    }
    const std::string& listen_on(int channel) {
        monitor.ListenStart(static_cast<std::int16_t>(channel));
        return status();
    }
    [[nodiscard]] double hits() const { return monitor.statistics().hit_count().value(); }
    /// What the window says, after a look whether it is true.
    [[nodiscard]] const std::string& status() const {
        const std::string& text = form.lbl_Status.Caption();
        EXPECT_EQ(monitor.listening(),
                  text.starts_with("Listening on ") || text.starts_with("Listening waits"))
            << text;
        return text;
    }
    [[nodiscard]] int listed() const {
        EXPECT_EQ(form.lst_Times.ListCount(), form.lst_CommsCommand.ListCount());
        return form.lst_CommsCommand.ListCount();
    }

    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    ListenState listen;
    ListenMonitor monitor{link, modbus, listen, clock, dir.path()};
    Texts lines;
    Subscription added = monitor.line_added.subscribe(
        [this](const std::string& line, const Burst&) { lines.push_back(line); });
    frm_Listen form{services, monitor, [] { return std::int16_t{1}; }};
    const std::string request = frame("01 03 00 64 00 02");
    const std::string reply = frame("01 03 04 02 D5 FF FF");
};

TEST_F(ListenTest, RendersByFormatAndDirectionAndSendsNothing) {
    const std::vector<std::tuple<int, int, std::string, std::string>> cases{
        {0, 0, request, "1 3 100 2 133 212 "},     {0, 1, reply, "1 3 4 725 -1 235 195 "},
        {1, 0, request, "01 03 0064 0002 85 D4 "}, {1, 1, reply, "01 03 04 02D5 FFFF EB C3 "},
        {2, 0, request, "1 3 0 100 0 2 133 212"},  {2, 1, "\xC8", "200"},
    };
    form.mnuStartListen.choose();
    for (const auto& [format, direction, bytes, line] : cases) {
        form.opt_DataFormat.set_Value(format);
        EXPECT_EQ(form.fram_DataDirection.Enabled(), format != 2);
        EXPECT_EQ(form.opt_DataDirection.option(1).enabled, format != 2);
        form.opt_DataDirection.set_Value(direction);
        burst_at(tick.now() + 100, bytes);
        EXPECT_EQ(lines.back(), line) << format << direction;
        EXPECT_EQ(form.lst_CommsCommand.List(form.lst_CommsCommand.ListIndex()), line);
    }
    EXPECT_TRUE(port().outputs.empty());
}

TEST_F(ListenTest, EveryByteRaisesTheEventOnlyWhileListening) {
    listen_on(1);
    EXPECT_EQ(port().RThreshold(), 1);
    int threshold_inside = -1;
    const Subscription adding = monitor.line_added.subscribe(
        [&](const std::string&, const Burst&) { threshold_inside = port().RThreshold(); });
    Subscription failing =
        monitor.hit_counted.subscribe([] { throw RunTimeError(error_number::kDiskFull); });
    EXPECT_EQ(error_of([&] { burst_at(2000, "x"); }), error_number::kDiskFull);
    failing.end();
    EXPECT_EQ(threshold_inside, 0);
    EXPECT_EQ(hits(), 1);
    EXPECT_EQ(port().RThreshold(), 1);
    monitor.ListenStop();
    EXPECT_EQ(port().RThreshold(), 0);
    port().OnComm.raise(); // an event that was on its way
    EXPECT_EQ(lines, Texts{"x"});
}

TEST_F(ListenTest, WindowShowsCopiesAndBeginsAgainWhenOpenedAgain) {
    form.mnuShowTimes.choose();
    form.mnuStartListen.choose();
    EXPECT_EQ(status(), "Listening on channel 1, port 2, 9600,N,8,1.");
    burst_at(2000, request);
    burst_at(2250, "x");
    EXPECT_EQ(form.lst_Times.List(1), "16:30:05.250  +250 ms  no Modbus frame");
    EXPECT_EQ(form.lst_Times.ListIndex(), 1);
    EXPECT_EQ(form.lbl_BurstHitRate.Caption() + form.txt_BurstHitRate.Text(), "Burst Hit Rate240");
    EXPECT_EQ(form.lbl_HitCount.Caption() + form.txt_HitCount.Text(), "Hits2");
    EXPECT_FALSE(form.lst_CommsCommand_KeyDown(true, 'x'));
    EXPECT_FALSE(form.lst_CommsCommand_KeyDown(false, 'c'));
    EXPECT_TRUE(form.lst_CommsCommand_KeyDown(true, 'C'));
    EXPECT_EQ(desktop.clipboard, "1 3 100 2 133 212 \r\nx\r\n");
    // The lists begin again when they hold more than ten thousand lines, or 32 MB.
    for (int i = 2; i < 10001; ++i)
        monitor.line_added.raise("y", {});
    EXPECT_EQ(listed(), 10001);
    monitor.line_added.raise("y", {});
    EXPECT_EQ(listed(), 1);
    for (int i = 0; i < 100; ++i)
        monitor.line_added.raise(std::string(1 << 20, 'z'), {});
    EXPECT_LE(listed(), 34);
    form.mnuExitListen.choose();
    EXPECT_FALSE(monitor.listening());
    const int kept = listed();
    monitor.line_added.raise("of another front end", {});
    EXPECT_EQ(listed(), kept);
    form.Load();
    EXPECT_EQ(listed(), 0);
    EXPECT_TRUE(form.traffic().frames().empty());
    EXPECT_EQ(form.txt_HitCount.Text() + form.txt_BurstHitRate.Text(), "");
    EXPECT_FALSE(form.mnuShowTimes.Checked() || form.lst_Times.Visible());
    EXPECT_EQ(status(), "Not listening.");
}

TEST_F(ListenTest, RightButtonsMenuLogsTheModbusChannelAsLongAsItCan) {
    const Subscription chooses =
        form.pop_up.subscribe([](MenuEntry& menu) { menu.children.at(0)->choose(); });
    form.Form_MouseUp(1);
    EXPECT_FALSE(monitor.options.log_to_file);
    form.Form_MouseUp(2);
    EXPECT_TRUE(form.Loglistenlist.Checked());
    for (const int other : {0, 2}) { // counted, no more
        listen_on(other);
        burst_at(1500 + 100 * other, "unseen");
        EXPECT_EQ(hits(), 1);
    }
    listen_on(1);
    burst_at(2000, request);
    burst_at(2100, "x");
    const std::string file = dir.file(ListenMonitor::kLogFileName);
    EXPECT_EQ(read_file(file), "1 3 100 2 133 212 \r\nx\r\n");
    std::filesystem::remove(file);
    std::filesystem::create_directory(file);
    EXPECT_EQ(error_of([&] { burst_at(2200, "y"); }), error_number::kPathFileAccess);
    EXPECT_FALSE(monitor.options.log_to_file || form.Loglistenlist.Checked());
    EXPECT_EQ(form.lbl_Status.Caption(), "Logging switched off: listenlog.txt cannot be written.");
    burst_at(2300, "z");
    EXPECT_EQ(lines.size(), 4U);
    EXPECT_EQ(hits(), 4);
}

TEST_F(ListenTest, PortFailuresAndRebuildingEndTheListeningAndStartWorksAgain) {
    listen_on(1);
    port().fail_next("InBufferCount", error_number::kCannotReadDevice);
    EXPECT_EQ(error_of([&] { burst_at(2000, "x"); }), error_number::kCannotReadDevice);
    EXPECT_FALSE(port().PortOpen());
    EXPECT_EQ(status(), "Listening stopped: the port failed.");
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    EXPECT_EQ(listen_on(1), "Not listening: the port could not be opened.");
    EXPECT_EQ(dialogs.texts(), Texts{"INVALID PORT NUMBER"});
    listen_on(1);
    rebuild();
    EXPECT_EQ(status(), "Listening stopped: the ports were set up anew.");
    monitor.ListenStop(); // the port is gone
    listen_on(1);
    burst_at(3000, "y");
    EXPECT_EQ(lines, Texts{"y"});
}

TEST_F(ListenTest, ADeviceThatGoesIsWaitedForAndItsLineErrorsAreCountedOn) {
    const std::string listening = listen_on(1);
    EXPECT_EQ(form.lbl_LineErrors.Caption(), "Line errors are not told by the driver.");
    port().errors = {7, 1, 0, 0};
    listen_on(1);
    EXPECT_EQ(form.lbl_LineErrors.Caption(), "No line errors.");
    port().errors->framing = 3;
    burst_at(2000, "x");
    EXPECT_EQ(form.lbl_LineErrors.Caption(), "Line errors: 2 framing.");
    const auto lose = [this] {
        port().line_lost = true;
        port().check_receive();
        port().OnComm.raise(); // as a real port tells its loss
    };
    lose();
    const std::string waits = "Listening waits: the device is gone since 16:30:05. It goes on when "
                              "the device is back.";
    EXPECT_EQ(status(), waits);
    EXPECT_TRUE(dialogs.shown.empty());
    const auto look = [this](double ms) {
        tick.advance(ms);
        form.tmr_Settle.Tick();
        return status();
    };
    for (int i = 0; i < 4; ++i)
        port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    static_cast<void>(link.claim()); // and let go
    for (int i = 0; i < 4; ++i)
        EXPECT_EQ(look(1000), waits);
    port().errors = {0, 0, 0, 0}; // of the new opening
    EXPECT_EQ(look(1000), listening + " The device was gone for 5 s.");
    port().errors->parity = 1;
    burst_at(tick.now() + 10, "y");
    EXPECT_EQ(form.lbl_LineErrors.Caption(), "Line errors: 1 parity, 2 framing.");
    EXPECT_EQ(lines, (Texts{"x", "y"}));
    // Another tool's command meets the loss first, and the device when it is back.
    port().line_lost = true;
    port().fail_next("PortOpen", error_number::kInvalidPortNumber);
    open_port(1);
    EXPECT_EQ(look(10), waits);
    open_port(1);
    EXPECT_EQ(look(61000), listening + " The device was gone for 1 min 1 s.");
    lose();
    monitor.ListenStop();
    EXPECT_EQ(look(1000), "Not listening.");
    monitor.clear();
    EXPECT_EQ(listen_on(1), listening);
}

TEST_F(ListenTest, BytesThatComeWithoutAPauseAreToldOnce) {
    const std::string listening = listen_on(1);
    for (int ms = 0; ms < 3000; ++ms)
        port().arrive({double(ms), "x"});
    tick.advance(1);
    port().check_receive();
    EXPECT_EQ(status(), listening + " Bytes came without a pause, so that a burst was cut.");
    port().check_receive();
    EXPECT_EQ(hits(), 2);
    EXPECT_EQ(listen_on(1), listening);
}

TEST_F(ListenTest, KeepsOffClaimedLinesAndHoldsItsPortsWhileItsMessageStands) {
    LineClaim claim = link.claim();
    EXPECT_EQ(listen_on(1), "Not listening. The line is in use by another window.");
    EXPECT_FALSE(ports[1]->PortOpen());
    claim.release();
    const std::string listening = listen_on(1);
    claim = link.claim();
    burst_at(100, reply);
    EXPECT_EQ(status(), "Listening waits. The line is in use by another window.");
    EXPECT_EQ(hits(), 0) << "an answer to the other tool was taken away";
    table.line_use().changed.raise();
    claim.release();
    EXPECT_EQ(status(), listening);
    burst_at(200, reply);
    EXPECT_EQ(hits(), 1);
    claim = link.claim();
    monitor.ListenStop();
    claim.release();
    EXPECT_EQ(status(), "Not listening.");
    rebuild();
    ports[1]->fail_next("PortOpen", error_number::kPortAlreadyOpen);
    std::size_t built = 0;
    dialogs.on_message = [&](const std::string&) { // a protocol is chosen while the box stands
        table.init_comms();
        built = ports.size();
    };
    EXPECT_TRUE(listen_on(1).starts_with("Not listening"));
    EXPECT_EQ(built, 3U) << "the port under the box was destroyed";
    EXPECT_EQ(ports.size(), 6U);
}

TEST_F(ListenTest, UnknownChannelListensOnChannelZeroAndTwinsOnTheOpenPort) {
    for (const int none : {4, -1}) {
        listen_on(1);
        EXPECT_EQ(error_of([&] { listen_on(none); }), error_number::kSubscript);
        EXPECT_EQ(status(), "Not listening: there is no such channel.");
        EXPECT_EQ(ports[1]->RThreshold(), 0);
    }
    listen_on(3);
    EXPECT_EQ(listen.gListenChannel, 0);
    EXPECT_EQ(&port(), ports[0]);
    build({"1;9600,N,8,1;1", "1;9600,N,8,1;1"});
    open_port(0);
    const std::string listening = listen_on(1);
    EXPECT_EQ(listen.gListenChannel, 1);
    EXPECT_EQ(&port(), ports[0]);
    EXPECT_EQ(port().RThreshold(), 1);
    // Lost while nobody listened: opened again.
    monitor.ListenStop();
    ports[0]->line_lost = true;
    EXPECT_EQ(listen_on(1), listening);
    EXPECT_FALSE(ports[0]->lost());
    // A channel with other settings takes the port, and this one takes it back.
    build({"1;9600,N,8,1;1", "1;4800,N,8,1;1"});
    listen_on(1);
    open_port(0);
    EXPECT_EQ(status(), "Listening stopped: another channel took the port over.");
    listen_on(1);
    table.before_close.raise(*ports[0]); // not the one that is listened on
    EXPECT_TRUE(status().starts_with("Listening on channel 1"));
}

TEST_F(ListenTest, BurstsMayBeHugeBrokenAndEndless) {
    const auto last_size = [this] { return std::ranges::count(lines.back(), ' ') + 1; };
    listen_on(1);
    form.opt_DataFormat.set_Value(2); // a number a byte
    burst_at(2000, std::string(5000, '\1'));
    EXPECT_EQ(last_size(), 5000);
    port().arrive({0, request.substr(0, 4)});
    port().arrive({7, request.substr(4)}); // shorter than the quiet pause
    port().check_receive();
    EXPECT_EQ(lines.back(), "1 3 0 100 0 2 133 212");
    // A line that never falls silent is cut by the time-out; half a second is the first choice.
    for (const auto& [index, ms] : {std::pair{0, 500.0}, {1, 2000.0}, {2, 10000.0}}) {
        form.opt_CharacterDelay.set_Value(index);
        for (int i = 0; i < 2100; ++i)
            port().arrive({i * 5.0, "n"});
        port().check_receive();
        EXPECT_NEAR(static_cast<double>(last_size()), ms / 5, 4);
        tick.advance(11000);
        port().Input();
    }
    // A flood becomes several bursts, none of which grows without end, and loses nothing.
    std::ptrdiff_t received = 0;
    for (int i = 0; i < 10; ++i)
        port().arrive({i * 5.0, std::string(1 << 18, 'n')});
    while (port().InBufferCount() > 0) {
        port().check_receive();
        EXPECT_LE(last_size(), 2 << 20);
        received += last_size();
    }
    EXPECT_EQ(received, 10 << 18);
}

} // namespace pelvan::testing
