#include "platform/sectioned_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <thread>

#include "platform/system_calls.h"
#include "support/file_size_limit.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

using testing::FileSizeLimit;
using testing::read_file;
using testing::TempDir;
using testing::write_file;
namespace fs = std::filesystem;

/// Takes a case apart that is written as "what is given->what is expected".
std::pair<std::string, std::string> sides(const std::string& one) {
    const auto arrow = one.find("->");
    return {one.substr(0, arrow), one.substr(arrow + 2)};
}

class SectionedFile : public ::testing::Test {
  protected:
    std::string read(const std::string& bytes, const std::string& section, const std::string& key,
                     const std::string& default_value = "none") {
        write_file(file_, bytes);
        return GetPrivateProfileStringA(section, key, default_value, 255, file_);
    }

    std::string written(const std::string& bytes, const std::string& section,
                        const std::string& key, const std::string& value) {
        write_file(file_, bytes);
        EXPECT_TRUE(WritePrivateProfileStringA(section, key, value, file_));
        return read_file(file_);
    }

    TempDir directory_;
    std::string file_ = directory_.file("test.ini");
};

TEST_F(SectionedFile, FindsValuesAsTheyStand) {
    // Sections and keys, line ends and spaces; what separates and what does not; the first counts;
    // quotes go in pairs; empty is not missing.
    for (const char* one : {"->none",
                            "K=v\n[S]\n->none",
                            "[s]\r\nk=v\r\n->v",
                            "[S]\nA=1\r\nK=v->v",
                            " \t[ \vS\t ] \n \t\f\vK \t = \f\t v w\v \f\r\n->v w",
                            "[S]\n\x02K=v\n->none",
                            "[S]\nK=\xA0v\x01\n->\xA0v\x01",
                            "[S]\nK=a=b\n->a=b",
                            "[S] rest [T]\nK=v\n->v",
                            "[S\nK=v\n->v",
                            "\xEF\xBB\xBF[S]\nK=v\n->none",
                            "[S]\n ;K=c\nK=v ;c\n->v ;c",
                            "[S]\nK=1\nk=2\n->1",
                            "[S]\nL=1\n[T]\nK=2\n[s]\nK=3\n->none",
                            "[S]\nK= \" v \" \n-> v ",
                            "[S]\nK=' v '\n-> v ",
                            "[S]\nK=\"v'\n->\"v'",
                            "[S]\nK=\"\n->\"",
                            "[S]\nK=v\"w\"\n->v\"w\"",
                            "[S]\nK=\"\"x\"\"\n->\"x\"",
                            "[\"S\"]\nK=v\n->none",
                            "[S]\nK=   ->",
                            "[S]\nK=\"\"\n->"})
        EXPECT_EQ(read(sides(one).first, "S", "K"), sides(one).second) << one;
    // The arguments lose their spaces, and only spaces.
    EXPECT_EQ(read("[my s]\nK 1   =3\n", " MY S", " K 1 "), "3");
    EXPECT_EQ(read("[S]\nK=v\n", "S", "K\t"), "none");
    EXPECT_EQ(read("[S]\n;K=c\n", "S", ";K"), "none");
    EXPECT_EQ(read("[S]\n#K=v\n", "S", "#K"), "v");
}

TEST_F(SectionedFile, CutsValuesAndDefaultsToTheBuffer) {
    const std::string longest(254, 'x');
    for (const std::string& value : {longest, longest + "y"}) {
        EXPECT_EQ(read("[S]\nK=" + value, "S", "K"), longest);
        EXPECT_EQ(read("", "S", "K", value), longest);
    }
    EXPECT_EQ(read("", "S", "K", "  d\t  "), "  d\t");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "d", 0, file_), "");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "d", 9, directory_.file("missing")), "d");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "d", 9, directory_.path()), "d");
}

