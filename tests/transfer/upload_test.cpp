#include "scripted_controller.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"

namespace pelvan::testing {

const Writes kErase{{1789, 1512}, {1415, 1600}, {1602, 800}};
constexpr char kEraseQuestion[] = "This erase all current settings. Do you want to continue?";
const std::string kRefusal = "1 134 3 2 97 "; // the reply to a refused write
const std::string kHeader = "Response From Control\tReg No\tValue\t\r\n"; // of the error file
constexpr char kMismatch[] =
    "Model number from the controller does not match the model number from the text file so Upload "
    "of values is canceled.";

static std::string partly(int done, int of) {
    if (done == 0)
        return "None of the " + std::to_string(of) +
               " lines was restored. The controller's settings may be erased.";
    return std::to_string(done) + " of " + std::to_string(of) +
           " lines were restored. The controller's settings were erased and are only partly "
           "restored: restore the file again.";
}

class UploadTest : public ScriptedController {
  protected:
    UploadTest() {
        write_sequence("742.cds", "NO\r\n-\r\n-\r\n-\r\n");
        write_setup("5 1\r\n");
    }
    /// The messages of an upload that writes nothing.
    Lines refused_with(std::deque<bool> answers) {
        EXPECT_FALSE(upload(std::move(answers)).completed);
        EXPECT_EQ(writes, Writes{});
        return ui.messages;
    }
    /// Writes between the erase and the last line.
    Writes restored() {
        EXPECT_GE(writes.size(), kErase.size());
        EXPECT_TRUE(std::equal(kErase.begin(), kErase.end(), writes.begin()));
        const bool ended = writes.back() == std::pair{25, 0};
        return {writes.begin() + 3, writes.end() - (ended ? 1 : 0)};
    }
};

TEST_F(UploadTest, WritesEveryLineInOrder) {
    write_setup("5 1\r\n\r\n6  -12\r\n7\r\n8 77<--CRC\r\n9 cter\r\n10x3 4\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    ui.errors = {"old"};
    EXPECT_TRUE(upload().completed);
    EXPECT_EQ(restored(), (Writes{{5, 1}, {6, -12}, {7, 0}, {8, 77}, {9, 0}, {10, 4}}))
        << "the empty line has none";
    EXPECT_EQ(ui.steps, (Lines{"******Erasing Old Settings******", "******Beginning  Upload******",
                               "5 1 Successful", "6 -12 Successful", "7 0 Successful",
                               "8 77 Successful", "9 0 Successful", "10 4 Successful",
                               "25 0 Successful", "*******Upload Complete*******"}));
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, "Upload Complete"}));
    EXPECT_EQ(ui.share, 1);
    EXPECT_EQ(ui.errors.size(), 3U); // without the old one
    EXPECT_EQ(ui.errors.at(1), entry("Value is no whole number: 77<--CRC", "8", "77"));
    EXPECT_EQ(saved("742_Upload_Error.TXT"),
              kHeader + "Value is no whole number: \t7\t0\tError\r\n"
                        "Value is no whole number: 77<--CRC\t8\t77\tError\r\n"
                        "Value is no whole number: cter\t9\t0\tError\r\n");
    EXPECT_TRUE(exists("742_ERROR.TXT"));
    EXPECT_EQ(compare().faults, 3); // against what was just written
    EXPECT_EQ(ui.messages.back(), "No difference was found, but not everything could be compared.");

    write_setup("5 1\r\n");
    EXPECT_EQ(upload().faults, 0);
    EXPECT_EQ(saved("742_Upload_Error.TXT"), "");
    EXPECT_FALSE(exists("742_ERROR.TXT"));
}

