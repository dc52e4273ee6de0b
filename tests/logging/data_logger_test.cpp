#include <sys/syscall.h>
#include <unistd.h>

#include <set>

#include "logging/logging_rig.h"
#include "logging/row_value.h"
#include "support/cases.h"
#include "support/simulated_ports.h"

static int syncs = 0; // calls of fsync so far

// A definition in the program goes before the C library's.
extern "C" int fsync(int descriptor) {
    ++syncs;
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::cases;
using testing::error_of;
using testing::frame;

const std::string kToFile = "LOG TO FILE=TRUE\r\n";
const std::string kDamaged = "\1\3\2\2\1\1\1";
const std::string kBadCheck = "RESPONSE FROM CONTROLLER HAS CRC ERROR!";
const std::string kBadCount = "Character Count error occurred.  Verify Communications.";

TEST(RowValue, ExceptionsAndPairsOfWordsBecomeNumbers) {
    // One digit of an exception's code is read. The last two are too short to hold a number.
    for (const auto& [text, number] :
         cases("Exception Error: 131 2->-32002|Exception Error: 131 11->-32001|"
               "Exception Error: ->-65536|Error:->-65536"))
        EXPECT_EQ(exception_value(text), number) << text;
    for (const auto& [text, number] :
         cases("1 5->65541| 1 5->65541|0 -1->65535|1 -31072 ->100000|32767 -1->2147483647|"
               "-32768 0->-2147483648|-32002->-32002|->|NO NUMBER 1->NO NUMBER 1|1 ->1 "))
        EXPECT_EQ(join_32_bit(text), number) << "\"" << text << "\"";
    EXPECT_EQ(error_of(join_32_bit, "32768 0"), 6);
}

TEST(RowValue, DecimalPlacesScale) {
    const std::pair<double, const char*> tables[] = {
        {0, "->|-->-|2147483647-> 2147483647"},
        // No 0 that would pass for a reading.
        {1, "725-> 72.5|5-> 0.5| -.5 x->-0.05|no number->no number"},
        {5, "1-> 0.00001"},
        {-4, "-7->-70000"},
    };
    for (const auto& [decimals, table] : tables)
        for (const auto& [text, scaled] : cases(table))
            EXPECT_EQ(scaled_value(text, decimals), scaled) << text;
    EXPECT_EQ(error_of(scaled_value, "1", -400), 6);
}

class DataLoggerTest : public testing::LoggingTest {
  protected:
    DataLoggerTest() { load({"1,3,100,1"}); }
    std::string status() { return status_text(logger.status()); }
};

TEST_F(DataLoggerTest, EachKindOfReplyHasItsValueAndMark) {
    using enum RowState;
    using Reply = std::optional<std::string>;
    const std::vector<std::tuple<std::string, Reply, std::string, RowState>> kinds{
        {"1,3,100,1", {}, " 72.5", Answered},
        {"1,32,200,0", {}, " 65541", Answered},
        {"1,3,999,2", {}, "-320.02", Exception},
        {"1,4,999,0", {}, "-31746", Exception},
        {"1,3,100,0", "", "", Nothing},
        {"1,3,100,0", "\1\3\2", "", Nothing},
        // Late ones, to requests of other rows.
        {"1,3,100,0", frame("02 03 02 00 07"), "", Nothing},
        {"1,3,100,0", frame("01 04 02 00 07"), "", Nothing},
        {"1,3,100,0", frame("02 83 02"), "", Nothing},
        // A damaged reply is told as such, and looks like no reading.
        {"1,3,100,1", kDamaged, kBadCheck, Nothing},
        {"1,32,200,0", "\1\3\4\2\1\1\1\1\1", kBadCheck, Nothing},
        {"1,3,100,1", frame("01 03 04 00 07"), kBadCount, Nothing},
        {"1,3,70000,1", {}, "-9999.9", Nothing},
        {"300,3,100,", {}, "-99999", Nothing},
        {"1,7,100,", {}, "-99999", Nothing},
    };
    for (const auto& [row, reply, text, mark] : kinds) {
        instead = reply;
        load({row});
        logger.RunLoggingPass();
        const bool of_another = reply && reply->size() > 4 && text.empty();
        EXPECT_EQ(reading(1), (LogReading{text, mark, false, of_another})) << row;
    }
    // An unknown command is sent with the count of the row before.
    load({"1,32,200,0", "1,6,300,0"});
    logger.allow_writes();
    logger.RunLoggingPass();
    EXPECT_EQ(sent().back(), frame("01 06 01 2C 00 02"));
}

TEST_F(DataLoggerTest, ASetThatWritesIsAskedAboutBeforeItsFirstPass) {
    const std::string end = " to a controller with every pass, instead of reading. "
                            "Poll this set all the same?";
    for (const std::string command : {"5", "6", "15", "16"}) {
        logger.ReadLogSet(
            set_with({"1,3,100,0", "1," + command + ",300,0"}, "START MODE=AUTO\r\n"));
        EXPECT_FALSE(logger.timer().running() || logger.start());
        EXPECT_EQ(dialogs.texts(), Texts(2, "Row 2 of this log set writes" + end)) << command;
        EXPECT_EQ(seen(), "stands, 0 sent, 0 gathered, 2 shown");
    }
    dialogs.answers = {MessageAnswer::Yes};
    EXPECT_TRUE(logger.start());
    run(20);
    EXPECT_EQ(seen(), "runs, 6 sent, -1 gathered, 1 shown"); // once for all passes
    logger.ReadLogSet(set_with({"1,3,100,0", "1,1,300,0", "1,4,300,0", "1,99999,300,"}));
    EXPECT_EQ(logger.set().writing_rows(), std::vector<int>{});
    logger.ReadLogSet(set_with({"1,6,300,0", "1,6,301,0"}, "START MODE=AUTO\r\n")); // another set
    EXPECT_EQ(dialogs.texts(), Texts{"Rows 1, 2 of this log set write" + end});
    EXPECT_EQ(sent().size(), 6U);
}

TEST_F(DataLoggerTest, WhatIsReadAsAnotherNumberIsToldAndPolled) {
    using Row = std::pair<const char*, const char*>;
    for (const auto& [row, objection] :
         {Row{"1,3,x,0", "the register \"x\" is no number"},
          Row{"1,3,,0", "the register is missing"},
          Row{"1,3,10O,0", "the register \"10O\" is no number"},
          Row{"1,3,1.5,0", "the register \"1.5\" is no whole number"},
          Row{"1 x,3,100,0", "the address \"1 x\" is no number"},
          Row{"40000,3,100,0", "the address \"40000\" is beyond 32767"},
          Row{"1,3x,100,0", "the command \"3x\" is no number"},
          Row{"1,3,100,one", "the decimal places \"one\" are no number"}}) {
        load({"1,3,100,0", row});
        EXPECT_EQ(logger.objections(), Texts{"Row 2: " + std::string(objection) + "."});
    }
    logger.ReadLogSet(set_with({"1,3,1.5,0"}, "START MODE=AUTO\r\n"));
    EXPECT_EQ(seen(), "runs, 1 sent, 0 gathered, 0 shown") << "register 2, as it always was";
    // Out of range is no other number, and a row that is not in use stops nobody.
    load({"1,3, 100 ,", "300,3,70000,9", "1,3,-1,0", "1,3,x,0"});
    logger.take_rows_out_of_use();
    EXPECT_EQ(logger.objections(), Texts{});
}

TEST_F(DataLoggerTest, LinesNeverGoIntoTheSetOrTheConfiguration) {
    testing::write_file(config.gIniFile, "[COMMS CONTROLS]\r\n");
    std::filesystem::create_symlink(set_file, dir.file("link"));
    for (const auto& [file, what] : {std::pair{dir.file("link"), "set file itself"},
                                     std::pair{config.gIniFile, "configuration of the program"}}) {
        load({"1,3,100,0"}, kToFile);
        const std::string before =
            testing::read_file(set_file) + testing::read_file(config.gIniFile);
        start(1);
        logger.set_file_name(file);
        run(1);
        EXPECT_EQ(dialogs.texts(),
                  Texts{"The log file " + file + " is the " + what + ": choose another."});
        EXPECT_FALSE(logger.timer().running() || logger.FlushLogBuffer());
        EXPECT_EQ(testing::read_file(set_file) + testing::read_file(config.gIniFile), before);
        seen();
    }
    logger.set_file_name(log_file);
    EXPECT_TRUE(logger.FlushLogBuffer());
}

TEST_F(DataLoggerTest, ShortIntervalsGatherAHundredLines) {
    logger.set_log_to_file(true);
    start(5);
    EXPECT_EQ(lines(98 * 5), 0);
    syncs = 0;
    EXPECT_EQ(lines(5), 100);
    EXPECT_EQ(syncs, 1); // a line that counts as written survives a loss of power
    EXPECT_EQ(lines(5), 100);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 101);
    logger.close(); // the same line once more
    EXPECT_EQ(lines(), 102);
}

