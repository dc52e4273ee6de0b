// The protocols by their numbers, which are those of their channels too.
#pragma once

namespace pelvan::protocol {

inline constexpr int kFull = 0;
inline constexpr int kModbus = 1;
inline constexpr int kXon = 2;
inline constexpr int kTellura = 3;
inline constexpr int kCount = 4;

} // namespace pelvan::protocol
