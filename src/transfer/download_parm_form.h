// "Save/Restore Setup": a controller's whole setup into a text file (download), the file back into
// a controller of the same model (upload), and the comparison of a file with a controller. A
// transfer runs to its end inside the handler that started it; it lets the window's events run
// after every register, with the buttons disabled, so that it can be seen and cancelled.
#pragma once

#include <functional>
#include <string>

#include "forms/form.h"
#include "forms/lists.h"
#include "platform/event.h"
#include "platform/services.h"
#include "registers/transfer_run.h"

namespace pelvan {

class frm_DownloadParm : public Form, private TransferListener {
  public:
    frm_DownloadParm(Services& services, Link& link, Modbus& modbus);

    Label LblAddress{"LblAddress", "Device Address"};
    ComboBox cmbAddress;
    Button cmdDownload{"cmdDownload", "Download",
                       "This will download the registers from the controller to a text file."};
    Button cmdUpload{"cmdUpload", "Upload",
                     "This will upload the registers from a text file to the controller."};
    Button cmdCompare{
        "cmdCompare", "Co&mpare with file",
        "Read every register of a text file from the controller and list the "
        "differences. Profiles and registers that are not in the file are not looked at."};
    CheckBox chkCompare{"chkCompare", "Compare with &file after an upload",
                        "Read every register of the text file back after an upload."};
    CheckBox chkTogether{"chkTogether", "Read &neighbours together",
                         "Check to read registers that follow one another with one request (up to "
                         "125), which is much quicker. What the controller refuses so is read "
                         "singly; values and files stay the same."};
    Button cmdCancel{"cmdCancel", "&Cancel", "Cancel the transfer (Escape)."};
    Label Label1{"Label1", "Command/Response History"};
    ListBox List1{"List1"};
    Button cmdClearListBox{"cmdClearListBox", "Clear", "Clear all items in the List Box."};
    Label Label2{"Label2", "Read/Write Errors"};
    Label Label3{"Label3", "Response From Control"};
    Label Label4{"Label4", "Register No    Value"};
    ListBox List2{"List2"};
    Button cmdClearList2{"cmdClearList2", "Clear"};
    ProgressBar ProgressBar1{"ProgressBar1"};
    /// Where the file of the last transfer lies; hidden before the first one.
    Label lbl_File{"lbl_File"};
    TextBox txt_File{"txt_File", {}, "The file of the last transfer."};
    Button cmdOpenFolder{"cmdOpenFolder", "&Open Folder", "Show the folder that the file lies in."};
    Button cmdExit{"cmdExit", "E&xit"};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents"};

    void cmdDownload_Click();
    void cmdUpload_Click();
    void cmdCompare_Click();
    void cmdOpenFolder_Click();
    /// Asks whether to compare the file with the controller, which writes nothing; whoever wants
    /// something else of it finds it proposed.
    void file_dropped(const std::string& path);
    /// Asks whether to cancel the running transfer, which then ends at its next register.
    void cmdCancel_Click();
    /// Closing during a transfer asks; the window goes when the transfer has ended as cancelled.
    bool Form_Unload() override;

    /// Cancels without asking: an interrupt, or the end of the program.
    void cancel_transfer();
    [[nodiscard]] bool running() const { return running_; }
    /// Whether the transfer that runs, or the last one, is to end early.
    [[nodiscard]] bool canceled() const { return cancel_.canceled; }
    /// A transfer has ended, however it ended.
    Event<> ended;

  private:
    class Transferring;

    void EnableButtons() { enable_buttons(true); }
    void DisableButtons() { enable_buttons(false); }
    void enable_buttons(bool on);
    void transfer(const std::function<void()>& work);
    void begin_errors();
    void upload(const std::string& file);
    void show_new_errors();
    [[nodiscard]] TransferContext context();
    [[nodiscard]] FileDialogRequest file_request() const;
    [[nodiscard]] std::optional<std::string> choose_setup_file();
    void show_file_controls(bool on);
    void compare(const std::string& file);
    void show_file(const std::string& words, const std::string& path);

    void begun() override { DisableButtons(); }
    void working() override { set_Pointer(MousePointer::Hourglass); }
    void log(const std::string& text) override;
    void list_error(const std::string& text, std::optional<int> position) override;
    void clear_errors() override;
    void progress(int done, int of) override;
    void let_events_run() override { services_.desktop.let_events_run(); }
    bool ask_retry(const std::string& text) override;
    bool confirm(TransferQuestion question, const std::string& text) override;
    void tell(const std::string& text, const std::string& title) override;
    std::optional<std::string> choose_file_to_save(const std::string& proposed_name) override;
    void saving_in(const std::string& path) override;

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    bool running_ = false;
    CancelFlag cancel_;
    bool close_when_done_ = false; // the window was closed meanwhile
    std::string dropped_;          // is proposed when a file is chosen
    std::string name_; // of the transfer, as long as the list of errors does not have it
    /// Where the first line of this transfer stands in the list of errors; nothing as long as it
    /// has none there.
    std::optional<int> first_error_;
};

} // namespace pelvan
