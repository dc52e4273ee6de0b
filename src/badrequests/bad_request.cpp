#include "badrequests/bad_request.h"

namespace pelvan {
namespace {

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
    case Reaction::Kind::Damaged:
        break;
    }
    return "something came back that is no reply";
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

BadRequestLine judged(const BadRequest& request, const Reaction& reaction) {
    BadRequestLine line;
    line.verdict = is_allowed(request.expected, reaction.kind) ? ReactionVerdict::Passed
                                                               : ReactionVerdict::Failed;
    if (line.verdict == ReactionVerdict::Failed) line.reason = reason_of(request, reaction.kind);
    return line;
}

} // namespace pelvan
