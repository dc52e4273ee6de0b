#include "text/numbers.h"
#include "transfer/download_parm_form.h"

namespace pelvan {
namespace {

constexpr float kSerialFirst = 1;
constexpr float kSerialSecond = 2;
constexpr float kSoftware = 3;
constexpr float kRevision = 4;

constexpr char kCanceledEntry[] = "*******Download Canceled*******";

/// Slots of held-back lines that are written; one more is held before it is an error.
constexpr std::size_t kHeldBackWritten = 16;
constexpr int kHeldBackTooMany = 17;

} // namespace

void frm_DownloadParm::download() {
    List1.Clear();
    const std::string model = access_.read_model();
    if (model.empty() || model == kReadFailed) {
        services_.dialogs.message_box(ControllerAccess::kCheckPort);
        return;
    }
    const std::string sequence_file =
        sequence_path(services_.application_directory, model + ".cds");
    if (!fileexists(sequence_file)) {
        services_.dialogs.message_box(
            "Do not have correct download file sequence for this model of control!");
        return;
    }
    ProgressBar1.set_Max(register_lines(count_lines(sequence_file)));
    SequenceFile sequence(sequence_file);
    std::unique_ptr<TextWriter> setup;
    if (!CreateTextFile(setup)) return;
    HeldBack held;
    const Hourglass hourglass(*this); // until the closing message is answered
    ProgressBar1.set_Value(0);
    DisableButtons();
    log("******Beginning  Download******");
    download_registers(sequence, *setup, held);
    if (!run_.cancel) log("*******Download Sequence Complete*******");
    if (!run_.cancel && sequence.has_profiles()) {
        profiles_.DownLoadProfiles(*setup, model);
        // All sixteen are written, those never filled as empty lines.
        for (std::size_t i = 0; i < kHeldBackWritten && !run_.cancel; ++i)
            setup->writeline(held.lines[i]);
    }
    if (run_.cancel)
        log(kCanceledEntry);
    else
        setup->writeline(kLastSetupLine);
    setup->Close();
    run_.completed = !run_.cancel;
    if (run_.cancel)
        services_.dialogs.message_box("Download was Canceled.", "Download Canceled");
    else
        services_.dialogs.message_box("Downloading Process Complete.", "Download Complete");
}

bool frm_DownloadParm::read_serial_number(ControllerIdentity& identity) {
    for (;;) {
        identity.serial_first = access_.ReadDataFromControl(kSerialFirst);
        identity.serial_second = access_.ReadDataFromControl(kSerialSecond);
        if (identity.serial_first != kReadFailed && identity.serial_second != kReadFailed)
            return true;
        if (access_.ask_retry("Comm error!")) continue;
        services_.dialogs.message_box(ControllerAccess::kCheckPort);
        return false;
    }
}

std::string frm_DownloadParm::read_for_header(float register_number) {
    std::string value = access_.ReadDataFromControl(register_number);
    if (value == kReadFailed) access_.list_error("No reply", register_number, value);
    return value;
}

bool frm_DownloadParm::CreateTextFile(std::unique_ptr<TextWriter>& TextFile) {
    ControllerIdentity identity;
    if (!read_serial_number(identity)) return false;
    FileDialogRequest request;
    request.filter = kSetupFileFilter;
    request.initial_directory = reg_downloads_path(services_.application_directory);
    request.file_name = identity.serial_first + identity.serial_second + ".txt";
    const auto chosen = services_.dialogs.save_file(request);
    if (!chosen) return false;
    const std::string path = with_text_extension(*chosen);
    if (fileexists(path) &&
        services_.dialogs.message_box("File already exists. Do you want to overwrite this file?",
                                      {}, MessageButtons::YesNoPreferNo) != MessageAnswer::Yes)
        return false;
    TextFile = pelvan::CreateTextFile(path, true);
    // The header asks the controller again, also for what named the file; a register that does not
    // answer now stands there as "ERROR".
    identity.model = read_for_header(ControllerAccess::kModelRegister);
    identity.serial_first = read_for_header(kSerialFirst);
    identity.serial_second = read_for_header(kSerialSecond);
    identity.software = read_for_header(kSoftware);
    identity.revision = read_for_header(kRevision);
    for (const std::string& line : setup_header(identity, services_.clock.now()))
        TextFile->writeline(line);
    return true;
}

void frm_DownloadParm::download_registers(SequenceFile& sequence, TextWriter& setup,
                                          HeldBack& held) {
    while (const auto register_number = sequence.next_register()) {
        if (!download_register(*register_number, sequence.has_profiles(), setup, held)) {
            run_.cancel = true;
            return;
        }
        ProgressBar1.set_Value(ProgressBar1.Value() + 1);
        if (run_.cancel) return;
    }
    // The list may have ended before the file did.
    ProgressBar1.set_Value(ProgressBar1.Max());
}

/// False when the download is to be cancelled.
bool frm_DownloadParm::download_register(float register_number, bool has_profiles,
                                         TextWriter& setup, HeldBack& held) {
    const std::string number = plain_single(register_number);
    std::string value = access_.ReadDataFromControl(register_number);
    if (value == kReadFailed) {
        log(number + " " + kReadFailed + " ***UNSUCCESSFUL***");
        value = access_.CheckCommErrorRead(register_number, value);
        if (value == kReadFailed) return false;
    }
    // What the controller marks as not there is neither written nor listed.
    if (is_skip_mark(value)) {
        services_.desktop.let_events_run();
        return true;
    }
    const std::string line = number + " " + value;
    if (has_profiles && is_digital_input_text(register_number)) {
        services_.desktop.let_events_run();
        return hold_back(held, line);
    }
    setup.writeline(line);
    log(line + " Successful");
    return true;
}

bool frm_DownloadParm::hold_back(HeldBack& held, const std::string& line) {
    held.lines[static_cast<std::size_t>(held.index++)] = line;
    if (held.index < kHeldBackTooMany) return true;
    services_.dialogs.message_box("Error in digital input text array.");
    services_.dialogs.message_box("Download canceled!");
    return false;
}

} // namespace pelvan
