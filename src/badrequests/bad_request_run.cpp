#include "badrequests/bad_request_run.h"

#include <algorithm>
#include <optional>

#include "platform/run_time_error.h"
#include "serial/other_parity.h"

namespace pelvan {
namespace {

constexpr int kGoodTries = 3;
constexpr double kOpeningMs = 500;
/// Converters that live on the modem lines come back when the port has been opened.
constexpr double kAfterOpeningMs = 250;
constexpr char kCanceled[] = "Cancelled.";
constexpr char kNoLine[] = "there is no line";
constexpr char kNothing[] = "nothing";
constexpr char kMoreCame[] = "more came than one answer";

const char* text_of(GoodReply::Kind kind) {
    switch (kind) {
    case GoodReply::Kind::Refused:
        return "the good request was refused";
    case GoodReply::Kind::Damaged:
        return "the good request was answered with something damaged";
    default:
        return "the good request was not answered";
    }
}

} // namespace

/// One sending of a bad request.
struct BadRequestRun::Attempt {
    Reaction reaction;
    /// Nothing can be said of the controller.
    std::optional<BadRequestLine> instead = {};
};

bool BadRequestResult::all_good() const {
    return end.empty() && std::ranges::all_of(lines, [](const BadRequestLine& line) {
               return line.verdict == ReactionVerdict::Passed ||
                      line.verdict == ReactionVerdict::NotTested;
           });
}

BadRequestResult BadRequestRun::run(const BadRequestOptions& options) {
    result_ = {};
    result_.wait_ms = options.wait_ms;
    const LineClaim claim = link_.claim();
    if (!claim) {
        result_.end = link_.refusal();
        return result_;
    }
    series_ = make_series(options, link_, messages_, result_.end);
    if (!series_) return result_;
    const auto& devices = link_.channels().state().gCommDevice;
    result_.title = series_->title();
    if (static_cast<std::size_t>(series_->whom().channel) >= devices.size()) {
        result_.end = "This protocol has no port: Port Settings (F9) gives it one.";
        return result_;
    }
    talk_ =
        std::make_unique<LineTalk>(link_, series_->whom().channel, series_->quiet_chars(), [this] {
            canceled_ = canceled_ || !listener_.go_on();
            return !canceled_;
        });
    result_.port =
        "port " +
        std::to_string(port_in_use(link_.channels(), series_->whom().channel).CommPort()) + ", " +
        talk_->settings();
    canceled_ = false;
    number_ = 0;
    trouble_.clear();
    const MessageRouter::Diversion kept(messages_, [this](const std::string& text) {
        if (trouble_.empty()) trouble_ = text; // what follows comes of it
    });
    run_series(options.wait_ms);
    if (canceled_) result_.end = kCanceled;
    // The request that was sent last may still be answered, to whoever uses the line next.
    if (!result_.end.empty())
        link_.channels().late_answers().doubt(series_->whom(), link_.countdowns().read_tick());
    return result_;
}

void BadRequestRun::run_series(double wait_ms) {
    const std::vector<BadRequest> requests = series_->requests(talk_->settings());
    const auto sent = std::ranges::count_if(
        requests, [](const BadRequest& request) { return request.not_applicable.empty(); });
    count_ = static_cast<int>(sent) + 2;
    if (!begin("Good request at the beginning")) return;
    for (const BadRequest& request : requests)
        if (!test(request, wait_ms)) return;
    static_cast<void>(begin("Good request at the end"));
}

void BadRequestRun::announce(const std::string& name) {
    listener_.sending(++number_, count_, name);
    canceled_ = canceled_ || !listener_.go_on();
}

void BadRequestRun::add(BadRequestLine line) {
    result_.lines.push_back(std::move(line));
    listener_.listed(result_.lines.back());
}

/// Whether the run is over, with its reason; nothing is judged then.
bool BadRequestRun::has_ended() {
    if (canceled_) return true;
    if (!talk_->is_lost()) return false;
    result_.end = trouble_.empty() ? "The line was lost." : trouble_;
    return true;
}

/// Sends the good request, again where a single reply was lost. `late` when more came than its
/// answer.
GoodReply BadRequestRun::good(bool& late) {
    GoodReply reply;
    for (int i = 0; i < kGoodTries && !canceled_; ++i) {
        reply = series_->ask([this](const std::string& bytes, double timeout_ms) {
            return talk_->ask({bytes}, timeout_ms);
        });
        const std::size_t more = talk_->let_fall_silent();
        late = late || reply.more || more > 0 || link_.stray_bytes() > 0;
        const bool again =
            reply.kind == GoodReply::Kind::Nothing || reply.kind == GoodReply::Kind::Damaged;
        if (!again || talk_->is_lost()) break;
    }
    return reply;
}

bool BadRequestRun::begin(const char* name) {
    announce(name);
    if (canceled_) return false;
    bool late = false;
    const GoodReply reply = good(late);
    BadRequestLine line{name, series_->good_text(), "an answer",
                        reply.text.empty() ? kNothing : reply.text};
    if (canceled_) return false;
    const bool answered = reply.kind == GoodReply::Kind::Answered;
    line.verdict = answered ? ReactionVerdict::Passed : ReactionVerdict::Failed;
    if (!answered) line.reason = text_of(reply.kind);
    if (talk_->is_lost()) line.reason = kNoLine;
    if (answered && late) {
        line.verdict = ReactionVerdict::Unclear;
        line.reason = kMoreCame;
    }
    add(std::move(line));
    if (has_ended()) return false;
    if (!answered) result_.end = "The controller does not answer a good request as it should.";
    return answered;
}

/// Selects the controller, where the request needs that.
bool BadRequestRun::open(const BadRequest& request, Attempt& result) {
    if (request.opening.empty()) return true;
    for (int i = 0; i < kGoodTries && !canceled_; ++i) {
        if (talk_->ask({request.opening}, kOpeningMs) == request.opening_reply) return true;
        static_cast<void>(talk_->let_fall_silent());
    }
    result.instead = BadRequestLine{};
    result.instead->verdict = ReactionVerdict::Failed;
    result.instead->reason = "the controller could not be selected";
    return false;
}

BadRequestRun::Attempt BadRequestRun::attempt(const BadRequest& request, double wait_ms) {
    Attempt result;
    if (!open(request, result)) return result;
    std::optional<OtherParity> other;
    if (request.parity != '\0') {
        try {
            other.emplace(link_.channels(), series_->whom().channel, request.parity);
        } catch (const RunTimeError& error) {
            result.instead = BadRequestLine{};
            if (error.number() == error_number::kCannotSetState)
                result.instead->reason = "this line has no such parity";
            return result;
        }
        talk_->rest(kAfterOpeningMs);
    }
    const std::string reply = canceled_ ? std::string() : talk_->ask(request.parts, wait_ms);
    result.reaction = series_->reaction(reply);
    if (!reply.empty()) static_cast<void>(talk_->let_fall_silent());
    other.reset();
    if (!request.closing.empty()) {
        static_cast<void>(talk_->ask({request.closing}, canceled_ ? 0 : kOpeningMs));
        if (!canceled_) static_cast<void>(talk_->let_fall_silent());
    }
    return result;
}

/// False when the series cannot go on.
bool BadRequestRun::test(const BadRequest& request, double wait_ms) {
    if (!request.not_applicable.empty()) {
        add({request.name, {}, {}, {}, ReactionVerdict::NotTested, request.not_applicable});
        return true;
    }
    BadRequestLine line{request.name, {}, expected_text(request.expected), kNothing};
    announce(request.name);
    if (canceled_) return false;
    for (const std::string& part : request.parts)
        line.sent += (line.sent.empty() ? "" : " (pause) ") + series_->shown(part);
    // What should not have come may be a late answer to something before, and what did not come
    // may have been lost: it counts when it happens twice.
    bool goes_on = try_once(request, wait_ms, line);
    if (goes_on && line.verdict == ReactionVerdict::Failed) {
        const BadRequestLine first = line;
        goes_on = try_once(request, wait_ms, line);
        if (line.verdict == ReactionVerdict::Passed) {
            line = first;
            line.verdict = ReactionVerdict::Unclear;
            line.reason += ", but only once of twice; the line, or a late answer to another";
        }
    }
    if (canceled_) return false;
    add(std::move(line));
    return goes_on && !has_ended();
}

/// Sends a bad request and a good one behind it, and puts what came of that into the line; false
/// when the series cannot go on.
bool BadRequestRun::try_once(const BadRequest& request, double wait_ms, BadRequestLine& line) {
    const Attempt made = attempt(request, wait_ms);
    const BadRequestLine verdict = made.instead ? *made.instead : judged(request, made.reaction);
    line.verdict = verdict.verdict;
    line.reason = verdict.reason;
    line.answer = made.reaction.text.empty() ? kNothing : made.reaction.text;
    if (made.instead) line.sent.clear(); // it was not
    bool late = false;
    const GoodReply reply = talk_->is_lost() || canceled_ ? GoodReply{} : good(late);
    if (canceled_) return false;
    if (reply.kind == GoodReply::Kind::Answered) {
        if (late && line.verdict == ReactionVerdict::Passed) {
            line.verdict = ReactionVerdict::Failed;
            line.reason = made.reaction.text.empty() ? "answered late" : kMoreCame;
        }
        return true;
    }
    line.verdict = ReactionVerdict::Failed;
    line.reason = talk_->is_lost() ? kNoLine : std::string("after it ") + text_of(reply.kind);
    if (!has_ended()) result_.end = "The controller does not answer good requests any more.";
    return false;
}

} // namespace pelvan
