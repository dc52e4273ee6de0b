#include "transfer/download_parm_form.h"

#include <algorithm>
#include <utility>

#include "platform/run_time_error.h"
#include "serial/errors.h"
#include "text/numbers.h"
#include "transfer/comparison.h"

namespace pelvan {
namespace {

constexpr int kMostAddress = 247;

std::vector<std::string> addresses() {
    std::vector<std::string> texts;
    for (int address = 1; address <= kMostAddress; ++address)
        texts.push_back(std::to_string(address));
    return texts;
}

} // namespace

/// The state of the window during a transfer, put back however the transfer ends.
class frm_DownloadParm::Transferring {
  public:
    explicit Transferring(frm_DownloadParm& form) : form_(form) {
        form_.run_ = TransferRun{};
        form_.run_.running = true;
        form_.run_.errors_before = form_.List2.ListCount();
        form_.cmbAddress.set_Enabled(false);
        form_.cmdCancel.set_Enabled(true);
        form_.cmdCancel.SetFocus();
    }
    Transferring(const Transferring&) = delete;
    Transferring& operator=(const Transferring&) = delete;
    ~Transferring() {
        form_.run_.running = false;
        form_.ProgressBar1.set_Value(0);
        form_.set_Pointer(MousePointer::Normal);
        form_.EnableButtons();
        form_.cmdCancel.set_Enabled(false);
        form_.cmbAddress.set_Enabled(true);
    }

  private:
    frm_DownloadParm& form_;
};

frm_DownloadParm::frm_DownloadParm(Services& services, Link& link, Modbus& modbus)
    : Form("frm_DownloadParm", "Save/Restore Setup"),
      cmbAddress("cmbAddress", addresses(), 0, true, "Address of the controller, 1 to 247."),
      services_(services), access_(services, link, modbus, cmbAddress, List2, run_),
      profiles_(services, access_, run_, ProgressBar1,
                [this](const std::string& text) { log(text); }) {
    set_help_page("transfer");
    cmdCancel.set_Enabled(false);
    cmdDownload.Click = [this] { cmdDownload_Click(); };
    cmdUpload.Click = [this] { cmdUpload_Click(); };
    cmdCompare.Click = [this] { cmdCompare_Click(); };
    cmdCancel.Click = [this] { cmdCancel_Click(); };
    // What can have the focus during a transfer.
    for (Control* control : {static_cast<Control*>(&cmdCancel), static_cast<Control*>(&List1),
                             static_cast<Control*>(&List2), static_cast<Control*>(&chkCompare)}) {
        control->KeyDown = [this](Key key) {
            if (key != Key::Escape || !run_.running) return false;
            cmdCancel_Click();
            return true;
        };
    }
    cmdClearListBox.Click = [this] { List1.Clear(); };
    cmdClearList2.Click = [this] { List2.Clear(); };
    cmdExit.Click = [this] { Unload(); };
}

void frm_DownloadParm::EnableButtons() {
    enable_buttons(true);
}

void frm_DownloadParm::DisableButtons() {
    enable_buttons(false);
}

void frm_DownloadParm::enable_buttons(bool on) {
    for (Button* button :
         {&cmdDownload, &cmdUpload, &cmdCompare, &cmdClearListBox, &cmdClearList2, &cmdExit})
        button->set_Enabled(on);
}

void frm_DownloadParm::log(const std::string& text) {
    List1.AddItem(text);
    List1.set_ListIndex(List1.ListCount() - 1);
    services_.desktop.let_events_run();
}

/// Runs a transfer; an error of a file ends it with its message.
void frm_DownloadParm::transfer(const std::function<void()>& work) {
    if (run_.running) return;
    {
        const Transferring transferring(*this);
        try {
            work();
        } catch (const RunTimeError& error) {
            run_.completed = false;
            show_error_message(services_.dialogs, error.number(), error.subject());
        }
        show_new_errors();
    }
    if (run_.close_when_done) Unload();
    if (const auto next = std::exchange(ended, nullptr)) next();
}

/// Nobody shall trust a file or a controller without having seen what went wrong.
void frm_DownloadParm::show_new_errors() {
    if (run_.faults == 0 || List2.ListCount() == 0) return;
    // Refusals are put ahead of everything else.
    const int first = run_.error_count > 0 ? 0 : run_.errors_before;
    List2.set_ListIndex(std::min(first, List2.ListCount() - 1));
    List2.SetFocus();
}

std::optional<std::string> frm_DownloadParm::choose_setup_file() {
    FileDialogRequest request;
    request.filter = kSetupFileFilter;
    request.initial_directory = reg_downloads_path(services_.application_directory);
    request.must_exist = true;
    return services_.dialogs.open_file(request);
}

void frm_DownloadParm::cmdDownload_Click() {
    transfer([this] { download(); });
}

void frm_DownloadParm::cmdUpload_Click() {
    transfer([this] { upload(); });
}

void frm_DownloadParm::cmdCompare_Click() {
    transfer([this] {
        const auto file = choose_setup_file();
        if (!file) return;
        DisableButtons();
        compare(*file);
    });
}

void frm_DownloadParm::compare(const std::string& file) {
    const Hourglass hourglass(*this);
    Comparison comparison(services_, access_, profiles_, run_, ProgressBar1,
                          [this](const std::string& text) { log(text); });
    const std::string outcome = comparison.run(file);
    if (!outcome.empty()) services_.dialogs.message_box(outcome);
}

void frm_DownloadParm::cmdCancel_Click() {
    if (!run_.running || run_.cancel) return;
    const auto answer = services_.dialogs.message_box("Do you want to cancel the transfer?", {},
                                                      MessageButtons::YesNoPreferNo);
    // The transfer may have ended while the question stood there.
    if (answer == MessageAnswer::Yes && run_.running) run_.cancel = true;
}

void frm_DownloadParm::cancel_transfer() {
    if (run_.running) run_.cancel = true;
}

bool frm_DownloadParm::Form_Unload() {
    if (!run_.running) return true;
    cmdCancel_Click();
    run_.close_when_done = run_.cancel;
    return false;
}

} // namespace pelvan
