// Registers that follow one another, read with one request instead of one each: the frames, and
// what is remembered of controllers that refuse such reads. Who asks, and when, is not known here.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace pelvan {

/// The most registers that a request may ask for.
inline constexpr int kMostNeighbours = 125;

/// Registers that one request of function 3 or 4 asks for.
struct ReadRange {
    int address = 0;
    int function = 0;
    int first = 0;
    int count = 1;

    [[nodiscard]] int end() const { return first + count; }
    /// Whether the other asks the same controller, in the same way, for registers of this one.
    [[nodiscard]] bool contains(const ReadRange& other) const;
};

/// What a request asks for; nothing when it is no read of registers of one controller.
[[nodiscard]] std::optional<ReadRange> read_range(std::string_view request);
[[nodiscard]] std::string read_request(const ReadRange& range);
/// The reply that a request for this one register would have got, cut out of the reply to a range
/// that contains it.
[[nodiscard]] std::string reply_to_one(const ReadRange& one, const ReadRange& range,
                                       std::string_view reply);

/// What is known of the controllers for as long as the program runs. It only ever makes requests
/// shorter: being wrong costs time and nothing else.
class NeighbourMemory {
  public:
    /// Forgets everything when the controllers are reached by another line than before.
    void use_line(const std::string& line);

    /// How many of the range's registers, from its first on, to ask for with one request; at least
    /// 1.
    [[nodiscard]] int together(const ReadRange& range) const;

    /// What came of a read of several registers: their values.
    void answered(const ReadRange& range) { known(range).failures = 0; }
    /// Nothing that could be used, although the controller answers single reads. Twice in a row
    /// means that it does not know reads so long.
    void failed(const ReadRange& range);
    /// Refused for their number.
    void too_many(const ReadRange& range) { known(range).most = std::max(1, range.count / 2); }

    /// What came of a read of a single register: no use asking for more before it is answered.
    void heard(const ReadRange& one, bool answered) { known(one).silent = !answered; }
    /// Refused alone: it makes every request refused that contains it.
    void refused(const ReadRange& one) { known(one).refused.insert(one.first); }

  private:
    struct Controller {
        int most = kMostNeighbours;
        int failures = 0; // in a row
        bool silent = false;
        std::set<int> refused;
    };
    using Key = std::pair<int, int>; // address and function
    [[nodiscard]] Controller& known(const ReadRange& range) {
        return controllers_[{range.address, range.function}];
    }

    std::string line_;
    std::map<Key, Controller> controllers_;
};

} // namespace pelvan
