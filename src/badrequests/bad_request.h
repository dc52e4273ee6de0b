// What is sent wrong on purpose, what is expected of the controller, and what it did: values, with
// no port. A series begins and ends with a good request, so that neither a silent controller nor
// one that died on the way is taken for a perfect one.
#pragma once

#include <string>
#include <vector>

namespace pelvan {

enum class Expected { Silence, Refusal, Either };

/// One bad request. All of them read, and none can be taken for a write with the bytes damaged as
/// they are.
struct BadRequest {
    std::string name;
    Expected expected = Expected::Silence;
    /// The bytes; between two parts there is a pause.
    std::vector<std::string> parts = {};
    /// For nobody on the line.
    bool foreign = false;
    /// Sent with this parity instead of the line's own; '\0' for the own.
    char parity = '\0';
    /// What must be answered before with `opening_reply`, so that the controller listens.
    std::string opening = {};
    std::string opening_reply = {};
    /// What makes the controller forget the request afterwards; what it says to that counts for
    /// nothing.
    std::string closing = {};
    /// Why the protocol or the line has no such request; nothing is sent then.
    std::string not_applicable = {};
};

/// What came back.
struct Reaction {
    enum class Kind {
        Silence,
        Refusal,
        Answer,  // as to a good request
        Foreign, // somebody with another address
        Damaged, // begins like a reply, and is none
        Noise    // has nothing of a reply
    };
    Kind kind = Kind::Silence;
    /// What the reply says, in words or bytes; empty for silence.
    std::string text = {};
};

enum class ReactionVerdict { Passed, Failed, Unclear, NotTested };

/// Who may have made a trial not pass.
enum class TrialCause {
    Other,
    Line, // or the controller: something is missing, damaged or at the wrong time
    Bytes // anybody: they have nothing of a reply
};

/// What one sending of a bad request, with a good one behind it, says of the controller.
struct Trial {
    ReactionVerdict verdict = ReactionVerdict::NotTested;
    std::string reason = {};
    TrialCause cause = TrialCause::Other;
    std::string answer = "nothing"; // or what came
    bool sent = true;
};

/// How the good request behind a bad one went.
struct Behind {
    /// Everything that came besides its answer.
    Reaction rest = {};
    /// What its first sending got; `Noise` for nothing that fits. A later one was answered.
    Reaction::Kind first = Reaction::Kind::Answer;
    /// What the line has to say of itself; nothing is known of the controller then.
    std::string remark = {};
};

/// One line of the report.
struct BadRequestLine {
    std::string name;
    std::string sent;     // as text; empty when nothing was
    std::string expected; // "silence"
    std::string answer;   // "nothing", or what came
    ReactionVerdict verdict = ReactionVerdict::NotTested;
    std::string reason = {}; // behind the verdict's word; empty for most that passed

    /// "failed: answered as if it were good"
    [[nodiscard]] std::string verdict_text() const;
};

/// Why a good request counts for little: its answer has company.
inline constexpr char kMoreCame[] = "more came than one answer";

/// "passed", "failed", "unclear", "not tested".
[[nodiscard]] const char* word_of(ReactionVerdict verdict);
[[nodiscard]] const char* expected_text(Expected expected);

/// Whether a controller that was asked may have sent this, and nobody else.
[[nodiscard]] bool is_own(Reaction::Kind kind);
/// What a reaction means for the controller. It fails by what nobody else can have done: bytes of
/// others, and such as may be anybody's, leave it unclear.
[[nodiscard]] Trial judged(const BadRequest& request, const Reaction& reaction);
/// The trial with what the good request behind it has shown.
[[nodiscard]] Trial with_behind(Trial trial, const Behind& behind);
/// What several trials say together: they fail when all do.
[[nodiscard]] Trial together(const Trial& first, const Trial& second);

} // namespace pelvan
