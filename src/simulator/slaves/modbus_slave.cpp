#include "simulator/slaves/modbus_slave.h"

#include <vector>

#include "simulator/slaves/checks.h"

namespace pelvan::simulator {
namespace {

constexpr std::size_t kHeader = 6;       // address, function, two words
constexpr std::size_t kShortRequest = 8; // header and CRC
constexpr unsigned kMaxReadRegisters = 125;
constexpr unsigned kMaxWrittenRegisters = 123;
constexpr unsigned kMaxReadBits = 2000;
constexpr unsigned kMaxWrittenBits = 1968;
constexpr std::uint16_t kCoilOn = 0xFF00;

/// What a request asks for, its CRC taken off.
struct Request {
    std::string_view bytes;
    std::uint16_t first;  // register, coil or sub-function
    std::uint16_t second; // quantity or value
    bool short_form;      // exactly the header
};

/// Body of a reply from the function code on, or the exception.
struct Outcome {
    ExceptionCode code = ExceptionCode::None;
    std::string data;
};

Outcome refuse(ExceptionCode code) {
    return {code, {}};
}

Outcome echo(const Request& request) {
    return {ExceptionCode::None, std::string(request.bytes.substr(2, 4))};
}

Outcome read_bits(const std::vector<bool>& bits, const Request& request) {
    if (!request.short_form || request.second == 0 || request.second > kMaxReadBits) {
        return refuse(ExceptionCode::IllegalValue);
    }
    if (request.first + std::size_t{request.second} > bits.size()) {
        return refuse(ExceptionCode::IllegalAddress);
    }
    std::string packed((request.second + 7U) / 8U, '\0');
    for (std::size_t i = 0; i < request.second; ++i) {
        if (bits[request.first + i]) packed[i / 8] = as_char(byte_at(packed, i / 8) | 1U << i % 8);
    }
    return {ExceptionCode::None, as_char(static_cast<unsigned>(packed.size())) + packed};
}

Outcome read_registers(const Controller& controller, const Request& request) {
    if (!request.short_form || request.second == 0 || request.second > kMaxReadRegisters) {
        return refuse(ExceptionCode::IllegalValue);
    }
    std::string data(1, as_char(2U * request.second));
    for (unsigned i = 0; i < request.second; ++i) {
        if (request.first + i > 0xFFFFU) return refuse(ExceptionCode::IllegalAddress);
        std::int16_t value = 0;
        const ExceptionCode code =
            controller.read(static_cast<std::uint16_t>(request.first + i), value);
        if (code != ExceptionCode::None) return refuse(code);
        append_word(data, static_cast<std::uint16_t>(value));
    }
    return {ExceptionCode::None, data};
}

Outcome write_coil(Controller& controller, const Request& request) {
    if (!request.short_form) return refuse(ExceptionCode::IllegalValue);
    if (request.first >= controller.coils().size()) return refuse(ExceptionCode::IllegalAddress);
    if (request.second != 0 && request.second != kCoilOn)
        return refuse(ExceptionCode::IllegalValue);
    controller.coils()[request.first] = request.second == kCoilOn;
    return echo(request);
}

Outcome write_register(Controller& controller, const Request& request) {
    if (!request.short_form) return refuse(ExceptionCode::IllegalValue);
    const ExceptionCode code =
        controller.write(request.first, static_cast<std::int16_t>(request.second));
    return code == ExceptionCode::None ? echo(request) : refuse(code);
}

Outcome loop_back(const Request& request) {
    if (request.first != 0) return refuse(ExceptionCode::IllegalFunction);
    return {ExceptionCode::None, std::string(request.bytes.substr(2))};
}

/// Two forms of function 15 are understood: one word a coil, 0 for off and anything else for on,
/// with a byte count of twice the number of coils; and the standard's eight coils a byte. The byte
/// count tells which: no number of coils gives the same count in both.
Outcome write_coils(Controller& controller, const Request& request) {
    const std::string_view bytes = request.bytes;
    if (bytes.size() < kHeader + 1) return refuse(ExceptionCode::IllegalValue);
    const std::size_t count = request.second;
    const std::size_t byte_count = byte_at(bytes, kHeader);
    const bool words = byte_count == 2 * count;
    const bool packed = byte_count == (count + 7) / 8;
    if (count == 0 || count > kMaxWrittenBits || !(words || packed) ||
        bytes.size() != kHeader + 1 + byte_count) {
        return refuse(ExceptionCode::IllegalValue);
    }
    std::vector<bool>& coils = controller.coils();
    if (request.first + count > coils.size()) return refuse(ExceptionCode::IllegalAddress);
    const std::string_view data = bytes.substr(kHeader + 1);
    for (std::size_t i = 0; i < count; ++i) {
        coils[request.first + i] =
            words ? word_at(data, 2 * i) != 0 : (byte_at(data, i / 8) >> i % 8 & 1U) != 0;
    }
    return echo(request);
}

Outcome write_registers(Controller& controller, const Request& request) {
    const std::string_view bytes = request.bytes;
    if (bytes.size() < kHeader + 1) return refuse(ExceptionCode::IllegalValue);
    const std::size_t count = request.second;
    if (count == 0 || count > kMaxWrittenRegisters || byte_at(bytes, kHeader) != 2 * count ||
        bytes.size() != kHeader + 1 + 2 * count) {
        return refuse(ExceptionCode::IllegalValue);
    }
    if (request.first + count > 0x10000U) return refuse(ExceptionCode::IllegalAddress);
    std::vector<std::int16_t> values;
    for (std::size_t i = 0; i < count; ++i) {
        values.push_back(static_cast<std::int16_t>(word_at(bytes, kHeader + 1 + 2 * i)));
    }
    const ExceptionCode code = controller.write_many(request.first, values);
    return code == ExceptionCode::None ? echo(request) : refuse(code);
}

bool is_known(unsigned function) {
    return (function >= 1 && function <= 6) || function == 8 || function == 15 || function == 16;
}

Outcome execute(Controller& controller, unsigned function, const Request& request) {
    switch (function) {
    case 1:
        return read_bits(controller.coils(), request);
    case 2:
        return read_bits(controller.inputs(), request);
    case 3:
    case 4:
        return read_registers(controller, request);
    case 5:
        return write_coil(controller, request);
    case 6:
        return write_register(controller, request);
    case 8:
        return loop_back(request);
    case 15:
        return write_coils(controller, request);
    case 16:
        return write_registers(controller, request);
    default:
        return refuse(ExceptionCode::IllegalFunction);
    }
}

} // namespace

std::string modbus_reply(Controller& controller, unsigned address, std::string_view request) {
    const unsigned asked = byte_at(request, 0);
    if (asked != address && asked != 0) return {};
    const unsigned function = byte_at(request, 1);
    const std::string_view body = request.substr(0, request.size() - 2);
    Outcome outcome =
        refuse(is_known(function) ? ExceptionCode::IllegalValue : ExceptionCode::IllegalFunction);
    if (body.size() >= kHeader) {
        outcome =
            execute(controller, function,
                    {body, word_at(body, 2), word_at(body, 4), request.size() == kShortRequest});
    }
    if (asked == 0) return {};
    std::string reply(1, as_char(address));
    if (outcome.code == ExceptionCode::None) {
        reply += as_char(function) + outcome.data;
    } else {
        reply += as_char(function | 0x80U);
        reply += as_char(static_cast<unsigned>(outcome.code));
    }
    return with_modbus_crc(std::move(reply));
}

} // namespace pelvan::simulator
