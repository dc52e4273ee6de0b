// The configuration file and text files on a real file system, which refuses, fills up and is
// shared.
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>

#include "platform/sectioned_file.h"
#include "platform/text_file.h"
#include "support/cases.h"
#include "support/error_of.h"
#include "support/file_size_limit.h"
#include "support/temp_dir.h"

static int syncs = 0; // calls of fsync so far

// A definition in the program goes before the C library's.
extern "C" int fsync(int descriptor) {
    ++syncs;
    return static_cast<int>(::syscall(SYS_fsync, descriptor));
}

namespace pelvan::testing {

namespace fs = std::filesystem;
using std::string_literals::operator""s;

struct FilesTest : ::testing::Test {
    std::string read(const std::string& bytes, const std::string& section = "S",
                     const std::string& key = "K", const std::string& default_value = "none") {
        write_file(file_, bytes);
        return GetPrivateProfileStringA(section, key, default_value, 255, file_);
    }
    /// The file as it is after the value was written.
    std::string written(const std::string& bytes, const std::string& value = "v",
                        const std::string& section = "S", const std::string& key = "K") {
        write_file(file_, bytes);
        EXPECT_TRUE(WritePrivateProfileStringA(section, key, value, file_));
        return read_file(file_);
    }
    [[nodiscard]] auto entries() const {
        return std::distance(fs::directory_iterator(directory_.path()), {});
    }

    TempDir directory_;
    std::string file_ = directory_.file("test.ini");
};

using SectionedFile = FilesTest;
using TextFile = FilesTest;

TEST_F(SectionedFile, FindsValuesAsTheyStand) {
    // Sections and keys; spaces and control characters; what separates and what does not; the
    // first counts; quotes go in pairs; empty is not missing.
    for (const auto& [file, value] :
         cases("->none|K=v\n[S]\n->none|[s]\r\nk=v\r\n->v|[S]\nA=1\nK=v->v|"
               " \t[ \vS\t ] \n \t\f\vK \t = \f\t v w\v \f\r\n->v w|"
               "[S]\n\x02K=v\n->none|[S]\nK=\xA0v\x01\n->\xA0v\x01|[S]\nK=a=b\n->a=b|"
               "[S] rest [T]\nK=v\n->v|[S\nK=v\n->v|\xEF\xBB\xBF[S]\nK=v\n->none|"
               "[S]\n ;K=c\nK=v ;c\n->v ;c|[S]\nK=v\r\r\n->v|"
               "[S]\nK=1\nk=2\n->1|[S]\nL=1\n[T]\nK=2\n[s]\nK=3\n->none|"
               "[S]\nK= \" v \" \n-> v |[S]\nK=' v '\n-> v |[S]\nK=\"v'\n->\"v'|[S]\nK=\"\n->\"|"
               "[S]\nK=v\"w\"\n->v\"w\"|[S]\nK=\"\"x\"\"\n->\"x\"|[\"S\"]\nK=v\n->none|"
               "[S]\nK=   ->|[S]\nK=\"\"\n->"))
        EXPECT_EQ(read(file), value) << file;
    // The arguments lose their spaces, and only spaces.
    EXPECT_EQ(read("[my s]\nK 1   =3\n", " MY S", " K 1 "), "3");
    EXPECT_EQ(read("[S]\nK=v\n", "S", "K\t"), "none");
    EXPECT_EQ(read("[S]\n;K=c\n", "S", ";K"), "none");
    EXPECT_EQ(read("[S]\n#K=v\n", "S", "#K"), "v");
}

TEST_F(SectionedFile, CutsValuesAndDefaultsToTheBuffer) {
    const std::string longest(254, 'x');
    for (const std::string& value : {longest, longest + "y"}) {
        EXPECT_EQ(read("[S]\nK=" + value), longest);
        EXPECT_EQ(read("", "S", "K", value), longest);
    }
    EXPECT_EQ(read("", "S", "K", "  d\t  "), "  d\t");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "d", 0, file_), "");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "d", 9, directory_.path()), "d");
}

TEST_F(SectionedFile, ReadsTheIntegerThatAValueBeginsWith) {
    const auto integer = [this](const std::string& key, std::int32_t default_value) {
        return static_cast<std::int32_t>(GetPrivateProfileIntA("S", key, default_value, file_));
    };
    for (const auto& [value, number] :
         cases("+5->5|010->10|12abc->12|12 ;c->12|3.7->3|\"12\"->12|\" 12\"->12|4294967297->1|"
               "-32769->-32769|2147483648->-2147483648|-x->0|--5->0|->77|   ->77|\"\"->77")) {
        write_file(file_, "[S]\r\nK=" + value + "\r\n");
        EXPECT_EQ(integer("K", 77), std::stoi(number)) << value;
    }
    EXPECT_EQ(integer("L", -7), -7);
}