TEST_F(SectionedFile, ReadsTheIntegerThatAValueBeginsWith) {
    for (const char* one :
         {"+5->5", "010->10", "12abc->12", "12 ;c->12", "3.7->3", "\"12\"->12", "\" 12\"->12",
          "4294967297->1", "-32769->-32769", "2147483648->-2147483648", "-x->0", "--5->0", "->77",
          "   ->77", "\"\"->77"}) {
        write_file(file_, "[S]\r\nK=" + sides(one).first + "\r\n");
        EXPECT_EQ(static_cast<std::int32_t>(GetPrivateProfileIntA("S", "K", 77, file_)),
                  std::stoi(sides(one).second))
            << one;
    }
    EXPECT_EQ(static_cast<std::int32_t>(GetPrivateProfileIntA("S", "L", -7, file_)), -7);
}

TEST_F(SectionedFile, WritesInPlaceByteForByte) {
    // New sections and keys; replaced keys keep their spelling, the lines round them everything.
    for (const char* one :
         {"->[S]\r\nK=v\r\n", "[T]\nA=1->[T]\nA=1\r\n[S]\r\nK=v\r\n",
          "[T]\nA=1\n\n;c\n->[T]\nA=1\n\n;c\n[S]\r\nK=v\r\n",
          "[S]\nA=1\n\n; about T\n[T]\nK=2->[S]\nA=1\nK=v\r\n\n; about T\n[T]\nK=2",
          "[S] x\n;c\n->[S] x\nK=v\r\n;c\n", "[S]\nA=1->[S]\nA=1\r\nK=v\r\n",
          "[S]\nA=1\n[T]\n[S]\nK=2\n->[S]\nA=1\nK=v\r\n[T]\n[S]\nK=2\n",
          "[S]\r\n;K=1\r\n->[S]\r\nK=v\r\n;K=1\r\n",
          "\n ;c\n [ s ] x\nA = 1\r\nk   =old\nK=2\n\n->"
          "\n ;c\n [ s ] x\nA = 1\r\nk   =v\r\nK=2\n\n"})
        EXPECT_EQ(written(sides(one).first, " S ", " K ", "v"), sides(one).second) << one;
    for (const std::string& value :
         {std::string(), std::string("\" a=;[\xE9\" "), std::string(1000, 'x')})
        EXPECT_EQ(written("[S]\nK=\"old\"\n", "S", "K", value), "[S]\nK=" + value + "\r\n");
}

TEST_F(SectionedFile, ReadsAndKeepsUtf16WithItsMark) {
    for (const bool big_endian : {false, true}) {
        const auto encoded = [&](const std::u16string& units) {
            std::string bytes;
            for (const char16_t unit : u'\xFEFF' + units) {
                const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit);
                bytes += big_endian ? high : low;
                bytes += big_endian ? low : high;
            }
            return bytes;
        };
        const std::u16string before = u"[S]\r\nOther=\u00E4\u20AC\U0001F525\xD800\r\n";
        write_file(file_, encoded(before + u"K=1\r\n"));
        EXPECT_EQ(GetPrivateProfileIntA("S", "K", 7, file_), 1U);
        EXPECT_EQ(GetPrivateProfileStringA("S", "Other", "", 10, file_), "\u00E4\u20AC\U0001F525");
        EXPECT_EQ(written(read_file(file_), "S", "K", "\u00FC"), encoded(before + u"K=\u00FC\r\n"));
    }
    // Half a character at the end: no UTF-16.
    EXPECT_EQ(read("\xFF\xFEK", "S", "K"), "none");
}

