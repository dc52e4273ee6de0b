// Whether one controller has answered from the beginning to the end, each request with its own
// answer.
#include <utility>

#include "registers/controller_access.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

std::string untold_sentence(std::size_t number) {
    return "It may be another controller than at the beginning: it answers, and does not tell its "
           "serial number (register " +
           std::to_string(number) + ").";
}

} // namespace

void ControllerAccess::lose_step(const std::string& why) {
    if (std::exchange(in_step_, false))
        errors_.list(why + ": from here on values may be those of other registers", first_unsure_,
                     std::string());
}

/// Something between here and the controller may give every request the answer to the one before,
/// at once and undamaged: the model is another one then. A reply that did not fit the request for
/// the model is read again, and would be the model itself; behind another register it is not. Two
/// models that are alike are their own answers: of another controller, as other serial numbers are.
/// One that tells its model and not its serial number any more may be another one.
void ControllerAccess::check_own_answers() {
    if (!is_numeric(identity_[0])) return;
    Identity now = identity_;
    std::array<std::string, 2> models{identity_[0], identity_[0]};
    const auto read = [this](std::size_t number, std::string& value) {
        const Reading reading = read_until_whole(kModelRegister + static_cast<float>(number));
        const bool told = reading.reply.is(Verdict::Accepted);
        if (told) value = reading.value;
        return told;
    };
    bool answers = read(0, models[0]);
    std::optional<std::size_t> untold;
    for (const std::size_t number : {1U, 2U})
        if (!read(number, now[number]) && is_numeric(identity_[number])) untold = number;
    answers = read(0, models[1]) || answers;
    proved_ = answers;
    if (!answers) return errors_.list_sentence(kUnproved);
    if (models[0] != models[1]) return lose_step("A request got the answer to the one before");
    now[0] = models[0];
    met_another_ = another_controller(now);
    if (met_another_.empty() && untold) met_another_ = untold_sentence(*untold);
    if (met_another_.empty()) return;
    in_step_ = false;
    errors_.list_sentence(met_another_);
}

/// What tells the controller from the one at the beginning; empty when nothing does.
std::string ControllerAccess::another_controller(const Identity& now) const {
    for (std::size_t i = 0; i < identity_.size(); ++i)
        if (is_numeric(identity_[i]) && now[i] != identity_[i])
            return "Another controller answers than at the beginning: register " +
                   std::to_string(i) + " was " + identity_[i] + " and is " + now[i] + " now.";
    return {};
}

bool ControllerAccess::in_step() {
    // The answer that is one behind is due within the time that was waited for the others.
    if (doubtful_.empty())
        static_cast<void>(fall_silent());
    else
        await_silence({});
    if (in_step_) check_own_answers();
    return in_step_;
}

Identity ControllerAccess::read_identity() {
    Identity identity;
    for (std::size_t i = 0; i < identity.size(); ++i) {
        const Reading reading = read_until_whole(kModelRegister + static_cast<float>(i));
        if (reading.reply.is(Verdict::Accepted)) identity[i] = reading.value;
    }
    return identity;
}

/// Somebody who put a cable back may have put it into another controller. One that is silent
/// passes, and is looked at again as soon as it answers.
bool ControllerAccess::is_same_controller() {
    unverified_ = false;
    untold_.reset();
    bool answers = false;
    Identity now = identity_;
    for (std::size_t i = 0; i < identity_.size(); ++i) {
        if (!is_numeric(identity_[i])) continue;
        const Reading reading = read_until_whole(kModelRegister + static_cast<float>(i));
        const bool told = reading.reply.is(Verdict::Accepted);
        if (!told && answers) untold_ = i;
        if (reading.reply.is(Verdict::NoReply)) {
            unverified_ = true;
            return true;
        }
        answers = true;
        if (!told) continue;
        now[i] = reading.value;
        const std::string other = another_controller(now);
        if (other.empty()) continue;
        listener_.tell(other);
        identity_ = {}; // told once
        return false;
    }
    return true;
}

bool ControllerAccess::ends_with_same_controller() {
    const bool same = is_same_controller();
    if (same && untold_)
        errors_.list_sentence(untold_sentence(*untold_));
    else if (unverified_)
        errors_.list_sentence("Not checked at the end, for want of an answer: whether all values "
                              "went into one controller. It may have got another address or other "
                              "line settings, or is gone.");
    return same;
}

} // namespace pelvan
