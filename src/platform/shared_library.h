// Libraries beside the program that are loaded on first use.
#pragma once

#include <string>

namespace pelvan {

using LibraryFunction = void (*)();

/// The function of that name in the library, which stays loaded; null, and why in `error`, when
/// there is no such library or function, or the library lacks one that it needs.
[[nodiscard]] LibraryFunction find_in_library(const std::string& path, const char* function,
                                              std::string& error);

} // namespace pelvan
