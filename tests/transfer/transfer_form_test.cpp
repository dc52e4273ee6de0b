// The window of the transfers: what it enables, shows and asks around them.
#include "registers/transfer_errors.h"
#include "scripted_controller.h"
#include "transfer/download_parm_form.h"

namespace pelvan::testing {

class TransferForm : public ScriptedController {
  protected:
    TransferForm() {
        write_sequence("742.cds", "NO\r\n-\r\n-\r\n-\r\n5\r\n6\r\n");
        registers.insert({{5, 1}, {6, -12}});
    }
    void press(Button& button, std::deque<MessageAnswer> answers = {}) {
        rig.dialogs.files = {path("a.txt")};
        rig.dialogs.answers = std::move(answers);
        rig.dialogs.shown.clear();
        button.press();
        EXPECT_TRUE(form.cmdDownload.Enabled());
        EXPECT_TRUE(form.cmbAddress.Enabled());
        EXPECT_FALSE(form.cmdCancel.Enabled());
        EXPECT_EQ(form.Pointer(), MousePointer::Normal);
        EXPECT_EQ(form.ProgressBar1.Value(), 0);
    }

    FakeDesktop desktop;
    Services services{rig.tick, rig.clock, rig.dialogs, desktop, rig.dir.path()};
    frm_DownloadParm form{services, rig.link, modbus};
};

TEST_F(TransferForm, ADownloadFillsListAndBarWithTheButtonsDisabled) {
    form.cmbAddress.set_Text("12");
    form.List1.AddItem("old");
    rig.dialogs.on_message = [&](const std::string&) {
        EXPECT_EQ(form.ProgressBar1.Value(), form.ProgressBar1.Max());
        EXPECT_FALSE(form.cmdUpload.Enabled());
        EXPECT_EQ(form.Pointer(), MousePointer::Hourglass);
        form.cmdDownload.Click(); // no second one
    };
    press(form.cmdDownload);
    EXPECT_EQ(rig.dialogs.texts(), Lines{"Downloading Process Complete."});
    EXPECT_EQ(rig.dialogs.shown[0].title, "Download Complete");
    EXPECT_EQ(rig.dialogs.requests[0].file_name, "74211518.txt");
    EXPECT_EQ(rig.dialogs.requests[0].initial_directory, rig.dir.file("Reg Downloads"));
    EXPECT_EQ(form.List1.List(0), "******Beginning  Download******");
    EXPECT_EQ(form.List1.ListIndex(), form.List1.ListCount() - 1);
    EXPECT_EQ(port().outputs[0][0], 12);
}

TEST_F(TransferForm, SaysWhereTheFileWentAndTakesADroppedOne) {
    EXPECT_FALSE(form.cmdOpenFolder.Visible());
    press(form.cmdDownload);
    EXPECT_EQ(form.lbl_File.Caption(), "Saved in");
    EXPECT_EQ(form.txt_File.Text(), path("a.txt"));
    desktop.has_folders = false;
    form.cmdOpenFolder.press();
    EXPECT_EQ(desktop.folder_of, path("a.txt"));
    EXPECT_EQ(rig.dialogs.texts().back(),
              "The folder cannot be shown here. The file is\n" + path("a.txt"));

    write_file(path("dropped.txt"), read_file(path("a.txt")));
    desktop.on_turn = [&] { EXPECT_EQ(form.lbl_File.Caption(), "Saving in"); };
    press(form.cmdDownload, {MessageAnswer::Yes});
    desktop.on_turn = {};
    press(form.cmdDownload, {MessageAnswer::No}); // of overwriting
    EXPECT_EQ(form.lbl_File.Caption(), "Saved in");
    EXPECT_EQ(form.txt_File.Text(), path("a.txt"));
    form.FileDropped(path("dropped.txt")); // No to the comparison
    press(form.cmdCompare);
    EXPECT_EQ(rig.dialogs.requests.back().file_name, path("dropped.txt"));
    rig.dialogs.answers = {MessageAnswer::Yes};
    form.FileDropped(path("dropped.txt"));
    EXPECT_EQ(form.lbl_File.Caption(), "Compared with");
    EXPECT_EQ(form.txt_File.Text(), path("dropped.txt"));
}

TEST_F(TransferForm, TheFirstNewErrorIsShownAtTheEnd) {
    form.List2.AddItem("old");
    instead[6] = frame("02 03 02 00 58");
    press(form.cmdDownload);
    ASSERT_EQ(form.List2.ListCount(), 3);
    EXPECT_EQ(form.List2.List(1), "------ Download a.txt ------");
    EXPECT_EQ(form.List2.ListIndex(), 2);
    write_setup("x\r\n5 1\r\n6 1\r\n");
    refused = {5, 6};
    press(form.cmdUpload, {MessageAnswer::Yes});
    EXPECT_EQ(form.List2.ListCount(), 3) << "cleared before the erase";
    EXPECT_TRUE(form.List2.List(1).ends_with(" 6           1    Error"));
    const ErrorColumns columns = columns_of_error(form.List2.List(1));
    EXPECT_EQ(columns[1] + "|" + columns[2] + "|" + columns[3], "6|1|Error");
    EXPECT_FALSE(columns[0].empty());
    EXPECT_EQ(columns_of_error("a line"), ErrorColumns{"a line"});
    EXPECT_EQ(form.List2.ListIndex(), 0);
    press(form.cmdCompare);
    EXPECT_EQ(form.List2.List(3), "------ Compare a.txt ------");
}

TEST_F(TransferForm, ComparesAfterAnUploadWhenTheBoxIsSetMeanwhile) {
    write_setup("5 1\r\n");
    desktop.on_turn = [&] { form.chkCompare.set_Value(1); };
    press(form.cmdUpload, {MessageAnswer::Yes});
    EXPECT_EQ(rig.dialogs.texts().back(), "The controller holds what the file says.");
}

TEST_F(TransferForm, ClosingTheWindowAsksAndWaitsForTheEnd) {
    form.Show();
    bool ended = false;
    const auto subscription = form.ended.subscribe([&] { ended = !form.Visible(); });
    desktop.on_turn = [&] {
        if (form.List1.ListCount() == 2) form.Unload();
    };
    press(form.cmdDownload, {MessageAnswer::Yes});
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{"Do you want to cancel the transfer?", "Download was Canceled."}));
    EXPECT_TRUE(ended);
}

TEST_F(TransferForm, AnAddressThatIsNoneIsMendedBeforeATransferBegins) {
    bool focused = false;
    const auto subscription = form.cmbAddress.watch_select_all([&] { focused = true; });
    for (const auto& [text, message] : std::map<std::string, std::string>{
             {"99999", "OVERFLOW ERROR"}, {"1O", "Bad ADDRESS entered."}}) {
        form.cmbAddress.set_Text(text);
        for (Button* button : {&form.cmdDownload, &form.cmdUpload, &form.cmdCompare}) {
            press(*button);
            EXPECT_EQ(rig.dialogs.texts(), Lines{message});
            EXPECT_TRUE(std::exchange(focused, false));
        }
    }
}

} // namespace pelvan::testing
