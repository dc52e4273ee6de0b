// The terminal's commands. Each declares its options and, when it was chosen, leaves a function to
// run.
#pragma once

#include <CLI/CLI.hpp>

#include "terminal/terminal.h"

namespace pelvan {

/// Runs after parsing; returns the exit code.
using ChosenCommand = std::function<int(TerminalEnvironment&)>;

void add_send_command(CLI::App& cli, ChosenCommand& chosen);
void add_ports_command(CLI::App& cli, ChosenCommand& chosen);
void add_simulate_command(CLI::App& cli, ChosenCommand& chosen);
void add_demo_command(CLI::App& cli, ChosenCommand& chosen);
void add_listen_command(CLI::App& cli, ChosenCommand& chosen);
void add_log_command(CLI::App& cli, ChosenCommand& chosen);
/// save, restore and compare.
void add_transfer_commands(CLI::App& cli, ChosenCommand& chosen);

/// Sends what stands in the Modbus panel and prints both renderings, one line each.
int send_and_print(TerminalApplication& terminal, TerminalEnvironment& environment,
                   DataFormat format);

} // namespace pelvan
