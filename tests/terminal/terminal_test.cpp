#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "command_test.h"
#include "config/ini.h"
#include "support/modbus_slave.h"
#include "terminal/shown_stream.h"
#include "terminal/terminal_dialogs.h"

namespace pelvan {
namespace {

using TerminalTest = CommandTest;

TEST_F(TerminalTest, SendPrintsRequestAndReply) {
    expect("send --register 0 --values 1 --format smart", 0, "0 1\n742\n");
    expect("send --format hex", 0, "01 03 0000 0001 84 0A \n01 03 02 02E6 38 AE \n");
    expect("send --function 6 --register 300 --values -15", 0,
           "1 6 300 -15 201 139 \n1 6 300 -15 201 139 \n");
    expect("send --function 16 --register 500 --values 7,8 --format smart", 0, "500 7 8\n500 2\n");
    expect("send --register 65000 --format smart", 1, "65000 1\nException Error: 131 2\n",
           "pelvan7: The controller refused the command: no such register (exception 2).\n");
    expect("send --address 0 --function 6 --values 1 --format smart", 0,
           "0 1\nBroadcast: no controller answers.\n");
    // The protocol that the user chose on the console stays the chosen one.
    EXPECT_NE(testing::read_file(dir.file("pelvan7.ini")).find("DEFAULT PROTOCOL=3"),
              std::string::npos);
}

TEST_F(TerminalTest, FailuresAreOneLineAndAnExitCode) {
    expect_failures(exit_code::kFailed,
                    "send --address 9->No response from the controller at address 9.");
    expect_failures(
        exit_code::kBadOption,
        "send --address 248->Bad ADDRESS entered.|send --function 7->Bad COMMAND TYPE selected.|"
        "send --values 40000 --function 6->Bad DATA VALUE entered.|"
        "log a.PV5 --passes 0->--passes: give a whole number from 1|"
        "send --repeat -1->--repeat: give a whole number from 0|"
        "listen --seconds -1->--seconds: give a number from 0|"
        "send --format octal->--format: \"octal\" is no choice, choose decimal, hex or "
        "smart|simulate --speed 3601->no simulated device is called "
        "\"simulated:742,address=1,speed=3601\"|simulate --model 999->no simulated device "
        "is called \"simulated:999,address=1\"|send --protocol 1->|"
        "send --function three->|send --nonsense->|dance->|"
        "--directory /no/such/place ports->|send --repeat 1 --interval nan->--interval: \"nan\" is "
        "no number|profile watch --interval nan->|listen --seconds nan->|"
        "profile start 1 --steepest nan->");
}

TEST_F(TerminalTest, ACommandThatNoPortWasOpenForIsToldAsNotSent) {
    configure(dir.file("unplugged"));
    EXPECT_EQ(run("send"), exit_code::kFailed);
    EXPECT_TRUE(err.str().ends_with("pelvan7: Not sent: the port is not open.\n")) << err.str();
}

TEST_F(TerminalTest, SaysOnceWhyAPortOverTheNetworkDoesNotOpen) {
    configure("tcp://127.0.0.1:1"); // the library is not beside the tests
    EXPECT_EQ(run("send --register 0 --repeat 2 --interval 0.1"), exit_code::kFailed);
    const std::string sentence = "pelvan7: tcp://127.0.0.1:1: ports over the network need the "
                                 "library libgensio (Debian: libgensio4)";
    EXPECT_TRUE(told(sentence)) << err.str();
    EXPECT_EQ(err.str().find(sentence), err.str().rfind(sentence));
    configure("rfc2217://furnace:0");
    EXPECT_EQ(run("send --register 0"), exit_code::kFailed);
    EXPECT_TRUE(told("rfc2217://furnace:0: names no port from 1 to 65535")) << err.str();
}

TEST_F(TerminalTest, AMessageWithoutEndEndsTheCommand) {
    testing::write_file(dir.file("pelvan7.ini"), "[COMMS CONTROLS]\r\nDEVICE 0 COMM PORT=17\r\n");
    expect("send", exit_code::kFailed, "",
           "pelvan7: Port number is not valid in 'sub init_comms*'\n"
           "pelvan7: stopped: Port number is not valid in 'sub init_comms*'\n");
    TerminalDialogs in_turn(err);
    const auto show_both = [&in_turn] {
        for (const char* text : {"first", "second"})
            in_turn.message_box(text, "", MessageButtons::Ok, MessageIcon::None);
    };
    EXPECT_THROW(for (int i = 0; i < 1000; ++i) show_both(), CommandAborted);
    TerminalDialogs with_retries(err);
    with_retries.answer_retries(9);
    const auto lost = [&with_retries] { // the device: a write is tried five times then
        for (int i = 0; i < 60; ++i)
            with_retries.message_box("no port", "", MessageButtons::Ok, MessageIcon::None);
        return with_retries.message_box("Comm Error!", "", MessageButtons::RetryCancel,
                                        MessageIcon::None);
    };
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(lost(), MessageAnswer::Retry);
    EXPECT_EQ(lost(), MessageAnswer::Cancel);
}

TEST_F(TerminalTest, WithoutAnyChannelItSaysWhatToType) {
    testing::write_file(dir.file("pelvan7.ini"), "");
    EXPECT_EQ(run("send --register 0"), exit_code::kFailed);
    EXPECT_TRUE(told("pelvan7: no port is set up: pelvan7 ports set modbus --device DEVICE"))
        << err.str();
}

TEST_F(TerminalTest, AFifthChannelIsToldAndTheOthersWork) {
    testing::configure_devices(dir, std::vector<std::string>(5, "simulated:742"));
    expect("send --format smart", 0, "0 1\n742\n", "pelvan7: SUBSCRIPT OUT OF RANGE ERROR\n");
}

TEST_F(TerminalTest, NothingThatWasReadReachesTheTerminalAsAControl) {
    expect("log j\xC3\xB6rg\x1B]0;\xE9\x07\xC2\x9B.PV5", 1, "",
           "pelvan7: no set file \"j\xC3\xB6rg\\x1B]0;\\xE9\\x07\\xC2\\x9B.PV5\"\n");
}

TEST(ShownText, KeepsLinesAndUtf8AndShowsTheRestAsBytes) {
    const std::string utf8 = "a ~\n\xC2\xA0\xC3\xB6\xE2\x82\xAC\xF0\x9F\x98\x80";
    EXPECT_EQ(shown_text(utf8), utf8);
    EXPECT_EQ(shown_text("\r\t\x1B\x7F"), "\\x0D\\x09\\x1B\\x7F");
    EXPECT_EQ(shown_text("\xC2\x9B\xE9"), "\\xC2\\x9B\\xE9");
    // Overlong forms of ESC.
    EXPECT_EQ(shown_text("\xC0\x9B\xE0\x82\x9B"), "\\xC0\\x9B\\xE0\\x82\\x9B");
    EXPECT_EQ(shown_text("\xED\xA0\x80\xF4\x90\x80\x80"), "\\xED\\xA0\\x80\\xF4\\x90\\x80\\x80");
}

TEST_F(TerminalTest, PortsTellsWhatNumbersStandForAndOpensNothing) {
    EXPECT_EQ(run("ports"), exit_code::kDone);
    EXPECT_TRUE(printed("PORT 2 = simulated:742: simulated, may be opened, used by Modbus\n"));
    EXPECT_TRUE(printed("DEVICE 1: PORT 2, 9600,N,8,1, replies end with a pause (QUIET)\n"));
    configure(dir.file("unplugged"));
    ini_write_string(ini_key::kCommsSection, ini_key::exchange(1), "COMPLETE",
                     dir.file("pelvan7.ini"));
    EXPECT_EQ(run("ports"), exit_code::kDone);
    EXPECT_TRUE(printed("DEVICE 1: PORT 2, 9600,N,8,1, replies end with their frame (COMPLETE)\n"));
    EXPECT_TRUE(printed("PORT 2 = " + dir.file("unplugged") + ": "));
}

TEST_F(TerminalTest, LineSettingsThatAreNotUsedAreNamed) {
    const std::string ini = dir.file("pelvan7.ini");
    ini_write_string(ini_key::kCommsSection, ini_key::port_setting(0), "19200;E;8;1", ini);
    ini_write_string(ini_key::kCommsSection, ini_key::port_setting(1), "115200,N,8,1", ini);
    const std::string used = "not 9 to 11 characters, so 9600,N,8,1 is used";
    EXPECT_EQ(run("ports"), exit_code::kDone);
    EXPECT_TRUE(printed("19200;E;8;1 (not understood, so the port will not open), "));
    EXPECT_TRUE(printed("115200,N,8,1 (" + used + "), "));
    EXPECT_EQ(run("send"), exit_code::kDone);
    EXPECT_NE(err.str().find("DEVICE 1, \"115200,N,8,1\": " + used + "\n"), std::string::npos);
}

TEST_F(TerminalTest, APortThatIsNotPermittedNamesWhatHelpsOnce) {
    const testing::PtyPair line;
    const std::string path = line.path();
    ASSERT_EQ(::chmod(dir.path().c_str(), 0755), 0);
    if (::geteuid() != 0 || ::chown(path.c_str(), 0, 20) != 0 || ::chmod(path.c_str(), 0660) != 0)
        GTEST_SKIP() << "only root may give a file to group dialout";
    configure(path);
    open_device = [](const std::string& device,
                     const LineSettings&) -> std::unique_ptr<SerialLine> {
        throw RunTimeError(error_number::kHardwareNotAvailable, device);
    };
    ASSERT_EQ(::seteuid(65534), 0);
    const int code = run("scan --protocol modbus --addresses 1");
    const std::string scan = err.str();
    run("send");
    ASSERT_EQ(::seteuid(0), 0);
    EXPECT_EQ(code, exit_code::kFailed);
    const std::string help =
        path + ": no permission: join group dialout (sudo usermod -aG dialout ";
    for (const std::string& said : {scan, err.str()}) {
        EXPECT_NE(said.find(help), std::string::npos) << said;
        EXPECT_EQ(said.find(help), said.rfind(help)) << said;
    }
}

TEST_F(TerminalTest, PortsAreSetUpFromNothing) {
    const std::string ini = dir.file("pelvan7.ini");
    std::filesystem::remove(ini);
    const std::string line = "PORT 5 = simulated:742: simulated, may be opened, used by Modbus";
    expect("ports set modbus --device simulated:742 --port 5", 0,
           "Full: port 2, because Modbus can be used only when it has a port too\n"
           "Modbus: port 5, 9600,N,8,1\n" +
               line + "\n");
    expect("send --format smart", 0, "0 1\n742\n");
    expect("ports set xon --port 5 --settings 1200,E,7,2 --lines toggle", 0,
           "Xon: port 5, 1200,E,7,2\n" + line +
               " and Xon\nModbus uses this port too. Modbus has 9600,N,8,1, so each command closes "
               "the port of the other protocol.\n");
    EXPECT_NE(testing::read_file(ini).find("DEVICE 2 RTS Mode=5"), std::string::npos);
    expect("ports set full --device simulated:742,echo=1 --echo yes --replies complete", 0,
           "Full: port 2, 9600,N,8,1, replies end with their frame (COMPLETE), the line echoes\n"
           "PORT 2 = simulated:742,echo=1: simulated, may be opened, used by Full\n");
    expect("send --protocol full '? MODEL'", 0, "? MODEL\n742\n");
    const std::string before = testing::read_file(ini);
    expect_failures(
        exit_code::kFailed,
        "ports assign 5 /no/port->/no/port is not there. --yes assigns it all the same.|"
        "ports assign 5 /dev/null->/dev/null is not a serial device.|"
        "ports set xon --yes --device tty->\"tty\" is no path: type all of it, as in "
        "/dev/ttyUSB0.|"
        "ports set xon --settings 9601,N,8,1->The Baud Rate specified is not valid, data "
        "will not be saved");
    expect_failures(exit_code::kBadOption, "ports assign 17 none->|ports set xon --settings 9600->|"
                                           "ports assign 5->|ports set->|ports dance->");
    EXPECT_EQ(testing::read_file(ini), before);
    expect("ports assign 5 /no/port --yes", 0,
           "PORT 5 = /no/port: not there, used by Modbus and Xon\n");
    expect("ports assign 5 rfc2217://furnace:2217", 0,
           "PORT 5 = rfc2217://furnace:2217: over the network, asked when it is opened, used by "
           "Modbus and Xon\n");
    expect("ports assign 5 none", 0, "PORT 5 = no device, used by Modbus and Xon\n");
}

TEST_F(TerminalTest, SaysWhichDirectoryItWorksInAndFindsItOnceItIsNeeded) {
    int asked = 0;
    find_directory = [&] {
        ++asked;
        return ApplicationDirectory{dir.path(), "the folder of your data", {"Made."}};
    };
    EXPECT_EQ(run("ports"), exit_code::kDone);
    EXPECT_TRUE(
        printed("Files of the program: " + dir.path() + " (the folder of your data)\n  Made.\n"));
    EXPECT_EQ(run(""), -1);
    EXPECT_EQ(asked, 2);
    EXPECT_EQ(run("--help"), exit_code::kDone);
    EXPECT_EQ(run("--directory " + dir.path() + " ports"), exit_code::kDone);
    EXPECT_EQ(asked, 2);
    find_directory = []() -> ApplicationDirectory { throw RunTimeError(76, "/none"); };
    for (const char* line : {"ports", ""}) {
        EXPECT_EQ(run(line), exit_code::kFailed);
        EXPECT_EQ(err.str(), "pelvan7: PELVAN_DIRECTORY names /none, which is no directory\n");
    }
}

TEST_F(TerminalTest, WithoutACommandTheWindowsAreWanted) {
    EXPECT_EQ(run(""), -1);
    EXPECT_EQ(run("--help"), exit_code::kDone);
    EXPECT_TRUE(printed("send"));
}

TEST_F(TerminalTest, ReadsASlaveThatIsNotOursOverAPseudoTerminal) {
    testing::PtyWire wire;
    testing::ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, wire.other_end());
    configure(wire.one_end());
    const auto system_tick = make_system_tick();
    tick_source = system_tick.get();
    expect("send --register 98 --values 4 --format smart", 0, "98 4\n980 990 -1000 -1010\n");
    EXPECT_EQ(run("send --function 16 --register 20 --values -1,5"), 0) << err.str();
    expect("send --register 20 --long --format smart", 0, "20 2\n-65531\n");
}

TEST_F(TerminalTest, LogPrintsEachPassAndWritesWhatItGathered) {
    testing::write_file(dir.file("set.PV5"),
                        kLogSet + std::string("2DEVICEADDRESS=1\r\n2DEVICECOMMAND=3\r\n"
                                              "2DEVICEREGISTER=60000\r\n")); // it lacks that
    const std::string log = "log " + dir.file("set.PV5") + " --file " + dir.file("out.txt");
    EXPECT_EQ(run(log + " --passes 3 --single-line"), 0) << err.str();
    EXPECT_TRUE(printed("Pass 3. "));
    EXPECT_FALSE(printed("Pass 4. "));
    EXPECT_TRUE(printed("  1: address 1, register 0: 742\n"));
    EXPECT_TRUE(printed(", register 60000:-32002 (exception)\n"));
    const std::string line = "11-15-2026, 16:30:05,  1,  0,  742,  1,  60000, -32002\r\n";
    EXPECT_EQ(testing::read_file(dir.file("out.txt")), line + line + line);

    testing::write_file(dir.file("named.PV5"),
                        kLogSet + std::string("1DEVICENAME=Model\r\n1DEVICEUNIT=u\r\n"));
    EXPECT_EQ(run("log " + dir.file("named.PV5") + " --passes 1"), 0) << err.str();
    EXPECT_TRUE(printed("  1: Model (address 1, register 0): 742 u\n"));
    EXPECT_EQ(run("log " + dir.file("named.PV5") + " --passes 1 --json"), 0) << err.str();
    EXPECT_TRUE(printed(R"({"pass":1,"time":"2026-11-15 16:30:05",)"));
    EXPECT_TRUE(printed(R"("rows":[{"row":1,"name":"Model","unit":"u","address":"1","command":"3",)"
                        R"("register":"0","state":"answered","value":742,"text":"742"}]})"))
        << out.str();

    // An interrupt while waiting: what was gathered is written.
    std::filesystem::remove(dir.file("out.txt"));
    on_wait = [this] { stop = true; };
    EXPECT_EQ(run(log), 1);
    EXPECT_EQ(testing::read_file(dir.file("out.txt")),
              "11-15-2026, 16:30:05,  1,  0,  742\r\n11-15-2026, 16:30:05,  1,  60000, -32002\r\n");
}

TEST_F(TerminalTest, LogShowsNoValueOfARowThatItDidNotAskAndFailsWithoutAnyReading) {
    struct WatchedTick : testing::FakeTick {
        explicit WatchedTick(std::function<std::uint32_t()> read) : reading(std::move(read)) {}
        std::uint32_t timeGetTime() override { return reading(); }
        std::function<std::uint32_t()> reading;
    };
    double waited_at = 0;
    WatchedTick interrupter([&] { // in the first exchange of the second pass
        if (waited_at > 0 && tick.now() > waited_at + 70) stop = true;
        return tick.timeGetTime();
    });
    const std::string row_2 = "2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n2DEVICEREGISTER=1\n";
    testing::write_file(dir.file("set.PV5"), kLogSet + row_2);
    on_wait = [&] { waited_at = tick.now(); };
    tick_source = &interrupter;
    EXPECT_EQ(run("log " + dir.file("set.PV5")), 1);
    EXPECT_TRUE(printed("register 1: (not polled)\n")) << out.str();
    stop = false;
    tick_source = &tick;
    configure("simulated:742,address=9");
    expect_failures(1, "log " + dir.file("set.PV5") +
                           " --passes 1->no row gave a reading in any pass");
}

TEST_F(TerminalTest, LogFailsWhereAnAnswerMayHaveBeenAnotherRows) {
    testing::write_file(dir.file("set.PV5"),
                        kLogSet + std::string("2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n"
                                              "2DEVICEREGISTER=300\n3DEVICEADDRESS=1\n"
                                              "3DEVICECOMMAND=3\n3DEVICEREGISTER=0\n"));
    // Busy with its late answer, it does not hear what is asked meanwhile.
    configure("simulated:742,late=1,late_ms=2300,only=1");
    EXPECT_EQ(run("log " + dir.file("set.PV5") + " --passes 1"), 0) << err.str();
    EXPECT_TRUE(printed("register 300: 750\n")) << out.str();
    configure("simulated:742,queue=1,late=0.5,late_ms=2300,seed=3");
    EXPECT_EQ(run("log " + dir.file("set.PV5") + " --passes 2"), 1)
        << "though the first pass was right";
    EXPECT_TRUE(told("in 1 of 2 passes an answer may have been another row's")) << err.str();
    configure("simulated:742,late=1,late_ms=2300");
    EXPECT_EQ(run("log " + dir.file("set.PV5") + " --passes 2"), 1);
    EXPECT_TRUE(told("in 2 of 2 passes an answer may have been another row's")) << err.str();
}

TEST_F(TerminalTest, LogSaysWhyItCannot) {
    const std::string set = dir.file("set.PV5");
    const auto expect_of_set = [&](const std::string& text, const std::string& options,
                                   const std::string& message) {
        testing::write_file(set, text);
        expect_failures(1, "log " + set + options + "->" + message);
    };
    const std::string section = "[LOGGING DATA DEVICE AND REGISTER SET]\n";
    expect_failures(1, "log " + set + "->no set file \"" + set + "\"");
    expect_of_set("", "", "no row to poll in \"" + set + "\"");
    for (const auto& [value, fault] :
         {std::pair{"40000", "beyond 32767 seconds."}, {"-5", "below 0."}})
        expect_of_set(section + "LOGGING INTERVAL=" + value + "\n", "",
                      set + ": LOGGING INTERVAL \"" + value + "\" is " + fault);
    expect_of_set(kLogSet +
                      std::string("2DEVICEADDRESS=1\n2DEVICECOMMAND=3\n2DEVICEREGISTER=10O\n"),
                  " --passes 1", set + ": Row 2: the register \"10O\" is no number.");
    expect_of_set(kLogSet, " --passes 1 --file " + set,
                  set + ": The log file " + set + " is the set file itself: choose another.");
    testing::write_file(set, kLogSet);
    EXPECT_EQ(run("log " + set + " --passes 60 --file " + dir.file("missing/log.txt")), 1);
    EXPECT_EQ(err.str(), "pelvan7: the log file \"" + dir.file("missing/log.txt") +
                             "\" cannot be written now; the newest lines wait for it\n"
                             "pelvan7: WARNING: The data could not be written to the specified "
                             "file.\n");
    expect_of_set(kLogSet + std::string("2DEVICEADDRESS=1\n2DEVICECOMMAND=6\n"
                                        "2DEVICEREGISTER=300\n"),
                  " --passes 1",
                  "row 2 of \"" + set +
                      "\" writes to a controller instead of reading; --allow-writes lets it");
    EXPECT_EQ(run("log " + set + " --passes 1 --allow-writes"), 0);
    EXPECT_TRUE(printed("  2: address 1, register 300: 300\n")); // its echo
    ini_write_string(ini_key::kCommsSection, ini_key::kTimerOffset, "32768",
                     dir.file("pelvan7.ini"));
    EXPECT_EQ(run("log " + set), 1);
    EXPECT_TRUE(told("pelvan7.ini: TIMER OFFSET=32768 is not from 1 to 32767 milliseconds: it is "
                     "read as -32768\n"))
        << err.str();
}

} // namespace
} // namespace pelvan
