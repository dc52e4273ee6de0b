// The options of the commands for ramp profiles.
#include "terminal/commands.h"
#include "terminal/profile_terminal.h"

namespace pelvan {
namespace {

constexpr int kMaxAddress = 247;
constexpr int kMaxNumber = 32767; // of a profile or step; the controller has fewer

using Options = std::shared_ptr<ProfileOptions>;
using Work = std::function<void(ProfileTerminal&)>;

/// Runs a command on a controller; the exit code.
int run_work(const ProfileOptions& options, const Work& work, TerminalEnvironment& environment) {
    TerminalApplication terminal(environment);
    if (!terminal.start()) return exit_code::kFailed;
    ProfileTerminal session(terminal, environment, options);
    try {
        work(session);
    } catch (const RunTimeError& error) {
        show_error_message(terminal.app().services.dialogs, error.number(), error.subject());
        session.report.problem("Not completed.");
    }
    return session.report.end();
}

/// Adds the commands below `profile`, which share their options.
class Commands {
  public:
    Commands(CLI::App& cli, ChosenCommand& chosen)
        : chosen_(chosen), options_(std::make_shared<ProfileOptions>()),
          profile_(*cli.add_subcommand(
              "profile", "Read, check, write, start and watch a controller's ramp profiles")) {
        profile_.require_subcommand(1);
        profile_.add_option("--address", options_->address, "Controller address, 1 to 247")
            ->check(CLI::Range(1, kMaxAddress))
            ->capture_default_str();
        profile_
            .add_option("--retries", options_->retries,
                        "How often to try again, a second later, when the controller stays silent")
            ->check(whole_number_from(0))
            ->capture_default_str();
        profile_.add_flag("--json", options_->json, "Print the result as JSON");
    }

    CLI::App& add(const std::string& name, const std::string& text, const Work& work) {
        CLI::App* command = profile_.add_subcommand(name, text);
        command->callback([this_options = options_, work, &chosen = chosen_] {
            chosen = [this_options, work](TerminalEnvironment& environment) {
                return run_work(*this_options, work, environment);
            };
        });
        return *command;
    }
    void add_list() { add("list", "List the profiles with their total times", profile_list); }
    void add_show() {
        CLI::App& command =
            add("show", "Show a profile's steps, or those of all profiles", profile_show);
        add_number(command, "profile", "Number of the profile");
        command.add_option("--file", options_->file, "Save them as text instead");
        add_yes(command, "Overwrite a file that is there");
    }
    void add_check() {
        CLI::App* command = profile_.add_subcommand(
            "check", "Say what is wrong with the profiles of a file; needs no controller");
        add_file(*command);
        command->add_option("--model", options_->model,
                            "Model of the controller, where the file does not say it");
        add_steepest(*command);
        command->callback([options = options_, &chosen = chosen_] {
            chosen = [options](TerminalEnvironment& environment) {
                ProfileReport report(environment, options->json);
                profile_check(*options, environment.directory, report);
                return report.end();
            };
        });
    }
    void add_write() {
        CLI::App& command =
            add("write", "Write the profiles of a file, read them back and compare", profile_write);
        add_file(command);
        add_number(command, "--profile", "Write this one of the file's profiles alone");
        command.add_option("--to", options_->to, "Write it under this number")
            ->check(CLI::Range(1, kMaxNumber));
        add_steepest(command);
        add_unchecked(command, "Write in spite of what is found wrong");
        add_change(command);
    }
    void add_copy() {
        CLI::App& command = add("copy", "Copy a profile to another number", profile_copy);
        add_number(command, "profile", "Number of the profile")->required();
        command.add_option("to", options_->to, "Number of the copy")
            ->required()
            ->check(CLI::Range(1, kMaxNumber));
        add_change(command);
    }
    void add_erase() {
        CLI::App& command = add("erase", "Erase profiles", profile_erase);
        command.add_option("profiles", options_->profiles, "Numbers of the profiles")
            ->required()
            ->check(CLI::Range(1, kMaxNumber));
        add_change(command);
    }
    void add_start() {
        CLI::App& command =
            add("start", "Start a profile, after saying what it will do", profile_start);
        add_number(command, "profile", "Number of the profile")->required();
        command.add_option("--step", options_->step, "Step to start at")
            ->check(CLI::Range(1, kMaxNumber))
            ->capture_default_str();
        add_steepest(command);
        add_unchecked(command, "Start in spite of what is found wrong");
        add_yes(command, "Start without asking");
    }
    void add_command(RunCommand command, const std::string& text) {
        add(std::string(run_word(command)), text,
            [command](ProfileTerminal& terminal) { profile_command(terminal, command); });
    }
    void add_watch() {
        CLI::App& command =
            add("watch", "Show what runs, again and again; Ctrl+C ends", profile_watch);
        command.add_option("--interval", options_->interval, "Seconds between two readings")
            ->check(is_number())
            ->check(CLI::Range(0.1, 3600.0))
            ->capture_default_str();
        command.add_option("--count", options_->count, "End after so many readings")
            ->check(whole_number_from(1));
        command.add_option("--csv", options_->csv, "Write the readings into this file, too");
        command.add_flag("--curve", options_->curve,
                         "Read the profile that runs, and tell the deviation from its curve");
        add_yes(command, "Overwrite a file that is there");
    }

  private:
    CLI::Option* add_number(CLI::App& command, const std::string& name, const std::string& text) {
        return command.add_option(name, options_->profile, text)->check(CLI::Range(1, kMaxNumber));
    }
    void add_file(CLI::App& command) {
        command.add_option("file", options_->file, "File with profiles, or a whole setup file")
            ->required()
            ->check(CLI::ExistingFile);
    }
    void add_yes(CLI::App& command, const std::string& text) {
        command.add_flag("--yes", options_->yes, text);
    }
    void add_steepest(CLI::App& command) {
        command
            .add_option("--steepest", options_->steepest,
                        "Degrees a minute that no ramp may exceed")
            ->check(is_number());
    }
    void add_unchecked(CLI::App& command, const std::string& text) {
        command.add_flag("--unchecked", options_->unchecked, text);
    }
    void add_change(CLI::App& command) {
        add_yes(command, "Change the controller without asking");
        command.add_flag("--put-back", options_->put_back,
                         "When something goes wrong, write back what was there before");
    }

    ChosenCommand& chosen_;
    Options options_;
    CLI::App& profile_;
};

} // namespace

void add_profile_command(CLI::App& cli, ChosenCommand& chosen) {
    Commands commands(cli, chosen);
    commands.add_list();
    commands.add_show();
    commands.add_check();
    commands.add_write();
    commands.add_copy();
    commands.add_erase();
    commands.add_start();
    commands.add_command(RunCommand::Hold, "Hold the profile that runs");
    commands.add_command(RunCommand::Resume, "Let the profile that is held go on");
    commands.add_command(RunCommand::Next, "End the step that runs at once");
    commands.add_command(RunCommand::End, "End the profile that runs");
    commands.add_watch();
}

} // namespace pelvan
