// Files read and replaced as a whole. Failures are errno values, 0 for success; what they mean to
// the program is left to the callers.
#pragma once

#include <string>
#include <string_view>

namespace pelvan {

/// The bytes of a regular file; anything else that bears the name is refused.
int read_whole_file(const std::string& path, std::string& bytes);

/// Replaces the file's bytes, all or none of them, and keeps its mode and owner; creates a missing
/// file. The data is on the disk when it returns. A symbolic link is followed, not replaced. A file
/// or directory whose mode gives nobody the right to write is refused, the superuser included.
int replace_whole_file(const std::string& path, std::string_view bytes);

} // namespace pelvan
