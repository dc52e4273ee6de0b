#include "scripted_controller.h"

namespace pelvan::testing {
namespace {

const Writes kErase{{1789, 1512}, {1415, 1600}, {1602, 800}};
constexpr char kEraseQuestion[] = "This erase all current settings. Do you want to continue?";
const std::string kRefusal = "1 134 3 2 97 "; // the reply to a refused write

class Upload : public ScriptedController {
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
    write_setup("5 1\r\n\r\n6  -12\r\n7\r\n8 77<--CRC\r\n9 cter\r\n10x3 4\r\n25 0\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    form.List2.AddItem("old");
    upload();
    EXPECT_EQ(restored(), (Writes{{5, 1}, {6, -12}, {7, 0}, {8, 77}, {9, 0}, {10, 4}, {25, 0}}))
        << "the empty line has none";
    EXPECT_EQ(lines(form.List1),
              (Lines{"******Erasing Old Settings******", "******Beginning  Upload******",
                     "5 1 Successful", "6 -12 Successful", "7 0 Successful", "8 77 Successful",
                     "9 0 Successful", "10 4 Successful", "25 0 Successful",
                     "*******Upload Complete*******"}));
    EXPECT_EQ(rig.dialogs.texts(), (Lines{kEraseQuestion, "Upload Complete"}));
    EXPECT_EQ(form.List2.ListCount(), 0);
    EXPECT_TRUE(exists("742_Upload_Error.TXT"));
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "");
    EXPECT_FALSE(exists("742_ERROR.TXT"));
}

TEST_F(Upload, RefusedWritesAreRecordedAndTheUploadGoesOn) {
    write_setup("5 1\r\n6 2\r\n7 40000\r\n70000 1\r\n8 3\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    refused = {5, 6};
    upload();
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "Response From Control\tReg No\tValue\t\r\n" +
                                                 kRefusal + "\t5\t1\tError\r\n" + kRefusal +
                                                 "\t6\t2\tError\r\n"
                                                 "Bad DATA VALUE entered.\t7\t40000\tError\r\n"
                                                 "Bad REGISTER entered.\t70000\t1\tError\r\n");
    ASSERT_EQ(form.List2.ListCount(), 4);
    EXPECT_EQ(form.List2.List(1), kRefusal + "               6           2    Error");
    EXPECT_EQ(form.List1.List(2), "5 1 ***UNSUCCESSFUL***");
    EXPECT_EQ(form.List1.List(6), "8 3 Successful");
    EXPECT_TRUE(exists("742_ERROR.TXT")) << "deleted only when no write was refused";
}

TEST_F(Upload, RefusalsAtALongerAddressDoNotCountButAreListed) {
    write_setup("5 1\r\n");
    refused = {5};
    form.cmbAddress.set_Text("12");
    upload();
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "");
    EXPECT_EQ(form.List1.List(2), "5 1 ***UNSUCCESSFUL***");
    EXPECT_EQ(form.List2.ListCount(), 1);
}

TEST_F(Upload, ErasesBeforeItFindsTheModelsDifferent) {
    for (const char* model : {" 742", "  730", ""}) {
        writes.clear();
        rig.dialogs.answers = {MessageAnswer::Yes};
        write_setup("5 1\r\n", model);
        upload();
        EXPECT_EQ(restored(), Writes{}) << model;
        EXPECT_EQ(last_message(),
                  "Model number from the controller does not match the model number from the text "
                  "file so Upload of values is canceled.");
        expect_usable(false);
    }
}

TEST_F(Upload, NothingIsWrittenUnlessTheModelIsReadAndTheUserAgrees) {
    write_setup("5 1\r\n");
    silent[0] = 3;
    rig.dialogs.answers = {MessageAnswer::Cancel};
    upload();
    EXPECT_FALSE(exists("742_Upload_Error.TXT"));
    upload();
    std::filesystem::remove(rig.dir.file("Download Sequences/742.cds"));
    upload();
    rig.dialogs.answers = {MessageAnswer::Yes};
    upload();
    EXPECT_EQ(writes, Writes{});
    const std::string missing = "Can not find the 742.cds file to check whether this model has "
                                "Profiles. Do you want to continue with the upload?";
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{"Comm Error!", "Download has been canceled. Need to check Comm Port Settings.",
                     kEraseQuestion, "Upload Canceled!", missing, "Upload Canceled!", missing,
                     "Does model 742 have Profiles?", kEraseQuestion, "Upload Canceled!"}));
    EXPECT_EQ(form.List1.List(0), "*******Upload Canceled*******");
}

