// What comes back during a run: whose answer it is, who is asked again, and what makes a find.
#include <algorithm>
#include <utility>

#include "scan/scan_run.h"

namespace pelvan {
namespace {

/// Bytes may be the answer of whoever was asked so long before they came.
constexpr double kLateMs = 250;
/// Patience with whoever has answered already.
constexpr double kSureMs = 1000;
constexpr int kNoisyTries = 2; // of whoever is asked again, while only noise comes back
/// So often bytes came that did not come again when they were asked for: nobody's answers.
constexpr int kStrays = 3;
/// So long nobody is asked before an address is accused, and so often once strays are known.
constexpr double kAloneMs = 1000;
constexpr int kMostAlone = 4;

} // namespace

/// With whoever has answered already.
double ScanRun::sure_patience_ms() const {
    return std::clamp(slowest_ms_ * kMargin, std::max(options_.patience_ms, kSureMs),
                      kLatestAnswerMs);
}

Heard ScanRun::ask(int address, double patience_ms) {
    Heard heard = line_.ask(asking_->probe(), address, patience_ms);
    if (heard.sent) {
        asking_->sent(address, scan_ms(line_.sent_ms()));
        ++result_.probes;
    }
    return heard;
}

/// What others answer meanwhile is noted, and the address has all of its time nevertheless.
Heard ScanRun::ask_patiently(int address, double patience_ms) {
    ScanProbe& probe = asking_->probe();
    Heard heard = ask(address, patience_ms);
    for (int i = 0; i < kTries && !heard.bytes.empty() && !ended(); ++i) {
        if (heard.sent && probe.answer(address, heard.bytes)) break;
        if (!note(heard.bytes)) break;
        heard = heard.sent ? line_.await(probe, address, patience_ms) : ask(address, patience_ms);
    }
    return heard;
}

std::optional<ScanRun::Given> ScanRun::given(int address, const Heard& heard) {
    if (!heard.sent) return {};
    const auto answer = asking_->probe().answer(address, heard.bytes);
    if (!answer) return {};
    hear(*asking_, address, *answer);
    const AnswerTime time = asking_->answered(address, scan_ms(line_.arrived_ms()));
    return Given{*answer, time.unsure ? time.ms : heard.reply_ms, time.unsure};
}

void ScanRun::ask_first(int address) {
    const Heard heard = ask(address, options_.patience_ms);
    if (heard.bytes.empty() || ended()) {
        busy_ = 0;
        return;
    }
    const auto answer = given(address, heard);
    if (!answer)
        look_again(address, heard.bytes);
    else if (!answer->answer.absent)
        confirm(address, *answer);
}

void ScanRun::confirm(int address, Given first) {
    for (int i = 0; i < kTries && !ended(); ++i) {
        if (first.unsure) settle(address, first.reply_ms);
        const auto second = given(address, ask_patiently(address, sure_patience_ms()));
        if (second && second->answer.kind == first.answer.kind)
            return list(address, first, *second);
        if (second) first = *second;
        note_silence();
    }
    if (!ended()) asking_->unsure.try_emplace(address, 0);
}

/// The address was asked twice before it answered once: the other answer may still come, and would
/// be taken for that to the next request.
void ScanRun::settle(int address, double answer_ms) {
    std::string rest;
    static_cast<void>(line_.fall_silent(rest, std::max(answer_ms * kMargin, kScanSilenceMs)));
    note(rest);
    asking_->forget_requests(address);
}

void ScanRun::list(int address, const Given& first, const Given& second) {
    const ScanStep& step = asking_->step();
    ScanFind find{step.protocol, step.crc, address, step.line, second.answer};
    if (find.answer.model != first.answer.model) find.answer.model.clear();
    // An unsure one is not before a sure one, because the line was settled between them.
    find.reply_ms = first.unsure    ? second.reply_ms
                    : second.unsure ? first.reply_ms
                                    : std::max(first.reply_ms, second.reply_ms);
    find.after_ms = now_ms();
    find.echo = line_.echoes();
    result_.finds.push_back(find);
    listener_.found(find);
    tell_settings(address);
    if (options_.stops_at_first) result_.how = ScanEnd::FoundFirst;
}

/// A whole answer of the address, whenever it came.
void ScanRun::hear(ScanAsking& asking, int address, const ProbeAnswer& answer) {
    if (const ProbeAnswer* other = asking.contradicted(address, answer))
        remark_once(two_of_one_remark(asking.step(), address, *other, answer));
}

/// Whether whole answers of those who were asked stand in the bytes. Who is not listed yet will be
/// asked again.
bool ScanRun::note(const std::string& bytes) {
    bool any = false;
    for (ScanAsking& asking : askings_) {
        const ScanProbe& probe = asking.probe();
        for (const Sender& sender : probe.senders(bytes)) {
            // What has no check is easily found in other protocols' bytes.
            if (&asking != asking_ && !probe.checked() && !probe.answer(sender.address, bytes))
                continue;
            if (!asking.has_asked(sender.address)) continue;
            take(asking, sender);
            any = true;
        }
    }
    return any;
}

void ScanRun::take(ScanAsking& asking, const Sender& sender) {
    const int address = sender.address;
    hear(asking, address, sender.answer);
    const AnswerTime time = asking.answered(address, scan_ms(line_.arrived_ms()));
    if (sender.answer.absent) return;
    slowest_ms_ = std::max(slowest_ms_, time.ms);
    if (is_settled(asking, address)) return;
    double& unsure_ms = asking.unsure[address];
    unsure_ms = std::max(unsure_ms, time.ms);
    if (asking.sure_repeats[address]++ < kTries) pending_.emplace_back(&asking, address);
}

void ScanRun::note_silence() {
    std::string rest;
    static_cast<void>(line_.fall_silent(rest));
    note(rest);
}

/// Bytes came that are not the answer of the address.
void ScanRun::look_again(int address, std::string bytes) {
    if (!line_.fall_silent(bytes)) {
        ++busy_;
        return;
    }
    busy_ = 0;
    const double arrived_ms = line_.arrived_ms();
    const bool answers = note(bytes);
    bool repeated = false;
    std::vector<int> others = answers ? std::vector<int>() : asking_->asked_lately(kLateMs);
    if (std::find(others.begin(), others.end(), address) == others.end()) others.push_back(address);
    ask_pending();
    for (const int other : others)
        if (asking_->repeats[other]++ == 0)
            repeated |= !ask_again(other, answers ? options_.patience_ms
                                                  : std::max(options_.patience_ms, kLateMs));
    ask_pending();
    if (answers || repeated || ended() || is_of_settings_before(arrived_ms)) return;
    if (++strays_ == kStrays) tell_strays();
}

void ScanRun::ask_pending() {
    while (!pending_.empty() && !ended()) {
        const auto [asking, address] = pending_.front();
        pending_.pop_front();
        ScanAsking* const back = std::exchange(asking_, asking);
        ask_again(address, sure_patience_ms());
        asking_ = back;
    }
}

/// False when something came back every time that is no answer.
bool ScanRun::ask_again(int address, double patience_ms) {
    for (int i = 0; i < kNoisyTries && !ended() && !is_settled(*asking_, address); ++i) {
        const Heard heard = ask_patiently(address, patience_ms);
        if (heard.bytes.empty()) return true;
        if (const auto answer = given(address, heard)) {
            if (!answer->answer.absent) confirm(address, *answer);
            return true;
        }
        note_silence();
    }
    if (ended() || is_settled(*asking_, address)) return true;
    tell_garbled(address);
    return false;
}

/// Whether bytes that did not come again came so soon behind a change of settings that they may be
/// the answer to a request at those before, which is told then; once for each change.
bool ScanRun::is_of_settings_before(double arrived_ms) {
    if (settings_before_.empty() || arrived_ms - opened_ms_ > kSureMs) return false;
    remark_once("Bytes came just behind the change from " + std::exchange(settings_before_, {}) +
                ": something may have answered late there. 1000 ms of patience would "
                "tell.");
    return true;
}

/// What comes back every time is no noise, unless it comes without a request, too.
void ScanRun::tell_garbled(int address) {
    if (result_.garbled || (result_.strays && alone_ >= kMostAlone)) return;
    ++alone_;
    std::string bytes = line_.listen(kAloneMs);
    if (ended()) return;
    if (!bytes.empty()) {
        static_cast<void>(line_.fall_silent(bytes));
        if (!note(bytes)) return tell_strays();
    }
    result_.garbled = true;
    remark_once("At " + settings_text(asking_->step().line) + " " +
                scan_protocol_name(asking_->step().protocol) + " address " +
                std::to_string(address) +
                " something comes back that is no valid answer: another parity, two controllers "
                "of one address, or bytes that a converter adds.");
}

void ScanRun::tell_strays() {
    if (std::exchange(result_.strays, true)) return;
    remark_once("Bytes come at " + settings_text(asking_->step().line) +
                " that nobody was asked for: somebody else sends, or the line is disturbed. The "
                "scan takes longer for it.");
}

} // namespace pelvan
