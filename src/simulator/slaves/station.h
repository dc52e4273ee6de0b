// What lives on behind a line while ports open and close: a controller, its address, how long it
// thinks, the course of its faults and the error that its last refused command left.
#pragma once

#include "simulator/controller/controller.h"
#include "simulator/slaves/faults.h"

namespace pelvan::simulator {

struct Station {
    Controller controller;
    unsigned address = 1;
    double delay_ms = 0;
    bool queues = false; // keeps requests that come before its reply, and answers them in turn
    FaultSource faults;
    int text_error = 0;  // of the last refused text command
    bool echoes = false; // the line gives back what the host sends
    /// Behind so many characters of a line of text XOFF is sent, and XON after a time; what comes
    /// meanwhile, but for two characters, is lost. 0: never.
    int xoff_after = 0;
    double xoff_ms = 0;
};

} // namespace pelvan::simulator
