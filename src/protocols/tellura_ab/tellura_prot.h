// The Tellura/AB protocol: binary packets on a full-duplex line, framed by DLE pairs and closed by
// a one-byte BCC or a two-byte CRC. `TelluraProt` builds, sends, checks and displays them. A packet
// is a text in which each character is one byte; its body is what stands between the opening DLE
// STX and the closing DLE ETX, with every DLE in it doubled.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/dialogs.h"
#include "serial/link.h"

namespace pelvan {

inline constexpr std::int16_t kTelluraChannel = 3;
inline constexpr int kTelluraMaxAddress = 32;

/// The choices of `OptErrorChecking`.
enum class TelluraCheck { Bcc, Crc };

/// What an exchange without an acknowledged, complete reply results in.
inline constexpr char kTelluraBad[] = "BAD";

struct TelluraPacket {
    std::string packet;
    std::string body;
};

/// What a valid reply says, doubled DLEs taken out.
struct TelluraReply {
    int address = 0;     // whose reply it is; negative when none can have it
    unsigned status = 0; // 0: done as asked
    std::string data;
};

class TelluraProt {
  public:
    TelluraProt(Link& link, Dialogs& dialogs) : link_(link), dialogs_(dialogs) {}

    /// The check that packets are built with and replies are held against.
    void set_check(TelluraCheck check) { check_ = check; }
    [[nodiscard]] TelluraCheck check() const { return check_; }

    /// A request packet, or nothing after a message that says which argument is wrong.
    ///
    /// `device_address` 1..32 becomes the destination byte in place (the address plus 7).
    /// `parameter_address` is four hexadecimal digits; `data` (for a write) pairs of them;
    /// `byte_count` (for a read) 1..255.
    [[nodiscard]] std::optional<TelluraPacket> BuildRequest(std::uint8_t& device_address,
                                                            const std::string& parameter_address,
                                                            const std::string& data, bool write,
                                                            int byte_count);

    /// The BCC of a body; 256 when its bytes add up to 0. The byte on the wire is the low byte.
    [[nodiscard]] static std::int16_t Bcc(std::string_view body);
    /// The CRC of a body and the frame's ETX: two characters, low byte first.
    [[nodiscard]] static std::string Crc(std::string_view body);

    /// Sends the packet until it is acknowledged, collects the reply packet, and returns it or
    /// "BAD".
    ///
    /// Three sends of 200 ms at most; then four waits of 2000 ms at most for a reply that does not
    /// come whole with the acknowledgement. Nothing else is sent.
    [[nodiscard]] std::string Exchange(const std::string& packet);

    /// Whether the bytes end with a link reply (DLE and ACK, NAK or ENQ) or with a packet whose
    /// check fits it: nothing more belongs to them.
    [[nodiscard]] bool IsWhole(std::string_view received) const;

    /// The first whole packet in the bytes, its check included, whether it fits or not; empty while
    /// there is none. What stands before it (an acknowledgement, noise) is skipped.
    [[nodiscard]] std::string_view FirstPacket(std::string_view bytes) const;

    /// Whether a reply is long enough and its check fits its body.
    [[nodiscard]] bool CheckReply(std::string_view reply) const;

    /// "10 02 08 ..."; words for "BAD".
    [[nodiscard]] static std::string DisplayPacket(std::string_view packet);

    /// Takes a reply that `CheckReply` passed apart.
    [[nodiscard]] TelluraReply ReadReply(std::string_view reply) const;

  private:
    [[nodiscard]] std::size_t check_size() const { return check_ == TelluraCheck::Bcc ? 1 : 2; }
    [[nodiscard]] std::string check_of(std::string_view body) const;
    [[nodiscard]] std::string_view body_of(std::string_view reply) const;
    [[nodiscard]] std::size_t find_pair(std::string_view bytes, char partner) const;
    [[nodiscard]] bool ends_packet(std::string_view bytes) const;
    [[nodiscard]] std::optional<std::string> acknowledged(const std::string& packet);

    Link& link_;
    Dialogs& dialogs_;
    TelluraCheck check_ = TelluraCheck::Bcc;
};

} // namespace pelvan
