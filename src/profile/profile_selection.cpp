#include "profile/profile_selection.h"

#include <utility>

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr int kAttempts = 5;

float number_of(const ProfileField& field) {
    return static_cast<float>(field.number);
}

/// The code of a reply "address function code crc".
std::string exception_code(const Reply& reply) {
    const auto items = split(reply.text, ' ');
    return items.size() > 2 ? items[2] : std::string("unknown");
}

/// What a register is called, without what the file explains in parentheses.
std::string short_name(const ProfileField& field) {
    return field.name.substr(0, field.name.find(" ("));
}

std::string words(ProfileAction action) {
    switch (action) {
    case ProfileAction::Create:
        return "creating it";
    case ProfileAction::Erase:
        return "erasing it";
    case ProfileAction::InsertStep:
        return "inserting a step";
    }
    return {};
}

} // namespace

std::string doubt_at_end(ControllerAccess& access) {
    if (access.in_step()) return access.proved() ? "" : ControllerAccess::kUnproved;
    if (!access.met_another().empty()) return access.met_another();
    return "Answers were not those to their own requests, so that values may be those of other "
           "registers: do it again.";
}

ProfileSelection::ProfileSelection(TransferRun& run, const ProfileFormat& format)
    : run_(run), format_(format),
      access_(run, {number_of(format.profile_number), number_of(format.action),
                    number_of(format.step_count)}) {}

/// What a reply other than the right one means.
std::string ProfileSelection::sentence(const Reply& reply, const std::string& what,
                                       const ProfileField& field) const {
    const std::string place = profile_ > 0 ? profile_place(profile_, step_) + ": " : "";
    const std::string about = what + " (register " + std::to_string(field.number) + ")";
    switch (reply.verdict) {
    case Verdict::Refused:
        if (is_refusal(reply.text)) return place + about + " cannot be sent: " + reply.text;
        return place + (place.empty() ? "The" : "the") + " controller refused " + about +
               " with exception " + exception_code(reply) + ".";
    case Verdict::NoReply:
        return place + (place.empty() ? "No" : "no") + " reply to " + about + ".";
    case Verdict::Damaged:
    case Verdict::Accepted:
        break;
    }
    return place + (place.empty() ? "Only" : "only") + " damaged replies to " + about + ".";
}

std::string ProfileSelection::write_sentence(const Reply& reply, const ProfileField& field,
                                             int raw) const {
    return sentence(reply, short_name(field) + " = " + ProfileFormat::unit_text(field, raw), field);
}

bool ProfileSelection::ask_retry() {
    if (run_.access.ask_retry()) return true;
    run_.cancel.give_up();
    return false;
}

NumberRead ProfileSelection::read(const ProfileField& field) {
    const Reading reading = run_.access.read_whole(number_of(field));
    run_.listener.let_events_run();
    if (reading.reply.is(Verdict::NoReply)) run_.cancel.give_up();
    if (!reading.reply.is(Verdict::Accepted))
        return {{}, sentence(reading.reply, "the read of " + short_name(field), field)};
    return {static_cast<int>(leading_number(reading.value)), {}};
}

NumberRead ProfileSelection::highest() {
    profile_ = 0; // it is of the controller, not of the profile selected last
    return read(format_.highest_profile);
}

NumberRead ProfileSelection::running_profile() {
    const ProfileField* state_field = format_.run_field(RegisterRole::State);
    if (!state_field) return {0, {}};
    profile_ = 0;
    NumberRead state = read(*state_field);
    if (!state.value) return state;
    const auto known = format_.state(*state.value);
    if (known == RunState::Off || known == RunState::Ended) return {0, {}};
    const ProfileField* profile_field = format_.run_field(RegisterRole::Profile);
    if (profile_field) return read(*profile_field);
    return {{},
            "One is " + (known ? std::string(run_word(*known)) : "in an unknown state") +
                ", and the .pds file does not tell how to read which."};
}

