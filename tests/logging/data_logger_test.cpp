#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "logging/logging_rig.h"
#include "support/file_size_limit.h"

namespace {
int syncs = 0;
}

/// Stands before the system library's in this program, to tell whether files are brought to disk.
extern "C" int fsync(int descriptor) {
    ++syncs;
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace pelvan {
namespace {

using testing::error_of;
using testing::read_file;
using testing::write_file;

constexpr char kNow[] = "11-15-2026, 16:30:05";
constexpr char kBadCheck[] = "RESPONSE FROM CONTROLLER HAS CRC ERROR!";
constexpr char kBadCount[] = "Character Count error occurred.  Verify Communications.";

class DataLoggerTest : public testing::LoggingTest {
  protected:
    DataLoggerTest() { load({"1,3,100,1"}); }
    bool status_says(const std::string& text) {
        return status_text(logger.status()).find(text) != std::string::npos;
    }
};

TEST_F(DataLoggerTest, BothLineLayouts) {
    load({"1,3,100,1", "1,3,101,"}, "LOG TO FILE=TRUE\r\n");
    start(6); // every pass is written at once
    EXPECT_EQ(log_text(),
              kNow + std::string(",  1,  100,  72.5\r\n") + kNow + ",  1,  101,  0\r\n");
    logger.set_single_line(true);
    std::filesystem::remove(log_file);
    tick(6);
    EXPECT_EQ(log_text(), kNow + std::string(",  1,  100,  72.5,  1,  101,  0\r\n"));
    link.corrupted = "\1\3\2\2\1\1\1";
    std::filesystem::remove(log_file);
    tick(6);
    EXPECT_EQ(log_text(),
              kNow + std::string(",  1,  100, ") + kBadCheck + ",  1,  101, " + kBadCheck + "\r\n");
}

TEST_F(DataLoggerTest, EachKindOfReplyHasItsValueAndMark) {
    using enum RowState;
    using Reply = std::optional<std::string>;
    const std::vector<std::tuple<std::string, Reply, std::string, RowState>> cases{
        {"1,3,100,1", {}, " 72.5", Answered},
        {"1,32,200,0", {}, " 65541", Answered},
        {"1,3,999,2", {}, "-320.02", Exception},
        {"1,4,999,0", {}, "-31746", Exception},
        {"1,3,100,0", "", "", Nothing},
        {"1,3,100,0", "\1\3\2", "", Nothing},
        // Late ones, to requests of other rows.
        {"1,3,100,0", testing::frame("02 03 02 00 07"), "", Nothing},
        {"1,3,100,0", testing::frame("01 04 02 00 07"), "", Nothing},
        {"1,3,100,0", testing::frame("02 83 02"), "", Nothing},
        // A damaged reply is told as such, and looks like no reading.
        {"1,3,100,1", "\1\3\2\2\1\1\1", kBadCheck, Nothing},
        {"1,32,200,0", "\1\3\4\2\1\1\1\1\1", kBadCheck, Nothing},
        {"1,3,100,1", testing::frame("01 03 04 00 07"), kBadCount, Nothing},
        {"1,3,70000,1", {}, "-9999.9", Nothing},
        {"300,3,100,", {}, "-99999", Nothing},
        {"1,7,100,", {}, "-99999", Nothing},
    };
    for (const auto& [row, reply, text, mark] : cases) {
        link.corrupted = reply;
        load({row});
        logger.RunLoggingPass();
        EXPECT_EQ(logger.reading(1), (LogReading{text, mark})) << row;
    }
    // An unknown command is sent with the count of the row before.
    load({"1,32,200,0", "1,6,300,0"});
    logger.allow_writes();
    logger.RunLoggingPass();
    EXPECT_EQ(link.sent.back(), testing::frame("01 06 01 2C 00 02"));
}

TEST_F(DataLoggerTest, ASetThatWritesIsAskedAboutBeforeItsFirstPass) {
    using enum MessageAnswer;
    const auto asked = [&] { return std::exchange(rig.dialogs.shown, {}).size(); };
    const std::string automatic = "START MODE=AUTO\r\n";
    for (const std::string command : {"5", "5.5", "6", "15", "16"}) {
        logger.ReadLogSet(set_with({"1,3,100,0", "1," + command + ",300,0"}, automatic));
        EXPECT_EQ(rig.dialogs.shown.at(0).text.find("Row 2 of this log set writes"), 0U);
        EXPECT_EQ(asked(), 1U) << command;
        EXPECT_FALSE(logger.timer().running());
        EXPECT_FALSE(logger.start());
        EXPECT_EQ(asked(), 1U);
        EXPECT_TRUE(link.sent.empty());
    }
    rig.dialogs.answers = {Yes};
    EXPECT_TRUE(logger.start());
    tick(20);
    EXPECT_EQ(asked(), 1U); // once for all passes
    EXPECT_EQ(link.sent.size(), 6U);
    logger.ReadLogSet(set_with({"1,3,100,0", "1,1,300,0", "1,4,300,0", "1,99999,300,"}));
    EXPECT_EQ(logger.set().writing_rows(), std::vector<int>{});
    EXPECT_EQ(asked(), 0U);
    logger.ReadLogSet(set_with({"1,6,300,0", "1,6,301,0"}, automatic)); // another set
    EXPECT_EQ(rig.dialogs.shown.at(0).text.find("Rows 1, 2 of this log set write"), 0U);
    EXPECT_EQ(link.sent.size(), 6U);
}

TEST_F(DataLoggerTest, ShortIntervalsGatherAHundredLines) {
    logger.set_log_to_file(true);
    start(5);
    tick(98 * 5);
    EXPECT_FALSE(std::filesystem::exists(log_file));
    syncs = 0;
    tick(5);
    EXPECT_EQ(lines(), 100);
    EXPECT_EQ(syncs, 1); // a line that counts as written survives a loss of power
    tick(5);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 101);
    logger.close(); // the same line once more
    EXPECT_EQ(lines(), 102);
}

TEST_F(DataLoggerTest, LoadingASetWritesWhatWasGathered) {
    logger.set_log_to_file(true);
    start(2);
    tick(1);
    logger.ReadLogSet(set_with({"1,3,101,0"}, "LOG TO FILE=TRUE\r\n"));
    EXPECT_EQ(log_text(), kNow + std::string(",  1,  100,  72.5\r\n"));
    EXPECT_FALSE(logger.timer().running());
    EXPECT_EQ(logger.timer().ticks(), 0);
    logger.ReadLogSet(set_with({"1,3,101,0"})); // its lines go nowhere
    EXPECT_EQ(lines(), 1);
}

TEST_F(DataLoggerTest, AnAutomaticSetStartsTheTimerWithAPass) {
    write_file(rig.config.gIniFile, "[COMMS CONTROLS]\r\nTIMER OFFSET=990\r\n");
    logger.read_tick_length();
    EXPECT_EQ(logger.timer().tick_ms(), 990);
    int passes = 0;
    const auto counted = logger.pass_done.subscribe([&] { ++passes; });
    logger.ReadLogSet(set_with({"1,3,100,0"}, "LOGGING INTERVAL=2\r\nSTART MODE=AUTO\r\n"));
    EXPECT_EQ(value(1), " 725");
    EXPECT_TRUE(logger.timer().running());
    tick(4);
    EXPECT_EQ(passes, 3);
    logger.ReadLogSet(set_with({"1,3,100,0"}, "START MODE=auto\r\n"));
    EXPECT_FALSE(logger.timer().running());
    EXPECT_EQ(value(1), "");
}

TEST_F(DataLoggerTest, TicksCountBetweenPassesOnly) {
    int starts = 0;
    const auto watched =
        logger.timer_changed.subscribe([&] { starts += logger.timer().running() ? 1 : 0; });
    start(10);
    EXPECT_EQ(status_text(logger.status()),
              "Last pass 16:30:05, 0.08 s. Next pass in 10 s. Lines waiting: 0.");
    tick(3);
    EXPECT_EQ(link.sent.size(), 1U);
    EXPECT_TRUE(status_says("Next pass in 7 s."));
    link.exchange_ms = 11000;
    tick(7);
    EXPECT_EQ(starts, 11); // each time once, with a pass or without
    EXPECT_EQ(link.sent.size(), 2U);
    EXPECT_TRUE(status_says("11 s (longer than the interval)"));
    tick(8);
    EXPECT_TRUE(logger.stop());
    EXPECT_FALSE(logger.timer().running());
    // A start counts from its own pass on, however much was counted before.
    start(5);
    EXPECT_TRUE(status_says("Next pass in 5 s."));
    tick(5);
    EXPECT_EQ(link.sent.size(), 4U);
    // An interval that becomes shorter than what was counted is never met.
    tick(3);
    logger.set_interval(2);
    tick(50);
    EXPECT_EQ(link.sent.size(), 4U);
    EXPECT_TRUE(status_says("Next pass: never"));
}

TEST_F(DataLoggerTest, APassThatIsEndedLeavesItsOtherRowsOut) {
    load({"1,3,100,0", "1,3,100,0", "1,3,100,0"}, "LOG TO FILE=TRUE\r\n");
    logger.set_single_line(true);
    const auto ended = logger.before_row.subscribe([&](int row) {
        if (row != 2) return;
        logger.end_pass();
        EXPECT_TRUE(logger.stop()); // the timer stays stopped behind the pass
    });
    start(1);
    EXPECT_EQ(link.sent.size(), 1U);
    EXPECT_EQ(logger.reading(2).state, RowState::NotPolled);
    EXPECT_FALSE(logger.timer().running());
    EXPECT_EQ(state.gLogBufferCount, -1); // half a record would mislead
}

TEST_F(DataLoggerTest, APassIsSkippedAndCountedWhileAnotherToolHasTheLine) {
    load({"1,3,100,0"}, "LOG TO FILE=TRUE\r\n");
    start(1);
    const LineUser other{"Save/Restore Setup"};
    {
        const LineClaim claim = rig.table.line_use().claim(other);
        tick(2);
        EXPECT_EQ(link.sent.size(), 1U);
        EXPECT_EQ(value(1), " 725");
        EXPECT_EQ(logger.reading(1).state, RowState::LineInUse);
        EXPECT_EQ(logger.port_message(), "Pass skipped: The line is in use by Save/Restore Setup.");
        EXPECT_TRUE(status_says("Passes skipped: 2."));
        EXPECT_EQ(state.gLogBufferCount, 1);
    }
    tick(1);
    EXPECT_EQ(link.sent.size(), 2U);
    EXPECT_EQ(logger.reading(1).state, RowState::Answered);
    EXPECT_EQ(logger.port_message(), "");
}

TEST_F(DataLoggerTest, TheBufferOverflowsAtThe203rdLineAndLoggingStops) {
    int stops = 0;
    const auto watched = logger.stopped.subscribe([&] { ++stops; });
    logger.set_single_line(true); // records are gathered though nothing goes to a file
    start(1);
    tick(201);
    EXPECT_EQ(error_of([&] { tick(1); }), 9);
    EXPECT_FALSE(logger.timer().running());
    EXPECT_EQ(stops, 1);
    EXPECT_FALSE(logger.in_pass());
    logger.set_log_to_file(true);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 202);
}

TEST_F(DataLoggerTest, AFileThatCannotBeWrittenWarnsAndKeepsTheLines) {
    const std::string folder = rig.dir.file("missing");
    log_file = folder + "/log.txt";
    const auto warnings = [&] { return std::exchange(rig.dialogs.shown, {}).size(); };
    logger.set_log_to_file(true);
    logger.set_file_name(log_file);
    rig.dialogs.on_message = [&](const std::string&) {
        EXPECT_FALSE(logger.timer().running());
        logger.RunLoggingPass(); // a tick while the box stands
    };
    start(10);
    tick(20);
    EXPECT_EQ(link.sent.size(), 3U);
    EXPECT_EQ(rig.dialogs.shown.at(0).text, "The data could not be written to the specified file.");
    EXPECT_EQ(rig.dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(warnings(), 3U);
    EXPECT_TRUE(logger.timer().running());
    std::filesystem::create_directory(folder);
    tick(10);
    const std::string text = log_text();
    EXPECT_EQ(lines(), 4);
    {
        // A disk that fills in the middle of a line leaves no part of it.
        const testing::FileSizeLimit full(text.size() + 5);
        tick(10);
    }
    EXPECT_EQ(warnings(), 1U);
    EXPECT_EQ(log_text(), text);
    std::filesystem::remove_all(folder);
    // As many of the newest are kept as leave room for a pass of all rows, and logging goes on.
    tick(10 * 101);
    rig.clock.time.hour = 17;
    tick(10 * 150);
    EXPECT_EQ(warnings(), 251U);
    rig.dialogs.on_message = {};
    EXPECT_FALSE(logger.stop()); // lines wait that could not be written
    std::filesystem::create_directory(folder);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 102);
    EXPECT_EQ(log_text().find("16:30"), std::string::npos);
}

} // namespace
} // namespace pelvan