TEST_F(UploadTest, RefusedWritesAreRecordedAndTheUploadGoesOn) {
    write_setup("5 1\r\n6 2\r\nx\r\n7 40000\r\n70000 1\r\n8 3\r\n");
    write_file(path("742_ERROR.TXT"), "x");
    refused = {5, 6};
    const TransferResult result = upload();
    EXPECT_TRUE(result.completed);
    EXPECT_EQ(result.faults, 5);
    EXPECT_EQ(saved("742_Upload_Error.TXT"),
              kHeader + kRefusal + "\t5\t1\tError\r\n" + kRefusal +
                  "\t6\t2\tError\r\nBad DATA VALUE entered.\t7\t40000\tError\r\n"
                  "Bad REGISTER entered.\t70000\t1\tError\r\n");
    EXPECT_EQ(ui.errors.at(1), entry(kRefusal, "6", "2"));
    EXPECT_EQ(ui.errors.at(4), "Line without a register number: x") << "behind the refusals";
    EXPECT_EQ(ui.steps[2], "5 1 ***UNSUCCESSFUL***");
    EXPECT_EQ(ui.steps[6], "8 3 Successful");
    EXPECT_TRUE(exists("742_ERROR.TXT")) << "deleted only when no write was refused";

    address = "12"; // refusals do not count at a longer address, but are listed
    EXPECT_EQ(upload().faults, 5);
    EXPECT_EQ(saved("742_Upload_Error.TXT").find("\t5\t"), std::string::npos);
    EXPECT_EQ(ui.steps[2], "5 1 ***UNSUCCESSFUL***");
}

TEST_F(UploadTest, ErasesBeforeItFindsTheModelsDifferent) {
    for (const char* model : {" 742", "  730", ""}) {
        write_setup("5 1\r\n", model);
        EXPECT_FALSE(upload().completed);
        EXPECT_EQ(restored(), Writes{}) << model;
        EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, kMismatch, partly(0, 2)}));
    }
}

TEST_F(UploadTest, NothingIsWrittenUnlessTheModelIsReadAndTheUserAgrees) {
    silent[0] = 3;
    EXPECT_EQ(refused_with({false}), (Lines{"Comm Error!", kCheckPort}));
    EXPECT_FALSE(exists("742_Upload_Error.TXT"));
    EXPECT_EQ(refused_with({false}), (Lines{kEraseQuestion, "Upload Canceled!"}));
    std::filesystem::remove(rig.dir.file("Download Sequences/742.cds"));
    const std::string missing = "Can not find the 742.cds file to check whether this model has "
                                "Profiles. Do you want to continue with the upload?";
    EXPECT_EQ(refused_with({false}), (Lines{missing, "Upload Canceled!"}));
    EXPECT_EQ(refused_with({true, false, false}), (Lines{missing, "Does model 742 have Profiles?",
                                                         kEraseQuestion, "Upload Canceled!"}));
    EXPECT_EQ(ui.steps, Lines{"*******Upload Canceled*******"});
    EXPECT_EQ(ui.phases, "begun ");
    rig.set_channels(ini_key::echo, "YES");
    connect(); // of a line that does not echo
    const std::string message = refused_with({true, true, true}).back();
    EXPECT_TRUE(message.starts_with("This line does not echo, ")) << message;
}

TEST_F(UploadTest, AControllerSilentAfterTheEraseIsAskedAgain) {
    on_write = [&](int number, int) {
        if (number != 1602) return;
        silent[0] = 1000;
        reads[0] = 0;
    };
    upload({true, true, false});
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, "Comm Error!", "Comm Error!, Retry or Cancel",
                                  "Communication Error,Upload Canceled.", partly(0, 2)}));
    EXPECT_EQ(writes.size(), 6U) << "the erase was done twice, nothing else";
    EXPECT_EQ(reads[0], 13 * 3);
}

TEST_F(UploadTest, AWriteWithoutAReplyIsRepeatedAndThenAskedFor) {
    write_setup("5 1\r\n6 2\r\n7 3\r\n");
    silent = {{5, 4}, {6, 1000}};
    EXPECT_FALSE(upload({true, true, false}).completed);
    EXPECT_EQ(restored().size(), 5U + 10U);
    EXPECT_EQ(ui.steps.back(), "Download Canceled ");
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, "Comm Error!", "Comm Error!", partly(1, 4)}));
    EXPECT_EQ(saved("742_Upload_Error.TXT"), partly(1, 4) + "\r\n");
}

