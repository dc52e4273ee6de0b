// From the texts of the console's Modbus boxes to a request, and from a reply to the lines of the
// history. No controls and no port here: the console window and the terminal command share it.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "console/command_entry.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {

/// The command types that the console offers.
enum class ModbusCommand {
    ReadCoils,
    ReadInputs,
    ReadHolding,
    ReadInputRegisters,
    WriteCoil,
    WriteRegister,
    Diagnostics,
    WriteCoils,
    WriteRegisters,
    Read32,
    Write32,
    LoopBack,
};

struct ModbusCommandType {
    ModbusCommand command;
    std::int16_t function;
    const char* caption;
    const char* values_caption; // what the value box holds for it, with its access key
    const char* register_caption;
};

/// What the value box holds for a command type.
enum class ValueKind { Count, Values, Data };
inline constexpr std::size_t kValueKinds = 3;
[[nodiscard]] ValueKind value_kind(ModbusCommand command);

/// All command types, in the order in which they are offered.
[[nodiscard]] const std::array<ModbusCommandType, 12>& modbus_command_types();

enum class DataFormat { Decimal, Hex, SmartDec };

/// Whether the entry goes to every controller, so that none answers.
[[nodiscard]] bool is_broadcast(const ModbusEntry& entry);

/// The entry for a line "register value" of a command script, in decimal: a write of one register.
/// What is missing or too much in the line is refused when the request is built.
[[nodiscard]] ModbusEntry write_register_entry(const std::string& address, const std::string& line);

/// The request frame, or a text beginning with "Bad". Text that is no number is refused as the
/// field that it stands in would be: "Bad ADDRESS entered." and so on.
[[nodiscard]] std::string build_request(Modbus& modbus, const ModbusEntry& entry);

/// The field that the builder's refusal complains of.
enum class ModbusField { None, Address, Register, Values };
[[nodiscard]] ModbusField refused_field(std::string_view refusal);

/// Renders a frame in the chosen format; the request flag as in the decoders.
[[nodiscard]] std::string render(Modbus& modbus, DataFormat format, std::int16_t is_request,
                                 std::string_view frame);

/// The Command Response line of a reply: its rendering, the joined values of a 32-bit read in
/// SmartDec, or words where there is nothing to render.
[[nodiscard]] std::string response_line(Modbus& modbus, DataFormat format, const ModbusEntry& entry,
                                        std::string_view reply);

/// Why a reply does not say that the controller did what the request asks; empty when it does.
[[nodiscard]] std::string objection(std::string_view request, std::string_view reply);

} // namespace pelvan
