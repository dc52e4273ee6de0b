#include <gtest/gtest.h>

#include "logging/logging_rig.h"

namespace pelvan {
namespace {

using testing::read_file;
using testing::write_file;

constexpr char kSection[] = "[LOGGING DATA DEVICE AND REGISTER SET]\r\n";

class LogSetTest : public testing::LoggingTest {
  protected:
    void edit(int row, int column, const std::string& answer) {
        rig.dialogs.inputs.push_back(answer);
        form.MSFlexGrid1.set_cell(row, column);
        form.MSFlexGrid1.MouseUp(true);
    }
    std::string cell(int row, int column) { return form.MSFlexGrid1.TextMatrix(row, column); }
    /// Reads a set whose section holds these lines.
    void read(const std::string& lines) {
        write_file(set_file, kSection + lines);
        form.ReadLogSet(set_file);
    }
    int rows_in_use() {
        int count = 0;
        for (int row = 1; row <= kLogRows; ++row)
            count += form.in_use(row) ? 1 : 0;
        return count;
    }
    std::string set_file = rig.dir.file("set.PV5");
};

TEST_F(LogSetTest, EditorTakesWhatEachColumnMayHold) {
    struct Case {
        int column;
        std::vector<std::string> good;
        std::vector<std::string> bad;
    };
    const std::vector<Case> cases{
        {1, {"1", "247", " 5"}, {"0", "248", "x", "-1", "  "}},
        {2, {"1", "2", "3", "4", "32"}, {"5", "0", "16", "3x"}},
        {3, {"0", "65535"}, {"-1", "65536", "none"}},
        {4, {"-4", "0", "5"}, {"-5", "6"}},
    };
    for (const Case& each : cases) {
        for (const std::string& text : each.good) {
            edit(7, each.column, text);
            EXPECT_EQ(cell(7, each.column), text);
        }
        const std::string before = cell(7, each.column);
        for (const std::string& text : each.bad) {
            rig.dialogs.shown.clear();
            edit(7, each.column, text);
            ASSERT_EQ(rig.dialogs.texts(), std::vector<std::string>{"Value is out of range!"});
            EXPECT_EQ(cell(7, each.column), before) << text;
        }
    }
    EXPECT_EQ(rig.dialogs.prompts.front().second, "Enter Value");
    EXPECT_TRUE(form.in_use(7));
    EXPECT_EQ(cell(7, 0), "Yes");
    edit(7, 3, ""); // cancelled: the cell is emptied
    EXPECT_EQ(cell(7, 3), "");
    EXPECT_EQ(cell(7, 0), "No");
    EXPECT_FALSE(form.in_use(7));
}

TEST_F(LogSetTest, EditorIsInertOnFixedColumnsOtherButtonsAndWhileLogging) {
    edit(1, 0, "1");
    edit(1, 5, "1");
    form.MSFlexGrid1.set_cell(1, 1);
    form.MSFlexGrid1.MouseUp(false);
    form.mnuStartLogging.choose();
    edit(1, 1, "1");
    EXPECT_TRUE(rig.dialogs.prompts.empty());
}

TEST_F(LogSetTest, ActivationTakesRowsOutOfUseAndResetsTheName) {
    write_file(rig.config.gIniFile, "[COMMS CONTROLS]\r\nTIMER OFFSET=990\r\n");
    read("1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n");
    EXPECT_TRUE(form.in_use(1));
    form.Form_Activate();
    EXPECT_FALSE(form.in_use(1));
    EXPECT_EQ(cell(1, 0), "Yes");
    EXPECT_EQ(cell(1, 3), "100");
    EXPECT_EQ(state.gLogFileName, rig.dir.file("PELVAN7_LOG.txt"));
    EXPECT_EQ(form.tmr_LoggingInterval.Interval(), 990);
}

TEST_F(LogSetTest, IntervalIsNeverZero) {
    form.scrl_LoggingInterval[2].set_Value(0);
    EXPECT_EQ(form.scrl_LoggingInterval[2].Value(), 1);
    EXPECT_EQ(form.txt_LoggingInterval[2].Text(), "1");
    EXPECT_EQ(state.gLogIntervalSeconds, 1);
    read("LOGGING INTERVAL=3725\r\n");
    EXPECT_EQ(state.gLogIntervalSeconds, 3725);
    EXPECT_EQ(form.txt_LoggingInterval[0].Text(), "1");
    EXPECT_EQ(form.txt_LoggingInterval[1].Text(), "2");
    EXPECT_EQ(form.txt_LoggingInterval[2].Text(), "5");
    read("LOGGING INTERVAL=10\r\n"); // by way of zero
    EXPECT_EQ(state.gLogIntervalSeconds, 10);
    EXPECT_EQ(form.txt_LoggingInterval[2].Text(), "10");
    EXPECT_EQ(error_in([&] { read("LOGGING INTERVAL=32768\r\n"); }), 6);
    EXPECT_EQ(error_in([&] { read("LOGGING INTERVAL=-5\r\n"); }), 380);
}

TEST_F(LogSetTest, FileOptionsAndTheirMenuTwinsAgree) {
    EXPECT_FALSE(form.txt_LogFilename.Enabled());
    form.mnuLogtoFile.choose();
    EXPECT_TRUE(form.chk_LogToFile.checked());
    EXPECT_TRUE(form.mnuLogtoFile.Checked());
    form.mnuSingleLine.choose();
    EXPECT_TRUE(form.chk_SingleLine.checked());
    form.chk_LogToFile.set_Value(0);
    EXPECT_FALSE(form.mnuSingleLine.Enabled());
    EXPECT_TRUE(form.mnuSingleLine.Checked());
    EXPECT_TRUE(form.chk_SingleLine.checked());
}

TEST_F(LogSetTest, SavesRowsUnderTheirNumbersAndStopsLoadingAtAGap) {
    use_row(1, {"1", "3", "100", "1"});
    use_row(3, {"2", "32", "200", "0"});
    form.mnuSaveSet.choose(); // cancelled; the default name is remembered all the same
    EXPECT_EQ(form.set_file_name(), rig.dir.file("CNTRLSET.PV5"));
    rig.dialogs.files.push_back(set_file);
    form.mnuSaveSet.choose();
    EXPECT_EQ(rig.dialogs.requests[1].file_name, rig.dir.file("CNTRLSET.PV5"));
    EXPECT_TRUE(rig.dialogs.requests[1].overwrite_prompt);
    EXPECT_EQ(read_file(set_file),
              kSection + std::string("LOGGING INTERVAL=10\r\nLOGGING FILENAME=") + log_file +
                  "\r\nLOG TO FILE=FALSE\r\n1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n"
                  "1DEVICEREGISTER=100\r\n1DEVICEREGISTERDECIMAL=1\r\n3DEVICEADDRESS=2\r\n"
                  "3DEVICECOMMAND=32\r\n3DEVICEREGISTER=200\r\n3DEVICEREGISTERDECIMAL=0\r\n");
    rig.dialogs.files.push_back(set_file);
    form.mnuLoadSet.choose();
    EXPECT_EQ(rig.dialogs.requests[2].file_name, "*.PV5");
    EXPECT_EQ(rig.dialogs.requests[2].initial_directory, set_file);
    EXPECT_EQ(rows_in_use(), 1);
    EXPECT_EQ(cell(3, 1), "");
    EXPECT_EQ(cell(1, 4), "1");
}

TEST_F(LogSetTest, AnyFileReadsAsASet) {
    std::string many;
    for (int n = 1; n <= 200; ++n)
        many += std::to_string(n) + "DEVICEADDRESS=1\n";
    struct Case {
        std::string bytes;
        int error;
        int rows;
    };
    const std::vector<Case> cases{
        {"", 0, 0},
        {std::string("\0\xFF\x01[\n=\r\r\n", 9), 0, 0},
        {"[logging data device and register set]\n LOG TO FILE = TRUE \n1DEVICEADDRESS = x\n", 0,
         1},
        {kSection + std::string("1DEVICECOMMAND=3\r\n"), 0, 0},
        {kSection + std::string("1DEVICEADDRESS=1\r\n"), 0, 1}, // the other keys are missing
        {kSection + many, 9, 100},
    };
    for (const Case& each : cases) {
        write_file(set_file, each.bytes);
        EXPECT_EQ(error_in([&] { form.ReadLogSet(set_file); }), each.error);
        EXPECT_EQ(rows_in_use(), each.rows);
        form.mnuStartLogging.choose(); // whatever was read can be polled
        form.mnuStopLogging.choose();
    }
    form.ReadLogSet(rig.dir.file("missing.PV5"));
    EXPECT_EQ(state.gLogFileName, rig.dir.file("DATASET.LOG"));
    EXPECT_EQ(state.gLogIntervalSeconds, 10);
    EXPECT_FALSE(form.chk_LogToFile.checked());
}

TEST_F(LogSetTest, StartModeStartsOrStops) {
    link.registers[100] = {7};
    const std::string row = "1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n";
    read(row + "START MODE=AUTO\r\n");
    EXPECT_EQ(value(1), " 7");
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging"); // started without the signs of it
    EXPECT_TRUE(form.scrl_LoggingInterval[0].Enabled());
    read(row + "START MODE=auto\r\n");
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
}

} // namespace
} // namespace pelvan
