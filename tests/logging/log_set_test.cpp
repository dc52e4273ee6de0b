#include <gtest/gtest.h>

#include "logging/logging_rig.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::error_of;
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
    const std::vector<std::tuple<int, Texts, Texts>> cases{
        {1, {"1", "247", " 5"}, {"0", "248", "x", "-1", "  "}},
        {2, {"1", "2", "3", "4", "32"}, {"5", "0", "16", "3x"}},
        {3, {"0", "65535"}, {"-1", "65536", "none"}},
        {4, {"-4", "0", "5"}, {"-5", "6"}},
    };
    for (const auto& [column, good, bad] : cases) {
        for (const std::string& text : good) {
            edit(7, column, text);
            EXPECT_EQ(cell(7, column), text);
        }
        for (const std::string& text : bad) {
            rig.dialogs.shown.clear();
            edit(7, column, text);
            EXPECT_EQ(rig.dialogs.texts(), Texts{"Value is out of range!"});
            EXPECT_EQ(cell(7, column), good.back()) << text;
        }
    }
    EXPECT_TRUE(form.in_use(7));
    EXPECT_EQ(cell(7, 0), "Yes");
    edit(7, 3, ""); // cancelled: the cell is emptied
    EXPECT_FALSE(form.in_use(7));
    EXPECT_EQ(cell(7, 0) + cell(7, 3), "No");
    // Fixed columns, another button, and while it is logging.
    rig.dialogs.prompts.clear();
    edit(1, 0, "1");
    edit(1, 5, "1");
    form.MSFlexGrid1.set_cell(1, 1);
    form.MSFlexGrid1.MouseUp(false);
    form.mnuStartLogging.choose();
    edit(1, 1, "1");
    EXPECT_TRUE(rig.dialogs.prompts.empty());
}

TEST_F(LogSetTest, IntervalIsNeverZero) {
    form.scrl_LoggingInterval[2].set_Value(0);
    EXPECT_EQ(form.txt_LoggingInterval[2].Text(), "1");
    EXPECT_EQ(state.gLogIntervalSeconds, 1);
    read("LOGGING INTERVAL=3725\r\n");
    EXPECT_EQ(state.gLogIntervalSeconds, 3725);
    for (const auto& [box, text] : {std::pair{0U, "1"}, {1U, "2"}, {2U, "5"}})
        EXPECT_EQ(form.txt_LoggingInterval[box].Text(), text);
    read("LOGGING INTERVAL=10\r\n"); // by way of zero
    EXPECT_EQ(state.gLogIntervalSeconds, 10);
    EXPECT_EQ(error_of([&] { read("LOGGING INTERVAL=32768\r\n"); }), 6);
    EXPECT_EQ(error_of([&] { read("LOGGING INTERVAL=-5\r\n"); }), 380);
}

TEST_F(LogSetTest, FileOptionsAndTheirMenuTwinsAgree) {
    EXPECT_FALSE(form.txt_LogFilename.Enabled());
    form.mnuLogtoFile.choose();
    EXPECT_TRUE(form.chk_LogToFile.checked() && form.mnuLogtoFile.Checked());
    form.mnuSingleLine.choose();
    form.chk_LogToFile.set_Value(0);
    EXPECT_FALSE(form.mnuSingleLine.Enabled());
    EXPECT_TRUE(form.chk_SingleLine.checked() && form.mnuSingleLine.Checked());
}

TEST_F(LogSetTest, SavesRowsUnderTheirNumbersAndStopsLoadingAtAGap) {
    use_row(1, "1,3,100,1");
    use_row(3, "2,32,200,0");
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
    EXPECT_EQ(rig.dialogs.requests[2].initial_directory, set_file);
    EXPECT_EQ(rows_in_use(), 1);
    EXPECT_EQ(cell(1, 4), "1");
}

TEST_F(LogSetTest, AnyFileReadsAsASet) {
    std::string many;
    for (int n = 1; n <= kLogRows + 1; ++n)
        many += std::to_string(n) + "DEVICEADDRESS=1\n";
    const std::vector<std::tuple<std::string, int, int>> cases{
        {"", 0, 0},
        {std::string("\0\xFF\x01[\n=\r\r\n", 9), 0, 0},
        {"[logging data device and register set]\n LOG TO FILE = TRUE \n1DEVICEADDRESS = x\n", 0,
         1},
        {kSection + std::string("1DEVICECOMMAND=3\r\n"), 0, 0},
        {kSection + std::string("1DEVICEADDRESS=1\r\n"), 0, 1}, // the other keys are missing
        {kSection + many, 9, 100},
    };
    for (const auto& [bytes, error, rows] : cases) {
        write_file(set_file, bytes);
        EXPECT_EQ(error_of([&] { form.ReadLogSet(set_file); }), error);
        EXPECT_EQ(rows_in_use(), rows);
        form.mnuStartLogging.choose(); // whatever was read can be polled
        form.mnuStopLogging.choose();
    }
    form.ReadLogSet(rig.dir.file("missing.PV5"));
    EXPECT_EQ(state.gLogFileName, rig.dir.file("DATASET.LOG"));
    EXPECT_EQ(state.gLogIntervalSeconds, 10);
    EXPECT_FALSE(form.chk_LogToFile.checked());
}

TEST_F(LogSetTest, StartModeStartsOrStopsAndActivationTakesTheRowsOutOfUse) {
    write_file(rig.config.gIniFile, "[COMMS CONTROLS]\r\nTIMER OFFSET=990\r\n");
    link.registers[100] = "00 07";
    const std::string row = "1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n";
    read(row + "START MODE=AUTO\r\n");
    EXPECT_EQ(cell(1, log_column::kValue), " 7");
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Caption(), "Data Logging"); // started without the signs of it
    EXPECT_TRUE(form.scrl_LoggingInterval[0].Enabled());
    form.Form_Activate();
    EXPECT_FALSE(form.in_use(1));
    EXPECT_EQ(cell(1, log_column::kLog) + cell(1, log_column::kRegister), "Yes100");
    EXPECT_EQ(state.gLogFileName, rig.dir.file("PELVAN7_LOG.txt"));
    EXPECT_EQ(form.tmr_LoggingInterval.Interval(), 990);
    read(row + "START MODE=auto\r\n");
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
}

} // namespace
} // namespace pelvan
