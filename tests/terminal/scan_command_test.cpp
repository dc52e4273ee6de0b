#include "command_test.h"

namespace pelvan {
namespace {

using ScanCommandTest = CommandTest;

TEST_F(ScanCommandTest, PrintsWhatAnswersAndHowToUseIt) {
    configure("simulated:742,line=19200/E/8/1");
    expect("scan --protocol modbus --baud 9600,19200 --addresses 1-3", 0,
           "Protocol  Address  Settings     Model  Answer                Reply  Found after\n"
           "Modbus    1        19200,E,8,1  742    register 0 holds 742  0 ms   1 s\n",
           "pelvan7: port 4, 18 requests, about 5 s\n"
           "pelvan7: found: Modbus, address 1, 19200,E,8,1\n"
           "pelvan7: 40 %, about 3 s left\n"
           "pelvan7: 90 %, about 1 s left\n"
           "pelvan7: to use it: pelvan7 --directory '" +
               dir.path() + "' ports set modbus --port 4 --settings 19200,E,8,1 --lines clear\n");
    configure("simulated:742");
    EXPECT_EQ(run("scan --json --first --port 2 --protocol full,tellura --addresses 1"), 0);
    EXPECT_TRUE(out.str().starts_with("{\"port\":2,\"end\":\"found\",\"reason\":\"\",\"finds\":[{"
                                      "\"protocol\":\"Tellura/AB\",\"address\":1,"
                                      "\"settings\":\"9600,N,8,1\",\"check\":\"bcc\",\"model\":"
                                      "\"742\",\"answer\":\"parameter 0000 holds 742\","))
        << out.str();
}

TEST_F(ScanCommandTest, TellsWhyThereIsNothing) {
    const std::string plain = "scan --baud 9600 --parity n --protocol ";
    EXPECT_EQ(run(plain + "modbus --addresses 5-9"), exit_code::kFailed);
    EXPECT_TRUE(out.str().empty());
    EXPECT_TRUE(told("pelvan7: no controller answered in 1 s")) << err.str();
    expect_failures(
        exit_code::kBadOption,
        "scan --protocol modbus,can->--protocol: \"can\" is no choice, choose of "
        "full,modbus,xon,tellura|scan --baud 115200->|scan --parity x->--parity: choose of n,e,o|"
        "scan --addresses 9-5->--addresses: give 5 or 1-32, from 0 to 247|"
        "scan --addresses 1-2-3->|scan --patience 5->|scan --port 17->|scan --stop 1.5->");
    stop = true;
    EXPECT_EQ(run(plain + "modbus"), exit_code::kFailed);
    EXPECT_TRUE(told("pelvan7: interrupted after 1 s")) << err.str();
    stop = false;
    configure(dir.file("unplugged"));
    EXPECT_EQ(run(plain + "xon"), exit_code::kFailed);
    EXPECT_TRUE(told("Port 4 stands for no device that is there.")) << err.str();
}

} // namespace
} // namespace pelvan
