// "Save/Restore Setup": a controller's whole setup into a text file (download), the file back into
// a controller of the same model (upload), and the comparison of a file with a controller. A
// transfer runs to its end inside the handler that started it; it lets the window's events run
// after every register, with the buttons disabled, so that it can be seen and cancelled.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>

#include "forms/form.h"
#include "forms/lists.h"
#include "platform/services.h"
#include "platform/text_file.h"
#include "transfer/controller_access.h"
#include "transfer/profile_transfer.h"
#include "transfer/sequence_file.h"
#include "transfer/setup_file.h"

namespace pelvan {

class frm_DownloadParm : public Form {
  public:
    frm_DownloadParm(Services& services, Link& link, Modbus& modbus);

    Label LblAddress{"LblAddress", "Device Address"};
    ComboBox cmbAddress;
    Button cmdDownload{"cmdDownload", "Download",
                       "This will download the registers from the controller to a text file."};
    Button cmdUpload{"cmdUpload", "Upload",
                     "This will upload the registers from a text file to the controller."};
    Button cmdCompare{"cmdCompare", "Co&mpare with file",
                      "Read every register of a text file from the controller and list the "
                      "differences."};
    CheckBox chkCompare{"chkCompare", "Compare with &file after an upload",
                        "Read every register of the text file back after an upload."};
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
    Button cmdExit{"cmdExit", "E&xit"};

    void cmdDownload_Click();
    void cmdUpload_Click();
    void cmdCompare_Click();
    /// Asks whether to cancel the running transfer, which then ends at its next register.
    void cmdCancel_Click();
    /// Closing during a transfer asks; the window goes when the transfer has ended as cancelled.
    bool Form_Unload() override;

    /// Called once, when the transfer that runs has ended.
    std::function<void()> ended;

    /// Cancels without asking: an interrupt, or the end of the program.
    void cancel_transfer();
    /// How the last transfer ended.
    [[nodiscard]] const TransferRun& run() const { return run_; }

  private:
    class Transferring;

    void EnableButtons();
    void DisableButtons();
    void enable_buttons(bool on);
    void transfer(const std::function<void()>& work);
    void log(const std::string& text);
    void show_new_errors();
    [[nodiscard]] std::optional<std::string> choose_setup_file();

    // Download.
    struct HeldBack {
        std::array<std::string, 17> lines;
        int index = 0;
    };
    void download();
    [[nodiscard]] bool CreateTextFile(std::unique_ptr<TextWriter>& TextFile);
    [[nodiscard]] std::string read_for_header(float register_number);
    [[nodiscard]] bool read_serial_number(ControllerIdentity& identity);
    void download_registers(SequenceFile& sequence, TextWriter& setup, HeldBack& held);
    [[nodiscard]] bool download_register(float register_number, bool has_profiles,
                                         TextWriter& setup, HeldBack& held);
    [[nodiscard]] bool hold_back(HeldBack& held, const std::string& line);

    // Upload.
    void upload();
    struct Plan {
        std::string file;
        float model = 0;
        bool has_profiles = false;
        ProfileRegisters registers;
    };
    [[nodiscard]] bool find_profiles(Plan& plan);
    [[nodiscard]] bool upload_wanted(Plan& plan);
    [[nodiscard]] bool erase_settings(const Plan& plan, TextWriter& errors);
    [[nodiscard]] bool model_matches(const Plan& plan);
    void upload_lines(const Plan& plan, TextWriter& errors);
    void upload_line(const Plan& plan, const std::string& line, TextWriter& errors);
    [[nodiscard]] ProfileTransfer::Restored upload_register(const Plan& plan, const SetupLine& line,
                                                            TextWriter& errors);
    void upload_ended(const Plan& plan);

    void compare(const std::string& file);

    Services& services_;
    TransferRun run_;
    ControllerAccess access_;
    ProfileTransfer profiles_;
};

} // namespace pelvan
