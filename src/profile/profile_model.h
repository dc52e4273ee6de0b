// Which profiles a controller model has: its .cds says whether there are any, its .pds what they
// are made of.
#pragma once

#include "profile/profile_format.h"
#include "registers/transfer_run.h"

namespace pelvan {

struct ProfileModel {
    int number = 0;
    ProfileFormat format;
};

struct LoadedModel {
    std::optional<ProfileModel> model;
    std::string problem; // a sentence; empty with a model
};

/// From the sequence files of the directory. A model without profiles is a problem, and so are
/// files that are missing or not understood.
[[nodiscard]] LoadedModel load_profile_model(const std::string& directory, int number);

/// Asks the controller for its model and sends nothing else. Blocks as `read_model` does.
[[nodiscard]] LoadedModel read_profile_model(TransferRun& run);
/// As above, with the line claimed for it; a line in use is a problem.
[[nodiscard]] LoadedModel read_profile_model(const TransferContext& context);

} // namespace pelvan
