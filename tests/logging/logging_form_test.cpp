// The window's boxes against the logger behind them.
#include "logging/logging_form.h"

#include "logging/logging_rig.h"
#include "platform/text_file.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

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
    std::string active() {
        EXPECT_EQ(form.Label4.Visible(), !form.scrl_LoggingInterval[1].Enabled());
        EXPECT_EQ(form.Label4.Visible(), form.Caption() == "Data Logging - ACTIVE");
        return std::string(form.Label4.Visible() ? "active, " : "-, ") +
               (form.tmr_LoggingInterval.running() ? "runs" : "-");
    }
    std::string after(MenuEntry& choice) {
        choice.choose();
        return active();
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
    EXPECT_EQ(dialogs.texts(), Texts{"Value is out of range!"});
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
    EXPECT_TRUE(logger.agrees_with(dir.file("copy.PV5")));
}

TEST_F(LoggingFormTest, StartAndStopShowThemselvesAndAnAutomaticStartDoesNot) {
    EXPECT_EQ(after(form.mnuStartLogging), "active, runs");
    EXPECT_EQ(form.lbl_Status.Caption(), status_text(logger.status()));
    EXPECT_EQ(after(form.mnuStopLogging), "-, -");
    logger.ReadLogSet(set_with({"1,3,100,0"}, "START MODE=AUTO\r\n"));
    EXPECT_EQ(active(), "-, runs");
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
    EXPECT_EQ(active(), "active, runs");
    EXPECT_EQ(testing::error_of([&] { run(10); }), 9);
    EXPECT_EQ(active(), "-, -");
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

TEST_F(LoggingFormTest, SaysThatNothingIsPolledAndTakesTheSetUpAgain) {
    const auto truth = [&] {
        EXPECT_EQ(form.cmd_LoadAgain.Visible(), form.lbl_NotPolled.Visible());
        return form.lbl_NotPolled.Caption() + (form.Label4.Enabled() ? "" : ", label held") +
               (form.Note().empty() ? "" : ", " + form.Note());
    };
    EXPECT_EQ(truth(), "No row is polled: fill in a row, or load a set (Ctrl+O), label held");
    dialogs.files = {set_with({"1,3,100,1"}, "LOG TO FILE=TRUE\r\nLOGGING INTERVAL=1\r\n")};
    form.cmd_LoadAgain.press(); // none is known yet: asks for one
    form.mnuStartLogging.choose();
    EXPECT_EQ(truth(), "");
    run(2);
    form.Form_Activate();
    EXPECT_EQ(form.Caption(), "Data Logging - ACTIVE"); // required
    EXPECT_EQ(truth(),
              "No row is polled: load the set again (Ctrl+O), label held, no row is polled");
    run(1);
    EXPECT_TRUE(form.lbl_Status.Caption().find("Next pass in 1 s, without any row. Lines waiting: "
                                               "3.") != std::string::npos);
    // Goes on where it was, and writes what waits once, into the file of that moment.
    log_file = logging.gLogFileName;
    form.cmd_LoadAgain.press();
    EXPECT_EQ(truth(), "");
    EXPECT_EQ(active(), "active, runs");
    EXPECT_EQ(seen(), "runs, 4 sent, 1 gathered, 0 shown");
    EXPECT_EQ(lines(), 3);
    // What was changed by hand is not dropped without a question; stopped, nothing starts.
    form.mnuStopLogging.choose();
    edit(1, 4, "2");
    form.Form_Activate();
    form.cmd_LoadAgain.press();
    EXPECT_EQ(row(1), "-1|Yes|1|3|100|2| 72.5");
    dialogs.answers = {MessageAnswer::Yes};
    form.cmd_LoadAgain.press();
    EXPECT_EQ(row(1), "1|Yes|1|3|100|1|");
    EXPECT_EQ(active(), "-, -");
    // Loading a set without "AUTO" stops the logging, and the window says so.
    form.mnuStartLogging.choose();
    dialogs.files = {set_file};
    EXPECT_EQ(after(form.mnuLoadSet), "-, -");
}

TEST_F(LoggingFormTest, SaysWhichRowIsUnclearUntilItIsMended) {
    dialogs.files = {set_with({"1,3,100,1", "1,3,x,0", "1,3,y,0"})};
    form.mnuLoadSet.choose();
    EXPECT_TRUE(form.lbl_NotPolled.Visible());
    EXPECT_EQ(form.lbl_NotPolled.Caption(), "Row 2: the register \"x\" is no number. (1 more)");
    EXPECT_EQ(after(form.mnuStartLogging), "active, runs"); // polled as they are read
    EXPECT_TRUE(form.lbl_NotPolled.Visible());
    form.mnuStopLogging.choose(); // no cell is mended before
    edit(2, 3, "101");
    edit(3, 3, "101");
    EXPECT_FALSE(form.lbl_NotPolled.Visible());
}

TEST_F(LoggingFormTest, PaintsBetweenTheRowsOfASilentController) {
    load({"1,3,100,0", "1,3,101,0", "1,3,200,0"});
    instead = "";
    Texts painted;
    desktop.on_paint = [&] {
        painted.push_back(form.lbl_Status.Caption());
        if (logger.in_pass()) edit(1, 1, ""); // a click from before the pass
    };
    form.mnuStartLogging.choose();
    instead.reset();
    run(10); // a quick controller does not wait for it
    EXPECT_EQ(painted,
              (Texts{"Logging is stopped. Lines waiting: 0.", // the menu is gone
                     "Pass under way, asking for row 2.", "Pass under way, asking for row 3."}));
    EXPECT_TRUE(dialogs.prompts.empty());
}

TEST_F(LoggingFormTest, TellsAtTheStartThatTheFileCannotBeWrittenAndAsksBeforeItCloses) {
    load({"1,3,100,0"}, "LOG TO FILE=TRUE\r\nLOGGING INTERVAL=1\r\n");
    dialogs.files = {dir.file("missing/log.txt")};
    form.cmd_Browse.press();
    EXPECT_FALSE(dialogs.requests.back().overwrite_prompt); // lines are added
    form.mnuStartLogging.choose();
    EXPECT_EQ(seen(), "stands, 0 sent, 0 gathered, 1 shown");
    dialogs.answers = {MessageAnswer::Yes};
    form.mnuStartLogging.choose();
    EXPECT_EQ(seen(), "runs, 1 sent, 1 gathered, 1 shown");
    EXPECT_FALSE(form.Unload());
    EXPECT_EQ(dialogs.texts().back(), "Data logging is running. Stop it and close the window?");
    EXPECT_TRUE(form.tmr_LoggingInterval.running());
    log_file = dir.file("other.txt");
    form.txt_LogFilename.set_Text(log_file);
    EXPECT_TRUE(can_append(log_file));
    EXPECT_FALSE(fileexists(log_file)); // being asked leaves nothing behind
    dialogs.answers = {MessageAnswer::Yes};
    EXPECT_TRUE(form.Unload());
    EXPECT_EQ(lines(), 1);
}

TEST_F(LoggingFormTest, NamesAndUnitsAreAskedForWithWhatTheSequenceFilesSay) {
    const std::string folder = dir.file("Download Sequences/");
    std::filesystem::create_directory(folder);
    for (const auto& [name, text] :
         {std::pair{"730.cds", "NO\n-\n-\n-\n300 Set point\n100 Process value {x}\n\n100 behind\n"},
          {"742.cds", "NO\n100 head\n-\n-\n100\n100 Process value\n"},
          {"742.pds", "1 a\n2 b\n3 c\n4 d\n5 e\n6 f\nRUN\n100 process value 1 {degrees}\n"},
          {"bad.pds", "100 no sequence\n"}})
        testing::write_file(folder + name, text);
    load({"1,3,100,1", "1,4,100,1"});
    dialogs.texts_entered = {"Oven", std::nullopt, std::string(61, 'x'), "K"};
    for (const int number : {1, 2, 1})
        edit(number, log_column::kName, "");
    edit(1, log_column::kUnit, "");
    EXPECT_EQ(dialogs.questions[0].suggestions, (Texts{"Process value", "process value 1"}));
    EXPECT_EQ(dialogs.questions[1].suggestions, Texts{}); // an input register
    EXPECT_EQ(dialogs.questions[2].default_text, "Oven");
    EXPECT_EQ(dialogs.shown.size(), 1U); // too long
    EXPECT_EQ(form.MSFlexGrid1.TextMatrix(1, log_column::kName), "Oven");
    EXPECT_EQ(form.MSFlexGrid1.TextMatrix(1, log_column::kUnit), "K");
    logger.RunLoggingPass();
    EXPECT_EQ(logger.trend().label(0), (TrendLabel{"Oven", "K"}));
    EXPECT_EQ(logger.trend().label(1).name, "Input register 100 at 1");
    form.mnuStopLogging.choose();
    dialogs.texts_entered = {"Oven"}; // the same name twice is told apart at once
    edit(2, log_column::kName, "");
    EXPECT_EQ(logger.trend().label(1).name, "Oven (row 2)");
}

} // namespace
} // namespace pelvan
