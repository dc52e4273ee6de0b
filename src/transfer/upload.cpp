#include <filesystem>

#include "platform/run_time_error.h"
#include "text/numbers.h"
#include "transfer/download_parm_form.h"

namespace pelvan {
namespace {

using Restored = ProfileTransfer::Restored;

/// The download's word, with a trailing blank, for uploads: meant to be so.
constexpr char kCanceledEntry[] = "Download Canceled ";

} // namespace

void frm_DownloadParm::upload() {
    const auto file = choose_setup_file();
    if (!file) return;
    Plan plan;
    plan.file = *file;
    const std::string model = access_.read_model();
    if (model == kReadFailed) {
        // The download's words, here too.
        services_.dialogs.message_box(ControllerAccess::kCheckPort);
        return;
    }
    plan.model = static_cast<float>(leading_number(model));
    const auto errors =
        pelvan::CreateTextFile(reg_downloads_path(services_.application_directory,
                                                  plain_single(plan.model) + "_Upload_Error.TXT"),
                               true);
    DisableButtons();
    if (!upload_wanted(plan)) {
        log("*******Upload Canceled*******");
        services_.dialogs.message_box("Upload Canceled!");
        return;
    }
    const Hourglass hourglass(*this);
    if (!erase_settings(plan, *errors)) {
        if (run_.cancel)
            log(kCanceledEntry);
        else
            services_.dialogs.message_box("Communication Error,Upload Canceled.");
        return;
    }
    // Only now, with the settings erased, is the file looked at: the file of another model leaves
    // the controller at its presets. The order is meant to be so.
    if (!model_matches(plan)) {
        services_.dialogs.message_box(
            "Model number from the controller does not match the model number from the text file "
            "so Upload of values is canceled.");
        return;
    }
    try {
        upload_lines(plan, *errors);
    } catch (const RunTimeError&) {
        if (plan.has_profiles) profiles_.erase_created();
        throw;
    }
    errors->Close();
    upload_ended(plan);
}

/// The questions before anything is changed; false when the user declines.
bool frm_DownloadParm::upload_wanted(Plan& plan) {
    return find_profiles(plan) && services_.dialogs.message_box(
                                      "This erase all current settings. Do you want to continue?",
                                      {}, MessageButtons::YesNoPreferNo) == MessageAnswer::Yes;
}

bool frm_DownloadParm::find_profiles(Plan& plan) {
    const std::string model = plain_single(plan.model);
    const std::string path = sequence_path(services_.application_directory, model + ".cds");
    if (fileexists(path)) {
        SequenceFile sequence(path);
        plan.has_profiles = sequence.has_profiles();
        plan.registers = sequence.read_profile_registers();
        return true;
    }
    const auto ask = [&](const std::string& question) {
        return services_.dialogs.message_box(question, {}, MessageButtons::YesNoPreferNo) ==
               MessageAnswer::Yes;
    };
    if (!ask("Can not find the " + model + ".cds" +
             " file to check whether this model has Profiles. Do you want to continue with the "
             "upload?"))
        return false;
    plan.has_profiles = ask("Does model " + model + " have Profiles?");
    return true;
}

bool frm_DownloadParm::erase_settings(const Plan& plan, TextWriter& errors) {
    List2.Clear();
    run_.errors_before = 0;
    log("******Erasing Old Settings******");
    const auto pause = [this] { services_.desktop.let_events_run(); };
    std::string question = ControllerAccess::kCommError;
    while (!access_.DefaultControl(errors, pause)) {
        if (run_.cancel || !access_.ask_retry(question)) return false;
        question = "Comm Error!, Retry or Cancel";
    }
    profiles_.begin_upload(plan.registers);
    return !run_.cancel && (!plan.has_profiles || profiles_.clear_profiles(errors));
}

bool frm_DownloadParm::model_matches(const Plan& plan) {
    const auto setup = opentextfile(plan.file);
    return model_in_header(skip_to_line(*setup, kModelLine + 1)) == plan.model;
}

void frm_DownloadParm::upload_lines(const Plan& plan, TextWriter& errors) {
    ProgressBar1.set_Value(0);
    ProgressBar1.set_Max(count_lines(plan.file) - (kFirstSetupLine - 1));
    const auto setup = opentextfile(plan.file);
    skip_to_line(*setup, kFirstSetupLine);
    log("******Beginning  Upload******");
    while (!setup->AtEndOfStream() && !run_.cancel) {
        upload_line(plan, setup->readline(), errors);
        ProgressBar1.set_Value(ProgressBar1.Value() + 1);
    }
}

void frm_DownloadParm::upload_line(const Plan& plan, const std::string& text, TextWriter& errors) {
    const auto line = parse_setup_line(text);
    if (!line) {
        // A slot of a digital-input text that was never filled is an empty line.
        if (!text.empty()) access_.list_line(text);
        services_.desktop.let_events_run();
        return;
    }
    const Restored restored = upload_register(plan, *line, errors);
    if (restored == Restored::Canceled) {
        run_.cancel = true;
        return;
    }
    log(plain_single(line->register_number) + " " + plain_single(line->value) +
        (restored == Restored::Accepted ? " Successful" : " ***UNSUCCESSFUL***"));
}

Restored frm_DownloadParm::upload_register(const Plan& plan, const SetupLine& line,
                                           TextWriter& errors) {
    if (plan.has_profiles && profiles_.is_profile_line(line.register_number))
        return profiles_.restore_line(line, errors);
    if (!access_.WriteDataToControl(line.register_number, line.value, errors) &&
        !access_.CheckCommErrorWrite(line.register_number, line.value, errors))
        return Restored::Canceled;
    return access_.last_write_accepted() ? Restored::Accepted : Restored::Refused;
}

void frm_DownloadParm::upload_ended(const Plan& plan) {
    if (plan.has_profiles) profiles_.erase_created();
    if (run_.cancel) {
        log(kCanceledEntry);
        return;
    }
    run_.completed = true;
    log("*******Upload Complete*******");
    services_.dialogs.message_box("Upload Complete");
    if (run_.error_count == 0) {
        // Not the error file that this upload made: that one has another name and stays, empty.
        std::error_code ignored;
        std::filesystem::remove(reg_downloads_path(services_.application_directory,
                                                   plain_single(plan.model) + "_ERROR.TXT"),
                                ignored);
    }
    if (!chkCompare.checked()) return;
    compare(plan.file);
    run_.completed = !run_.cancel;
}

} // namespace pelvan
