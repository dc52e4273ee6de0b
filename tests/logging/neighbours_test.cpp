// Rows that are read together, against the same rows read singly; and single rows of a slave that
// answers late or twice.
#include "logging/logging_rig.h"
#include "support/faulty_slave.h"
#include "text/numbers.h"

namespace pelvan::testing {
namespace {

Fault refused(char code) {
    return {"exception " + std::to_string(code), [code](const std::string& reply) {
                return sealed({reply[0], static_cast<char>(reply[1] | '\x80'), code});
            }};
}

const Fault kSilent{"silent", [](const auto&) { return std::string(); }};
const std::vector<Fault> kFaults{
    {},
    kSilent,
    {.name = "late", .late_ms = 2100},
    {.name = "doubled", .again_ms = 10},
    refused(2),
    refused(3),
    refused(6),
    {"cut", [](const auto& reply) { return reply.substr(0, reply.size() / 2); }},
    {"damaged",
     [](std::string reply) {
         reply.back() = static_cast<char>(reply.back() ^ 1);
         return reply;
     }},
    {"from another address",
     [](const auto& reply) { return sealed("\2" + reply.substr(1, reply.size() - 3)); }},
    {"a register too few", [](const auto& reply) {
         return sealed(reply.substr(0, 2) + static_cast<char>(reply[2] - 2) +
                       reply.substr(5, reply.size() - 7));
     }}};

class NeighboursTest : public LoggingTest, public ::testing::WithParamInterface<const char*> {
  protected:
    NeighboursTest() {
        exchange_by(GetParam());
        tick.step_ms = 2;
    }
    [[nodiscard]] bool complete() const { return table.exchange_way(1).complete; }

    /// Rows of one command from a register on, every third with a decimal place.
    void add(const std::string& begin, int first, int last) {
        for (int number = first; number <= last; ++number)
            rows.push_back(begin + std::to_string(number) + (number % 3 == 0 ? ",1" : ",0"));
    }
    /// The log file and the grid after so many passes, and what was asked in the last one. The
    /// session begins anew.
    std::string seen(bool together, int passes = 2) {
        tick.advance(LateAnswers::kDoubtMs);
        rebuild();
        slave = FaultySlave(tick);
        slave.turnaround_ms = 20;
        slave.answer_on(*ports[1]);
        prepare();
        modbus_state.neighbours = {};
        write_file(log_file, "");
        load(rows, "LOG TO FILE=TRUE\r\n");
        logger.set_together(together);
        logger.allow_writes();
        for (int i = 0; i < passes; ++i) {
            slave.asked.clear();
            logger.RunLoggingPass();
            tick.advance(LateAnswers::kDoubtMs);
        }
        std::string text = log_text();
        for (int row = 1; row <= kLogRows; ++row)
            text += std::to_string(static_cast<int>(reading(row).state)) + reading(row).value + ";";
        return text;
    }
    /// What is asked in a pass when neighbours are read together.
    std::string asked(int passes = 2) {
        static_cast<void>(seen(true, passes));
        return slave.asked;
    }

    /// The registers of rows without a reading. A reading that is not its register's fails.
    std::string missing() {
        std::string out;
        for (int row = 1; row <= std::ssize(rows); ++row) {
            const std::string number = split(rows[static_cast<std::size_t>(row - 1)], ',')[2];
            const double scale = std::stoi(number) % 3 == 0 ? 10 : 1;
            const LogReading& there = reading(row);
            if (there.state != RowState::Answered)
                out += number + " ";
            else
                EXPECT_EQ(there.value, signed_number(std::stoi(number) / scale)) << number;
        }
        return out;
    }

