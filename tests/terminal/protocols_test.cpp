// `send` in the protocols beside Modbus, and `verify-port`.
#include <gtest/gtest.h>

#include <sstream>

#include "support/fake_time.h"
#include "support/temp_dir.h"
#include "terminal/terminal.h"

namespace pelvan {
namespace {

using Arguments = std::vector<std::string>;

/// Channels 0 to 3 on ports 1 to 4; the console has Xon selected.
class TerminalProtocols : public ::testing::Test {
  protected:
    void configure(const std::string& device) {
        std::string text = "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=2\r\n";
        for (int n = 0; n < 4; ++n)
            text += "DEVICE " + std::to_string(n) + " COMM PORT=" + std::to_string(n + 1) +
                    "\r\nDEVICE " + std::to_string(n) + " PORT SETTING=9600,N,8,1\r\n";
        text += "[SERIAL DEVICES]\r\n";
        for (int n = 1; n <= 4; ++n)
            text += "PORT " + std::to_string(n) + "=" + device + "\r\n";
        testing::write_file(dir.file("pelvan7.ini"), text);
    }
    int run(const Arguments& arguments) {
        out.str("");
        err.str("");
        TerminalEnvironment environment{out,        err, tick, clock, open_serial_device,
                                        dir.path(), stop};
        return run_terminal(arguments, environment).value_or(-1);
    }

    testing::TempDir dir;
    testing::FakeTick tick;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
};

TEST_F(TerminalProtocols, SendInEachOfThem) {
    struct Case {
        Arguments arguments;
        int code;
        std::string output;
        std::string error;
    };
    const std::vector<Case> cases{
        {{"send", "--protocol", "full", "--address", "1", "? MODEL"}, 0, "? MODEL\n742\n", ""},
        {{"send", "--protocol", "full", "= SP1 100"}, 0, "= SP1 100\nMESSAGE COMPLETED\n", ""},
        {{"send", "--protocol", "full", "--address", "2", "? C1"},
         1,
         "? C1\n",
         "pelvan7: COULDN'T CONNECT TO DEVICE\n"},
        {{"send", "--protocol", "full"}, 1, "", "pelvan7: the command text is missing\n"},
        {{"send", "--protocol", "xon", "? MODEL"}, 0, "? MODEL\n742\n", ""},
        {{"send", "--protocol", "tellura", "--parameter", "0000", "--read", "2", "--check", "crc"},
         0,
         "10 02 08 00 01 00 00 00 00 00 02 10 03 01 47\n"
         "10 02 00 08 41 00 00 00 02 E6 10 03 FB 03  Data: 02 E6\n",
         ""},
        {{"send", "--protocol", "tellura", "--parameter", "012C", "--write", "0010"},
         0,
         "10 02 08 00 08 00 00 00 01 2C 00 10 10 10 03 B3\n"
         "10 02 00 08 48 00 00 00 10 03 B0  Written\n",
         ""},
        {{"send", "--protocol", "tellura", "--read", "none"},
         1,
         "",
         "pelvan7: Invalid number of bytes!\n"},
        {{"send", "--bad-checksum"},
         1,
         "1 3 0 1 132 255 \n",
         "pelvan7: No response from the controller at address 1.\n"},
        {{"send", "--protocol", "xon", "--bad-checksum", "? C1"},
         exit_code::kBadOption,
         "",
         "pelvan7: --bad-checksum: goes with the protocol modbus only\n"},
        {{"send", "? C1"},
         1,
         "",
         "pelvan7: a command text goes with the protocols full and xon only\n"},
    };
    configure("simulated:742");
    for (const Case& each : cases) {
        EXPECT_EQ(run(each.arguments), each.code);
        EXPECT_EQ(out.str(), each.output);
        EXPECT_EQ(err.str(), each.error);
    }
    EXPECT_EQ(run({"send", "--protocol", "tellura", "--read", "2", "--write", "00"}),
              exit_code::kBadOption);
}

TEST_F(TerminalProtocols, VerifyPortMovesTheSimulatedJumperAndTellsTheOutcome) {
    configure("simulated:loopback");
    EXPECT_EQ(run({"verify-port"}), exit_code::kDone);
    EXPECT_TRUE(err.str().ends_with("Verify Communications Port: Test Passed!\n"));
    EXPECT_EQ(run({"verify-port", "--protocol", "full", "--jumper", "in"}), exit_code::kFailed);
    EXPECT_NE(err.str().find("wiring and verify"), std::string::npos);
    EXPECT_EQ(run({"verify-port", "--jumper", "out"}), exit_code::kFailed);
    EXPECT_NE(err.str().find("wiring or verify"), std::string::npos);
    EXPECT_EQ(run({"verify-port", "--jumper", "lost"}), exit_code::kBadOption);
}

} // namespace
} // namespace pelvan