TEST_F(DataLoggerTest, LoadingASetWritesWhatWasGatheredAndMayStartTheTimer) {
    testing::write_file(config.gIniFile, "[COMMS CONTROLS]\r\nTIMER OFFSET=990\r\n");
    logger.read_tick_length();
    EXPECT_EQ(logger.timer().tick_ms(), 990);
    logger.set_log_to_file(true);
    start(2);
    run(1);
    logger.ReadLogSet(set_with({"1,3,101,0"}, kToFile));
    EXPECT_EQ(log_text(), "11-15-2026, 16:30:05,  1,  100,  72.5\r\n");
    EXPECT_EQ(logger.timer().ticks(), 0);
    logger.ReadLogSet(set_with({"1,3,101,0"}, "START MODE=auto\r\n")); // its lines go nowhere
    EXPECT_EQ(lines(), 1);
    EXPECT_EQ(seen(), "stands, 1 sent, 1 gathered, 0 shown");
    int passes = 0;
    const auto counted = logger.pass_done.subscribe([&] { ++passes; });
    logger.ReadLogSet(set_with({"1,3,100,0"}, "LOGGING INTERVAL=2\r\nSTART MODE=AUTO\r\n"));
    EXPECT_EQ(reading(1).value, " 725");
    run(4);
    EXPECT_EQ(seen(), "runs, 4 sent, 1 gathered, 0 shown");
    EXPECT_EQ(passes, 3);
    logger.ReadLogSet(dir.file("missing.PV5"));
    EXPECT_EQ(logging.gLogFileName, dir.file("DATASET.LOG"));
    EXPECT_EQ(reading(1).value, "");
    EXPECT_FALSE(logger.timer().running());
}

