#include "scan/bus_scan.h"

#include <filesystem>
#include <set>

#include "bus_rig.h"
#include "support/pty_pair.h"

namespace pelvan {
namespace {

using testing::BusRig;
using testing::Notes;
using Texts = std::vector<std::string>;

/// One protocol at 9600,N,8,1.
ScanOptions plain(ScanProtocol protocol) {
    ScanOptions options;
    options.port = 2;
    options.protocols = {protocol};
    options.baud_rates = {9600};
    options.parities = "N";
    return options;
}

class BusScanTest : public ::testing::Test, protected BusRig {
  protected:
    /// Nothing but reads may ever go out, and a poll that was answered is ended.
    void expect_reads() {
        for (const Written& each : written) {
            const std::string& request = each.bytes;
            const auto address = static_cast<unsigned char>(request.front());
            const std::string read =
                testing::sealed(request.substr(0, 1) + testing::bytes("03 00 00 00 01"));
            const bool tellura =
                request.starts_with(testing::bytes("10 02")) &&
                request.find(testing::bytes("00 01 00 00 00 00 00 02 10 03")) != std::string::npos;
            const bool poll = request.size() == 2 && request[1] == '\5';
            EXPECT_TRUE((request == read && address > 0) || tellura || poll ||
                        request == "? C1\r" || request == "\n\4")
                << testing::hex_of(request);
        }
    }
    ScanResult run(const ScanOptions& options) {
        notes.done = 0;
        return scan.run(options, notes);
    }
    [[nodiscard]] std::ptrdiff_t sent(const std::string& request) const {
        return std::ranges::count(written, request, &Written::bytes);
    }

