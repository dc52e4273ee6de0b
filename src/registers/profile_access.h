// The profile registers of a controller. They show one profile and one step of it at a time: both
// are selected by writing, and an action is carried out on the selected profile.
#pragma once

#include <optional>

#include "registers/sequence_file.h"
#include "registers/transfer_run.h"

namespace pelvan {

enum class ProfilePresence {
    GivenUp,
    /// The controller did not take the number.
    NotSelected,
    Absent,
    Present
};

/// Where a call ends without a reply, the user gave up, and the transfer is cancelled.
/// While it lives, a controller that was silent is asked which profile and step it shows before the
/// next request to a profile's register, and they are selected again where they are others.
class ProfileAccess : private SelectionKeeper {
  public:
    ProfileAccess(TransferRun& run, const ProfileRegisters& registers)
        : run_(run), registers_(registers), keeper_before_(run.access.set_keeper(this)) {}
    ProfileAccess(const ProfileAccess&) = delete;
    ProfileAccess& operator=(const ProfileAccess&) = delete;
    ~ProfileAccess() override { run_.access.set_keeper(keeper_before_); }

    [[nodiscard]] const ProfileRegisters& registers() const { return registers_; }

    /// Writes a selecting register until it is accepted or refused, up to five times, without
    /// recording how it ended; asks the user while no reply comes.
    [[nodiscard]] Reply select_register(float register_number, float value);
    /// As `select_register`, but asks nobody and cancels nothing.
    [[nodiscard]] Reply try_select(float register_number, float value);
    /// As `select_register`, and records what went wrong.
    Reply select_recorded(float register_number, float value);

    /// Selects the profile and tells whether it is there.
    [[nodiscard]] ProfilePresence Profile_Exists(float number);
    /// Steps of the selected profile, 0 when there is no such profile.
    [[nodiscard]] std::optional<int> step_count();

    /// Carries an action out on the selected profile, once; nothing is done where there is nothing
    /// to create or to erase.
    [[nodiscard]] Reply act(ProfileAction action);
    /// As `act`, and records a refusal; asks the user while no reply comes.
    Reply act_recorded(ProfileAction action);
    void record_refusal(ProfileAction action, const Reply& reply);

  private:
    Kept look_after(float register_number) override;
    [[nodiscard]] bool select_again();
    void forget(float register_number);
    [[nodiscard]] Reply act_once(ProfileAction action, int steps_before);

    TransferRun& run_;
    const ProfileRegisters registers_;
    SelectionKeeper* const keeper_before_;
    // As accepted by the controller; 0 for none. To select a profile selects a step that nobody
    // asked for, which is not looked after.
    float profile_ = 0;
    float step_ = 0;
};

} // namespace pelvan
