// `pelvan7 listen` on a pseudo-terminal. The test acts whenever the command reads the tick: it
// sends the next burst when the one before was printed, and interrupts after the last.
#include "command_test.h"
#include "support/file_size_limit.h"
#include "support/frames.h"
#include "support/pty_pair.h"

namespace pelvan {
namespace {

class ListenCommandTest : public CommandTest, public testing::FakeTick {
  protected:
    ListenCommandTest() {
        configure(line.path());
        tick_source = this;
        open_device = [this](const std::string& path, const LineSettings& settings) {
            opened = true;
            return open_serial_device(path, settings);
        };
    }
    std::uint32_t timeGetTime() override {
        const auto lines = static_cast<std::size_t>(std::ranges::count(out.str(), '\n'));
        if (opened && at_end && lines >= sent + head_lines) {
            if (sent < bursts.size())
                line.send(bursts[sent++]);
            else
                at_end();
        }
        return FakeTick::timeGetTime();
    }

    testing::PtyPair line{testing::PtyPair::Slave::KeepOpen};
    std::vector<std::string> bursts; // sent one after another
    std::function<void()> at_end;    // and then this
    std::size_t sent = 0;
    std::size_t head_lines = 0; // printed before anything is heard
    bool opened = false;
};

const std::string kRequest{"\1\3\0\144\0\2\205\324", 8};

TEST_F(ListenCommandTest, PrintsBurstsAndOnInterruptTheStatistics) {
    bursts = {kRequest, "\x1B[2", kRequest};
    at_end = [this] { stop = true; };
    const std::string capture = dir.file("out.pcapng");
    EXPECT_EQ(run("listen --seconds 1000000 --pcap " + capture), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, out.str().find("Hit Time")),
              "1 3 100 2 133 212 \n\\x1B[2\n1 3 100 2 133 212 \nHits: 3\n");
    EXPECT_TRUE(printed("function 3: 2 requests (1 unanswered), 0 replies"));
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(testing::read_file(capture).substr(0, 4), "\x0A\x0D\x0D\x0A");
}

TEST_F(ListenCommandTest, NamesTheCaptureThatTheDiskHasNoRoomFor) {
    bursts = {kRequest, kRequest};
    at_end = [this] { stop = true; };
    const std::string capture = dir.file("out.pcapng");
    constexpr rlim_t kHeaderAlone = 60;
    const testing::FileSizeLimit full(kHeaderAlone);
    EXPECT_EQ(run("listen --seconds 1000000 --pcap " + capture), exit_code::kFailed);
    EXPECT_TRUE(told("the capture \"" + capture + "\" cannot be written\n")) << err.str();
}

TEST_F(ListenCommandTest, PrintsFramesHoweverTheyArriveAndWhatStaysUnanswered) {
    const std::string reply = testing::frame("01 03 04 02 D5 FF FF");
    bursts = {kRequest, kRequest + reply.substr(0, 4), reply.substr(4)};
    head_lines = 1;
    at_end = [this] { stop = printed("reply   "); };
    EXPECT_EQ(run("listen --seconds 1000000 --frames"), exit_code::kDone);
    for (const char* text : {"No reply to the request of 16:30:05.",
                             "request              1    3  100-101  [CRC ok]\n",
                             "reply                1    3  100 = 725, 101 = -1  [CRC ok]\n"})
        EXPECT_TRUE(printed(text)) << text << out.str();
    EXPECT_EQ(out.str().find("reply   "), out.str().rfind("reply   ")) << out.str();
}

TEST_F(ListenCommandTest, EndsAfterItsSeconds) {
    step_ms = 200;
    EXPECT_EQ(run("listen --seconds 1"), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, 8), "Hits: 0\n");
}

TEST_F(ListenCommandTest, EndsWhenNobodyReadsItsOutput) {
    bursts = {kRequest};
    at_end = [this] {
        out.setstate(std::ios::badbit);
        bursts.resize(2, kRequest);
    };
    EXPECT_EQ(run("listen --seconds 1000000"), exit_code::kFailed);
}

TEST_F(ListenCommandTest, FailuresEndItWithOneLine) {
    bursts = {kRequest};
    at_end = [this] {
        if (err.str().empty())
            line.unplug();
        else
            stop = true;
    };
    expect_failures(exit_code::kFailed, "listen --seconds 1000000->Listening waits: the device is "
                                        "gone since 16:30:05. It goes on when the device is back.");
    EXPECT_TRUE(printed("Hits: 1\n"));
    EXPECT_TRUE(printed("Line errors are not told by the driver.\n"));
    at_end = {};
    expect_failures(exit_code::kFailed, "listen --seconds 9->"); // the line is gone
    EXPECT_EQ(run("listen --pcap no/such/folder"), exit_code::kFailed);
    EXPECT_TRUE(told("pelvan7: the capture \"no/such/folder\" cannot be written\n"
                     "pelvan7: PATH NOT FOUND ERROR\n"))
        << err.str();
    expect_failures(exit_code::kBadOption, "listen --channel 4->|listen --format smart->|"
                                           "listen --direction both->|listen --seconds -1->");
}

} // namespace
} // namespace pelvan