TEST_F(SectionedFile, KeepsEveryByteOfALongFileAndPutsItOnTheDisk) {
    std::string bytes = "[T]\r\n";
    for (int i = 0; bytes.size() < 200'000; ++i)
        bytes += "Key " + std::to_string(i) + "=value\r\n";
    const int synced = testing::syncs;
    EXPECT_EQ(written(bytes, "S", "K", "v"), bytes + "[S]\r\nK=v\r\n");
    EXPECT_EQ(GetPrivateProfileStringA("S", "K", "", 255, file_), "v");
    EXPECT_EQ(testing::syncs, synced + 2) << "the bytes, and the name";
}

TEST_F(SectionedFile, ProcessesThatWriteAtOnceLoseNothing) {
    constexpr int kWrites = 40;
    const auto write = [this](const std::string& key) {
        for (int i = 0; i < kWrites; ++i)
            WritePrivateProfileStringA("S", key + std::to_string(i), "v", file_);
    };
    // The lock is one of open files, so threads stand for processes here.
    std::thread other(write, "A");
    write("B");
    other.join();
    const std::string bytes = read_file(file_);
    EXPECT_EQ(std::count(bytes.begin(), bytes.end(), '='), 2 * kWrites);
}

TEST_F(SectionedFile, ClearsWhatAKilledWriteLeft) {
    for (const char* name : {".pelvanAb12cD", ".pelvanAb12cDe", ".pelvan-----", "pelvanAb12cD"})
        write_file(directory_.file(name), "half");
    EXPECT_TRUE(WritePrivateProfileStringA("S", "K", "v", file_));
    EXPECT_FALSE(fs::exists(directory_.file(".pelvanAb12cD")));
    EXPECT_EQ(std::distance(fs::directory_iterator(directory_.path()), {}), 4);
}

TEST_F(SectionedFile, KeepsModeAndLink) {
    const std::string link = directory_.file("link.ini");
    fs::create_symlink("test.ini", link);
    EXPECT_TRUE(WritePrivateProfileStringA("S", "K", "1", link)); // dangling so far
    ::chmod(file_.c_str(), 0640);
    EXPECT_TRUE(WritePrivateProfileStringA("S", "K", "2", link));

    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(read_file(file_), "[S]\r\nK=2\r\n");
    EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
    EXPECT_EQ(std::distance(fs::directory_iterator(directory_.path()), {}), 2);
}

TEST_F(SectionedFile, RefusesAndLeavesTheFileWhole) {
    const std::string bytes = "[S]\r\nK=" + std::string(3000, 'x') + "\r\n";
    write_file(file_, bytes);
    const auto refused = [](const std::string& path, const std::string& value = "v") {
        return !WritePrivateProfileStringA("S", "L", value, path);
    };
    fs::create_symlink("loop", directory_.file("loop"));
    for (const std::string& path :
         {directory_.file("missing/test.ini"), directory_.path(), file_ + "/below",
          std::string("/dev/null"), directory_.file("loop")})
        EXPECT_TRUE(refused(path)) << path;
    EXPECT_TRUE(refused(file_, "v\r\nM=w")); // would become a key of its own
    {
        const FileSizeLimit full(1000);
        EXPECT_TRUE(refused(file_));
    }
    ::chmod(file_.c_str(), 0444);
    EXPECT_TRUE(refused(file_));
    ::chmod(file_.c_str(), 0644);
    ::chmod(directory_.path().c_str(), 0555);
    EXPECT_TRUE(refused(file_));
    ::chmod(directory_.path().c_str(), 0755);

    EXPECT_EQ(read_file(file_), bytes);
    EXPECT_EQ(std::distance(fs::directory_iterator(directory_.path()), {}), 2);
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
        const std::string after = written(bytes, "S", "K", value);
        ASSERT_EQ(GetPrivateProfileStringA("S", "K", "", 255, file_), value) << round;

        // From the first difference on, the old file goes on with its next line.
        const auto differs =
            std::mismatch(bytes.begin(), bytes.end(), after.begin(), after.end()).first;
        const auto line_end = std::find(differs, bytes.end(), '\n');
        ASSERT_TRUE(after.ends_with(std::string(line_end, bytes.end()))) << round;
        ASSERT_EQ(written(after, "S", "K", value), after) << round;
    }
}

} // namespace
} // namespace pelvan
