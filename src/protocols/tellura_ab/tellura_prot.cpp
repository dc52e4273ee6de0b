#include "protocols/tellura_ab/tellura_prot.h"

#include "text/bytes.h"
#include "text/control_characters.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

// Controllers listen seven above the address that is set on them: address 1 is called as 8.
constexpr int kAddressOffset = 7;
constexpr int kMaxBytes = 255;
constexpr char kWriteCommand = 8;
constexpr char kReadCommand = 1;
constexpr std::size_t kParameterDigits = 4;

constexpr float kSendTimeoutMs = 200;
constexpr float kReplyTimeoutMs = 2000;
constexpr std::int16_t kQuietChars = 12;
constexpr int kSends = 3;
constexpr int kReplyTries = 4;

constexpr std::size_t kPairSize = 2; // DLE and its partner
constexpr std::size_t kMinReplyLength = 10;
constexpr std::size_t kLongestReply = 1024; // 255 bytes of data, each of them doubled, and more
// Places in a reply's body, doubled DLEs taken out: destination, source, command, status, two bytes
// of transaction number.
constexpr std::size_t kReplySource = 1;
constexpr std::size_t kReplyStatus = 3;
constexpr std::size_t kReplyData = 6;

/// The bytes that pairs of hexadecimal digits stand for; nothing when there is anything else.
std::optional<std::string> bytes_of_digits(const std::string& digits) {
    if (digits.empty() || digits.size() % 2 != 0) return std::nullopt;
    if (digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos) return std::nullopt;
    std::string bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes += static_cast<char>(hex_number("&h" + digits.substr(i, 2)).value_or(0));
    return bytes;
}

std::string stuffed(std::string_view bytes) {
    std::string out;
    for (const char c : bytes)
        out.append(c == kDle ? 2 : 1, c);
    return out;
}

/// A body's bytes with each doubled DLE as one.
std::string unstuffed(std::string_view body) {
    std::string out;
    for (std::size_t i = 0; i < body.size(); ++i) {
        if (body[i] == kDle && i + 1 < body.size() && body[i + 1] == kDle) ++i;
        out += body[i];
    }
    return out;
}

unsigned crc_step(unsigned crc, char byte) {
    crc ^= static_cast<unsigned char>(byte);
    for (int bit = 0; bit < 8; ++bit)
        crc = (crc & 1U) != 0 ? crc >> 1U ^ 0xA001U : crc >> 1U;
    return crc;
}

} // namespace

std::optional<TelluraPacket> TelluraProt::BuildRequest(std::uint8_t& device_address,
                                                       const std::string& parameter_address,
                                                       const std::string& data, bool write,
                                                       int byte_count) {
    const auto refuse = [this](const char* message) {
        dialogs_.message_box(message);
        return std::nullopt;
    };
    if (device_address < 1 || device_address > kTelluraMaxAddress)
        return refuse("Invalid device address!");
    device_address = static_cast<std::uint8_t>(device_address + kAddressOffset);
    const auto parameter = bytes_of_digits(parameter_address);
    if (!parameter || parameter_address.size() != kParameterDigits)
        return refuse(" Invalid parameter address!");
    const auto content = write ? bytes_of_digits(data)
                               : std::optional(std::string(1, static_cast<char>(byte_count)));
    if (!content) return refuse("Invalid data!");
    if (!write && (byte_count < 1 || byte_count > kMaxBytes))
        return refuse("Invalid number of bytes!");
    // Source 0, command, status 0, transaction number 0 0.
    const std::string header{
        static_cast<char>(device_address), 0, write ? kWriteCommand : kReadCommand, 0, 0, 0};
    TelluraPacket request;
    request.body = stuffed(header + *parameter + *content);
    request.packet = std::string{kDle, kStx} + request.body + std::string{kDle, kEtx};
    request.packet += check_of(request.body);
    return request;
}

std::int16_t TelluraProt::Bcc(std::string_view body) {
    int sum = 0;
    for (const char c : unstuffed(body)) {
        sum += static_cast<unsigned char>(c);
        if (sum > 255) sum -= 256;
    }
    // A sum of 0 gives 256, not 0; only the low byte ever travels.
    return static_cast<std::int16_t>((sum ^ 255) + 1);
}

