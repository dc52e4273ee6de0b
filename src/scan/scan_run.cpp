#include "scan/scan_run.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

/// Bytes may be the answer of whoever was asked so long before they came.
constexpr double kLateMs = 250;
/// Patience with whoever has answered already.
constexpr double kSureMs = 1000;
constexpr int kTries = 3;      // of whoever has answered once, for a second answer
constexpr int kNoisyTries = 2; // of whoever is asked again, while only noise comes back
/// So often in a row the line did not fall silent: somebody else is talking.
constexpr int kBusyLimit = 3;
/// A controller has one setting. An address that answers at two is not asked at any more.
constexpr std::ptrdiff_t kSettingsOfOne = 2;
/// Controllers that are slow are slower at times.
constexpr double kMargin = 1.2;
constexpr double kPatienceStepMs = 100; // in which patience is recommended
constexpr double kPaceMs = 3000;        // so long the estimate is believed

} // namespace

ScanRun::ScanRun(Tools tools, std::unique_ptr<SerialPort> port, const ScanOptions& options,
                 ScanListener& listener, ScanResult& result)
    : tools_(tools), options_(options), listener_(listener), result_(result),
      plan_(plan_scan(options)), all_ms_(estimated_ms(plan_, options.patience_ms)),
      line_(std::move(port), tools.tick, options, [&listener] { return listener.go_on(); }) {}

void ScanRun::all() {
    if (options_.fixed_settings)
        remark_once("Behind tcp:// rate and format are the server's own: each address is asked "
                    "once.");
    for (const ScanStep& next : plan_) {
        if (ended()) break;
        if (open(next)) step(next);
    }
    leave_settings();
    if (result_.how == ScanEnd::Completed && !line_.go_on()) result_.how = ScanEnd::Cancelled;
}

/// False for settings that the port does not have: the others may do.
bool ScanRun::open(const ScanStep& step) {
    const std::string settings = settings_text(step.line);
    if (asking_ != nullptr && settings != settings_text(asking_->step().line)) leave_settings();
    if (std::find(refused_.begin(), refused_.end(), settings) != refused_.end()) return false;
    // The other protocols would fare no better; later on it may be silent.
    if (settings == busy_settings_) {
        result_.unasked += step.addresses.size();
        return false;
    }
    busy_settings_.clear();
    try {
        line_.open(step.line);
        opened_ = true;
        return true;
    } catch (const RunTimeError& error) {
        if (error.number() != error_number::kCannotSetState) throw;
        refused_.push_back(settings);
        remark_once("The port does not have the settings " + settings + ".");
        return false;
    }
}

void ScanRun::step(const ScanStep& step) {
    asking_ = &askings_.emplace_back(step, make_probe(step, tools_.link, tools_.dialogs));
    busy_ = 0;
    const double begin_ms = done_ms_;
    const double each_ms = silent_address_ms(step, options_.patience_ms);
    std::size_t asked = 0;
    for (const int address : step.addresses) {
        if (ended() || busy_ >= kBusyLimit) break;
        ++asked;
        if (!is_settled(*asking_, address)) {
            tell(address);
            ask_first(address);
            ask_pending();
        }
        done_ms_ += each_ms;
    }
    listen_behind();
    if (busy_ >= kBusyLimit) give_up(asked);
    done_ms_ = begin_ms + each_ms * static_cast<double>(step.addresses.size()) + kScanTailMs;
}

/// For late answers, longer where some have been slow.
void ScanRun::listen_behind() {
    const std::vector<int> last = asking_->asked_lately(0);
    for (int i = 0; i < kTries && !last.empty() && !ended() && busy_ < kBusyLimit; ++i) {
        const double slow_ms = std::min(slowest_ms_ * kMargin, kLatestAnswerMs);
        std::string late = line_.listen(std::max(slow_ms, kScanTailMs));
        if (late.empty()) return;
        look_again(last.front(), std::move(late));
        if (slowest_ms_ <= kScanTailMs) return;
    }
}

