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
    play("4103=2 4101=1 4105?2 4101=5 4100?4 4101=5!3"); // in the middle; and ended
    Controller small(730);
    EXPECT_EQ(small.write(4101, 1), ExceptionCode::IllegalAddress);
}

TEST_F(ProfileRunTest, TheProfileThatRunsIsNotEditedButOthersAre) {
    make({"3 4004=1"});
    play("4000=2 4002=1 4000=1 4101=1 4002=3!3 4002=2!3 4006=1!3 4050=65!3 4001=2 4016=1!3");
    play("4016?0 4000=2 4002=3 4006=1 4050=65 4002=2 4000=1 4101=5 4001=1 4006=1 4002=2");
}
