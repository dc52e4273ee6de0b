#include "scripted_controller.h"

namespace pelvan::testing {
namespace {

using Lines = std::vector<std::string>;
using Writes = std::vector<std::pair<int, int>>;

const Writes kErase{{1789, 1512}, {1415, 1600}, {1602, 800}};

class Upload : public ::testing::Test, public ScriptedController {
  protected:
    Upload() {
        write_sequence("742.cds", "NO\r\n-\r\n-\r\n-\r\n");
        rig.dialogs.answers = {MessageAnswer::Yes};
    }
    void write_setup(const std::string& body, const std::string& model = "  742") {
        write_file(path("a.txt"), "*\r\n   Model #:" + model + "\r\n\r\n\r\n\r\n\r\n*\r\n" + body);
    }
    /// Writes behind the erase.
    Writes restored() {
        EXPECT_GE(writes.size(), kErase.size());
        EXPECT_TRUE(std::equal(kErase.begin(), kErase.end(), writes.begin()));
        return {writes.begin() + 3, writes.end()};
    }
};

TEST_F(Upload, WritesEveryLineInOrder) {
    write_setup("5 1\r\n\r\n6 -12\r\n7\r\n25 0\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    form.List2.AddItem("old");
    upload_from("a.txt");
    EXPECT_EQ(restored(), (Writes{{5, 1}, {6, -12}, {7, 0}, {25, 0}})) << "the empty line has none";
    EXPECT_EQ(lines(form.List1),
              (Lines{"******Erasing Old Settings******", "******Beginning  Upload******",
                     "5 1 Successful", "6 -12 Successful", "7 0 Successful", "25 0 Successful",
                     "*******Upload Complete*******"}));
    EXPECT_EQ(
        rig.dialogs.texts(),
        (Lines{"This erase all current settings. Do you want to continue?", "Upload Complete"}));
    EXPECT_EQ(form.List2.ListCount(), 0);
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "");
    EXPECT_FALSE(exists("742_ERROR.TXT"));
}

TEST_F(Upload, RefusedWritesAreRecordedAndTheUploadGoesOn) {
    write_setup("5 1\r\n6 2\r\n7 40000\r\n70000 1\r\n8 3\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    refused = {5, 6};
    upload_from("a.txt");
    const std::string reply = "1 134 3 2 97 ";
    EXPECT_EQ(saved("742_Upload_Error.TXT"),
              "Response From Control\tReg No\tValue\t\r\n" + reply + "\t5\t1\tError\r\n" + reply +
                  "\t6\t2\tError\r\nBad DATA VALUE entered.\t7\t40000\tError\r\n"
                  "Bad REGISTER entered.\t70000\t1\tError\r\n");
    ASSERT_EQ(form.List2.ListCount(), 4);
    EXPECT_EQ(form.List2.List(1), reply + "               6           2    Error");
    EXPECT_EQ(form.List1.List(2), "5 1 ***UNSUCCESSFUL***");
    EXPECT_EQ(form.List1.List(6), "8 3 Successful");
    EXPECT_TRUE(exists("742_ERROR.TXT")) << "deleted only when no write was refused";
    EXPECT_TRUE(form.run().completed);
}

TEST_F(Upload, RefusalsAtALongerAddressDoNotCountButAreListed) {
    write_setup("5 1\r\n");
    refused = {5};
    form.cmbAddress.set_Text("12");
    upload_from("a.txt");
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "");
    EXPECT_EQ(form.List1.List(2), "5 1 ***UNSUCCESSFUL***");
    EXPECT_EQ(form.List2.ListCount(), 1);
    EXPECT_EQ(form.run().error_count, 0);
    EXPECT_EQ(form.run().faults, 1);
}

TEST_F(Upload, ErasesBeforeItFindsTheModelsDifferent) {
    for (const char* model : {" 742", "  730", ""}) {
        writes.clear();
        rig.dialogs.answers = {MessageAnswer::Yes};
        write_setup("5 1\r\n", model);
        upload_from("a.txt");
        EXPECT_EQ(restored(), Writes{}) << model;
        EXPECT_EQ(rig.dialogs.texts().back(),
                  "Model number from the controller does not match the model number from the text "
                  "file so Upload of values is canceled.");
    }
}

TEST_F(Upload, NothingIsWrittenWhenTheUserDeclines) {
    write_setup("5 1\r\n");
    rig.dialogs.answers = {MessageAnswer::No};
    upload_from("a.txt");
    std::filesystem::remove(rig.dir.file("Download Sequences/742.cds"));
    rig.dialogs.answers = {MessageAnswer::No};
    upload_from("a.txt");
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::No, MessageAnswer::No};
    upload_from("a.txt");
    EXPECT_EQ(writes, Writes{});
    const std::string missing = "Can not find the 742.cds file to check whether this model has "
                                "Profiles. Do you want to continue with the upload?";
    const std::string erase = "This erase all current settings. Do you want to continue?";
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{erase, "Upload Canceled!", missing, "Upload Canceled!", missing,
                     "Does model 742 have Profiles?", erase, "Upload Canceled!"}));
    EXPECT_EQ(form.List1.List(0), "*******Upload Canceled*******");
}

TEST_F(Upload, AControllerSilentAfterTheEraseIsAskedAgain) {
    write_setup("5 1\r\n");
    desktop.on_turn = [&] {
        if (writes.size() == 1) silent[0] = 3 * 13 * 2;
    };
    silent[1602] = 1;
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Retry, MessageAnswer::Cancel};
    // Silent from the reset on: every read of the model goes unanswered.
    rig.ports[1]->responder = [this, inner = rig.ports[1]->responder](const std::string& request) {
        if (request[1] == 6 && request[2] == 6 && request[3] == 66) silent[0] = 1000;
        return inner(request);
    };
    upload_from("a.txt");
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{"This erase all current settings. Do you want to continue?", "Comm Error!",
                     "Comm Error!, Retry or Cancel", "Communication Error,Upload Canceled."}));
    EXPECT_EQ(writes.size(), 6U) << "the erase was done twice, nothing else";
}

