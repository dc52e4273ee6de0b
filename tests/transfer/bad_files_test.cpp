// Files that cannot be used, and a disk that fills: a message, and the window is usable again.
#include "scripted_controller.h"
#include "support/file_size_limit.h"

namespace pelvan::testing {
namespace {

namespace fs = std::filesystem;
using Writes = std::vector<std::pair<int, int>>;

class BadFiles : public ::testing::Test, public ScriptedController {
  protected:
    BadFiles() { write_sequence("742.cds", "NO\r\n-\r\n-\r\n-\r\n5\r\n"); }
    void expect_usable() {
        EXPECT_TRUE(form.cmdDownload.Enabled());
        EXPECT_TRUE(form.cmbAddress.Enabled());
        EXPECT_FALSE(form.cmdCancel.Enabled());
        EXPECT_EQ(form.Pointer(), MousePointer::Normal);
        EXPECT_FALSE(form.run().completed);
    }
};

TEST_F(BadFiles, FoldersThatAreMissing) {
    fs::remove_all(rig.dir.file("Reg Downloads"));
    download_to("a.txt");
    EXPECT_EQ(rig.dialogs.texts().back(), "PATH NOT FOUND ERROR");
    expect_usable();
    upload_from("a.txt");
    EXPECT_EQ(rig.dialogs.texts().back(), "PATH NOT FOUND ERROR") << "no place for the error file";
    EXPECT_EQ(writes, Writes{});
    expect_usable();
    rig.dialogs.files.push_back(path("a.txt"));
    form.cmdCompare.press();
    EXPECT_EQ(rig.dialogs.texts().back(), "PATH NOT FOUND ERROR");
    expect_usable();
}

TEST_F(BadFiles, SetupFileThatIsNotThere) {
    rig.dialogs.answers = {MessageAnswer::Yes};
    upload_from("a.txt");
    EXPECT_EQ(rig.dialogs.texts().back(),
              "INSTALL DISK WITH FILE " + path("a.txt") + " INTO DRIVE A");
    expect_usable();
}

TEST_F(BadFiles, DiskThatFillsKeepsThePartialFile) {
    std::string sequence = "NO\r\n-\r\n-\r\n-\r\n";
    for (int i = 0; i < 1000; ++i)
        sequence += "5\r\n";
    write_sequence("742.cds", sequence);
    registers[5] = 1;
    {
        const FileSizeLimit limit(2000);
        download_to("a.txt");
    }
    EXPECT_EQ(rig.dialogs.texts().back(), "THE FLOPPY DISK IS FULL");
    EXPECT_EQ(saved("a.txt").substr(0, 15), std::string(15, '*'));
    EXPECT_GE(saved("a.txt").size(), 1990U);
    expect_usable();
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
        upload_from("a.txt");
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
        download_to("a.txt");
        EXPECT_TRUE(form.cmdDownload.Enabled());
    }
}

} // namespace
} // namespace pelvan::testing
