#include "protocols/modbus/whole_reply.h"

#include <gtest/gtest.h>

#include "support/frames.h"

namespace pelvan::testing {

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