TEST_F(Upload, AControllerSilentAfterTheEraseIsAskedAgain) {
    write_setup("5 1\r\n");
    on_write = [&](int number) {
        if (number == 1602) silent[0] = 1000;
    };
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Retry, MessageAnswer::Cancel};
    upload();
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{kEraseQuestion, "Comm Error!", "Comm Error!, Retry or Cancel",
                     "Communication Error,Upload Canceled."}));
    EXPECT_EQ(writes.size(), 6U) << "the erase was done twice, nothing else";
}

TEST_F(Upload, AWriteWithoutAReplyIsRepeatedAndThenAskedFor) {
    write_setup("5 1\r\n6 2\r\n7 3\r\n");
    silent = {{5, 4}, {6, 1000}};
    rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Retry, MessageAnswer::Cancel};
    upload();
    EXPECT_EQ(restored().size(), 5U + 10U);
    EXPECT_EQ(form.List1.List(3), "Download Canceled ");
    EXPECT_EQ(last_message(), "Comm Error!");
}

TEST_F(Upload, ComparingWritesNothingToAControllerWithoutProfiles) {
    write_setup("4000 1\r\n4001 1\r\n5 1\r\n");
    compare();
    EXPECT_EQ(writes, Writes{});
}

TEST_F(Upload, FilesAndFoldersThatAreMissing) {
    upload();
    EXPECT_EQ(last_message(), "INSTALL DISK WITH FILE " + path("a.txt") + " INTO DRIVE A");
    expect_usable(false);
    writes.clear();
    std::filesystem::remove_all(rig.dir.file("Reg Downloads"));
    for (Button* button : {&form.cmdDownload, &form.cmdUpload, &form.cmdCompare}) {
        rig.dialogs.shown.clear();
        press(*button);
        EXPECT_EQ(rig.dialogs.texts(), Lines{"PATH NOT FOUND ERROR"});
        expect_usable(false);
    }
    EXPECT_EQ(writes, Writes{}) << "nothing is erased without a place for the error file";
}

TEST_F(Upload, SetupFilesOfAnyContent) {
    const std::string head = "*\n   Model #:  742\n\n\n\n\n*\n";
    std::string binary;
    for (int i = 0; i < 4000; ++i)
        binary += static_cast<char>(i * 37 % 251);
    const std::pair<std::string, Writes> cases[] = {
        {"", {}},
        {binary, {}},
        {"*\n   Model #:  74", {}},
        {"*\n   Model #:  1e99\n\n\n\n\n*\n5 1\n", {}},
        {"*\nab742\n\n\n\n\n*\n5 1\n", {{5, 1}}},
        {"*\n   Model #:   742\n\n\n\n\n*\n5 1\n", {{5, 1}}},
        {head, {}},
        {head + "5 1\n6 2", {{5, 1}, {6, 2}}},
        {head + "5 1e99\n6 99999999999999999999\n8 4\n", {{8, 4}}},
        {head + "x 1\nRegister 6 2\n 7 3\n8 4\n", {{8, 4}}},
    };
    for (const auto& [text, expected] : cases) {
        write_file(path("a.txt"), text);
        writes.clear();
        rig.dialogs.answers = {MessageAnswer::Yes};
        upload();
        EXPECT_EQ(restored(), expected) << text.substr(0, 80);
        EXPECT_TRUE(form.cmdUpload.Enabled());
    }
}

