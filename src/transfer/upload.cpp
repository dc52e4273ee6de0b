#include "transfer/upload.h"

#include <algorithm>
#include <filesystem>

#include "platform/run_time_error.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// The download's word, with a space behind it, for uploads: meant to be so.
constexpr char kCanceledEntry[] = "Download Canceled ";

} // namespace

TransferResult Upload::run(const std::string& file) {
    if (const auto plan = prepare(file)) restore(*plan);
    return {completed_, run_.errors.faults(), 0};
}

/// Everything before the controller is changed; nothing when the user declines.
std::optional<Upload::Plan> Upload::prepare(const std::string& file) {
    const Reading model = run_.access.read_model();
    if (model.failed()) {
        // The download's words, here too.
        run_.listener.tell(ControllerAccess::kCheckPort);
        return std::nullopt;
    }
    Plan plan;
    plan.file = file;
    plan.model = static_cast<float>(leading_number(model.value));
    run_.errors.open_file(
        reg_downloads_path(run_.directory, plain_single(plan.model) + "_Upload_Error.TXT"));
    run_.listener.begun();
    if (find_profiles(plan) &&
        run_.listener.confirm(TransferQuestion::EraseSettings,
                              "This erase all current settings. Do you want to continue?"))
        return plan;
    run_.log("*******Upload Canceled*******");
    run_.listener.tell("Upload Canceled!");
    return std::nullopt;
}

bool Upload::find_profiles(Plan& plan) {
    const std::string model = plain_single(plan.model);
    const std::string path = sequence_path(run_.directory, model + ".cds");
    if (fileexists(path)) {
        SequenceFile sequence(path);
        plan.has_profiles = sequence.has_profiles();
        plan.registers = sequence.read_profile_registers();
        return true;
    }
    if (!run_.listener.confirm(
            TransferQuestion::UploadWithoutSequence,
            "Can not find the " + model + ".cds" +
                " file to check whether this model has Profiles. Do you want to continue with the "
                "upload?"))
        return false;
    plan.has_profiles = run_.listener.confirm(TransferQuestion::HasProfiles,
                                              "Does model " + model + " have Profiles?");
    return true;
}

void Upload::restore(const Plan& plan) {
    run_.listener.working();
    ProfileUpload profiles(run_, plan.registers);
    if (!erase_settings(plan, profiles)) {
        if (run_.canceled())
            run_.log(kCanceledEntry);
        else
            run_.listener.tell("Communication Error,Upload Canceled.");
        return;
    }
    // Only now, with the settings erased, is the file looked at: the file of another model leaves
    // the controller at its presets. The order is meant to be so.
    if (!model_matches(plan)) {
        run_.listener.tell(
            "Model number from the controller does not match the model number from the text file "
            "so Upload of values is canceled.");
        return;
    }
    try {
        upload_lines(plan, profiles);
    } catch (const RunTimeError&) {
        profiles.erase_created();
        throw;
    }
    profiles.erase_created();
    run_.errors.close_file();
    end(plan);
}

bool Upload::put_presets_back() {
    std::string question = ControllerAccess::kCommError;
    while (!run_.access.DefaultControl()) {
        if (run_.canceled() || !run_.access.ask_retry(question)) return false;
        question = "Comm Error!, Retry or Cancel";
    }
    return true;
}

bool Upload::erase_settings(const Plan& plan, ProfileUpload& profiles) {
    run_.listener.clear_errors();
    run_.log("******Erasing Old Settings******");
    if (!put_presets_back() || run_.canceled()) return false;
    return !plan.has_profiles || profiles.clear_profiles();
}

bool Upload::model_matches(const Plan& plan) {
    const auto setup = opentextfile(plan.file);
    return model_in_header(skip_to_line(*setup, kModelLine + 1)) == plan.model;
}

void Upload::upload_lines(const Plan& plan, ProfileUpload& profiles) {
    const int of = std::max(1, count_lines(plan.file) - (kFirstSetupLine - 1));
    run_.listener.progress(0, of);
    const auto setup = opentextfile(plan.file);
    skip_to_line(*setup, kFirstSetupLine);
    run_.log("******Beginning  Upload******");
    for (int done = 1; !setup->AtEndOfStream() && !run_.canceled(); ++done) {
        upload_line(plan, profiles, setup->readline());
        run_.listener.progress(std::min(done, of), of);
    }
}

void Upload::upload_line(const Plan& plan, ProfileUpload& profiles, const std::string& text) {
    const auto line = parse_setup_line(text);
    if (!line) {
        // A slot of a digital-input text that was never filled is an empty line.
        if (!text.empty()) run_.errors.list_line(text);
        return run_.listener.let_events_run();
    }
    const bool of_profile = plan.has_profiles && profiles.is_profile_line(line->register_number);
    const Verdict verdict = of_profile
                                ? profiles.restore_line(*line)
                                : run_.access.write(line->register_number, line->value).verdict;
    if (verdict == Verdict::NoReply) {
        run_.cancel.canceled = true;
        return;
    }
    run_.log(plain_single(line->register_number) + " " + plain_single(line->value) +
             (verdict == Verdict::Accepted ? " Successful" : " ***UNSUCCESSFUL***"));
}

void Upload::end(const Plan& plan) {
    if (run_.canceled()) return run_.log(kCanceledEntry);
    completed_ = true;
    run_.log("*******Upload Complete*******");
    run_.listener.tell("Upload Complete");
    if (run_.errors.refusals() > 0) return;
    // Not the error file that this upload made: that one has another name and stays, empty.
    std::error_code ignored;
    std::filesystem::remove(
        reg_downloads_path(run_.directory, plain_single(plan.model) + "_ERROR.TXT"), ignored);
}

} // namespace pelvan
