// A file for what can only be read from one: written anew in every run, gone with the process.
#pragma once

#include <string>
#include <string_view>

#include "support/temp_dir.h"

namespace pelvan::fuzz {

/// The path of a file that holds the bytes. One name is one file.
inline std::string scratch_file(std::string_view bytes, const std::string& name = "file") {
    static const testing::TempDir dir;
    testing::write_file(dir.file(name), std::string(bytes));
    return dir.file(name);
}

} // namespace pelvan::fuzz
