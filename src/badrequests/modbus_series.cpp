#include <algorithm>
#include <array>

#include "badrequests/protocol_series.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/modbus.h"
#include "text/bytes.h"

namespace pelvan {
namespace {

constexpr long kMaxAddress = 247;
constexpr long kMaxRegister = 65535;
constexpr char kReadRegisters = 3;
constexpr char kRefusedRead = '\x83';
/// What changes something in a controller: writes, and diagnostics, which may restart it.
constexpr std::array<unsigned, 8> kWorkingFunctions{5, 6, 8, 15, 16, 21, 22, 23};
constexpr std::size_t kMinFrame = 4;
constexpr std::size_t kExceptionSize = 5;
constexpr std::size_t kReplySize = 7; // of the good request
constexpr unsigned kTooMany = 126;    // a reply holds 125 registers
constexpr std::size_t kHalf =
    4; // behind it stands the count of 1: no address and function of a write

char byte_of(long number) {
    return static_cast<char>(static_cast<unsigned char>(number & 0xFF));
}

std::string sealed(const std::string& frame) {
    const unsigned crc = modbus_crc(frame);
    return frame + byte_of(static_cast<long>(crc)) + byte_of(static_cast<long>(crc >> 8U));
}

std::string read_of(long address, long number, long count) {
    return sealed({byte_of(address), kReadRegisters, byte_of(number >> 8), byte_of(number),
                   byte_of(count >> 8), byte_of(count)});
}

std::string joined(const std::vector<std::string>& parts) {
    std::string all;
    for (const std::string& part : parts)
        all += part;
    return all;
}

/// Whether bytes that stand side by side anywhere in these have a check that fits and the function
/// of a write: a receiver may begin and end where it likes.
bool may_write(std::string_view bytes) {
    for (std::size_t begin = 0; begin + kMinFrame <= bytes.size(); ++begin) {
        const unsigned function = static_cast<unsigned char>(bytes[begin + 1]);
        if (std::ranges::count(kWorkingFunctions, function) == 0) continue;
        std::uint16_t crc = modbus_crc(bytes.substr(begin, kMinFrame));
        for (std::size_t end = begin + kMinFrame; crc != 0 && end < bytes.size(); ++end)
            crc = modbus_crc(bytes.substr(end, 1), crc);
        if (crc == 0) return true;
    }
    return false;
}

class ModbusSeries : public ProtocolSeries {
  public:
    ModbusSeries(long address, long number, long other)
        : address_(address), number_(number), other_(other), good_(read_of(address, number, 1)) {}

    [[nodiscard]] Asked whom() const override {
        return {kModbusChannel, static_cast<int>(address_)};
    }
    [[nodiscard]] std::int16_t quiet_chars() const override { return kModbusQuietChars; }
    [[nodiscard]] std::string title() const override {
        return "Modbus RTU, address " + std::to_string(address_) + ", register " +
               std::to_string(number_);
    }
    [[nodiscard]] std::string shown(std::string_view bytes) const override {
        return hex_bytes(bytes);
    }
    [[nodiscard]] std::string good_text() const override { return hex_bytes(good_); }
    [[nodiscard]] std::vector<BadRequest> requests(const std::string& settings) const override;
    [[nodiscard]] Reaction reaction(const std::string& reply) const override;
    [[nodiscard]] GoodReply ask(const AskLine& line) override;

  private:
    [[nodiscard]] bool has_own_head(const std::string& reply) const;
    [[nodiscard]] std::vector<BadRequest> all(const std::string& settings) const;

