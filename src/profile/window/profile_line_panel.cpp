#include "profile/window/profile_line_panel.h"

#include <algorithm>

#include "profile/profile_difference.h"

namespace pelvan {
namespace {

constexpr int kMaxAddress = 247;

std::vector<std::string> addresses() {
    std::vector<std::string> texts;
    for (int address = 1; address <= kMaxAddress; ++address)
        texts.push_back(std::to_string(address));
    return texts;
}

std::string joined(const std::vector<std::string>& sentences) {
    std::string text;
    for (const std::string& sentence : sentences)
        text += (text.empty() ? "" : "\n") + sentence;
    return text;
}

} // namespace

/// The panel at work, put back however the work ends.
class ProfileLinePanel::Busy {
  public:
    explicit Busy(ProfileLinePanel& panel) : panel_(panel) {
        panel_.cancel_ = {};
        set(true);
    }
    Busy(const Busy&) = delete;
    Busy& operator=(const Busy&) = delete;
    ~Busy() {
        panel_.ProgressBar1.set_Value(0);
        set(false);
    }

  private:
    void set(bool busy) {
        panel_.busy_ = busy;
        panel_.cmbAddress.set_Enabled(!busy);
        panel_.cmdCancel.set_Enabled(busy);
        panel_.ProgressBar1.set_Visible(busy);
        panel_.busy_changed.raise();
    }
    ProfileLinePanel& panel_;
};

ProfileLinePanel::ProfileLinePanel(Services& services, Link& link, Modbus& modbus)
    : cmbAddress("cmbProfileAddress", addresses(), 0, true, "Address of the controller, 1 to 247."),
      services_(services), link_(link), modbus_(modbus) {
    cmdCancel.set_Enabled(false);
    ProgressBar1.set_Visible(false);
    cmdCancel.Click = [this] { ask_to_cancel(); };
}

TransferContext ProfileLinePanel::context() {
    return {link_,
            modbus_,
            services_.clock,
            services_.application_directory,
            DeviceAddress(cmbAddress.Text()),
            *this,
            cancel_};
}

bool ProfileLinePanel::address_refused() {
    if (!pelvan::address_refused(cmbAddress.Text(), modbus_, services_.dialogs)) return false;
    cmbAddress.SetFocus();
    cmbAddress.select_all();
    return true;
}

ProfileReadResult ProfileLinePanel::read() {
    const Busy busy(*this);
    ProfileReadResult result = ProfileReader(context()).read();
    if (result.model) identity_ = result.identity;
    return result;
}

std::string ProfileLinePanel::changed_since_read(int number, const ProfileSet& held) {
    const Busy busy(*this);
    const ProfileReadResult now = ProfileReader(context()).read_with_jumps(number);
    if (cancel_.canceled && !cancel_.gave_up) return "Cancelled.";
    if (!now.complete || !now.model)
        return now.problems.empty() ? "The profile could not be read." : now.problems.front();
    for (std::size_t i = 0; i < identity_.size(); ++i)
        if (!identity_[i].empty() && !now.identity[i].empty() && identity_[i] != now.identity[i])
            return "Another controller answers than the one whose profiles were read: read it "
                   "(F5).";
    const auto is_as_read = [&](const auto& entry) {
        const auto before = held.find(entry.first);
        return before != held.end() &&
               profile_differences(now.model->format, before->second, entry.second).empty();
    };
    if (now.profiles.contains(number) && std::ranges::all_of(now.profiles, is_as_read)) return {};
    return "The controller holds another profile " + std::to_string(number) +
           ", or others that it jumps to, than was read: read again (F5).";
}

LineReport ProfileLinePanel::write(int model, const ProfileSet& wanted) {
    const Busy busy(*this);
    ProfileWriter writer(context());
    const ProfilePlan plan = writer.plan_write(model, wanted);
    if (!agreed(plan, "Write?")) return {false, {}, plan.refusal};
    return carry_out(writer, plan, "Written, read back, and found as it should be.");
}

LineReport ProfileLinePanel::erase(int number) {
    const Busy busy(*this);
    ProfileWriter writer(context());
    const ProfilePlan plan = writer.plan_erase({number});
    if (plan.refusal.empty() && plan.erased.empty())
        return {false, {}, "The controller has no profile " + std::to_string(number) + "."};
    if (!agreed(plan, "Erase?")) return {false, {}, plan.refusal};
    return carry_out(writer, plan, "Erased.");
}

/// A refusal is told in a box of its own; nothing is asked where nothing would change.
bool ProfileLinePanel::agreed(const ProfilePlan& plan, const std::string& question) {
    if (!plan.refusal.empty()) {
        services_.dialogs.message_box(plan.refusal, {}, MessageButtons::Ok,
                                      MessageIcon::Exclamation);
        return false;
    }
    const std::string text = joined(plan_sentences(plan));
    if (!plan.changes_anything()) {
        services_.dialogs.message_box(text);
        return false;
    }
    return services_.dialogs.message_box(text + "\n\n" + question, {},
                                         MessageButtons::YesNoPreferNo) == MessageAnswer::Yes &&
           !cancel_.canceled;
}

LineReport ProfileLinePanel::carry_out(ProfileWriter& writer, const ProfilePlan& plan,
                                       const char* done) {
    const ProfileWriteResult result = writer.write(plan);
    LineReport report{result.completed, result.differences, done};
    if (result.completed) identity_ = writer.identity();
    if (result.completed) return report;
    report.summary = cancel_.gave_up    ? "The controller did not answer: given up."
                     : cancel_.canceled ? "Cancelled."
                                        : "Not all could be written as it should be.";
    for (const std::string& problem : result.problems)
        report.findings.push_back({0, 0, 0, problem});
    if (result.met_another) {
        report.summary = joined(result.problems);
        if (!result.touched.empty())
            services_.dialogs.message_box(report.summary, {}, MessageButtons::Ok,
                                          MessageIcon::Exclamation);
    } else if (!result.touched.empty()) {
        offer_restore(writer, plan, result, report);
    }
    return report;
}

void ProfileLinePanel::offer_restore(ProfileWriter& writer, const ProfilePlan& plan,
                                     const ProfileWriteResult& failed, LineReport& report) {
    std::string text = report.summary;
    for (const std::string& problem : failed.problems)
        text += "\n" + problem;
    text += "\n\nThe controller holds something else than before. Write back what was there?";
    if (services_.dialogs.message_box(text, {}, MessageButtons::YesNo) != MessageAnswer::Yes)
        return;
    const ProfileWriteResult back = writer.restore_previous(plan, failed);
    report.summary += back.completed ? " What was there before is written back."
                                     : " What was there before could not be written back.";
    for (const std::string& problem : back.problems)
        report.findings.push_back({0, 0, 0, problem});
    report.findings.insert(report.findings.end(), back.differences.begin(), back.differences.end());
}

void ProfileLinePanel::ask_to_cancel() {
    if (!busy_ || cancel_.canceled) return;
    const auto answer = services_.dialogs.message_box("Stop the work with the controller?", {},
                                                      MessageButtons::YesNoPreferNo);
    // The work may have ended while the question stood there.
    if (answer == MessageAnswer::Yes) cancel();
}

void ProfileLinePanel::cancel() {
    if (busy_) cancel_.canceled = true;
}

void ProfileLinePanel::list_error(const std::string& text, std::optional<int>) {
    told.raise(text);
}

void ProfileLinePanel::progress(int done, int of) {
    if (ProgressBar1.Max() != of) ProgressBar1.set_Value(0);
    ProgressBar1.set_Max(of);
    ProgressBar1.set_Value(done);
}

bool ProfileLinePanel::ask_retry(const std::string& text) {
    return services_.dialogs.message_box(text, {}, MessageButtons::RetryCancel) ==
           MessageAnswer::Retry;
}

bool ProfileLinePanel::confirm(TransferQuestion, const std::string& text) {
    return services_.dialogs.message_box(text, {}, MessageButtons::YesNoPreferNo) ==
           MessageAnswer::Yes;
}

void ProfileLinePanel::tell(const std::string& text, const std::string& title) {
    services_.dialogs.message_box(text, title);
}

} // namespace pelvan
