#include "transfer/download_parm_form.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/run_time_error.h"
#include "registers/setup_file.h"
#include "serial/errors.h"
#include "transfer/comparison.h"
#include "transfer/download.h"
#include "transfer/upload.h"

namespace pelvan {
namespace {

constexpr int kMaxAddress = 247;
constexpr char kSaving[] = "Saving in";

std::vector<std::string> addresses() {
    std::vector<std::string> texts;
    for (int address = 1; address <= kMaxAddress; ++address)
        texts.push_back(std::to_string(address));
    return texts;
}

std::string with_file(const std::string& transfer, const std::string& path) {
    return transfer + " " + std::filesystem::path(path).filename().string();
}

} // namespace

/// The state of the window during a transfer, put back however the transfer ends.
class frm_DownloadParm::Transferring {
  public:
    explicit Transferring(frm_DownloadParm& form) : form_(form) {
        form_.running_ = true;
        form_.cancel_ = {};
        form_.close_when_done_ = false;
        form_.first_error_.reset();
        form_.cmdOpenFolder.set_Enabled(false);
        form_.cmbAddress.set_Enabled(false);
        form_.cmdCancel.set_Enabled(true);
        form_.cmdCancel.SetFocus();
    }
    Transferring(const Transferring&) = delete;
    Transferring& operator=(const Transferring&) = delete;
    ~Transferring() {
        form_.running_ = false;
        form_.ProgressBar1.set_Value(0);
        form_.set_Pointer(MousePointer::Normal);
        form_.EnableButtons();
        form_.cmdCancel.set_Enabled(false);
        form_.cmdOpenFolder.set_Enabled(true);
        form_.cmbAddress.set_Enabled(true);
    }

