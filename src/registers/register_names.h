// What the sequence files call a register, whichever model they are for: names to choose from where
// a person is to name a value.
#pragma once

#include <string>
#include <vector>

namespace pelvan {

/// The texts beside the register in all .cds and .pds files of the application's directory, each
/// once, the files in the order of their names. A file that cannot be read or is not understood has
/// none.
[[nodiscard]] std::vector<std::string> register_names(const std::string& application_directory,
                                                      float register_number);

} // namespace pelvan
