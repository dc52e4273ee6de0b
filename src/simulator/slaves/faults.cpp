#include "simulator/slaves/faults.h"

#include "simulator/slaves/checks.h"

namespace pelvan::simulator {
namespace {
constexpr char kNak = 21;
constexpr char kXon = 17;
constexpr char kXoff = 19;
} // namespace

// The standard's distributions differ from one library to the next; the generator itself does not.
bool FaultSource::happens(double rate) {
    return static_cast<double>(random_()) / 4294967296.0 < rate;
}

unsigned FaultSource::below(unsigned limit) {
    return static_cast<unsigned>(random_() % limit);
}

void FaultSource::flip_bit(std::string& bytes) {
    const std::size_t index = below(static_cast<unsigned>(bytes.size()));
    bytes[index] = as_char(byte_at(bytes, index) ^ 1U << below(8));
}

void FaultSource::corrupt_ends(const Reply& reply, std::string& bytes) {
    const bool ack = reply.kind == ReplyKind::FullAck || reply.kind == ReplyKind::TelluraAck;
    if (happens(plan_.lost_ack) && ack) bytes.clear();
    if (happens(plan_.nak) && ack && !bytes.empty()) bytes.back() = kNak;
    if (happens(plan_.no_etx) && reply.kind == ReplyKind::FullData) bytes.pop_back();
    const bool checked = reply.kind == ReplyKind::Modbus || reply.kind == ReplyKind::Tellura;
    if (happens(plan_.crc) && checked)
        bytes.back() = as_char(byte_at(bytes, bytes.size() - 1) ^ 0x5AU);
}

std::vector<Piece> FaultSource::apply(const Reply& reply) {
    if (reply.bytes.empty()) return {};
    ++replies_;
    if (plan_.only != 0 && plan_.only != replies_) return {{0, reply.bytes}};
    std::string bytes = reply.bytes;
    if (happens(plan_.other) && !reply.from_another.empty()) bytes = reply.from_another;
    corrupt_ends(reply, bytes);
    const bool lost = happens(plan_.lost);
    if (lost || bytes.empty()) return {};
    if (happens(plan_.flip)) flip_bit(bytes);
    if (happens(plan_.noise)) {
        for (unsigned n = below(4) + 1; n > 0; --n)
            bytes.insert(0, 1, as_char(below(256)));
    }
    std::vector<Piece> pieces{{happens(plan_.late) ? plan_.late_ms : 0.0, bytes}};
    if (happens(plan_.gap) && bytes.size() > 1) {
        const std::size_t half = bytes.size() / 2;
        pieces[0].bytes = bytes.substr(0, half);
        pieces.push_back({plan_.gap_ms, bytes.substr(half)});
    }
    if (happens(plan_.xoff) && reply.kind == ReplyKind::Text) {
        pieces.insert(pieces.begin(), {0, std::string(1, kXoff)});
        pieces[1].wait_ms += plan_.xoff_ms;
        pieces[1].bytes.insert(0, 1, kXon);
    }
    return pieces;
}

std::string FaultSource::echo_of(std::string_view bytes) {
    std::string echo(bytes);
    if (echo.empty()) return echo;
    if (happens(plan_.echo_flip)) flip_bit(echo);
    if (happens(plan_.echo_cut)) echo.pop_back();
    return echo;
}

} // namespace pelvan::simulator
