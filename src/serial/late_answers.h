// Which controllers may still answer an earlier request. An answer in most protocols does not say
// what it answers: one that comes after its time-out looks like that to the next request. Shared by
// all who use the lines; it knows no port, and the time is told to it.
#pragma once

#include <cstdint>
#include <map>
#include <set>

namespace pelvan {

/// Whom a request asks. Where a protocol's requests are told apart by their channel alone, the
/// address is 0.
struct Asked {
    std::int16_t channel = 0;
    int address = 0;
    auto operator<=>(const Asked&) const = default;
};

class LateAnswers {
  public:
    /// Nothing answers a request so long after it.
    static constexpr double kDoubtMs = 10000;

    // Moments are readings of the tick in milliseconds.

    /// A request to it was not answered in time, or not by its own answer.
    void doubt(const Asked& whom, double tick);
    /// Bytes stood on the line before a request to it: they were for it, or for whoever was asked
    /// before.
    void met_stray_bytes(const Asked& whom, double tick);
    /// It is proved that it answers no earlier request any more.
    void settle(const Asked& whom) {
        doubted_at_.erase(whom);
        unproved_.erase(whom);
    }
    /// A request to it has ended.
    void asked(const Asked& whom) { last_ = whom; }

    [[nodiscard]] bool doubtful(const Asked& whom, double tick);
    /// Whether it was doubtful and `settle` has not been said since, however long ago: something on
    /// the way may keep an answer back for good, and give it to the next request.
    [[nodiscard]] bool unproved(const Asked& whom) const { return unproved_.contains(whom); }
    [[nodiscard]] bool any_doubtful(double tick);

  private:
    void forget_old(double tick);

    std::map<Asked, double> doubted_at_;
    std::set<Asked> unproved_;
    Asked last_;
};

} // namespace pelvan
