// Receives what a host sends and answers in the host's protocol: all are spoken on the same line
// and told apart by their bytes. Bytes that are no message of any protocol are forgotten when the
// line has been quiet for a while. When bytes travel is the wire's business, not this class's.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "simulator/slaves/full_slave.h"
#include "simulator/slaves/station.h"
#include "simulator/slaves/tellura_slave.h"

namespace pelvan::simulator {

class Responder {
  public:
    explicit Responder(Station& station) : station_(station), full_(station), tellura_(station) {}

    /// Takes bytes that arrived at `now_ms` and returns what the controller sends in answer, its
    /// faults in it.
    [[nodiscard]] std::vector<Piece> receive(std::string_view bytes, double now_ms);

  private:
    [[nodiscard]] std::vector<Reply> answer();

    Station& station_;
    FullSlave full_;
    TelluraSlave tellura_;
    std::string heard_;
    double last_ms_ = 0;
};

} // namespace pelvan::simulator
