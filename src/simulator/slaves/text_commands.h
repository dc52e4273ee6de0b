// The command language of a simulated controller, spoken by its Full and its Xon end alike:
// "? SP1" reads, "= SP1 100" writes. A refused command leaves its error code behind, which "? ER2"
// reads and clears. The table of names is in docs/simulated-controllers.md.
#pragma once

#include <string>
#include <string_view>

#include "simulator/slaves/station.h"

namespace pelvan::simulator {

/// The codes that "? ER2" gives.
namespace text_error {
inline constexpr int kNone = 0;
inline constexpr int kCommandNotFound = 20;
inline constexpr int kParameterNotFound = 21;
inline constexpr int kIncomplete = 22;
inline constexpr int kInvalidCharacter = 23;
inline constexpr int kTooLong = 24;
inline constexpr int kOutOfLimit = 25;
inline constexpr int kReadOnly = 26;
inline constexpr int kWriteOnly = 27;
inline constexpr int kNotActive = 28;
} // namespace text_error

struct TextResult {
    int error = text_error::kNone;
    std::string response; // of a read that succeeded
};

/// Carries a command out and keeps its error code in the station.
TextResult run_text_command(Station& station, std::string_view command);

} // namespace pelvan::simulator
