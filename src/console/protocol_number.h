// The protocols by their numbers, which are those of their channels too.
#pragma once

namespace pelvan::protocol {

inline constexpr int kNone = -1;
inline constexpr int kFull = 0;
inline constexpr int kModbus = 1;
inline constexpr int kXon = 2;
inline constexpr int kTellura = 3;
inline constexpr int kCount = 4;

/// The name in sight; nothing for a number that is none.
constexpr const char* name(int number) {
    constexpr const char* kNames[kCount] = {"Full", "Modbus", "Xon", "Tellura"};
    return number >= 0 && number < kCount ? kNames[number] : "";
}

} // namespace pelvan::protocol
