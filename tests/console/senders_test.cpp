// What is made of lines that echo, cut replies in pieces or answer late, and of replies that are no
// answer, in all protocols.
#include "console_rig.h"
#include "support/faulty_slave.h"

namespace pelvan::testing {

constexpr std::size_t kRead = 2; // among the command types
constexpr std::size_t kWriteRegister = 5;

/// Simulated controllers behind all channels.
class SimulatedLineTest : public ::testing::TestWithParam<const char*>, public SendersRig {
  protected:
    void start(const std::string& options, const std::string& echo = "NO") {
        configure_devices(dir, std::vector<std::string>(4, "simulated:742" + options));
        set_channels(ini_key::echo, echo);
        exchange_by(GetParam());
    }
    /// Sends reads and writes in each protocol; what was said of those that counted, and of those
    /// that did not.
    void send() {
        take(send_modbus(kRead, "0", "3"));
        take(send_modbus(kWriteRegister, "300", "3"));
        for (const char* command : {"? C1", "= SP1 50"})
            for (const auto protocol : {TextProtocol::Full, TextProtocol::Xon})
                take(senders.text.send(protocol, {"1", command}));
        for (const auto check : {TelluraCheck::Bcc, TelluraCheck::Crc})
            take(senders.tellura.send({"1", "0000", "2", "", false, check}));
        take(senders.tellura.send({"1", "012c", "2", "0001", true, TelluraCheck::Bcc}));
    }
    void take(const SendOutcome& outcome) {
        (outcome.accepted ? counted : refused).push_back(outcome.remark);
        let_doubts_pass();
    }

