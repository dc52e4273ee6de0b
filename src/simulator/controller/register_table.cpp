#include "simulator/controller/register_table.h"

namespace pelvan::simulator {

void RegisterTable::add(std::uint16_t number, Register reg) {
    reg.value = reg.preset;
    registers_.insert_or_assign(number, reg);
}

const Register* RegisterTable::find(std::uint16_t number) const {
    const auto found = registers_.find(number);
    return found == registers_.end() ? nullptr : &found->second;
}

ExceptionCode RegisterTable::read(std::uint16_t number, std::int16_t& value) const {
    const Register* reg = find(number);
    if (reg == nullptr || !reg->active) return ExceptionCode::IllegalAddress;
    value = reg->value;
    return ExceptionCode::None;
}

ExceptionCode RegisterTable::check_write(std::uint16_t number, std::int16_t value) const {
    const Register* reg = find(number);
    if (reg == nullptr || !reg->active) return ExceptionCode::IllegalAddress;
    if (reg->access == Access::ReadOnly) return ExceptionCode::IllegalAddress;
    return value >= reg->min && value <= reg->max ? ExceptionCode::None
                                                  : ExceptionCode::IllegalValue;
}

ExceptionCode RegisterTable::write(std::uint16_t number, std::int16_t value) {
    const ExceptionCode code = check_write(number, value);
    if (code == ExceptionCode::None) set_value(number, value);
    return code;
}

std::int16_t RegisterTable::value(std::uint16_t number) const {
    const Register* reg = find(number);
    return reg == nullptr ? std::int16_t{0} : reg->value;
}

void RegisterTable::set_value(std::uint16_t number, std::int16_t value) {
    const auto found = registers_.find(number);
    if (found != registers_.end()) found->second.value = value;
}

void RegisterTable::restore_presets() {
    for (auto& [number, reg] : registers_) {
        if (reg.access == Access::ReadWrite) reg.value = reg.preset;
    }
}

} // namespace pelvan::simulator
