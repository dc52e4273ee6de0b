// `send` in the protocols beside Modbus, and `verify-port`.
#include "command_test.h"

namespace pelvan {
namespace {

using TerminalProtocols = CommandTest;

TEST_F(TerminalProtocols, SendInEachOfThem) {
    expect("send --protocol full --address 1 '? MODEL'", 0, "? MODEL\n742\n");
    expect("send --protocol full '= SP1 100'", 0, "= SP1 100\nMESSAGE COMPLETED\n");
    expect("send --protocol full --address 2 '? C1'", 1, "? C1\n",
           "pelvan7: COULDN'T CONNECT TO DEVICE\n");
    expect("send --protocol xon '? MODEL'", 0, "? MODEL\n742\n");
    expect("send --protocol tellura --parameter 0000 --read 2 --check crc", 0,
           "10 02 08 00 01 00 00 00 00 00 02 10 03 01 47\n"
           "10 02 00 08 41 00 00 00 02 E6 10 03 FB 03  Data: 02 E6\n");
    expect("send --protocol tellura --parameter 012C --write 0010", 0,
           "10 02 08 00 08 00 00 00 01 2C 00 10 10 10 03 B3\n"
           "10 02 00 08 48 00 00 00 10 03 B0  Written\n");
    expect("send --bad-checksum", 1, "1 3 0 1 132 255 \n",
           "pelvan7: No response from the controller at address 1.\n");
    expect_failures(exit_code::kBadOption,
                    "send --protocol full->the command text is missing|"
                    "send --protocol full --address 5O '= SP1 66'->--address: give a whole number "
                    "from 0 to 32|"
                    "send '? C1'->a command text goes with the protocols full and xon only|"
                    "send --protocol tellura --read none->Invalid number of bytes!|"
                    "send --protocol tellura --read 2 --write 00->|"
                    "send --protocol xon --bad-checksum '? C1'->"
                    "--bad-checksum: goes with the protocol modbus only");
}

TEST_F(TerminalProtocols, SendRepeats) {
    EXPECT_EQ(run("send --repeat 3 --interval 0.5 --format smart"), exit_code::kDone);
    EXPECT_TRUE(out.str().starts_with("0 1\n")) << out.str();
    EXPECT_TRUE(printed("\n3 replies, 0 failures; ")) << out.str();
    EXPECT_EQ(run("send --repeat 2 --register 65000"), exit_code::kFailed);
    EXPECT_TRUE(printed("\n0 replies, 2 failures\n")) << out.str();
    on_wait = [this] { stop = true; };
    EXPECT_EQ(run("send --repeat 0"), exit_code::kDone);
    EXPECT_TRUE(printed("1 reply, 0 failures; "));
    stop = false;
    EXPECT_EQ(run("send --repeat 2"), exit_code::kFailed) << "interrupted before its end";
    stop = false;
    expect_failures(exit_code::kBadOption,
                    "send --repeat 5 --register 70000->Bad REGISTER entered.|send --interval "
                    "2->|send --repeat 2 --interval 0.01->|"
                    "send --repeat -1->");
}

TEST_F(TerminalProtocols, VerifyPortMovesTheSimulatedJumperAndTellsTheOutcome) {
    configure("simulated:loopback");
    EXPECT_EQ(run("verify-port"), exit_code::kDone);
    EXPECT_TRUE(err.str().ends_with("Verify Communications Port: Test Passed!\n"));
    EXPECT_EQ(run("verify-port --protocol full --jumper in"), exit_code::kFailed);
    EXPECT_TRUE(told("wiring and verify"));
    EXPECT_EQ(run("verify-port --jumper out"), exit_code::kFailed);
    EXPECT_TRUE(told("wiring or verify"));
    EXPECT_EQ(run("verify-port --jumper lost"), exit_code::kBadOption);
    EXPECT_EQ(run("verify-port --pause 600"), exit_code::kDone) << "minutes on a fake tick";
    on_wait = [this] { stop = true; };
    EXPECT_EQ(run("verify-port --pause 600"), exit_code::kFailed);
    EXPECT_TRUE(told("pelvan7: interrupted"));
}

TEST_F(TerminalProtocols, BadRequestsAreSentAfterAYesAndEndWith0OnlyWhenAllIsGood) {
    tick.step_ms = 0.5;
    EXPECT_EQ(run("bad-requests"), exit_code::kFailed);
    EXPECT_EQ(out.str(), "");
    EXPECT_TRUE(told("Modbus RTU, address 1, register 0") && told("--yes sends them"));
    for (const char* const protocol : {"modbus", "full", "xon", "tellura --check crc"}) {
        EXPECT_EQ(run(std::string("bad-requests --yes --protocol ") + protocol), exit_code::kDone)
            << out.str();
        EXPECT_TRUE(printed(" passed")) << out.str();
    }
    EXPECT_EQ(run("bad-requests --yes --json --wait 0.2"), exit_code::kDone);
    EXPECT_TRUE(printed(R"({"name":"Wrong CRC","sent":"01 03 00 00 00 01 84 FF",)"
                        R"("expected":"silence","came":"nothing","verdict":"passed","reason":""})"))
        << out.str();
    EXPECT_TRUE(out.str().ends_with(R"("good":true,"end":""})"
                                    "\n"));
    configure("simulated:742,lost=1");
    EXPECT_EQ(run("bad-requests --yes"), exit_code::kFailed);
    EXPECT_TRUE(told("does not answer a good request"));
    stop = true;
    EXPECT_EQ(run("bad-requests --yes"), exit_code::kFailed);
    EXPECT_TRUE(told("Cancelled."));
    expect_failures(exit_code::kBadOption,
                    "bad-requests --parameter 01ca->|bad-requests --wait 0->|"
                    "bad-requests --yes --address 0->"
                    "The address is a whole number from 1 to 247.");
}

} // namespace
} // namespace pelvan
