// Files that cannot be used, and a disk that fills: a message, and the window is usable again.
#include "scripted_controller.h"
#include "support/file_size_limit.h"

namespace pelvan::testing {
namespace {

class BadFiles : public ScriptedController {
  protected:
    BadFiles() { write_sequence("742.cds", "NO\r\n-\r\n-\r\n-\r\n5\r\n"); }
};

TEST_F(BadFiles, FilesAndFoldersThatAreMissing) {
    rig.dialogs.answers = {MessageAnswer::Yes};
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

TEST_F(BadFiles, DiskThatFillsKeepsThePartialFile) {
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int i = 0; i < 1000; ++i)
        sequence += "5\r\n";
    write_sequence("742.cds", sequence);
    registers[5] = 1;
    {
        const FileSizeLimit limit(2000);
        download();
    }
    EXPECT_EQ(last_message(), "THE FLOPPY DISK IS FULL");
    EXPECT_TRUE(saved("a.txt").starts_with("***************"));
    EXPECT_GE(saved("a.txt").size(), 1990U);
    expect_usable(false);
}

TEST_F(BadFiles, SetupFilesOfAnyContent) {
    const std::string head = "*\n   Model #:  742\n\n\n\n\n*\n";
    std::string binary;
    for (int i = 0; i < 4000; ++i)
        binary += static_cast<char>(i * 37 % 251);
    const std::pair<std::string, Writes> cases[] = {
        {"", {}},
        {binary, {}},
        {"*\n   Model #:  74", {}},
        {head, {}},
        {head + "5 1\n6 2", {{5, 1}, {6, 2}}},
        {head + "x 1\nRegister 6 2\n 7 3\n8 4\n", {{8, 4}}},
        {head + "5 1e99\n6 99999999999999999999\n8 4\n", {{8, 4}}},
    };
    for (const auto& [text, expected] : cases) {
        write_file(path("a.txt"), text);
        writes.clear();
        rig.dialogs.answers = {MessageAnswer::Yes};
        upload();
        ASSERT_GE(writes.size(), 3U);
        EXPECT_EQ(Writes(writes.begin() + 3, writes.end()), expected) << text.substr(0, 80);
        EXPECT_TRUE(form.cmdUpload.Enabled());
    }
    EXPECT_EQ(form.run().faults, 2);
}

TEST_F(BadFiles, SequenceFilesOfAnyContent) {
    for (const std::string& text : {std::string(), std::string("\0\xFF\xFE\n\n\n\n\0\n", 9),
                                    std::string("NO\n\n\n\n99999999999999\n5\n")}) {
        write_sequence("742.cds", text);
        rig.dialogs.answers = {MessageAnswer::Yes, MessageAnswer::Cancel};
        download();
        EXPECT_TRUE(form.cmdDownload.Enabled());
    }
}

} // namespace
} // namespace pelvan::testing
