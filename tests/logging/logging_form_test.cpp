// The window's boxes against the logger behind them.
#include "logging/logging_form.h"

#include <gtest/gtest.h>

#include "logging/logging_rig.h"

namespace pelvan {
namespace {

class LoggingFormTest : public testing::LoggingTest {
  protected:
    LoggingFormTest() { form.Show(); }
    void edit(int row, int column, const std::string& answer, bool left = true) {
        rig.dialogs.inputs.push_back(answer);
        form.MSFlexGrid1.set_cell(row, column);
        form.MSFlexGrid1.MouseUp(left);
    }
    std::string cell(int row, int column) { return form.MSFlexGrid1.TextMatrix(row, column); }

    frm_DataLogging form{services, logger};
};

TEST_F(LoggingFormTest, EditorAsksForTheCellWhileTheTimerStands) {
    const std::vector<std::pair<std::string, std::string>> entries{
        {"1", "1"}, {"3", ""}, {"100", ""}, {"1", "0"}}; // and what each box offers
    for (int column = 1; column <= 4; ++column) {
        const auto& [answer, offered] = entries[static_cast<std::size_t>(column - 1)];
        EXPECT_EQ(form.MSFlexGrid1.RowData(7), -1);
        edit(7, column, answer);
        EXPECT_EQ(rig.dialogs.last_default, offered);
    }
    EXPECT_EQ(form.MSFlexGrid1.RowData(7), 7);
    EXPECT_EQ(cell(7, 0) + cell(7, 3), "Yes100");
    edit(7, 1, "248");
    EXPECT_EQ(rig.dialogs.texts(), std::vector<std::string>{"Value is out of range!"});
    EXPECT_EQ(cell(7, 1), "1");
    rig.dialogs.prompts.clear();
    edit(1, 0, "1");
    edit(1, 5, "1");
    edit(1, 1, "1", false);
    form.mnuStartLogging.choose();
    edit(1, 1, "1");
    EXPECT_TRUE(rig.dialogs.prompts.empty());
}

TEST_F(LoggingFormTest, IntervalIsNeverZero) {
    form.scrl_LoggingInterval[2].set_Value(0);
    EXPECT_EQ(form.txt_LoggingInterval[2].Text(), "1");
    EXPECT_EQ(state.gLogIntervalSeconds, 1);
    load({}, "LOGGING INTERVAL=3725\r\n");
    for (const auto& [box, text] : {std::pair{0U, "1"}, {1U, "2"}, {2U, "5"}})
        EXPECT_EQ(form.txt_LoggingInterval[box].Text(), text);
    load({}, "LOGGING INTERVAL=10\r\n"); // by way of zero
    EXPECT_EQ(state.gLogIntervalSeconds, 10);
    EXPECT_EQ(logger.set().interval_seconds, 10);
}

TEST_F(LoggingFormTest, FileOptionsAndTheirMenuTwinsAgree) {
    EXPECT_FALSE(form.txt_LogFilename.Enabled());
    form.mnuLogtoFile.choose();
    EXPECT_TRUE(form.chk_LogToFile.checked() && form.mnuLogtoFile.Checked());
    form.mnuSingleLine.choose();
    form.txt_LogFilename.set_Text("typed.txt");
    EXPECT_EQ(state.gLogFileName, "typed.txt");
    EXPECT_TRUE(logger.set().log_to_file && logger.set().single_line);
    form.chk_LogToFile.set_Value(0);
    EXPECT_FALSE(form.mnuSingleLine.Enabled() || logger.set().log_to_file);
    EXPECT_TRUE(form.chk_SingleLine.checked() && form.mnuSingleLine.Checked());
}

TEST_F(LoggingFormTest, SetDialogsRememberTheName) {
    const std::string preset = rig.dir.file("CNTRLSET.PV5");
    form.mnuSaveSet.choose(); // cancelled; the default name is remembered all the same
    EXPECT_EQ(form.set_file_name(), preset);
    rig.dialogs.files.push_back(set_with({"1,3,100,1"}));
    form.mnuLoadSet.choose();
    EXPECT_EQ(rig.dialogs.requests[1].file_name, "*.PV5");
    EXPECT_EQ(cell(1, 3), "100");
    EXPECT_EQ(form.txt_LogFilename.Text(), log_file);
    rig.dialogs.files.push_back(rig.dir.file("copy.PV5"));
    form.mnuSaveSet.choose();
    EXPECT_EQ(rig.dialogs.requests[2].file_name, set_file);
    EXPECT_TRUE(rig.dialogs.requests[2].overwrite_prompt);
    EXPECT_NE(testing::read_file(rig.dir.file("copy.PV5")).find("1DEVICEREGISTER=100\r\n"),
              std::string::npos);
}

TEST_F(LoggingFormTest, StartAndStopShowThemselvesAndAnAutomaticStartDoesNot) {
    const auto shows_logging = [&] {
        EXPECT_EQ(form.Label4.Visible(), !form.scrl_LoggingInterval[1].Enabled());
        EXPECT_EQ(form.Label4.Visible(), form.Caption() == "Data Logging - ACTIVE");
        return form.Label4.Visible();
    };
    form.mnuStartLogging.choose();
    EXPECT_TRUE(shows_logging() && form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.lbl_Status.Caption(), status_text(logger.status()));
    form.mnuStopLogging.choose();
    EXPECT_FALSE(shows_logging() || form.tmr_LoggingInterval.running());
    logger.ReadLogSet(set_with({"1,3,100,0"}, "START MODE=AUTO\r\n"));
    EXPECT_EQ(cell(1, log_column::kValue), " 725");
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    EXPECT_FALSE(shows_logging());
    // Coming back takes the rows out of use, and their texts stay.
    form.Form_Activate();
    EXPECT_EQ(form.MSFlexGrid1.RowData(1), -1);
    EXPECT_EQ(cell(1, log_column::kLog) + cell(1, log_column::kRegister), "Yes100");
    EXPECT_EQ(state.gLogFileName, rig.dir.file("PELVAN7_LOG.txt"));
    // An error in a pass ends the logging, and shows it.
    form.chk_SingleLine.set_Value(1);
    state.gLogBufferCount = kLogBufferSize;
    EXPECT_EQ(testing::error_of([&] { logger.RunLoggingPass(); }), 9);
    EXPECT_FALSE(form.tmr_LoggingInterval.running());
    EXPECT_EQ(form.Pointer(), MousePointer::Normal);
    EXPECT_FALSE(shows_logging());
    // Opened again it begins as the first time.
    form.mnuClose.choose();
    form.Show();
    EXPECT_EQ(cell(1, log_column::kLog) + cell(1, log_column::kRegister), "");
    EXPECT_FALSE(form.chk_SingleLine.checked() || logger.set().single_line);
}

} // namespace
} // namespace pelvan
