// The ramp profiles of a controller, to a setup file and back. The controller's profile registers
// show one profile and one step of it at a time: both are selected by writing, so a profile in a
// setup file is a run of register lines that begins with the number of the profile:
//     4000 2      the profile that the following lines are of
//     4002 1      created (it has its end step then)
//     4002 3      a step inserted, once for each step before the end step
//     4050 ...    registers of the whole profile
//     4001 1      the step that the following lines are of
//     4003 3      its type, then the registers that steps of this type have
// Profiles are numbered without gaps, so restoring number 5 needs 1 to 4 in place first.
#pragma once

#include <functional>
#include <set>
#include <string>

#include "transfer/controller_access.h"
#include "transfer/sequence_file.h"
#include "transfer/setup_file.h"

namespace pelvan {

class ProfileTransfer {
  public:
    using Log = std::function<void(const std::string&)>;

    /// `log` gets every step, and lets the window's events run.
    ProfileTransfer(Services& services, ControllerAccess& access, TransferRun& run,
                    ProgressBar& progress, Log log)
        : services_(services), access_(access), run_(run), progress_(progress),
          log_(std::move(log)) {}

    /// Reads all profiles into the open setup file, as the model's .pds says. Cancels the transfer
    /// when that file is missing or wrong, and when the user gives up.
    void DownLoadProfiles(TextWriter& setup, const std::string& model);

    /// Before an upload: forgets what the last one did.
    void begin_upload(const ProfileRegisters& registers);
    /// Erases every profile that the controller holds; false when the user gives up.
    [[nodiscard]] bool clear_profiles(TextWriter& errors);

    enum class Restored { Accepted, Refused, Canceled };
    [[nodiscard]] bool is_profile_line(float register_number) const {
        return registers_.contains(register_number);
    }
    /// Writes one line of the profile section.
    Restored restore_line(const SetupLine& line, TextWriter& errors);
    /// Erases the profiles that only the numbering needed; one that cannot be erased is told.
    void erase_created();

    /// Selects the profile; nothing when the user gives up, which cancels the transfer, else
    /// whether it is there.
    [[nodiscard]] std::optional<bool> Profile_Exists(float number);
    /// Steps of the selected profile, 0 when there is no such profile; nothing when the user gives
    /// up, which cancels the transfer.
    [[nodiscard]] std::optional<int> step_count();
    /// Writes a selecting register until it is accepted or refused, up to five times, without
    /// recording how it ended; asks the user while no reply comes. NoReply when the user gives up,
    /// which cancels the transfer.
    [[nodiscard]] ControllerAccess::Outcome select_register(float register_number, float value);

  private:
    [[nodiscard]] ControllerAccess::Outcome try_select(float register_number, float value);
    /// Selects and records what went wrong.
    Restored select_recorded(float register_number, float value, TextWriter& errors);
    /// Values of the action register.
    enum class Action { Create = 1, Erase = 2, InsertStep = 3 };

    [[nodiscard]] ControllerAccess::Outcome act(Action action, int steps_before);
    [[nodiscard]] ControllerAccess::Outcome create_selected();
    [[nodiscard]] ControllerAccess::Outcome erase_selected();
    [[nodiscard]] bool CreateDeleteProfile(int number, TextWriter& errors);
    [[nodiscard]] bool fill_numbers_below(int number, TextWriter& errors);
    [[nodiscard]] ControllerAccess::Outcome erase_filler(int number);
    /// Acts and records a refusal; asks the user while no reply comes.
    Restored act_recorded(Action action, TextWriter& errors);
    Restored select_line(const SetupLine& line, TextWriter& errors);
    Restored action_line(const SetupLine& line, TextWriter& errors);
    Restored plain_line(const SetupLine& line, TextWriter& errors);
    [[nodiscard]] ControllerAccess::Outcome insert_step();

    void download_profile(const ProfileSequence& sequence, int number, TextWriter& setup,
                          TextWriter& errors);
    void download_step(const ProfileSequence& sequence, int step, TextWriter& setup,
                       TextWriter& errors);
    void download_register(float register_number, TextWriter& setup);
    [[nodiscard]] bool select_for_reading(float register_number, int value, TextWriter& errors);
    void write_line(TextWriter& setup, float register_number, const std::string& value);

    Services& services_;
    ControllerAccess& access_;
    TransferRun& run_;
    ProgressBar& progress_;
    Log log_;
    ProfileRegisters registers_;
    std::set<int> present_; // profiles known to be there
    std::set<int> created_; // profiles that hold nothing from before the upload
    std::set<int> in_file_;
    bool selected_ = false; // the file's current profile is the controller's
    bool step_selected_ = false;
};

} // namespace pelvan
