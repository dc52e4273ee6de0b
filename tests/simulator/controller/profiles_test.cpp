#include "register_play.h"

using namespace pelvan::simulator;

using ProfilesTest = RegisterPlay;

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
