#include <bit>

#include "line_test.h"
#include "simulator/slaves/checks.h"
#include "simulator/slaves/faults.h"

namespace pelvan::simulator {
namespace {

class FaultsTest : public LineTest {
  protected:
    /// What a 742 with these faults answers within 60 ms, a stroke, and what it answers later.
    std::string hear(const std::string& faults) {
        open("simulated:742" + faults);
        const std::string soon = say(read_model, 60) + "|";
        return soon + taken(1000);
    }
};

TEST_F(FaultsTest, EachDoesWhatItSays) {
    EXPECT_EQ(hear(""), model_reply + "|");
    EXPECT_EQ(hear(",delay=80"), "|" + model_reply);
    EXPECT_EQ(hear(",lost=1"), "|");
    EXPECT_EQ(hear(",gap=1"), model_reply.substr(0, 3) + "|" + model_reply.substr(3));
    EXPECT_EQ(hear(",late=1,late_ms=500"), "|" + model_reply);
    EXPECT_EQ(hear(",other=1"), frame("02 03 02 02 E6") + "|");

    const std::string crc = hear(",crc=1");
    EXPECT_EQ(crc.substr(0, 5), model_reply.substr(0, 5));
    EXPECT_FALSE(modbus_crc_fits(crc.substr(0, model_reply.size())));

    const std::string noise = hear(",noise=1");
    EXPECT_GT(noise.size(), model_reply.size() + 1);
    EXPECT_LE(noise.size(), model_reply.size() + 5);
    EXPECT_TRUE(noise.ends_with(model_reply + "|"));

    EXPECT_EQ(hear(",lost=1,only=2"), model_reply + "|");
    EXPECT_EQ(say(read_model), "") << "the second reply";
    EXPECT_EQ(say(read_model), model_reply);

    const std::string flipped = hear(",flip=1");
    int bits = 0;
    for (std::size_t i = 0; i < model_reply.size(); ++i)
        bits += std::popcount(byte_at(flipped, i) ^ byte_at(model_reply, i));
    EXPECT_EQ(bits, 1);
}

TEST_F(FaultsTest, ASeedRepeatsItsSequenceAndAnotherDoesNot) {
    const auto lost_ones = [this](std::uint32_t seed) {
        FaultPlan plan;
        plan.lost = 0.3;
        plan.seed = seed;
        FaultSource source(plan);
        std::string pattern;
        for (int i = 0; i < 400; ++i)
            pattern += source.apply({ReplyKind::Modbus, model_reply, {}}).empty() ? '-' : '+';
        return pattern;
    };
    const std::string pattern = lost_ones(7);
    EXPECT_EQ(lost_ones(7), pattern);
    EXPECT_NE(lost_ones(8), pattern);
    const auto lost = std::count(pattern.begin(), pattern.end(), '-');
    EXPECT_NEAR(static_cast<double>(lost), 120, 30); // the sequence is fixed, so this is no gamble
}

} // namespace
} // namespace pelvan::simulator
