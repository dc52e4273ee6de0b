#include "simulator/slaves/tellura_slave.h"

#include "simulator/slaves/checks.h"

namespace pelvan::simulator {
namespace {

constexpr char kStx = 2;
constexpr char kEtx = 3;
constexpr char kEnq = 5;
constexpr char kAck = 6;
constexpr char kDle = 16;
constexpr char kNak = 21;

constexpr unsigned kAddressOffset = 7;
constexpr unsigned kMaxAddress = 32;
constexpr unsigned kReadCommand = 1;
constexpr unsigned kWriteCommand = 8;
constexpr unsigned kReplyBit = 0x40;

constexpr unsigned kStatusOk = 0;
constexpr unsigned kStatusBadCommand = 0x10; // unknown command, or not the right number of bytes
constexpr unsigned kStatusBadAddress = 0x50;
constexpr unsigned kStatusBadValue = 0x60;

// Places in a packet's body, stuffing removed.
constexpr std::size_t kDestination = 0;
constexpr std::size_t kSource = 1;
constexpr std::size_t kCommand = 2;
constexpr std::size_t kTransaction = 4;
constexpr std::size_t kParameter = 6;
constexpr std::size_t kData = 8;

/// A packet taken apart: the body without doubled DLEs and what stands behind DLE ETX.
struct Parts {
    std::string body;
    std::string_view check;
};

/// Nothing while the packet has no end.
std::optional<Parts> take_apart(std::string_view bytes) {
    Parts parts;
    for (std::size_t i = 2; i + 1 < bytes.size(); ++i) {
        if (bytes[i] == kDle && bytes[i + 1] == kEtx) {
            parts.check = bytes.substr(i + 2);
            return parts;
        }
        if (bytes[i] == kDle) ++i;
        parts.body += bytes[i];
    }
    return std::nullopt;
}

unsigned status_of(ExceptionCode code) {
    if (code == ExceptionCode::None) return kStatusOk;
    return code == ExceptionCode::IllegalAddress ? kStatusBadAddress : kStatusBadValue;
}

} // namespace

std::optional<std::vector<Reply>> TelluraSlave::hear(std::string_view bytes) {
    if (bytes.size() < 2 || bytes[0] != kDle) return std::nullopt;
    if (bytes.size() == 2 && bytes[1] == kEnq) return link_answer_;
    if (bytes.size() == 2 && bytes[1] == kNak) return last_packet_;
    if (bytes.size() == 2 && bytes[1] == kAck) return std::vector<Reply>{};
    if (bytes[1] != kStx) return std::nullopt;
    const std::optional<Parts> parts = take_apart(bytes);
    if (!parts || parts->check.empty()) return std::nullopt;
    const bool own = parts->body.size() > kSource && station_.address <= kMaxAddress &&
                     byte_at(parts->body, kDestination) == station_.address + kAddressOffset;
    if (!own) return std::vector<Reply>{};
    for (const Check check : {Check::Bcc, Check::Crc}) {
        if (parts->check == check_of(parts->body, check)) return obey(parts->body, check);
    }
    link_answer_ = {{ReplyKind::TelluraAck, {kDle, kNak}, {}}};
    return link_answer_;
}

std::vector<Reply> TelluraSlave::obey(const std::string& body, Check check) {
    link_answer_ = {{ReplyKind::TelluraAck, {kDle, kAck}, {}}};
    if (body.size() <= kData) {
        last_packet_.clear();
        return link_answer_;
    }
    std::string data;
    const unsigned status = execute(body, data);
    const auto reply_from = [&](unsigned address) {
        std::string reply{body[kSource], as_char(address + kAddressOffset),
                          as_char(byte_at(body, kCommand) | kReplyBit), as_char(status)};
        reply += body.substr(kTransaction, 2) + data;
        return packet(reply, check);
    };
    last_packet_ = {{ReplyKind::Tellura, reply_from(station_.address),
                     reply_from(station_.address % kMaxAddress + 1)}};
    return {link_answer_[0], last_packet_[0]};
}

unsigned TelluraSlave::execute(const std::string& body, std::string& data) {
    if (byte_at(body, kCommand) == kReadCommand) return read(body, data);
    if (byte_at(body, kCommand) == kWriteCommand) return write(body);
    return kStatusBadCommand;
}

unsigned TelluraSlave::read(const std::string& body, std::string& data) {
    const std::size_t count = byte_at(body, kData);
    if (body.size() != kData + 1 || count == 0) return kStatusBadCommand;
    std::string values;
    for (std::uint16_t number = word_at(body, kParameter); values.size() < count; ++number) {
        std::int16_t value = 0;
        const ExceptionCode code = station_.controller.read(number, value);
        if (code != ExceptionCode::None) return status_of(code);
        append_word(values, static_cast<std::uint16_t>(value));
    }
    data = values.substr(0, count);
    return kStatusOk;
}

unsigned TelluraSlave::write(const std::string& body) {
    if ((body.size() - kData) % 2 != 0) return kStatusBadCommand;
    std::vector<std::int16_t> values;
    for (std::size_t i = kData; i < body.size(); i += 2) {
        values.push_back(static_cast<std::int16_t>(word_at(body, i)));
    }
    return status_of(station_.controller.write_many(word_at(body, kParameter), values));
}

std::string TelluraSlave::packet(const std::string& body, Check check) {
    std::string bytes{kDle, kStx};
    for (const char c : body)
        bytes.append(c == kDle ? 2 : 1, c);
    bytes += kDle;
    bytes += kEtx;
    return bytes + check_of(body, check);
}

std::string TelluraSlave::check_of(const std::string& body, Check check) {
    if (check == Check::Crc) {
        const std::uint16_t crc = crc16(body + kEtx, 0);
        return {as_char(crc), as_char(crc >> 8U)};
    }
    unsigned sum = 0;
    for (std::size_t i = 0; i < body.size(); ++i)
        sum += byte_at(body, i);
    return {as_char(0U - sum)};
}

} // namespace pelvan::simulator