/// Of the step's addresses so many were asked.
void ScanRun::give_up(std::size_t asked) {
    busy_settings_ = settings_text(asking_->step().line);
    result_.unasked += asking_->step().addresses.size() - asked;
    if (std::find(result_.busy.begin(), result_.busy.end(), busy_settings_) == result_.busy.end())
        result_.busy.push_back(busy_settings_);
    remark_once("Somebody else sends on this line at " + busy_settings_ +
                ": it does not fall silent.");
}

void ScanRun::tell(int address) {
    const double spent_ms = now_ms();
    const double pace = spent_ms > kPaceMs && done_ms_ > 0 ? spent_ms / done_ms_ : 1;
    listener_.probing({asking_->step(), address, std::min(done_ms_ / all_ms_, 1.0),
                       std::max(all_ms_ - done_ms_, 0.0) * pace});
    if (line_.echoes())
        remark_once("The line echoes what is sent: a two-wire converter, or a plug.");
}

/// At how many settings the address was found.
std::ptrdiff_t ScanRun::settings_of(const ScanStep& step, int address) const {
    return std::count_if(result_.finds.begin(), result_.finds.end(), [&](const ScanFind& find) {
        return find.protocol == step.protocol && find.address == address;
    });
}

/// Whether the address needs not be asked: it has been found, or its finds say that what is behind
/// the port answers at any setting.
bool ScanRun::is_settled(const ScanAsking& asking, int address) const {
    return settings_of(asking.step(), address) >= kSettingsOfOne ||
           std::any_of(result_.finds.begin(), result_.finds.end(), [&](const ScanFind& find) {
               return may_be_same(find, asking.step(), address);
           });
}

void ScanRun::tell_settings(int address) {
    if (settings_of(asking_->step(), address) >= kSettingsOfOne)
        remark_once("A controller answered at two settings. There are two of one address, or what "
                    "is behind the port does not care for settings.");
}

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
    const bool answers = note(bytes);
    std::vector<int> others = answers ? std::vector<int>() : asking_->asked_lately(kLateMs);
    if (std::find(others.begin(), others.end(), address) == others.end()) others.push_back(address);
    ask_pending();
    for (const int other : others)
        if (asking_->repeats[other]++ == 0)
            ask_again(other,
                      answers ? options_.patience_ms : std::max(options_.patience_ms, kLateMs));
    ask_pending();
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

void ScanRun::ask_again(int address, double patience_ms) {
    for (int i = 0; i < kNoisyTries && !ended() && !is_settled(*asking_, address); ++i) {
        const Heard heard = ask_patiently(address, patience_ms);
        if (heard.bytes.empty()) return;
        if (const auto answer = given(address, heard)) {
            if (!answer->answer.absent) confirm(address, *answer);
            return;
        }
        note_silence();
    }
    if (!ended() && !is_settled(*asking_, address)) tell_garbled(address);
}

/// What comes back every time is no noise.
void ScanRun::tell_garbled(int address) {
    if (std::exchange(result_.garbled, true)) return;
    remark_once("At " + settings_text(asking_->step().line) + " " +
                scan_protocol_name(asking_->step().protocol) + " address " +
                std::to_string(address) +
                " something comes back that is no valid answer: another parity, two controllers "
                "of one address, or bytes that a converter adds.");
}

/// Tells who was heard at these settings and is not listed.
void ScanRun::leave_settings() {
    for (const ScanAsking& asking : askings_) {
        std::vector<UnsureAnswer> late;
        std::vector<UnsureAnswer> once;
        for (const auto& [address, ms] : asking.unsure) {
            if (is_settled(asking, address)) continue;
            const bool is_late = ms > options_.patience_ms;
            const double steps = std::ceil(ms * kMargin / kPatienceStepMs);
            const double wanted_ms = std::min<double>(steps * kPatienceStepMs, kMaxScanPatienceMs);
            (is_late ? late : once)
                .push_back(
                    {asking.step().protocol, address, asking.step().line, is_late ? wanted_ms : 0});
        }
        for (const auto& answers : {late, once}) {
            if (answers.empty()) continue;
            remark_once(unsure_remark(answers));
            result_.unsure.insert(result_.unsure.end(), answers.begin(), answers.end());
        }
    }
    asking_ = nullptr;
    pending_.clear();
    askings_.clear();
}

} // namespace pelvan
