// The window's boxes against the logger behind them.
#include "logging/logging_form.h"

#include "logging/logging_rig.h"

namespace pelvan {
namespace {

class LoggingFormTest : public testing::LoggingTest {
  protected:
    LoggingFormTest() { form.Show(); }
    void edit(int row, int column, const std::string& answer, bool left = true) {
        dialogs.inputs.push_back(answer);
        form.MSFlexGrid1.set_cell(row, column);
        form.MSFlexGrid1.MouseUp(left);
    }
    /// A row's data word and its cells.
    std::string row(int number) {
        std::string out = std::to_string(form.MSFlexGrid1.RowData(number));
        for (int column = log_column::kLog; column <= log_column::kValue; ++column)
            out += "|" + form.MSFlexGrid1.TextMatrix(number, column);
        return out;
    }
    std::string interval() {
        std::string out;
        for (const TextBox& box : form.txt_LoggingInterval)
            out += box.Text() + ":";
        return out + std::to_string(logging.gLogIntervalSeconds);
    }
    /// Whether the window shows that it logs, and whether it has its timer run.
    std::pair<bool, bool> active() {
        EXPECT_EQ(form.Label4.Visible(), !form.scrl_LoggingInterval[1].Enabled());
        EXPECT_EQ(form.Label4.Visible(), form.Caption() == "Data Logging - ACTIVE");
        return {form.Label4.Visible(), form.tmr_LoggingInterval.running()};
    }

    frm_DataLogging form{services, logger};
};

TEST_F(LoggingFormTest, EditorAsksForTheCellWhileTheTimerStands) {
    for (const auto& [column, answer, offered] :
         {std::tuple{1, "1", "1"}, {2, "3", ""}, {3, "100", ""}, {4, "1", "0"}}) {
        EXPECT_EQ(form.MSFlexGrid1.RowData(7), -1);
        edit(7, column, answer);
        EXPECT_EQ(dialogs.last_default, offered);
    }
    edit(7, 1, "248");
    EXPECT_EQ(row(7), "7|Yes|1|3|100|1|");
    EXPECT_EQ(dialogs.texts(), std::vector<std::string>{"Value is out of range!"});
    edit(1, 0, "1");
    edit(1, 5, "1");
    edit(1, 1, "1", false);
    form.mnuStartLogging.choose();
    edit(1, 1, "1");
    EXPECT_EQ(dialogs.prompts.size(), 5U);
}

TEST_F(LoggingFormTest, IntervalIsNeverZero) {
    form.scrl_LoggingInterval[2].set_Value(0);
    EXPECT_EQ(interval(), "0:0:1:1");
    load({}, "LOGGING INTERVAL=3725\r\n");
    EXPECT_EQ(interval(), "1:2:5:3725");
    load({}, "LOGGING INTERVAL=10\r\n"); // by way of zero
    EXPECT_EQ(interval(), "0:0:10:10");
}

TEST_F(LoggingFormTest, FileOptionsAndTheirMenuTwinsAgree) {
    EXPECT_FALSE(form.txt_LogFilename.Enabled());
    form.mnuLogtoFile.choose();
    EXPECT_TRUE(form.chk_LogToFile.checked() && form.mnuLogtoFile.Checked());
    form.mnuSingleLine.choose();
    form.txt_LogFilename.set_Text("typed.txt");
    EXPECT_EQ(logging.gLogFileName, "typed.txt");
    EXPECT_TRUE(logger.set().log_to_file && logger.set().single_line);
    form.chk_LogToFile.set_Value(0);
    EXPECT_FALSE(form.mnuSingleLine.Enabled() || logger.set().log_to_file);
    EXPECT_TRUE(form.chk_SingleLine.checked() && form.mnuSingleLine.Checked());
}

TEST_F(LoggingFormTest, SetDialogsRememberTheName) {
    form.mnuSaveSet.choose(); // cancelled; the default name is remembered all the same
    EXPECT_EQ(form.set_file_name(), dir.file("CNTRLSET.PV5"));
    dialogs.files = {set_with({"1,3,100,1"}), dir.file("copy.PV5")};
    form.mnuLoadSet.choose();
    EXPECT_EQ(row(1), "1|Yes|1|3|100|1|");
    EXPECT_EQ(form.txt_LogFilename.Text(), log_file);
    form.mnuSaveSet.choose();
    EXPECT_EQ(dialogs.requests[1].file_name + dialogs.requests[2].file_name, "*.PV5" + set_file);
    EXPECT_TRUE(dialogs.requests[2].overwrite_prompt);
    EXPECT_NE(testing::read_file(dir.file("copy.PV5")).find("1DEVICEREGISTER=100\r\n"),
              std::string::npos);
}

TEST_F(LoggingFormTest, StartAndStopShowThemselvesAndAnAutomaticStartDoesNot) {
    form.mnuStartLogging.choose();
    EXPECT_EQ(active(), std::pair(true, true));
    EXPECT_EQ(form.lbl_Status.Caption(), status_text(logger.status()));
    form.mnuStopLogging.choose();
    EXPECT_EQ(active(), std::pair(false, false));
    logger.ReadLogSet(set_with({"1,3,100,0"}, "START MODE=AUTO\r\n"));
    EXPECT_EQ(active(), std::pair(false, true));
    EXPECT_EQ(row(1), "1|Yes|1|3|100|0| 725");
    // Coming back takes the rows out of use, and their texts stay.
    form.Form_Activate();
    EXPECT_EQ(row(1), "-1|Yes|1|3|100|0| 725");
    EXPECT_EQ(logging.gLogFileName, dir.file("PELVAN7_LOG.txt"));
    form.mnuStopLogging.choose();
    // An error in a pass ends the logging, and shows it. Records are gathered though nothing goes
    // to a file; the 203rd overflows the buffer.
    form.chk_SingleLine.set_Value(1);
    form.mnuStartLogging.choose();
    run(201 * 10);
    EXPECT_EQ(active(), std::pair(true, true));
    EXPECT_EQ(testing::error_of([&] { run(10); }), 9);
    EXPECT_EQ(active(), std::pair(false, false));
    EXPECT_FALSE(logger.in_pass());
    EXPECT_EQ(form.Pointer(), MousePointer::Normal);
    logger.set_file_name(log_file);
    logger.set_log_to_file(true);
    EXPECT_TRUE(logger.stop());
    EXPECT_EQ(lines(), 202);
    // Opened again it begins as the first time.
    form.mnuClose.choose();
    form.Show();
    EXPECT_EQ(row(1), "-1||||||");
    EXPECT_FALSE(form.chk_SingleLine.checked() || logger.set().single_line);
}

} // namespace
} // namespace pelvan
