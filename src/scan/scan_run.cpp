#include "scan/scan_run.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/run_time_error.h"

namespace pelvan {
namespace {

/// So often in a row the line did not fall silent: somebody else is talking.
constexpr int kBusyLimit = 3;
/// A controller has one setting. An address that answers at two is not asked at any more.
constexpr std::ptrdiff_t kSettingsOfOne = 2;
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
    if (asking_ != nullptr && settings != settings_text(asking_->step().line)) {
        settings_before_ = settings_text(asking_->step().line);
        opened_ms_ = tools_.tick.precise_ms();
        leave_settings();
    }
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
