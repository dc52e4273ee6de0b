#include <gtest/gtest.h>

#include "logging/logging_rig.h"
#include "support/file_size_limit.h"

namespace pelvan {
namespace {

using testing::error_of;
using testing::read_file;

constexpr char kNow[] = "11-15-2026, 16:30:05";

class LoggingCycleTest : public testing::LoggingTest {
  protected:
    LoggingCycleTest() {
        link.registers = {{100, "02 D5"}, {101, "00 00"}, {200, "00 01 00 05"}};
        use_row(1, "1,3,100,1");
    }
    void start(int seconds) {
        form.scrl_LoggingInterval[2].set_Value(seconds);
        form.mnuStartLogging.choose();
    }
    static std::ptrdiff_t lines_of(const std::string& text) {
        return std::count(text.begin(), text.end(), '\n');
    }
    bool status_says(const std::string& text) {
        return form.lbl_Status.Caption().find(text) != std::string::npos;
    }
};

TEST_F(LoggingCycleTest, BothLineLayouts) {
    use_row(3, "1,3,101,");
    form.chk_LogToFile.set_Value(1);
    start(6); // every pass is written at once
    EXPECT_EQ(log_text(),
              kNow + std::string(",  1,  100,  72.5\r\n") + kNow + ",  1,  101,  0\r\n");
    form.chk_SingleLine.set_Value(1);
    std::filesystem::remove(log_file);
    tick(6);
    EXPECT_EQ(log_text(), kNow + std::string(",  1,  100,  72.5,  1,  101,  0\r\n"));
}

TEST_F(LoggingCycleTest, EachKindOfReplyHasItsValueAndMark) {
    using enum RowState;
    using Reply = std::optional<std::string>;
    const std::vector<std::tuple<std::string, Reply, std::string, RowState>> cases{
        {"1,3,100,1", {}, " 72.5", Answered},
        {"1,32,200,0", {}, " 65541", Answered},
        {"1,3,999,2", {}, "-320.02", Exception},
        {"1,4,999,0", {}, "-31746", Exception},
        {"1,3,100,0", "", "", Nothing},
        {"1,3,100,0", "\1\3\2", "", Nothing},
        {"1,3,100,0", testing::frame("02 03 02 00 07"), " 7", Nothing}, // another controller's
        // A wrong check is a text without a number.
        {"1,3,100,0", "\1\3\2\2\1\1\1", " 0", Nothing},
        {"1,32,200,0", "\1\3\4\2\1\1\1\1\1", " 0", Nothing},
        {"1,3,70000,1", {}, "-9999.9", Nothing},
        {"300,3,100,", {}, "-99999", Nothing},
        {"1,7,100,", {}, "-99999", Nothing},
    };
    for (const auto& [row, reply, value, mark] : cases) {
        link.spoiled = reply;
        use_row(1, row);
        form.RunLoggingPass();
        EXPECT_EQ(cell(1, log_column::kValue), value) << row;
        EXPECT_EQ(form.row_state(1), mark) << row;
    }
    // An unknown command is sent with the count of the row before.
    use_row(1, "1,32,200,0");
    use_row(2, "1,6,300,0");
    form.RunLoggingPass();
    EXPECT_EQ(link.sent.back(), testing::frame("01 06 01 2C 00 02"));
}

TEST_F(LoggingCycleTest, ShortIntervalsGatherAHundredLines) {
    form.chk_LogToFile.set_Value(1);
    start(5);
    tick(98 * 5);
    EXPECT_FALSE(std::filesystem::exists(log_file));
    tick(5);
    EXPECT_EQ(lines_of(log_text()), 100);
    tick(5);
    form.mnuStopLogging.choose();
    EXPECT_EQ(lines_of(log_text()), 101);
    form.mnuClose.choose(); // the same line once more
    EXPECT_EQ(lines_of(log_text()), 102);
}

TEST_F(LoggingCycleTest, StartAndStopShowThemselves) {
    start(10);
    EXPECT_EQ(form.Caption(), "Data Logging - ACTIVE");
    EXPECT_FALSE(form.scrl_LoggingInterval[1].Enabled());
    EXPECT_EQ(form.lbl_Status.Caption(),
              "Last pass 16:30:05, 0.08 s. Next pass in 10 s. Lines waiting: 0.");
    tick(3);
    EXPECT_EQ(link.sent.size(), 1U);
    EXPECT_TRUE(status_says("Next pass in 7 s."));
    link.exchange_ms = 11000;
    tick(7);
    EXPECT_EQ(link.sent.size(), 2U);
    EXPECT_TRUE(status_says("11 s (longer than the interval)"));
    tick(8);
    form.mnuStopLogging.choose();
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging");
    EXPECT_TRUE(form.scrl_LoggingInterval[1].Enabled());
    start(5); // fewer than were counted: never met
    tick(50);
    EXPECT_EQ(link.sent.size(), 3U);
    EXPECT_TRUE(status_says("Next pass: never"));
}

TEST_F(LoggingCycleTest, TheBufferOverflowsAtThe203rdLineAndLoggingStops) {
    form.chk_SingleLine.set_Value(1); // records are gathered though nothing goes to a file
    start(1);
    tick(201);
    EXPECT_EQ(error_of([&] { tick(1); }), 9);
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging");
    EXPECT_EQ(form.Pointer(), MousePointer::Normal);
    form.chk_LogToFile.set_Value(1);
    form.mnuStopLogging.choose();
    EXPECT_EQ(lines_of(log_text()), 202);
}

TEST_F(LoggingCycleTest, AFileThatCannotBeWrittenWarnsAndKeepsTheLines) {
    const std::string folder = rig.dir.file("missing");
    const std::string file = folder + "/log.txt";
    const auto warnings = [&] { return std::exchange(rig.dialogs.shown, {}).size(); };
    form.chk_LogToFile.set_Value(1);
    form.txt_LogFilename.set_Text(file);
    rig.dialogs.on_message = [&](const std::string&) {
        EXPECT_FALSE(form.tmr_LoggingInterval.running());
        form.RunLoggingPass(); // a tick while the box stands
    };
    start(10);
    tick(20);
    EXPECT_EQ(link.sent.size(), 3U);
    EXPECT_EQ(rig.dialogs.shown.at(0).text, "The data could not be written to the specified file.");
    EXPECT_EQ(rig.dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_EQ(warnings(), 3U);
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    std::filesystem::create_directory(folder);
    tick(10);
    const std::string text = read_file(file);
    EXPECT_EQ(lines_of(text), 4);
    {
        // A disk that fills in the middle of a line leaves no part of it.
        const testing::FileSizeLimit full(text.size() + 5);
        tick(10);
    }
    EXPECT_EQ(warnings(), 1U);
    EXPECT_EQ(read_file(file), text);
    std::filesystem::remove_all(folder);
    // As many of the newest are kept as leave room for a pass of all rows, and logging goes on.
    tick(10 * 101);
    rig.clock.time.hour = 17;
    tick(10 * 150);
    EXPECT_EQ(warnings(), 251U);
    std::filesystem::create_directory(folder);
    tick(10);
    EXPECT_EQ(lines_of(read_file(file)), 103);
    EXPECT_EQ(read_file(file).find("16:30"), std::string::npos);
}

} // namespace
} // namespace pelvan