TEST_F(SectionedFile, WritesInPlaceByteForByte) {
    // New sections and keys; replaced keys keep their spelling, the lines round them everything.
    for (const auto& [before, after] :
         cases("->[S]\r\nK=v\r\n|[T]\nA=1->[T]\nA=1\r\n[S]\r\nK=v\r\n|"
               "[T]\nA=1\n\n;c\n->[T]\nA=1\n\n;c\n[S]\r\nK=v\r\n|"
               "[S]\nA=1\n\n; about T\n[T]\nK=2->[S]\nA=1\nK=v\r\n\n; about T\n[T]\nK=2|"
               "[S] x\n;c\n->[S] x\nK=v\r\n;c\n|[S]\nA=1->[S]\nA=1\r\nK=v\r\n|"
               "[S]\nA=1\n[T]\n[S]\nK=2\n->[S]\nA=1\nK=v\r\n[T]\n[S]\nK=2\n|"
               "[S]\r\n;K=1\r\n->[S]\r\nK=v\r\n;K=1\r\n|"
               "\n ;c\n [ s ] x\nA = 1\r\nk   =old\nK=2\n\n->"
               "\n ;c\n [ s ] x\nA = 1\r\nk   =v\r\nK=2\n\n"))
        EXPECT_EQ(written(before, "v", " S ", " K "), after) << before;
    for (const std::string& value : {std::string(), "\" a=;[\xE9\" "s, std::string(1000, 'x')})
        EXPECT_EQ(written("[S]\nK=\"old\"\n", value), "[S]\nK=" + value + "\r\n");
}

TEST_F(SectionedFile, ReadsAndKeepsUtf16WithItsMark) {
    for (const bool big_endian : {false, true}) {
        const auto encoded = [&](const std::u16string& units) {
            std::string bytes;
            for (const char16_t unit : u'\xFEFF' + units)
                for (const int shift : {big_endian ? 8 : 0, big_endian ? 0 : 8})
                    bytes += static_cast<char>(unit >> shift);
            return bytes;
        };
        const std::u16string before = u"[S]\r\nOther=\u00E4\u20AC\U0001F525\xD800\r\n";
        EXPECT_EQ(read(encoded(before + u"K=1\r\n")), "1");
        EXPECT_EQ(GetPrivateProfileStringA("S", "Other", "", 10, file_), "\u00E4\u20AC\U0001F525");
        EXPECT_EQ(written(read_file(file_), "\u00FC"), encoded(before + u"K=\u00FC\r\n"));
    }
    EXPECT_EQ(read("\xFF\xFEK"), "none") << "half a character at the end: no UTF-16";
    for (const std::string value : {"v", "vv"}) { // nor is it when more has been written
        static_cast<void>(written("\xFF\xFEK", value));
        EXPECT_EQ(GetPrivateProfileStringA("S", "K", "none", 10, file_), value);
    }
}

TEST_F(SectionedFile, KeepsEveryByteOfALongFileAndPutsItOnTheDisk) {
    const std::string bytes = "[T]\r\nK=" + std::string(200'000, 'x') + "\r\n";
    const int synced = syncs;
    EXPECT_EQ(written(bytes), bytes + "[S]\r\nK=v\r\n");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "", 255, file_), "v");
    EXPECT_EQ(syncs, synced + 2) << "the bytes, and the name";
}

TEST_F(SectionedFile, ProcessesThatWriteAtOnceLoseNothing) {
    const auto write = [this](const std::string& key) {
        for (int i = 0; i < 40; ++i)
            WritePrivateProfileStringA("S", key + std::to_string(i), "v", file_);
    };
    // The lock is one of open files, so threads stand for processes here.
    std::thread other(write, "A");
    write("B");
    other.join();
    EXPECT_EQ(std::ranges::count(read_file(file_), '='), 80);
}

TEST_F(SectionedFile, ClearsWhatAKilledWriteLeft) {
    for (const char* name : {".pelvanAb12cD", ".pelvanAb12cDe", ".pelvan-----", "pelvanAb12cD"})
        write_file(directory_.file(name), "half");
    written("");
    EXPECT_FALSE(fs::exists(directory_.file(".pelvanAb12cD")));
    EXPECT_EQ(entries(), 4);
}

TEST_F(SectionedFile, KeepsModeAndLink) {
    const std::string link = directory_.file("link.ini");
    fs::create_symlink("test.ini", link);
    EXPECT_TRUE(WritePrivateProfileStringA("S", "K", "1", link)); // dangling so far
    fs::permissions(file_, fs::perms(0640));
    EXPECT_TRUE(WritePrivateProfileStringA("S", "K", "2", link));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(read_file(file_), "[S]\r\nK=2\r\n");
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
    EXPECT_EQ(entries(), 2);
}

