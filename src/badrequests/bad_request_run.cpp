#include "badrequests/bad_request_run.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/run_time_error.h"
#include "serial/other_parity.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr int kOpeningTries = 3;
constexpr int kTries = 3; // of what fails
constexpr int kUnclearTries = 2;
/// Of the good request: the first of all, and before a controller counts as dead.
constexpr int kFirstTries = 3;
constexpr int kGoodTries = 6;
constexpr double kOpeningMs = 500;
/// Converters that live on the modem lines come back when the port has been opened.
constexpr double kAfterOpeningMs = 250;
constexpr double kMsPerHundredth = 10;
constexpr double kHundredths = 100;
constexpr char kCanceled[] = "Cancelled.";
constexpr char kNoLine[] = "there is no line";
constexpr char kNothing[] = "nothing";
constexpr char kBegin[] = "Good request at the beginning";
constexpr char kNotJudged[] = ": nothing can be judged.";
/// What could come into two tries of one request is heard in the time of two.
constexpr double kListenTries = 2;
constexpr double kListenMoreMs = 1000;

/// To a hundredth of a second.
std::string seconds_text(double ms) {
    return plain_number(std::round(ms / kMsPerHundredth) / kHundredths) + " s";
}

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
    Reaction reaction = {};
    /// Nothing was sent, and nothing can be said of the controller.
    std::optional<Trial> instead = {};
};

bool BadRequestResult::all_good() const {
    return end.empty() && std::ranges::all_of(lines, [](const BadRequestLine& line) {
               return line.verdict == ReactionVerdict::Passed ||
                      line.verdict == ReactionVerdict::NotTested;
           });
}

BadRequestResult BadRequestRun::run(const BadRequestOptions& options) {
    result_ = {};
    result_.wait_ms = wait_ms_ = options.wait_ms;
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
    good_ = std::make_unique<GoodRequest>(*series_, *talk_, link_);
    result_.port =
        "port " +
        std::to_string(port_in_use(link_.channels(), series_->whom().channel).CommPort()) + ", " +
        talk_->settings();
    canceled_ = line_spoils_ = false;
    number_ = 0;
    trouble_.clear();
    static_cast<void>(link_.take_remark());
    const MessageRouter::Diversion kept(messages_, [this](const std::string& text) {
        if (trouble_.empty()) trouble_ = text; // what follows comes of it
    });
    run_series();
    result_.wait_ms = wait_ms_;
    if (canceled_) result_.end = kCanceled;
    // The request that was sent last may still be answered, to whoever uses the line next.
    if (!result_.end.empty())
        link_.channels().late_answers().doubt(series_->whom(), link_.countdowns().read_tick());
    return result_;
}

