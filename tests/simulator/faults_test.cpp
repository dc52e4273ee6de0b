#include <gtest/gtest.h>

#include "bytes.h"
#include "simulator/faults.h"
#include "simulator/simulator_hub.h"
#include "support/fake_time.h"

using namespace pelvan;
using namespace pelvan::simulator;
using pelvan::testing::bytes;
using pelvan::testing::FakeTick;
using pelvan::testing::frame;
using pelvan::testing::hex_of;

namespace {

/// What arrives in the first 200 ms and in the second after it, for one request to a 742.
struct Heard {
    std::string soon;
    std::string later;
};

Heard hear(const std::string& device, const std::string& request) {
    FakeTick tick;
    tick.step_ms = 0;
    SimulatorHub hub(tick);
    const auto line = hub.open(device, {});
    line->write(request);
    Heard heard;
    tick.advance(60);
    line->read_into(heard.soon);
    tick.advance(1000);
    line->read_into(heard.later);
    return heard;
}

const std::string kRequest = frame("01 03 00 00 00 01");
const std::string kReply = frame("01 03 02 02 E6");

} // namespace

TEST(Faults, EachDoesWhatItSays) {
    EXPECT_EQ(hear("simulated:742", kRequest).soon, kReply);

    const Heard lost = hear("simulated:742,lost=1", kRequest);
    EXPECT_EQ(lost.soon + lost.later, "");

    const std::string crc = hear("simulated:742,crc=1", kRequest).soon;
    EXPECT_EQ(crc.substr(0, 6), kReply.substr(0, 6));
    EXPECT_FALSE(modbus_crc_fits(crc));

    const Heard gap = hear("simulated:742,gap=1", kRequest);
    EXPECT_EQ(gap.soon, kReply.substr(0, 3));
    EXPECT_EQ(gap.later, kReply.substr(3));

    const Heard late = hear("simulated:742,late=1,late_ms=500", kRequest);
    EXPECT_EQ(late.soon, "");
    EXPECT_EQ(late.later, kReply);

    const std::string noise = hear("simulated:742,noise=1", kRequest).soon;
    ASSERT_GT(noise.size(), kReply.size());
    EXPECT_LE(noise.size(), kReply.size() + 4);
    EXPECT_EQ(noise.substr(noise.size() - kReply.size()), kReply);

    EXPECT_EQ(hear("simulated:742,other=1", kRequest).soon, frame("02 03 02 02 E6"));

    const std::string flipped = hear("simulated:742,flip=1", kRequest).soon;
    ASSERT_EQ(flipped.size(), kReply.size());
    int bits = 0;
    for (std::size_t i = 0; i < flipped.size(); ++i) {
        for (unsigned x = byte_at(flipped, i) ^ byte_at(kReply, i); x != 0; x &= x - 1)
            ++bits;
    }
    EXPECT_EQ(bits, 1);
}

TEST(Faults, ASeedRepeatsItsSequenceAndAnotherDoesNot) {
    const auto lost_ones = [](std::uint32_t seed) {
        FaultPlan plan;
        plan.lost = 0.3;
        plan.seed = seed;
        FaultSource source(plan);
        std::string pattern;
        for (int i = 0; i < 400; ++i) {
            pattern += source.apply({ReplyKind::Modbus, kReply, {}}).empty() ? '-' : '+';
        }
        return pattern;
    };
    EXPECT_EQ(lost_ones(7), lost_ones(7));
    EXPECT_NE(lost_ones(7), lost_ones(8));
    const std::string pattern = lost_ones(7);
    const auto lost = std::count(pattern.begin(), pattern.end(), '-');
    EXPECT_NEAR(static_cast<double>(lost), 120, 30); // the sequence is fixed, so this is no gamble
}
