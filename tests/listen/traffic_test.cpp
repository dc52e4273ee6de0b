#include "listen/traffic.h"

#include <gtest/gtest.h>

#include "support/cases.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using testing::frame;

TEST(FrameKindTest, LayoutDecidesAndThePendingRequestWhereItCannot) {
    using enum FrameKind;
    // "frame->the request before it"
    const std::pair<FrameKind, const char*> tables[] = {
        {Request, "01 03 00 00 00 02->|01 06 00 07 00 01->|01 06 00 07 00 01->01 06 00 07 00 02|"
                  "01 06 00 07 00 01->02 06 00 07 00 01|01 10 00 00 00 01 02 00 01->|"
                  "01 0F 00 00 00 09 02 01 01->"},
        {Request, "01 01 03 00 00 09->"},                  // or three bytes of coils
        {Request, "01 01 03 00 00 09->01 01 03 00 00 09"}, // asked again
        {Reply, "01 03 04 00 00 00 02->|01 06 00 07 00 01->01 06 00 07 00 01|"
                "01 01 03 00 00 09->01 01 00 00 00 18|01 10 00 00 00 01->|"
                "01 2B 0E 01->01 2B 0E 01 00"},
        {ExceptionReply, "01 83 02->"},
    };
    for (const auto& [kind, table] : tables)
        for (const auto& [bytes, pending] : testing::cases(table)) {
            const std::string before = pending.empty() ? "" : frame(pending);
            EXPECT_EQ(classify_frame(frame(bytes), before).kind, kind) << bytes << " " << pending;
        }
    const std::string write = frame("01 06 00 07 00 01");
    for (const std::string& damaged : {write.substr(0, 7), std::string("x"), std::string()})
        EXPECT_EQ(classify_frame(damaged, write).kind, Damaged);
}

class TrafficTest : public ::testing::Test {
  protected:
    TrafficTest() { traffic.start(1000, {2026, 11, 15, 16, 30, 5}); }
    Traffic traffic;
    const std::string read = frame("01 03 00 00 00 01");
    const std::string answer = frame("01 03 02 00 05");
};

TEST_F(TrafficTest, PairsRepliesWithTheRequestBefore) {
    EXPECT_EQ(burst_note(traffic.add(1250, 8, read)), "16:30:05.250  request");
    EXPECT_EQ(burst_note(traffic.add(1288, 7, answer)), "16:30:05.288  +38 ms  reply after 30 ms");
    EXPECT_EQ(burst_note(traffic.add(1300, 7, answer)), "16:30:05.300  +12 ms  reply");
    EXPECT_EQ(burst_note(traffic.add(2300, 7, "??")), "16:30:06.300  +1000 ms  no Modbus frame");
    traffic.add(3000, 8, read);
    traffic.add(3010, 1, "noise");
    EXPECT_EQ(traffic.add(3108, 7, frame("01 83 02")).reply_ms, 100);
    traffic.add(4000, 8, read);
    EXPECT_FALSE(traffic.add(4100, 7, frame("02 03 02 00 05")).reply_ms); // another controller
    EXPECT_FALSE(traffic.add(4200, 7, answer).reply_ms);
    traffic.add(5000, 8, read);
    EXPECT_FALSE(traffic.add(3605000, 7, answer).reply_ms); // an hour later
    const std::string broadcast = frame("00 06 00 07 00 01");
    traffic.add(3606000, 8, broadcast);
    EXPECT_EQ(traffic.add(3607000, 8, broadcast).frame.kind, FrameKind::Request);
    // Times go on when the tick wraps, and begin with the clock's milliseconds.
    traffic.start(4294967000.0, {2026, 11, 15, 16, 30, 5, 790});
    EXPECT_EQ(burst_note(traffic.add(4294967200.0, 8, read)), "16:30:05.990  request");
    EXPECT_EQ(traffic.add(104, 7, answer).gap_ms, 200);
}

TEST_F(TrafficTest, CountsByAddressAndFunction) {
    for (const auto& [at, wait] : {std::pair{2000, 12}, {2500, 30}, {3000, 18}}) {
        traffic.add(at, 8, read);
        traffic.add(at + 8 + wait, 7, answer);
    }
    traffic.add(4000, 8, frame("02 10 00 00 00 01 02 00 01"));
    traffic.add(4100, 5, frame("02 90 03"));
    traffic.add(5000, 5, "noise");
    EXPECT_EQ(traffic.by_address().at(1).replies, 3);
    EXPECT_EQ(traffic.by_address().at(1).reply.mean(), 20);
    EXPECT_EQ(traffic.by_function().at(16).exceptions, 1);
    EXPECT_EQ(traffic.damaged(), 1);
    EXPECT_EQ(traffic.all().gap.count, 8);
    EXPECT_EQ(traffic.all().gap.maximum, 974);
    EXPECT_EQ(traffic.reply_times().count(4), 2);
    EXPECT_EQ(Histogram::label(4), "10-20");
    EXPECT_EQ(Histogram::label(Histogram::kClasses - 1), "10000+");
    traffic.clear();
    EXPECT_TRUE(traffic.by_address().empty());
}

} // namespace
} // namespace pelvan
