// What somebody entered for one command, as typed, in any of the protocols: a value that a history
// line keeps, so that it can be brought back into the fields or sent again. No control, no port.
#pragma once

#include <cstddef>
#include <string>
#include <variant>

#include "console/protocol_number.h"

namespace pelvan {

enum class TelluraCheck; // of the packets; its first one is the default here too

/// Full and Xon.
struct TextEntry {
    std::string device_address; // Full only
    std::string command;
    bool operator==(const TextEntry&) const = default;
};

struct ModbusEntry {
    std::size_t type = 2; // index into modbus_command_types()
    std::string address;
    std::string start_register;
    std::string values; // numbers separated by spaces or commas
    bool hexadecimal = false;
    bool operator==(const ModbusEntry&) const = default;
};

struct TelluraEntry {
    std::string device_address = "1";
    std::string parameter_address = "01ca";
    std::string byte_count = "2";
    std::string data;
    bool write = false;
    TelluraCheck check{};
    bool operator==(const TelluraEntry&) const = default;
};

struct CommandEntry {
    int protocol = protocol::kNone;
    /// Nothing for a line that no entry made: the loop-back test's.
    std::variant<std::monostate, TextEntry, ModbusEntry, TelluraEntry> fields{};

    [[nodiscard]] bool has_fields() const {
        return !std::holds_alternative<std::monostate>(fields);
    }
};

} // namespace pelvan
