#include "console/modbus_entry.h"

#include <cmath>
#include <optional>
#include <vector>

#include "platform/run_time_error.h"
#include "protocols/modbus/crc.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

/// Outside every range that the builder accepts, so that it refuses the field with its own words.
constexpr double kNoNumber = -40000;
constexpr std::size_t kMaxValues = 127; // the byte-count field holds twice the number in one byte
constexpr std::size_t kMinReply = 5;

std::optional<double> whole_number(const std::string& text) {
    if (!is_numeric(text)) return std::nullopt;
    const double value = leading_number(text);
    return value == std::floor(value) ? std::optional(value) : std::nullopt;
}

/// Range checks are the builder's; this one only keeps the number inside the argument's type.
std::int16_t address_number(const std::string& text) {
    const double value = whole_number(text).value_or(kNoNumber);
    return value >= -32768 && value <= 32767 ? static_cast<std::int16_t>(value) : std::int16_t{-1};
}

std::vector<std::string> words_of(const std::string& text) {
    std::vector<std::string> words;
    std::string spaced = text;
    for (char& c : spaced)
        if (c == ',' || c == '\t') c = ' ';
    for (const std::string& word : split(spaced, ' '))
        if (!word.empty()) words.push_back(word);
    return words;
}

/// A hexadecimal word stands for its sixteen bits, so FFFF is entered as such and sent as -1.
double word_value(const std::string& text, bool hexadecimal) {
    if (!hexadecimal) return whole_number(text).value_or(kNoNumber);
    const auto value = hex_number(text);
    if (!value || *value > 0xFFFF) return kNoNumber;
    return *value > 0x7FFF ? static_cast<double>(*value) - 65536 : static_cast<double>(*value);
}

std::string long_text(const std::string& text, bool hexadecimal) {
    if (!hexadecimal) return text;
    const auto value = hex_number(text);
    if (!value) return "none";
    return std::to_string(static_cast<std::int32_t>(static_cast<std::uint32_t>(*value)));
}

void append_long(std::vector<float>& values, const std::string& text, bool hexadecimal) {
    const std::string number = long_text(text, hexadecimal);
    const auto value = whole_number(number);
    if (!value || *value < -2147483648.0 || *value > 2147483647.0) {
        values.push_back(static_cast<float>(kNoNumber));
        return;
    }
    for (const std::string& word : split(SplitLongToWords(number), ' '))
        values.push_back(static_cast<float>(leading_number(word)));
}

/// Element 0 is not used; the list ends in its end mark. Empty when the box holds nothing usable.
std::vector<float> value_array(const ModbusEntry& entry, ModbusCommand command) {
    const auto words = words_of(entry.values);
    std::vector<float> values{0};
    if (words.empty() || words.size() > kMaxValues) values.push_back(static_cast<float>(kNoNumber));
    for (const std::string& word : words) {
        if (values.size() > kMaxValues) break;
        if (command == ModbusCommand::Write32)
            append_long(values, word, entry.hexadecimal);
        else if (command == ModbusCommand::Read32)
            values.push_back(static_cast<float>(2 * word_value(word, entry.hexadecimal)));
        else
            values.push_back(static_cast<float>(word_value(word, entry.hexadecimal)));
    }
    values.push_back(kValueListEnd);
    return values;
}

/// The 32-bit numbers of a "SmartDec" text that holds nothing but an even number of words.
std::optional<std::string> joined(const std::string& smart) {
    const auto words = words_of(smart);
    if (words.empty() || words.size() % 2 != 0) return std::nullopt;
    std::string out;
    for (std::size_t i = 0; i < words.size(); i += 2) {
        if (!is_numeric(words[i]) || !is_numeric(words[i + 1])) return std::nullopt;
        out +=
            (i ? " " : "") + std::to_string(join_words(int16_from(leading_number(words[i])),
                                                       int16_from(leading_number(words[i + 1]))));
    }
    return out;
}

std::string bytes_text(std::string_view frame) {
    std::string out;
    for (const char c : frame)
        out += " " + hex_text(static_cast<unsigned char>(c), 2);
    return out;
}

} // namespace

