#include <gtest/gtest.h>

#include "logging/log_set_file.h"
#include "support/error_of.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using Cells = std::array<std::string, 5>;
using testing::error_of;

const std::string kSection = "[LOGGING DATA DEVICE AND REGISTER SET]\r\n";

TEST(LogSet, EachColumnTakesWhatItMayHold) {
    const std::vector<std::tuple<int, Texts, Texts>> cases{
        {1, {"1", "247", " 5"}, {"0", "248", "x", "-1", "  "}},
        {2, {"1", "2", "3", "4", "32"}, {"5", "0", "16", "3x"}},
        {3, {"0", "65535"}, {"-1", "65536", "none"}},
        {4, {"-4", "0", "5"}, {"-5", "6"}},
    };
    LogSetRow row;
    for (const auto& [column, good, bad] : cases) {
        EXPECT_FALSE(row.in_use);
        const std::string& text = row.texts[static_cast<std::size_t>(column)];
        for (const std::string& answer : good)
            EXPECT_TRUE(enter_cell(row, column, answer) && text == answer) << answer;
        for (const std::string& answer : bad)
            EXPECT_FALSE(enter_cell(row, column, answer) || text != good.back()) << answer;
        EXPECT_EQ(row.texts[0], column == 4 ? "Yes" : "No");
    }
    EXPECT_TRUE(row.in_use);
    EXPECT_TRUE(enter_cell(row, 3, "")); // cancelled: the cell is emptied
    EXPECT_FALSE(row.in_use);
    EXPECT_EQ(row.texts, (Cells{"No", " 5", "32", "", "5"}));
    EXPECT_EQ(error_of([&] { static_cast<void>(enter_cell(row, 5, "1")); }), 9);
}

class LogSetFile : public ::testing::Test {
  protected:
    /// Whether the file was read to its end.
    bool read(const std::string& default_log_file = "") {
        return read_log_set(file, default_log_file, set);
    }
    /// The head of the set, and its rows in use with their numbers.
    std::string read_set() {
        std::string out = std::to_string(set.interval_seconds) + " " + set.file_name;
        if (set.log_to_file) out += " to file";
        for (int number = 1; number <= kLogRows; ++number) {
            if (!set.row(number).in_use) continue;
            out += ", " + std::to_string(number);
            for (const std::string& text : set.row(number).texts)
                out += "|" + text;
        }
        return out;
    }

    testing::TempDir dir;
    std::string file = dir.file("set.PV5");
    LogSet set;
};

TEST_F(LogSetFile, SavesRowsUnderTheirNumbersAndStopsLoadingAtAGap) {
    set.file_name = "log.txt";
    set.row(1) = {true, {"Yes", "1", "3", "100", "1"}};
    set.row(3) = {true, {"Yes", "2", "32", "200", "0"}};
    write_log_set(set, file);
    EXPECT_EQ(testing::read_file(file),
              kSection + "LOGGING INTERVAL=10\r\nLOGGING FILENAME=log.txt\r\nLOG TO FILE=FALSE\r\n"
                         "1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n"
                         "1DEVICEREGISTERDECIMAL=1\r\n3DEVICEADDRESS=2\r\n3DEVICECOMMAND=32\r\n"
                         "3DEVICEREGISTER=200\r\n3DEVICEREGISTERDECIMAL=0\r\n");
    EXPECT_TRUE(read());
    EXPECT_EQ(read_set(), "10 log.txt, 1|Yes|1|3|100|1");
    EXPECT_EQ(set.row(3).texts, Cells{"Yes"}); // old marks stay
    // A smaller set over a larger one leaves the keys of the other rows.
    set.row(1).in_use = false;
    set.log_to_file = true;
    write_log_set(set, file);
    EXPECT_TRUE(read());
    EXPECT_EQ(read_set(), "10 log.txt to file, 1|Yes|1|3|100|1");
}

TEST_F(LogSetFile, NamesAndUnitsStandBesideTheOtherKeysWhereThereAreAny) {
    LogSetRow row{true, {"Yes", "1", "3", "100", "1"}};
    EXPECT_TRUE(enter_label(row, log_column::kName, "  \"Oven\", left; = 1\" "));
    EXPECT_TRUE(enter_label(row, log_column::kUnit, "\u00B0C"));
    EXPECT_FALSE(enter_label(row, log_column::kUnit, "a\rb"));
    EXPECT_FALSE(enter_label(row, log_column::kName, std::string(kMaxRowName + 1, 'x')));
    set.row(1) = row;
    set.row(2) = {true, {"Yes", "1", "3", "101", "1"}};
    write_log_set(set, file);
    LogSet saved = set;
    EXPECT_TRUE(read());
    EXPECT_TRUE(set.same_rows(saved));
    EXPECT_EQ(set.row(1).name, "\"Oven\", left; = 1\"");
    // A name that is taken away goes from the file; one that never was adds no line.
    saved.row(1).name.clear();
    write_log_set(saved, file);
    EXPECT_FALSE(set.same_rows(saved));
    EXPECT_TRUE(read());
    EXPECT_TRUE(set.same_rows(saved));
    const std::string text = testing::read_file(file);
    EXPECT_NE(text.find("1DEVICEUNIT=\u00B0C\r\n"), std::string::npos);
    EXPECT_EQ(text.find("2DEVICENAME"), std::string::npos);
}

TEST_F(LogSetFile, AnyFileReadsAsASet) {
    EXPECT_TRUE(read("DATASET.LOG")); // a missing one
    EXPECT_EQ(read_set(), "10 DATASET.LOG");
    std::string many = kSection;
    std::string hundred = "10 ";
    for (int n = 1; n <= kLogRows + 1; ++n) {
        many += std::to_string(n) + "DEVICEADDRESS=1\n"; // the other keys are missing
        if (n <= kLogRows) hundred += ", " + std::to_string(n) + "|Yes|1|||";
    }
    const std::vector<std::tuple<std::string, int, std::string>> cases{
        {"", 0, "10 "},
        {std::string("\0\xFF\x01[\n=\r\r\n", 9), 0, "10 "},
        {"[logging data device and register set]\n LOG TO FILE = TRUE \n1DEVICEADDRESS = x\n", 0,
         "10  to file, 1|Yes|x|||"},
        {kSection + "1DEVICECOMMAND=3\r\n", 0, "10 "},
        // What could not be saved again, a line end within a value, is none.
        {kSection + "LOGGING FILENAME=a\rb\n1DEVICEADDRESS=1\r5\n", 0, "10 a b, 1|Yes|1 5|||"},
        {kSection + "LOGGING INTERVAL=3725", 0, "3725 "},
        {kSection + "LOGGING INTERVAL=32767.4", 0, "32767 "},
        {kSection + "LOGGING INTERVAL=0", 0, "1 "},
        {kSection + "LOGGING INTERVAL=x", 0, "1 "},
        {kSection + "LOGGING INTERVAL=32768", 6, "1 "}, // what was there stays
        {kSection + "LOGGING INTERVAL=-5", 380, "1 "},
        {many, 0, hundred},
    };
    for (const auto& [bytes, error, result] : cases) {
        testing::write_file(file, bytes);
        EXPECT_EQ(error_of([&, bytes = bytes] { EXPECT_EQ(read(), bytes != many); }), error)
            << bytes;
        EXPECT_EQ(read_set(), result) << bytes;
    }
}

} // namespace
} // namespace pelvan
