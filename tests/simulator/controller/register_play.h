// A controller whose registers are written and read by a line of text.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>

#include "simulator/controller/controller.h"

namespace pelvan::simulator {

class RegisterPlay : public ::testing::Test {
  protected:
    /// Steps on the registers one after another: "4000=5" is written and "4017?-150" is what is
    /// read; "!2" or "!3" behind it, or instead of the value, is the exception that comes. "@90" is
    /// the 90th second.
    void play(const std::string& steps) {
        std::istringstream in(steps);
        for (std::string step; in >> step;) {
            if (step[0] == '@') {
                controller.advance(1000 * std::stod(step.substr(1)));
                continue;
            }
            const auto sign = step.find_first_of("=?");
            const auto refusal = std::min(step.find('!'), step.size());
            const auto number = static_cast<std::uint16_t>(std::stoi(step));
            const bool writes = step[sign] == '=';
            const int wanted = sign + 1 < refusal ? std::stoi(step.substr(sign + 1)) : 0;
            std::int16_t value = writes ? static_cast<std::int16_t>(wanted) : std::int16_t{0};
            const ExceptionCode answer =
                writes ? controller.write(number, value) : controller.read(number, value);
            EXPECT_EQ(static_cast<int>(answer),
                      refusal < step.size() ? std::stoi(step.substr(refusal + 1)) : 0)
                << step << " of " << steps;
            EXPECT_EQ(value, wanted) << step << " of " << steps;
        }
    }
    void repeat(int from, int to, const std::string& before, const std::string& after) {
        for (; from <= to; ++from)
            play(before + std::to_string(from) + after);
    }

    Controller controller{742};
};

} // namespace pelvan::simulator
