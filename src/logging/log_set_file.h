// Set files: a log set in one section of an INI-format text file.
#pragma once

#include <string>

#include "logging/log_set.h"

namespace pelvan {

/// Replaces the set by the file's, all but the single-line option; a missing file reads as all
/// defaults. False when the file has more rows than a set: the first hundred are in it then. 6 for
/// an interval above 32767 and 380 for a negative one, before anything is replaced; the error's
/// subject says which value of which file.
[[nodiscard]] bool read_log_set(const std::string& file, const std::string& default_log_file,
                                LogSet& set);

/// Whether the file asks for logging to start as soon as it is loaded.
[[nodiscard]] bool starts_when_loaded(const std::string& file);

/// A failed write goes unnoticed.
void write_log_set(const LogSet& set, const std::string& file);

} // namespace pelvan
