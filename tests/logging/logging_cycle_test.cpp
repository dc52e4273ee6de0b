#include <gtest/gtest.h>

#include "logging/logging_rig.h"
#include "support/file_size_limit.h"

namespace pelvan {
namespace {

using testing::read_file;

constexpr char kNow[] = "11-15-2026, 16:30:05";

class LoggingCycleTest : public testing::LoggingTest {
  protected:
    LoggingCycleTest() {
        link.registers = {{100, {725}}, {101, {0}}, {200, {1, 5}}};
        use_row(1, {"1", "3", "100", "1"});
    }
    int lines() {
        const std::string text = log_text();
        return static_cast<int>(std::count(text.begin(), text.end(), '\n'));
    }
};

TEST_F(LoggingCycleTest, BothLineLayouts) {
    use_row(3, {"1", "3", "101", ""});
    form.chk_LogToFile.set_Value(1);
    set_interval(6); // every pass is written at once
    form.mnuStartLogging.choose();
    EXPECT_EQ(log_text(),
              kNow + std::string(",  1,  100,  72.5\r\n") + kNow + ",  1,  101,  0\r\n");
    EXPECT_EQ(state.gLogBufferCount, -1);
    form.chk_SingleLine.set_Value(1);
    std::filesystem::remove(log_file);
    tick(6);
    EXPECT_EQ(log_text(), kNow + std::string(",  1,  100,  72.5,  1,  101,  0\r\n"));
}

TEST_F(LoggingCycleTest, EachKindOfReplyHasItsValueAndMark) {
    struct Case {
        std::vector<std::string> row;
        std::string spoiled; // reply in the place of the right one; "-" for none
        std::string value;
        RowState mark;
    };
    const std::vector<Case> cases{
        {{"1", "3", "100", "1"}, "", " 72.5", RowState::Answered},
        {{"1", "32", "200", "0"}, "", " 65541", RowState::Answered},
        {{"1", "3", "999", "0"}, "", "-32002", RowState::Exception},
        {{"1", "4", "999", "0"}, "", "-31746", RowState::Exception},
        {{"1", "3", "999", "2"}, "", "-320.02", RowState::Exception},
        {{"1", "3", "100", "0"}, "-", "", RowState::Nothing},
        {{"1", "3", "100", "0"}, "\x01\x03\x02", "", RowState::Nothing},
        // A wrong check is a text without a number.
        {{"1", "3", "100", "0"}, "\x01\x03\x02\x02\x01\x01\x01", " 0", RowState::Nothing},
        {{"1", "32", "200", "0"}, "\x01\x03\x04\x02\x01\x01\x01\x01\x01", " 0", RowState::Nothing},
        {{"1", "3", "70000", "1"}, "", "-9999.9", RowState::Nothing},
        {{"300", "3", "100", ""}, "", "-99999", RowState::Nothing},
        {{"1", "7", "100", ""}, "", "-99999", RowState::Nothing},
        {{"1", "", "100", ""}, "", "-99999", RowState::Nothing},
    };
    for (const Case& each : cases) {
        link.spoiled.clear();
        if (!each.spoiled.empty())
            link.spoiled[std::stoi(each.row[2])] = each.spoiled == "-" ? "" : each.spoiled;
        use_row(1, each.row);
        form.RunLoggingPass();
        EXPECT_EQ(value(1), each.value) << each.row[1] << " " << each.row[2];
        EXPECT_EQ(form.row_state(1), each.mark) << each.row[1] << " " << each.row[2];
    }
}

TEST_F(LoggingCycleTest, AnUnknownCommandIsSentWithThePreviousRowsCount) {
    use_row(1, {"1", "32", "200", "0"});
    use_row(2, {"1", "6", "300", "0"});
    form.RunLoggingPass();
    EXPECT_EQ(link.sent[1].substr(1, 5), std::string("\x06\x01\x2C\x00\x02", 5));
}

TEST_F(LoggingCycleTest, ShortIntervalsGatherAHundredLines) {
    form.chk_LogToFile.set_Value(1);
    set_interval(5);
    form.mnuStartLogging.choose();
    tick(98 * 5);
    EXPECT_FALSE(std::filesystem::exists(log_file));
    tick(5);
    EXPECT_EQ(lines(), 100);
    EXPECT_EQ(state.gLogBufferCount, -1);
    tick(5);
    form.mnuStopLogging.choose();
    EXPECT_EQ(lines(), 101);
    form.mnuClose.choose(); // the same line once more
    EXPECT_EQ(lines(), 102);
}

TEST_F(LoggingCycleTest, StartAndStopShowThemselves) {
    form.mnuStartLogging.choose();
    EXPECT_EQ(form.Caption(), "Data Logging - ACTIVE");
    EXPECT_TRUE(form.Label4.Visible());
    EXPECT_FALSE(form.scrl_LoggingInterval[1].Enabled());
    EXPECT_FALSE(form.txt_LoggingInterval[1].Enabled());
    EXPECT_EQ(form.lbl_Status.Caption(),
              "Last pass 16:30:05, 0.08 s. Next pass in 10 s. Lines waiting: 0.");
    tick(3);
    EXPECT_EQ(link.sent.size(), 1U);
    EXPECT_EQ(form.lbl_Status.Caption(),
              "Last pass 16:30:05, 0.08 s. Next pass in 7 s. Lines waiting: 0.");
    link.exchange_ms = 11000;
    tick(7);
    EXPECT_EQ(link.sent.size(), 2U);
    EXPECT_NE(form.lbl_Status.Caption().find("11 s (longer than the interval)"), std::string::npos);
    form.mnuStopLogging.choose();
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging");
    EXPECT_TRUE(form.scrl_LoggingInterval[1].Enabled());
}

TEST_F(LoggingCycleTest, AnIntervalBelowTheCountIsNeverMet) {
    form.mnuStartLogging.choose();
    tick(8);
    form.mnuStopLogging.choose();
    set_interval(5);
    form.mnuStartLogging.choose();
    tick(50);
    EXPECT_EQ(link.sent.size(), 2U);
    EXPECT_NE(form.lbl_Status.Caption().find("Next pass: never"), std::string::npos);
}

TEST_F(LoggingCycleTest, TheBufferOverflowsAtThe203rdLineAndLoggingStops) {
    form.chk_SingleLine.set_Value(1); // records are gathered though nothing goes to a file
    set_interval(1);
    form.mnuStartLogging.choose();
    tick(201);
    EXPECT_EQ(state.gLogBufferCount, 202);
    EXPECT_EQ(error_in([&] { tick(1); }), 9);
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging");
    EXPECT_EQ(form.Pointer(), MousePointer::Normal);
    EXPECT_EQ(state.gLogBufferCount, 202);
    form.chk_LogToFile.set_Value(1);
    form.mnuStopLogging.choose();
    EXPECT_EQ(lines(), 202);
}

TEST_F(LoggingCycleTest, AFileThatCannotBeWrittenWarnsAndKeepsTheLines) {
    form.chk_LogToFile.set_Value(1);
    form.txt_LogFilename.set_Text(rig.dir.file("missing/log.txt"));
    int passes_inside = 0;
    rig.dialogs.on_message = [&](const std::string&) {
        EXPECT_FALSE(form.tmr_LoggingInterval.running());
        form.RunLoggingPass(); // a tick while the box stands
        ++passes_inside;
    };
    form.mnuStartLogging.choose();
    tick(20);
    ASSERT_EQ(rig.dialogs.shown.size(), 3U);
    EXPECT_EQ(passes_inside, 3);
    EXPECT_EQ(link.sent.size(), 3U);
    EXPECT_EQ(rig.dialogs.shown[0].text, "The data could not be written to the specified file.");
    EXPECT_EQ(rig.dialogs.shown[0].title, "WARNING");
    EXPECT_EQ(rig.dialogs.shown[0].icon, MessageIcon::Exclamation);
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    std::filesystem::create_directory(rig.dir.file("missing"));
    tick(10);
    const std::string text = read_file(rig.dir.file("missing/log.txt"));
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 4);
    rig.dialogs.shown.clear();
    rig.dialogs.on_message = {};
    {
        // A disk that fills in the middle of a line leaves no part of it.
        const testing::FileSizeLimit full(text.size() + 5);
        tick(10);
    }
    EXPECT_EQ(rig.dialogs.shown.size(), 1U);
    EXPECT_EQ(read_file(rig.dir.file("missing/log.txt")), text);
    std::filesystem::remove_all(rig.dir.file("missing"));
    tick(10);
    EXPECT_EQ(rig.dialogs.shown.size(), 2U);
    // As many are kept as leave room for a pass of all rows, and logging goes on.
    tick(10 * 250);
    EXPECT_EQ(rig.dialogs.shown.size(), 252U);
    std::filesystem::create_directory(rig.dir.file("missing"));
    tick(10);
    const std::string later = read_file(rig.dir.file("missing/log.txt"));
    EXPECT_EQ(std::count(later.begin(), later.end(), '\n'), 103);
}

} // namespace
} // namespace pelvan
