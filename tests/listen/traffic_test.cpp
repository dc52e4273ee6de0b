#include "listen/traffic.h"

#include <gtest/gtest.h>

#include "listen/burst.h"
#include "listen/frame_selection.h"
#include "listen/frame_text.h"
#include "support/cases.h"
#include "support/frames.h"

namespace pelvan::testing {

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
        for (const auto& [bytes, pending] : cases(table)) {
            const std::string before = pending.empty() ? "" : frame(pending);
            EXPECT_EQ(classify_frame(frame(bytes), before).kind, kind) << bytes << " " << pending;
        }
    const std::string write = frame("01 06 00 07 00 01");
    for (const std::string& damaged : {write.substr(0, 7), std::string("x"), std::string()})
        EXPECT_EQ(classify_frame(damaged, write).kind, Damaged);
}

TEST(BurstTimesTest, PairsRepliesWithTheRequestBefore) {
    BurstTimes times;
    times.start(1000, {2026, 11, 15, 16, 30, 5});
    const std::string read = frame("01 03 00 00 00 01");
    const std::string answer = frame("01 03 02 00 05");
    EXPECT_EQ(burst_note(times.add(1250, 8, read)), "16:30:05.250  request");
    EXPECT_EQ(burst_note(times.add(1288, 7, answer)), "16:30:05.288  +38 ms  reply after 30 ms");
    EXPECT_EQ(burst_note(times.add(1300, 7, answer)), "16:30:05.300  +12 ms  reply");
    EXPECT_EQ(burst_note(times.add(2300, 7, "??")), "16:30:06.300  +1000 ms  no Modbus frame");
    times.add(3000, 8, read);
    times.add(3010, 1, "noise");
    EXPECT_EQ(times.add(3108, 7, frame("01 83 02")).reply_ms, 100);
    times.add(4000, 8, read);
    EXPECT_FALSE(times.add(4100, 7, frame("02 03 02 00 05")).reply_ms); // another controller
    EXPECT_FALSE(times.add(4200, 7, answer).reply_ms);
    times.add(5000, 8, read);
    EXPECT_FALSE(times.add(3605000, 7, answer).reply_ms); // an hour later
    const std::string broadcast = frame("00 06 00 07 00 01");
    times.add(3606000, 8, broadcast);
    EXPECT_EQ(times.add(3607000, 8, broadcast).frame.kind, FrameKind::Request);
    // Times go on when the tick wraps, and begin with the clock's milliseconds.
    times.start(4294967000.0, {2026, 11, 15, 16, 30, 5, 790});
    EXPECT_EQ(burst_note(times.add(4294967200.0, 8, read)), "16:30:05.990  request");
    EXPECT_EQ(times.add(104, 7, answer).gap_ms, 200);
}

struct TrafficTest : ::testing::Test {
    TrafficTest() { traffic.start(); }
    void hear(double ms, const std::string& bytes) { traffic.hear(ms, ms + 8, bytes); }
    /// The columns behind the time.
    std::vector<std::string> lines() const {
        std::vector<std::string> out;
        for (const ListenedFrame& each : traffic.frames())
            out.push_back(frame_tab_line(each).substr(13));
        return out;
    }
    Traffic traffic;
    const std::string read = frame("01 03 00 00 00 02");
    const std::string answer = frame("01 03 04 02 E6 FF FB");
};

TEST_F(TrafficTest, PairsSaysTheValuesAndLeavesTimesOutThatALumpHides) {
    hear(1000, read);
    hear(1038, answer);
    hear(1500, read + answer); // what one lump brings has one time
    hear(2000, frame("02 05 00 0C FF 00") + frame("02 85 02") + "\xFF");
    hear(3000, frame("01 01 00 13 00 0A"));
    hear(3020, frame("01 01 02 CD 02"));
    hear(3500, frame("01 10 00 01 00 02 04 00 0A FF FF"));
    hear(3600, frame("01 10 00 01 00 02"));
    hear(4000, read.substr(0, 7) + "?");
    traffic.finish();
    EXPECT_EQ(lines(), (std::vector<std::string>{
                           "\t\trequest\t1\t3\t0-1\tCRC ok",
                           "38\t30\treply\t1\t3\t0 = 742, 1 = -5\tCRC ok",
                           "462\t\trequest\t1\t3\t0-1\tCRC ok",
                           "\t\treply\t1\t3\t0 = 742, 1 = -5\tCRC ok",
                           "500\t\trequest\t2\t5\t12 = on\tCRC ok",
                           "\t\texception\t2\t5\tno such register (exception 2)\tCRC ok",
                           "\t\tnoise\t\t\tFF\tno frame",
                           "1000\t\trequest\t1\t1\t19-28\tCRC ok",
                           "20\t12\treply\t1\t1\t19-28 = 1011001101\tCRC ok",
                           "480\t\trequest\t1\t16\t1 = 10, 2 = -1\tCRC ok",
                           "100\t92\treply\t1\t16\t1-2\tCRC ok",
                           "400\t\tbroken\t\t\t01 03 00 00 00 02 C4 3F\tCRC wrong",
                       }));
    EXPECT_EQ(frame_csv_line(traffic.frame(1)).substr(24),
              "38,30,reply,1,3,\"0 = 742, 1 = -5\",CRC ok," + hex_of(answer));
}

