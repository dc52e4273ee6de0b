#include <random>

#include "register_play.h"

using namespace pelvan::simulator;

namespace {

class ProfileRunTest : public RegisterPlay {
  protected:
    ProfileRunTest() { play("@0 300=250 319=250 4000=1 4002=1"); }
    /// Puts the steps, each its kind and its fields, in front of the end step.
    void make(const std::vector<std::string>& steps) {
        for (std::size_t i = 0; i < steps.size(); ++i)
            play("4001=" + std::to_string(i + 1) + " 4002=3 4003=" + steps[i]);
    }
};

} // namespace

TEST_F(ProfileRunTest, RampsAndSoaksMoveTheSetPointsAndEndHoldsThem) {
    make({"1 4005=10 4007=1250 4008=-750 4011=5", "2 4007=1000 4012=100 4011=129",
          "3 4006=30 4009=2 4011=129"});
    controller.coils()[15] = true;
    play("4100?0 4104?0 4101=1 4100?1 4101?0 4104?1 4105?1 4106?0 4107?10 4108?0 4112?5");
    play("300=1!3 319=1!3 @300 300?750 319?-250 4110?750 4111?-250 4107?5 @300.5 4108?0 4107?5");
    play("@599.9 4105?1 4108?1 300?1250 @600 4105?2 4107?2 4108?30 4112?129 319?-750");
    play("@675 300?1125 319?-750 4108?15 @750 4105?3 300?1000 4108?30 @780 4100?4 4104?0 4105?0");
    play("300?1000 319?-750 4112?129 300=20 300?20 @790 4110?20 4107?0 4108?0");
    EXPECT_TRUE(controller.coils()[15]);
}

TEST_F(ProfileRunTest, CommandsAreRefusedWhereTheyMakeNoSense) {
    play("4101=2!3 4101=3!3 4101=4!3 4101=5!3 4101=0!3 4101=6!3 4100=1!2 4104=1!2");
    play("4102=2 4101=1!3 4102=1 4103=2 4101=1!3 4103=51!3 4102=41!3 4103=1");
    make({"1 4004=1 4007=3850", "3 4004=2"});
    play("4101=1 4101=1!3 4101=3!3 @600 300?850 4101=2 4101=2!3 4100?2 @5000 300?850 4107?50");
    play("4101=3 @5600 300?1450 4101=4 300?1450 4105?2 4106?2 4101=2 4101=4 4100?4 4101=4!3");
    play("4101=1 4101=2 4101=4 4100?2 4105?2 4106?2 4101=3 4100?1 4101=5"); // held stays held
    play("4103=2 4101=1 4105?2 4101=5 4100?4 4101=5!3"); // in the middle; and ended
    Controller small(730);
    EXPECT_EQ(small.write(4101, 1), ExceptionCode::IllegalAddress);
}

TEST_F(ProfileRunTest, TheProfileThatRunsIsNotEditedButOthersAre) {
    make({"3 4004=1"});
    play("4000=2 4002=1 4000=1 4101=1 4002=3!3 4002=2!3 4006=1!3 4050=65!3 4001=2 4016=1!3");
    play("4016?0 4000=2 4002=3 4006=1 4050=65 4002=2 4000=1 4101=5 4001=1 4006=1 4002=2");
}

TEST_F(ProfileRunTest, AStepWaitsUntilItsInputIsNearTheSetPoint) {
    make({"1 4005=1 4007=2500 4010=1", "1 4007=2500 4008=1500 4010=2", "3 4006=10 4010=1"});
    play("4101=1 @60 4100?3 4105?1 4108?0 300?2500 4101=2 4100?2 4101=3 4100?3");
    int process = controller.table().value(reg::kProcessValue1);
    double second = 60;
    for (int before = process; controller.table().value(reg::kRunStep) == 1; before = process) {
        EXPECT_LT(before, 2450);
        controller.advance(1000 * ++second);
        process = controller.table().value(reg::kProcessValue1);
        ASSERT_LT(second, 2000);
    }
    EXPECT_NEAR(process, 2450, 10);
    EXPECT_GT(second, 300);                   // 40 degrees a minute at most
    play("4105?2 4100?3 319?1500 4120=2000"); // no time at all, and cold
    controller.advance(1000 * (second + 0.25));
    play("4105?3 4100?1");
    controller.advance(1000 * (second + 11));
    play("4100?4");
}

TEST_F(ProfileRunTest, AFurnaceFollowsWithALagAndThePidSetOfTheStep) {
    make({"2 4007=4500 4012=50", "2 4007=8500 4012=50 4009=2", "3 4004=3"});
    play("510=9999 4101=1 @5000");
    const auto lag = [&] { return controller.table().value(300) - controller.table().value(100); };
    EXPECT_NEAR(lag(), 30, 8); // tenths
    play("@9800 4105?2");
    EXPECT_NEAR(lag(), 680, 10); // a wide proportional band
    play("@19000 4105?3");
    EXPECT_EQ(lag(), 0);
    EXPECT_NEAR(controller.table().value(reg::kOutput1), 687, 2); // (850 - 25) of 1200 degrees
}

