#include "registers/profile_access.h"

namespace pelvan {
namespace {

constexpr int kAttempts = 5;

float value_of(ProfileAction action) {
    return static_cast<float>(action);
}

} // namespace

std::optional<int> ProfileAccess::step_count() {
    const auto steps = run_.access.read_number(registers_.step_count);
    if (!steps) run_.cancel.give_up();
    return steps;
}

/// What is being selected is no more what it was.
void ProfileAccess::forget(float register_number) {
    if (register_number == registers_.number) profile_ = 0;
    if (register_number == registers_.number || register_number == registers_.step()) step_ = 0;
}

SelectionKeeper::Kept ProfileAccess::look_after(float register_number) {
    if (profile_ == 0 || !registers_.contains(register_number)) return Kept::NotNeeded;
    const auto shows = [this](float selecting, float value) {
        return value == 0 ? std::optional(true) : run_.access.holds(selecting, value);
    };
    const auto profile = shows(registers_.number, profile_);
    const auto step = profile ? shows(registers_.step(), step_) : std::nullopt;
    if (!step) return Kept::Unsure; // silent still
    return (*profile && *step) || select_again() ? Kept::Yes : Kept::Unsure;
}

bool ProfileAccess::select_again() {
    // Once: it is asked again before the next request if that was not enough.
    const auto select = [this](float selecting, float value) {
        return run_.access.write_once(selecting, value).is(Verdict::Accepted);
    };
    return select(registers_.number, profile_) && (step_ == 0 || select(registers_.step(), step_));
}

Reply ProfileAccess::try_select(float register_number, float value) {
    forget(register_number);
    Reply reply;
    for (int i = 0; i < kAttempts; ++i) {
        reply = run_.access.write_once(register_number, value);
        if (reply.is(Verdict::Accepted) || reply.is(Verdict::Refused)) break;
    }
    if (!reply.is(Verdict::Accepted)) return reply;
    if (register_number == registers_.number) profile_ = value;
    if (register_number == registers_.step()) step_ = value;
    return reply;
}

Reply ProfileAccess::select_register(float register_number, float value) {
    Reply reply = try_select(register_number, value);
    while (reply.is(Verdict::NoReply) && run_.access.ask_retry())
        reply = try_select(register_number, value);
    if (reply.is(Verdict::NoReply)) run_.cancel.give_up();
    return reply;
}

Reply ProfileAccess::select_recorded(float register_number, float value) {
    Reply reply = select_register(register_number, value);
    if (reply.is(Verdict::Refused)) run_.errors.record(reply.text, register_number, value);
    if (reply.is(Verdict::Damaged)) run_.errors.list(reply.text, register_number, value);
    return reply;
}

ProfilePresence ProfileAccess::Profile_Exists(float number) {
    const Reply reply = select_register(registers_.number, number);
    if (reply.is(Verdict::NoReply)) return ProfilePresence::GivenUp;
    // Which profile is selected now is not known: no answer about another one is given.
    if (reply.is(Verdict::Damaged)) run_.errors.list(reply.text, registers_.number, number);
    if (!reply.is(Verdict::Accepted)) return ProfilePresence::NotSelected;
    const auto steps = step_count();
    if (!steps) return ProfilePresence::GivenUp;
    return *steps > 0 ? ProfilePresence::Present : ProfilePresence::Absent;
}

Reply ProfileAccess::act(ProfileAction action) {
    const auto steps = step_count();
    if (!steps) return {};
    const bool done = (action == ProfileAction::Create && *steps > 0) ||
                      (action == ProfileAction::Erase && *steps == 0);
    return done ? Reply{Verdict::Accepted, {}} : act_once(action, *steps);
}

/// An action must happen once: when its reply is lost, the number of steps tells whether it did,
/// and only an action that did not happen is repeated.
Reply ProfileAccess::act_once(ProfileAction action, int steps_before) {
    Reply reply;
    for (int i = 0; i < kAttempts; ++i) {
        reply = run_.access.write_once(registers_.action, value_of(action));
        if (reply.is(Verdict::Accepted)) return reply;
        const auto steps = step_count();
        if (!steps) return {};
        if (*steps != steps_before) return {Verdict::Accepted, {}};
        if (reply.is(Verdict::Refused)) break;
    }
    return reply;
}

Reply ProfileAccess::act_recorded(ProfileAction action) {
    for (;;) {
        Reply reply = act(action);
        if (reply.is(Verdict::Accepted)) return reply;
        if (!reply.is(Verdict::NoReply)) {
            record_refusal(action, reply);
            return reply;
        }
        if (run_.canceled() || !run_.access.ask_retry()) return reply;
    }
}

void ProfileAccess::record_refusal(ProfileAction action, const Reply& reply) {
    run_.errors.record(reply.text, registers_.action, value_of(action));
}

} // namespace pelvan
