#include "platform/text_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <vector>

#include "platform/system_calls.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::error_of;
using testing::FileSizeLimit;
using testing::read_file;
using testing::TempDir;
using testing::write_file;

class TextFile : public ::testing::Test {
  protected:
    TempDir directory_;
    std::string file_ = directory_.file("test.txt");
};

TEST_F(TextFile, ReadsWholeLines) {
    using std::string_literals::operator""s;
    const std::string long_line(300000, 'x');
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"", {}},
        {"\r\n", {""}},
        {"a\r\nb\nc", {"a", "b", "c"}},
        {"a\r\n\r\n\nb\r\n", {"a", "", "", "b"}},
        {"a\rb\r\r\n", {"a\rb\r"}},
        {"a\0b\r\n\x1A\xFF\n\0"s, {"a\0b"s, "\x1A\xFF", "\0"s}},
        {long_line + "\r\n" + long_line, {long_line, long_line}},
    };
    for (const auto& [bytes, expected] : cases) {
        SCOPED_TRACE(bytes.substr(0, 20));
        write_file(file_, bytes);
        const auto reader = opentextfile(file_);
        std::vector<std::string> lines;
        while (!reader->AtEndOfStream())
            lines.push_back(reader->readline());
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(error_of([&] { reader->readline(); }), 62);
        EXPECT_EQ(reader->Line(), static_cast<int>(expected.size()) + 1);
    }
}

TEST_F(TextFile, WritesEachLineAtOnceAndAppends) {
    write_file(file_, "something longer than what follows");
    const auto writer = CreateTextFile(file_, true);
    writer->writeline("25 0");
    EXPECT_EQ(read_file(file_), "25 0\r\n");
    writer->Close();
    EXPECT_NE(error_of([&] { writer->writeline("late"); }), 0);
    const std::string lines[] = {"a", "", "b"};
    const int synced = testing::syncs;
    append_lines(file_, lines, 3, true);
    EXPECT_EQ(testing::syncs, synced + 1);
    append_line(file_, "c");
    EXPECT_EQ(read_file(file_), "25 0\r\na\r\n\r\nb\r\nc\r\n");
}

TEST_F(TextFile, FailsWithTheClassicNumbers) {
    write_file(file_, "x");
    const std::string missing = directory_.file("missing");
    const std::string below_missing = missing + "/file";
    const std::tuple<const char*, int, std::function<void()>> cases[] = {
        {"open missing file", 53, [&] { (void)opentextfile(missing); }},
        {"open below a file", 76, [&] { (void)opentextfile(file_ + "/file"); }},
        {"open directory", 75, [&] { (void)opentextfile(directory_.path()); }},
        {"open device", 75, [&] { (void)opentextfile("/dev/zero"); }},
        {"create in missing directory", 76, [&] { (void)CreateTextFile(below_missing, true); }},
        {"create over directory", 75, [&] { (void)CreateTextFile(directory_.path(), true); }},
        {"create over file", 58, [&] { (void)CreateTextFile(file_, false); }},
        {"write on full disk", 61, [&] { CreateTextFile("/dev/full", true)->writeline("x"); }},
        {"append in missing directory", 76, [&] { append_line(below_missing, "x"); }},
        {"append to directory", 75, [&] { append_line(directory_.path(), "x"); }},
        {"append on full disk", 61, [&] { append_line("/dev/full", "x"); }},
        {"append until the disk is full", 61,
         [&] {
             const FileSizeLimit full(100);
             append_line(file_, std::string(200, 'y'));
         }},
    };
    for (const auto& [what, number, action] : cases)
        EXPECT_EQ(error_of(action), number) << what;
    EXPECT_EQ(read_file(file_), "x") << "a failed write leaves nothing behind";
    EXPECT_TRUE(fileexists(file_));
    EXPECT_FALSE(fileexists(missing) || fileexists(directory_.path()) || fileexists(""));
}

} // namespace
} // namespace pelvan