    std::vector<std::string> rows;
    FaultySlave slave{tick};
    std::function<void()> prepare = [] {};
};

INSTANTIATE_TEST_SUITE_P(, NeighboursTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(NeighboursTest, EveryFaultLeavesFileAndGridAsTheyAreWithSingleReads) {
    add("1,3,", 100, 109);
    add("1,4,", 110, 111);
    add("1,3,", 130, 139);
    for (const Fault& fault : kFaults)
        for (const int at : {100, 105, 109, 111, 130}) {
            if (fault.again_ms > 0 && complete()) continue; // see below
            prepare = [&] { slave.faults[at] = fault; };
            EXPECT_EQ(seen(true), seen(false)) << fault.name << " at " << at;
        }
}

/// Which rows a very late answer spoils, or one that comes twice behind its frame, depends on what
/// it meets. None takes it for its own.
TEST_P(NeighboursTest, LateAndDoubledAnswersSpoilFewRowsAndGiveNoneAWrongValue) {
    add("1,3,", 100, 109);
    add("1,3,", 130, 139);
    const auto spoiled = [&](bool together) {
        static_cast<void>(seen(together));
        return std::ranges::count(missing(), ' ');
    };
    for (const int at : {100, 105, 109, 130, 139})
        for (const double late_ms : {0.0, 2300.0, 3100.0, 4200.0, 4700.0}) {
            SCOPED_TRACE(std::to_string(at) + ", late by " + std::to_string(late_ms));
            const double again_ms = late_ms > 0 ? 0 : 10;
            prepare = [&] { slave.faults[at] = {.late_ms = late_ms, .again_ms = again_ms}; };
            EXPECT_LE(spoiled(true), spoiled(false) + 2);
        }
}

TEST_P(NeighboursTest, AReplyThatComesTwiceGivesNoRowAnothersValue) {
    for (const int first : {100, 200, 300})
        add("1,3,", first, first + 9);
    for (const double again_ms : {1.0, 30.0, 80.0, 200.0}) {
        SCOPED_TRACE(again_ms);
        prepare = [&] { slave.faults[200] = {.again_ms = again_ms}; };
        static_cast<void>(seen(true, 1));
        static_cast<void>(missing());
    }
}

/// A controller that refuses, or does not answer, what is too long for it.
TEST_P(NeighboursTest, WhatIsTooLongForAControllerIsReadInPieces) {
    add("1,3,", 100, 199);
    for (const auto& [most, requests] : {std::pair{1, 100}, {5, 50}, {16, 11}, {99, 11}})
        for (const Fault& too_many : {refused(3), refused(2), kSilent}) {
            SCOPED_TRACE(too_many.name + " beyond " + std::to_string(most));
            prepare = [&, most = most] {
                slave.most = most;
                slave.too_many = too_many;
            };
            const std::string pass = asked(9);
            EXPECT_EQ(missing(), "");
            EXPECT_LE(std::ranges::count(pass, ' '), requests) << pass;
        }
}

TEST_P(NeighboursTest, OnlyNeighboursAreAskedForTogetherAndRefusedOnesNotAgain) {
    add("1,3,", 100, 105);
    EXPECT_EQ(asked(), "100x6 ");
    add("1,3,", 200, 205); // as many: the reply must not pass for that to the one before
    EXPECT_EQ(asked(), "100x6 200x5 205x1 ");
    prepare = [&] { slave.faults[103] = refused(2); };
    EXPECT_EQ(asked(1), "100x6 100x1 101x1 102x1 103x1 104x1 105x1 200x6 ");
    EXPECT_EQ(asked(), "100x3 103x1 104x2 200x6 ");
    prepare = [] {};
    rows = {"1,3,300,0",   "1,3,301,0",   "1,6,302,0", "1,3,302,0", "1,3,303,0",
            "1,32,304,0",  "1,3,305,0",   "1,1,306,0", "2,3,307,0", "1,3,308,0",
            "1,3,65535,0", "1,3,65536,0", "0,3,1,0",   "0,3,2,0",   "1,4,9,0",
            "1,4,10,0",    "1,3,7,0",     "1,3,6,0",   "1,3,6,0",   "1,3,7,0"};
    EXPECT_EQ(asked(), "300x2 302x1 302x2 304x2 305x1 306x1 307x1 308x1 308x1 308x1 65535x1 1x1 "
                       "2x1 9x2 7x1 6x1 6x2 ")
        << "308 once by the sibling function, because nothing answered before, and once more";
    EXPECT_EQ(seen(true), seen(false));
}

TEST_P(NeighboursTest, AControllerThatIsOffCostsOneRequestMore) {
    add("1,3,", 100, 103);
    prepare = [&] {
        for (int number = 100; number < 104; ++number)
            slave.faults[number] = kSilent;
    };
    EXPECT_EQ(asked(1), "100x4 100x1 101x1 102x1 103x1 ");
    EXPECT_EQ(asked(2), "100x1 101x1 102x1 103x1 ");
    slave.faults.clear();
    slave.asked.clear();
    logger.RunLoggingPass();
    EXPECT_EQ(slave.asked, "100x1 100x1 100x1 101x3 ") << "it is back, and gives its own answers";
    EXPECT_EQ(missing(), "");
}

/// The same rows singly, on a slave that answers one request after another.
class LateRowsTest : public NeighboursTest {
  protected:
    LateRowsTest() {
        tick.step_ms = 0.05;
        add("1,3,", 300, 307);
        load(rows);
        slave.answer_on(*ports[1]);
    }
    /// The registers without a reading in the next pass.
    std::string pass() {
        logger.RunLoggingPass();
        return missing();
    }
};

INSTANTIATE_TEST_SUITE_P(, LateRowsTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(LateRowsTest, OneLateAnswerShiftsNoRow) {
    for (const double late_ms : {2100.0, 2300.0, 2500.0, 3000.0, 4200.0, 7000.0}) {
        rebuild();
        slave = FaultySlave(tick);
        slave.answer_on(*ports[1]);
        slave.fault_once[3].late_ms = late_ms;
        const std::string without = pass();
        EXPECT_TRUE(without.starts_with("302 ")) << late_ms;
        EXPECT_LE(without.size(), late_ms < 4000 ? 8U : 12U) << late_ms;
        EXPECT_EQ(pass(), "") << late_ms;
        tick.advance(LateAnswers::kDoubtMs);
    }
}

/// A server on the way that keeps one answer back, from the third request on and for good.
TEST_P(LateRowsTest, AnswersThatStayOneBehindAreNoReadingsHoweverLongThePassesAreApart) {
    rows.resize(5);
    load(rows);
    const auto own = ports[1]->responder;
    std::vector<Arrival> left_over;
    ports[1]->responder = [&](const std::string& request) {
        std::vector<Arrival> answer = own(request);
        if (slave.requests >= 3) std::swap(answer, left_over);
        return answer;
    };
    for (int i = 0; i < 5; ++i) {
        EXPECT_TRUE(pass().starts_with(i == 0 ? "302 " : "300 301 302 ")) << i;
        tick.advance(60'000);
    }
    ports[1]->responder = own;
    EXPECT_EQ(pass(), "");
}

TEST_P(LateRowsTest, ADoubledReplyShiftsNoRowOfTheNextPass) {
    slave.fault_once[3].again_ms = 100;
    if (complete()) { // it comes much sooner than the slave answers
        EXPECT_EQ(pass(), "303 ");
        EXPECT_EQ(pass(), "");
        return;
    }
    logger.RunLoggingPass(); // nothing tells the two replies apart
    tick.advance(1000);
    EXPECT_EQ(pass(), "");
    EXPECT_TRUE(reading(1).after_strays && !reading(2).after_strays);
    EXPECT_TRUE(logger.port_message().starts_with("Bytes came between two requests"));
}

/// The answer of the row that got the value may come between two requests or with the next answer.
TEST_P(LateRowsTest, ADoubledReplyGivesNoRowAnothersValueUnnoticed) {
    for (const double slow_ms : {20.0, 100.0, 140.0, 180.0, 240.0})
        for (double again_ms = 10; again_ms < 300; again_ms += 10) {
            rebuild();
            slave = FaultySlave(tick);
            slave.turnaround_ms = 10;
            slave.fault_once[3].again_ms = again_ms;
            slave.fault_once[4].late_ms = slow_ms;
            slave.answer_on(*ports[1]);
            logger.RunLoggingPass();
            const LogReading fourth = reading(4); // of register 303
            std::string told = logger.port_message();
            tick.advance(1000);
            logger.RunLoggingPass();
            told += logger.port_message();
            if (fourth.state == RowState::Answered && fourth.value != " 30.3") {
                EXPECT_TRUE(told.starts_with("Bytes came between")) << slow_ms << ", " << again_ms;
            }
        }
}

TEST_P(LateRowsTest, ARowThatIsOffSlowsItsOwnAddressAlone) {
    load({"2,3,300,0"});
    logger.RunLoggingPass();
    EXPECT_EQ(reading(1), (LogReading{"", RowState::Nothing}));
    load(rows);
    const double begun = tick.now();
    EXPECT_EQ(pass(), "");
    const double pause_ms = complete() ? 3.5 * 10 / 9.6 : 30 * 2;
    EXPECT_NEAR(tick.now() - begun, 8 * (slave.turnaround_ms + 2 + pause_ms), 20);
    EXPECT_EQ(slave.requests, 9);
}

TEST_P(LateRowsTest, AReplyOfAnotherLengthIsNoReading) {
    for (const auto& [row, reply] : {std::pair{"1,3,300,0", "01 03 04 00 00 03 E8"},
                                     {"1,32,300,0", "01 03 02 00 09"},
                                     {"1,3,300,0", "01 03 00"}}) {
        slave.faults[300].change = [hex = reply](const auto&) { return frame(hex); };
        load({row});
        logger.RunLoggingPass();
        EXPECT_EQ(reading(1).value, "") << reply;
        EXPECT_EQ(reading(1).state, RowState::Nothing) << reply;
        tick.advance(LateAnswers::kDoubtMs);
    }
}

TEST_F(LoggingTest, ASetRemembersThatNeighboursAreReadTogetherAndAFileWithoutItStaysSo) {
    load({"1,3,100,0"});
    logger.WriteLogSet(set_file);
    EXPECT_EQ(read_file(set_file).find("TOGETHER"), std::string::npos);
    for (const bool together : {true, false}) {
        EXPECT_TRUE(logger.agrees_with(set_file));
        logger.set_together(together);
        EXPECT_FALSE(logger.agrees_with(set_file)) << together;
        logger.WriteLogSet(set_file);
        logger.read_set(set_file);
        EXPECT_EQ(logger.set().together, together);
    }
    EXPECT_NE(read_file(set_file).find("NEIGHBOURS TOGETHER=FALSE"), std::string::npos);
}

} // namespace
} // namespace pelvan::testing