TEST_F(Upload, AWriteWithoutAReplyIsRepeatedAndThenAskedFor) {
    write_setup("5 1\r\n6 2\r\n7 3\r\n");
    silent[5] = 4;
    silent[6] = 1000;
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Retry, MessageAnswer::Cancel};
    upload_from("a.txt");
    EXPECT_EQ(restored().size(), 5U + 10U);
    EXPECT_EQ(form.List1.List(3), "Download Canceled ");
    EXPECT_EQ(rig.dialogs.texts().back(), "Comm Error!");
    EXPECT_FALSE(form.run().completed);
}

TEST_F(Upload, UnreadableModelStopsWithTheDownloadsWords) {
    write_setup("5 1\r\n");
    silent[0] = 3;
    rig.dialogs.answers = {MessageAnswer::Cancel};
    upload_from("a.txt");
    EXPECT_EQ(rig.dialogs.texts().back(),
              "Download has been canceled. Need to check Comm Port Settings.");
    EXPECT_FALSE(exists("742_Upload_Error.TXT"));
}

class ProfileUpload : public Upload {
  protected:
    ProfileUpload() {
        write_sequence("742.cds", "YES\r\n4000\r\n4002\r\n4040\r\n");
        registers[4040] = 0;
        write_setup("4000 2\r\n4002 1\r\n25 0\r\n");
    }
};

TEST_F(ProfileUpload, ANumberThatCannotBeFilledEndsTheUpload) {
    silent[4002] = 1000;
    upload_from("a.txt");
    EXPECT_EQ(rig.dialogs.texts().back(),
              "Comm Error when creating the Delete Profile. Upload Canceled!");
    EXPECT_FALSE(form.run().completed);
    EXPECT_NE(writes.back(), (std::pair{25, 0}));
}

TEST_F(ProfileUpload, AFillingProfileThatStaysIsTold) {
    desktop.on_turn = [&] {
        if (lines(form.List1).back() != "25 0 Successful") return;
        registers[4040] = 1;
        silent[4002] = 1000;
    };
    upload_from("a.txt");
    const auto texts = rig.dialogs.texts();
    EXPECT_EQ(texts[texts.size() - 2],
              "Could not erase a profile that the program created to keep the indexing correct. "
              "Profile Number 1 did not exist in the upload file. You should manually delete "
              "Profile Number 1.");
    EXPECT_EQ(texts.back(), "Upload Complete");
}

TEST_F(ProfileUpload, ALineThatGoesSilentIsToldOnceForAllFillingProfiles) {
    write_setup("4000 4\r\n4002 1\r\n25 0\r\n");
    desktop.on_turn = [&] {
        if (lines(form.List1).back() == "25 0 Successful") silent[4000] = 1000;
    };
    upload_from("a.txt");
    const auto texts = rig.dialogs.texts();
    EXPECT_EQ(std::count_if(texts.begin(), texts.end(),
                            [](const std::string& text) { return text.starts_with("Could not"); }),
              1);
    EXPECT_TRUE(lines(form.List2).back().starts_with("Profile not erased"));
    EXPECT_EQ(form.List2.ListCount(), 2);
}

TEST_F(ProfileUpload, ARefusedActionIsRecordedWithItsOwnReply) {
    refused = {4002};
    write_setup("4000 1\r\n4002 1\r\n25 0\r\n");
    upload_from("a.txt");
    EXPECT_EQ(saved("742_Upload_Error.TXT"),
              "Response From Control\tReg No\tValue\t\r\n1 134 3 2 97 \t4002\t1\tError\r\n");
}

TEST_F(ProfileUpload, LinesOfAProfileThatCannotBeSelectedAreWrittenNowhere) {
    write_setup("4000 300\r\n4002 1\r\n4003 1\r\n25 0\r\n");
    refused = {4000};
    upload_from("a.txt");
    EXPECT_EQ(writes.back(), (std::pair{25, 0}));
    EXPECT_EQ(writes[writes.size() - 2], (std::pair{4000, 300}));
    EXPECT_EQ(form.List2.ListCount(), 3);
}

TEST_F(ProfileUpload, LinesOfAStepThatCannotBeSelectedAreWrittenNowhere) {
    write_setup("4000 1\r\n4001 9\r\n4003 1\r\n25 0\r\n");
    refused = {4001};
    upload_from("a.txt");
    EXPECT_EQ(writes.back(), (std::pair{25, 0}));
    EXPECT_EQ(writes[writes.size() - 2], (std::pair{4001, 9}));
    EXPECT_EQ(form.List2.List(1), "No step selected               4003           1    Error");
}

TEST_F(ProfileUpload, AProfileThatStaysGetsNoStepsOnTopOfItsOwn) {
    write_setup("4000 1\r\n4002 3\r\n25 0\r\n");
    registers[4040] = 3;
    refused = {4002};
    upload_from("a.txt");
    EXPECT_EQ(writes.back(), (std::pair{25, 0}));
    EXPECT_EQ(std::count(writes.begin(), writes.end(), std::pair{4002, 3}), 0);
}

TEST_F(Upload, ComparingWritesNothingToAControllerWithoutProfiles) {
    write_setup("4000 1\r\n4001 1\r\n5 1\r\n");
    rig.dialogs.files.push_back(path("a.txt"));
    form.cmdCompare.press();
    EXPECT_EQ(writes, Writes{});
    EXPECT_EQ(form.run().differences, 3);
}

} // namespace
} // namespace pelvan::testing