    long address_;
    long number_;
    long other_;
    std::string good_;
};

std::vector<BadRequest> ModbusSeries::all(const std::string& settings) const {
    using enum Expected;
    std::string wrong = good_;
    wrong.back() = wrong.back() == '\xFF' ? '\0' : '\xFF';
    std::string exchanged = good_;
    std::swap(exchanged[exchanged.size() - 1], exchanged[exchanged.size() - 2]);
    std::vector<BadRequest> list{{"Wrong CRC", Silence, {wrong}}};
    if (exchanged != good_) list.push_back({"CRC bytes exchanged", Silence, {exchanged}});
    list.push_back({"Last byte missing", Silence, {good_.substr(0, good_.size() - 1)}});
    list.push_back({"Second half missing", Silence, {good_.substr(0, kHalf)}});
    list.push_back({"One byte alone", Silence, {good_.substr(0, 1)}});
    // 0 would not do: a frame's check fits once more with a 0 behind it.
    list.push_back({"One byte too long", Silence, {good_ + '\xFF'}});
    list.push_back({"Pause inside", Silence, {good_.substr(0, kHalf), good_.substr(kHalf)}});
    list.push_back({"Count of 0", Refusal, {read_of(address_, number_, 0)}});
    list.push_back({"Count of 126", Refusal, {read_of(address_, number_, kTooMany)}});
    list.push_back({"Other address", Silence, {read_of(other_, number_, 1)}, true});
    list.push_back({"Read from all (address 0)", Silence, {read_of(0, number_, 1)}, true});
    list.push_back(with_other_parity({{}, Silence, {good_}}, settings, true));
    return list;
}

std::vector<BadRequest> ModbusSeries::requests(const std::string& settings) const {
    std::vector<BadRequest> list = all(settings);
    for (BadRequest& request : list) {
        // What stands before and behind it on the line may be taken together with it.
        if (may_write(good_ + joined(request.parts) + good_))
            request = not_applicable(request.name.c_str(),
                                     "its bytes could be taken for a write; choose another "
                                     "register");
    }
    return list;
}

Reaction ModbusSeries::reaction(const std::string& reply) const {
    using enum Reaction::Kind;
    if (reply.empty()) return {};
    const std::string text = hex_bytes(reply);
    // Both parts of a request with a pause may have been answered.
    for (const std::size_t size : {kExceptionSize, kReplySize, reply.size()}) {
        const std::string frame = reply.substr(0, size);
        if (frame.size() < kExceptionSize || !has_valid_crc(frame)) continue;
        if (frame[0] != good_[0]) return {Foreign, text};
        if (!is_exception(frame)) return {Answer, text};
        if (reaction(reply.substr(size)).kind == Answer) return {Answer, text};
        return {Refusal, exception_text(static_cast<unsigned char>(frame[2]))};
    }
    return {has_own_head(reply) ? Damaged : Noise, text};
}

/// The address with the function, as every answer begins.
bool ModbusSeries::has_own_head(const std::string& reply) const {
    return std::ranges::any_of(std::array{kReadRegisters, kRefusedRead}, [&](char function) {
        return reply.find(std::string{good_[0], function}) != reply.npos;
    });
}

GoodReply ModbusSeries::ask(const AskLine& line) {
    using enum GoodReply::Kind;
    const std::string reply = line(good_, static_cast<double>(kModbusTimeoutMs));
    if (reply.empty()) return {};
    const auto fits = [this](const std::string& frame) {
        return has_valid_crc(frame) && can_answer(good_, frame);
    };
    if (fits(reply) && is_exception(reply)) return {Refused, reaction(reply).text};
    // An answer to something before may have come right with it.
    const std::size_t size = std::min(reply.size(), kReplySize);
    for (const std::size_t at : {std::size_t{0}, reply.size() - size})
        if (const std::string frame = reply.substr(at, size); fits(frame))
            return {Answered, hex_bytes(frame), reply.substr(0, at) + reply.substr(at + size)};
    return {Damaged, hex_bytes(reply)};
}

} // namespace

std::unique_ptr<ProtocolSeries> make_modbus_series(const BadRequestOptions& options,
                                                   std::string& refusal) {
    long address = 0;
    long number = 0;
    long other = 0;
    if (!number_in(options.address, 1, kMaxAddress, "The address", address, refusal) ||
        !number_in(options.read, 0, kMaxRegister, "The register", number, refusal) ||
        !number_in(options.other_address, 1, kMaxAddress, "The other address", other, refusal))
        return nullptr;
    if (other == address) {
        refusal = kSameAddress;
        return nullptr;
    }
    return std::make_unique<ModbusSeries>(address, number, other);
}

} // namespace pelvan
