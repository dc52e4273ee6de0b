// Starting, holding and watching a profile, as the profile window offers it: the state in words,
// the polling timer, the questions before a command, and the run's picture and record. What is
// sent, and that nothing is sent twice on a guess, is ProfileRunner's.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "forms/lists.h"
#include "platform/services.h"
#include "profile/profile_record.h"
#include "profile/profile_runner.h"
#include "profile/window/profile_picture.h"
#include "profile/window/profile_work.h"
#include "profile/window/run_timeline.h"

namespace pelvan {

class ProfileRunPanel : private RunDesk {
  public:
    /// All must outlive this; `address` is where the controller's address is chosen.
    ProfileRunPanel(Services& services, Link& link, Modbus& modbus, ProfileWork& work,
                    const ComboBox& address);

    Label lbl_State{"lbl_ProfileState", "Not watched."};
    Label lbl_Values{"lbl_ProfileValues"};
    Label lbl_Interval{"lbl_ProfileInterval", "Poll &interval"};
    ComboBox cmbInterval;
    Timer tmr_Poll{"tmr_ProfilePoll"};

    /// Why a profile that was agreed to is not to be started; looks at the controller for it.
    std::function<std::string(int profile)> start_objection;

    /// Asks from which step, says what the profile does and how long, asks, and starts it.
    void start();
    void hold();
    void resume();
    void next();
    void end();

    [[nodiscard]] bool watching() const { return tmr_Poll.running(); }
    /// Polls at once when it begins.
    void set_watching(bool on);
    /// Ends watching; what was watched goes with the next run.
    void stop();
    /// Asks for a file and writes all that was watched.
    void save_record();

    /// A command's reply was lost and the state was not read since.
    [[nodiscard]] bool not_known() const { return runner_ != nullptr && runner_->in_doubt(); }
    /// As read last; nothing before that and while the line is lost.
    [[nodiscard]] std::optional<RunState> state() const;
    [[nodiscard]] int running_profile() const;
    [[nodiscard]] bool has_record() const { return !timeline_.picture().points.empty(); }
    [[nodiscard]] RunDesk& desk() { return *this; }

    /// State, watching or record are others than before.
    Event<> changed;
    /// A profile was started from here.
    Event<> started;

  private:
    [[nodiscard]] const RunPicture& picture() const override { return timeline_.picture(); }
    [[nodiscard]] ProfileRunner& runner();
    [[nodiscard]] double now_ms();
    [[nodiscard]] bool agreed_to_start(const Profile& profile, int step);
    void poll();
    void give(RunCommand command);
    void take(const CommandOutcome& outcome);
    void take(const RunPoll& poll);
    void take_reading(const RunReading& reading);
    void show_values(const RunReading& reading);
    void begin_run(const RunReading& reading);
    void add(const std::optional<RunReading>& reading);
    void pace();

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    ProfileWork& work_;
    const ComboBox& address_;
    std::unique_ptr<ProfileRunner> runner_;
    int runner_model_ = 0;
    std::string runner_address_;
    std::optional<RunReading> reading_; // the last one that was whole
    bool lost_ = true;                  // it is not of now
    int started_step_ = 1;              // of the run that was begun from here
    ProfileRecord record_;
    RunTimeline timeline_;
    int tracked_ = 0; // profile that the record is of; 0: none runs
    SteadyTime time_;
};

} // namespace pelvan
