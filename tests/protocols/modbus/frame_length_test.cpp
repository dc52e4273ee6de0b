// Frames of the examples in the Modbus Application Protocol V1.1b3 and in the guide to Modbus over
// serial line, cut short at every place: a length that is told too early must be the frame's.
#include "protocols/modbus/frame_length.h"

#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/frames.h"

namespace pelvan::testing {

using State = ExpectedLength::State;

TEST(FrameLengthTest, IsToldByTheFirstBytesAndNeverAnother) {
    const std::pair<ExpectedLength (*)(std::string_view), const char*> tables[] = {
        {expected_request_length, // "frame->bytes that it takes to tell"
         "01 01 00 13 00 13->2|01 03 00 6B 00 03->2|01 05 00 AC FF 00->2|01 07->2|"
         "01 08 00 00 A5 37->2|01 0B->2|01 0F 00 13 00 0A 02 CD 01->7|"
         "01 10 00 01 00 02 04 00 0A 01 02->7|01 11->2|"
         "01 14 0E 06 00 04 00 01 00 02 06 00 03 00 09 00 02->3|01 16 00 04 00 F2 00 25->2|"
         "01 17 00 03 00 06 00 0E 00 03 06 00 FF 00 FF 00 FF->11|01 18 04 DE->2"},
        {expected_reply_length,
         "01 01 03 CD 6B 05->3|01 03 06 02 2B 00 00 00 64->3|01 06 00 01 00 03->2|01 07 6D->2|"
         "01 0B FF FF 01 08->2|01 0C 08 00 00 01 08 01 21 20 00->3|01 10 00 01 00 02->2|"
         "01 14 0C 05 06 0D FE 00 20 05 06 33 CD 00 40->3|01 16 00 04 00 F2 00 25->2|"
         "01 17 02 00 FE->3|01 18 00 06 00 02 01 B8 12 84->4|01 81 02->2|01 AB 01->2"},
    };
    for (const auto& [length, table] : tables)
        for (const auto& [hex, needed] : cases(table)) {
            const std::string whole = frame(hex);
            const auto enough = static_cast<std::size_t>(std::stoi(needed));
            for (std::size_t size = 0; size <= whole.size(); ++size) {
                const ExpectedLength told = length(std::string_view(whole).substr(0, size));
                EXPECT_EQ(told.known(), size >= enough) << hex << " " << size;
                EXPECT_EQ(told.bytes, size < 2 ? 2 : size < enough ? enough : whole.size()) << hex;
            }
        }
    const ExpectedLength unknown{State::Unknown, 0};
    EXPECT_EQ(expected_request_length(bytes("01 41 00 00")), unknown);
    EXPECT_EQ(expected_request_length(bytes("01 83 02")), unknown);
    EXPECT_EQ(expected_reply_length(bytes("01 2B 0E 01 01")), unknown);
    EXPECT_EQ(expected_reply_length(bytes("01 18 01 00")), unknown); // 256 bytes counted
}

} // namespace pelvan::testing
