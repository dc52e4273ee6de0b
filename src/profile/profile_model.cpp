#include "profile/profile_model.h"

#include "platform/run_time_error.h"
#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {

LoadedModel load_profile_model(const std::string& directory, int number) {
    const std::string name = std::to_string(number);
    const std::string cds = sequence_path(directory, name + ".cds");
    const std::string tells = name + ".cds, which says whether the model has ramp profiles, ";
    if (!fileexists(cds)) return {{}, "The file " + tells + "is missing."};
    try {
        if (!SequenceFile(cds).has_profiles())
            return {{}, "Model " + name + " has no ramp profiles."};
    } catch (const RunTimeError&) {
        return {{}, "The file " + tells + "cannot be read."};
    }
    LoadedFormat loaded = ProfileFormat::load(sequence_path(directory, name + ".pds"));
    if (!loaded.format) return {{}, loaded.problem};
    return {ProfileModel{number, std::move(*loaded.format)}, {}};
}

LoadedModel read_profile_model(TransferRun& run) {
    const Reading reading = run.access.read_model();
    const char* const late = run.access.answered_late()
                                 ? " Answers come, but later than the 250 ms that are waited for."
                                 : "";
    if (reading.failed())
        return {{}, std::string("The controller's model could not be read.") + late};
    return load_profile_model(run.directory, static_cast<int>(leading_number(reading.value)));
}

LoadedModel read_profile_model(const TransferContext& context) {
    TransferRun run(context);
    if (!run.claim) return {{}, context.link.refusal()};
    LoadedModel loaded = read_profile_model(run);
    run.access.leave_line();
    return loaded;
}

} // namespace pelvan
