#include "transfer/profile_download.h"

#include <algorithm>

#include "platform/text_file.h"
#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string text_of(ProfileAction action) {
    return std::to_string(static_cast<int>(action));
}

} // namespace

std::optional<ProfileSequence> ProfileDownload::read_sequence(const std::string& model) {
    const std::string path = sequence_path(run_.directory, model + ".pds");
    if (!fileexists(path)) {
        run_.listener.tell("Can not find the Profile Download Sequence file, " + model + ".pds" +
                           ".");
        return std::nullopt;
    }
    SequenceFault fault;
    auto sequence = read_profile_sequence(path, fault);
    if (!sequence)
        run_.listener.tell("Line " + std::to_string(fault.line) + " of the file " + model +
                           ".pds is missing or not understood." +
                           (fault.reason.empty() ? "" : " " + fault.reason));
    return sequence;
}

void ProfileDownload::DownLoadProfiles(const std::string& model) {
    const auto sequence = read_sequence(model);
    if (!sequence) {
        run_.cancel.canceled = true;
        return;
    }
    const std::string number = plain_number(leading_number(model));
    run_.errors.open_file(reg_downloads_path(run_.directory, number + "_Download_Error.TXT"));
    ProfileAccess profiles(run_, {sequence->profile_number.number, sequence->action.number,
                                  sequence->step_count.number});
    const auto highest = run_.access.read_number(sequence->highest_profile.number);
    if (!highest) {
        run_.cancel.canceled = true;
        return;
    }
    const int of = std::max(1, *highest);
    for (int profile = 1; profile <= *highest && !run_.canceled(); ++profile) {
        run_.listener.progress(profile - 1, of);
        download_profile(profiles, *sequence, profile);
    }
    if (!run_.canceled()) run_.listener.progress(of, of);
    run_.errors.close_file();
}

void ProfileDownload::download_profile(ProfileAccess& profiles, const ProfileSequence& sequence,
                                       int number) {
    const Reply selected =
        profiles.select_recorded(sequence.profile_number.number, static_cast<float>(number));
    if (!selected.is(Verdict::Accepted)) return;
    const auto steps = profiles.step_count();
    // None: a number whose profile was erased while higher ones were there.
    if (!steps || *steps <= 0) return run_.listener.let_events_run();
    write_line(sequence.profile_number.number, std::to_string(number));
    write_line(sequence.action.number, text_of(ProfileAction::Create));
    for (int i = 1; i < *steps; ++i)
        write_line(sequence.action.number, text_of(ProfileAction::InsertStep));
    download_registers(sequence.profile_registers);
    for (int step = 1; step <= *steps && !run_.canceled(); ++step)
        download_step(profiles, sequence, step);
}

void ProfileDownload::download_step(ProfileAccess& profiles, const ProfileSequence& sequence,
                                    int step) {
    const Reply selected =
        profiles.select_recorded(sequence.step_number.number, static_cast<float>(step));
    if (!selected.is(Verdict::Accepted)) return;
    const auto type = run_.access.read_number(sequence.step_type.number);
    if (!type) {
        run_.cancel.canceled = true;
        return;
    }
    write_line(sequence.step_number.number, std::to_string(step));
    write_line(sequence.step_type.number, std::to_string(*type));
    const auto registers = sequence.step_types.find(*type);
    if (registers == sequence.step_types.end())
        return run_.errors.list("No such step type in the .pds file", sequence.step_type.number,
                                std::to_string(*type));
    download_registers(registers->second.registers);
}

void ProfileDownload::download_registers(const std::vector<ProfileRegister>& registers) {
    for (std::size_t i = 0; i < registers.size(); ++i) {
        if (run_.canceled()) return;
        const float register_number = registers[i].number;
        run_.access.read_ahead(register_number, [&](std::size_t index) {
            return i + index < registers.size() ? std::optional(registers[i + index].number)
                                                : std::nullopt;
        });
        const Reading reading = run_.access.read(register_number);
        if (reading.failed()) run_.cancel.canceled = true;
        if (!reading.failed() && !is_skip_mark(reading.value))
            write_line(register_number, reading.value);
    }
}

void ProfileDownload::write_line(float register_number, const std::string& value) {
    const std::string line = plain_single(register_number) + " " + value;
    setup_.writeline(line);
    run_.log(line + " Successful");
}

} // namespace pelvan
