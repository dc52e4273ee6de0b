// The Full end of a simulated controller: ANSI X3.28 poll and select round the command language. A
// poll with its own address selects it; it then acknowledges messages, hands over its response when
// the line is turned round, repeats it on NAK, and is released by LF EOT or another's poll.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/slaves/station.h"

namespace pelvan::simulator {

class FullSlave {
  public:
    explicit FullSlave(Station& station) : station_(station) {}

    /// Replies to bytes that are whole messages of this protocol from the first to the last;
    /// nothing (and nothing done) when they are not.
    [[nodiscard]] std::optional<std::vector<Reply>> hear(std::string_view bytes);

  private:
    [[nodiscard]] Reply obey(std::string_view message);
    [[nodiscard]] Reply poll(char asked);
    [[nodiscard]] Reply select(std::string_view command);
    [[nodiscard]] Reply turn_round();
    [[nodiscard]] Reply repeat();

    Station& station_;
    bool selected_ = false;
    std::string response_; // framed; empty when the last command has none
    bool handed_over_ = false;
};

} // namespace pelvan::simulator
