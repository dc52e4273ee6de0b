// The Tellura/AB end of a simulated controller: DLE-framed packets with a one-byte BCC or a CRC. A
// valid request is acknowledged with DLE ACK, the reply packet follows at once with the request's
// kind of check; a damaged one is answered with DLE NAK. DLE ENQ repeats the acknowledgement,
// DLE NAK the reply packet.
//
// Reply: DLE STX, destination 0, source address + 7, command + 64, status, the request's
// transaction number, data, DLE ETX, check. The parameter address is a register number, two data
// bytes a register, high byte first.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/slaves/station.h"

namespace pelvan::simulator {

class TelluraSlave {
  public:
    explicit TelluraSlave(Station& station) : station_(station) {}

    /// Replies to bytes that are one packet or link control pair; nothing (and nothing done) when
    /// they are not, or not yet.
    [[nodiscard]] std::optional<std::vector<Reply>> hear(std::string_view bytes);

  private:
    enum class Check { Bcc, Crc };

    [[nodiscard]] std::vector<Reply> obey(const std::string& body, Check check);
    [[nodiscard]] unsigned execute(const std::string& body, std::string& data);
    [[nodiscard]] unsigned read(const std::string& body, std::string& data);
    [[nodiscard]] unsigned write(const std::string& body);
    [[nodiscard]] static std::string packet(const std::string& body, Check check);
    [[nodiscard]] static std::string check_of(const std::string& body, Check check);

    Station& station_;
    std::vector<Reply> link_answer_; // repeated on DLE ENQ
    std::vector<Reply> last_packet_; // repeated on DLE NAK
};

} // namespace pelvan::simulator
