#include "protocols/modbus/neighbours.h"

#include <algorithm>

#include "protocols/modbus/crc.h"

namespace pelvan {
namespace {

constexpr int kReadHolding = 3;
constexpr int kReadInput = 4;
constexpr int kMaxAddress = 247;
constexpr std::size_t kRequestSize = 8;
constexpr std::size_t kReplyHead = 3; // address, function, byte count
constexpr int kFailuresInARow = 2;
/// A controller that says nothing costs a time-out with each try: it gets few of them.
constexpr int kShorterBy = 3;

int byte_at(std::string_view frame, std::size_t at) {
    return static_cast<unsigned char>(frame[at]);
}

int word_at(std::string_view frame, std::size_t at) {
    return byte_at(frame, at) * 256 + byte_at(frame, at + 1);
}

void append_byte(std::string& frame, int byte) {
    frame += static_cast<char>(static_cast<unsigned char>(byte));
}

void append_word(std::string& frame, int word) {
    append_byte(frame, word / 256);
    append_byte(frame, word % 256);
}

std::string sealed(std::string frame) {
    const int crc = modbus_crc(frame);
    append_byte(frame, crc % 256);
    append_byte(frame, crc / 256);
    return frame;
}

} // namespace

bool ReadRange::contains(const ReadRange& other) const {
    return address == other.address && function == other.function && other.first >= first &&
           other.end() <= end();
}

std::optional<ReadRange> read_range(std::string_view request) {
    if (request.size() != kRequestSize) return std::nullopt;
    const ReadRange range{byte_at(request, 0), byte_at(request, 1), word_at(request, 2),
                          word_at(request, 4)};
    const bool reads = range.function == kReadHolding || range.function == kReadInput;
    if (!reads || range.address < 1 || range.address > kMaxAddress) return std::nullopt;
    return range;
}

std::string read_request(const ReadRange& range) {
    std::string frame;
    append_byte(frame, range.address);
    append_byte(frame, range.function);
    append_word(frame, range.first);
    append_word(frame, range.count);
    return sealed(std::move(frame));
}

std::string reply_to_one(const ReadRange& one, const ReadRange& range, std::string_view reply) {
    constexpr std::size_t kWord = 2;
    std::string frame(reply.substr(0, kReplyHead - 1));
    append_byte(frame, kWord);
    const auto index = static_cast<std::size_t>(one.first - range.first);
    frame += reply.substr(kReplyHead + kWord * index, kWord);
    return sealed(std::move(frame));
}

void NeighbourMemory::use_line(const std::string& line) {
    if (line == line_) return;
    line_ = line;
    controllers_.clear();
}

int NeighbourMemory::together(const ReadRange& range) const {
    constexpr int kRegisters = 65536;
    int count = std::min({range.count, kMostNeighbours, kRegisters - range.first});
    if (const auto found = controllers_.find({range.address, range.function});
        found != controllers_.end()) {
        const Controller& controller = found->second;
        if (controller.silent) return 1;
        count = std::min(count, controller.most);
        const auto next = controller.refused.lower_bound(range.first);
        if (next != controller.refused.end()) count = std::min(count, *next - range.first);
    }
    return std::max(count, 1);
}

void NeighbourMemory::failed(const ReadRange& range) {
    Controller& controller = known(range);
    if (++controller.failures < kFailuresInARow) return;
    controller.failures = 0;
    controller.most = std::max(1, range.count / kShorterBy);
}

} // namespace pelvan
