// Which replies can be the answer to a request, and when one is whole.
#include <gtest/gtest.h>

#include "protocols/modbus/modbus.h"
#include "protocols/modbus/whole_reply.h"
#include "support/frames.h"

namespace pelvan::testing {

TEST(ModbusAnswer, IsTheRequestsInAddressFunctionLengthAndEcho) {
    struct Case {
        const char* request;
        std::vector<const char*> answers;
        std::vector<const char*> others;
    };
    const Case cases[] = {
        {"01 03 00 05 00 02",
         {"01 03 04 00 01 00 02", "01 83 02"},
         {"", "01 03", "01 03 02 00 01", "01 03 02 00 01 00 02", "02 03 04 00 01 00 02",
          "01 04 04 00 01 00 02", "01 86 02", "01 83 02 00", "01 03 05 00 01 00 02 00"}},
        {"01 01 00 00 00 09", {"01 01 02 FF 01"}, {"01 01 01 FF", "01 01 03 FF 01 00"}},
        {"01 06 01 2C 00 05",
         {"01 06 01 2C 00 05", "01 86 03"},
         {"01 06 01 2C 00 09", "01 06 01 2D 00 05", "01 03 02 00 09", "01 06 01 2C 00 05 00"}},
        {"01 10 00 01 00 01 02 00 07", {"01 10 00 01 00 01"}, {"01 10 00 01 00 02"}},
        {"01 08 00 00 12 34", {"01 08 00 00 12 34"}, {"01 08 00 00 12 35"}},
        {"01 08 00 0B 00 00", {"01 08 00 0B 00 17"}, {"01 08 00 0C 00 17"}},
    };
    for (const auto& [request, answers, others] : cases) {
        for (const char* reply : answers)
            EXPECT_TRUE(can_answer(frame(request), frame(reply))) << request << " > " << reply;
        for (const char* reply : others)
            EXPECT_FALSE(can_answer(frame(request), frame(reply))) << request << " > " << reply;
    }
    EXPECT_FALSE(can_answer("", ""));
}

TEST(WholeReply, IsOneFrameOfTheRequestsOwn) {
    // A request, its reply.
    const std::pair<const char*, const char*> pairs[] = {
        {"01 03 00 00 00 02", "01 03 04 00 07 00 08"},
        {"01 03 00 00 00 02", "01 83 02"},
        {"01 01 00 00 00 09", "01 01 02 FF 01"},
        {"01 06 00 07 00 05", "01 06 00 07 00 05"},
        {"01 10 00 07 00 01 02 00 05", "01 10 00 07 00 01"},
        {"01 08 00 00 12 34 56 78", "01 08 00 00 12 34 56 78"}};
    for (const auto& [request_hex, reply_hex] : pairs) {
        const std::string request = frame(request_hex), reply = frame(reply_hex);
        for (std::size_t size = 0; size < reply.size(); ++size)
            EXPECT_FALSE(is_whole_reply(request, reply.substr(0, size))) << reply_hex << size;
        EXPECT_TRUE(is_whole_reply(request, reply)) << reply_hex;
        EXPECT_FALSE(is_whole_reply(request, reply + reply)) << "twice";
        EXPECT_FALSE(is_whole_reply(request, reply + '\0'));
        EXPECT_FALSE(is_whole_reply(request, '\0' + reply));
        EXPECT_FALSE(is_whole_reply(frame("02 04 00 00 00 02"), reply)) << "another's";
        std::string damaged = reply;
        damaged.back() ^= '\1';
        EXPECT_FALSE(is_whole_reply(request, damaged));
    }
    EXPECT_FALSE(is_whole_reply("", ""));
    EXPECT_FALSE(is_whole_reply(frame("01 41 00"), frame("01 41 00"))) << "a function of nobody's";
}

} // namespace pelvan::testing