    Notes notes;
};

TEST_F(BusScanTest, FindsControllersOfAllProtocolsOnceAmongNoise) {
    add(ScanProtocol::Modbus, "19200,E,8,1", ",address=17");
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=1");
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=40,delay=210");
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=41");
    add(ScanProtocol::Modbus, "4800,O,8,1", ",address=1");
    add(ScanProtocol::Full, "9600,N,8,1", ",address=5");
    add(ScanProtocol::Full, "38400,E,8,1", ",address=32");
    add(ScanProtocol::Xon, "4800,N,8,1", "");
    add(ScanProtocol::Tellura, "38400,O,8,1", ",address=9");
    noise = 0.03;
    ScanOptions options;
    options.port = 2;
    options.stop_bits = {1, 2};
    const double estimate = estimated_ms(plan_scan(options), options.patience_ms);
    const ScanResult result = run(options);
    EXPECT_EQ(result.how, ScanEnd::Completed) << result.reason;
    EXPECT_EQ(
        std::set(notes.finds.begin(), notes.finds.end()),
        (std::set<std::string>{"Modbus, address 17, 19200,E,8,1", "Modbus, address 1, 9600,N,8,1",
                               "Modbus, address 40, 9600,N,8,1", "Modbus, address 41, 9600,N,8,1",
                               "Modbus, address 1, 4800,O,8,1", "Full, address 5, 9600,N,8,1",
                               "Full, address 32, 38400,E,8,1", "Xon, 4800,N,8,1",
                               "Tellura/AB (BCC), address 9, 38400,O,8,1"}));
    EXPECT_EQ(notes.finds.size(), 9U);
    for (const ScanFind& find : result.finds) {
        if (find.protocol == ScanProtocol::Modbus || find.protocol == ScanProtocol::Tellura) {
            EXPECT_EQ(find.answer.model, "742");
        }
        EXPECT_NEAR(find.reply_ms, find.address == 40 ? 210 : 0, 4) << find_text(find);
    }
    // Those of the factory's address were there before any other.
    EXPECT_EQ(notes.finds[0], "Modbus, address 1, 9600,N,8,1");
    EXPECT_LT(result.taken_ms, estimate * 1.5);
    expect_reads();
    EXPECT_TRUE(opened_with.empty());
}

TEST_F(BusScanTest, AsksAllAddressesOfASettingInHalfAMinute) {
    const ScanResult result = run(plain(ScanProtocol::Modbus));
    EXPECT_EQ(result.probes, 247U);
    EXPECT_TRUE(result.finds.empty());
    EXPECT_LT(result.taken_ms, 30'000);
    EXPECT_NEAR(result.taken_ms, estimated_ms(plan_scan(plain(ScanProtocol::Modbus)), 90), 1500);
}

TEST_F(BusScanTest, BytesJustBehindAChangeOfSettingsMayBeALateAnswer) {
    stranger = [this](const std::string&) {
        const bool first = written.back().settings != "9600,N,8,1" &&
                           written[written.size() - 2].settings == "9600,N,8,1";
        return first ? testing::bytes("5A A5") : std::string();
    };
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.baud_rates = {9600, 19200};
    options.first_address = options.last_address = 1;
    static_cast<void>(run(options));
    EXPECT_EQ(notes.remarks, Texts{"Bytes came just behind the change from 9600,N,8,1: something "
                                   "may have answered late there. 1000 ms of "
                                   "patience would tell."});
}

TEST_F(BusScanTest, CreditsALateAnswerToWhoSentIt) {
    // 110 ms and more: it comes while the next address is asked, or the one behind that.
    for (const char* delay : {"85", "110", "150", "230", "400"}) {
        SCOPED_TRACE(delay);
        members.clear();
        notes.finds.clear();
        for (const char* address : {"10", "12", "247"})
            add(ScanProtocol::Modbus, "9600,N,8,1",
                std::string(",address=") + address + ",queue=1,delay=" + delay);
        add(ScanProtocol::Full, "9600,N,8,1", std::string(",address=32,delay=") + delay);
        ScanOptions options = plain(ScanProtocol::Modbus);
        options.protocols.push_back(ScanProtocol::Full);
        static_cast<void>(run(options));
        const std::set<std::string> expected{
            "Modbus, address 10, 9600,N,8,1", "Modbus, address 12, 9600,N,8,1",
            "Modbus, address 247, 9600,N,8,1", "Full, address 32, 9600,N,8,1"};
        EXPECT_EQ(std::set(notes.finds.begin(), notes.finds.end()), expected);
        EXPECT_EQ(notes.finds.size(), expected.size());
    }
}

TEST_F(BusScanTest, ForgetsNoAnswerThatComesTooLate) {
    // All are found that one sure request more can wait for, and with their own times.
    for (const char* delay : {"600", "1200"}) {
        SCOPED_TRACE(delay);
        members.clear();
        notes = {};
        for (const char* address : {"3", "7", "12"})
            add(ScanProtocol::Modbus, "9600,N,8,1",
                std::string(",address=") + address + ",queue=1,delay=" + delay);
        ScanOptions options = plain(ScanProtocol::Modbus);
        options.last_address = 12;
        const ScanResult result = run(options);
        EXPECT_EQ(notes.finds.size(), 3U);
        EXPECT_EQ(notes.remarks, Texts{});
        for (const ScanFind& find : result.finds)
            EXPECT_NEAR(find.reply_ms, std::stod(delay), 4) << find_text(find);
    }
    // One answers once, 700 ms late, when the next protocol is asked already.
    members.clear();
    notes = {};
    int times = 0;
    stranger_after = 700;
    stranger = [&](const std::string& request) {
        return request[0] == '\3' && ++times == 1 ? testing::frame("03 03 02 02 E6") : "";
    };
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.protocols.push_back(ScanProtocol::Full);
    options.last_address = 3;
    const ScanResult result = run(options);
    EXPECT_TRUE(result.finds.empty());
    EXPECT_EQ(notes.remarks, Texts{"At 9600,N,8,1 Modbus address 3 answered later than was waited "
                                   "for, and is not listed: 900 ms of patience would do."});
    EXPECT_EQ(unsure_text(result, "--patience"),
              "Somebody answered, and is not listed: scan again with --patience 900.");
    EXPECT_GT(times, 1) << "was asked again";
}

TEST_F(BusScanTest, TimesTheAnswerOfOneWhoWasAskedTwice) {
    // Noise while 3 is asked has 2 asked again before its first answer has come.
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=2,queue=1,delay=650");
    int times = 0;
    stranger = [&](const std::string& request) {
        return request[0] == '\3' && ++times == 1 ? "\x55" : "";
    };
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.last_address = 5;
    const ScanResult result = run(options);
    ASSERT_EQ(result.finds.size(), 1U);
    EXPECT_GE(sent(testing::frame("02 03 00 00 00 01")), 3);
    EXPECT_NEAR(result.finds[0].reply_ms, 650, 4);
}

TEST_F(BusScanTest, TellsOfTwoControllersOfOneAddress) {
    const std::string kept = testing::frame("07 03 02 02 DA");
    // The other one is heard behind both answers, behind the first, or together with it.
    for (const double after : {150, 45, 28}) {
        SCOPED_TRACE(after);
        members.clear();
        notes = {};
        add(ScanProtocol::Modbus, "9600,N,8,1", ",address=7,delay=20");
        stranger_after = after;
        stranger = [&](const std::string& request) { return request[0] == '\7' ? kept : ""; };
        ScanOptions options = plain(ScanProtocol::Modbus);
        options.last_address = 9;
        static_cast<void>(run(options));
        EXPECT_EQ(notes.finds, Texts{"Modbus, address 7, 9600,N,8,1"});
        ASSERT_FALSE(notes.remarks.empty());
        EXPECT_EQ(notes.remarks[0],
                  "At 9600,N,8,1 two controllers have the Modbus address 7: \"register 0 holds "
                  "742\" and \"register 0 holds 730\" came. Take one off the line.");
    }
}

TEST_F(BusScanTest, WaitsLongerForTheRestOfAnAnswerOverANetwork) {
    stranger_pauses = 200;
    stranger = [](const std::string& request) {
        return request[0] == '\3' ? testing::frame("03 03 02 02 E6") : "";
    };
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.over_network = true;
    options.last_address = 5;
    EXPECT_EQ(run(options).finds.size(), 1U);
    EXPECT_EQ(notes.remarks, Texts{});
}

TEST_F(BusScanTest, TakesNothingElseForAnAnswer) {
    const std::string foreign = testing::frame("09 03 02 02 E6");
    const std::map<std::string, std::function<std::string(const std::string&)>> strangers{
        {"a damaged reply",
         [](const std::string& request) {
             return request.substr(0, 1) + testing::bytes("03 02 02 E6 11 22");
         }},
        {"a write's echo",
         [](const std::string& request) {
             return testing::sealed(request.substr(0, 1) + testing::bytes("06 00 00 00 01"));
         }},
        {"two registers",
         [](const std::string& request) {
             return testing::sealed(request.substr(0, 1) + testing::bytes("03 04 00 01 00 02"));
         }},
        {"another's", [&](const std::string&) { return foreign; }},
        {"a gateway's",
         [](const std::string& request) {
             return testing::sealed(request.substr(0, 1) + testing::bytes("83 0B"));
         }},
        {"text", [](const std::string&) { return "? C1\r"; }},
        {"controls", [](const std::string&) { return "\6"; }}};
    for (const auto& [name, bytes] : strangers) {
        stranger = bytes;
        for (int protocol = 0; protocol < kScanProtocols; ++protocol) {
            ScanOptions options = plain(static_cast<ScanProtocol>(protocol));
            options.last_address = 8;
            const ScanResult result = run(options);
            EXPECT_TRUE(result.finds.empty()) << name << ", protocol " << protocol;
            if (protocol == 1 && name == "a damaged reply") {
                EXPECT_TRUE(result.garbled);
            }
        }
    }
    // An exception is an answer; one that came once is none.
    int times = 0;
    stranger = [&](const std::string& request) {
        return ++times == 3 || request[0] == '\7'
                   ? testing::sealed(request.substr(0, 1) + testing::bytes("83 02"))
                   : "";
    };
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.last_address = 8;
    const ScanResult result = run(options);
    ASSERT_EQ(result.finds.size(), 1U);
    EXPECT_EQ(columns_of(result.finds[0])[1], "7");
    EXPECT_EQ(columns_of(result.finds[0])[4], "no such register (exception 2)");
    expect_reads();
}

TEST_F(BusScanTest, EndsAPollThatWasAnswered) {
    add(ScanProtocol::Full, "9600,N,8,1", ",address=5");
    EXPECT_EQ(run(plain(ScanProtocol::Full)).finds.size(), 1U);
    for (std::size_t i = 0; i < written.size(); ++i)
        if (written[i].bytes == "5\5") {
            EXPECT_EQ(written.at(i + 1).bytes, "\n\4");
        }
    EXPECT_EQ(sent("5\5"), 2);
    EXPECT_EQ(sent("\n\4"), 2);
}

TEST_F(BusScanTest, SaysWhatItMeetsOnTheLine) {
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=3,delay=30");
    add(ScanProtocol::Full, "9600,N,8,1", ",address=2");
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.protocols.push_back(ScanProtocol::Full);
    options.baud_rates = {9600, 19200};
    options.last_address = 20;
    echoes = true;
    not_supported = "19200,N,8,1";
    const ScanResult echoed = run(options);
    EXPECT_EQ(std::ranges::count(echoed.finds, true, &ScanFind::echo), 2);
    EXPECT_EQ(unfinished_text(echoed), "");
    EXPECT_EQ(notes.remarks,
              (Texts{"The line echoes what is sent: a two-wire converter, or a plug.",
                     "The port does not have the settings 19200,N,8,1."}));
    babbles = true;
    echoes = false;
    notes.remarks.clear();
    const ScanResult busy = run(options);
    EXPECT_TRUE(busy.finds.empty());
    EXPECT_GT(busy.unasked, 30U);
    EXPECT_EQ(unfinished_text(busy),
              "Not finished: somebody else sends on this line (9600,N,8,1), so that " +
                  std::to_string(busy.unasked) +
                  " requests were not sent. Silence whoever sends, and scan again.");
    EXPECT_LT(busy.taken_ms, 15'000);
    ASSERT_FALSE(notes.remarks.empty());
    EXPECT_EQ(notes.remarks.back(),
              "Somebody else sends on this line at 9600,N,8,1: it does not fall silent.");
}

TEST_F(BusScanTest, LaysStrayBytesAtNobodysDoor) {
    for (const double every : {500, 2300}) {
        SCOPED_TRACE(every);
        members.clear();
        notes = {};
        add(ScanProtocol::Modbus, "9600,N,8,1", ",address=3");
        add(ScanProtocol::Full, "9600,N,8,1", ",address=12,delay=60");
        strays_every = every;
        ScanOptions options = plain(ScanProtocol::Modbus);
        options.protocols.push_back(ScanProtocol::Full);
        options.last_address = 33;
        const ScanResult result = run(options);
        EXPECT_EQ(notes.finds.size(), 2U);
        EXPECT_FALSE(result.garbled);
        EXPECT_EQ(notes.remarks,
                  Texts{"Bytes come at 9600,N,8,1 that nobody was asked for: somebody else sends, "
                        "or the line is disturbed. The scan takes longer for it."});
    }
}

TEST_F(BusScanTest, GivesThePortBackAtOnceWhenItIsCancelled) {
    std::int16_t channel = 1;
    table.open_port(channel);
    for (const auto& [protocol, baud] :
         std::vector<std::pair<ScanProtocol, int>>{{ScanProtocol::Modbus, 9600},
                                                   {ScanProtocol::Full, 1200},
                                                   {ScanProtocol::Xon, 300},
                                                   {ScanProtocol::Tellura, 38400}})
        for (double after = 0.5; after < 400; after += 23.7) {
            ASSERT_EQ(opened_with, "9600,N,8,1");
            ScanOptions options = plain(protocol);
            options.baud_rates = {baud};
            const double begun = tick.now();
            notes.on_event = [&] {
                EXPECT_EQ(link.refusal(), "The line is in use by Bus Scan.");
                return tick.now() < begun + after;
            };
            const ScanResult result = run(options);
            if (result.how == ScanEnd::Completed) continue; // Xon asks once
            EXPECT_EQ(result.how, ScanEnd::Cancelled);
            // A poll is ended in order: two characters at 1200 baud.
            EXPECT_LT(tick.now() - begun, after + (protocol == ScanProtocol::Full ? 37 : 20));
        }
    EXPECT_EQ(opened_with, "9600,N,8,1");
    EXPECT_TRUE(link.refusal().empty());
}

TEST_F(BusScanTest, KeepsItsFindsWhenTheLineIsLost) {
    std::int16_t channel = 0;
    table.open_port(channel);
    add(ScanProtocol::Modbus, "19200,N,8,1", ",address=3");
    lost_after = 20;
    ScanOptions options = plain(ScanProtocol::Modbus);
    options.baud_rates = {19200};
    const ScanResult result = run(options);
    EXPECT_EQ(result.how, ScanEnd::Failed);
    EXPECT_TRUE(result.reason.starts_with("The line was lost")) << result.reason;
    EXPECT_EQ(result.finds.size(), 1U);
    EXPECT_EQ(state.gCommDevice[0]->Settings(), "9600,N,8,1");
    EXPECT_NE(log_text().find("bus_scan"), std::string::npos);
    EXPECT_TRUE(dialogs.shown.empty());
    EXPECT_TRUE(table.line_use().holder().empty());
}

TEST(ScanPlan, BeginsWithWhatIsLikely) {
    ScanOptions options;
    options.present = testing::line_of("19200,E,8,1");
    options.data_bits = {8, 7};
    const std::vector<ScanStep> plan = plan_scan(options);
    Texts settings;
    for (const ScanStep& step : plan)
        if (step.addresses == std::vector<int>{1} && step.protocol == ScanProtocol::Modbus)
            settings.push_back(settings_text(step.line));
    ASSERT_EQ(settings.size(), 12U); // none with 7 bits
    settings.resize(4);
    EXPECT_EQ(settings, (Texts{"19200,E,8,1", "9600,N,8,1", "19200,N,8,1", "38400,N,8,1"}));
    EXPECT_EQ(plan.back().protocol, ScanProtocol::Full);
    EXPECT_EQ(settings_text(plan.back().line), "4800,O,7,1");
    EXPECT_EQ(plan.back().addresses.front(), 2);
    EXPECT_EQ(plan.back().addresses.back(), 0);
    options.present = testing::line_of("1200,E,7,2");
    EXPECT_EQ(settings_text(plan_scan(options).front().line), "1200,E,7,2")
        << "although not chosen";
    options.fixed_settings = true;
    EXPECT_EQ(probes_of(plan_scan(options)), 247U + 33 + 1 + 2 * 32) << "each once";
    options.fixed_settings = false;
    options.only_chosen = true;
    EXPECT_EQ(settings_text(plan_scan(options).front().line), "9600,N,8,1");
    options.first_address = options.last_address = 0;
    options.protocols = {ScanProtocol::Modbus};
    EXPECT_TRUE(plan_scan(options).empty()); // everybody's address, which nobody answers
}

TEST_F(BusScanTest, ADeviceThatIsOpenHereUnderAnotherNumberIsTold) {
    const testing::PtyPair wire(testing::PtyPair::Slave::KeepOpen);
    std::filesystem::create_symlink(wire.path(), dir.file("by-id"));
    make_port = [&] {
        return std::make_unique<LinePort>(
            [&](int number) { return number == 1 ? dir.file("by-id") : wire.path(); },
            open_serial_device);
    };
    build({"1;9600,N,8,1;1"});
    std::int16_t channel = 0;
    table.open_port(channel);
    EXPECT_EQ(run(plain(ScanProtocol::Modbus)).reason,
              "Port 2 is in use by this program as port 1: both numbers stand for one device.");
}

} // namespace
} // namespace pelvan