  private:
    frm_DownloadParm& form_;
};

frm_DownloadParm::frm_DownloadParm(Services& services, Link& link, Modbus& modbus)
    : Form("frm_DownloadParm", "Save/Restore Setup"),
      cmbAddress("cmbAddress", addresses(), 0, true, "Address of the controller, 1 to 247."),
      services_(services), link_(link), modbus_(modbus) {
    set_help_page("transfer");
    cmdCancel.set_Enabled(false);
    cmdDownload.Click = [this] { cmdDownload_Click(); };
    cmdUpload.Click = [this] { cmdUpload_Click(); };
    cmdCompare.Click = [this] { cmdCompare_Click(); };
    cmdCancel.Click = [this] { cmdCancel_Click(); };
    // What can have the focus during a transfer.
    for (Control* control :
         std::initializer_list<Control*>{&cmdCancel, &List1, &List2, &chkCompare, &chkTogether}) {
        control->KeyDown = [this](Key key) {
            if (key != Key::Escape || !running_) return false;
            cmdCancel_Click();
            return true;
        };
    }
    cmdClearListBox.Click = [this] { List1.Clear(); };
    cmdClearList2.Click = [this] { List2.Clear(); };
    cmdExit.Click = [this] { Unload(); };
    cmdOpenFolder.Click = [this] { cmdOpenFolder_Click(); };
    txt_File.set_Locked(true);
    show_file_controls(false);
    FileDropped = [this](const std::string& path) { file_dropped(path); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuHelp};
}

void frm_DownloadParm::enable_buttons(bool on) {
    for (Button* button :
         {&cmdDownload, &cmdUpload, &cmdCompare, &cmdClearListBox, &cmdClearList2, &cmdExit})
        button->set_Enabled(on);
}

/// Runs a transfer; an error of a file ends it with its message.
void frm_DownloadParm::transfer(const std::function<void()>& work) {
    if (running_) return;
    if (const std::string refusal = link_.refusal(); !refusal.empty()) {
        services_.dialogs.message_box(refusal);
        return;
    }
    if (address_refused(cmbAddress.Text(), modbus_, services_.dialogs)) {
        cmbAddress.SetFocus();
        cmbAddress.select_all();
        return;
    }
    name_.clear();
    {
        const Transferring transferring(*this);
        try {
            work();
        } catch (const RunTimeError& error) {
            show_error_message(services_.dialogs, error.number(), error.subject());
        }
        if (lbl_File.Caption() == kSaving) lbl_File.set_Caption("Saved in part in");
        show_new_errors();
    }
    if (close_when_done_) Unload();
    ended.raise();
}

/// What an earlier transfer left in the list of errors stays there, above a line that says so.
void frm_DownloadParm::begin_errors() {
    const std::string name = std::exchange(name_, {});
    if (name.empty() || List2.ListCount() == 0) return;
    List2.AddItem("------ " + name + " ------");
    List2.set_ListIndex(List2.ListCount() - 1);
}

TransferContext frm_DownloadParm::context() {
    return {link_,
            modbus_,
            services_.clock,
            services_.application_directory,
            DeviceAddress(cmbAddress.Text()),
            *this,
            cancel_,
            chkTogether.checked()};
}

/// Nobody shall trust a file or a controller without having seen what went wrong.
void frm_DownloadParm::show_new_errors() {
    if (!first_error_) return;
    List2.set_ListIndex(std::min(*first_error_, List2.ListCount() - 1));
    List2.SetFocus();
}

FileDialogRequest frm_DownloadParm::file_request() const {
    FileDialogRequest request;
    request.filter = kSetupFileFilter;
    request.kind = "setup";
    request.initial_directory = reg_downloads_path(services_.application_directory);
    return request;
}

std::optional<std::string> frm_DownloadParm::choose_setup_file() {
    FileDialogRequest request = file_request();
    request.must_exist = true;
    request.file_name = std::exchange(dropped_, {});
    return services_.dialogs.open_file(request);
}

std::optional<std::string> frm_DownloadParm::choose_file_to_save(const std::string& proposed_name) {
    FileDialogRequest request = file_request();
    request.file_name = proposed_name;
    return services_.dialogs.save_file(request);
}

void frm_DownloadParm::show_file_controls(bool on) {
    for (Control* control : std::initializer_list<Control*>{&lbl_File, &txt_File, &cmdOpenFolder})
        control->set_Visible(on);
}

void frm_DownloadParm::show_file(const std::string& words, const std::string& path) {
    lbl_File.set_Caption(words);
    txt_File.set_Text(path);
    show_file_controls(true);
}

void frm_DownloadParm::cmdOpenFolder_Click() {
    if (!services_.desktop.show_folder_of(txt_File.Text()))
        services_.dialogs.message_box("The folder cannot be shown here. The file is\n" +
                                          txt_File.Text(),
                                      {}, MessageButtons::Ok, MessageIcon::Exclamation);
}

void frm_DownloadParm::cmdDownload_Click() {
    transfer([this] {
        name_ = "Download";
        List1.Clear();
        if (Download(context()).run().completed) lbl_File.set_Caption("Saved in");
    });
}

void frm_DownloadParm::saving_in(const std::string& path) {
    show_file(kSaving, path);
    if (!name_.empty()) name_ = with_file("Download", path);
    begin_errors();
}

void frm_DownloadParm::cmdUpload_Click() {
    transfer([this] {
        if (const auto file = choose_setup_file()) upload(*file);
    });
}

void frm_DownloadParm::upload(const std::string& file) {
    show_file("Upload of", file);
    name_ = with_file("Upload", file);
    const TransferResult result = Upload(context()).run(file);
    // The box may have been set meanwhile.
    if (result.completed && chkCompare.checked()) compare(file);
}

void frm_DownloadParm::cmdCompare_Click() {
    transfer([this] {
        const auto file = choose_setup_file();
        if (!file) return;
        show_file("Compared with", *file);
        compare(*file);
    });
}

void frm_DownloadParm::compare(const std::string& file) {
    name_ = with_file("Compare", file);
    begin_errors();
    static_cast<void>(Comparison(context()).run(file));
}

void frm_DownloadParm::file_dropped(const std::string& path) {
    if (running_) return;
    dropped_ = path;
    const auto answer = services_.dialogs.message_box(
        "Compare this file with the controller at address " + cmbAddress.Text() + "?\n" + path +
            "\n\nNothing is written to the controller. Upload writes the file into it.",
        {}, MessageButtons::YesNo);
    if (answer == MessageAnswer::Yes)
        transfer([this, path] {
            show_file("Compared with", path);
            compare(path);
        });
}

void frm_DownloadParm::cmdCancel_Click() {
    if (!running_ || cancel_.canceled) return;
    const auto answer = services_.dialogs.message_box("Do you want to cancel the transfer?", {},
                                                      MessageButtons::YesNoPreferNo);
    // The transfer may have ended while the question stood there.
    if (answer == MessageAnswer::Yes) cancel_transfer();
}

void frm_DownloadParm::cancel_transfer() {
    if (running_) cancel_.canceled = true;
}

bool frm_DownloadParm::Form_Unload() {
    if (!running_) return true;
    cmdCancel_Click();
    close_when_done_ = cancel_.canceled;
    return false;
}

void frm_DownloadParm::log(const std::string& text) {
    List1.AddItem(text);
    List1.set_ListIndex(List1.ListCount() - 1);
}

void frm_DownloadParm::list_error(const std::string& text, std::optional<int> position) {
    begin_errors();
    const int at = std::min(position.value_or(List2.ListCount()), List2.ListCount());
    if (at == List2.ListCount())
        List2.AddItem(text);
    else
        List2.AddItem(text, at);
    first_error_ = std::min(first_error_.value_or(at), at);
}

void frm_DownloadParm::clear_errors() {
    List2.Clear();
    name_.clear();
    first_error_.reset();
}

void frm_DownloadParm::progress(int done, int of) {
    if (ProgressBar1.Max() != of) ProgressBar1.set_Value(0);
    ProgressBar1.set_Max(of);
    ProgressBar1.set_Value(done);
}

bool frm_DownloadParm::ask_retry(const std::string& text) {
    return services_.dialogs.message_box(text, {}, MessageButtons::RetryCancel) ==
           MessageAnswer::Retry;
}

bool frm_DownloadParm::confirm(TransferQuestion, const std::string& text) {
    return services_.dialogs.message_box(text, {}, MessageButtons::YesNoPreferNo) ==
           MessageAnswer::Yes;
}

void frm_DownloadParm::tell(const std::string& text, const std::string& title) {
    services_.dialogs.message_box(text, title);
}

} // namespace pelvan