    static constexpr std::size_t kSent = 9; // by `send`
    SimulatedPorts simulated{*this};
    std::vector<std::string> counted;
    std::vector<std::string> refused;
};

INSTANTIATE_TEST_SUITE_P(, SimulatedLineTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(SimulatedLineTest, AnswersAllProtocolsAndADamagedEchoNeverCounts) {
    start("");
    send();
    EXPECT_EQ(counted.size(), kSent);
    start(",echo=1", "YES");
    send();
    EXPECT_EQ(counted, std::vector<std::string>(2 * kSent));
    // A line without an echo: each reply counts but that of the write which is like its request.
    counted.clear();
    start("", "YES");
    send();
    EXPECT_EQ(counted.size(), kSent - 1);
    for (const std::string& remark : counted)
        EXPECT_TRUE(remark.starts_with("The reply came without an echo")) << remark;
    const ModbusEntry broadcast{kWriteRegister, "0", "300", "3", false};
    start(",echo=1", "YES");
    EXPECT_TRUE(senders.modbus.send(broadcast, {}).accepted);
    counted = refused = {};
    start(",echo=1,echo_flip=1", "YES");
    take(senders.modbus.send(broadcast, {}));
    send();
    EXPECT_TRUE(counted.empty());
    EXPECT_EQ(std::ranges::count(refused, ""), 0);
    const SendOutcome differing = send_modbus(kRead, "0", "3");
    EXPECT_EQ(differing.status, differing.remark) << "something came";
    let_doubts_pass();
    start(",echo=1,lost=1,lost_ack=1", "YES");
    EXPECT_EQ(send_modbus(kRead, "0", "3").remark, "The echo of the command came, but no answer.");
    configure_devices(dir, std::vector<std::string>(4, dir.file("unplugged")));
    set_channels(ini_key::echo, "YES");
    EXPECT_EQ(send_modbus(kRead, "0", "3").status, "Not sent: the port is not open.")
        << "so no echo is missed";
}

TEST_P(SimulatedLineTest, AWriteThatIsAnsweredWithoutAnEchoIsNotCalledUnanswered) {
    const auto write = [this] {
        const SendOutcome sent = send_modbus(kWriteRegister, "300", "3");
        EXPECT_FALSE(sent.accepted);
        let_doubts_pass();
        return sent.remark.substr(0, sent.remark.find_first_of(",:"));
    };
    start("", "YES");
    EXPECT_EQ(write(), "The command itself came back"); // nothing is known of the line
    take(send_modbus(kRead, "0", "3"));
    EXPECT_EQ(write(), "This line does not seem to echo");
    start(",echo=1,lost=1,lost_ack=1", "YES");
    EXPECT_EQ(write(), "The command itself came back");
}

TEST_P(SimulatedLineTest, ACommandThatIsStoppedArrivesWholeOnlyWithTheProgramsHandshake) {
    for (const auto& [way, answered] : {std::pair("DRIVER", false), {"PROGRAM", true}}) {
        start(",xoff_after=3");
        set_channels(ini_key::rts_mode, "4");
        set_channels(ini_key::xon_xoff, way);
        const SendOutcome sent = senders.text.send(TextProtocol::Xon, {"1", "= SP1 50"});
        EXPECT_EQ(sent.accepted, answered) << way;
        let_doubts_pass();
    }
}

TEST_P(SimulatedLineTest, SeveralPastedLinesAreNoCommand) {
    start("");
    for (const auto protocol : {TextProtocol::Full, TextProtocol::Xon}) {
        const SendOutcome lines = senders.text.send(protocol, {"1", "? C1\r\n= SP1 50"});
        EXPECT_EQ(lines.kind, SendOutcome::Kind::Refused);
        EXPECT_FALSE(lines.refusal.empty() || lines.row);
        EXPECT_TRUE(senders.text.send(protocol, {"1", "? SP1"}).accepted) << "nothing was sent";
    }
    EXPECT_EQ(senders.text.send(TextProtocol::Xon, {"1", "? SP1"}).row->response, "75.0");
}

/// There the settle time is 0: the pause cuts replies, their frames do not.
TEST_P(SimulatedLineTest, At38400RepliesComeWholeInFramesOnlyAndFaultyOnesNever) {
    const auto start_quick = [this](const std::string& options) {
        start(options);
        set_channels(ini_key::port_setting, "38400,N,8,1");
        counted.clear();
    };
    const auto read_often = [this] {
        for (int i = 0; i < 20; ++i)
            take(send_modbus(kRead, "0", "3"));
        return counted.size();
    };
    start_quick("");
    if (GetParam() == std::string("QUIET")) {
        EXPECT_LT(read_often(), 10U);
        return;
    }
    for (int i = 0; i < 20; ++i)
        send();
    EXPECT_EQ(counted.size(), 20 * kSent);
    for (const char* fault : {"flip=1", "gap=1", "noise=1", "other=1", "lost=1", "crc=1"}) {
        start_quick("," + std::string(fault));
        EXPECT_EQ(read_often(), 0U) << fault;
    }
    start_quick(",late=1");
    EXPECT_EQ(read_often(), 20U) << "within the time-out";
}

/// A line on which bytes come and come, two a millisecond, in lumps, that now and then end a text.
class EndlessLine : public SerialLine {
  public:
    EndlessLine(FakeTick& tick, std::size_t lump) : tick_(tick), lump_(lump) {}
    bool read_into(std::string& buffer) override {
        const auto count = static_cast<std::size_t>(2 * (tick_.now() - read_ms_));
        if (count < lump_) return true;
        for (std::size_t i = 0; i < count; ++i)
            buffer += "\x01\xC8\r"[next_++ % 3];
        read_ms_ = tick_.now();
        return true;
    }
    void wait_for_input(double timeout_ms) override {
        tick_.sleep_for_ms(std::min(timeout_ms, 1.0));
    }
    void discard_input() override { read_ms_ = tick_.now(); }
    void write(const std::string&) override {}
    void set_rts(bool) override {}
    void set_dtr(bool) override {}
    [[nodiscard]] int descriptor() const override { return -1; }

  private:
    FakeTick& tick_;
    std::size_t lump_;
    double read_ms_ = tick_.now();
    std::size_t next_ = 0;
};

TEST_P(SimulatedLineTest, AFlowWithoutEndIsNoAnswer) {
    for (const std::size_t lump : {1U, 20U}) { // 20: with pauses that end a reply of Xon
        simulated.open_line = [&](const std::string&, const LineSettings&) {
            return std::make_unique<EndlessLine>(tick, lump);
        };
        configure_devices(dir, std::vector<std::string>(4, "/dev/flow"));
        exchange_by(GetParam());
        for (const SendOutcome& sent :
             {senders.text.send(TextProtocol::Xon, {"1", "? C1"}), send_modbus(kRead, "0", "3")}) {
            EXPECT_FALSE(sent.accepted) << lump;
            EXPECT_EQ(sent.objection, kCutReply);
            EXPECT_EQ(sent.status, kCutReply);
        }
    }
}

/// Scripted controllers, that of Modbus answering one request after another.
class LateCommandsTest : public ::testing::TestWithParam<const char*>, public SendersRig {
  protected:
    LateCommandsTest() {
        build({"4;9600,N,8,1;1", "1;9600,N,8,1;1", "2;9600,N,8,1;1", "3;9600,N,8,1;1"});
        exchange_by(GetParam());
    }
    /// The response, and why it does not count.
    static std::string told(const SendOutcome& outcome) {
        return outcome.row->response + (outcome.accepted ? "" : " - " + outcome.objection);
    }
};

INSTANTIATE_TEST_SUITE_P(, LateCommandsTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(LateCommandsTest, ALateAnswerIsNotThatOfTheNextCommands) {
    for (const double late_ms : {2100.0, 2400.0, 3000.0, 3900.0}) {
        rebuild();
        FaultySlave slave(tick);
        slave.answer_on(*ports[1]);
        slave.fault_once[1].late_ms = late_ms;
        EXPECT_EQ(send_modbus(kRead, "301", "1").kind, SendOutcome::Kind::NoReply);
        for (const char* start : {"310", "311", "312"})
            EXPECT_EQ(told(send_modbus(kRead, start, "1")), start) << late_ms;
        let_doubts_pass();
    }
}

TEST_P(LateCommandsTest, AWriteWithALateAnswerBeforeItIsShownAndNotRepeated) {
    FaultySlave slave(tick);
    slave.answer_on(*ports[1]);
    slave.fault_once[1].late_ms = 2400;
    EXPECT_EQ(send_modbus(kWriteRegister, "300", "5").kind, SendOutcome::Kind::NoReply);
    const SendOutcome outcome = send_modbus(kWriteRegister, "300", "5");
    EXPECT_EQ(told(outcome), std::string("300 5 - ") + kUnclearReply);
    EXPECT_EQ(outcome.status, kUnclearReply);
    EXPECT_EQ(slave.requests, 2);
}

TEST_P(LateCommandsTest, AReadInXonIsAskedAgain) {
    ports[2]->discards_future = false;
    ports[2]->replies = {{}, {{50, "12.5\r"}, {200, "100.0\r"}}, {{80, "100.0\r"}}};
    EXPECT_EQ(senders.text.send(TextProtocol::Xon, {"", "? C1"}).kind, SendOutcome::Kind::NoReply);
    EXPECT_EQ(told(senders.text.send(TextProtocol::Xon, {"", "? SP1"})), "100.0");
    EXPECT_EQ(ports[2]->outputs.size(), 3U);
}

TEST_P(LateCommandsTest, AFullCommandThatIsAcknowledgedTooLateIsNotAccepted) {
    for (const char* step : {"1^", "", "^", "{0}", "", ""})
        ports[0]->replies.push_back({{1, wire(step)}});
    EXPECT_EQ(told(senders.text.send(TextProtocol::Full, {"1", "= SP1 5"})),
              "No comms error - The command was not acknowledged in time. It may have been carried "
              "out.");
}

TEST_P(LateCommandsTest, AFullResponseThatTwiceLacksItsEndIsNoReply) {
    for (const char* step : {"1^", "^", "{7", "}", "{7"})
        ports[0]->replies.push_back({{1, wire(step)}});
    const SendOutcome outcome = senders.text.send(TextProtocol::Full, {"1", "? C1"});
    EXPECT_EQ(outcome.row->response, "NOT RECEIVED");
    EXPECT_EQ(outcome.kind, SendOutcome::Kind::NoReply);
}

TEST_P(LateCommandsTest, AFullResponseWithoutItsBeginningIsShownAndDoesNotCount) {
    for (const char* step : {"1^", "^", "25.0}"})
        ports[0]->replies.push_back({{1, wire(step)}});
    EXPECT_EQ(
        told(senders.text.send(TextProtocol::Full, {"1", "? C1"})),
        "5.0 - The response is damaged: characters of it may be missing, or not belong to it.");
}

TEST_P(LateCommandsTest, RepliesThatAreNoAnswerAreShownWithTheReason) {
    const std::tuple<std::size_t, std::string, std::string> cases[] = {
        {kRead, frame("02 03 02 00 07"), "7 - The reply came from another address."},
        {kRead, frame("01 04 02 00 07"), "7 - The reply is to another function."},
        {kRead, frame("01 03 04 00 07 00 08"),
         "7 8 - The reply holds another number of values than was asked for."},
        {kRead, frame("01 83 02"),
         "Exception Error: 131 2 - "
         "The controller refused the command: no such register (exception 2)."},
        {kRead, bytes("01 03 02 00"),
         "Incomplete reply, bytes in hex: 01 03 02 00 - The reply is incomplete."},
        {kRead, bytes("01 03 02 00 07 00 00"),
         "RESPONSE FROM CONTROLLER HAS CRC ERROR! - "
         "The reply came damaged: its CRC does not fit."},
        {kWriteRegister, frame("01 06 01 2C 00 09"),
         "300 9 - The reply does not repeat what was sent."},
        {kWriteRegister, frame("01 06 01 2D 00 01"),
         "301 1 - The reply does not repeat what was sent."},
    };
    for (const auto& [type, reply, expected] : cases) {
        ports[1]->replies = {{{5, reply}}};
        EXPECT_EQ(told(send_modbus(type, "300", "1")), expected);
        let_doubts_pass();
    }
}

} // namespace pelvan::testing
