#include "registers/sequence_file.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace pelvan::testing {
namespace {

TEST(SequenceFile, FlagInThreeCharactersAndAListFromLineFiveToALineWithoutADigit) {
    const TempDir dir;
    const std::tuple<const char*, bool, std::vector<float>> cases[] = {
        {"yes, with profiles\r\n1\r\n2\r\n3\r\n123abc\r\n0100 x\r\n7", true, {123, 100, 7}},
        {" YES\n1\n2\n3\n5 a\n\n6 b\n", false, {5}},
        {"YE S\r\n1\r\n2\r\n3\r\n", false, {}},
        {"YES", true, {}},
        {"\xEF\xBB\xBFyes\r\n1\r\n2\r\n3\r\n7", true, {7}}, // a mark of UTF-8
        {"", false, {}}};
    for (const auto& [text, flag, registers] : cases) {
        write_file(dir.file("a.cds"), text);
        SequenceFile sequence(dir.file("a.cds"));
        EXPECT_EQ(sequence.has_profiles(), flag) << text;
        std::vector<float> found;
        while (const auto number = sequence.next_register())
            found.push_back(*number);
        EXPECT_EQ(found, registers) << text;
    }
}

TEST(ProfileSequence, SelectorsThenSections) {
    const TempDir dir;
    const std::string head = "1 n\r\n2 s\r\n3 a\r\n4 t\r\n5 c\r\n6 h\r\n";
    int line = 0;
    write_file(dir.file("a.pds"), head + "\r\nprofile\r\n50\r\nType 3 soak\r\n7 x\r\n8\r\n");
    const auto read = read_profile_sequence(dir.file("a.pds"), line);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->highest_profile, 6);
    EXPECT_EQ(read->profile_registers, std::vector<float>{50});
    EXPECT_EQ(read->step_registers.at(3), (std::vector<float>{7, 8}));

    const std::pair<std::string, int> bad[] = {{"1\r\n2\r\nx\r\n", 3},
                                               {head + "7\r\n", 7},
                                               {head + "TYPE x\r\n", 7},
                                               {head + "TPYE 1\r\n", 7},
                                               {head + "TYPE 99999999999\r\n", 7},
                                               {"1\r\n2\r\n", 3},
                                               {std::string("\0\xFF\x01", 3), 1},
                                               {"", 1}};
    for (const auto& [text, number] : bad) {
        write_file(dir.file("a.pds"), text);
        EXPECT_FALSE(read_profile_sequence(dir.file("a.pds"), line)) << text;
        EXPECT_EQ(line, number) << text;
    }
}

} // namespace
} // namespace pelvan::testing
