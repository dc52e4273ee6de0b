// Rows that are read together, against the same rows read singly.
#include <set>

#include "logging/logging_rig.h"
#include "text/numbers.h"

namespace pelvan::testing {
namespace {

enum class Fault {
    None,
    Silent,
    Late,
    Cut,
    Doubled,
    Damaged,
    Foreign,
    Fewer,
    NoSuchRegister,
    NotAllowed,
    Busy
};

/// Answers reads of any number of registers, one request after another. A register holds its number
/// or what was written to it; every reply with a faulty register in it has that register's fault.
class FaultySlave {
  public:
    explicit FaultySlave(FakeTick& tick) : tick_(&tick) {}

    std::vector<Arrival> answer(const std::string& request) {
        const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(request[i]); };
        const int first = byte(2) * 256 + byte(3);
        const int count = byte(1) == 6 ? 1 : byte(4) * 256 + byte(5);
        asked += std::to_string(first) + "x" + std::to_string(count) + " ";
        if (byte(0) != 1) return {};
        if (byte(1) == 6) {
            held_[first] = byte(5);
            return at(kTurnaroundMs, request);
        }
        Fault fault = Fault::None;
        for (int i = first; i < first + count; ++i)
            if (faults.contains(i)) fault = faults[i];
        const bool fits = count <= most;
        if (!fits) fault = too_many;
        return at(kTurnaroundMs + count * 2, reply(request, first, count), fault);
    }

    std::map<int, Fault> faults; // by register
    double late_ms = 0;
    int most = 125;
    Fault too_many = Fault::Silent;
    std::string asked;

  private:
    static constexpr double kTurnaroundMs = 20;

    std::string reply(const std::string& request, int first, int count) {
        std::string frame = request.substr(0, 2) + static_cast<char>(2 * count);
        for (int i = first; i < first + count; ++i) {
            const int value = held_.contains(i) ? held_[i] : i;
            frame += {static_cast<char>(value / 256), static_cast<char>(value % 256)};
        }
        return sealed(frame);
    }
    std::vector<Arrival> at(double after_ms, const std::string& reply, Fault fault = Fault::None) {
        if (fault == Fault::Late) after_ms = late_ms;
        busy_until_ = std::max(tick_->now(), busy_until_) + after_ms;
        const double due = busy_until_ - tick_->now();
        const auto refused = [&](char code) {
            return sealed({reply[0], static_cast<char>(reply[1] | '\x80'), code});
        };
        std::string damaged = reply;
        damaged.back() = static_cast<char>(damaged.back() ^ 1);
        const std::string body = reply.substr(1, reply.size() - 3);
        switch (fault) {
        case Fault::Silent:
            return {};
        case Fault::Cut:
            return {{due, reply.substr(0, reply.size() / 2)}};
        case Fault::Doubled:
            return {{due, reply}, {due + 10, reply}};
        case Fault::Damaged:
            return {{due, damaged}};
        case Fault::Foreign:
            return {{due, sealed("\2" + body)}};
        case Fault::Fewer:
            return {{due, sealed(reply.substr(0, 2) + static_cast<char>(reply[2] - 2) +
                                 reply.substr(5, reply.size() - 7))}};
        case Fault::NoSuchRegister:
            return {{due, refused('\2')}};
        case Fault::NotAllowed:
            return {{due, refused('\3')}};
        case Fault::Busy:
            return {{due, refused('\6')}};
        case Fault::None:
        case Fault::Late:
            break;
        }
        return {{due, reply}};
    }

    FakeTick* tick_;
    double busy_until_ = 0;
    std::map<int, int> held_;
};

class NeighboursTest : public LoggingTest, public ::testing::WithParamInterface<const char*> {
  protected:
    NeighboursTest() {
        exchange_by(GetParam());
        tick.step_ms = 2;
    }
    [[nodiscard]] bool complete() const { return table.exchange_way(1).complete; }

