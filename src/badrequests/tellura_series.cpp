#include <algorithm>
#include <array>

#include "badrequests/protocol_series.h"
#include "text/bytes.h"
#include "text/control_characters.h"

namespace pelvan {
namespace {

constexpr std::int16_t kQuietChars = 12;
constexpr long kMaxAddress = 32;
constexpr int kBytesRead = 2;
constexpr std::size_t kPairSize = 2;
constexpr std::size_t kReplySource = 3; // behind DLE STX and the destination 0

/// Whether there is the beginning of an answer in these.
bool begins_reply(std::string_view bytes) {
    return std::ranges::any_of(std::array{kStx, kAck, kNak}, [bytes](char sign) {
        return bytes.find(std::string{kDle, sign}) != bytes.npos;
    });
}

class TelluraSeries : public ProtocolSeries {
  public:
    TelluraSeries(long address, long other, TelluraCheck check, Link& link, Dialogs& dialogs)
        : address_(address), other_(other), protocol_(link, dialogs) {
        protocol_.set_check(check);
    }
    /// False for anything but four hexadecimal digits.
    [[nodiscard]] bool choose(const std::string& parameter) {
        if (parameter.size() != 4 ||
            parameter.find_first_not_of("0123456789abcdefABCDEF") != parameter.npos)
            return false;
        parameter_ = parameter;
        const auto good = read_from(address_);
        const auto foreign = read_from(other_);
        if (!good || !foreign) return false;
        good_ = *good;
        foreign_ = foreign->packet;
        return true;
    }

    [[nodiscard]] Asked whom() const override { return {kTelluraChannel}; }
    [[nodiscard]] std::int16_t quiet_chars() const override { return kQuietChars; }
    [[nodiscard]] std::string title() const override {
        const bool bcc = protocol_.check() == TelluraCheck::Bcc;
        return "Tellura/AB (" + std::string(bcc ? "BCC" : "CRC") + "), address " +
               std::to_string(address_) + ", parameter " + parameter_;
    }
    [[nodiscard]] std::string shown(std::string_view bytes) const override {
        return hex_bytes(bytes);
    }
    [[nodiscard]] std::string good_text() const override { return hex_bytes(good_.packet); }
    [[nodiscard]] std::vector<BadRequest> requests(const std::string& settings) const override;
    [[nodiscard]] Reaction reaction(const std::string& reply) const override;
    [[nodiscard]] GoodReply ask(const AskLine& line) override;

  private:
    [[nodiscard]] std::optional<TelluraPacket> read_from(long address) {
        auto destination = static_cast<std::uint8_t>(address);
        return protocol_.BuildRequest(destination, parameter_, {}, false, kBytesRead);
    }
    [[nodiscard]] std::string packet_of(const std::string& body) const;
    [[nodiscard]] bool is_own(std::string_view packet) const;

    long address_;
    long other_;
    std::string parameter_;
    TelluraProt protocol_;
    TelluraPacket good_;
    std::string foreign_;
};

std::string TelluraSeries::packet_of(const std::string& body) const {
    std::string check = TelluraProt::Crc(body);
    if (protocol_.check() == TelluraCheck::Bcc)
        check = std::string(1, static_cast<char>(TelluraProt::Bcc(body) & 0xFF));
    return std::string{kDle, kStx} + body + std::string{kDle, kEtx} + check;
}

/// All bodies have the command of a read and, but for that, the good request's own bytes.
std::vector<BadRequest> TelluraSeries::requests(const std::string& settings) const {
    using enum Expected;
    const std::string& packet = good_.packet;
    const std::string& body = good_.body;
    const std::size_t check_size = packet.size() - body.size() - 2 * kPairSize;
    std::string wrong = packet;
    wrong.back() = wrong.back() == '\xFF' ? '\0' : '\xFF';
    const std::string no_size = body.substr(0, body.size() - 1) + '\0';
    return {{"Wrong check", Either, {wrong}},
            {"Check missing", Either, {packet.substr(0, packet.size() - check_size)}},
            {"End missing", Either, {packet.substr(0, kPairSize + body.size())}},
            {"One byte alone (STX)", Silence, {std::string(1, kStx)}},
            {"One byte too long", Either, {packet_of(body + '\0')}},
            {"Length of 0", Refusal, {packet_of(no_size)}},
            not_applicable("Pause inside", "the protocol sets no time between two characters"),
            {"Other address", Silence, {foreign_}, true},
            with_other_parity({{}, Silence, {packet}}, settings, true)};
}

bool TelluraSeries::is_own(std::string_view packet) const {
    return packet.size() > kReplySource &&
           packet[kReplySource] == good_.body[0]; // both as they are on the line
}

Reaction TelluraSeries::reaction(const std::string& reply) const {
    using enum Reaction::Kind;
    if (reply.empty()) return {};
    std::string text = hex_bytes(reply);
    if (reply == std::string{kDle, kNak}) return {Refusal, "NAK"};
    const std::string packet(protocol_.FirstPacket(reply)); // an acknowledgement alone is no answer
    if (packet.empty() || !protocol_.CheckReply(packet))
        return {begins_reply(reply) ? Damaged : Noise, std::move(text)};
    if (!is_own(packet)) return {Foreign, std::move(text)};
    const TelluraReply said = protocol_.ReadReply(packet);
    if (said.status == 0) return {Answer, std::move(text)};
    return {Refusal, "status " + hex_bytes(std::string(1, static_cast<char>(said.status)))};
}

GoodReply TelluraSeries::ask(const AskLine&) {
    using enum GoodReply::Kind;
    const std::string reply = protocol_.Exchange(good_.packet);
    if (reply == kTelluraBad) return {Nothing, TelluraProt::DisplayPacket(reply)};
    const Reaction said = reaction(reply);
    if (said.kind == Reaction::Kind::Answer) return {Answered, said.text};
    return {said.kind == Reaction::Kind::Refusal ? Refused : Damaged, said.text};
}

} // namespace

std::unique_ptr<ProtocolSeries> make_tellura_series(const BadRequestOptions& options, Link& link,
                                                    Dialogs& dialogs, std::string& refusal) {
    long address = 0;
    long other = 0;
    if (!number_in(options.address, 1, kMaxAddress, "The address", address, refusal) ||
        !number_in(options.other_address, 1, kMaxAddress, "The other address", other, refusal))
        return nullptr;
    if (other == address) {
        refusal = kSameAddress;
        return nullptr;
    }
    auto series = std::make_unique<TelluraSeries>(address, other, options.check, link, dialogs);
    if (series->choose(options.read)) return series;
    refusal = "The parameter address is four hexadecimal digits.";
    return nullptr;
}

} // namespace pelvan
