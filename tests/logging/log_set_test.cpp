#include <gtest/gtest.h>

#include "logging/log_set_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::error_of;
using testing::read_file;
using testing::write_file;

constexpr char kSection[] = "[LOGGING DATA DEVICE AND REGISTER SET]\r\n";

int rows_in_use(const LogSet& set) {
    return static_cast<int>(std::count_if(set.rows.begin(), set.rows.end(),
                                          [](const LogSetRow& row) { return row.in_use; }));
}

TEST(LogSet, EachColumnTakesWhatItMayHold) {
    const std::vector<std::tuple<int, Texts, Texts>> cases{
        {1, {"1", "247", " 5"}, {"0", "248", "x", "-1", "  "}},
        {2, {"1", "2", "3", "4", "32"}, {"5", "0", "16", "3x"}},
        {3, {"0", "65535"}, {"-1", "65536", "none"}},
        {4, {"-4", "0", "5"}, {"-5", "6"}},
    };
    LogSetRow row;
    for (const auto& [column, good, bad] : cases) {
        const std::string& text = row.texts[static_cast<std::size_t>(column)];
        for (const std::string& answer : good) {
            EXPECT_TRUE(enter_cell(row, column, answer));
            EXPECT_EQ(text, answer);
        }
        for (const std::string& answer : bad) {
            EXPECT_FALSE(enter_cell(row, column, answer)) << answer;
            EXPECT_EQ(text, good.back());
        }
        EXPECT_EQ(row.texts[0], column == 4 ? "Yes" : "No");
    }
    EXPECT_TRUE(row.in_use);
    EXPECT_TRUE(enter_cell(row, 3, "")); // cancelled: the cell is emptied
    EXPECT_FALSE(row.in_use);
    EXPECT_EQ(row.texts[0] + row.texts[3], "No");
    EXPECT_EQ(error_of([&] { static_cast<void>(enter_cell(row, 5, "1")); }), 9);
}

TEST(LogSet, SavesRowsUnderTheirNumbersAndStopsLoadingAtAGap) {
    const testing::TempDir dir;
    const std::string file = dir.file("set.PV5");
    LogSet set;
    set.file_name = "log.txt";
    set.row(1) = {true, {"Yes", "1", "3", "100", "1"}};
    set.row(3) = {true, {"Yes", "2", "32", "200", "0"}};
    write_log_set(set, file);
    EXPECT_EQ(read_file(file),
              kSection + std::string("LOGGING INTERVAL=10\r\nLOGGING FILENAME=log.txt\r\n"
                                     "LOG TO FILE=FALSE\r\n1DEVICEADDRESS=1\r\n"
                                     "1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n"
                                     "1DEVICEREGISTERDECIMAL=1\r\n3DEVICEADDRESS=2\r\n"
                                     "3DEVICECOMMAND=32\r\n3DEVICEREGISTER=200\r\n"
                                     "3DEVICEREGISTERDECIMAL=0\r\n"));
    EXPECT_TRUE(read_log_set(file, "", set));
    EXPECT_EQ(rows_in_use(set), 1);
    EXPECT_EQ(set.row(1).texts[4], "1");
    EXPECT_EQ(set.row(3).texts[0] + set.row(3).texts[1], "Yes"); // old marks stay
    // A smaller set over a larger one leaves the keys of the other rows.
    set.row(1).in_use = false;
    set.log_to_file = true;
    write_log_set(set, file);
    EXPECT_TRUE(read_log_set(file, "", set));
    EXPECT_EQ(rows_in_use(set), 1);
    EXPECT_TRUE(set.log_to_file);
}

TEST(LogSet, AnyFileReadsAsASet) {
    const testing::TempDir dir;
    const std::string file = dir.file("set.PV5");
    std::string many;
    for (int n = 1; n <= kLogRows + 1; ++n)
        many += std::to_string(n) + "DEVICEADDRESS=1\n";
    const std::vector<std::tuple<std::string, bool, int>> cases{
        {"", true, 0},
        {std::string("\0\xFF\x01[\n=\r\r\n", 9), true, 0},
        {"[logging data device and register set]\n LOG TO FILE = TRUE \n1DEVICEADDRESS = x\n", true,
         1},
        {kSection + std::string("1DEVICECOMMAND=3\r\n"), true, 0},
        {kSection + std::string("1DEVICEADDRESS=1\r\n"), true, 1}, // the other keys are missing
        {kSection + many, false, 100},
    };
    LogSet set;
    for (const auto& [bytes, complete, rows] : cases) {
        write_file(file, bytes);
        EXPECT_EQ(read_log_set(file, "", set), complete);
        EXPECT_EQ(rows_in_use(set), rows);
    }
    const std::vector<std::tuple<std::string, std::int32_t, int>> intervals{
        {"3725", 3725, 0}, {"32767.4", 32767, 0}, {"0", 1, 0},
        {"x", 1, 0},       {"32768", 1, 6},       {"-5", 1, 380}};
    for (const auto& [text, seconds, error] : intervals) {
        write_file(file, kSection + ("LOGGING INTERVAL=" + text));
        EXPECT_EQ(error_of([&] { EXPECT_TRUE(read_log_set(file, "", set)); }), error) << text;
        EXPECT_EQ(set.interval_seconds, seconds) << text;
    }
    EXPECT_EQ(interval_parts(3725), (std::array<int, 3>{1, 2, 5}));
    EXPECT_TRUE(read_log_set(dir.file("missing.PV5"), "DATASET.LOG", set));
    EXPECT_EQ(set.file_name, "DATASET.LOG");
    EXPECT_EQ(set.interval_seconds, 10);
    EXPECT_FALSE(set.log_to_file);
    EXPECT_FALSE(set.any_row_in_use());
}

} // namespace
} // namespace pelvan
