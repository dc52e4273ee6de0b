#include "scan/scan_run.h"

#include <algorithm>
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
constexpr double kPaceMs = 3000; // so long the estimate is believed

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
        step_ = &next;
        if (open(next)) step();
    }
    if (result_.how == ScanEnd::Completed && !line_.go_on()) result_.how = ScanEnd::Cancelled;
}

/// False for settings that the port does not have: the others may do.
bool ScanRun::open(const ScanStep& step) {
    const std::string settings = settings_text(step.line);
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

void ScanRun::step() {
    probe_ = make_probe(*step_, tools_.link, tools_.dialogs);
    asked_.clear();
    repeats_.clear();
    sure_repeats_.clear();
    busy_ = 0;
    const double begin_ms = done_ms_;
    const double each_ms = silent_address_ms(*step_, options_.patience_ms);
    std::size_t asked = 0;
    for (const int address : step_->addresses) {
        if (ended() || busy_ >= kBusyLimit) break;
        ++asked;
        if (!is_settled(address)) {
            tell(address);
            ask_first(address);
        }
        done_ms_ += each_ms;
    }
    if (!asked_.empty() && !ended() && busy_ < kBusyLimit)
        if (std::string late = line_.listen(kScanTailMs); !late.empty())
            look_again(asked_.back().address, std::move(late));
    if (busy_ >= kBusyLimit) give_up(asked);
    done_ms_ = begin_ms + each_ms * static_cast<double>(step_->addresses.size()) + kScanTailMs;
}

/// Of the step's addresses so many were asked.
void ScanRun::give_up(std::size_t asked) {
    busy_settings_ = settings_text(step_->line);
    result_.unasked += step_->addresses.size() - asked;
    if (std::find(result_.busy.begin(), result_.busy.end(), busy_settings_) == result_.busy.end())
        result_.busy.push_back(busy_settings_);
    remark_once("Somebody else sends on this line at " + busy_settings_ +
                ": it does not fall silent.");
}

void ScanRun::tell(int address) {
    const double spent_ms = now_ms();
    const double pace = spent_ms > kPaceMs && done_ms_ > 0 ? spent_ms / done_ms_ : 1;
    listener_.probing({*step_, address, std::min(done_ms_ / all_ms_, 1.0),
                       std::max(all_ms_ - done_ms_, 0.0) * pace});
    if (line_.echoes())
        remark_once("The line echoes what is sent: a two-wire converter, or a plug.");
}

/// At how many settings the address was found.
std::ptrdiff_t ScanRun::settings_of(int address) const {
    return std::count_if(result_.finds.begin(), result_.finds.end(), [&](const ScanFind& find) {
        return find.protocol == step_->protocol && find.address == address;
    });
}

/// Whether the address needs not be asked: it has been found, or its finds say that what is behind
/// the port answers at any setting.
bool ScanRun::is_settled(int address) const {
    return settings_of(address) >= kSettingsOfOne ||
           std::any_of(result_.finds.begin(), result_.finds.end(),
                       [&](const ScanFind& find) { return may_be_same(find, *step_, address); });
}

void ScanRun::tell_settings(int address) {
    if (settings_of(address) >= kSettingsOfOne)
        remark_once("A controller answered at two settings. There are two of one address, or what "
                    "is behind the port does not care for settings.");
}

Heard ScanRun::ask(int address, double patience_ms) {
    asked_.push_back({address, now_ms()});
    ++result_.probes;
    return line_.ask(*probe_, address, patience_ms);
}

void ScanRun::ask_first(int address) {
    const Heard heard = ask(address, options_.patience_ms);
    if (heard.bytes.empty() || ended()) {
        busy_ = 0;
        return;
    }
    const auto answer = probe_->answer(address, heard.bytes);
    if (!answer)
        look_again(address, heard.bytes);
    else if (!answer->absent)
        confirm(address, *answer, heard.reply_ms);
}

void ScanRun::confirm(int address, ProbeAnswer first, double reply_ms) {
    const double patience_ms = std::max(options_.patience_ms, kSureMs);
    for (int i = 0; i < kTries && !ended(); ++i) {
        const Heard heard = ask(address, patience_ms);
        auto second = probe_->answer(address, heard.bytes);
        if (second && second->kind == first.kind) {
            if (second->model != first.model) second->model.clear();
            result_.finds.push_back({step_->protocol, step_->crc, address, step_->line, *second,
                                     std::max(reply_ms, heard.reply_ms), now_ms(), line_.echoes()});
            listener_.found(result_.finds.back());
            tell_settings(address);
            if (options_.stops_at_first) result_.how = ScanEnd::FoundFirst;
            return;
        }
        if (second) {
            first = *second;
            reply_ms = heard.reply_ms;
        }
        std::string rest;
        static_cast<void>(line_.fall_silent(rest));
    }
}

std::vector<int> ScanRun::asked_lately() const {
    std::vector<int> addresses;
    const double since_ms = asked_.empty() ? 0 : asked_.back().at_ms - kLateMs;
    for (auto asked = asked_.rbegin(); asked != asked_.rend() && asked->at_ms >= since_ms; ++asked)
        if (std::find(addresses.begin(), addresses.end(), asked->address) == addresses.end())
            addresses.push_back(asked->address);
    return addresses;
}

/// Bytes came that are not the answer of the address.
void ScanRun::look_again(int address, std::string bytes) {
    if (!line_.fall_silent(bytes)) {
        ++busy_;
        return;
    }
    busy_ = 0;
    std::vector<int> senders = probe_->senders(bytes);
    std::erase_if(senders, [this](int sender) {
        return std::none_of(asked_.begin(), asked_.end(),
                            [sender](const Asked& asked) { return asked.address == sender; });
    });
    const std::vector<int> others = senders.empty() ? asked_lately() : std::vector<int>{address};
    for (const int sender : senders)
        if (sure_repeats_[sender]++ < kTries) ask_again(sender, kSureMs);
    for (const int other : others)
        if (repeats_[other]++ == 0)
            ask_again(other, senders.empty() ? std::max(options_.patience_ms, kLateMs)
                                             : options_.patience_ms);
}

void ScanRun::ask_again(int address, double patience_ms) {
    for (int i = 0; i < kNoisyTries && !ended() && !is_settled(address); ++i) {
        const Heard heard = ask(address, patience_ms);
        if (heard.bytes.empty()) return;
        if (const auto answer = probe_->answer(address, heard.bytes)) {
            if (!answer->absent) confirm(address, *answer, heard.reply_ms);
            return;
        }
        std::string rest;
        static_cast<void>(line_.fall_silent(rest));
    }
    if (!ended() && !is_settled(address)) tell_garbled(address);
}

/// What comes back every time is no noise.
void ScanRun::tell_garbled(int address) {
    if (std::exchange(result_.garbled, true)) return;
    remark_once("At " + settings_text(step_->line) + " " + scan_protocol_name(step_->protocol) +
                " address " + std::to_string(address) +
                " something comes back that is no valid answer: another parity, two controllers "
                "of one address, or bytes that a converter adds.");
}

} // namespace pelvan
