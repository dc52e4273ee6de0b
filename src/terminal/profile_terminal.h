// What the commands for ramp profiles share: their options, the way to the controller, and how
// results are shown, as text for people or as one JSON object for programs.
#pragma once

#include "profile/profile_model.h"
#include "profile/run_reading.h"
#include "terminal/json.h"
#include "terminal/terminal_listener.h"

namespace pelvan {

struct ProfileOptions {
    int address = 1;
    int retries = 0;
    bool json = false;
    bool yes = false;
    std::string file;
    std::optional<int> model;
    std::optional<int> profile;
    std::vector<int> profiles;
    std::optional<int> to;
    int step = 1;
    std::optional<double> steepest;
    bool unchecked = false;
    bool put_back = false;
    double interval = 1; // seconds
    int count = 0;       // 0: until interrupted
    std::string csv;
    bool curve = false;
};

/// Where results and problems go.
class ProfileReport {
  public:
    ProfileReport(TerminalEnvironment& environment, bool json)
        : out_(environment.out), err_(environment.err), json_(json) {}

    /// A line for people; programs get `set`.
    void say(const std::string& line);
    void set(const std::string& key, Json value) { object_.set(key, std::move(value)); }
    /// A line of standard error; the command fails by it.
    void problem(const std::string& sentence);
    void problems(const std::vector<std::string>& sentences);
    /// A JSON object of its own, at once.
    void show_now(const Json& object);
    [[nodiscard]] bool failed() const { return !problems_.empty(); }

    /// Prints the object where JSON is wanted; the exit code.
    int end();

  private:
    std::ostream& out_;
    std::ostream& err_;
    bool json_;
    bool shown_ = false;
    std::vector<std::string> problems_;
    Json object_ = Json::object();
};

/// A command that works on a controller.
class ProfileTerminal : public TerminalListener {
  public:
    ProfileTerminal(TerminalApplication& terminal, TerminalEnvironment& environment,
                    const ProfileOptions& given);

    [[nodiscard]] TransferContext context() {
        return context_of(app().profile_link, options.address);
    }
    /// The controller's model; what is wrong with it is a problem.
    [[nodiscard]] std::optional<ProfileModel> read_model();

    /// As `TerminalApplication::work_went_on`.
    void work_went_on() { terminal_.work_went_on(); }

    const ProfileOptions& options;
    TerminalEnvironment& environment;
    ProfileReport report;

  private:
    TerminalApplication& terminal_;
};

[[nodiscard]] Json profile_json(const ProfileFormat& format, const Profile& profile);
[[nodiscard]] Json reading_json(const RunReading& reading);
/// A line of head and a line for each step.
[[nodiscard]] std::vector<std::string> profile_table(const ProfileFormat& format,
                                                     const Profile& profile);

// The commands; each fills the report.
void profile_list(ProfileTerminal& terminal);
void profile_show(ProfileTerminal& terminal);
void profile_write(ProfileTerminal& terminal);
void profile_copy(ProfileTerminal& terminal);
void profile_erase(ProfileTerminal& terminal);
void profile_start(ProfileTerminal& terminal);
void profile_command(ProfileTerminal& terminal, RunCommand command);
void profile_watch(ProfileTerminal& terminal);
/// Needs no controller: the sequence files are those of the directory.
void profile_check(const ProfileOptions& options, const std::string& directory,
                   ProfileReport& report);

} // namespace pelvan
