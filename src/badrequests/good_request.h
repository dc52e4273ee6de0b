// The good request of a series: sent again where a single reply was lost, timed, and with
// everything that came besides its answer, which is what bad requests behind it are judged by.
#pragma once

#include <string>

#include "badrequests/line_talk.h"
#include "badrequests/protocol_series.h"

namespace pelvan {

/// How the good request went.
struct GoodOutcome {
    GoodReply reply = {};
    GoodReply first = {};    // what its first sending got
    std::string rest = {};   // all that came besides the answer
    std::string remark = {}; // of the line

    [[nodiscard]] bool answered() const { return reply.kind == GoodReply::Kind::Answered; }
    [[nodiscard]] bool repeated() const { return first.kind != GoodReply::Kind::Answered; }
};

class GoodRequest {
  public:
    /// All is borrowed.
    GoodRequest(ProtocolSeries& series, LineTalk& talk, Link& link)
        : series_(series), talk_(talk), link_(link) {}

    /// Sends it so often at most. Blocks until the line was silent behind it.
    [[nodiscard]] GoodOutcome send(int tries);
    /// The longest that an answer has taken, in milliseconds.
    [[nodiscard]] double slowest_ms() const { return slowest_ms_; }
    /// How long an answer to a bad request must be waited for, by that; 10 seconds at most.
    [[nodiscard]] double needed_wait_ms() const;
    /// What an outcome shows of the bad request before it.
    [[nodiscard]] Behind shown_by(const GoodOutcome& outcome) const;

  private:
    ProtocolSeries& series_;
    LineTalk& talk_;
    Link& link_;
    double slowest_ms_ = 0;
    bool sent_ = false;
};

} // namespace pelvan
