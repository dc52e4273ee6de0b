#include "simulator/line/wire.h"

#include <algorithm>

namespace pelvan::simulator {
namespace {

/// One is on its way while XOFF is, and one may follow it.
constexpr int kSpareCharacters = 2;

} // namespace

double PacedQueue::send(double ready_ms, std::string_view bytes) {
    free_ms_ = std::max(free_ms_, ready_ms);
    for (const char value : bytes) {
        free_ms_ += char_ms_;
        bytes_.push_back({free_ms_, value});
    }
    return free_ms_;
}

std::string PacedQueue::take(double now_ms) {
    std::string taken;
    while (!bytes_.empty() && bytes_.front().arrives_ms <= now_ms) {
        taken += bytes_.front().value;
        bytes_.pop_front();
    }
    return taken;
}

void Wire::set_char_ms(double char_ms) {
    char_ms_ = char_ms;
    to_host_.set_char_ms(char_ms);
}

void Wire::host_writes(std::string_view bytes, double now_ms) {
    if (bytes.empty()) return;
    if (station_->echoes)
        to_host_.send(std::max(host_free_ms_, now_ms), station_->faults.echo_of(bytes));
    host_free_ms_ = std::max(host_free_ms_, now_ms);
    // One by one where each of them may be the one that is too much.
    const std::size_t step = station_->xoff_after > 0 ? 1 : bytes.size();
    for (std::size_t at = 0; at < bytes.size(); at += step) {
        host_free_ms_ += static_cast<double>(step) * char_ms_;
        to_controller_.push_back({host_free_ms_, std::string(bytes.substr(at, step))});
    }
}

std::string Wire::arrived(double now_ms) {
    deliver(now_ms);
    return to_host_.take(now_ms);
}

void Wire::deliver(double now_ms) {
    while (!to_controller_.empty() && to_controller_.front().arrives_ms <= now_ms) {
        const Request request = std::move(to_controller_.front());
        to_controller_.pop_front();
        if (request.arrives_ms < busy_until_ms_ && !station_->queues) continue;
        if (station_->xoff_after > 0 && !takes(request)) continue;
        answer(request);
    }
}

/// Of a device that stops its host: whether it has room for a character.
bool Wire::takes(const Request& request) {
    if (request.arrives_ms < stopped_until_ms_) return --spare_ >= 0;
    line_length_ = request.bytes == "\r" ? 0 : line_length_ + 1;
    if (line_length_ != station_->xoff_after) return true;
    line_length_ = 0;
    stopped_until_ms_ = to_host_.send(request.arrives_ms, "\x13") + station_->xoff_ms;
    to_host_.send(stopped_until_ms_, "\x11");
    spare_ = kSpareCharacters;
    return true;
}

void Wire::answer(const Request& request) {
    const std::vector<Piece> pieces = responder_.receive(request.bytes, request.arrives_ms);
    double ready_ms = std::max(request.arrives_ms, busy_until_ms_) + station_->delay_ms;
    // Unless it queues, a controller that has not begun to answer is not listening: a host that
    // lost its patience and asked again gets the one late answer, not two in a row.
    if (!pieces.empty()) busy_until_ms_ = ready_ms + pieces[0].wait_ms;
    for (const Piece& piece : pieces) {
        ready_ms = to_host_.send(ready_ms + piece.wait_ms, piece.bytes);
    }
}

double Wire::next_ms() const {
    if (to_controller_.empty() && to_host_.empty()) return -1;
    if (to_controller_.empty()) return to_host_.next_ms();
    const double request_ms = to_controller_.front().arrives_ms;
    return to_host_.empty() ? request_ms : std::min(request_ms, to_host_.next_ms());
}

} // namespace pelvan::simulator
