#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "support/fake_time.h"
#include "support/modbus_slave.h"
#include "support/temp_dir.h"
#include "terminal/terminal.h"
#include "terminal/terminal_dialogs.h"

namespace pelvan {
namespace {

using Arguments = std::vector<std::string>;

/// Runs commands in a directory of their own, on simulated controllers and a fake tick.
class TerminalTest : public ::testing::Test {
  protected:
    TerminalTest() { configure("simulated:742"); }

    void configure(const std::string& device, const std::string& port = "2") {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=3\r\n"
                            "DEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=9600,N,8,1\r\n"
                            "DEVICE 1 COMM PORT=" +
                                port +
                                "\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                                "[SERIAL DEVICES]\r\nPORT 2=" +
                                device + "\r\n");
    }
    int run(Arguments arguments, TickSource& with) {
        out.str("");
        err.str("");
        TerminalEnvironment environment{out,        err, with, clock, open_serial_device,
                                        dir.path(), stop};
        environment.wait_ms = [this](int ms) {
            tick.advance(ms);
            if (on_wait) on_wait();
        };
        return run_terminal(arguments, environment).value_or(-1);
    }
    int run(Arguments arguments) { return run(std::move(arguments), tick); }

    testing::TempDir dir;
    testing::FakeTick tick;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
    std::function<void()> on_wait;
};

TEST_F(TerminalTest, SendPrintsRequestAndReply) {
    struct Case {
        Arguments arguments;
        std::string output;
    };
    const std::vector<Case> cases{
        {{"send", "--register", "0", "--values", "1", "--format", "smart"}, "0 1\n742\n"},
        {{"send", "--format", "hex"}, "01 03 0000 0001 84 0A \n01 03 02 02E6 38 AE \n"},
        {{"send", "--function", "6", "--register", "300", "--values", "-15"},
         "1 6 300 -15 201 139 \n1 6 300 -15 201 139 \n"},
        {{"send", "--function", "16", "--register", "500", "--values", "7,8", "--format", "smart"},
         "500 7 8\n500 2\n"},
        {{"send", "--register", "65000", "--format", "smart"}, "65000 1\nException Error: 131 2\n"},
        {{"send", "--address", "0", "--function", "6", "--values", "1", "--format", "smart"},
         "0 1\nBroadcast: no controller answers.\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(run(each.arguments), exit_code::kDone) << err.str();
        EXPECT_EQ(out.str(), each.output);
        EXPECT_EQ(err.str(), "");
    }
    // The protocol that the user chose on the console stays the chosen one.
    EXPECT_NE(testing::read_file(dir.file("pelvan7.ini")).find("DEFAULT PROTOCOL=3"),
              std::string::npos);
}

TEST_F(TerminalTest, FailuresAreOneLineAndAnExitCode) {
    struct Case {
        Arguments arguments;
        int code;
        std::string error;
    };
    const std::vector<Case> cases{
        {{"send", "--address", "9"},
         exit_code::kFailed,
         "pelvan7: No response from the controller at address 9.\n"},
        {{"send", "--address", "248"}, exit_code::kFailed, "pelvan7: Bad ADDRESS entered.\n"},
        {{"send", "--function", "7"}, exit_code::kFailed, "pelvan7: Bad COMMAND TYPE selected.\n"},
        {{"send", "--values", "40000", "--function", "6"},
         exit_code::kFailed,
         "pelvan7: Bad DATA VALUE entered.\n"},
        {{"send", "--format", "octal"},
         exit_code::kBadOption,
         "pelvan7: --format: \"octal\" is no choice, choose decimal, hex or smart\n"},
        {{"send", "--protocol", "1"}, exit_code::kBadOption, ""},
        {{"send", "--function", "three"}, exit_code::kBadOption, ""},
        {{"send", "--nonsense"}, exit_code::kBadOption, ""},
        {{"dance"}, exit_code::kBadOption, ""},
        {{"--directory", "/no/such/place", "ports"}, exit_code::kBadOption, ""},
        {{"simulate", "--model", "999"},
         exit_code::kBadOption,
         "pelvan7: no simulated device is called \"simulated:999,address=1\"\n"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(run(each.arguments), each.code) << each.arguments.back();
        if (!each.error.empty()) {
            EXPECT_EQ(err.str(), each.error);
        }
        const std::string text = err.str();
        EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1) << text;
    }
}

TEST_F(TerminalTest, AMessageWithoutEndEndsTheCommand) {
    configure("simulated:742", "17");
    EXPECT_EQ(run({"send"}), exit_code::kFailed);
    EXPECT_EQ(err.str(), "pelvan7: Port number is not valid in 'sub init_comms*'\n"
                         "pelvan7: stopped: Port number is not valid in 'sub init_comms*'\n");
    TerminalDialogs in_turn(err);
    const auto show_both = [&in_turn] {
        for (const char* text : {"first", "second"})
            in_turn.message_box(text, "", MessageButtons::Ok, MessageIcon::None);
    };
    EXPECT_THROW(for (int i = 0; i < 100; ++i) show_both(), CommandAborted);
}

TEST_F(TerminalTest, PortsTellsWhatNumbersStandForAndOpensNothing) {
    configure(dir.file("unplugged"));
    EXPECT_EQ(run({"ports"}), exit_code::kDone);
    EXPECT_NE(out.str().find("PORT 2 = " + dir.file("unplugged") + ": "), std::string::npos);
    configure("simulated:742");
    EXPECT_EQ(run({"ports"}), exit_code::kDone);
    EXPECT_NE(out.str().find("PORT 2 = simulated:742: simulated controller\n"), std::string::npos);
}

TEST_F(TerminalTest, WithoutACommandTheWindowsAreWanted) {
    EXPECT_EQ(run({}), -1);
    EXPECT_EQ(run({"--help"}), exit_code::kDone);
    EXPECT_NE(out.str().find("send"), std::string::npos);
}

TEST_F(TerminalTest, ReadsASlaveThatIsNotOursOverAPseudoTerminal) {
    testing::PtyWire wire;
    testing::ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, wire.other_end());
    configure(wire.one_end());
    const auto system_tick = make_system_tick();
    const Arguments read{"send", "--register", "98", "--values", "4", "--format", "smart"};
    EXPECT_EQ(run(read, *system_tick), exit_code::kDone) << err.str();
    EXPECT_EQ(out.str(), "98 4\n980 990 -1000 -1010\n");
    EXPECT_EQ(
        run({"send", "--function", "16", "--register", "20", "--values", "-1,5"}, *system_tick),
        exit_code::kDone);
    EXPECT_EQ(run({"send", "--register", "20", "--long", "--format", "smart"}, *system_tick),
              exit_code::kDone);
    EXPECT_EQ(out.str(), "20 2\n-65531\n");
}

/// A set of two rows: a register of the controller and one that it lacks.
std::string log_set(const std::string& more) {
    return "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOGGING INTERVAL=3\r\n"
           "1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=0\r\n"
           "2DEVICEADDRESS=1\r\n2DEVICECOMMAND=3\r\n2DEVICEREGISTER=60000\r\n" +
           more;
}

TEST_F(TerminalTest, LogPrintsEachPassAndWritesWhatItGathered) {
    testing::write_file(dir.file("set.PV5"), log_set(""));
    const Arguments arguments{"log", dir.file("set.PV5"), "--file", dir.file("out.txt")};
    Arguments three = arguments;
    three.insert(three.end(), {"--passes", "3", "--single-line"});
    EXPECT_EQ(run(three), 0) << err.str();
    EXPECT_NE(out.str().find("Pass 3. "), std::string::npos);
    EXPECT_EQ(out.str().find("Pass 4. "), std::string::npos);
    EXPECT_NE(out.str().find("  1: address 1, register 0: 742\n"), std::string::npos);
    EXPECT_NE(out.str().find(", register 60000:-32002 (exception)\n"), std::string::npos);
    const std::string line = "11-15-2026, 16:30:05,  1,  0,  742,  1,  60000, -32002\r\n";
    EXPECT_EQ(testing::read_file(dir.file("out.txt")), line + line + line);

    // An interrupt while waiting: what was gathered is written.
    std::filesystem::remove(dir.file("out.txt"));
    on_wait = [this] { stop = true; };
    EXPECT_EQ(run(arguments), 0);
    EXPECT_EQ(testing::read_file(dir.file("out.txt")),
              "11-15-2026, 16:30:05,  1,  0,  742\r\n11-15-2026, 16:30:05,  1,  60000, -32002\r\n");
}

TEST_F(TerminalTest, LogSaysWhyItCannot) {
    testing::write_file(dir.file("empty.PV5"), "");
    testing::write_file(dir.file("long.PV5"), "[LOGGING DATA DEVICE AND REGISTER SET]\n"
                                              "LOGGING INTERVAL=40000\n");
    testing::write_file(dir.file("set.PV5"), log_set("LOGGING INTERVAL=1\r\n"));
    const std::string nowhere = dir.file("missing/log.txt");
    const std::vector<std::pair<Arguments, std::string>> cases{
        {{"log", dir.file("none.PV5")}, "pelvan7: no set file \"" + dir.file("none.PV5") + "\"\n"},
        {{"log", dir.file("empty.PV5")},
         "pelvan7: no row to poll in \"" + dir.file("empty.PV5") + "\"\n"},
        {{"log", dir.file("long.PV5")}, "pelvan7: OVERFLOW ERROR\n"},
        {{"log", dir.file("set.PV5"), "--passes", "60", "--file", nowhere},
         "pelvan7: WARNING: The data could not be written to the specified file.\n"},
    };
    for (const auto& [arguments, text] : cases) {
        EXPECT_EQ(run(arguments), 1);
        EXPECT_EQ(err.str(), text);
    }
}

} // namespace
} // namespace pelvan
