#include "console/repeat_panel.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr double kMsPerSecond = 1000;
constexpr int kOccupiedMs = 250;
constexpr char kBadInterval[] = "Enter an interval of 0.1 to 3600 seconds.";

/// Milliseconds of a text in seconds, within what can be repeated at.
std::optional<double> interval_ms(std::string text) {
    std::replace(text.begin(), text.end(), ',', '.');
    if (!is_numeric(text)) return std::nullopt;
    const double ms = leading_number(text) * kMsPerSecond;
    const bool fits = ms >= Repeat::kMinIntervalMs && ms <= Repeat::kMaxIntervalMs;
    return fits ? std::optional(ms) : std::nullopt;
}

} // namespace

RepeatPanel::RepeatPanel(Services& services, Repeat& repeat, History& history, Label& status)
    : services_(services), repeat_(repeat), history_(history), status_(status) {
    cmd_Repeat.Click = [this] { cmd_Repeat_Click(); };
    mnuRepeat.make_checkable();
    mnuRepeat.Click = [this] { cmd_Repeat_Click(); };
    tmr_Repeat.Tick = [this] { tmr_Repeat_Timer(); };
    txt_RepeatInterval.GotFocus = [this] { txt_RepeatInterval.select_all(); };
    show();
}

void RepeatPanel::cmd_Repeat_Click() {
    if (running())
        stop();
    else
        start();
}

void RepeatPanel::start() {
    const auto interval = interval_ms(txt_RepeatInterval.Text());
    if (!interval) {
        services_.dialogs.message_box(kBadInterval);
        txt_RepeatInterval.SetFocus();
        txt_RepeatInterval.select_all();
        return;
    }
    repeat_.start(command(), *interval);
    tmr_Repeat.start();
    tmr_Repeat_Timer();
}

void RepeatPanel::stop() {
    repeat_.stop();
    tmr_Repeat.stop();
    show();
}

void RepeatPanel::tmr_Repeat_Timer() {
    if (occupied()) {
        tmr_Repeat.set_Interval(kOccupiedMs);
        return;
    }
    const auto outcome = repeat_.tick();
    if (outcome && outcome->row) history_.add(*outcome->row, History::Select::IfAtEnd);
    const bool refused_entry = outcome && outcome->kind == SendOutcome::Kind::Refused;
    if (outcome && !refused_entry && (!outcome->accepted || !outcome->remark.empty()))
        status_.set_Caption(time_text(services_.clock.now()) + " " +
                            (outcome->accepted ? outcome->remark : repeat_.counts().last_failure));
    if (!running()) tmr_Repeat.stop();
    tmr_Repeat.set_Interval(std::max(1, static_cast<int>(std::ceil(repeat_.wait_ms()))));
    show();
    if (refused_entry) refused(outcome->refusal);
}

void RepeatPanel::hold(const std::string& holder) {
    holder_ = holder;
    show();
}

std::string RepeatPanel::state_text() const {
    const std::string holder = repeat_.paused();
    if (!holder.empty()) return "Repeat paused. " + holder + " ";
    return running() ? "Repeating: " : "Repeat stopped: ";
}

void RepeatPanel::show() {
    const bool on = running();
    const RepeatCounts& counts = repeat_.counts();
    cmd_Repeat.set_Caption(on ? "Stop" : "Repeat");
    cmd_Repeat.hold(on ? std::string() : holder_);
    mnuRepeat.hold(on ? std::string() : holder_);
    mnuRepeat.set_Checked(on);
    txt_RepeatInterval.set_Enabled(!on);
    lbl_Repeat.set_Visible(on || counts.sent() > 0);
    lbl_Repeat.set_Caption(state_text() + counts.text());
}

} // namespace pelvan
