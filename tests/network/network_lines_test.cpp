#include "network/network_lines.h"

#include <gtest/gtest.h>

#include <future>

#include "platform/run_time_error.h"
#include "support/error_of.h"
#include "support/fake_time.h"

using namespace pelvan;
using namespace pelvan::testing;

namespace {

constexpr char kDevice[] = "tcp://host:1";

/// What a library would do, at the tests' command; openings run in threads of their own.
struct FakeModule {
    static void open(NetworkAttempt& attempt, NetworkOpening& opening) {
        const std::shared_ptr<FakeModule> self = current;
        self->last_timeout_ms = attempt.timeout_ms;
        ++self->openings;
        self->lost = attempt.lost;
        self->knew_address = attempt.looked_up != nullptr;
        attempt.looked_up = self;
        attempt.phase = self->reached;
        if (self->hangs) self->released.get_future().wait();
        opening.error = self->error;
        opening.reason = "as told";
        self->ended.set_value();
    }
    static inline std::shared_ptr<FakeModule> current;

    bool hangs = false;
    int error = error_number::kCannotSetState;
    std::atomic<int> openings{0};
    std::atomic<int> last_timeout_ms{0};
    std::function<void(const std::string&)> lost;
    std::atomic<bool> knew_address{false};
    NetworkPhase reached = NetworkPhase::LookingUp;
    std::promise<void> released;
    std::promise<void> ended;
};

struct NetworkLinesTest : ::testing::Test {
    int open(const char* device = kDevice) {
        return error_of([&] { static_cast<void>(lines.open(device, {})); });
    }
    std::shared_ptr<FakeModule> renew(bool hangs = false) {
        FakeModule::current = std::make_shared<FakeModule>();
        FakeModule::current->hangs = hangs;
        return FakeModule::current;
    }

    FakeTick tick;
    bool present = true;
    NetworkLines lines{tick,
                       [this](std::string& error) {
                           error = "libgensio.so.4: cannot open";
                           return present ? FakeModule::open : nullptr;
                       },
                       {400, 300, 10000}};
    std::vector<std::string> sentences;
    Subscription failed = lines.failed().subscribe(
        [this](const std::string& sentence) { sentences.push_back(sentence); });
};

} // namespace

TEST_F(NetworkLinesTest, SaysWhyAnOpeningFailsUntilOneSucceeds) {
    EXPECT_EQ(lines.trouble(kDevice), "");
    renew();
    EXPECT_EQ(open(), error_number::kCannotSetState);
    EXPECT_EQ(lines.trouble(kDevice), "as told");
    EXPECT_EQ(sentences.back(), "tcp://host:1: as told");
    present = false;
    EXPECT_EQ(open(), 8006);
    EXPECT_NE(lines.trouble(kDevice).find("libgensio4"), std::string::npos);
    EXPECT_EQ(open("tcp://host:0"), error_number::kInvalidPortNumber);
    EXPECT_NE(sentences.back().find("names no port from 1"), std::string::npos);
}

TEST_F(NetworkLinesTest, TheReasonOfALossIsToldOnce) {
    renew();
    open();
    for (int i = 0; i < 2; ++i) {
        FakeModule::current->lost("the server closed it");
        EXPECT_EQ(lines.trouble(kDevice), "the server closed it");
        EXPECT_EQ(sentences.size(), 2U);
        EXPECT_EQ(sentences.back(), "tcp://host:1: the server closed it");
    }
    renew();
    open(); // which fails, for another reason
    EXPECT_EQ(sentences.size(), 3U);
}

TEST_F(NetworkLinesTest, GivesUpAnOpeningThatNeverEndsAndBeginsNoSecond) {
    const auto hanging = renew(true);
    EXPECT_EQ(open(), error_number::kHardwareNotAvailable);
    EXPECT_NE(lines.trouble(kDevice).find("name"), std::string::npos); // it was looking that up
    EXPECT_EQ(open(), error_number::kHardwareNotAvailable);
    EXPECT_EQ(hanging->openings, 1);
    // Once it has ended, the next one begins; for a while with less patience.
    const auto next = renew();
    {
        const Subscription waited = lines.opening.subscribe([&](const std::string&) {
            hanging->released.set_value();
            hanging->ended.get_future().wait();
            tick.advance(100); // which are not spent a second time
        });
        EXPECT_EQ(open(), error_number::kCannotSetState);
    }
    EXPECT_EQ(next->last_timeout_ms, 180);
    EXPECT_TRUE(next->knew_address) << "it was looked up by the one that came too late";
    const auto later = renew(true);
    later->reached = NetworkPhase::Setting;
    tick.advance(10000);
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(open(), error_number::kCannotSetState);
        EXPECT_NE(lines.trouble(kDevice).find("does not answer in RFC 2217"), std::string::npos);
    }
    EXPECT_EQ(later->last_timeout_ms, 360);
    EXPECT_FALSE(later->knew_address);
    later->released.set_value();
    later->ended.get_future().wait();
}