/// Lines 2 to 4 name the registers; a line without a number leaves the usual one, 4040.
class ProfileUpload : public Upload {
  protected:
    ProfileUpload() {
        write_sequence("742.cds", "YES\r\n5000 number\r\n5002\r\n-\r\n");
        registers[4040] = 0;
    }
};

TEST_F(ProfileUpload, ANumberThatCannotBeFilledEndsTheUpload) {
    write_setup("5000 2\r\n5002 1\r\n25 0\r\n");
    silent[5002] = 1000;
    upload();
    EXPECT_EQ(last_message(), "Comm Error when creating the Delete Profile. Upload Canceled!");
    EXPECT_NE(writes.back(), (std::pair{25, 0}));
}

TEST_F(ProfileUpload, ALineThatGoesSilentIsToldOnceForAllFillingProfiles) {
    write_setup("5000 4\r\n5002 1\r\n25 0\r\n");
    on_write = [&](int number) {
        if (number == 25) silent[5000] = 1000;
    };
    upload();
    EXPECT_EQ(rig.dialogs.texts(),
              (Lines{kEraseQuestion,
                     "Could not erase a profile that the program created to keep the indexing "
                     "correct. Profile Number 1 did not exist in the upload file. You should "
                     "manually delete Profile Number 1.",
                     "Upload Complete"}));
    EXPECT_EQ(lines(form.List2),
              (Lines{"Profile not erased               5000           2    Error",
                     "Profile not erased               5000           3    Error"}));
}

TEST_F(ProfileUpload, ComparingCountsTheStepsOfEveryProfile) {
    registers[4040] = 3;
    registers[25] = 0;
    // Two steps; three; and one, in a file that ends with the profile.
    write_setup("5000 1\r\n5002 1\r\n5002 3\r\n25 0\r\n"
                "5000 2\r\n5002 1\r\n5002 3\r\n5002 3\r\n5000 3\r\n5002 1\r\n");
    compare();
    EXPECT_EQ(lines(form.List2),
              (Lines{"Controller holds: 3               4040           2    Different",
                     "Controller holds: 3               4040           1    Different"}));
    EXPECT_EQ(writes, (Writes{{5000, 1}, {5000, 2}, {5000, 3}}));
}

TEST_F(ProfileUpload, NothingIsWrittenIntoWhatWasNotSelectedOrErased) {
    // Faults and the last of them; `last_writes` are those ahead of the last line's.
    const auto restore = [&](const std::string& setup, int refusing, Writes last_writes) {
        write_setup(setup + "25 0\r\n");
        refused = {refusing};
        rig.dialogs.answers = {MessageAnswer::Yes};
        upload();
        last_writes.emplace_back(25, 0);
        EXPECT_EQ(Writes(writes.end() - std::ssize(last_writes), writes.end()), last_writes);
        return std::to_string(form.List2.ListCount()) + ": " + lines(form.List2).back();
    };
    EXPECT_EQ(restore("5000 1\r\n5002 1\r\n", 5002, {{5000, 1}, {5002, 1}}),
              "1: " + kRefusal + "               5002           1    Error")
        << "its own reply";
    EXPECT_EQ(restore("5000 300\r\n5002 1\r\n5003 1\r\n", 5000, {{5000, 300}}),
              "3: No profile selected               5003           1    Error");
    EXPECT_EQ(restore("5000 1\r\n5001 9\r\n5003 1\r\n", 5001, {{5001, 9}}),
              "2: No step selected               5003           1    Error");
    registers[4040] = 3; // a profile that stays, of 255, gets no steps on top of its own
    EXPECT_EQ(restore("5000 1\r\n5002 3\r\n", 5002, {{5000, 1}, {5002, 2}}),
              "257: No profile selected               5002           3    Error");
}

} // namespace
} // namespace pelvan::testing