std::string ProfileSelection::select_register(const ProfileField& field, int number) {
    const Reply reply = access_.select_register(number_of(field), static_cast<float>(number));
    run_.listener.let_events_run();
    return reply.is(Verdict::Accepted) ? std::string() : write_sentence(reply, field, number);
}

std::string ProfileSelection::select(int profile) {
    profile_ = profile;
    step_ = 0;
    return select_register(format_.profile_number, profile);
}

std::string ProfileSelection::select_step(int step) {
    step_ = step;
    return select_register(format_.step_number, step);
}

NumberRead ProfileSelection::step_count() {
    return read(format_.step_count);
}

std::string ProfileSelection::confirm() {
    const NumberRead selected = read(format_.profile_number);
    if (!selected.value) return selected.problem;
    if (*selected.value == profile_) return {};
    return profile_place(profile_) + " is not selected any more: the controller shows profile " +
           std::to_string(*selected.value) + ".";
}

std::string ProfileSelection::write(const ProfileField& field, int raw) {
    do {
        Reply reply;
        for (int i = 0; i < kAttempts; ++i) {
            reply = run_.access.write_once(number_of(field), static_cast<float>(raw));
            if (reply.is(Verdict::Accepted) || reply.is(Verdict::Refused)) break;
        }
        run_.listener.let_events_run();
        if (reply.is(Verdict::Accepted)) return {};
        if (!reply.is(Verdict::NoReply)) return write_sentence(reply, field, raw);
    } while (ask_retry());
    return write_sentence({}, field, raw);
}

std::string ProfileSelection::act(ProfileAction action, int profile, int steps_after) {
    const auto value = static_cast<float>(action);
    do {
        Reply reply;
        for (int i = 0; i < kAttempts; ++i) {
            if (std::string problem = select(profile); !problem.empty()) return problem;
            // What is erased is gone: it must be the profile that is meant.
            if (std::string problem = confirm(); !problem.empty()) return problem;
            reply = run_.access.write_once(number_of(format_.action), value);
            run_.listener.let_events_run();
            if (reply.is(Verdict::Accepted)) return {};
            const NumberRead steps = step_count();
            if (!steps.value) return steps.problem;
            if (*steps.value == steps_after) return {};
            if (reply.is(Verdict::Refused)) break;
        }
        if (!reply.is(Verdict::NoReply)) return sentence(reply, words(action), format_.action);
    } while (ask_retry());
    return sentence({}, words(action), format_.action);
}

std::string ProfileSelection::create(int profile) {
    return act(ProfileAction::Create, profile, 1);
}

std::string ProfileSelection::erase(int profile) {
    return act(ProfileAction::Erase, profile, 0);
}

/// One step more than before; a sentence when it cannot be had, or is not there.
std::string ProfileSelection::insert_step(int steps_before) {
    const auto value = static_cast<float>(ProfileAction::InsertStep);
    do {
        Reply reply;
        for (int i = 0; i < kAttempts; ++i) {
            reply = run_.access.write_once(number_of(format_.action), value);
            run_.listener.let_events_run();
            if (reply.is(Verdict::Accepted)) return {};
            const NumberRead steps = step_count();
            if (!steps.value) return steps.problem;
            if (*steps.value == steps_before + 1) return {};
            if (reply.is(Verdict::Refused)) break;
        }
        if (!reply.is(Verdict::NoReply))
            return sentence(reply, words(ProfileAction::InsertStep), format_.action);
    } while (ask_retry());
    return sentence({}, words(ProfileAction::InsertStep), format_.action);
}

std::string ProfileSelection::insert_steps(int steps) {
    NumberRead count = step_count();
    if (!count.value) return count.problem;
    for (int have = *count.value; have < steps && !run_.canceled(); ++have)
        if (std::string problem = insert_step(have); !problem.empty()) return problem;
    count = step_count();
    if (!count.value) return count.problem;
    if (*count.value == steps) return {};
    return profile_place(profile_) + " has " + std::to_string(*count.value) + " steps instead of " +
           std::to_string(steps) + ".";
}

} // namespace pelvan
