#include "badrequests/bad_request.h"

namespace pelvan {
namespace {

constexpr char kNoReply[] = "something came back that is no reply";
constexpr char kNoise[] =
    "bytes came that have nothing of a reply: from somebody else, or a disturbance";

bool is_allowed(Expected expected, Reaction::Kind kind) {
    switch (kind) {
    case Reaction::Kind::Silence:
        return expected != Expected::Refusal;
    case Reaction::Kind::Refusal:
        return expected != Expected::Silence;
    default:
        return false;
    }
}

const char* reason_of(const BadRequest& request, Reaction::Kind kind) {
    switch (kind) {
    case Reaction::Kind::Silence:
        return "said nothing where it should refuse";
    case Reaction::Kind::Refusal:
        return request.foreign ? "answered for another" : "refused where it should say nothing";
    case Reaction::Kind::Answer:
        return request.foreign ? "answered for another" : "answered as if it were good";
    case Reaction::Kind::Foreign:
        return request.foreign ? "answered with the other address, or a controller has it"
                               : "another address answered";
    case Reaction::Kind::Noise:
        return kNoise;
    case Reaction::Kind::Damaged:
        break;
    }
    return kNoReply;
}

void set(Trial& trial, ReactionVerdict verdict, TrialCause cause, std::string reason) {
    trial.verdict = verdict;
    trial.cause = cause;
    trial.reason = std::move(reason);
}

} // namespace

std::string BadRequestLine::verdict_text() const {
    const std::string word = word_of(verdict);
    return reason.empty() ? word : word + ": " + reason;
}

const char* word_of(ReactionVerdict verdict) {
    switch (verdict) {
    case ReactionVerdict::Passed:
        return "passed";
    case ReactionVerdict::Failed:
        return "failed";
    case ReactionVerdict::Unclear:
        return "unclear";
    case ReactionVerdict::NotTested:
        break;
    }
    return "not tested";
}

const char* expected_text(Expected expected) {
    switch (expected) {
    case Expected::Silence:
        return "silence";
    case Expected::Refusal:
        return "a refusal";
    case Expected::Either:
        break;
    }
    return "silence or a refusal";
}

bool is_own(Reaction::Kind kind) {
    return kind == Reaction::Kind::Answer || kind == Reaction::Kind::Refusal ||
           kind == Reaction::Kind::Damaged;
}

Trial judged(const BadRequest& request, const Reaction& reaction) {
    using enum ReactionVerdict;
    Trial trial;
    if (!reaction.text.empty()) trial.answer = reaction.text;
    trial.verdict = Passed;
    if (is_allowed(request.expected, reaction.kind)) return trial;
    const bool silent = reaction.kind == Reaction::Kind::Silence;
    TrialCause cause = TrialCause::Other;
    if (silent || reaction.kind == Reaction::Kind::Damaged) cause = TrialCause::Line;
    if (reaction.kind == Reaction::Kind::Noise) cause = TrialCause::Bytes;
    set(trial, silent || is_own(reaction.kind) ? Failed : Unclear, cause,
        reason_of(request, reaction.kind));
    return trial;
}

Trial with_behind(Trial trial, const Behind& behind) {
    using enum ReactionVerdict;
    using Kind = Reaction::Kind;
    if (trial.verdict == NotTested) return trial;
    if (!behind.remark.empty()) {
        set(trial, Unclear, TrialCause::Other, behind.remark);
        return trial;
    }
    if (trial.verdict != Passed) return trial;
    const bool silent = trial.answer == Trial().answer;
    if (!behind.rest.text.empty())
        trial.answer += (silent ? " in time, then " : ", then ") + behind.rest.text;
    if (behind.first == Kind::Noise)
        set(trial, Unclear, TrialCause::Line,
            "the good request behind it was answered with something damaged");
    else if (behind.first == Kind::Silence && behind.rest.kind != Kind::Silence)
        set(trial, Unclear, TrialCause::Line,
            "the good request behind it was answered late, or more than once");
    else if (is_own(behind.rest.kind))
        set(trial, Failed, TrialCause::Line, silent ? "answered late" : kMoreCame);
    else if (behind.first == Kind::Silence)
        set(trial, Failed, TrialCause::Line,
            "the good request behind it was answered only when it was sent again");
    else if (behind.first == Kind::Refusal)
        set(trial, Failed, TrialCause::Line,
            "a refusal came late, or to the good request behind it");
    else if (behind.rest.kind != Kind::Silence)
        set(trial, Unclear, TrialCause::Bytes, kNoise);
    return trial;
}

Trial together(const Trial& first, const Trial& second) {
    using enum ReactionVerdict;
    Trial both = first.verdict == Unclear || second.verdict == Passed ? first : second;
    const bool only_bytes = first.cause == TrialCause::Bytes && second.cause == TrialCause::Bytes;
    if (second.verdict == Passed)
        set(both, Unclear, first.cause,
            first.reason + ", but not each time; the line, or a late answer to another");
    else if (only_bytes && first.answer == second.answer) // a disturbance has others each time
        set(both, Failed, TrialCause::Bytes, kNoReply);
    return both;
}

} // namespace pelvan
