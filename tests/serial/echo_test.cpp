// Channels whose line gives back what is sent. A frame ends with a full stop here.
#include <gtest/gtest.h>

#include "serial/line_status.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

struct EchoTest : ::testing::TestWithParam<std::pair<const char*, const char*>>, SerialRig {
    EchoTest() {
        build({std::string("1;9600,N,8,1;") + GetParam().second});
        exchange_by(GetParam().first);
        set_channels(ini_key::echo, "YES");
        ports[0]->discards_future = false;
    }
    std::string send(const std::string& bytes, const std::vector<Arrival>& arrivals,
                     float timeout_ms = 200) {
        ports[0]->replies.push_back(arrivals);
        return link.transmit(0, bytes, timeout_ms, 8,
                             [](auto b) { return b.find('.') + 1 == b.size(); });
    }
    /// Whether a good exchange goes through, and nothing is said of it.
    void expect_good() {
        tick.advance(300);
        EXPECT_EQ(send("ask", {{3, "ask"}, {30, "good."}}), "good.");
        EXPECT_EQ(link.take_remark(), "");
        EXPECT_EQ(link.echo(), Echo::Whole);
    }
    std::string shown() {
        const std::string text = line_text("Full", observer.look(0));
        return text.substr(text.rfind("| ") + 2);
    }
    LineObserver observer{table, config, [](const std::string&) { return std::string(); }};
};

INSTANTIATE_TEST_SUITE_P(, EchoTest,
                         ::testing::Values(std::pair("QUIET", "1"), std::pair("QUIET", "2"),
                                           std::pair("COMPLETE", "1"), std::pair("COMPLETE", "2")));

TEST_P(EchoTest, IsTakenOutHoweverItComesAndWhateverIsWrongWithItIsSaid) {
    ini_write_string("SERIAL DEVICES", "PORT 1", "/dev/null", config.gIniFile);
    // What comes, the reply, the remark's beginning, what the status bar ends with.
    const std::tuple<std::vector<Arrival>, const char*, const char*, const char*> cases[] = {
        {{{3, "ask"}, {30, "ok."}}, "ok.", "", "open"},
        {{{1, "a"}, {2, "s"}, {3, "ko"}, {5, "k."}}, "ok.", "", "open"},
        {{{90, "askok."}}, "ok.", "", "open"},
        {{{3, "ask"}, {30, "ask"}}, "ask", "", "open"},
        {{{3, "ask"}}, "", "", "open"},
        {{}, "", "Nothing came, not even the echo", "no echo"},
        {{{3, "as"}}, "", "The echo broke off after 2 bytes.", "echo cut"},
        {{{3, "axk"}, {30, "ok."}}, "", "The echo differs (byte 2 came as 78, not 73)", "differs"},
        {{{3, "~ask"}, {30, "ok."}}, "", "The echo differs (byte 1 came as 7E, ", "echo differs"},
        {{{3, "asok."}}, "", "The echo differs (byte 3 came as 6F, not 6B)", "echo differs"},
        {{{30, "ok."}}, "", "The echo differs", "echo differs"}, // it has echoed before
    };
    expect_good();
    for (const auto& [arrivals, reply, remark, status] : cases) {
        EXPECT_EQ(send("ask", arrivals), reply) << remark;
        EXPECT_EQ(link.echo() == Echo::Whole, *remark == '\0');
        EXPECT_TRUE(shown().ends_with(status)) << shown();
        const std::string said = link.take_remark();
        EXPECT_EQ(said.substr(0, std::string(remark).size()), remark);
        EXPECT_EQ(said.empty(), *remark == '\0') << said;
        expect_good();
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_P(EchoTest, AWholeReplyWithoutItCountsOnALineThatHasNeverEchoed) {
    for (const char* reply : {"ok.", "a.", "a long answer."}) {
        EXPECT_EQ(send("ask", {{30, reply}}), reply);
        EXPECT_TRUE(link.take_remark().starts_with("The reply came without an echo"));
    }
    EXPECT_EQ(send("ask", {{30, "no frame"}}), "");
    EXPECT_NE(link.take_remark().find("or does not echo"), std::string::npos);
    EXPECT_EQ(send("question", {{30, "quastionok."}}), "") << "a damaged echo before a reply";
    EXPECT_TRUE(link.take_remark().starts_with("The echo differs"));
    // What might be the echo is: a write's reply is like its request.
    static_cast<void>(link.take_remark());
    EXPECT_EQ(send("ask.", {{30, "ask."}}), "");
    EXPECT_TRUE(link.take_remark().starts_with("This line does not seem to echo"));
    EXPECT_FALSE(link.surely_echoes());
    expect_good();
    EXPECT_EQ(send("ask", {{30, "ok."}}), "") << "it echoes now";
    EXPECT_TRUE(link.surely_echoes());
    EXPECT_NE(link.take_remark().find("or does not echo"), std::string::npos);
    // The second time in a row: another converter.
    EXPECT_EQ(send("ask", {{30, "ok."}}), "ok.");
    EXPECT_TRUE(link.take_remark().starts_with("The reply came without an echo"));
}

TEST_P(EchoTest, ComesAfterAnExchangeThatWaitsForNothing) {
    send("end", {{18, "end"}}, 1);
    EXPECT_EQ(send("ask", {{20, "ask"}, {40, "ok."}}), "ok.");
    send("end", {{18, "end"}}, 1);
    EXPECT_EQ(link.let_fall_silent().discarded, 0U);
    send("end", {{18, "endx"}}, 1);
    EXPECT_EQ(link.let_fall_silent().discarded, 1U);
    send("end", {{18, "end"}}, 1);
    tick.advance(1000); // it stands in the port until then
    expect_good();
    EXPECT_EQ(link.stray_bytes(), 0U);
    send("end", {}, 1); // it never comes
    expect_good();
    send("end", {{18, "e?d"}}, 1);
    EXPECT_EQ(send("ask", {{20, "ask"}, {40, "ok."}}), "");
    EXPECT_NE(link.take_remark().find("that of the command before"), std::string::npos);
    expect_good();
}

TEST_P(EchoTest, ALostLineEndsTheReplyAndATestForEchoesGetsThem) {
    {
        const Link::EchoKept kept(link);
        EXPECT_EQ(send("ask.", {{3, "ask."}}), "ask.");
        EXPECT_EQ(link.take_remark(), "");
    }
    if (GetParam().first == std::string("QUIET")) return; // the fake does not end a reply so
    ports[0]->responder = [this](auto) {
        ports[0]->line_lost = true;
        return std::vector<Arrival>{{0, "askhalf"}};
    };
    EXPECT_EQ(send("ask", {}), "half");
}

} // namespace pelvan::testing
