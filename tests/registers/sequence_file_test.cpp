#include "registers/sequence_file.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"
#include "text/strings.h"

namespace pelvan::testing {

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

static std::vector<float> numbers(const std::vector<ProfileRegister>& registers) {
    std::vector<float> out;
    for (const ProfileRegister& one : registers)
        out.push_back(one.number);
    return out;
}

TEST(ProfileSequence, SelectorsThenSections) {
    const TempDir dir;
    const std::string head = "1 n\r\n2 s {1 to 50}\r\n3 a\r\n4 t\r\n5 c\r\n6 h\r\n";
    SequenceFault fault;
    write_file(dir.file("a.pds"), head + "\r\nprofile\r\n50\r\nType 3  soak\r\n7 x {hours}\r\n8\r\n"
                                         "run what runs\r\n9 state\r\n");
    const auto read = read_profile_sequence(dir.file("a.pds"), fault);
    ASSERT_TRUE(read);
    EXPECT_EQ(read->highest_profile.number, 6);
    EXPECT_EQ(read->step_number.attributes.max, 50);
    EXPECT_EQ(numbers(read->profile_registers), std::vector<float>{50});
    EXPECT_EQ(numbers(read->step_types.at(3).registers), (std::vector<float>{7, 8}));
    EXPECT_EQ(read->step_types.at(3).name, "soak");
    EXPECT_EQ(read->step_types.at(3).registers[0].line, 11);
    EXPECT_EQ(numbers(read->run_registers), std::vector<float>{9});

    // The fault's line before what is wrong.
    const std::pair<int, std::string> bad[] = {{3, "1\r\n2\r\nx\r\n"},
                                               {7, head + "7\r\n"},
                                               {7, head + "TYPE x\r\n"},
                                               {7, head + "TPYE 1\r\n"},
                                               {7, head + "RUNS\r\n"},
                                               {7, head + "TYPE 99999999999\r\n"},
                                               {3, "1\r\n2\r\n"},
                                               {9, head + "TYPE 1\r\n7 x\r\n8 {hours\r\n"},
                                               {1, ""},
                                               {1, std::string("\0\xFF\x01", 3)}};
    for (const auto& [number, text] : bad) {
        write_file(dir.file("a.pds"), text);
        EXPECT_FALSE(read_profile_sequence(dir.file("a.pds"), fault)) << text;
        EXPECT_EQ(fault.line, number) << text;
    }
}

TEST(RegisterAttributes, ItemsInAnyOrder) {
    const RegisterAttributes set_point{RegisterRole::SetPoint1, -2000, 9999, 1, "degrees", {}};
    const RegisterAttributes unit{RegisterRole::None, -32768, 32767, 0, "hours", {}};
    const RegisterAttributes choices{RegisterRole::Wait,          -32768, 32767, 0, "",
                                     {{-1, "no"}, {2, "input 2"}}};
    const std::pair<const char*, RegisterAttributes> cases[] = {
        {" x, not in braces: hours", {}},
        {" x {set point 1; -2000 to 9999; 1 decimal; degrees}  ", set_point},
        {" x{ degrees ;1  DECIMALS;-2000 to 9999;Set\tPoint 1 }", set_point},
        {" x {unit hours}", unit},
        {" x {wait; -1 = no, 2=input 2}", choices}};
    for (const auto& [text, attributes] : cases) {
        const RegisterText read = parse_register_text(text);
        EXPECT_EQ(read.problem, "") << text;
        EXPECT_EQ(read.text.substr(0, 1), "x") << text;
        EXPECT_TRUE(read.attributes == attributes) << text;
    }
    for (const std::string& text :
         split("{|}{|{hours|{hours} x|{hours}}|{}|{hours;}|{hours; minutes}|{1 to}|{9 to 1}|"
               "{0 to 32768}|{1 to 2; 1 to 2}|{5 decimals}|{1 decimals x}|{-}|{12}|{a; b}|{1 = }|"
               "{= x}|{0 = a, 0 = b}|{0 = a, b}|{0 = a = b}|{0 = a; 1 = b}|{1.5 to 2}",
               '|'))
        EXPECT_NE(parse_register_text(text).problem, "") << text;
}

} // namespace pelvan::testing
