// Series against the simulated controllers, which must pass, and against controllers that do each
// of the things that they must not.
#include <gtest/gtest.h>

#include "badrequests/report.h"
#include "support/configuration.h"
#include "support/frames.h"
#include "support/serial_rig.h"
#include "support/simulated_ports.h"

namespace pelvan::testing {
namespace {

using Texts = std::vector<std::string>;

struct Listener : BadRequestListener {
    void sending(int number, int of, const std::string& name) override {
        EXPECT_LE(number, of);
        current = name;
        if (on_sending) on_sending(name);
    }
    void listed(const BadRequestLine&) override {}
    bool go_on() override {
        if (on_turn) on_turn();
        return !stop;
    }
    std::string current;
    bool stop = false;
    std::function<void(const std::string&)> on_sending;
    std::function<void()> on_turn;
};

class BadRequestsTest : public ::testing::Test, public SerialRig {
  protected:
    BadRequestResult run(int protocol = 1) { return runner.run(default_options(protocol)); }
    /// "name: verdict" of the lines that did not pass.
    static Texts findings(const BadRequestResult& result) {
        Texts out;
        for (const BadRequestLine& line : result.lines)
            if (line.verdict == ReactionVerdict::Failed || line.verdict == ReactionVerdict::Unclear)
                out.push_back(line.name + ": " + line.verdict_text());
        return out;
    }

    Listener listener;
    BadRequestRun runner{link, gate, listener};
};

TEST_F(BadRequestsTest, SimulatedControllersPassInEveryProtocol) {
    SimulatedPorts simulated(*this);
    tick.step_ms = 0.5;
    for (const std::string settings : {"9600,N,8,1", "4800,E,8,1"}) {
        build({"1;" + settings + ";1", "2;" + settings + ";1", "3;" + settings + ";1",
               "4;" + settings + ";1"});
        write_file(config.gIniFile,
                   read_file(config.gIniFile) +
                       "[SERIAL DEVICES]\r\nPORT 1=simulated:742\r\nPORT 2=simulated:742\r\nPORT "
                       "3=simulated:742\r\nPORT 4=simulated:742\r\n");
        for (const char* const way : {"QUIET", "COMPLETE"}) {
            exchange_by(way);
            for (int protocol = 0; protocol < 4; ++protocol) {
                const BadRequestResult result = run(protocol);
                EXPECT_EQ(findings(result), Texts{}) << protocol << way;
                EXPECT_TRUE(result.all_good()) << report_sum(result);
                EXPECT_GE(result.lines.size(), 11U);
                EXPECT_EQ(result.lines.back().name, "Good request at the end");
            }
        }
    }
    EXPECT_EQ(dialogs.texts(), Texts{});
}

TEST_F(BadRequestsTest, ALineThatSpoilsEachTenthReplyFailsNoController) {
    SimulatedPorts simulated(*this);
    tick.step_ms = 1;
    for (const char* const fault : {"lost", "flip", "crc", "gap", "noise", "late", "other",
                                    "lost_ack", "nak", "no_etx", "xoff"})
        for (int seed = 1; seed <= 10; ++seed) {
            const std::string device =
                std::string("simulated:742,") + fault + "=0.1,seed=" + std::to_string(seed);
            configure_devices(dir, std::vector<std::string>(4, device));
            rebuild();
            for (int protocol = 0; protocol < 4; ++protocol) {
                const std::string sum = report_sum(run(protocol));
                EXPECT_EQ(sum.find("failed"), sum.npos) << device << protocol << sum;
            }
        }
}

/// A Modbus controller at address 1 that does what the standard says, but for what a test makes it
/// do.
class WrongSlavesTest : public BadRequestsTest {
  protected:
    WrongSlavesTest() {
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        tick.step_ms = 0.2;
        port().discards_future = false;
        port().responder = [this](const std::string& request) {
            requests.push_back(request);
            if (instead)
                if (const auto answer = instead(request)) return *answer;
            return right(request);
        };
    }
    FakeSerialPort& port() { return *ports[1]; }
    [[nodiscard]] std::vector<Arrival> right(const std::string& request) {
        const bool whole = request.size() == 8 && sealed(request.substr(0, 6)) == request;
        if (!whole || request[0] != '\1' || port().other_parity != '\0') return {};
        if (request.substr(4, 2) != std::string("\0\1", 2)) return {{20, frame("01 83 03")}};
        return {{20, good_reply}};
    }
    /// Whether the request is the good one: right in every way.
    [[nodiscard]] bool is_good(const std::string& request) {
        return request == good_request && port().other_parity == '\0';
    }
    void expect_in_order() {
        EXPECT_EQ(port().other_parity, '\0');
        EXPECT_EQ(port().Settings(), "9600,N,8,1");
        EXPECT_EQ(link.refusal(), "");
        EXPECT_TRUE(table.line_use().holder().empty());
    }
    /// Runs against a slave that answers so; nothing leaves it to the right one.
    BadRequestResult
    against(std::function<std::optional<std::vector<Arrival>>(const std::string&)> slave) {
        rebuild();
        port().discards_future = false;
        port().responder = [this](const std::string& request) {
            requests.push_back(request);
            const auto answer = instead(request);
            return answer ? *answer : right(request);
        };
        requests.clear();
        instead = std::move(slave);
        BadRequestResult result = run();
        expect_in_order();
        return result;
    }

