// The program where it was built without windows.
#include <iostream>

#include "terminal/terminal.h"

int main(int argc, char** argv) {
    pelvan::ApplicationDirectory directory;
    if (const auto code = pelvan::run_terminal_process(argc, argv, directory)) return *code;
    std::cerr << "pelvan7: built without windows; name a command (pelvan7 --help)\n";
    return pelvan::exit_code::kBadOption;
}
