// Reads of single registers whose values one request for several got before. Whoever reads one
// register after another says how many that follow one another are to come; they are asked for
// together, and each gets the reply that it would have got alone. What fails or is refused is left
// to single reads, with whatever comes of them.
#pragma once

#include <deque>
#include <functional>

#include "protocols/modbus/modbus.h"
#include "protocols/modbus/neighbours.h"
#include "serial/link.h"

namespace pelvan {

class ReadAhead {
  public:
    ReadAhead(Link& link, Modbus& modbus) : link_(link), memory_(modbus.state().neighbours) {}

    /// Sends a request, for whose reply `more_ms` are to be waited beyond the time of a short one;
    /// its own answer, undamaged (a refusal is one), or nothing.
    using Exchange = std::function<std::string(const std::string& request, float more_ms)>;

    /// Nothing is held or known to fail any more: the values may be others now.
    void begin();
    /// Asks for `count` registers from that of `single` on, or for as many of them as the
    /// controller and the line take, unless its reply is held. Blocks for the exchanges.
    void fetch(const std::string& single, int count, const Exchange& exchange);
    [[nodiscard]] bool holds(const std::string& single) const;
    /// The reply to a single read, once; nothing, and nothing is held any more, when it is not
    /// there.
    [[nodiscard]] std::optional<std::string> take(const std::string& single);
    /// A request was sent for itself: its own answer, undamaged, or nothing.
    void sent(const std::string& request, const std::string& reply);
    /// Whether so many bytes, which were not the answer to a single read, are more than the late
    /// answer to the read of several before it: the single one has then been answered, too, behind
    /// it, and may be sent again. True once.
    [[nodiscard]] bool came_late(std::size_t bytes);

  private:
    [[nodiscard]] float settle_ms() const;
    [[nodiscard]] bool is_left_to_single_reads(const ReadRange& one);
    [[nodiscard]] int count_for(const ReadRange& range) const;
    void take_in(const ReadRange& range, const std::string& reply);
    void learn(const ReadRange& one, const std::string& reply);
    void remember_unanswered(int count);

    /// A range that failed, while its registers are read one by one.
    struct Failed {
        ReadRange range{0, 0, 0, 0};
        bool refused = false;
        int reached = 0;     // the register that was looked at last
        int answered_to = 0; // the registers before it were answered singly
        bool judged = false; // why it failed
    };

    Link& link_;
    NeighbourMemory& memory_;
    ReadRange held_{0, 0, 0, 0};
    std::string reply_; // to the range that is held
    int next_ = 0;      // first register that was not taken
    Failed failed_;
    ReadRange last_{0, 0, 0, 0}; // asked for by the request before, if by a long one
    std::size_t late_bytes_ = 0; // of the answer that may still come
    /// A number of registers that was asked for in vain: an answer that comes at last must not fit
    /// another request.
    struct Unanswered {
        int count;
        double until_ms; // it may come
    };
    std::deque<Unanswered> unanswered_;
};

} // namespace pelvan
