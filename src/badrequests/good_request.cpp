#include "badrequests/good_request.h"

#include <algorithm>
#include <cmath>

namespace pelvan {
namespace {

/// Answers to bad requests may take so many times as long as those to good ones.
constexpr double kTimes = 2;
constexpr double kWaitStepMs = 100;

} // namespace

GoodOutcome GoodRequest::send(int tries) {
    CountdownPool& ticks = link_.countdowns();
    GoodOutcome good;
    for (int i = 0; i < tries && !good.answered() && (i == 0 || talk_.goes_on()); ++i) {
        if (sent_) good.rest += talk_.pending();
        const double begun = ticks.read_tick();
        good.reply = series_.ask([this](const std::string& bytes, double timeout_ms) {
            return talk_.ask({bytes}, timeout_ms);
        });
        if (good.answered())
            slowest_ms_ = std::max(slowest_ms_, tick_span(begun, ticks.read_tick()));
        if (i == 0) good.first = good.reply;
        if (talk_.is_lost()) break;
        good.rest += good.reply.more + talk_.hear_out();
        // The first of all cannot have got the refusal of another.
        if (!sent_ && good.reply.kind == GoodReply::Kind::Refused) break;
    }
    sent_ = true;
    good.remark = link_.take_remark();
    return good;
}

double GoodRequest::needed_wait_ms() const {
    return std::min(std::ceil(kTimes * slowest_ms_ / kWaitStepMs) * kWaitStepMs,
                    kMaxBadRequestWaitMs);
}

Behind GoodRequest::shown_by(const GoodOutcome& outcome) const {
    Behind shown{series_.reaction(outcome.rest), Reaction::Kind::Answer, outcome.remark};
    switch (outcome.first.kind) {
    case GoodReply::Kind::Answered:
        break;
    case GoodReply::Kind::Refused:
        shown.first = Reaction::Kind::Refusal;
        break;
    case GoodReply::Kind::Damaged:
        shown.first = Reaction::Kind::Noise;
        break;
    case GoodReply::Kind::Nothing:
        shown.first = Reaction::Kind::Silence;
        break;
    }
    return shown;
}

} // namespace pelvan
