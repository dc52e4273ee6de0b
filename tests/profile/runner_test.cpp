#include "profile/profile_runner.h"

#include "line_test.h"
#include "profile/profile_record.h"

namespace pelvan::testing {
namespace {

constexpr int kCommand = 4101;
constexpr int kState = 4100;

class RunnerTest : public LineTest {
  protected:
    RunnerTest() { begin("simulated:742"); }
    void begin(const std::string& device) {
        open(device);
        rig->set({{300, 250}, {319, 250}}); // where the processes begin, and so the ramps
        put(ramp());
        runner.emplace(rig->link, rig->modbus, DeviceAddress("1"), format());
    }
    /// Into the controller, past the line.
    void put(const Profile& profile) {
        rig->set({{4000, profile.number}, {4002, 1}});
        for (std::size_t i = 1; i < profile.steps.size(); ++i)
            rig->set({{4002, 3}});
        for (std::size_t i = 0; i < profile.steps.size(); ++i) {
            rig->set({{4001, static_cast<int>(i) + 1}, {4003, profile.steps[i].type}});
            rig->set({profile.steps[i].fields.begin(), profile.steps[i].fields.end()});
        }
    }
    [[nodiscard]] ProfileStep step(int type, const std::map<int, int>& fields) const {
        ProfileStep made = new_step(format().kinds.at(type));
        for (const auto& [number, value] : fields)
            made.fields.at(number) = value;
        return made;
    }
    /// Half an hour up to 100 degrees, an hour there.
    [[nodiscard]] Profile ramp() const {
        return {
            1,
            {},
            {step(1, {{4005, 30}, {4007, 1000}, {4008, 500}}), step(3, {{4004, 1}}), step(0, {})}};
    }
    /// The next so many requests of a command, and all behind it while `dead`, meet this fate.
    void strike(int command, Fate fate, bool dead = false) {
        rig->fate = [=, hit = false](const Request& request) mutable {
            const bool now = request == Request{6, kCommand, command} && !hit;
            hit = hit || now;
            return now || (dead && hit) ? fate : Fate::Answered;
        };
    }
    void pass(double seconds) { rig->tick.advance(seconds * 1000); }