    /// Loads rows of one command from a register on.
    static void add(std::vector<std::string>& rows, const std::string& begin, int first, int last) {
        for (int number = first; number <= last; ++number)
            rows.push_back(begin + std::to_string(number) + (number % 3 == 0 ? ",1" : ",0"));
    }
    /// The log file and the grid after so many passes, and what was asked in the last one. The
    /// session begins anew.
    std::string seen(bool together, int passes = 2) {
        tick.advance(LateAnswers::kDoubtMs);
        rebuild();
        slave = FaultySlave(tick);
        prepare();
        ports[1]->discards_future = false;
        ports[1]->responder = [this](const std::string& request) { return slave.answer(request); };
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

    /// Whether the row has a reading; one that is not its register's fails.
    bool has(int row, int number) {
        const bool answered = reading(row).state == RowState::Answered;
        const double value = number / (number % 3 == 0 ? 10.0 : 1.0);
        EXPECT_TRUE(!answered || reading(row).value == signed_number(value))
            << number << ": " << reading(row).value;
        return answered;
    }

    std::vector<std::string> rows;
    FaultySlave slave{tick};
    std::function<void()> prepare = [] {};
};

INSTANTIATE_TEST_SUITE_P(, NeighboursTest, ::testing::Values("QUIET", "COMPLETE"));

TEST_P(NeighboursTest, EveryFaultLeavesFileAndGridAsTheyAreWithSingleReads) {
    add(rows, "1,3,", 100, 109);
    add(rows, "1,4,", 110, 111);
    add(rows, "1,3,", 130, 139);
    for (const Fault fault :
         {Fault::None, Fault::Silent, Fault::Late, Fault::Cut, Fault::Doubled, Fault::Damaged,
          Fault::Foreign, Fault::Fewer, Fault::NoSuchRegister, Fault::NotAllowed, Fault::Busy})
        for (const int at : {100, 105, 109, 111, 130}) {
            if (fault == Fault::Doubled && complete()) continue; // see below
            prepare = [&] {
                slave.faults[at] = fault;
                slave.late_ms = 2100;
            };
            EXPECT_EQ(seen(true), seen(false)) << static_cast<int>(fault) << " at " << at;
        }
}

/// Which rows a very late answer spoils, or one that comes twice behind its frame, depends on what
/// it meets. None takes it for its own.
TEST_P(NeighboursTest, LateAndDoubledAnswersSpoilFewRowsAndGiveNoneAWrongValue) {
    add(rows, "1,3,", 100, 109);
    add(rows, "1,3,", 130, 139);
    const auto missing = [&](bool together) {
        static_cast<void>(seen(together));
        std::ptrdiff_t count = 0;
        for (int row = 1; row <= 20; ++row)
            count += has(row, row <= 10 ? 99 + row : 119 + row) ? 0 : 1;
        return count;
    };
    for (const int at : {100, 105, 109, 130, 139})
        for (const double late_ms : {0.0, 2300.0, 3100.0, 4200.0, 4700.0}) {
            prepare = [&] {
                slave.faults[at] = late_ms > 0 ? Fault::Late : Fault::Doubled;
                slave.late_ms = late_ms;
            };
            EXPECT_LE(missing(true), missing(false) + 2) << at << ", " << late_ms;
        }
}

/// A controller that refuses, or does not answer, what is too long for it.
TEST_P(NeighboursTest, WhatIsTooLongForAControllerIsReadInPieces) {
    add(rows, "1,3,", 100, 199);
    for (const int most : {1, 5, 16, 99})
        for (const Fault too_many : {Fault::NotAllowed, Fault::NoSuchRegister, Fault::Silent}) {
            prepare = [&] {
                slave.most = most;
                slave.too_many = too_many;
            };
            static_cast<void>(asked(9));
            for (int row = 1; row <= 100; ++row)
                EXPECT_TRUE(has(row, 99 + row)) << most << ", " << static_cast<int>(too_many);
            const auto requests = std::ranges::count(slave.asked, ' ');
            EXPECT_LE(requests, most == 1   ? 100
                                : most == 5 ? 50
                                            : 11)
                << most << ", " << static_cast<int>(too_many) << ": " << slave.asked;
        }
}

TEST_P(NeighboursTest, OnlyNeighboursAreAskedForTogetherAndRefusedOnesNotAgain) {
    add(rows, "1,3,", 100, 105);
    EXPECT_EQ(asked(), "100x6 ");
    add(rows, "1,3,", 200, 205); // as many: the reply must not pass for that to the one before
    EXPECT_EQ(asked(), "100x6 200x5 205x1 ");
    prepare = [&] { slave.faults[103] = Fault::NoSuchRegister; };
    EXPECT_EQ(asked(1), "100x6 100x1 101x1 102x1 103x1 104x1 105x1 200x6 ");
    EXPECT_EQ(asked(), "100x3 103x1 104x2 200x6 ");
    prepare = [] {};
    rows = {"1,3,300,0", "1,3,301,0", "1,6,302,0", "1,3,302,0", "1,3,303,0",   "1,32,304,0",
            "1,3,305,0", "1,1,306,0", "2,3,307,0", "1,3,308,0", "1,3,65535,0", "1,3,65536,0",
            "0,3,1,0",   "0,3,2,0",   "1,4,9,0",   "1,4,10,0",  "1,3,8.5,0",   "1,3,9.5,0",
            "1,3,7,0",   "1,3,6,0",   "1,3,6,0",   "1,3,7,0"};
    EXPECT_EQ(asked(), "300x2 302x1 302x2 304x2 305x1 306x1 307x1 308x1 65535x1 1x1 2x1 9x2 8x1 "
                       "10x1 7x1 6x1 6x2 ");
    EXPECT_EQ(seen(true), seen(false));
}

TEST_P(NeighboursTest, AControllerThatIsOffCostsOneRequestMore) {
    add(rows, "1,3,", 100, 103);
    prepare = [&] {
        for (int number = 100; number < 104; ++number)
            slave.faults[number] = Fault::Silent;
    };
    EXPECT_EQ(asked(1), "100x4 100x1 101x1 102x1 103x1 ");
    EXPECT_EQ(asked(2), "100x1 101x1 102x1 103x1 ");
    slave.faults.clear();
    slave.asked.clear();
    logger.RunLoggingPass();
    EXPECT_EQ(slave.asked, "100x1 101x3 ") << "it is back";
    EXPECT_EQ(reading(4).value, " 103");
}

TEST_P(NeighboursTest, AReplyThatComesTwiceGivesNoRowAnothersValue) {
    add(rows, "1,3,", 100, 109);
    add(rows, "1,3,", 200, 209);
    add(rows, "1,3,", 300, 309);
    load(rows);
    logger.set_together(true);
    for (const double again_ms : {1.0, 30.0, 80.0, 200.0}) {
        int requests = 0;
        slave = FaultySlave(tick);
        ports[1]->discards_future = false;
        ports[1]->responder = [&](const std::string& request) {
            auto arrivals = slave.answer(request);
            if (++requests == 2)
                arrivals.push_back({arrivals[0].after_ms + again_ms, arrivals[0].bytes});
            return arrivals;
        };
        logger.RunLoggingPass();
        for (int row = 1; row <= 30; ++row) {
            SCOPED_TRACE(again_ms);
            static_cast<void>(has(row, (row - 1) / 10 * 100 + 100 + (row - 1) % 10));
        }
        tick.advance(LateAnswers::kDoubtMs);
    }
}

TEST_F(LoggingTest, ASetRemembersThatNeighboursAreReadTogetherAndAFileWithoutItStaysSo) {
    load({"1,3,100,0"});
    logger.WriteLogSet(set_file);
    EXPECT_EQ(read_file(set_file).find("TOGETHER"), std::string::npos);
    EXPECT_TRUE(logger.agrees_with(set_file));
    logger.set_together(true);
    EXPECT_FALSE(logger.agrees_with(set_file));
    logger.WriteLogSet(set_file);
    logger.read_set(set_file);
    EXPECT_TRUE(logger.set().together);
    logger.set_together(false);
    logger.WriteLogSet(set_file);
    EXPECT_NE(read_file(set_file).find("NEIGHBOURS TOGETHER=FALSE"), std::string::npos);
    logger.read_set(set_file);
    EXPECT_FALSE(logger.set().together);
}

} // namespace
} // namespace pelvan::testing
