// What lives on behind a line while ports open and close: a controller, its address, how long it
// thinks, and the course of its faults.
#pragma once

#include "simulator/controller.h"
#include "simulator/faults.h"

namespace pelvan::simulator {

struct Station {
    Controller controller;
    unsigned address = 1;
    double delay_ms = 0;
    FaultSource faults;
};

} // namespace pelvan::simulator
