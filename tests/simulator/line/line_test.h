// A line to a simulated device, its time in the test's hands.
#pragma once

#include <gtest/gtest.h>

#include "simulator/line/simulator_registry.h"
#include "support/fake_time.h"
#include "support/frames.h"

namespace pelvan::simulator {

using namespace pelvan::testing;

class LineTest : public ::testing::Test {
  protected:
    LineTest() { tick.step_ms = 0; }

    void open(const std::string& device, LineSettings settings = {}) {
        line = registry.open(device, settings);
    }
    /// All that has arrived when so much time has passed.
    std::string taken(double wait_ms = 0) {
        tick.advance(wait_ms);
        std::string buffer;
        EXPECT_TRUE(line->read_into(buffer));
        return buffer;
    }
    std::string say(const std::string& request, double wait_ms = 600) {
        line->write(request);
        return taken(wait_ms);
    }

    FakeTick tick{4294967290.0}; // wraps during every test
    SimulatorRegistry registry{tick};
    std::unique_ptr<SerialLine> line;
    const std::string read_model = frame("01 03 00 00 00 01");
    const std::string model_reply = frame("01 03 02 02 E6");
};

} // namespace pelvan::simulator
