// The profile registers of a controller on the line, as reading and writing profiles need them: a
// profile and a step are selected, the selected ones answer. Every number comes from a whole reply,
// and what goes wrong is a sentence with the place and the register. Where the selection is in
// doubt `ProfileAccess` makes it again. What is read or written, and in which order, is the
// caller's.
#pragma once

#include "profile/profile_difference.h"
#include "registers/profile_access.h"

namespace pelvan {

/// At the end of the work: why what was read may not count; empty when nothing speaks against it.
/// Blocks as `ControllerAccess::in_step`.
[[nodiscard]] std::string doubt_at_end(ControllerAccess& access);

/// A number of the controller, or the sentence that says why there is none.
struct NumberRead {
    std::optional<int> value;
    std::string problem;
};

/// Sentences are empty when all went well. Where no reply comes the user is asked; when he gives up
/// the work is cancelled.
class ProfileSelection {
  public:
    /// Both are borrowed for as long as this lives.
    ProfileSelection(TransferRun& run, const ProfileFormat& format);

    [[nodiscard]] const ProfileFormat& format() const { return format_; }
    [[nodiscard]] TransferRun& run() { return run_; }

    /// Highest profile number in use.
    [[nodiscard]] NumberRead highest();
    /// Profile that runs, is held or waits; 0 when none does.
    [[nodiscard]] NumberRead running_profile();

    /// Selects a profile, and with it its step 1.
    [[nodiscard]] std::string select(int profile);
    [[nodiscard]] std::string select_step(int step);
    /// Steps of the selected profile, 0 when there is no such profile.
    [[nodiscard]] NumberRead step_count();
    /// Whether the selected profile is still the controller's: somebody at its keys may have chosen
    /// another one meanwhile.
    [[nodiscard]] std::string confirm();

    /// A register of the selected profile and step.
    [[nodiscard]] NumberRead read(const ProfileField& field);
    /// Writes one; a write whose reply is missing or damaged is repeated.
    [[nodiscard]] std::string write(const ProfileField& field, int raw);

    /// Creates or erases the profile, once: a lost reply is told by the number of steps, and only
    /// an action that did not happen is repeated.
    [[nodiscard]] std::string create(int profile);
    [[nodiscard]] std::string erase(int profile);
    /// Inserts steps into the selected profile until it has so many, none twice.
    [[nodiscard]] std::string insert_steps(int steps);

  private:
    [[nodiscard]] std::string select_register(const ProfileField& field, int number);
    [[nodiscard]] std::string act(ProfileAction action, int profile, int steps_after);
    [[nodiscard]] std::string insert_step(int steps_before);
    [[nodiscard]] std::string sentence(const Reply& reply, const std::string& what,
                                       const ProfileField& field) const;
    [[nodiscard]] std::string write_sentence(const Reply& reply, const ProfileField& field,
                                             int raw) const;
    [[nodiscard]] bool ask_retry();

    TransferRun& run_;
    const ProfileFormat& format_;
    ProfileAccess access_;
    int profile_ = 0; // selected
    int step_ = 0;    // selected; 0: whatever step it is
};

} // namespace pelvan
