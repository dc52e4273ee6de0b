#include "line_test.h"
#include "profile/profile_text.h"
#include "transfer/download.h"
#include "transfer/upload.h"

namespace pelvan::testing {
namespace {

constexpr int kAction = 4002;
constexpr int kInsert = 3;
constexpr int kSetPoint1 = 4007;

class WriterTest : public LineTest {
  protected:
    WriterTest() { open("simulated:742"); }

    ProfileReadResult read() { return ProfileReader(context()).read(); }
    ProfileWriteResult write(const ProfileSet& wanted) {
        ProfileWriter writer(context());
        plan = writer.plan_write(742, wanted);
        EXPECT_EQ(plan.refusal, "");
        return writer.write(plan);
    }
    ProfileWriteResult erase(const std::set<int>& numbers) {
        ProfileWriter writer(context());
        plan = writer.plan_erase(numbers);
        EXPECT_EQ(plan.refusal, "");
        return writer.write(plan);
    }
    ProfileWriteResult restore(const ProfileWriteResult& failed) {
        rig->fate = {};
        return ProfileWriter(context()).restore_previous(plan, failed);
    }
    void expect_done(const ProfileWriteResult& result) {
        EXPECT_TRUE(result.completed) << ::testing::PrintToString(result.problems);
    }
    ProfilePlan plan;
};

TEST_F(WriterTest, FortyProfilesOverABadLineAreAsWrittenAndNoStepIsDoubled) {
    open("simulated:742,lost=0.02,late=0.02,seed=3");
    ProfileSet wanted;
    for (int number = 1; number <= 40; ++number)
        wanted.emplace(number, example(number, 49));
    expect_done(write(wanted));
    EXPECT_EQ(ui.share, 1);
    EXPECT_EQ(held(), wanted);
}

TEST_F(WriterTest, WhateverBecomesOfARequestNoStepIsDoubledOrMissing) {
    const ProfileSet wanted = examples({1, 2}, 9);
    for (const Fate fate : {Fate::NotReceived, Fate::ReplyLost, Fate::ReplyDamaged}) {
        open("simulated:742");
        rig->set({{4000, 1}, {kAction, 1}}); // a profile that is replaced
        rig->fate = [&, count = 0](const Request&) mutable {
            return ++count % 5 == 0 ? fate : Fate::Answered;
        };
        expect_done(write(wanted));
        EXPECT_EQ(held(), wanted);
        const ProfileReadResult result = read();
        EXPECT_TRUE(result.complete) << ::testing::PrintToString(result.problems);
        EXPECT_EQ(result.profiles, wanted);
    }
}

TEST_F(WriterTest, LateAnswersToRepeatedRequestsAreTakenForNoOthers) {
    const ProfileSet wanted = examples({1, 2}, 9);
    for (const char* late : {"late=1,only=90", "late=0.02,seed=7"}) {
        open(std::string("simulated:742,queue=1,delay=80,late_ms=220,") + late);
        expect_done(write(wanted));
        EXPECT_EQ(held(), wanted);
        const ProfileReadResult result = read();
        EXPECT_TRUE(result.complete) << ::testing::PrintToString(result.problems);
        EXPECT_EQ(result.profiles, wanted);
    }
}

TEST_F(WriterTest, AnotherSelectionMadeMeanwhileIsNotWrittenInto) {
    const ProfileSet before = examples({1}, 9);
    expect_done(write(before));
    rig->fate = [&, count = 0](const Request& request) mutable {
        // The reply is lost because the controller started anew, on profile 1.
        if (request.function != 6 || request.number != kSetPoint1 || ++count != 2)
            return Fate::Answered;
        rig->set({{4000, 1}});
        return Fate::NotReceived;
    };
    ProfileSet wanted = examples({2}, 9);
    expect_done(write(wanted));
    wanted.merge(ProfileSet(before));
    EXPECT_EQ(held(), wanted);
}

TEST_F(WriterTest, ThePlanSaysWhatWillChangeAndNumbersKeepTheirRule) {
    expect_done(write(examples({3, 5}, 4)));
    EXPECT_EQ(plan_sentences(plan),
              (Lines{"Profile 3 \"NUMBER 3\" is created with 4 steps.",
                     "Profile 5 \"NUMBER 5\" is created with 4 steps.",
                     "Profiles 1, 2, 4 are created to keep the numbering, and erased again at the "
                     "end."}));
    EXPECT_EQ(held(), examples({3, 5}, 4));

    // The highest is replaced, whose number would go with the empty ones below it.
    ProfileSet wanted = examples({3, 5, 6}, 4);
    wanted[5] = example(5, 2);
    expect_done(write(wanted));
    EXPECT_EQ(
        plan_sentences(plan),
        (Lines{"Profile 5 \"NUMBER 5\" with 4 steps is replaced by \"NUMBER 5\" with 2 steps.",
               "Profile 6 \"NUMBER 6\" is created with 4 steps.",
               "Profile 3 is there already as it shall be and is not written.",
               "Profiles 1, 2, 4 are created to keep the numbering, and erased again at the "
               "end."}));
    EXPECT_EQ(held(), wanted);

    expect_done(erase({2, 3, 6}));
    EXPECT_EQ(plan_sentences(plan),
              (Lines{"Profile 3 \"NUMBER 3\" is erased; its number stays, without a profile, while "
                     "a higher one is there.",
                     "Profile 6 \"NUMBER 6\" is erased, and its number with it."}));
    EXPECT_EQ(rig->get(4041), 5);
    expect_done(erase({5}));
    EXPECT_EQ(rig->get(4041), 0);
}

TEST_F(WriterTest, ACopyJumpsWithinItself) {
    ProfileSet wanted = examples({1, 2}, 6);
    ProfileStep& jump = wanted[1].steps[3];
    ASSERT_EQ(format().kinds.at(jump.type).shape, StepShape::Jump);
    jump.fields[4013] = 1;
    expect_done(write(wanted));
    ProfileWriter writer(context());
    expect_done(writer.write(writer.plan_copy(1, 3)));
    wanted[3] = wanted[1];
    wanted[3].number = 3;
    wanted[3].steps[3].fields[4013] = 3;
    EXPECT_EQ(held(), wanted);
    EXPECT_EQ(writer.plan_copy(9, 3).refusal, "There is no profile 9.");
}

TEST_F(WriterTest, AfterARefusalInTheMiddleWhatWasThereBeforeIsWrittenBack) {
    const ProfileSet before = examples({1, 2}, 6);
    expect_done(write(before));
    ProfileSet wanted = examples({1, 2, 4}, 8);
    wanted[4].steps[1].fields[kSetPoint1] = 12000; // beyond the controller's limit
    const ProfileWriteResult failed = write(wanted);
    EXPECT_FALSE(failed.completed);
    EXPECT_EQ(failed.problems,
              (Lines{"Profile 4, step 2: the controller refused set point 1 = 1200.0 degrees "
                     "(register 4007) with exception 3."}));
    EXPECT_EQ(failed.touched, (std::set{1, 2, 4}));
    EXPECT_FALSE(held().contains(3)) << "the filler is erased all the same";
    expect_done(restore(failed));
    EXPECT_EQ(held(), before);
}

TEST_F(WriterTest, WhatWasNotReadWholeIsNotWrittenBack) {
    expect_done(write(examples({1}, 6)));
    int reads = 0;
    rig->fate = [&](const Request& request) {
        if (request.function == 3 && request.number == kSetPoint1 && ++reads <= 9)
            return Fate::ReplyDamaged;
        return Fate::Answered;
    };
    ProfileSet wanted = examples({1}, 8);
    wanted[1].steps[1].fields[kSetPoint1] = 12000;
    const ProfileWriteResult failed = write(wanted);
    EXPECT_EQ(plan.incomplete, std::set{1});
    EXPECT_FALSE(failed.completed);
    const ProfileWriteResult back = restore(failed);
    EXPECT_FALSE(back.completed);
    EXPECT_EQ(back.problems,
              Lines{"Profile 1 cannot be written back: it could not be read whole before."});
}

TEST_F(WriterTest, AWritingThatIsGivenUpOrCancelledIsTakenBack) {
    const ProfileSet before = examples({2}, 6);
    expect_done(write(before));
    for (const bool silent : {true, false}) {
        ui.answers.clear();
        rig->fate = [&, inserted = 0](const Request& request) mutable {
            inserted += request == Request{6, kAction, kInsert};
            if (inserted < 4) return Fate::Answered;
            if (!silent) cancel.canceled = true;
            return silent ? Fate::NotReceived : Fate::Answered;
        };
        const ProfileWriteResult failed = write(examples({2, 3}, 9));
        EXPECT_FALSE(failed.completed);
        EXPECT_EQ(failed.problems.back(), silent ? "Given up when 0 of 18 steps were written."
                                                 : "Cancelled when 0 of 18 steps were written.");
        EXPECT_EQ(failed.touched, silent ? (std::set{1, 2}) : (std::set{2}));
        EXPECT_NE(held(), before);
        expect_done(restore(failed));
        EXPECT_EQ(held(), before);
    }
}

TEST_F(WriterTest, AnotherControllerInTheMiddleIsNamed) {
    auto& table = const_cast<simulator::RegisterTable&>(rig->station->controller.table());
    rig->fate = [&](const Request& request) {
        if (request == Request{6, kAction, kInsert}) table.set_value(2, 1519);
        return Fate::Answered;
    };
    const ProfileWriteResult failed = write(examples({1}, 3));
    EXPECT_FALSE(failed.completed);
    EXPECT_EQ(failed.problems, (Lines{"Another controller answers than at the beginning: register "
                                      "2 was 1518 and is 1519 now.",
                                      "The one before may be left with profiles half written. "
                                      "Nothing is put back into the one that answers now."}));
    EXPECT_TRUE(failed.met_another);
    rig->requests.clear();
    EXPECT_TRUE(restore(failed).met_another);
    EXPECT_EQ(std::ranges::count(rig->requests, 6, &Request::function), 0);
}

TEST_F(WriterTest, ASavedSetupHoldsWhatWasWrittenAndRestoresIt) {
    const ProfileSet wanted = examples({1, 3}, 9);
    expect_done(write(wanted));
    ui.file = rig->dir.file("setup.txt");
    EXPECT_TRUE(Download(context()).run().completed);
    const std::string text = read_file(*ui.file);
    EXPECT_EQ(load_profiles(format(), *ui.file).profiles, wanted);

    open("simulated:742");
    const std::string file = rig->dir.file("setup.txt");
    write_file(file, text);
    rig->set({{4000, 1}, {kAction, 1}, {kAction, kInsert}});
    EXPECT_TRUE(Upload(context()).run(file).completed);
    EXPECT_EQ(held(), wanted);
    expect_done(write(load_profiles(format(), file).profiles));
    EXPECT_EQ(plan.unchanged, (std::set{1, 3}));
}

TEST_F(WriterTest, AProfileThatRunsIsNotChanged) {
    const ProfileSet before = examples({1, 2}, 6);
    expect_done(write(before));
    const std::string runs =
        "Profile 2 runs: it can be changed when it has come to its end or was ended.";
    ProfileWriter writer(context());
    plan = writer.plan_erase({1, 2});
    EXPECT_EQ(plan.refusal, "");
    rig->set({{4102, 2}, {4101, 1}}); // somebody at its keys
    const ProfileWriteResult result = writer.write(plan);
    EXPECT_EQ(result.problems, Lines{runs});
    EXPECT_EQ(held(), before);
    EXPECT_EQ(writer.plan_write(742, examples({2}, 3)).refusal, runs);
    EXPECT_EQ(writer.plan_write(742, examples({1}, 3)).refusal, "");
    rig->fate = [](const Request& request) {
        return request.number == 4100 ? Fate::ReplyDamaged : Fate::Answered;
    };
    EXPECT_EQ(writer.plan_write(742, examples({1}, 3)).refusal,
              "Which profile runs could not be read, so nothing is changed. Only damaged "
              "replies to the read of state (register 4100).");
    rig->fate = {};
    rig->set({{4101, 5}});
    expect_done(writer.write(writer.plan_erase({1, 2})));
}

TEST_F(WriterTest, NothingIsSentToAControllerThatHasNoProfilesOrToALineInUse) {
    open("simulated:730");
    EXPECT_EQ(read().problems, Lines{"Model 730 has no ramp profiles."});
    EXPECT_EQ(ProfileWriter(context()).plan_write(730, examples({1}, 2)).refusal,
              "Model 730 has no ramp profiles.");
    EXPECT_EQ(rig->requests, (std::vector<Request>{{3, 0, 1}, {3, 0, 1}}));

    open("simulated:742");
    Link logging(rig->channels, rig->countdowns, rig->dialogs, rig->log, "Data Logging");
    {
        const LineClaim claim = logging.claim();
        EXPECT_EQ(read().problems, Lines{"The line is in use by Data Logging."});
        EXPECT_EQ(ProfileWriter(context()).plan_erase({1}).refusal,
                  "The line is in use by Data Logging.");
    }
    EXPECT_EQ(rig->requests, std::vector<Request>{});
    EXPECT_EQ(ProfileWriter(context()).plan_write(750, examples({1}, 2)).refusal,
              "The profiles are of model 750, the controller is a 742.");
    EXPECT_EQ(ProfileWriter(context()).plan_write(742, examples({1}, 51)).refusal,
              "Profile 1 has 51 steps, at most 50 can be.");
}

} // namespace
} // namespace pelvan::testing
