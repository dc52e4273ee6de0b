#include "scan/scan_probe.h"

#include <algorithm>
#include <array>

#include "protocols/full/full_protocol.h"
#include "protocols/modbus/crc.h"
#include "protocols/modbus/modbus.h"
#include "protocols/modbus/whole_reply.h"
#include "protocols/tellura_ab/tellura_prot.h"
#include "text/bytes.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr char kXon = 17;
constexpr char kXoff = 19;

unsigned byte_at(std::string_view bytes, std::size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

/// Function 3, register 0, which holds the model; an exception is an answer, too.
class ModbusProbe : public ScanProbe {
  public:
    std::string request(int address) override { return request_to(address); }

    std::optional<ProbeAnswer> answer(int address, std::string_view received) const override {
        const std::string asked = request_to(address);
        if (!is_whole_reply(asked, received) || !can_answer(asked, received)) return {};
        if (is_exception(received)) {
            const int code = static_cast<int>(byte_at(received, kFirstData - 1));
            return ProbeAnswer{"exception " + std::to_string(code),
                               {},
                               exception_text(code),
                               code == kNoPath || code == kNobodyBehind,
                               code == kAcknowledged || code == kBusy};
        }
        const unsigned word =
            byte_at(received, kFirstData) * 256 + byte_at(received, kFirstData + 1);
        const std::string value = std::to_string(static_cast<std::int16_t>(word));
        return ProbeAnswer{"value", value, "register 0 holds " + value};
    }

    std::vector<Sender> senders(std::string_view received) const override {
        std::vector<Sender> found;
        for (std::size_t i = 0; i + kException <= received.size(); ++i)
            for (const std::size_t length : {kException, kValue}) {
                const auto address = static_cast<int>(byte_at(received, i));
                if (auto said = answer(address, received.substr(i, length)))
                    found.push_back({address, *said});
            }
        return found;
    }

  private:
    static constexpr std::size_t kFirstData = 3;
    static constexpr std::size_t kException = 5; // bytes of such a reply
    static constexpr std::size_t kValue = 7;
    // Codes of exceptions.
    static constexpr int kAcknowledged = 5;
    static constexpr int kBusy = 6;
    static constexpr int kNoPath = 10;
    static constexpr int kNobodyBehind = 11;

    /// The session's own CRC stays that of its last frame.
    static std::string request_to(int address) {
        ModbusState state;
        std::array<float, 3> values{0, 1, kValueListEnd};
        return Modbus(state).ModbusBuildRequest(3, static_cast<std::int16_t>(address), 0, values);
    }
};

/// The poll. Whoever has answered is selected until the conversation is ended.
class FullProbe : public ScanProbe {
  public:
    std::string request(int address) override {
        return full_poll_bytes(static_cast<std::int16_t>(address));
    }
    std::optional<ProbeAnswer> answer(int address, std::string_view received) const override {
        if (received != full_poll_answer(static_cast<std::int16_t>(address))) return {};
        return ProbeAnswer{"poll", {}, "answers its poll"};
    }
    std::vector<Sender> senders(std::string_view received) const override {
        std::vector<Sender> found;
        for (std::int16_t address = 0; address <= kFullMaxAddress; ++address) {
            const std::string said = full_poll_answer(address);
            if (received.find(said) != received.npos)
                found.push_back({address, *answer(address, said)});
        }
        return found;
    }
    bool checked() const override { return false; }
    std::string closing() const override { return kFullEnd; }
};

/// Controllers of this protocol have no address. What they say is plausible when it is a number, or
/// the refusal of the command.
class XonProbe : public ScanProbe {
  public:
    std::string request(int) override { return "? C1\r"; }
    std::optional<ProbeAnswer> answer(int, std::string_view received) const override {
        std::string text;
        for (const char c : received)
            if (c != kXon && c != kXoff) text += c;
        if (text.empty() || text.size() > kLongest) return {};
        if (text.back() != '\r' && text.back() != '\n') return {};
        while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
            text.pop_back();
        if (is_numeric(text)) return ProbeAnswer{"number", {}, "C1 is " + trim(text)};
        if (!text.starts_with("ERROR") || ascii_in_brackets(text) != text) return {};
        // Noise in the request is refused, too.
        return ProbeAnswer{"error", {}, "refuses \"? C1\": " + text, false, true};
    }
    std::vector<Sender> senders(std::string_view received) const override {
        const auto said = answer(0, received);
        return said ? std::vector<Sender>{{0, *said}} : std::vector<Sender>();
    }

    bool checked() const override { return false; }

  private:
    static constexpr std::size_t kLongest = 40;
};

/// A read of the parameter that holds the model.
class TelluraProbe : public ScanProbe {
  public:
    TelluraProbe(TelluraCheck check, Link& link, Dialogs& dialogs) : protocol_(link, dialogs) {
        protocol_.set_check(check);
    }
    std::string request(int address) override {
        auto device = static_cast<std::uint8_t>(address);
        const auto packet = protocol_.BuildRequest(device, "0000", {}, false, kModelBytes);
        return packet ? packet->packet : std::string();
    }
    std::optional<ProbeAnswer> answer(int address, std::string_view received) const override {
        const std::string_view packet = protocol_.FirstPacket(received);
        if (!protocol_.CheckReply(packet) || packet.end() != received.end()) return {};
        const TelluraReply reply = protocol_.ReadReply(packet);
        return reply.address == address ? std::optional(meaning(reply)) : std::nullopt;
    }
    std::vector<Sender> senders(std::string_view received) const override {
        std::vector<Sender> found;
        for (;;) {
            const std::string_view packet = protocol_.FirstPacket(received);
            if (packet.empty()) return found;
            if (protocol_.CheckReply(packet)) {
                const TelluraReply reply = protocol_.ReadReply(packet);
                found.push_back({reply.address, meaning(reply)});
            }
            received.remove_prefix(
                static_cast<std::size_t>(packet.data() + packet.size() - received.data()));
        }
    }

  private:
    static constexpr int kModelBytes = 2;

    static ProbeAnswer meaning(const TelluraReply& reply) {
        if (reply.status != 0) {
            const std::string status = "status " + hex_text(reply.status, 2);
            return ProbeAnswer{status, {}, "refuses parameter 0000 with " + status};
        }
        if (reply.data.size() != kModelBytes) return ProbeAnswer{"data", {}, "answers a read"};
        const unsigned word = byte_at(reply.data, 0) * 256 + byte_at(reply.data, 1);
        const std::string value = std::to_string(static_cast<std::int16_t>(word));
        return ProbeAnswer{"value", value, "parameter 0000 holds " + value};
    }

    TelluraProt protocol_;
};

} // namespace

bool are_of_two(const ProbeAnswer& one, const ProbeAnswer& other) {
    if (one.absent || other.absent || one.passing || other.passing) return false;
    return one.kind != other.kind || one.model != other.model;
}

std::unique_ptr<ScanProbe> make_probe(const ScanStep& step, Link& link, Dialogs& dialogs) {
    switch (step.protocol) {
    case ScanProtocol::Full:
        return std::make_unique<FullProbe>();
    case ScanProtocol::Xon:
        return std::make_unique<XonProbe>();
    case ScanProtocol::Tellura:
        return std::make_unique<TelluraProbe>(step.crc ? TelluraCheck::Crc : TelluraCheck::Bcc,
                                              link, dialogs);
    case ScanProtocol::Modbus:
        break;
    }
    return std::make_unique<ModbusProbe>();
}

} // namespace pelvan