TEST_F(DataLoggerTest, TicksCountBetweenPassesOnly) {
    int starts = 0;
    const auto watched =
        logger.timer_changed.subscribe([&] { starts += logger.timer().running() ? 1 : 0; });
    start(10);
    EXPECT_EQ(status(), "Last pass 16:30:05, 0.06 s. Next pass in 10 s. Lines waiting: 0.");
    run(3);
    EXPECT_EQ(status(), "Last pass 16:30:05, 0.06 s. Next pass in 7 s. Lines waiting: 0.");
    exchange_ms = 11000;
    run(7);
    EXPECT_EQ(starts, 11); // each time once, with a pass or without
    const std::string long_pass = "Last pass 16:30:05, 11.06 s (longer than the interval). ";
    EXPECT_EQ(status(), long_pass + "Next pass in 10 s. Lines waiting: 0.");
    run(8);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(seen(), "stands, 2 sent, -1 gathered, 0 shown");
    // A start counts from its own pass on, however much was counted before.
    start(5);
    EXPECT_EQ(status(), long_pass + "Next pass in 5 s. Lines waiting: 0.");
    run(5 + 3);
    // An interval that becomes shorter than what was counted is never met.
    logger.set_interval(2);
    run(50);
    EXPECT_EQ(seen(), "runs, 4 sent, -1 gathered, 0 shown");
    EXPECT_EQ(status(), long_pass + "Next pass: never, the interval is not longer than the 53 ticks"
                                    " counted already. Lines waiting: 0.");
}

TEST_F(DataLoggerTest, APassThatIsEndedLeavesItsOtherRowsOut) {
    load({"1,3,100,0", "1,3,100,0", "1,3,100,0"}, kToFile);
    logger.set_single_line(true);
    const auto ended = logger.before_row.subscribe([&](int row) {
        if (row != 2) return;
        logger.end_pass();
        EXPECT_TRUE(logger.stop()); // the timer stays stopped behind the pass
    });
    start(1);
    EXPECT_EQ(seen(), "stands, 1 sent, -1 gathered, 0 shown"); // half a record would mislead
    EXPECT_EQ(reading(2).state, RowState::NotPolled);
}

