#include <gtest/gtest.h>

#include "simulator/controller.h"

using namespace pelvan::simulator;

namespace {

class ProfilesTest : public ::testing::Test {
  protected:
    /// 0 when written, else the exception.
    int write(int number, int value) {
        return static_cast<int>(
            controller.write(static_cast<std::uint16_t>(number), static_cast<std::int16_t>(value)));
    }
    /// The value, or the exception as a number from -1002 down.
    int read(int number) {
        std::int16_t value = 0;
        const Answer answer = controller.read(static_cast<std::uint16_t>(number), value);
        return answer == Answer::Ok ? value : -1000 - static_cast<int>(answer);
    }
    void create(int profile) {
        ASSERT_EQ(write(4000, profile), 0);
        ASSERT_EQ(write(4002, 1), 0);
    }

    Controller controller{742};
};

constexpr int kNoRegister = -1002;

} // namespace

TEST_F(ProfilesTest, ANumberNeedsTheOnesBeforeItAndKeepsItselfWhenTheyGo) {
    EXPECT_EQ(write(4000, 5), 3);
    for (int profile = 1; profile <= 5; ++profile)
        create(profile);
    ASSERT_EQ(write(4003, 0), 0);
    ASSERT_EQ(write(4017, -150), 0);
    for (int profile = 1; profile <= 4; ++profile) {
        EXPECT_EQ(write(4000, profile), 0);
        EXPECT_EQ(write(4002, 2), 0);
        EXPECT_EQ(read(4042), 0);
    }
    EXPECT_EQ(read(4041), 5);
    EXPECT_EQ(write(4000, 5), 0);
    EXPECT_EQ(read(4017), -150);
    create(3); // an erased number can be used again
    EXPECT_EQ(write(4000, 5), 0);
    EXPECT_EQ(write(4002, 2), 0);
    EXPECT_EQ(read(4041), 3); // the numbers above are free again
    EXPECT_EQ(write(4002, 1), 3);
    EXPECT_EQ(write(4000, 5), 3);
}

TEST_F(ProfilesTest, StepsHaveTheRegistersOfTheirKind) {
    EXPECT_EQ(read(4003), kNoRegister);
    EXPECT_EQ(write(4001, 1), 2);
    create(1);
    EXPECT_EQ(write(4002, 1), 3); // is there already
    EXPECT_EQ(read(4003), 0);     // an end step alone
    EXPECT_EQ(write(4003, 1), 3); // which stays one
    EXPECT_EQ(write(4002, 4), 3); // and stays
    ASSERT_EQ(write(4002, 3), 0); // a step before it
    EXPECT_EQ(read(4040), 2);
    EXPECT_EQ(read(4003), 3); // soak
    EXPECT_EQ(read(4007), kNoRegister);
    EXPECT_EQ(write(4003, 0), 3);
    ASSERT_EQ(write(4003, 1), 0); // ramp
    EXPECT_EQ(write(4007, -2000), 0);
    EXPECT_EQ(write(4007, -2001), 3);
    EXPECT_EQ(write(4012, 10), 2);
    EXPECT_EQ(read(4007), -2000);
    ASSERT_EQ(write(4001, 2), 0);
    EXPECT_EQ(read(4007), kNoRegister);
    EXPECT_EQ(write(4001, 3), 3);
    ASSERT_EQ(write(4001, 1), 0);
    ASSERT_EQ(write(4002, 4), 0);
    EXPECT_EQ(read(4040), 1);
    EXPECT_EQ(write(4050, 'B'), 0);
    EXPECT_EQ(read(4050), 'B');
    EXPECT_EQ(write(4059, 31), 3);
    EXPECT_EQ(write(4060, 65), 2);
}

TEST_F(ProfilesTest, LimitsHold) {
    for (int profile = 1; profile <= 40; ++profile)
        create(profile);
    EXPECT_EQ(write(4000, 41), 3);
    EXPECT_EQ(write(4000, 0), 3);
    for (int step = 2; step <= 50; ++step)
        EXPECT_EQ(write(4002, 3), 0);
    EXPECT_EQ(write(4002, 3), 3);
    EXPECT_EQ(write(4002, 5), 3);
    EXPECT_EQ(read(4040), 50);
}

TEST_F(ProfilesTest, AResetKeepsTheProfiles) {
    create(1);
    ASSERT_EQ(write(1789, 1512), 0);
    ASSERT_EQ(write(1415, 1600), 0);
    ASSERT_EQ(write(1602, 800), 0);
    EXPECT_EQ(read(4042), 1);
}