TEST_F(ProfileRunTest, JumpsAreTakenSoOftenAndCountAnewWhenTheyAreMetAgain) {
    play("4000=2 4002=1 4002=3 4005=1 4001=2 4016=3 4017=321 4000=1");
    make({"3 4005=1", "4 4015=2", "4 4015=1", "4 4015=0", "4 4013=2 4015=5"});
    play("4101=1 4109?0 @60 4105?1 4109?1 @120 4109?2 @180 4105?1 4109?1 @240 4109?1 @300 4109?2");
    play("@359 4104?1 4105?1 @360 4104?2 4105?1 4109?1 4000=2 4002=2!3");
    play("@420 4100?4 300?321 319?250");
    play("4101=1 @490 4109?1 4101=5 4101=1 @849 4104?1 @850 4104?2 4101=5"); // none from before
    play("4000=2 4002=2 4101=1 @1209 4100?1 @1210 4100?4 300?250 4109?0");   // it leads nowhere
}

TEST_F(ProfileRunTest, EndsSwitchOffWhatTheySay) {
    make({"1 4007=5000 4011=255", "3 4006=10 4011=255"});
    const auto run_with_end = [&](int kind, double from) {
        play("4001=3 4016=" + std::to_string(kind) + " 4101=1 4112?255");
        controller.advance(1000 * (from + 9));
        EXPECT_GT(controller.table().value(reg::kOutput1), 900);
        controller.advance(1000 * (from + 11));
        play("4100?4 300?5000");
    };
    controller.coils()[8] = true;
    run_with_end(0, 0);
    play("4112?255");
    EXPECT_GT(controller.table().value(reg::kOutput1), 900);
    run_with_end(1, 11);
    play("4112?255 103?0 300=6000 @23"); // until a set point is written
    EXPECT_GT(controller.table().value(reg::kOutput1), 900);
    run_with_end(2, 23);
    play("4112?0 103?0 107?0");
    EXPECT_TRUE(controller.coils()[8]);
    play("4101=1 @40");
    EXPECT_GT(controller.table().value(reg::kOutput1), 900);
}

TEST_F(ProfileRunTest, APowerFailureStopsTimeAndHeatAndThenItsChoiceCounts) {
    make({"1 4005=10 4007=6250"});
    const std::vector<std::string> after{"4100?1 4107?8 4108?20 300?1250 @103 300?1260",
                                         "4100?2 @103 300?1250 4101=3 @104 300?1260",
                                         "4100?4 300?1250 @103 300?1250"};
    const Controller fresh = controller;
    for (std::size_t choice = 0; choice < after.size(); ++choice) {
        controller = fresh;
        play("4121=" + std::to_string(choice) + " 4101=1 @100 300?1250 4122=0!3 4122=1 4122?0");
        EXPECT_TRUE(controller.silent(101900));
        play("@101.9 103?0 300?1250 4100?1 @102 " + after[choice]);
        EXPECT_FALSE(controller.silent(102000));
    }
    controller = Controller(742, 60);
    play("@0 4000=1 4002=1 4002=3 4003=1 4005=10 4007=6250 4101=1 @1 300?850 4122=1 @3 300?850");
    play("@4 300?1450"); // the two seconds are the line's
    controller = fresh;
    play("4101=1 @10 1789=1512 1415=1600 1602=800 4100?0 300?750 4104?0");
}

// Steps of every kind, waits and a hold, seen at once and in small pieces.
TEST_F(ProfileRunTest, OneLongStepOfTimeEndsWhereManyShortOnesDo) {
    make({"1 4005=7 4006=13 4007=3333 4008=777 4010=1 4011=1",
          "2 4007=2901 4012=1777 4009=3 4011=2", "1 4005=3 4007=700 4008=990",
          "3 4006=59 4010=2 4011=4", "4 4014=2 4015=3", "2 4007=5 4012=9999 4011=8",
          "1 4007=123 4008=-5 4010=1", "3 4005=3"});
    play("4001=9 4016=3 4017=444 530=77 4101=1");
    Controller fine = controller;
    std::mt19937 random(3);
    double now_ms = 0;
    for (double until_ms = 0; until_ms < 4e6;
         until_ms += 1e3 * static_cast<double>(random() % 150)) {
        controller.advance(until_ms);
        while (now_ms < until_ms) {
            const unsigned longest = now_ms < 6e4 ? 99 : 9000;
            now_ms = std::min(until_ms, now_ms + 0.3 * static_cast<double>(random() % longest));
            fine.advance(now_ms);
        }
        for (const auto& [number, reg] : controller.table().all())
            EXPECT_EQ(reg.value, fine.table().value(number)) << number << " at " << until_ms;
        EXPECT_EQ(controller.coils(), fine.coils());
        const auto command = static_cast<std::int16_t>(random() % 2 + 2); // hold, resume
        for (Controller* each : {&controller, &fine})
            each->write(reg::kRunCommand, command);
    }
    controller.write(reg::kRunCommand, 3);
    play("@2e4");
    play("4100?4 100?444");
}

// It would never end if every step were taken.
TEST_F(ProfileRunTest, WhatNeverEndsCostsLittleTime) {
    make({"3", "4 4015=999", "3 4006=1"});
    play("4101=1 @0.2 4108?0 @0.6 4105?3 4109?999 4101=5"); // 2000 steps
    make(std::vector<std::string>(45, "4 4015=999"));
    play("4101=1 4100?1 @5e5 4100?1 4101=5 4001=1 4002=3 4003=1 4006=1 4101=1 @1e9 4100?1 4101=5");
    play("4100?4");
}
