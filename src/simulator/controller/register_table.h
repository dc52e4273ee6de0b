// The registers of a simulated controller: numbers, limits, who may write them and whether they are
// active. It knows no protocol, but gives refusals the numbers that Modbus gives them.
#pragma once

#include <cstdint>
#include <map>

namespace pelvan::simulator {

/// Outcome of a register access; the values are Modbus exception numbers.
enum class ExceptionCode : std::uint8_t {
    None = 0,
    IllegalFunction = 1,
    IllegalAddress = 2, // unknown, inactive, or a write to a read-only register
    IllegalValue = 3,   // outside the limits
};

enum class Access { ReadWrite, ReadOnly };

struct Register {
    std::int16_t value = 0;
    std::int16_t preset = 0; // what a reset restores
    std::int16_t min = 0;
    std::int16_t max = 0;
    Access access = Access::ReadWrite;
    bool active = true;
};

class RegisterTable {
  public:
    /// Adds or replaces a register; its value begins as `reg.preset`.
    void add(std::uint16_t number, Register reg);

    [[nodiscard]] ExceptionCode read(std::uint16_t number, std::int16_t& value) const;
    /// Whether a write would be accepted; changes nothing.
    [[nodiscard]] ExceptionCode check_write(std::uint16_t number, std::int16_t value) const;
    ExceptionCode write(std::uint16_t number, std::int16_t value);

    /// The controller's own access: no limits, no access rules; 0 and nothing for an unknown
    /// register.
    [[nodiscard]] std::int16_t value(std::uint16_t number) const;
    void set_value(std::uint16_t number, std::int16_t value);

    [[nodiscard]] const Register* find(std::uint16_t number) const;
    [[nodiscard]] const std::map<std::uint16_t, Register>& all() const { return registers_; }

    /// Puts the presets back into every register that can be written.
    void restore_presets();

  private:
    std::map<std::uint16_t, Register> registers_;
};

} // namespace pelvan::simulator
