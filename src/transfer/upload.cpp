#include "transfer/upload.h"

#include <algorithm>
#include <filesystem>

#include "platform/run_time_error.h"
#include "platform/scope_guard.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// The download's word, with a space behind it, for uploads: meant to be so.
constexpr char kCanceledEntry[] = "Download Canceled ";

} // namespace

TransferResult Upload::run(const std::string& file) {
    {
        const ScopeGuard leave([this] { run_.access.leave_line(); }); // however it ends
        if (const auto plan = prepare(file)) restore(*plan);
    }
    return {completed_, run_.errors.faults(), 0};
}

/// Everything before the controller is changed; nothing when the user declines.
std::optional<Upload::Plan> Upload::prepare(const std::string& file) {
    Plan plan{SetupFile(file), 0, false, {}};
    if (!plan.file.is_text()) {
        run_.listener.tell(SetupFile::kNoText);
        return std::nullopt;
    }
    const Reading model = run_.access.read_model();
    if (model.failed()) {
        // The download's words, here too.
        run_.listener.tell(ControllerAccess::kCheckPort);
        return std::nullopt;
    }
    plan.model = static_cast<float>(leading_number(model.value));
    run_.access.remember_controller(run_.access.read_identity());
    if (!run_.access.can_confirm_writes()) {
        run_.listener.tell(ControllerAccess::kNoEcho);
        return std::nullopt;
    }
    run_.errors.open_file(
        reg_downloads_path(run_.directory, plain_single(plan.model) + "_Upload_Error.TXT"));
    run_.listener.begun();
    if (find_profiles(plan) && confirm(plan)) return plan;
    run_.log("*******Upload Canceled*******");
    run_.listener.tell("Upload Canceled!");
    return std::nullopt;
}

bool Upload::confirm(const Plan& plan) {
    const auto lacks = plan.file.lacks();
    if (lacks && !run_.listener.confirm(TransferQuestion::IncompleteFile,
                                        "The setup file " + *lacks +
                                            " Do you want to restore it all the same?"))
        return false;
    return run_.listener.confirm(TransferQuestion::EraseSettings,
                                 "This erase all current settings. Do you want to continue?");
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
    try {
        completed_ = restore_all(plan, profiles);
    } catch (const RunTimeError&) {
        profiles.erase_created();
        tell_partly_restored(plan);
        throw;
    }
    if (completed_)
        end(plan);
    else
        tell_partly_restored(plan);
    run_.errors.close_file();
}

/// False when it ended early, which was told.
bool Upload::restore_all(const Plan& plan, ProfileUpload& profiles) {
    if (!erase_settings(plan, profiles)) {
        if (run_.canceled())
            run_.log(kCanceledEntry);
        else
            run_.listener.tell("Communication Error,Upload Canceled.");
        return false;
    }
    // Only now, with the settings erased, is the model looked at: the file of another model leaves
    // the controller at its presets. The order is meant to be so.
    if (plan.file.model() != plan.model) {
        run_.listener.tell(
            "Model number from the controller does not match the model number from the text file "
            "so Upload of values is canceled.");
        return false;
    }
    upload_lines(plan, profiles);
    profiles.erase_created();
    if (run_.canceled()) run_.log(kCanceledEntry);
    return !run_.canceled() && run_.access.ends_with_same_controller();
}

/// In the error file too: where the session ends, no message can be shown.
void Upload::tell_partly_restored(const Plan& plan) {
    const std::string lines = std::to_string(plan.file.register_lines().size());
    const std::string sentence =
        restored_ == 0
            ? "None of the " + lines +
                  " lines was restored. The controller's settings may be erased."
            : std::to_string(restored_) + " of " + lines +
                  " lines were restored. The controller's settings were erased and are only partly "
                  "restored: restore the file again.";
    run_.errors.end_with(sentence);
    run_.listener.tell(sentence);
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

void Upload::upload_lines(const Plan& plan, ProfileUpload& profiles) {
    const auto lines = plan.file.register_lines();
    const int of = std::max(1, static_cast<int>(lines.size()));
    run_.listener.progress(0, of);
    run_.log("******Beginning  Upload******");
    run_.errors.list_in_header(plan.file.registers_in_header());
    for (const std::string& line : lines) {
        if (run_.canceled()) return;
        upload_line(plan, profiles, line);
        if (run_.canceled()) return;
        run_.listener.progress(++restored_, of);
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
    if (line->no_number)
        run_.errors.record("Value is no whole number: " + *line->no_number, line->register_number,
                           line->value);
    run_.log(plain_single(line->register_number) + " " + plain_single(line->value) +
             (verdict == Verdict::Accepted ? " Successful" : " ***UNSUCCESSFUL***"));
}

void Upload::end(const Plan& plan) {
    run_.log("*******Upload Complete*******");
    run_.listener.tell("Upload Complete");
    if (run_.errors.refusals() > 0) return;
    // Not the error file that this upload made: that one has another name and stays, empty.
    std::error_code ignored;
    std::filesystem::remove(
        reg_downloads_path(run_.directory, plain_single(plan.model) + "_ERROR.TXT"), ignored);
}

} // namespace pelvan
