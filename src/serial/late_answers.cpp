#include "serial/late_answers.h"

#include "platform/tick.h"

namespace pelvan {

void LateAnswers::doubt(const Asked& whom, double tick) {
    doubted_at_[whom] = tick;
    unproved_.insert(whom);
}

void LateAnswers::met_stray_bytes(const Asked& whom, double tick) {
    doubt(whom, tick);
    doubt(last_, tick);
}

bool LateAnswers::doubtful(const Asked& whom, double tick) {
    forget_old(tick);
    return doubted_at_.contains(whom);
}

bool LateAnswers::any_doubtful(double tick) {
    forget_old(tick);
    return !doubted_at_.empty();
}

void LateAnswers::forget_old(double tick) {
    std::erase_if(doubted_at_,
                  [&](const auto& entry) { return tick_span(entry.second, tick) > kDoubtMs; });
}

} // namespace pelvan
