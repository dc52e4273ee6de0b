// What a master and a controller that are not ours (mbpoll, and a slave on libmodbus) really say to
// each other, recorded by a tap on the wire between them, and delivered as adapters would: in lumps
// that begin at any place. Every frame must come out once, and nothing else.
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <random>

#include "listen/traffic.h"
#include "support/modbus_slave.h"

namespace pelvan::testing {

struct Passed {
    bool is_request;
    std::string bytes;
};

/// One exchange each. One is of a controller that is not there, and the slave takes requests behind
/// it for that controller's reply.
const std::string kPolls[] = {"-t 4 -r 0 -c 1",  "-t 4 -r 0 -c 125",  "-t 4 -r 100 -c 10",
                              "-t 3 -r 3 -c 60", "-t 0 -r 0 -c 1",    "-t 0 -r 7 -c 100",
                              "-t 1 -r 0 -c 33", "-t 4 -r 190 -c 50", "-t 4 -r 5 -c 125",
                              "-t 0 -r 1 -c 2",  "-a 2 -o 0.05 -r 0", "-o 0.05 -r 0",
                              "-t 4 -r 0 -c 1"};
const std::string kWrites[] = {"-t 4 -r 11 DEVICE 742", "-t 4 -r 20 DEVICE 1 2 3 4 5 6 7 8 9 10",
                               "-t 0 -r 3 DEVICE 1", "-t 0 -r 3 DEVICE 1 0 1 1 0"};

static std::vector<Passed> record_exchanges() {
    std::vector<Passed> passed;
    {
        PtyWire wire([&](bool from_master, const std::string& bytes) {
            passed.push_back({from_master, bytes});
        });
        const ModbusSlaveProcess slave(PELVAN_MODBUS_SLAVE, wire.other_end());
        const auto poll = [&](const std::string& options) {
            const std::string command = "mbpoll -m rtu -b 9600 -P none -0 -1 " + options;
            return std::system((command + " >/dev/null 2>&1").c_str());
        };
        for (int round = 0; round < 2; ++round) {
            for (std::string write : kWrites)
                EXPECT_EQ(poll(write.replace(write.find("DEVICE"), 6, wire.one_end())), 0)
                    << "mbpoll, a package of Debian, is needed: " << write;
            for (const std::string& read : kPolls)
                (void)poll(read + " " + wire.one_end()); // some are refused, one is not heard
        }
    }
    return passed;
}

static const std::vector<Passed>& passed() {
    static const std::vector<Passed> all = record_exchanges();
    return all;
}

/// That what was heard is what was said, in frames as many as the polls ask for.
static void expect_every_frame_once(const Traffic& traffic, const std::string& what) {
    std::map<bool, std::string> said, heard; // requests and replies
    for (const Passed& each : passed())
        said[each.is_request] += each.bytes;
    for (const ListenedFrame& frame : traffic.frames())
        heard[frame.info.kind == FrameKind::Request] += frame.bytes;
    EXPECT_EQ(heard, said) << what;
    const TrafficRow& all = traffic.counts().all();
    const auto exchanges = static_cast<long>(2 * (std::size(kPolls) + std::size(kWrites)));
    EXPECT_EQ(all.requests, exchanges) << what;
    EXPECT_GE(all.unanswered, 2) << what;
    const bool awaits = traffic.frames().back().answer == Answer::Awaited;
    EXPECT_EQ(all.requests, all.replies + all.unanswered + (awaits ? 1 : 0)) << what;
    EXPECT_EQ(all.exceptions, 2) << what;
    EXPECT_EQ(traffic.counts().damaged(), 0) << what;
}

TEST(TapTest, AnAdapterThatDeliversEvery16Milliseconds) {
    constexpr double kByteMs = 10 / 9.6; // ten bits at 9600 baud
    constexpr double kLumpMs = 16;
    for (int phase = 0; phase < 160 && !HasFailure(); ++phase) {
        std::mt19937 random(static_cast<unsigned>(phase));
        Traffic traffic;
        std::string lump;
        double ms = phase / 10.0;
        double due = kLumpMs;
        const auto deliver_until = [&](double now) {
            for (; due <= now; due += kLumpMs) {
                traffic.hear(due, due, lump);
                lump.clear();
            }
        };
        for (const Passed& each : passed()) {
            ms += static_cast<double>(4 + random() % 30); // until it is answered, or asked again
            for (const char byte : each.bytes) {
                deliver_until(ms += kByteMs);
                lump += byte;
            }
        }
        deliver_until(due);
        traffic.finish();
        expect_every_frame_once(traffic, "phase " + std::to_string(phase));
    }
}

} // namespace pelvan::testing
