// Profiles of a simulated controller: written, started, held, watched and lost.
#include "profile_form_fixture.h"

namespace pelvan::testing {
namespace {

constexpr int kCommand = 4101;

class ProfileOnTheLine : public ProfileForm {
  protected:
    /// A profile that is written and runs.
    void run_profile() {
        open();
        rig->set({{300, 250}, {319, 250}});
        make_profile();
        write_profile();
        start_profile();
    }
};

TEST_F(ProfileOnTheLine, WritingSaysWhatWillChangeAsksAndCanBeCancelled) {
    open();
    make_profile();
    form->menu.mnuWrite.choose();
    EXPECT_EQ(rig->dialogs.texts().back(), "Profile 1 is created with 3 steps.\n\nWrite?");
    EXPECT_EQ(rig->writes_of(4002, 1), 0) << "nobody agreed";
    write_profile();
    EXPECT_EQ(form->lbl_Message.Caption(), "Written, read back, and found as it should be.");
    EXPECT_FALSE(form->work().editor().dirty());
    type(0, "set point 1", "200");
    answer({MessageAnswer::Yes, MessageAnswer::Yes, MessageAnswer::Yes});
    on_turn = [&] {
        EXPECT_FALSE(form->menu.mnuRead.Enabled());
        EXPECT_FALSE(cell(0, "set point 1").editable);
        if (form->line.ProgressBar1.Visible() && rig->writes_of(4007, 2000) > 0 &&
            !form->line.canceled())
            form->line.cmdCancel.press();
    };
    form->menu.mnuWrite.choose();
    EXPECT_EQ(form->lbl_Message.Caption(), "Cancelled. What was there before is written back.");
    rig->set({{4000, 1}, {4001, 1}});
    EXPECT_EQ(rig->get(4007), 1000);
    answer({MessageAnswer::Yes});
    on_turn = {};
    form->menu.mnuRead.choose();
    EXPECT_EQ(cell(0, "set point 1").text, "100.0");
    answer({MessageAnswer::Yes});
    form->menu.mnuErase.choose();
    EXPECT_EQ(rig->get(4041), 0);
    EXPECT_EQ(form->profile_sheet().rows(), 0);
}

TEST_F(ProfileOnTheLine, AStartIsAskedAboutAndTheRunningProfileIsLocked) {
    run_profile();
    const std::string question = rig->dialogs.texts().back();
    EXPECT_NE(question.find("1: ramp in a time: 0:30:00, set point 1 100.0 degrees"),
              std::string::npos)
        << question;
    EXPECT_NE(question.find("In all 1:30:00"), std::string::npos) << question;
    EXPECT_EQ(state(), "Profile 1, step 1 is running, 0:30:00 left.");
    EXPECT_TRUE(form->run.watching());
    EXPECT_NE(type(0, "min", "5"), "");
    EXPECT_EQ(cell(0, "min").text, "30");
    EXPECT_FALSE(form->menu.mnuInsert.Enabled());
    EXPECT_FALSE(form->menu.mnuStart.Enabled());
    tick(900);
    EXPECT_NEAR(form->run_desk().picture().now_s, 900, 3);
    form->hold();
    EXPECT_TRUE(state().starts_with("Profile 1, step 1 is held, 0:1")) << state();
    tick(600);
    EXPECT_NEAR(form->run_desk().picture().now_s, 1500, 5) << "the rest has moved on";
    EXPECT_NEAR(form->run_desk().picture().programmed.pieces.back().to_s, 6000, 5);
    form->menu.mnuResume.choose();
    answer({MessageAnswer::Yes});
    form->menu.mnuNext.choose();
    EXPECT_EQ(state(), "Profile 1, step 2 is running, 1:00:00 left.");
    answer({MessageAnswer::Yes});
    form->menu.mnuEnd.choose();
    EXPECT_EQ(state(), "No profile runs (ended).");
    EXPECT_EQ(type(0, "min", "5"), "");
    rig->dialogs.files = {rig->dir.file("run.csv")};
    form->menu.mnuSaveCsv.choose();
    EXPECT_GE(split(read_file(rig->dir.file("run.csv")), '\n').size(), 6U);
    EXPECT_EQ(rig->writes_of(kCommand, 2), 1) << "every command once";
}

TEST_F(ProfileOnTheLine, NothingIsStartedThatIsNotWhatWasReadLast) {
    open();
    make_profile();
    write_profile();
    rig->set({{4000, 1}, {4001, 1}, {4007, 2000}}); // at the controller's own keys
    start_profile();
    EXPECT_EQ(rig->dialogs.texts().back(),
              "Nothing was started. The controller holds another profile 1, or others that it "
              "jumps to, than was read: read again (F5).");
    EXPECT_EQ(rig->writes_of(kCommand, 1), 0);
    rig->set({{4000, 1}, {4001, 1}, {4007, 1000}});
    auto& table = const_cast<simulator::RegisterTable&>(rig->station->controller.table());
    table.set_value(2, 1519); // the plug goes to the next cabinet
    start_profile();
    EXPECT_EQ(rig->dialogs.texts().back(), "Nothing was started. Another controller answers than "
                                           "the one whose profiles were read: read it (F5).");
    answer({MessageAnswer::Yes});
    form->menu.mnuRead.choose();
    start_profile();
    EXPECT_EQ(state(), "Profile 1, step 1 is running, 0:30:00 left.");
}

TEST_F(ProfileOnTheLine, ALostReplyIsNotKnownUntilTheStateIsRead) {
    run_profile();
    bool dead = false;
    rig->fate = [&dead](const Request& request) {
        dead = dead || request == Request{6, kCommand, 2};
        return dead ? Fate::ReplyLost : Fate::Answered;
    };
    form->hold();
    EXPECT_EQ(state(), "Not known.");
    for (MenuEntry* entry : {&form->menu.mnuHold, &form->menu.mnuResume, &form->menu.mnuEnd})
        EXPECT_NE(entry->ToolTipText().find("was lost"), std::string::npos);
    EXPECT_NE(form->hold_refusal(), "");
    form->hold();
    tick(1);
    EXPECT_EQ(rig->writes_of(kCommand, 2), 1);
    const double lost_s = form->run_desk().picture().now_s;
    rig->fate = {};
    tick(100);
    EXPECT_EQ(state(), "Profile 1, step 1 is held, 0:30:00 left.");
    EXPECT_TRUE(form->menu.mnuResume.Enabled());
    EXPECT_GE(form->run_desk().picture().now_s, lost_s);
    const auto& points = form->run_desk().picture().points;
    EXPECT_EQ(std::ranges::count(points, false, &RunPoint::seen), 1) << "the gap is bridged";
}

TEST_F(ProfileOnTheLine, HoldIsSentWhileAnotherProfileIsWritten) {
    run_profile();
    form->menu.mnuNew.choose();
    bool held = false;
    on_turn = [&] {
        if (held || rig->writes_of(4002, 1) < 2) return;
        held = true;
        EXPECT_EQ(form->hold_refusal(), "");
        form->hold();
        EXPECT_EQ(rig->get(4100), 2);
    };
    write_profile();
    EXPECT_TRUE(held);
    EXPECT_EQ(form->lbl_Message.Caption(), "Written, read back, and found as it should be.");
    EXPECT_EQ(rig->writes_of(kCommand, 2), 1);
}

TEST_F(ProfileOnTheLine, APollWaitsForTheLineAndSaysSo) {
    run_profile();
    Link other(rig->table, rig->countdowns, rig->gate, rig->log, "Save/Restore Setup");
    const std::size_t requests = rig->requests.size();
    {
        const LineClaim claim = other.claim();
        form->permit();
        tick(2);
        EXPECT_EQ(form->run.lbl_Values.Caption(),
                  "Waits for the line: The line is in use by Save/Restore Setup.");
        EXPECT_FALSE(form->menu.mnuRead.Enabled());
        EXPECT_EQ(rig->requests.size(), requests);
    }
    tick(2);
    EXPECT_TRUE(form->menu.mnuRead.Enabled());
    EXPECT_GT(rig->requests.size(), requests);
}

TEST_F(ProfileOnTheLine, AnAddressThatIsNoneIsMendedBeforeAnythingIsAsked) {
    open();
    form->line.cmbAddress.set_Text("1O");
    form->menu.mnuRead.choose();
    EXPECT_EQ(rig->dialogs.texts(), std::vector<std::string>{"Bad ADDRESS entered."});
}

TEST_F(ProfileOnTheLine, AnswersThatAreTooLateAreToldApartFromNone) {
    open("simulated:742,delay=400");
    form->menu.mnuRead.choose();
    EXPECT_EQ(rig->dialogs.texts().back(), "The controller's model could not be read. Answers "
                                           "come, but later than the 250 ms that are waited for.");
    open("simulated:742,lost=1");
    form->menu.mnuRead.choose();
    EXPECT_EQ(rig->dialogs.texts().back(), "The controller's model could not be read.");
}

TEST_F(ProfileOnTheLine, AModelWithoutProfilesOrWithoutRun) {
    open("simulated:730");
    form->menu.mnuRead.choose();
    EXPECT_EQ(rig->dialogs.texts().back(), "Model 730 has no ramp profiles.");
    EXPECT_EQ(rig->requests, std::vector{(Request{3, 0, 1})}) << "its model and no more";
    open();
    const std::string pds = rig->dir.file("Download Sequences/742.pds");
    std::string text = read_file(pds);
    write_file(pds, text.substr(0, text.find("RUN")));
    form = std::make_unique<frm_ProfileLogic>(rig->services, rig->link, rig->modbus);
    form->Show();
    make_profile();
    write_profile();
    EXPECT_EQ(form->lbl_Message.Caption(), "Written, read back, and found as it should be.");
    for (MenuEntry* entry : {&form->menu.mnuStart, &form->menu.mnuHold, &form->menu.mnuWatch}) {
        EXPECT_FALSE(entry->Enabled());
        EXPECT_NE(entry->ToolTipText().find("no section RUN"), std::string::npos);
    }
}

TEST_F(ProfileOnTheLine, TheWindowClosesInEveryState) {
    run_profile();
    EXPECT_TRUE(form->Unload()) << "while a profile runs: it goes on in the controller";
    EXPECT_FALSE(form->run.watching());
    EXPECT_EQ(rig->get(4100), 1);
    form->Show();
    form->menu.mnuWatch.choose();
    EXPECT_EQ(state().substr(0, 26), "Profile 1, step 1 is runni");
    rig->fate = [](const Request&) { return Fate::NotReceived; };
    tick(2);
    EXPECT_TRUE(form->Unload()) << "while the line is lost";
    rig->fate = {};
    form->Show();
    answer({MessageAnswer::Yes});
    bool closed = true;
    on_turn = [&] {
        if (rig->requests.back() == Request{3, 4041, 1}) closed = form->Unload();
    };
    form->menu.mnuRead.choose();
    EXPECT_FALSE(closed) << "not in the middle of the work";
    EXPECT_FALSE(form->Visible()) << "but when it has ended";
}

} // namespace
} // namespace pelvan::testing
