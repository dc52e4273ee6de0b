#include "transfer/download.h"

#include <algorithm>
#include <filesystem>

#include "platform/run_time_error.h"
#include "platform/scope_guard.h"
#include "text/numbers.h"
#include "transfer/profile_download.h"

namespace pelvan {
namespace {

constexpr float kSerialFirst = 1;
constexpr float kSerialSecond = 2;
constexpr float kSoftware = 3;
constexpr float kRevision = 4;

/// Slots of held-back lines that are written.
constexpr std::size_t kHeldBackWritten = 16;

constexpr auto kReplacing = std::filesystem::copy_options::overwrite_existing;

} // namespace

TransferResult Download::run() {
    {
        const ScopeGuard leave([this] { run_.access.leave_line(); }); // however it ends
        try {
            save();
        } catch (const RunTimeError&) {
            settle_former();
            throw;
        }
    }
    return {completed_, run_.errors.faults(), 0, written_};
}

void Download::save() {
    auto plan = prepare();
    if (!plan) return;
    run_.listener.begun();
    run_.listener.working();
    run_.listener.progress(0, plan->registers);
    run_.log("******Beginning  Download******");
    download_registers(*plan);
    if (!run_.canceled()) {
        run_.log("*******Download Sequence Complete*******");
        if (plan->sequence.has_profiles()) download_profiles(*plan);
    }
    end(*plan);
}

std::optional<Download::Plan> Download::prepare() {
    const std::string model = run_.access.read(ControllerAccess::kModelRegister).value;
    if (model.empty() || model == kReadFailed) {
        run_.listener.tell(ControllerAccess::kCheckPort);
        return std::nullopt;
    }
    const std::string path = sequence_path(run_.directory, model + ".cds");
    if (!fileexists(path)) {
        run_.listener.tell("Do not have correct download file sequence for this model of control!");
        return std::nullopt;
    }
    const int registers = std::max(1, register_lines(count_lines(path)));
    Plan plan{model, SequenceFile(path), registers, CreateTextFile()};
    if (!plan.setup) return std::nullopt;
    return plan;
}

bool Download::read_serial_number(ControllerIdentity& identity) {
    do {
        const Reading first = run_.access.ReadDataFromControl(kSerialFirst);
        const Reading second = run_.access.ReadDataFromControl(kSerialSecond);
        identity.serial_first = first.value;
        identity.serial_second = second.value;
        if (!first.failed() && !second.failed()) return true;
    } while (run_.access.ask_retry("Comm error!"));
    run_.listener.tell(ControllerAccess::kCheckPort);
    return false;
}

std::optional<std::string> Download::choose_path(const ControllerIdentity& identity) {
    const auto chosen =
        run_.listener.choose_file_to_save(identity.serial_first + identity.serial_second + ".txt");
    if (!chosen) return std::nullopt;
    std::string path = with_text_extension(*chosen);
    if (fileexists(path) &&
        !run_.listener.confirm(TransferQuestion::OverwriteFile,
                               "File already exists. Do you want to overwrite this file?"))
        return std::nullopt;
    return path;
}

/// The setup file with its header; nothing when the user wants none.
std::unique_ptr<TextWriter> Download::CreateTextFile() {
    ControllerIdentity identity;
    if (!read_serial_number(identity)) return nullptr;
    const auto path = choose_path(identity);
    if (!path) return nullptr;
    keep_former(*path);
    auto setup = pelvan::CreateTextFile(*path, true);
    written_ = *path;
    run_.listener.saving_in(written_);
    write_header(*setup, identity);
    run_.access.remember_controller(
        {identity.model, identity.serial_first, identity.serial_second});
    return setup;
}

/// A setup that is there already stays until the new one is complete. What an attempt that failed
/// has left is none, and takes the place of none; a setup that cannot be kept is not overwritten.
void Download::keep_former(const std::string& path) {
    std::error_code failed;
    if (!std::filesystem::is_regular_file(path, failed)) return;
    const std::string kept = path + ".OLD";
    const bool is_kept = fileexists(kept) && SetupFile(path).lacks();
    if (!is_kept) std::filesystem::copy_file(path, kept, kReplacing, failed);
    if (failed) {
        std::error_code ignored;
        if (fileexists(kept)) std::filesystem::remove(kept, ignored); // a part
        throw_file_error(failed.value(), kept);
    }
    former_ = kept;
}

void Download::settle_former() {
    if (former_.empty()) return;
    std::error_code ignored;
    if (completed_)
        std::filesystem::remove(former_, ignored);
    else
        run_.listener.tell("What was in the file before is kept as " + former_ + ".");
}

void Download::write_header(TextWriter& setup, ControllerIdentity& identity) {
    // The controller is asked again, also for what named the file; a register that does not answer
    // now stands there as "ERROR".
    identity.model = read_for_header(ControllerAccess::kModelRegister);
    identity.serial_first = read_for_header(kSerialFirst);
    identity.serial_second = read_for_header(kSerialSecond);
    identity.software = read_for_header(kSoftware);
    identity.revision = read_for_header(kRevision);
    for (const std::string& line : setup_header(identity, clock_.now()))
        setup.writeline(line);
}

std::string Download::read_for_header(float register_number) {
    Reading reading = run_.access.ReadDataFromControl(register_number);
    if (reading.failed()) run_.errors.list("No reply", register_number, reading.value);
    return reading.value;
}

std::vector<float> Download::registers_of(Plan& plan) {
    std::vector<float> list;
    while (const auto register_number = plan.sequence.next_register())
        list.push_back(*register_number);
    // The list ends there all the same: where it ends is a rule of the file.
    if (const std::string lost = plan.sequence.lost_behind(); !lost.empty())
        run_.errors.list_sentence(plan.model + ".cds: " + lost);
    if (plan.sequence.hides_profiles() &&
        fileexists(sequence_path(run_.directory, plan.model + ".pds")))
        run_.errors.list_sentence(plan.model +
                                  ".cds: A space before YES hides it: the profiles that " +
                                  plan.model + ".pds describes are not saved.");
    return list;
}

void Download::download_registers(Plan& plan) {
    const std::vector<float> list = registers_of(plan);
    for (std::size_t i = 0; i < list.size(); ++i) {
        ++listed_;
        run_.access.read_ahead(list[i], [&](std::size_t index) {
            return i + index < list.size() ? std::optional(list[i + index]) : std::nullopt;
        });
        if (!download_register(list[i], plan))
            run_.cancel.canceled = true;
        else
            run_.listener.progress(std::min(listed_, plan.registers), plan.registers);
        if (run_.canceled()) return;
    }
    // The list may have ended before the file did.
    run_.listener.progress(plan.registers, plan.registers);
}

/// False when the download is to be cancelled.
bool Download::download_register(float register_number, Plan& plan) {
    const std::string number = plain_single(register_number);
    Reading reading = run_.access.ReadDataFromControl(register_number);
    if (reading.failed()) {
        run_.log(number + " " + kReadFailed + " ***UNSUCCESSFUL***");
        reading = run_.access.CheckCommErrorRead(register_number, reading);
        if (reading.failed()) return false;
    }
    const std::string line = number + " " + reading.value;
    // What the controller marks as not there is neither written nor listed.
    const bool skipped = is_skip_mark(reading.value);
    const bool held = plan.sequence.has_profiles() && is_digital_input_text(register_number);
    if (!skipped && !held) {
        plan.setup->writeline(line);
        run_.log(line + " Successful");
        return true;
    }
    run_.listener.let_events_run();
    return skipped || hold_back(line);
}

bool Download::hold_back(const std::string& line) {
    held_.lines.at(held_.count++) = line;
    if (held_.count < held_.lines.size()) return true;
    run_.listener.tell("Error in digital input text array.");
    run_.listener.tell("Download canceled!");
    return false;
}

void Download::download_profiles(Plan& plan) {
    ProfileDownload(run_, *plan.setup).DownLoadProfiles(plan.model);
    // All sixteen are written, those never filled as empty lines.
    for (std::size_t i = 0; i < kHeldBackWritten && !run_.canceled(); ++i)
        plan.setup->writeline(held_.lines.at(i));
}

void Download::end(Plan& plan) {
    const bool in_step = run_.canceled() || run_.access.in_step();
    if (run_.canceled())
        run_.log("*******Download Canceled*******");
    else if (in_step)
        plan.setup->writeline(kLastSetupLine);
    plan.setup->Close();
    completed_ = !run_.canceled() && in_step && listed_ > 0;
    settle_former();
    if (run_.canceled())
        run_.listener.tell("Download was Canceled.", "Download Canceled");
    else if (!in_step)
        run_.listener.tell(
            !run_.access.met_another().empty()
                ? "Another controller answered before the end, or may have: the file may hold "
                  "values of both, and was not completed. Save the setup again."
                : "Answers were not those to their own requests, so that values may stand at the "
                  "wrong registers. The file was not completed: save the setup again.");
    else if (listed_ == 0)
        run_.listener.tell("The file " + plan.model + ".cds names no register: none was saved.");
    else
        run_.listener.tell("Downloading Process Complete.", "Download Complete");
}

} // namespace pelvan
