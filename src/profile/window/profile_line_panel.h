// Profiles out of a controller and into it, as the profile window offers it: address, progress and
// cancel, and the questions on the way. Work runs to its end inside the call that began it and lets
// the window's events run after every register; what becomes of its result is the caller's.
#pragma once

#include <functional>
#include <string>

#include "forms/lists.h"
#include "platform/services.h"
#include "profile/profile_writer.h"

namespace pelvan {

/// What is to be told of work on the line, and where it belongs.
struct LineReport {
    bool completed = false;
    std::vector<ProfileDifference> findings; // profile 0: of no profile
    std::string summary;                     // a sentence
};

class ProfileLinePanel : private TransferListener {
  public:
    ProfileLinePanel(Services& services, Link& link, Modbus& modbus);

    Label lbl_Address{"lbl_ProfileAddress", "Device &Address"};
    ComboBox cmbAddress;
    ProgressBar ProgressBar1{"pgb_Profile"};
    Button cmdCancel{"cmdProfileCancel", "Cance&l", "Stop reading or writing (Escape)."};

    /// Whether no request can be built for the address, which is told then and can be mended.
    [[nodiscard]] bool address_refused();
    /// All blocks for as long as the exchanges take.
    [[nodiscard]] ProfileReadResult read();
    /// Says what will change, asks, writes, reads back and compares; offers to write back what was
    /// there before when that did not complete. `model` is the one that the profiles were made for.
    [[nodiscard]] LineReport write(int model, const ProfileSet& wanted);
    [[nodiscard]] LineReport erase(int number);
    /// Reads what a run of the profile can reach; why it is not what was read or written last,
    /// `held`, in the same controller. Empty when it is.
    [[nodiscard]] std::string changed_since_read(int number, const ProfileSet& held);

    [[nodiscard]] bool busy() const { return busy_; }
    /// Asks whether to stop the work, which then ends at its next register.
    void ask_to_cancel();
    /// Stops without asking.
    void cancel();
    [[nodiscard]] bool canceled() const { return cancel_.canceled; }

    /// Work began or ended.
    Event<> busy_changed;
    /// A step of the work, for the message line.
    Event<const std::string&> told;

  private:
    class Busy;

    [[nodiscard]] TransferContext context();
    [[nodiscard]] bool agreed(const ProfilePlan& plan, const std::string& question);
    [[nodiscard]] LineReport carry_out(ProfileWriter& writer, const ProfilePlan& plan,
                                       const char* done);
    void offer_restore(ProfileWriter& writer, const ProfilePlan& plan,
                       const ProfileWriteResult& failed, LineReport& report);

    void begun() override {}
    void working() override {}
    void log(const std::string& text) override { told.raise(text); }
    void list_error(const std::string& text, std::optional<int> position) override;
    void clear_errors() override {}
    void progress(int done, int of) override;
    void let_events_run() override { services_.desktop.let_events_run(); }
    bool ask_retry(const std::string& text) override;
    bool confirm(TransferQuestion question, const std::string& text) override;
    void tell(const std::string& text, const std::string& title) override;
    std::optional<std::string> choose_file_to_save(const std::string&) override { return {}; }

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    bool busy_ = false;
    CancelFlag cancel_;
    Identity identity_; // of the controller that was read or written last
};

} // namespace pelvan
