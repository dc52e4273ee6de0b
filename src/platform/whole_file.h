// Files read and changed as a whole. Failures are errno values, 0 for success; what they mean to
// the program is left to the callers.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace pelvan {

/// The bytes of a regular file; anything else that bears the name is refused.
int read_whole_file(const std::string& path, std::string& bytes);

/// The new bytes of a file for its present ones.
using FileChange = std::function<std::string(std::string_view bytes)>;

/// Changes the file's bytes, all or none of them, and keeps its mode and owner; a missing file is
/// taken for an empty one and created. The data is on the disk when it returns. No other program
/// that changes files by way of this comes between the reading and the writing; EBUSY when one of
/// them does not get done within 2 s. A symbolic link is followed, not replaced. A file or
/// directory whose mode gives nobody the right to write is refused, the superuser included.
int change_whole_file(const std::string& path, const FileChange& change);

} // namespace pelvan
