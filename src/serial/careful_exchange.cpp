#include "serial/careful_exchange.h"

namespace pelvan {
namespace {

constexpr int kLastSilences = 8; // of 250 ms

} // namespace

CarefulReply exchange_carefully(Link& link, const CarefulRequest& request) {
    LateAnswers& late = link.channels().late_answers();
    const auto doubt = [&] { late.doubt(request.whom, link.countdowns().read_tick()); };
    CarefulReply result;
    for (bool again = false;; again = true) {
        const unsigned long writes = link.writes();
        result.reply = request.exchange();
        result.sent = again || link.writes() != writes;
        if (!result.sent) return result;
        if (request.watches_stray_bytes && link.stray_bytes() > 0) {
            result.after_strays = true;
            late.met_stray_bytes(request.whom, link.countdowns().read_tick());
        }
        late.asked(request.whom);
        const Fit fit = request.fit(result.reply);
        if (fit == Fit::Missing) doubt();
        if (fit != Fit::Answers) {
            // At once, and not before the next request: other tools use the line meanwhile.
            result.discarded = link.let_fall_silent().discarded;
            return result;
        }
        const bool doubtful = late.doubtful(request.whom, link.countdowns().read_tick()) ||
                              (request.in_step && late.unproved(request.whom));
        if (!doubtful) return result;
        const Silence silence = link.let_fall_silent();
        const bool silent = silence.discarded == 0;
        if (silent && (!request.in_step || request.in_step())) {
            if (!request.in_step) return result;
            late.settle(request.whom);
            // Who was busy with the earlier request has not heard this one: what came, in time and
            // alone, may be the late answer all the same. From here on there is none any more.
            if (!request.repeatable || again) return result;
            continue;
        }
        doubt();
        result.unclear = silent || again || !request.repeatable;
        if (result.unclear) return result;
    }
}

void await_late_answer(Link& link) {
    LateAnswers& late = link.channels().late_answers();
    for (int i = 0; i < kLastSilences && late.any_doubtful(link.countdowns().read_tick()); ++i)
        if (link.let_fall_silent().discarded > 0) return;
}

} // namespace pelvan
