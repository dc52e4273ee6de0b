#include "simulator/line/wire.h"

#include <algorithm>

namespace pelvan::simulator {

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
    host_free_ms_ = std::max(host_free_ms_, now_ms) + static_cast<double>(bytes.size()) * char_ms_;
    to_controller_.push_back({host_free_ms_, std::string(bytes)});
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
        answer(request);
    }
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