TEST_F(UploadTest, FilesAndFoldersThatAreMissing) {
    std::filesystem::rename(path("a.txt"), rig.dir.file("b.txt"));
    EXPECT_EQ(error_of([&] { upload(); }), error_number::kFileNotFound);
    EXPECT_EQ(error_of([&] { compare(); }), error_number::kFileNotFound);
    EXPECT_EQ(ui.messages, Lines{}) << "found out before any question";
    std::filesystem::remove_all(rig.dir.file("Reg Downloads"));
    const auto restore = [&] {
        ui.answers = {true};
        return transfer<Upload>(rig.dir.file("b.txt"));
    };
    EXPECT_TRUE(restore().completed) << "the folder is made";
    EXPECT_TRUE(exists("742_Upload_Error.TXT"));
    std::filesystem::remove_all(rig.dir.file("Reg Downloads"));
    write_file(rig.dir.file("Reg Downloads"), "");
    EXPECT_NE(error_of([&] { static_cast<void>(restore()); }), 0);
    EXPECT_EQ(writes, Writes{}) << "nothing is erased without a place for the error file";
}

TEST_F(UploadTest, AFullDiskUnderTheErrorFileDoesNotEndIt) {
    write_setup("5 1\r\n6 2\r\n");
    refused = {5};
    const FileSizeLimit limit(20);
    EXPECT_TRUE(upload().completed);
    EXPECT_EQ(restored(), (Writes{{5, 1}, {6, 2}}));
    EXPECT_EQ(ui.messages.back(), "The error file " + path("742_Upload_Error.TXT") +
                                      " could not be written: see the list of errors.");
}

TEST_F(UploadTest, ADamagedReplyToTheModelErasesNothing) {
    for (const std::string& reply :
         {bytes("01 03 02 02 E7 00 00"), frame("01 03 02 02"), frame("01 83 02")}) {
        instead[0] = reply;
        EXPECT_EQ(refused_with({true, false, true, true}),
                  (Lines{"Comm Error!", "Comm Error!", kCheckPort}));
        EXPECT_EQ(ui.errors.size(), 1U);
        EXPECT_FALSE(compare().completed);
    }
}

TEST_F(UploadTest, WhatIsMissingInTheFileIsToldBeforeTheErase) {
    const std::string head = "*\n   Model #:  742\n\n\n\n\n*\n";
    const std::string again = " Do you want to restore it all the same?";
    for (const auto& [text, what, faults] :
         {std::tuple{head + "5 1\n", "does not end with the line 25 0.", 0},
          std::tuple{head.substr(0, head.size() - 3) + "*\n5 1\n25 0\n",
                     "does not have its whole header.", 1},
          std::tuple{head.substr(0, 20), "does not have its whole header.", 0}}) {
        write_file(path("a.txt"), text);
        EXPECT_EQ(refused_with({false}),
                  (Lines{std::string("The setup file ") + what + again, "Upload Canceled!"}));
        EXPECT_EQ(upload({true, true}).faults, faults) << "registers in the header";
        EXPECT_EQ(ui.messages[1], kEraseQuestion);
        EXPECT_EQ(compare().faults, faults);
    }
    write_file(path("a.txt"), "");
    compare();
    EXPECT_EQ(ui.messages, Lines{"The setup file does not have its whole header."});
    write_file(path("a.txt"), head + "0 742\n");
    EXPECT_FALSE(compare().completed);
    EXPECT_EQ(ui.messages, Lines{"The setup file does not end with the line 25 0. The controller "
                                 "holds what the file says."});
    write_file(path("a.txt"), head + std::string("5 \0001\n25 0\n", 11));
    EXPECT_EQ(refused_with({}), Lines{"The setup file is no text file."});
    compare();
    EXPECT_EQ(ui.messages, Lines{"The setup file is no text file."});
}

/// A cable that came off was put back into another controller, which answers at once, or only to
/// the next attempt.
TEST_F(UploadTest, NothingMoreGoesIntoAnotherController) {
    for (const int later : {0, 3}) {
        write_setup("5 1\r\n6 2\r\n7 3\r\n");
        registers[2] = 1518;
        silent = {{6, 5}};
        int silences = later;
        ui.on_turn = [&] {
            if (ui.messages.back() != "Comm Error!") return;
            registers[2] = 1519;
            silent[0] = std::exchange(silences, 0);
        };
        EXPECT_FALSE(upload({true, true}).completed);
        EXPECT_EQ(writes.back(), std::pair(6, 2)) << later;
        EXPECT_EQ(ui.messages[2], "Another controller answers than at the beginning: register 2 "
                                  "was 1518 and is 1519 now.");
    }
}

