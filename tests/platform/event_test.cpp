#include "platform/event.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

using namespace pelvan;

TEST(EventTest, CallsHandlersInOrderForAsLongAsTheirSubscriptionsAreHeld) {
    Event<int> event;
    std::string heard;
    auto first = event.subscribe([&](int number) { heard += "a" + std::to_string(number); });
    {
        const auto second = event.subscribe([&](int) { heard += "b"; });
        event.raise(1);
    }
    event.raise(2);
    first.end();
    event.raise(3);
    EXPECT_EQ(heard, "a1ba2");
    EXPECT_FALSE(first.active());
}

TEST(EventTest, SurvivesHandlersThatEndSubscribeOrDestroy) {
    auto event = std::make_unique<Event<>>();
    std::string heard;
    Subscription own, added, later;
    own = event->subscribe([&] {
        heard += "o";
        own.end();
        later.end();
        added = event->subscribe([&] { heard += "n"; });
    });
    later = event->subscribe([&] { heard += "l"; });
    event->raise();
    EXPECT_EQ(heard, "o");
    event->raise();
    EXPECT_EQ(heard, "on");
    added = event->subscribe([&] { event.reset(); });
    event->raise();
    EXPECT_EQ(event, nullptr);
    EXPECT_EQ(heard, "on");
}
