// `pelvan7 listen` on a pseudo-terminal. The test acts whenever the command reads the tick: it
// sends the next burst when the one before was printed, and interrupts after the last.
#include <gtest/gtest.h>

#include <atomic>
#include <sstream>

#include "support/fake_time.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"
#include "terminal/terminal.h"

namespace pelvan {
namespace {

class ActingTick : public testing::FakeTick {
  public:
    std::uint32_t timeGetTime() override {
        if (act) act();
        return FakeTick::timeGetTime();
    }
    std::function<void()> act;
};

class ListenCommandTest : public ::testing::Test {
  protected:
    ListenCommandTest() {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=1\r\n"
                            "DEVICE 0 PORT SETTING=9600,N,8,1\r\nDEVICE 0 RTS Mode=1\r\n"
                            "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                            "DEVICE 1 RTS Mode=1\r\n[SERIAL DEVICES]\r\nPORT 2=" +
                                line.path() + "\r\n");
    }
    int run(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {"--directory", dir.path(), "listen"});
        return run_terminal(arguments, environment).value_or(-1);
    }
    /// Sends the bursts one after another, then does `last`.
    void script(const std::vector<std::string>& bursts, std::function<void()> last) {
        tick.act = [this, bursts, last = std::move(last), sent = std::size_t{0}]() mutable {
            const std::string text = out.str();
            const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
            if (!opened || lines < sent) return;
            if (sent < bursts.size())
                line.send(bursts[sent++]);
            else
                last();
        };
    }

    testing::TempDir dir;
    testing::PtyPair line{testing::PtyPair::Slave::KeepOpen};
    ActingTick tick;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
    bool opened = false;
    TerminalEnvironment environment{out,
                                    err,
                                    tick,
                                    clock,
                                    [this](const std::string& path, const LineSettings& settings) {
                                        auto device = open_serial_device(path, settings);
                                        opened = true;
                                        return device;
                                    },
                                    dir.path(),
                                    stop};
};

const std::string kRequest{"\1\3\0\144\0\2\205\324", 8};

TEST_F(ListenCommandTest, PrintsBurstsAndOnInterruptTheStatistics) {
    script({kRequest, "\x1B[2", kRequest}, [this] { stop = true; });
    const std::string capture = dir.file("out.pcapng");
    EXPECT_EQ(run({"--seconds", "1000000", "--pcap", capture}), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, out.str().find("Hit Time")),
              "1 3 100 2 133 212 \n\\x1B[2\n1 3 100 2 133 212 \nHits: 3\n");
    EXPECT_NE(out.str().find("function 3: 2 requests, 0 replies"), std::string::npos);
    EXPECT_EQ(err.str(), "");
    EXPECT_EQ(testing::read_file(capture).substr(0, 4), "\x0A\x0D\x0D\x0A");
}

TEST_F(ListenCommandTest, EndsAfterItsSeconds) {
    tick.step_ms = 200;
    EXPECT_EQ(run({"--seconds", "1"}), exit_code::kDone);
    EXPECT_EQ(out.str().substr(0, 8), "Hits: 0\n");
}

TEST_F(ListenCommandTest, FailuresEndItWithOneLine) {
    script({kRequest}, [this] { line.unplug(); });
    EXPECT_EQ(run({"--seconds", "1000000"}), exit_code::kFailed);
    EXPECT_NE(out.str().find("Hits: 1\n"), std::string::npos);
    EXPECT_EQ(err.str(), "pelvan7: COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS\n");
    tick.act = {};
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{}, // the line is gone
                                               {"--channel", "4"},
                                               {"--format", "smart"},
                                               {"--direction", "both"},
                                               {"--seconds", "-1"},
                                               {"--pcap", dir.file("no/such/folder")}}) {
        err.str("");
        EXPECT_NE(run(arguments), exit_code::kDone);
        EXPECT_EQ(std::count(err.view().begin(), err.view().end(), '\n'), 1) << err.str();
    }
}

} // namespace
} // namespace pelvan