TEST_F(UploadTest, AnotherControllerAtTheEndIsTold) {
    registers[2] = 1518;
    write_setup("5 1\r\n\r\n6 2\r\n");
    ui.on_turn = [&] { registers[2] = 1519; }; // at the empty line
    EXPECT_FALSE(upload().completed);
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion,
                                  "Another controller answers than at the beginning: register 2 "
                                  "was 1518 and is 1519 now.",
                                  partly(4, 4)}));
    registers[2] = 1518;
    ui.on_turn = [&] { silent[2] = 3; }; // of the one in whose place it stands, perhaps
    EXPECT_EQ(upload().faults, 1);
    EXPECT_TRUE(ui.errors.back().ends_with("does not tell its serial number (register 2)."));
    silent.clear();
    ui.on_turn = nullptr;
    on_write = [&](int number, int) { silent[0] = number == 25 ? 3 : 0; };
    EXPECT_EQ(upload().faults, 1);
    EXPECT_TRUE(ui.errors.back().starts_with("Not checked at the end, for want of an answer: "));
    // What is noticed while the line is left counts, too.
    bool ends = false;
    on_write = [&](int number, int) {
        ends = number == 25;
        if (ends) doubled[2] = 10;
    };
    delay_ms = [&](int number) { return ends && number == 2 ? 1400 : 5; };
    EXPECT_EQ(upload().faults, 2) << ::testing::PrintToString(ui.errors);
}

TEST_F(UploadTest, AResetWithoutItsEchoIsListed) {
    write_setup("");
    refused = {1602};
    EXPECT_EQ(upload().faults, 1);
    EXPECT_EQ(ui.errors, Lines{entry(kRefusal, "1602", "800")});
    refused.clear();
    silent = {{1789, 5}, {1602, 1}};
    EXPECT_TRUE(upload().completed);
    EXPECT_EQ(ui.errors,
              (Lines{entry("No reply", "1789", "1512"), entry("No reply", "1602", "800")}));
}

TEST_F(UploadTest, ComparingListsWhatCannotBeRead) {
    write_setup("5 2\r\n70000 1\r\n6 1\r\n7 7\r\n");
    registers.insert({{7, 7}, {25, 0}});
    instead[6] = frame("02 03 02 00 01");
    const TransferResult result = compare();
    EXPECT_EQ(result.differences, 0);
    EXPECT_EQ(result.faults, 3);
    EXPECT_TRUE(ui.errors.at(0).starts_with("Controller refused the read: 1 131 2 "));
    EXPECT_EQ(ui.errors.at(1), entry("Bad REGISTER entered.", "70000", "1"));
    EXPECT_TRUE(ui.errors.at(2).starts_with("2 3 2 1 "));
    EXPECT_EQ(ui.messages, Lines{"No difference was found, but not everything could be compared."});
}

/// Lines 2 to 4 name the registers; a line without a number leaves the usual one, 4040.
class ProfileUploadTest : public UploadTest {
  protected:
    ProfileUploadTest() {
        write_sequence("742.cds", "YES\r\n5000 number\r\n5002\r\n-\r\n");
        registers[4040] = 0;
    }
};

TEST_F(ProfileUploadTest, AllProfilesAreClearedAcrossGaps) {
    std::map<int, int> steps{{1, 2}, {3, 1}, {255, 1}};
    int selected = 0;
    on_write = [&](int number, int value) {
        if (number == 5000) selected = value;
        if (number == 5002 && value == 2) steps.erase(selected);
        registers[4040] = steps.contains(selected) ? steps[selected] : 0;
    };
    write_setup("");
    EXPECT_TRUE(upload().completed);
    EXPECT_TRUE(steps.empty());
    EXPECT_EQ(ui.steps[2], "Profile 3 erased");
}

