// The platform's sectioned key=value file service, under its classic names. Sections and keys match
// whole with ASCII case ignored, and spaces round the arguments are not significant: a key that
// ends in a space finds the same entry as one without. Each call opens and closes the file.
#pragma once

#include <cstdint>
#include <string>

namespace pelvan {

/// The integer at the start of the value (wrapping modulo 2^32; 0 without digits), or the default
/// when the file, section, key or value is missing.
[[nodiscard]] std::uint32_t GetPrivateProfileIntA(const std::string& section,
                                                  const std::string& key,
                                                  std::int32_t default_value,
                                                  const std::string& file);

/// The value, or the default when file, section or key is missing; at most `size` - 1 characters.
[[nodiscard]] std::string GetPrivateProfileStringA(const std::string& section,
                                                   const std::string& key,
                                                   const std::string& default_value,
                                                   std::size_t size, const std::string& file);

/// Creates or replaces the key, leaving every other byte of the file as it is. The file is replaced
/// whole or not at all. False, and nothing changed, when it cannot be written.
bool WritePrivateProfileStringA(const std::string& section, const std::string& key,
                                const std::string& value, const std::string& file);

} // namespace pelvan