const std::array<ModbusCommandType, 12>& modbus_command_types() {
    using enum ModbusCommand;
    static const std::array<ModbusCommandType, 12> types{{
        {ReadCoils, 1, "1 - Read Coil Status", "&Count", "&Register"},
        {ReadInputs, 2, "2 - Read Input Status", "&Count", "&Register"},
        {ReadHolding, 3, "3 - Read Holding Registers", "&Count", "&Register"},
        {ReadInputRegisters, 4, "4 - Read Input Registers", "&Count", "&Register"},
        {WriteCoil, 5, "5 - Write Single Coil", "&Value", "Coil Numbe&r"},
        {WriteRegister, 6, "6 - Write Single Register", "&Value", "&Register"},
        {Diagnostics, 8, "8 - Diagnostics", "Data &Value", "Sub-function Numbe&r"},
        {WriteCoils, 15, "15 - Write Multiple Coils", "&Values", "First Coil Numbe&r"},
        {WriteRegisters, 16, "16 - Write Multiple Registers", "&Values", "&Register"},
        {Read32, 3, "Read 32-bit Holding Registers", "&Count", "&Register"},
        {Write32, 16, "Write 32-bit Holding Registers", "&Values", "&Register"},
        {LoopBack, 8, "Loop-back (function 8, sub-function 0)", "Data &Value",
         "Sub-function Numbe&r"},
    }};
    return types;
}

ValueKind value_kind(ModbusCommand command) {
    using enum ModbusCommand;
    switch (command) {
    case ReadCoils:
    case ReadInputs:
    case ReadHolding:
    case ReadInputRegisters:
    case Read32:
        return ValueKind::Count;
    case Diagnostics:
    case LoopBack:
        return ValueKind::Data;
    default:
        return ValueKind::Values;
    }
}

bool is_broadcast(const ModbusEntry& entry) {
    return whole_number(entry.address) == 0;
}

ModbusEntry write_register_entry(const std::string& address, const std::string& line) {
    constexpr std::size_t kWriteRegisterIndex = 5;
    const auto words = words_of(line);
    ModbusEntry entry{kWriteRegisterIndex, address, "", "", false};
    if (!words.empty()) entry.start_register = words[0];
    if (words.size() == 2) entry.values = words[1];
    return entry;
}

std::string build_request(Modbus& modbus, const ModbusEntry& entry) {
    const auto& types = modbus_command_types();
    const ModbusCommandType& type =
        types[checked_index(static_cast<long>(entry.type), types.size())];
    std::vector<float> values = value_array(entry, type.command);
    const double start = type.command == ModbusCommand::LoopBack
                             ? 0
                             : whole_number(entry.start_register).value_or(kNoNumber);
    return modbus.ModbusBuildRequest(type.function, address_number(entry.address),
                                     static_cast<float>(start), values);
}

ModbusField refused_field(std::string_view refusal) {
    const auto names = [&](const char* field) { return refusal.find(field) != refusal.npos; };
    if (names("ADDRESS")) return ModbusField::Address;
    if (names("REGISTER")) return ModbusField::Register;
    return names("DATA VALUE") ? ModbusField::Values : ModbusField::None;
}

std::string render(Modbus& modbus, DataFormat format, std::int16_t is_request,
                   std::string_view frame) {
    switch (format) {
    case DataFormat::Hex:
        return modbus.ModbusDecodeHex(is_request, frame);
    case DataFormat::SmartDec:
        return modbus.ModbusDecodeSmartDecimal(is_request, frame);
    case DataFormat::Decimal:
        break;
    }
    return modbus.ModbusDecodeDecimal(is_request, frame);
}

std::string response_line(Modbus& modbus, DataFormat format, const ModbusEntry& entry,
                          std::string_view reply) {
    std::string text = render(modbus, format, 0, reply);
    if (reply.empty()) {
        if (is_broadcast(entry)) return "Broadcast: no controller answers.";
        return "No response from the controller at address " + trim(entry.address) + ".";
    }
    // Fewer bytes than any reply has are not decoded; what came is shown all the same.
    if (reply.size() < kMinReply) return "Incomplete reply, bytes in hex:" + bytes_text(reply);
    const bool read32 = modbus_command_types()[entry.type].command == ModbusCommand::Read32;
    if (format == DataFormat::SmartDec && read32) return joined(text).value_or(text);
    return text;
}

std::string objection(std::string_view request, std::string_view reply) {
    const auto function = [](std::string_view frame) {
        return static_cast<unsigned char>(frame[1]) & 0x7FU;
    };
    if (reply.size() < kMinReply) return "The reply is incomplete.";
    if (!has_valid_crc(reply)) return "The reply came damaged: its CRC does not fit.";
    if (reply[0] != request[0]) return "The reply came from another address.";
    if (function(reply) != function(request)) return "The reply is to another function.";
    if (!can_answer(request, reply))
        return is_read(request) ? "The reply holds another number of values than was asked for."
                                : "The reply does not repeat what was sent.";
    if (is_exception(reply))
        return "The controller refused the command: " +
               exception_text(static_cast<unsigned char>(reply[2])) + ".";
    return {};
}

} // namespace pelvan