TEST_F(ProfileUploadTest, ANumberThatCannotBeFilledEndsTheUpload) {
    write_setup("5000 2\r\n5002 1\r\n");
    silent[5002] = 1000;
    EXPECT_FALSE(upload().completed);
    EXPECT_EQ(ui.messages[1], "Comm Error when creating the Delete Profile. Upload Canceled!");
    EXPECT_NE(writes.back(), (std::pair{25, 0}));
}

TEST_F(ProfileUploadTest, FillingProfilesThatCannotBeErasedAreToldAndListed) {
    const auto told = [](const std::string& number) {
        return "Could not erase a profile that the program created to keep the indexing correct. "
               "Profile Number " +
               number +
               " did not exist in the upload file. You should manually delete Profile "
               "Number " +
               number + ".";
    };
    write_setup("5000 3\r\n5002 1\r\n");
    on_write = [&](int number, int) {
        if (number == 25) silent[5000] = 1000; // told once for a line that went silent
    };
    EXPECT_EQ(upload().faults, 2);
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, told("1"), "Upload Complete"}));
    EXPECT_EQ(ui.errors, (Lines{entry("Profile not erased", "5000", "1"),
                                entry("Profile not erased", "5000", "2")}));
    silent.clear();
    on_write = [&](int number, int) {
        if (number != 25) return;
        registers[4040] = 1;
        refused = {5002};
    };
    EXPECT_EQ(upload().faults, 2);
    EXPECT_EQ(ui.messages, (Lines{kEraseQuestion, told("1"), told("2"), "Upload Complete"}));
    const std::string refusal = kRefusal + "\t5002\t2\tError\r\n";
    EXPECT_EQ(saved("742_Upload_Error.TXT"), kHeader + refusal + refusal);
}

TEST_F(ProfileUploadTest, ComparingSelectsProfilesAndCountsTheStepsOfEach) {
    registers[4040] = 3;
    registers[25] = 0;
    // Two steps; three; and one, in a file that ends with the profile.
    write_setup("5000 1\r\n5002 1\r\n5002 3\r\n25 0\r\n"
                "5000 2\r\n5002 1\r\n5002 3\r\n5002 3\r\n5000 3\r\n5002 1\r\n");
    EXPECT_EQ(compare().differences, 2);
    EXPECT_EQ(ui.errors, (Lines{entry("Controller holds: 3", "4040", "2", "Different"),
                                entry("Controller holds: 3", "4040", "1", "Different")}));
    EXPECT_EQ(writes, (Writes{{5000, 1}, {5000, 2}, {5000, 3}}));
    write_sequence("742.cds", "NO\r\n");
    EXPECT_GT(compare().differences, 0);
    EXPECT_EQ(writes, Writes{}) << "without profiles nothing is selected";
}

TEST_F(ProfileUploadTest, NothingIsWrittenIntoWhatWasNotSelectedOrErased) {
    // Faults and the last of them; `last_writes` are those ahead of the last line's.
    const auto restore = [&](const std::string& setup, int refusing, Writes last_writes) {
        write_setup(setup);
        refused = {refusing};
        const int faults = upload().faults;
        last_writes.emplace_back(25, 0);
        EXPECT_EQ(Writes(writes.end() - std::ssize(last_writes), writes.end()), last_writes);
        return std::to_string(faults) + ": " + ui.errors.back();
    };
    EXPECT_EQ(restore("5000 1\r\n5002 1\r\n", 5002, {{5000, 1}, {5002, 1}}),
              "1: " + entry(kRefusal, "5002", "1"))
        << "its own reply";
    EXPECT_EQ(restore("5000 300\r\n5002 1\r\n5003 1\r\n", 5000, {{5000, 300}}),
              "3: " + entry("No profile selected", "5003", "1"));
    EXPECT_EQ(restore("5000 1\r\n5001 9\r\n5003 1\r\n", 5001, {{5001, 9}}),
              "2: " + entry("No step selected", "5003", "1"));
    registers[4040] = 3; // a profile that stays, of 255, gets no steps on top of its own
    EXPECT_EQ(restore("5000 1\r\n5002 3\r\n", 5002, {{5000, 1}, {5002, 2}}),
              "257: " + entry("No profile selected", "5002", "3"));
}

} // namespace pelvan::testing
