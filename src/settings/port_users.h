// Which protocols have a port number in the configuration file, and what protocols are called in
// sentences.
#pragma once

#include <string>
#include <vector>

namespace pelvan {

/// The port that the first channel gets when the file gives it none.
inline constexpr int kDefaultPort = 2;

/// "Full", "Modbus", "Xon" or "Tellura/AB"; 9 for any other channel.
[[nodiscard]] std::string protocol_name(int channel);

/// "Full", "Full and Modbus", "Full, Modbus and Xon".
[[nodiscard]] std::string protocol_names(const std::vector<int>& channels);

/// The channels whose port number this is, also those behind a gap, which do not come up.
[[nodiscard]] std::vector<int> channels_on_port(int number, const std::string& ini_file);

} // namespace pelvan