    const std::string good_request = frame("01 03 00 00 00 01");
    const std::string good_reply = frame("01 03 02 02 E6");
    std::vector<std::string> requests;
    std::function<std::optional<std::vector<Arrival>>(const std::string&)> instead;
};

using Answer = std::optional<std::vector<Arrival>>;
const Answer kSilence = std::vector<Arrival>{};

TEST_F(WrongSlavesTest, EachFaultIsFoundAtTheRequestThatItBelongsTo) {
    const std::string bad_crc = good_request.substr(0, 7) + '\xFF';
    const auto at = [&](const std::string& bytes, const std::vector<Arrival>& answer) {
        return [bytes, answer](const std::string& request) {
            return request == bytes ? Answer(answer) : Answer();
        };
    };
    const auto expect = [&](const auto& slave, const Texts& lines, const char* why) {
        const BadRequestResult result = against(slave);
        EXPECT_EQ(findings(result), lines) << why;
        EXPECT_EQ(result.end, "") << why;
        EXPECT_EQ(result.all_good(), lines.empty()) << why;
    };
    expect(at({}, {}), {}, "a good one");
    expect(at(bad_crc, {{20, good_reply}}), {"Wrong CRC: failed: answered as if it were good"},
           "no check");
    expect(at(bad_crc, {{20, frame("01 83 04")}}),
           {"Wrong CRC: failed: refused where it should say nothing"}, "refuses");
    expect(at(bad_crc, {{20, good_reply.substr(0, 5) + "xy"}}),
           {"Wrong CRC: failed: something came back that is no reply"}, "damaged");
    expect(at(bad_crc, {{20, frame("05 03 02 02 E6")}}),
           {"Wrong CRC: unclear: another address answered"}, "foreign");
    expect(at(frame("01 03 00 00 00 00"), {}),
           {"Count of 0: failed: said nothing where it should refuse"}, "silent");
    expect(at(frame("F7 03 00 00 00 01"), {{20, good_reply}}),
           {"Other address: failed: answered for another"}, "hears all");
    expect(at(frame("F7 03 00 00 00 01"), {{20, frame("F7 03 02 02 E6")}}),
           {"Other address: unclear: answered with the other address, or a controller has it"},
           "echoes the address");
    expect(
        [&](const std::string& request) {
            return request[0] == '\1' && port().other_parity != '\0' ? Answer({{20, good_reply}})
                                                                     : Answer();
        },
        {"Other parity: failed: answered as if it were good"}, "no parity check");
    // Behind the time that is waited, and behind the good request that follows.
    expect(at(bad_crc, {{1300, good_reply}}), {"Wrong CRC: failed: answered late"}, "late");
    bool first = true;
    expect(
        [&](const std::string& request) {
            return request == bad_crc && std::exchange(first, false) ? Answer({{2500, good_reply}})
                                                                     : Answer();
        },
        {"CRC bytes exchanged: unclear: answered late, but not each time; the line, or a late "
         "answer to another"},
        "too late to be told whose");
    expect(
        [&](const std::string& request) {
            return is_good(request) ? Answer() : Answer({{20, good_reply}});
        },
        {"Wrong CRC: failed: answered as if it were good",
         "CRC bytes exchanged: failed: answered as if it were good",
         "Last byte missing: failed: answered as if it were good",
         "Second half missing: failed: answered as if it were good",
         "One byte alone: failed: answered as if it were good",
         "One byte too long: failed: answered as if it were good",
         "Pause inside: failed: answered as if it were good",
         "Count of 0: failed: answered as if it were good",
         "Count of 126: failed: answered as if it were good",
         "Other address: failed: answered for another",
         "Read from all (address 0): failed: answered for another",
         "Other parity: failed: answered as if it were good"},
        "answers everything");
}

TEST_F(WrongSlavesTest, AControllerThatIsSilentRefusesOrDiesEndsTheSeries) {
    const auto expect = [&](const auto& slave, const Texts& lines, const std::string& end) {
        const BadRequestResult result = against(slave);
        EXPECT_EQ(findings(result), lines);
        EXPECT_EQ(result.end, end);
        EXPECT_FALSE(result.all_good());
        return requests.size();
    };
    const std::string begin = "Good request at the beginning: unclear: the good request was ";
    const std::string no_answer = "The controller does not answer a good request as it should.";
    EXPECT_EQ(
        expect([](const std::string&) { return kSilence; }, {begin + "not answered"}, no_answer),
        3U);
    EXPECT_EQ(expect(
                  [](const std::string&) {
                      return Answer({{20, frame("01 83 02")}});
                  },
                  {begin + "refused"}, no_answer),
              1U);
    expect(
        [&](const std::string&) {
            return Answer({{20, good_reply.substr(0, 6) + "?"}});
        },
        {begin + "answered with something damaged"}, no_answer);
    bool dead = false;
    expect(
        [&](const std::string& request) {
            dead = dead || !is_good(request);
            return dead ? kSilence : Answer();
        },
        {"Wrong CRC: failed: after it the good request was not answered"},
        "The controller does not answer good requests any more.");
    int lost = 0; // a single reply is no death
    const BadRequestResult result =
        against([&](const std::string&) { return ++lost % 5 == 0 ? kSilence : Answer(); });
    EXPECT_EQ(result.end, "");
}

TEST_F(WrongSlavesTest, WhatTheLineOrARightControllerDoesByItselfIsNoFault) {
    const auto answering = [&](double after_ms, const std::string& before,
                               const std::string& behind) {
        return [=, this](const std::string& request) {
            return is_good(request) ? Answer({{after_ms, before + good_reply + behind}}) : Answer();
        };
    };
    const auto expect_end = [&](const auto& slave, const std::string& reason,
                                const std::string& end) {
        const BadRequestResult result = against(slave);
        EXPECT_EQ(findings(result), Texts{"Good request at the beginning: unclear: " + reason});
        EXPECT_EQ(result.end, end + ": nothing can be judged.");
    };
    const std::string more = "More comes than one answer to a good request";
    const std::string shown = hex_of(good_reply);
    expect_end(answering(20, bytes("C3 5A"), {}), "more came than one answer: C3 5A", more);
    expect_end(answering(20, {}, good_reply), "more came than one answer: " + shown, more);
    expect_end(answering(20, good_request, {}),
               "more came than one answer: " + hex_of(good_request),
               "The line echoes what is sent, and Port Settings (F9) do not say so");
    expect_end(answering(2500, {}, {}), "bytes came while nothing was sent: " + shown,
               "It answers later than is waited for, or somebody else asks it");
    double next = 0;
    int number = 0;
    std::string noisy_from = "Good request at the beginning";
    listener.on_turn = [&] { // each time other bytes
        if (listener.current == noisy_from) noisy_from.clear();
        if (!noisy_from.empty() || tick.now() < next) return;
        next = tick.now() + 700;
        port().arrive({0, bytes("00 5A 80") + static_cast<char>(++number)});
    };
    const BadRequestResult noisy = against(answering(20, {}, {}));
    EXPECT_EQ(noisy.end, "Somebody else sends on this line, or it is disturbed: nothing can be "
                         "judged.");
    noisy_from = "Wrong CRC";
    const std::string later = report_sum(against(answering(20, {}, {})));
    EXPECT_TRUE(later.find("unclear") != later.npos && later.find("failed") == later.npos) << later;
    listener.on_turn = nullptr;
    const auto from_now_on = [&](const std::string& request) { // the line, not the controller
        if (!is_good(request) || listener.current == "Listening") return Answer();
        return Answer({{20, good_reply + (requests.size() > 1 ? good_reply : "")}});
    };
    const Texts doubled = findings(against(from_now_on));
    EXPECT_EQ(doubled.front(),
              "Wrong CRC: unclear: answered late, but this line spoils good requests, too");
}

TEST_F(WrongSlavesTest, WrongControllersAreFoundBySlowNoisyCutAndDoubleAnswers) {
    const std::string bad_crc = good_request.substr(0, 7) + '\xFF';
    const auto verdict_of = [&](const Answer& answer, double good_ms = 20) {
        const BadRequestResult result = against([&](const std::string& request) {
            return is_good(request)     ? Answer({{good_ms, good_reply}})
                   : request == bad_crc ? answer
                                        : Answer();
        });
        EXPECT_EQ(result.end, "");
        EXPECT_GE(result.wait_ms, 2 * good_ms);
        return result.lines[1].verdict_text();
    };
    const std::string as_good = "failed: answered as if it were good";
    EXPECT_EQ(verdict_of(Answer({{1200, good_reply}}), 1200), as_good);
    EXPECT_EQ(verdict_of(kSilence, 1200), "passed");
    EXPECT_EQ(verdict_of(Answer({{20, frame("01 83 03")}, {150, good_reply}})), as_good);
    EXPECT_EQ(verdict_of(Answer({{20, bytes("FF 55 11")}})),
              "failed: something came back that is no reply");
    EXPECT_EQ(verdict_of(Answer({{1050, frame("01 83 03")}})), "failed: answered late");
    // A half request that is kept takes the next good one with it.
    bool kept = false;
    const Texts lines = findings(against([&](const std::string& request) {
        if (!is_good(request)) kept = request.size() == 4 && request[0] == '\1';
        return is_good(request) && std::exchange(kept, false) ? kSilence : Answer();
    }));
    EXPECT_EQ(lines, Texts{"Second half missing: failed: the good request behind it was answered "
                           "only when it was sent again"});
}

TEST_F(WrongSlavesTest, ALostLineACancelAndAnErrorPutTheParityBack) {
    for (const char* const where : {"Wrong CRC", "Other parity"}) {
        listener.on_sending = [&](const std::string& name) {
            if (name != where) return;
            port().line_lost = true;
            for (int i = 0; i < 20; ++i)
                port().fail_next("PortOpen", error_number::kInvalidPortNumber);
        };
        const BadRequestResult lost = against([](const std::string&) { return Answer(); });
        EXPECT_EQ(findings(lost), Texts{std::string(where) + ": unclear: there is no line"});
        EXPECT_NE(lost.end, "");
    }
    listener.on_sending = nullptr;
    bool had_other = false;
    listener.on_turn = [&] { listener.stop = had_other = port().other_parity != '\0'; };
    BadRequestResult canceled = against([](const std::string&) { return Answer(); });
    EXPECT_EQ(canceled.end, "Cancelled.");
    EXPECT_TRUE(had_other);
    listener.stop = false;
    listener.on_turn = [&] {
        if (port().other_parity != '\0') throw RunTimeError(61);
    };
    EXPECT_THROW(against([](const std::string&) { return Answer(); }), RunTimeError);
    expect_in_order();
    listener.on_turn = nullptr;

    // At once: nothing more is sent, and none of the waiting is waited.
    double begun = 0;
    listener.on_turn = [&] {
        if (listener.current != "Wrong CRC" || requests.back() == good_request) return;
        begun = tick.now();
        listener.stop = true;
    };
    canceled = against([](const std::string&) { return Answer(); });
    EXPECT_LT(tick.now() - begun, 1);
    EXPECT_EQ(requests.size(), 2U);
    listener.stop = false;
    listener.on_turn = nullptr;
}

TEST_F(WrongSlavesTest, ALineWithoutParityIsNotJudgedAndALineInUseNotTouched) {
    listener.on_sending = [&](const std::string& name) {
        if (name == "Other parity") port().fail_next("PortOpen", error_number::kCannotSetState);
    };
    const BadRequestResult result = against([](const std::string&) { return Answer(); });
    EXPECT_TRUE(result.all_good()) << report_sum(result);
    const auto line = std::ranges::find(result.lines, "Other parity", &BadRequestLine::name);
    EXPECT_EQ(line->verdict_text(), "not tested: this line has no such parity");
    EXPECT_EQ(report_sum(result), "13 passed, 1 not tested.");

    Link other{table, countdowns, dialogs, log, "Save/Restore Setup"};
    const LineClaim claim = other.claim();
    requests.clear();
    EXPECT_EQ(run().end, "The line is in use by Save/Restore Setup.");
    EXPECT_TRUE(requests.empty());
    EXPECT_TRUE(runner.run(default_options(3)).lines.empty());
}

TEST_F(WrongSlavesTest, TheReportSaysWhatWasSentAndWhatCame) {
    const std::string bad_crc = good_request.substr(0, 7) + '\xFF';
    const BadRequestResult result = against([&](const std::string& request) {
        return request == bad_crc ? Answer({{20, good_reply}}) : Answer();
    });
    save_report(result, clock.time, dir.file("report.txt"));
    const std::string text = read_file(dir.file("report.txt"));
    EXPECT_TRUE(text.starts_with(
        "Bad requests, 11-15-2026 16:30:05\r\n"
        "Modbus RTU, address 1, register 0; port 2, 9600,N,8,1; answers waited for 1 s\r\n\r\n"
        "Good request at the beginning: passed\r\n"
        "    sent 01 03 00 00 00 01 84 0A; expected an answer; came 01 03 02 02 E6 38 AE\r\n"
        "Wrong CRC: failed: answered as if it were good\r\n"
        "    sent 01 03 00 00 00 01 84 FF; expected silence; came 01 03 02 02 E6 38 AE\r\n"))
        << text;
    EXPECT_TRUE(text.ends_with("\r\n\r\n13 passed, 1 failed.\r\n")) << text;
}

} // namespace
} // namespace pelvan::testing
