#include "simulator/controller/controller.h"

#include <gtest/gtest.h>

using namespace pelvan::simulator;

TEST(ControllerTime, TheProcessFollowsItsSetPointAndAlarmsFollowTheProcess) {
    Controller controller(742);
    const auto process_at = [&](double now_ms) {
        controller.advance(now_ms);
        return controller.table().value(reg::kProcessValue1);
    };
    EXPECT_EQ(process_at(1000), 250);
    const int moving = process_at(6000);
    EXPECT_GT(moving, 250);
    EXPECT_LT(moving, 750);
    EXPECT_EQ(process_at(1e6), 750);
    EXPECT_FALSE(controller.inputs()[8]);
    ASSERT_EQ(controller.write(803, 700), ExceptionCode::None); // high limit of alarm 1
    controller.advance(1e6 + 1000);
    EXPECT_TRUE(controller.inputs()[8]);
    EXPECT_EQ(controller.table().value(reg::kAlarmState1), 1);
}