    std::optional<ProfileRunner> runner;
};

TEST_F(RunnerTest, CommandsAreSentOnceAndTheStateIsReadBehindThem) {
    EXPECT_EQ(runner->poll().reading->state, RunState::Off);
    CommandOutcome outcome = runner->start(1, 1);
    EXPECT_EQ(outcome.how, CommandEnd::Done);
    EXPECT_EQ(outcome.sentence, "Profile 1, step 1 is running, 0:30:00 left.");
    pass(900);
    outcome = runner->command(RunCommand::Hold);
    EXPECT_EQ(outcome.sentence, "Profile 1, step 1 is held, 0:15:00 left.");
    const RunReading held = *outcome.after.reading;
    EXPECT_NEAR(*held.set_points[0], 62.5, 0.1); // half way from 25 degrees
    EXPECT_NEAR(*held.set_points[1], 37.5, 0.1);
    EXPECT_NEAR(*held.process_values[0], *rig->get(100) / 10.0, 0.5);
    EXPECT_EQ(held.events, 0);
    EXPECT_EQ(
        runner->command(RunCommand::Hold).sentence,
        "The controller refused the command hold with exception 3. Profile 1, step 1 is held, "
        "0:15:00 left.");
    EXPECT_EQ(runner->command(RunCommand::Resume).after.reading->state, RunState::Running);
    EXPECT_EQ(runner->command(RunCommand::Next).sentence,
              "Profile 1, step 2 is running, 1:00:00 left.");
    EXPECT_EQ(runner->command(RunCommand::End).sentence, "No profile runs (ended).");
    outcome = runner->start(7, 1);
    EXPECT_EQ(outcome.how, CommandEnd::Refused);
    EXPECT_EQ(rig->writes_of(kCommand, 1), 2);
    EXPECT_EQ(rig->writes_of(kCommand, 2), 2);
    EXPECT_EQ(runner->start(41, 1).sentence,
              "Not started: the controller refused profile to start = 41 (register 4102) with "
              "exception 3.");
    EXPECT_EQ(rig->writes_of(kCommand, 1), 2);
}

TEST_F(RunnerTest, ACommandOfUnknownOutcomeIsNeverRepeatedOnAGuess) {
    for (const Fate fate : {Fate::NotReceived, Fate::ReplyLost, Fate::ReplyDamaged}) {
        const bool received = fate != Fate::NotReceived;
        begin("simulated:742");
        static_cast<void>(runner->poll());
        strike(1, fate);
        const CommandOutcome start = runner->start(1, 1);
        EXPECT_EQ(start.how, received ? CommandEnd::Done : CommandEnd::NotKnown);
        EXPECT_EQ(start.after.reading->active(), received);
        EXPECT_FALSE(runner->in_doubt()) << "the state was read";
        if (!received) {
            EXPECT_EQ(start.sentence, "No whole reply to the command start; whether it was carried "
                                      "out is not known. No profile runs (off).");
            EXPECT_EQ(runner->start(1, 1).how, CommandEnd::Done);
        }
        EXPECT_EQ(rig->writes_of(kCommand, 1), received ? 1 : 2);

        strike(2, fate, true); // and the line stays dead
        const CommandOutcome hold = runner->command(RunCommand::Hold);
        EXPECT_EQ(hold.how, CommandEnd::NotKnown);
        EXPECT_TRUE(runner->in_doubt());
        EXPECT_EQ(runner->command(RunCommand::Hold).how, CommandEnd::NotSent);
        EXPECT_EQ(runner->poll().how, PollEnd::Lost);
        EXPECT_EQ(runner->start(1, 1).how, CommandEnd::NotSent);
        EXPECT_EQ(rig->writes_of(kCommand, 2), 1);
        rig->fate = {};
        EXPECT_EQ(runner->poll().reading->state, received ? RunState::Held : RunState::Running);
        EXPECT_EQ(runner->command(RunCommand::End).how, CommandEnd::Done);
    }
}

TEST_F(RunnerTest, ACommandThatIsOnlyAcknowledgedIsNotDone) {
    begin("simulated:742");
    const auto only_echoed = [&](int command) {
        strike(command, Fate::OnlyEchoed);
        const CommandOutcome outcome = command == 1
                                           ? runner->start(1, 1)
                                           : runner->command(static_cast<RunCommand>(command - 1));
        EXPECT_EQ(outcome.how, CommandEnd::NotKnown) << outcome.sentence;
        EXPECT_NE(outcome.sentence.find("but its state does not show it"), std::string::npos);
        rig->fate = {};
    };
    only_echoed(1);
    EXPECT_EQ(runner->start(1, 1).how, CommandEnd::Done);
    only_echoed(2);
    only_echoed(5);
    EXPECT_EQ(runner->command(RunCommand::Hold).how, CommandEnd::Done);
    only_echoed(3);
}

TEST_F(RunnerTest, LateAndLostRepliesGiveNoWrongReading) {
    begin("simulated:742,lost=0.1,late=0.1,late_ms=2300,seed=4");
    rig->set({{4102, 1}, {kCommand, 1}});
    int read = 0;
    for (int i = 0; i < 200; ++i) {
        const RunPoll poll = runner->poll();
        if (poll.how != PollEnd::Read) continue;
        ++read;
        ASSERT_EQ(poll.reading->profile, 1);
        ASSERT_EQ(poll.reading->state, RunState::Running);
        ASSERT_NEAR(*poll.reading->set_points[0], *rig->get(4110) / 10.0, 1);
        ASSERT_NEAR(*poll.reading->process_values[1], *rig->get(104) / 10.0, 1);
    }
    EXPECT_GT(read, 50);
}

TEST_F(RunnerTest, ALineInUseIsLeftAloneAndAHoldGetsThroughAWritingOfProfiles) {
    static_cast<void>(runner->start(1, 1));
    Link logging(rig->channels, rig->countdowns, rig->dialogs, rig->log, "Data Logging");
    {
        const LineClaim claim = logging.claim();
        const std::size_t before = rig->requests.size();
        EXPECT_EQ(runner->poll().how, PollEnd::Skipped);
        EXPECT_EQ(runner->poll().sentence, "The line is in use by Data Logging.");
        EXPECT_EQ(runner->command(RunCommand::Hold).how, CommandEnd::NotSent);
        EXPECT_EQ(rig->requests.size(), before);
    }
    const ProfileSet wanted = examples({2, 3}, 9);
    ProfileWriter writer(context());
    const ProfilePlan plan = writer.plan_write(742, wanted);
    CommandOutcome hold;
    ui.on_turn = [&, turns = 0]() mutable {
        if (++turns != 40) return;
        EXPECT_EQ(runner->poll().sentence, "Profiles are being read or written.");
        EXPECT_EQ(runner->command(RunCommand::Resume).how, CommandEnd::NotSent);
        hold = runner->command(RunCommand::Hold);
    };
    rig->fate = [count = 0](const Request&) mutable {
        return ++count % 6 == 0 ? Fate::ReplyLost : Fate::Answered;
    };
    EXPECT_TRUE(writer.write(plan).completed);
    EXPECT_EQ(rig->get(kState), 2);
    EXPECT_EQ(rig->writes_of(kCommand, 2), 1);
    ProfileSet all = held();
    all.erase(1);
    EXPECT_EQ(all, wanted);
}

TEST_F(RunnerTest, APowerFailureInMidRampIsAGapAndThenTheStateThatTheControllerIsIn) {
    for (const auto& [choice, state] : std::map<int, RunState>{
             {0, RunState::Running}, {1, RunState::Held}, {2, RunState::Ended}}) {
        begin("simulated:742");
        ProfileRecord record;
        record.follow(unroll(format(), {{1, ramp()}}, {1, 1, {25, 25}}));
        rig->set({{4121, choice}});
        static_cast<void>(runner->start(1, 1));
        pass(600);
        EXPECT_NEAR(*record.add(0, runner->poll().reading).seconds, 600, 3);
        rig->set({{4122, 1}});
        record.add(1, runner->poll().reading);
        EXPECT_FALSE(record.samples().back().reading);
        pass(10);
        const RunSample& after = record.add(2, runner->poll().reading);
        ASSERT_TRUE(after.reading);
        EXPECT_EQ(after.reading->state, state);
        if (choice < 2) {
            EXPECT_NEAR(*after.programmed[0], *after.reading->set_points[0], 0.2);
        }
    }
}

/// Sixty times as fast as the line, a poll a second.
TEST_F(RunnerTest, AWatchedRunAgreesWithTheCurveComputedBeforehand) {
    begin("simulated:742?speed=60");
    constexpr double kInterval = 60; // seconds of the profile between two polls
    Profile profile{2,
                    {},
                    {step(2, {{4012, 200}, {4007, 1000}, {4011, 1}}),
                     step(1, {{4005, 3}, {4007, 3000}, {4008, 600}, {4011, 3}}),
                     step(3, {{4005, 2}, {4010, 1}, {4011, 2}}),
                     step(4, {{4013, 2}, {4014, 1}, {4015, 3}}),
                     step(1, {{4005, 30}, {4007, 400}, {4008, 300}}), step(0, {})}};
    put(profile);
    rig->set({{4120, 10}});
    const ProfileCurve curve = unroll(format(), {{2, profile}}, {2, 1, {25, 25}});
    ASSERT_EQ(curve.how, CurveEnd::Ended);
    ProfileRecord record;
    record.follow(curve);
    const CommandOutcome start = runner->start(2, 1);
    double before = rig->tick.now();
    RunSample last = record.add(before, start.after.reading);
    std::map<RunState, int> seen;
    while (seen[RunState::Ended] == 0 && record.samples().size() < 200) {
        pass(kInterval / 60);
        const RunPoll poll = runner->poll();
        const RunSample& sample = record.add(rig->tick.now(), poll.reading);
        ASSERT_TRUE(sample.reading) << poll.sentence;
        const double spent = (rig->tick.now() - std::exchange(before, rig->tick.now())) * 60 / 1000;
        ++seen[sample.reading->state];
        if (!sample.reading->active()) break;
        if (sample.reading->step == 0) continue; // it ended between the requests of a reading
        ASSERT_TRUE(sample.seconds);
        const double way = *sample.seconds - *last.seconds;
        const bool ran = sample.reading->state == RunState::Running;
        if (ran && last.reading->state == RunState::Running) {
            EXPECT_NEAR(way, spent, 2) << "at " << *sample.seconds;
        }
        EXPECT_LE(way, spent + 2);
        if (ran) {
            EXPECT_EQ(curve.at(*sample.seconds).events, sample.reading->events);
        }
        // The time left is told in whole seconds; the steepest ramp does 1.1 degrees in one.
        for (std::size_t loop = 0; loop < kLoops; ++loop)
            EXPECT_NEAR(*sample.programmed[loop], *sample.reading->set_points[loop], 1.5)
                << "step " << sample.reading->step;
        last = sample;
        if (record.samples().size() == 10) static_cast<void>(runner->command(RunCommand::Hold));
        if (record.samples().size() == 15) static_cast<void>(runner->command(RunCommand::Resume));
    }
    EXPECT_EQ(seen[RunState::Ended], 1);
    EXPECT_EQ(seen[RunState::Held], 5);
    EXPECT_GE(seen[RunState::Waiting], 4) << "once a turn";
    EXPECT_NEAR(*last.seconds, curve.seconds, 2 * kInterval); // a poll takes its time, too
}

TEST_F(RunnerTest, ARecordIsBoundedAndItsCsvSaysWhatWasSeen) {
    ProfileRecord record(3);
    record.follow(unroll(format(), {{1, ramp()}}, {1, 1, {25, 25}}));
    RunReading reading{RunState::Running, 1, 1, 900, 0, {62.5, 37.5}, {61.25, {}}, 3};
    const double noon = calendar_milliseconds({2026, 11, 15, 12, 0, 0, 250});
    record.add(noon - 1000, std::nullopt);
    record.add(noon, reading);
    record.add(noon + 1000, std::nullopt);
    record.add(noon + 2000, std::nullopt);
    reading.state = RunState::Off;
    reading.seconds_left.reset();
    record.add(noon + 3000, reading);
    EXPECT_EQ(record.dropped(), 1U);
    const std::string path = rig->dir.file("run.csv");
    EXPECT_EQ(record.save_csv(path), "");
    EXPECT_EQ(
        read_file(path),
        csv_head() + "\r\n" +
            "2026-11-15 12:00:00.250,running,1,1,900,0,62.5,37.5,61.25,,62.5,37.5,-1.25,,3\r\n"
            "2026-11-15 12:00:01.250,no reading,,,,,,,,,,,,,\r\n"
            "2026-11-15 12:00:03.250,off,1,1,,0,62.5,37.5,61.25,,,,,,3\r\n");
    EXPECT_NE(record.save_csv(rig->dir.path() + "/none/run.csv"), "");

    reading.state = RunState::Running; // started again, once seen and once not
    for (const int left : {1700, 600, 1500}) {
        reading.seconds_left = left;
        EXPECT_EQ(record.add(noon + 4000, reading).seconds, 1800 - left);
    }
    reading.step = 9;
    EXPECT_FALSE(record.add(noon + 5000, reading).seconds);
}

} // namespace
} // namespace pelvan::testing
