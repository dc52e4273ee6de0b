#include "platform/text_file.h"
#include "text/numbers.h"
#include "transfer/profile_transfer.h"

namespace pelvan {

void ProfileTransfer::DownLoadProfiles(TextWriter& setup, const std::string& model) {
    const std::string& directory = services_.application_directory;
    const std::string path = sequence_path(directory, model + ".pds");
    int line = 0;
    if (!fileexists(path)) {
        services_.dialogs.message_box("Can not find the Profile Download Sequence file, " + model +
                                      ".pds" + ".");
        run_.cancel = true;
        return;
    }
    const auto sequence = read_profile_sequence(path, line);
    if (!sequence) {
        services_.dialogs.message_box("Line " + std::to_string(line) + " of the file " + model +
                                      ".pds is missing or not understood.");
        run_.cancel = true;
        return;
    }
    const std::string number = plain_number(leading_number(model));
    const auto errors =
        CreateTextFile(reg_downloads_path(directory, number + "_Download_Error.TXT"), true);
    registers_ = {sequence->profile_number, sequence->action, sequence->step_count};
    const auto highest = access_.read_number(sequence->highest_profile);
    if (!highest) {
        run_.cancel = true;
        return;
    }
    progress_.set_Value(0);
    progress_.set_Max(*highest);
    for (int profile = 1; profile <= *highest && !run_.cancel; ++profile) {
        progress_.set_Value(profile - 1);
        download_profile(*sequence, profile, setup, *errors);
    }
    if (!run_.cancel) progress_.set_Value(progress_.Max());
    errors->Close();
}

bool ProfileTransfer::select_for_reading(float register_number, int value, TextWriter& errors) {
    return select_recorded(register_number, static_cast<float>(value), errors) ==
           Restored::Accepted;
}

void ProfileTransfer::download_profile(const ProfileSequence& sequence, int number,
                                       TextWriter& setup, TextWriter& errors) {
    if (!select_for_reading(sequence.profile_number, number, errors)) return;
    const auto steps = step_count();
    // None: a number whose profile was erased while higher ones were there.
    if (!steps || *steps <= 0) {
        services_.desktop.let_events_run();
        return;
    }
    write_line(setup, sequence.profile_number, std::to_string(number));
    write_line(setup, sequence.action, std::to_string(static_cast<int>(Action::Create)));
    for (int i = 1; i < *steps; ++i)
        write_line(setup, sequence.action, std::to_string(static_cast<int>(Action::InsertStep)));
    for (const float register_number : sequence.profile_registers) {
        if (run_.cancel) return;
        download_register(register_number, setup);
    }
    for (int step = 1; step <= *steps && !run_.cancel; ++step)
        download_step(sequence, step, setup, errors);
}

void ProfileTransfer::download_step(const ProfileSequence& sequence, int step, TextWriter& setup,
                                    TextWriter& errors) {
    if (!select_for_reading(sequence.step_number, step, errors)) return;
    const auto type = access_.read_number(sequence.step_type);
    if (!type) {
        run_.cancel = true;
        return;
    }
    write_line(setup, sequence.step_number, std::to_string(step));
    write_line(setup, sequence.step_type, std::to_string(*type));
    const auto registers = sequence.step_registers.find(*type);
    if (registers == sequence.step_registers.end()) {
        access_.list_error("No such step type in the .pds file", sequence.step_type,
                           std::to_string(*type));
        return;
    }
    for (const float register_number : registers->second) {
        if (run_.cancel) return;
        download_register(register_number, setup);
    }
}

void ProfileTransfer::download_register(float register_number, TextWriter& setup) {
    const std::string value =
        access_.CheckCommErrorRead(register_number, access_.ReadDataFromControl(register_number));
    if (value == kReadFailed) {
        run_.cancel = true;
        return;
    }
    if (!is_skip_mark(value)) write_line(setup, register_number, value);
}

void ProfileTransfer::write_line(TextWriter& setup, float register_number,
                                 const std::string& value) {
    const std::string line = plain_single(register_number) + " " + value;
    setup.writeline(line);
    log_(line + " Successful");
}

} // namespace pelvan
