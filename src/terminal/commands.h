// The terminal's commands. Each declares its options and, when it was chosen, leaves a function to
// run.
#pragma once

#include <CLI/CLI.hpp>
#include <map>
#include <string>

#include "terminal/terminal.h"

namespace pelvan {

/// Runs after parsing; returns the exit code.
using ChosenCommand = std::function<int(TerminalEnvironment&)>;

void add_send_command(CLI::App& cli, ChosenCommand& chosen);
void add_verify_port_command(CLI::App& cli, ChosenCommand& chosen);
void add_ports_command(CLI::App& cli, ChosenCommand& chosen);
void add_simulate_command(CLI::App& cli, ChosenCommand& chosen);
void add_demo_command(CLI::App& cli, ChosenCommand& chosen);
void add_listen_command(CLI::App& cli, ChosenCommand& chosen);
void add_log_command(CLI::App& cli, ChosenCommand& chosen);
/// save, restore and compare.
void add_transfer_commands(CLI::App& cli, ChosenCommand& chosen);

/// The protocols under the names that options have for them, "full", "modbus", "xon", "tellura".
[[nodiscard]] const std::map<std::string, int>& protocol_names();

/// Sends what stands in the protocol's panel and prints both lines of the history. Exit code.
int send_and_print(TerminalApplication& terminal, TerminalEnvironment& environment,
                   int protocol_number);

} // namespace pelvan