std::string TelluraProt::Crc(std::string_view body) {
    unsigned crc = 0;
    for (const char c : unstuffed(body))
        crc = crc_step(crc, c);
    crc = crc_step(crc, kEtx);
    return {static_cast<char>(crc & 0xFFU), static_cast<char>(crc >> 8U)};
}

std::string TelluraProt::check_of(std::string_view body) const {
    if (check_ == TelluraCheck::Crc) return Crc(body);
    return std::string(1, static_cast<char>(Bcc(body) & 0xFF));
}

/// Where the first pair of DLE and `partner` stands; npos when there is none. A doubled DLE is
/// data, and so is the check behind DLE ETX: neither begins a pair.
std::size_t TelluraProt::find_pair(std::string_view bytes, char partner) const {
    for (std::size_t i = 0; i + 1 < bytes.size(); ++i) {
        if (bytes[i] != kDle) continue;
        if (bytes[i + 1] == partner) return i;
        if (bytes[i + 1] == kEtx) i += check_size();
        ++i;
    }
    return std::string_view::npos;
}

std::string_view TelluraProt::FirstPacket(std::string_view bytes) const {
    const std::size_t start = find_pair(bytes, kStx);
    if (start == bytes.npos) return {};
    const std::string_view packet = bytes.substr(start);
    const std::size_t end_pair = find_pair(packet, kEtx);
    const std::size_t length = end_pair + kPairSize + check_size();
    return end_pair == packet.npos || packet.size() < length ? std::string_view()
                                                             : packet.substr(0, length);
}

/// Sends until DLE ACK comes back; what followed it, or nothing when it never came.
std::optional<std::string> TelluraProt::acknowledged(const std::string& packet) {
    for (int i = 0; i < kSends; ++i) {
        const std::string back =
            link_.transmit(kTelluraChannel, packet, kSendTimeoutMs, kQuietChars,
                           [this](std::string_view received) { return IsWhole(received); });
        const auto at = find_pair(back, kAck);
        if (at != back.npos) return back.substr(at + kPairSize);
    }
    return std::nullopt;
}

std::string TelluraProt::Exchange(const std::string& packet) {
    std::optional<std::string> reply = acknowledged(packet);
    if (!reply) return kTelluraBad;
    for (int i = 0; i < kReplyTries && FirstPacket(*reply).empty(); ++i)
        *reply += link_.receive_more(
            kTelluraChannel, kReplyTimeoutMs, kQuietChars,
            [&](std::string_view received) { return ends_packet(*reply + std::string(received)); });
    const std::string_view answer = FirstPacket(*reply);
    return answer.empty() ? kTelluraBad : std::string(answer);
}

bool TelluraProt::IsWhole(std::string_view received) const {
    if (received.size() < kPairSize || received.size() > kLongestReply) return false;
    if (find_pair(received, kStx) != received.npos) return ends_packet(received);
    for (const char link_reply : {kAck, kNak, kEnq})
        if (find_pair(received, link_reply) == received.size() - kPairSize) return true;
    return false;
}

/// Whether the last of the bytes is that of the first packet, and its check fits.
bool TelluraProt::ends_packet(std::string_view bytes) const {
    if (bytes.size() > kLongestReply) return false;
    const std::string_view packet = FirstPacket(bytes);
    return !packet.empty() && packet.end() == bytes.end() && CheckReply(packet);
}

std::string_view TelluraProt::body_of(std::string_view reply) const {
    return reply.substr(kPairSize, reply.size() - 2 * kPairSize - check_size());
}

bool TelluraProt::CheckReply(std::string_view reply) const {
    if (reply.size() < kMinReplyLength) return false;
    return reply.substr(reply.size() - check_size()) == check_of(body_of(reply));
}

std::string TelluraProt::DisplayPacket(std::string_view packet) {
    if (packet == kTelluraBad) return "Bad or incomplete Packet!";
    return hex_bytes(packet);
}

TelluraReply TelluraProt::ReadReply(std::string_view reply) const {
    if (reply.size() < kMinReplyLength) return {};
    const std::string body = unstuffed(body_of(reply));
    TelluraReply out;
    if (body.size() > kReplySource)
        out.address = static_cast<unsigned char>(body[kReplySource]) - kAddressOffset;
    if (body.size() > kReplyStatus) out.status = static_cast<unsigned char>(body[kReplyStatus]);
    if (body.size() > kReplyData) out.data = body.substr(kReplyData);
    return out;
}

} // namespace pelvan