void BadRequestRun::run_series() {
    const std::vector<BadRequest> requests = series_->requests(talk_->settings());
    const auto sent = std::ranges::count_if(
        requests, [](const BadRequest& request) { return request.not_applicable.empty(); });
    count_ = static_cast<int>(sent) + 2;
    if (!begin()) return;
    for (const BadRequest& request : requests)
        if (!test(request)) return;
    end();
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

/// An answer that takes longer than is waited for would be taken for one to the next request.
GoodOutcome BadRequestRun::good(int tries) {
    GoodOutcome outcome = good_->send(tries);
    wait_ms_ = std::max(wait_ms_, good_->needed_wait_ms());
    return outcome;
}

BadRequestLine BadRequestRun::good_line(const char* name, const GoodOutcome& good) {
    BadRequestLine line{name, series_->good_text(), "an answer",
                        good.reply.text.empty() ? kNothing : good.reply.text};
    line.verdict = ReactionVerdict::Unclear; // of the line, or of what was asked for
    if (talk_->is_lost())
        line.reason = kNoLine;
    else if (!good.answered() && !good.remark.empty())
        line.reason = good.remark;
    else if (!good.answered())
        line.reason = text_of(good.reply.kind);
    else if (!good.rest.empty())
        line.reason = kMoreCame;
    else
        line.verdict = ReactionVerdict::Passed;
    return line;
}

/// What comes while nothing is sent. The answer to a request that was sent twice may be that to
/// the first, and its own one still to come.
std::string BadRequestRun::listen(const GoodOutcome& first) {
    listener_.sending(number_, count_, "Listening");
    const bool again = first.answered() && first.repeated();
    return talk_->listen_for(
        std::max(kListenTries * wait_ms_ + kListenMoreMs, again ? LateAnswers::kDoubtMs : 0));
}

/// False when nothing can be judged, which the result says.
bool BadRequestRun::begin() {
    announce(kBegin);
    const double chosen_ms = wait_ms_;
    talk_->open();
    GoodOutcome first = good(kFirstTries);
    // What an earlier request left on the line comes once.
    if (first.answered() && !first.rest.empty()) first = good(kFirstTries);
    if (canceled_) return false;
    BadRequestLine line = good_line(kBegin, first);
    const std::string heard = talk_->is_lost() ? std::string() : listen(first);
    if (canceled_) return false;
    if (!heard.empty()) {
        line.verdict = ReactionVerdict::Unclear;
        line.reason = "bytes came while nothing was sent: " + series_->shown(heard);
        result_.end = is_own(series_->reaction(heard).kind)
                          ? "It answers later than is waited for, or somebody else asks it"
                          : "Somebody else sends on this line, or it is disturbed";
        result_.end += kNotJudged;
    } else if (!first.answered()) {
        if (is_own(series_->reaction(first.rest).kind)) line.reason = "it was answered too late";
        result_.end = "The controller does not answer a good request as it should.";
    } else if (!first.rest.empty()) {
        line.reason += ": " + series_->shown(first.rest);
        result_.end = series_->shown(first.rest).starts_with(series_->good_text())
                          ? "The line echoes what is sent, and Port Settings (F9) do not say so"
                          : "More comes than one answer to a good request";
        result_.end += kNotJudged;
    } else if (wait_ms_ > chosen_ms) {
        line.reason = "it took " + seconds_text(good_->slowest_ms()) +
                      ", so answers are waited for " + seconds_text(wait_ms_);
    }
    add(std::move(line));
    return !has_ended() && result_.end.empty();
}

void BadRequestRun::end() {
    announce("Good request at the end");
    const GoodOutcome last = good(kGoodTries);
    if (canceled_) return;
    add(good_line("Good request at the end", last));
    if (!has_ended() && !last.answered())
        result_.end = "The controller does not answer good requests any more.";
}

/// Selects the controller, where the request needs that.
bool BadRequestRun::open(const BadRequest& request, Attempt& result) {
    if (request.opening.empty()) return true;
    for (int i = 0; i < kOpeningTries && !canceled_; ++i) {
        if (talk_->ask({request.opening}, kOpeningMs) == request.opening_reply) return true;
        static_cast<void>(talk_->hear_out());
    }
    result.instead = Trial{ReactionVerdict::Unclear, "the controller could not be selected"};
    return false;
}

BadRequestRun::Attempt BadRequestRun::attempt(const BadRequest& request) {
    Attempt result;
    if (!open(request, result)) return result;
    {
        std::optional<OtherParity> other;
        if (request.parity != '\0') {
            try {
                other.emplace(link_.channels(), series_->whom().channel, request.parity);
            } catch (const RunTimeError& error) {
                result.instead = Trial{};
                if (error.number() == error_number::kCannotSetState)
                    result.instead->reason = "this line has no such parity";
                return result;
            }
            talk_->rest(kAfterOpeningMs);
        }
        send(request, result);
    }
    if (request.parity != '\0') talk_->rest(kAfterOpeningMs); // opened once more
    if (!request.closing.empty()) {
        static_cast<void>(talk_->ask({request.closing}, canceled_ ? 0 : kOpeningMs));
        if (!canceled_) static_cast<void>(talk_->hear_out());
    }
    return result;
}

void BadRequestRun::send(const BadRequest& request, Attempt& result) {
    const std::string reply = canceled_ ? std::string() : talk_->ask(request.parts, wait_ms_);
    if (reply.empty()) {
        if (talk_->unread() > 0) result.reaction = {Reaction::Kind::Noise, "bytes that were lost"};
        return;
    }
    result.reaction = series_->reaction(reply);
    const std::string more = talk_->hear_out();
    const Reaction::Kind kind = result.reaction.kind;
    if (kind == Reaction::Kind::Damaged || kind == Reaction::Kind::Noise) // it comes in parts
        result.reaction = series_->reaction(reply + more);
    if (series_->reaction(more).kind == Reaction::Kind::Answer) // a refusal does not undo it
        result.reaction = {Reaction::Kind::Answer, series_->shown(reply + more)};
}

/// False when the series cannot go on.
bool BadRequestRun::test(const BadRequest& request) {
    if (!request.not_applicable.empty()) {
        add({request.name, {}, {}, {}, ReactionVerdict::NotTested, request.not_applicable});
        return true;
    }
    announce(request.name);
    bool goes_on = true;
    Trial trial = tried(request, goes_on);
    weigh_line(trial, goes_on);
    if (canceled_) return false;
    BadRequestLine line{request.name,  {},          expected_text(request.expected), trial.answer,
                        trial.verdict, trial.reason};
    for (const std::string& part : request.parts)
        if (trial.sent) line.sent += (line.sent.empty() ? "" : " (pause) ") + series_->shown(part);
    add(std::move(line));
    return goes_on && !has_ended();
}

/// What should not have come may be a late answer to something before, and what did not come may
/// have been lost: it counts when it happens each time.
Trial BadRequestRun::tried(const BadRequest& request, bool& goes_on) {
    using enum ReactionVerdict;
    Trial all = try_once(request, goes_on);
    for (int tries = 1; goes_on && !canceled_; ++tries) {
        const bool again = all.verdict == Failed ? tries < kTries
                                                 : all.verdict == Unclear && tries < kUnclearTries;
        if (!again) break;
        const Trial next = try_once(request, goes_on);
        all = goes_on ? together(all, next) : next;
    }
    return all;
}

/// A line that spoils good requests, too, may have done so each time.
void BadRequestRun::weigh_line(Trial& trial, bool goes_on) {
    using enum ReactionVerdict;
    if (trial.cause == TrialCause::Other || !goes_on) return;
    for (int i = 0; trial.verdict == Failed && i < kTries && !line_spoils_ && !canceled_; ++i) {
        const GoodOutcome alone = good(kGoodTries);
        line_spoils_ = alone.repeated() || !alone.rest.empty();
    }
    if (trial.verdict == Failed && line_spoils_) {
        trial.verdict = Unclear;
        trial.reason += ", but this line spoils good requests, too";
    }
    line_spoils_ = line_spoils_ || trial.verdict == Unclear;
}

/// Sends a bad request and a good one behind it; `goes_on` is false when the series cannot go on.
Trial BadRequestRun::try_once(const BadRequest& request, bool& goes_on) {
    const Attempt made = attempt(request);
    Trial trial = made.instead ? *made.instead : judged(request, made.reaction);
    trial.sent = !made.instead;
    const GoodOutcome next = talk_->is_lost() || canceled_ ? GoodOutcome{} : good(kGoodTries);
    if (canceled_) return trial;
    if (next.answered()) return with_behind(std::move(trial), good_->shown_by(next));
    goes_on = false;
    trial.verdict = ReactionVerdict::Unclear;
    const bool damaged = next.reply.kind == GoodReply::Kind::Damaged;
    if (talk_->is_lost()) {
        trial.reason = kNoLine;
    } else if (!next.remark.empty()) {
        trial.reason = next.remark;
    } else if (is_own(series_->reaction(next.rest).kind)) {
        trial.reason = "after it the good request was answered too late";
    } else {
        trial.reason = std::string("after it ") + text_of(next.reply.kind);
        if (!damaged) trial.verdict = ReactionVerdict::Failed;
    }
    if (!has_ended())
        result_.end = damaged ? "Good requests get damaged answers now."
                              : "The controller does not answer good requests any more.";
    return trial;
}

} // namespace pelvan
