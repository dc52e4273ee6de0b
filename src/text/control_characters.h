// Control characters of ASCII that frame the messages of protocols.
#pragma once

namespace pelvan {

inline constexpr char kStx = 2;
inline constexpr char kEtx = 3;
inline constexpr char kEot = 4;
inline constexpr char kEnq = 5;
inline constexpr char kAck = 6;
inline constexpr char kLineFeed = 10;
inline constexpr char kDle = 16;
inline constexpr char kNak = 21;

} // namespace pelvan
