// `pelvan7 listen` on a pseudo-terminal. The test acts whenever the command reads the tick: it
// sends the next burst when the one before was printed, and interrupts after the last.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <sstream>

#include "support/fake_time.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"
#include "terminal/terminal.h"
#include "text/strings.h"

namespace pelvan {
namespace {

class ListenCommandTest : public ::testing::Test, public testing::FakeTick {
  protected:
    ListenCommandTest() {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                            "DEVICE 0 PORT SETTING=9600,N,8,1\r\nDEVICE 0 RTS Mode=1\r\n"
                            "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                            "DEVICE 1 RTS Mode=1\r\n[SERIAL DEVICES]\r\nPORT 2=" +
                                line.path() + "\r\n");
    }
    std::uint32_t timeGetTime() override {
        const auto lines = static_cast<std::size_t>(std::ranges::count(out.str(), '\n'));
        if (opened && at_end && lines >= sent) {
            if (sent < bursts.size())
                line.send(bursts[sent++]);
            else
                at_end();
        }
        return FakeTick::timeGetTime();
    }
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--directory", dir.path(), "listen"});
        return run_terminal(arguments, environment).value_or(-1);
    }

    testing::TempDir dir;
    testing::PtyPair line{testing::PtyPair::Slave::KeepOpen};
    std::vector<std::string> bursts; // sent one after another
    std::function<void()> at_end;    // and then this
    std::size_t sent = 0;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
    bool opened = false;
    LineOpener open_noting = [this](const std::string& path, const LineSettings& settings) {
        opened = true;
        return open_serial_device(path, settings);
    };
    TerminalEnvironment environment{out, err, *this, clock, open_noting, dir.path(), stop};
};

const std::string kRequest{"\1\3\0\144\0\2\205\324", 8};

TEST_F(ListenCommandTest, PrintsBurstsAndOnInterruptTheStatistics) {
    bursts = {kRequest, "\x1B[2", kRequest};
    at_end = [this] { stop = true; };
    const std::string capture = dir.file("out.pcapng");
    EXPECT_EQ(run({"--seconds", "1000000", "--pcap", capture}), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, out.str().find("Hit Time")),
              "1 3 100 2 133 212 \n\\x1B[2\n1 3 100 2 133 212 \nHits: 3\n");
    EXPECT_NE(out.str().find("function 3: 2 requests, 0 replies"), std::string::npos);
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(testing::read_file(capture).substr(0, 4), "\x0A\x0D\x0D\x0A");
}

TEST_F(ListenCommandTest, EndsAfterItsSeconds) {
    step_ms = 200;
    EXPECT_EQ(run({"--seconds", "1"}), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, 8), "Hits: 0\n");
}

TEST_F(ListenCommandTest, FailuresEndItWithOneLine) {
    bursts = {kRequest};
    at_end = [this] { line.unplug(); };
    EXPECT_EQ(run({"--seconds", "1000000"}), exit_code::kFailed);
    EXPECT_NE(out.str().find("Hits: 1\n"), std::string::npos);
    EXPECT_EQ(err.str(), "pelvan7: COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS\n");
    at_end = {};
    const std::string refused = "--seconds 9|--channel 4|--format smart|--direction both|"
                                "--seconds -1|--pcap no/such/folder";
    for (const std::string& arguments : split(refused, '|')) { // at the first the line is gone
        err.str("");
        EXPECT_NE(run(split(arguments, ' ')), exit_code::kDone);
        EXPECT_EQ(std::count(err.view().begin(), err.view().end(), '\n'), 1)
            << arguments << err.str();
    }
}

} // namespace
} // namespace pelvan