TEST_F(SectionedFile, RefusesAndLeavesTheFileWhole) {
    const std::string bytes = "[S]\r\nK=" + std::string(3000, 'x') + "\r\n";
    write_file(file_, bytes);
    fs::create_symlink("loop", directory_.file("loop"));
    const auto refused = [](const std::string& path, const std::string& value = "v") {
        return !WritePrivateProfileStringA("S", "L", value, path);
    };
    for (const char* name : {"missing/test.ini", "test.ini/below", "loop"})
        EXPECT_TRUE(refused(directory_.file(name))) << name;
    EXPECT_TRUE(refused(directory_.path()) && refused("/dev/null"));
    EXPECT_TRUE(refused(file_, "v\r\nM=w")); // would become a key of its own
    {
        const FileSizeLimit full(1000);
        EXPECT_TRUE(refused(file_));
    }
    for (const std::string& path : {file_, directory_.path()}) {
        const auto mode = fs::status(path).permissions();
        fs::permissions(path, fs::perms(0555));
        EXPECT_TRUE(refused(file_)) << path;
        fs::permissions(path, mode);
    }
    EXPECT_EQ(read_file(file_), bytes);
    EXPECT_EQ(entries(), 2);
    EXPECT_FALSE(refused(file_));
}

// Any bytes may stand in the file: what is written is read back, and nothing else changes.
TEST_F(SectionedFile, SurvivesAnyContents) {
    std::mt19937 random(20260731);
    const std::string alphabet = "[]SsKk==;#\"' \t\r\n\n\v\f\x80\xFF";
    const auto below = [&](std::size_t n) { return random() % n; };
    for (int round = 0; round < 150; ++round) {
        std::string bytes;
        for (auto n = below(200); n > 0; --n)
            bytes +=
                below(8) == 0 ? static_cast<char>(below(256)) : alphabet[below(alphabet.size())];
        const std::string value = "v" + std::to_string(round);
        const std::string after = written(bytes, value);
        ASSERT_EQ(GetPrivateProfileStringA("S", "K", "", 255, file_), value) << round;
        // From the first difference on, the old file goes on with its next line.
        const auto differs = std::ranges::mismatch(bytes, after).in1;
        const auto line_end = std::find(differs, bytes.end(), '\n');
        ASSERT_TRUE(after.ends_with(std::string(line_end, bytes.end()))) << round;
        ASSERT_EQ(written(after, value), after) << round;
    }
}

TEST_F(TextFile, ReadsWholeLines) {
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
        EXPECT_EQ(error_of(&TextReader::readline, reader), 62);
        EXPECT_EQ(reader->Line(), static_cast<int>(expected.size()) + 1);
    }
}

TEST_F(TextFile, WritesEachLineAtOnceAndAppends) {
    write_file(file_, "something longer than what follows");
    const auto writer = CreateTextFile(file_, true);
    writer->writeline("25 0");
    EXPECT_EQ(read_file(file_), "25 0\r\n");
    writer->Close();
    EXPECT_NE(error_of(&TextWriter::writeline, writer, "late"), 0);
    const std::string lines[] = {"a", "", "b"};
    const int synced = syncs;
    append_lines(file_, lines, 3, true);
    EXPECT_EQ(syncs, synced + 1);
    append_line(file_, "c");
    EXPECT_EQ(read_file(file_), "25 0\r\na\r\n\r\nb\r\nc\r\n");
}

TEST_F(TextFile, FailsWithTheClassicNumbers) {
    write_file(file_, "x");
    const std::string directory = directory_.path();
    const std::string missing = directory_.file("missing");
    for (const auto& [path, number] :
         {std::pair(missing, 53), {file_ + "/file", 76}, {directory, 75}, {"/dev/zero", 75}})
        EXPECT_EQ(error_of(opentextfile, path), number) << path;
    const auto write = [](const std::string& path) { CreateTextFile(path, true)->writeline("x"); };
    for (const auto& [path, number] :
         {std::pair(missing + "/file", 76), {directory, 75}, {"/dev/full"s, 61}}) {
        EXPECT_EQ(error_of(append_line, path, "x"), number) << path;
        EXPECT_EQ(error_of(write, path), number) << path;
    }
    EXPECT_EQ(error_of(CreateTextFile, file_, false), 58);
    {
        const FileSizeLimit full(100);
        EXPECT_EQ(error_of(append_line, file_, std::string(200, 'y')), 61);
    }
    EXPECT_EQ(read_file(file_), "x") << "a failed write leaves nothing behind";
    EXPECT_TRUE(fileexists(file_));
    EXPECT_FALSE(fileexists(missing) || fileexists(directory) || fileexists(""));
}

} // namespace pelvan::testing
