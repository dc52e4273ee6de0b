// An exchange that does not take the late answer to an earlier request for its own. While nothing
// is in doubt it is the bare exchange: nothing else is sent, and no time is added.
#pragma once

#include <functional>
#include <string>

#include "serial/late_answers.h"
#include "serial/link.h"

namespace pelvan {

/// How a reply goes with the request.
enum class Fit {
    Answers,
    Damaged, // it was the answer, or a piece of it
    Missing, // nothing came, or what came answers something else: the answer may still come
};

struct CarefulRequest {
    Asked whom;
    /// Asking twice does no harm: a read.
    bool repeatable = false;
    /// Bytes that stood on the line before are a proof of late answers. Not where devices send
    /// unasked, or where the end of a reply is cut.
    bool watches_stray_bytes = false;
    /// One exchange through the link.
    std::function<std::string()> exchange;
    std::function<Fit(const std::string& reply)> fit;
    /// Asks, of somebody doubtful, for something that no answer to an earlier request can be taken
    /// for, and says whether its own answer came. Answers may be one behind for good, or later than
    /// any silence that is listened to: who was doubtful stays so until it has said yes. Without it
    /// the silence is proof enough. What is repeatable is asked once more behind the proof.
    std::function<bool()> in_step = nullptr;
};

struct CarefulReply {
    std::string reply;
    /// It fits, but may belong to an earlier request.
    bool unclear = false;
    /// Bytes stood on the line before the request.
    bool after_strays = false;
    /// Bytes that came behind a reply that was not the request's own, while the line fell silent.
    std::size_t discarded = 0;
    /// False when no port was open for the request: nobody was asked.
    bool sent = true;
};

/// What to tell of an unclear reply.
inline constexpr char kUnclearReply[] =
    "An answer came late: this one may belong to an earlier command. Send it again.";

/// Exchanges; after a failure the line falls silent, and who was asked is doubtful for ten seconds.
/// Behind a reply of somebody doubtful the line is listened to once more: bytes that come then mean
/// that the reply belonged to an earlier request. A read is asked again, once. Blocks for the
/// exchanges and silences.
[[nodiscard]] CarefulReply exchange_carefully(Link& link, const CarefulRequest& request);

/// Waits for an answer that comes too late, and discards it, while anybody is doubtful; for the end
/// of a process, because the next one knows nothing of this one's failures. Blocks up to 2 s.
void await_late_answer(Link& link);

} // namespace pelvan