TEST_F(TrafficTest, CountsByAddressAndFunctionAndTellsWhatStayedUnanswered) {
    for (const auto& [at, wait] : {std::pair{2000, 12}, {2500, 30}, {3000, 18}}) {
        hear(at, read);
        hear(at + 8 + wait, answer);
    }
    hear(4000, frame("02 10 00 00 00 01 02 00 01"));
    hear(4100, frame("02 90 03"));
    hear(5000, "noise");
    const TrafficCounts& counts = traffic.counts();
    EXPECT_EQ(counts.damaged(), 0); // may still become a frame
    hear(6000, read);
    EXPECT_EQ(counts.damaged(), 1);
    hear(6500, frame("01 03 02 00 05")); // answers another request than this one
    EXPECT_EQ(traffic.frame(9).answer, Answer::Awaited);
    hear(7000, frame("00 06 00 07 00 01")); // the master has given up
    hear(7100, frame("00 06 00 07 00 01")); // and a broadcast has no reply
    EXPECT_EQ(frame_kind_text(traffic.frame(9)), "request, no reply");
    hear(8000, frame("02 06 00 07 00 01"));
    traffic.settle(18008);
    EXPECT_EQ(traffic.frame(13).answer, Answer::Awaited);
    traffic.settle(18009);
    EXPECT_EQ(traffic.frame(13).answer, Answer::Missing);
    hear(20000, read);
    hear(31000, answer); // too late
    const TrafficRow& one = counts.by_address().at(1);
    EXPECT_EQ(std::tuple(one.requests, one.replies, one.unanswered), std::tuple(5, 5, 2));
    EXPECT_EQ(one.reply.mean(), 20);
    EXPECT_EQ(counts.by_function().at(6).unanswered, 1);
    EXPECT_EQ(counts.by_function().at(16).exceptions, 1);
    EXPECT_EQ(counts.all().unanswered, 3);
    EXPECT_EQ(counts.reply_times().count(4), 2);
    EXPECT_EQ(Histogram::label(4) + ", " + Histogram::label(Histogram::kClasses - 1),
              "10-20, 10000+");
    traffic.clear();
    EXPECT_TRUE(counts.by_address().empty());
    EXPECT_EQ(traffic.first_number(), traffic.next_number());
}

TEST_F(TrafficTest, ASelectionFollowsFiltersPausesAndForgetsWhatIsNotKept) {
    FrameSelection selection(traffic);
    for (int i = 0; i < 3; ++i)
        hear(1000 * i, read + answer + frame("02 06 00 07 00 01"));
    EXPECT_EQ(selection.fresh(), 9U);
    selection.take_new();
    EXPECT_FALSE(byte_filter("1,") || byte_filter("256") || byte_filter("3-1") ||
                 byte_filter("1-2-3"));
    selection.set_filter(*byte_filter(" 1, 4-9 "), *byte_filter("3"));
    EXPECT_EQ(selection.size(), 6U);
    selection.set_paused(true);
    hear(9000, read + answer);
    EXPECT_EQ(selection.behind(), 2U);
    selection.set_filter(*byte_filter("2"), *byte_filter(""));
    EXPECT_EQ(selection.size() + selection.fresh(), 3U);
    selection.set_paused(false);
    hear(9500, frame("02 06 00 07 00 02"));
    EXPECT_EQ(selection.fresh(), 1U);
    selection.take_new();
    const std::string many = frame("03 07");
    for (std::size_t i = 0; i < kKeptFrames - 2; ++i)
        hear(10000, many);
    EXPECT_EQ(traffic.frames().size(), kKeptFrames);
    EXPECT_EQ(selection.gone(), 3U);
    EXPECT_EQ(selection.row(0), nullptr);
    selection.drop_gone();
    EXPECT_EQ(selection.row(0)->bytes, frame("02 06 00 07 00 02"));
}

} // namespace pelvan::testing
