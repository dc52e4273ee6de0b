#include <gtest/gtest.h>

#include <sstream>

#include "simulator/controller/controller.h"

using namespace pelvan::simulator;

namespace {

class ProfilesTest : public ::testing::Test {
  protected:
    /// Steps on the registers one after another: "4000=5" is written and "4017?-150" is what is
    /// read; "!2" or "!3" behind it, or instead of the value, is the exception that comes.
    void play(const std::string& steps) {
        std::istringstream in(steps);
        for (std::string step; in >> step;) {
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

} // namespace

TEST_F(ProfilesTest, ANumberNeedsTheOnesBeforeItAndKeepsItselfWhenTheyGo) {
    play("4000=5!3");
    repeat(1, 5, "4000=", " 4002=1");
    play("4003=0 4017=-150");
    repeat(1, 4, "4000=", " 4002=2 4042?0");
    play("4041?5 4000=5 4017?-150");
    play("4000=3 4002=1 4000=5 4002=2"); // an erased number can be used again
    play("4041?3 4002=1!3 4000=5!3");    // the numbers above are free again
}

TEST_F(ProfilesTest, StepsHaveTheRegistersOfTheirKind) {
    play("4003?!2 4001=1!2");
    play("4000=1 4002=1 4002=1!3");                   // is there already,
    play("4003?0 4003=1!3 4002=4!3");                 // of an end step alone, which stays
    play("4002=3 4040?2 4003?3 4007?!2 4003=0!3");    // a soak step before it
    play("4003=1 4007=-2000 4007=-2001!3 4012=10!2"); // made a ramp step
    play("4007?-2000 4001=2 4007?!2 4001=3!3 4001=1 4002=4 4040?1");
    play("4050=66 4050?66 4059=31!3 4060=65!2"); // the name
}

TEST_F(ProfilesTest, LimitsHold) {
    repeat(1, 40, "4000=", " 4002=1");
    play("4000=41!3 4000=0!3");
    for (int step = 2; step <= 50; ++step)
        play("4002=3");
    play("4002=3!3 4002=5!3 4040?50");
}