TEST_F(DataLoggerTest, APassIsSkippedAndCountedWhileAnotherToolHasTheLine) {
    load({"1,3,100,0"}, kToFile);
    start(1);
    {
        const LineUser other{"Save/Restore Setup"};
        const LineClaim claim = table.line_use().claim(other);
        run(2);
        EXPECT_EQ(seen(), "runs, 1 sent, 1 gathered, 0 shown");
        EXPECT_EQ(reading(1), (LogReading{" 725", RowState::LineInUse}));
        EXPECT_EQ(logger.port_message(), "Pass skipped: The line is in use by Save/Restore Setup.");
        EXPECT_TRUE(status().ends_with("Lines waiting: 1. Passes skipped: 2."));
    }
    run(1);
    EXPECT_EQ(seen(), "runs, 2 sent, 2 gathered, 0 shown");
    EXPECT_EQ(reading(1).state, RowState::Answered);
    EXPECT_EQ(logger.port_message(), "");
}

TEST_F(DataLoggerTest, AFileThatCannotBeWrittenWarnsAndKeepsTheLines) {
    const std::string folder = dir.file("missing");
    log_file = folder + "/log.txt";
    logger.set_log_to_file(true);
    logger.set_file_name(log_file);
    dialogs.on_message = [&](const std::string&) {
        EXPECT_FALSE(logger.timer().running());
        logger.RunLoggingPass(); // a tick while the box stands
    };
    start(10);
    run(20);
    EXPECT_EQ(dialogs.texts(), Texts(3, "The data could not be written to the specified file."));
    EXPECT_EQ(dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(seen(), "runs, 3 sent, 3 gathered, 3 shown");
    std::filesystem::create_directory(folder);
    EXPECT_EQ(lines(10), 4);
    std::filesystem::remove_all(folder);
    // As many of the newest are kept as leave room for a pass of all rows, and logging goes on.
    run(10 * 101);
    clock.time.hour = 17;
    run(10 * 150);
    EXPECT_EQ(seen(), "runs, 255 sent, 102 gathered, 251 shown");
    dialogs.on_message = {};
    EXPECT_FALSE(logger.stop()); // lines wait that could not be written
    std::filesystem::create_directory(folder);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 102);
    EXPECT_EQ(log_text().find("16:30"), std::string::npos);
}

/// Through the night: the real link on simulated controllers.
class OvernightTest : public testing::LoggingTest {
  protected:
    void start(const std::string& device, int seconds) {
        testing::configure_devices(dir, {"simulated:loopback", device});
        table.init_comms();
        load({"1,3,0", "1,3,300"}, kToFile);
        LoggingTest::start(seconds);
    }

    testing::SimulatedPorts simulated{*this};
};

TEST_F(OvernightTest, TwelveHoursWithLostRepliesLoseNoPass) {
    constexpr int kTicks = 12 * 3600;
    tick.step_ms = 5;
    tick.advance(4294967295.0 - 3600000); // wraps in the first hour
    int passes = 0;
    int silent = 0;
    const auto counted = logger.pass_done.subscribe([&] {
        ++passes;
        for (const int row : {1, 2})
            silent += reading(row).state == RowState::Nothing ? 1 : 0;
    });
    start("simulated:742,lost=0.01,seed=7", 30);
    run(60);
    const std::size_t slots = state.gTimerStart.size();
    run(kTicks - 60);
    EXPECT_EQ(passes, kTicks / 30 + 1);
    EXPECT_EQ(lines(), passes * 2);
    EXPECT_NEAR(silent, passes * 2 * 0.01, passes * 0.01);
    EXPECT_EQ(state.gTimerStart.size(), slots);
    EXPECT_TRUE(dialogs.shown.empty());
    // The trend's time goes on across the wrap of the tick.
    const TrendSpan span = logger.trend().span();
    EXPECT_GT(span.to_ms - span.from_ms, kTicks * 1000.0 - 10000);
}

