#include "listen/traffic.h"

#include <gtest/gtest.h>

#include "protocols/modbus/modbus.h"

namespace pelvan {
namespace {

std::string frame(std::initializer_list<int> values) {
    std::string out;
    for (const int value : values)
        out += static_cast<char>(value);
    ModbusState scratch;
    Modbus(scratch).ModbusCrc(out);
    out += static_cast<char>(scratch.gCrcLow);
    return out + static_cast<char>(scratch.gCrcHigh);
}

TEST(FrameKindTest, LayoutDecidesAndThePendingRequestWhereItCannot) {
    const std::string write = frame({1, 6, 0, 7, 0, 1});
    const std::string coils = frame({1, 1, 3, 0, 0, 9});
    struct Case {
        std::string bytes;
        std::string pending;
        FrameKind kind;
    };
    const std::vector<Case> cases{
        {frame({1, 3, 0, 0, 0, 2}), "", FrameKind::Request},
        {frame({1, 3, 4, 0, 0, 0, 2}), "", FrameKind::Reply},
        {frame({1, 0x83, 2}), "", FrameKind::ExceptionReply},
        {write, "", FrameKind::Request},
        {write, write, FrameKind::Reply},
        {write, frame({1, 6, 0, 7, 0, 2}), FrameKind::Request},
        {write, frame({2, 6, 0, 7, 0, 1}), FrameKind::Request},
        {coils, "", FrameKind::Request}, // or three bytes of coils
        {coils, frame({1, 1, 0, 0, 0, 24}), FrameKind::Reply},
        {coils, coils, FrameKind::Request}, // asked again
        {frame({1, 16, 0, 0, 0, 1, 2, 0, 1}), "", FrameKind::Request},
        {frame({1, 16, 0, 0, 0, 1}), "", FrameKind::Reply},
        {frame({1, 15, 0, 0, 0, 9, 2, 1, 1}), "", FrameKind::Request},
        {frame({1, 43, 14, 1}), frame({1, 43, 14, 1, 0}), FrameKind::Reply},
        {write.substr(0, 7), write, FrameKind::Damaged},
        {"x", write, FrameKind::Damaged},
        {"", "", FrameKind::Damaged},
    };
    for (std::size_t i = 0; i < cases.size(); ++i)
        EXPECT_EQ(classify_frame(cases[i].bytes, cases[i].pending).kind, cases[i].kind) << i;
    EXPECT_EQ(classify_frame(frame({7, 0x90, 2}), "").function, 16);
}

class TrafficTest : public ::testing::Test {
  protected:
    TrafficTest() { traffic.start(1000, {2026, 11, 15, 16, 30, 5}); }
    Traffic traffic;
    const std::string read = frame({1, 3, 0, 0, 0, 1});
    const std::string answer = frame({1, 3, 2, 0, 5});
};

TEST_F(TrafficTest, PairsRepliesWithTheRequestBefore) {
    EXPECT_EQ(burst_note(traffic.add(1250, 8, read)), "16:30:05.250  request");
    EXPECT_EQ(burst_note(traffic.add(1288, 7, answer)), "16:30:05.288  +38 ms  reply after 30 ms");
    EXPECT_EQ(burst_note(traffic.add(1300, 7, answer)), "16:30:05.300  +12 ms  reply");
    EXPECT_EQ(burst_note(traffic.add(2300, 7, "??")), "16:30:06.300  +1000 ms  no Modbus frame");
    traffic.add(3000, 8, read);
    traffic.add(3010, 1, "noise");
    EXPECT_EQ(traffic.add(3108, 7, frame({1, 0x83, 2})).reply_ms, 100);
    traffic.add(4000, 8, read);
    EXPECT_FALSE(traffic.add(4100, 7, frame({2, 3, 2, 0, 5})).reply_ms); // another controller
    EXPECT_FALSE(traffic.add(4200, 7, answer).reply_ms);
    traffic.add(5000, 8, read);
    EXPECT_FALSE(traffic.add(3605000, 7, answer).reply_ms); // an hour later
    EXPECT_FALSE(traffic.add(3606000, 8, frame({0, 6, 0, 7, 0, 1})).reply_ms);
    EXPECT_EQ(traffic.add(3607000, 8, frame({0, 6, 0, 7, 0, 1})).frame.kind, FrameKind::Request);
}

TEST_F(TrafficTest, CountsByAddressAndFunction) {
    for (const auto& [at, wait] : {std::pair{2000, 12}, {2500, 30}, {3000, 18}}) {
        traffic.add(at, 8, read);
        traffic.add(at + 8 + wait, 7, answer);
    }
    traffic.add(4000, 8, frame({2, 16, 0, 0, 0, 1, 2, 0, 1}));
    traffic.add(4100, 5, frame({2, 0x90, 3}));
    traffic.add(5000, 5, "noise");
    const TrafficRow& one = traffic.by_address().at(1);
    EXPECT_EQ(one.requests, 3);
    EXPECT_EQ(one.replies, 3);
    EXPECT_EQ(one.reply.minimum, 12);
    EXPECT_EQ(one.reply.maximum, 30);
    EXPECT_EQ(one.reply.mean(), 20);
    EXPECT_EQ(traffic.by_function().at(16).exceptions, 1);
    EXPECT_EQ(traffic.by_function().count(0x90), 0U);
    EXPECT_EQ(traffic.damaged(), 1);
    EXPECT_EQ(traffic.all().gap.count, 8);
    EXPECT_EQ(traffic.all().gap.maximum, 974);
    EXPECT_EQ(traffic.all().gap.minimum, 20);
    EXPECT_EQ(traffic.reply_times().count(4), 2); // 10-20
    EXPECT_EQ(traffic.reply_times().count(5), 1); // 20-50
    EXPECT_EQ(Histogram::label(4), "10-20");
    EXPECT_EQ(Histogram::label(Histogram::kClasses - 1), "10000+");
    traffic.clear();
    EXPECT_TRUE(traffic.by_address().empty());
    EXPECT_TRUE(traffic.bursts().empty());
}

TEST_F(TrafficTest, TimesGoOnWhenTheTickWraps) {
    traffic.start(4294967000.0, {2026, 11, 15, 16, 30, 5});
    traffic.add(4294967200.0, 8, read);
    EXPECT_EQ(traffic.add(104, 7, answer).gap_ms, 200);
}

} // namespace
} // namespace pelvan
