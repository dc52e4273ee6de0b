// The terminal's commands. Each declares its options and, when it was chosen, leaves a function to
// run.
#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

#include "terminal/terminal.h"

namespace pelvan {

/// Runs after parsing; returns the exit code.
using ChosenCommand = std::function<int(TerminalEnvironment&)>;

/// What a command line asks for.
struct AskedFor {
    ChosenCommand command; // none: the windows should open, or there is a code
    /// Help was printed, or the arguments were refused in a line on standard error.
    std::optional<int> code;
    std::unique_ptr<CLI::App> parser; // the command looks at its options
};

/// Reads the arguments (without the program's name) and runs nothing. Sets `environment.directory`.
[[nodiscard]] AskedFor read_arguments(const std::vector<std::string>& arguments,
                                      TerminalEnvironment& environment);

void add_send_command(CLI::App& cli, ChosenCommand& chosen);
void add_verify_port_command(CLI::App& cli, ChosenCommand& chosen);
void add_ports_command(CLI::App& cli, ChosenCommand& chosen);
void add_simulate_command(CLI::App& cli, ChosenCommand& chosen);
void add_demo_command(CLI::App& cli, ChosenCommand& chosen);
void add_bad_requests_command(CLI::App& cli, ChosenCommand& chosen);
void add_listen_command(CLI::App& cli, ChosenCommand& chosen);
void add_scan_command(CLI::App& cli, ChosenCommand& chosen);
void add_log_command(CLI::App& cli, ChosenCommand& chosen);
/// save, restore and compare.
void add_transfer_commands(CLI::App& cli, ChosenCommand& chosen);
/// profile list, show, check, write, copy, erase, start, hold, resume, next, end and watch.
void add_profile_command(CLI::App& cli, ChosenCommand& chosen);

/// What an option may be set to: its words, and what each stands for.
template <class Value> using Choices = std::vector<std::pair<std::string, Value>>;

/// An option that takes one of the words, in any case. The parser's own transformer would also take
/// the number behind a word, and its refusal shows the program's inside.
template <class Value>
CLI::Option* add_choice(CLI::App& command, const std::string& name, Value& target,
                        const Choices<Value>& choices, const std::string& description) {
    const auto choose = [&target, choices, name](const std::string& text) {
        std::string words;
        for (std::size_t i = 0; i < choices.size(); ++i) {
            const auto& [word, value] = choices[i];
            if (CLI::ignore_case(text) == word) {
                target = value;
                return;
            }
            words += (i == 0 ? "" : i + 1 == choices.size() ? " or " : ", ") + word;
        }
        throw CLI::ValidationError(name, "\"" + text + "\" is no choice, choose " + words);
    };
    return command.add_option_function<std::string>(name, choose, description);
}

/// A check of an option that takes a number with a fraction: the parser reads "nan" as one, and no
/// range of its own refuses that.
[[nodiscard]] CLI::Validator is_number();
/// A check of an option that counts something: refuses what is no whole number from `least` on.
[[nodiscard]] CLI::Validator whole_number_from(int least);

/// The protocols under the names that options have for them.
[[nodiscard]] const Choices<int>& protocol_names();

/// Prints the command and its reply, or why there is none. Whether there is one, whatever it says.
bool print_outcome(const SendOutcome& outcome, TerminalEnvironment& environment);

} // namespace pelvan