TEST_F(OvernightTest, ALateReplyIsNotTakenForTheNextRows) {
    using Values = std::set<std::string>;
    for (const std::string lateness :
         {"late_ms=2100,late=1,only=3", "late_ms=2100,late=1", "late_ms=2300,late=1",
          "late_ms=2600,late=1", "late_ms=3100,late=1", "late_ms=4200,late=1",
          "late_ms=2100,late=0.3,seed=7"}) {
        Values first;
        Values second;
        const auto watched = logger.pass_done.subscribe([&] {
            first.insert(reading(1).value);
            second.insert(reading(2).value);
        });
        // It answers each request in turn, after the time-out of 2000 ms.
        start("simulated:742,queue=1," + lateness, 6);
        run(6 * 40);
        const bool answers = !lateness.ends_with("late=1");
        EXPECT_EQ(first, answers ? Values({"", " 742"}) : Values({""})) << lateness;
        second.erase("");
        EXPECT_EQ(second.size(), answers ? 1U : 0U) << lateness;
        EXPECT_EQ(second.count(" 742"), 0U) << lateness;
    }
}

TEST_F(OvernightTest, APortThatIsUnpluggedHoldsNothingAndComesBack) {
    int error = 0; // of the device; 0: there is a controller
    simulated.open_line = [&](const std::string&, const LineSettings& settings) {
        if (error != 0) throw RunTimeError(error);
        return simulated.simulators.open("simulated:742", settings);
    };
    start("/dev/adapter", 6);
    // The device's node may outlive the device, and opening it then is worth a try at any time.
    for (const int cause : {error_number::kInvalidPortNumber, error_number::kDeviceUnavailable}) {
        EXPECT_EQ(reading(1), (LogReading{" 742", RowState::Answered}));
        EXPECT_EQ(logger.port_message(), "");
        error = cause;
        table.init_comms(); // the port has to be opened again
        run(12);
        EXPECT_TRUE(dialogs.shown.empty()); // a box would hold the logging until it is answered
        EXPECT_NE(logger.port_message(), "");
        EXPECT_EQ(reading(1).state, RowState::Nothing);
        error = 0;
        run(6);
        EXPECT_EQ(logger.port_message(), "Port: The device was gone for 12 s.");
        run(6);
        EXPECT_EQ(logger.outage(), "The device was gone for 12 s, until 16:30:05.");
    }
    EXPECT_EQ(reading(1), (LogReading{" 742", RowState::Answered}));
    EXPECT_EQ(logger.port_message(), "");
}

TEST_F(OvernightTest, AHostThatTakesTimeToSayNoIsAskedOnceAPass) {
    int openings = 0;
    simulated.open_line = [&](const std::string&, const LineSettings& settings) {
        if (++openings > 2) return simulated.simulators.open("simulated:742", settings);
        tick.advance(2000);
        throw RunTimeError(error_number::kHardwareNotAvailable);
    };
    start("tcp://host:4001", 6);
    for (const int pass : {1, 2}) {
        EXPECT_EQ(openings, pass);
        for (const int row : {1, 2})
            EXPECT_EQ(reading(row), LogReading{}) << "row " << row << " of pass " << pass;
        EXPECT_TRUE(logger.port_message().starts_with("Port: THE HARDWARE IS NOT AVAILABLE"));
        run(6);
    }
    EXPECT_EQ(reading(1), (LogReading{" 742", RowState::Answered}));
    EXPECT_EQ(reading(2).state, RowState::Answered);
}

TEST_F(OvernightTest, APortThatOpensInTheMiddleOfAPassSaysSoBehindItsError) {
    int openings = 0;
    simulated.open_line = [&](const std::string&, const LineSettings& settings) {
        if (++openings <= 3) throw RunTimeError(error_number::kInvalidPortNumber);
        return simulated.simulators.open("simulated:742", settings);
    };
    start("/dev/adapter", 6); // two rows
    EXPECT_EQ(logger.port_message(), "Port: INVALID PORT NUMBER");
    run(6);
    EXPECT_EQ(logger.port_message(), "Port: INVALID PORT NUMBER. The port could not be opened for "
                                     "6 s; it is open now.");
    EXPECT_EQ(logger.outage(), "The port could not be opened for 6 s, until 16:30:05.");
}

} // namespace
} // namespace pelvan
