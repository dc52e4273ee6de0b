// A whole setup from a simulated controller and back.
#include <gtest/gtest.h>

#include <filesystem>
#include <set>

#include "platform/line_port.h"
#include "recording_listener.h"
#include "simulator/line/device_text.h"
#include "simulator/line/simulated_line.h"
#include "simulator/line/simulator_registry.h"
#include "support/configuration.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "transfer/comparison.h"
#include "transfer/download.h"
#include "transfer/upload.h"

namespace pelvan::testing {
namespace {

using Values = std::map<int, int>;

class RoundTrip : public ::testing::Test {
  protected:
    RoundTrip() {
        configure_devices(dir, {"", "station"});
        channels.init_comms();
        tick.step_ms = 0.5;
        std::filesystem::create_directory(dir.file("Reg Downloads"));
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
    }
    void start(const std::string& device) {
        station = simulator::make_station(*simulator::parse_simulated_device(device));
    }
    void set_all(const std::vector<std::pair<int, int>>& values) {
        for (const auto& [number, value] : values)
            ASSERT_EQ(station->controller.write(static_cast<std::uint16_t>(number),
                                                static_cast<std::int16_t>(value)),
                      simulator::ExceptionCode::None)
                << number << " = " << value;
    }
    void set(int number, int value) { set_all({{number, value}}); }
    /// Nothing for a register that is not there now.
    std::optional<int> get(int number) {
        std::int16_t value = 0;
        if (station->controller.read(static_cast<std::uint16_t>(number), value) !=
            simulator::ExceptionCode::None)
            return {};
        return value;
    }

    /// Registers that the controller lets be written, with their values and limits.
    [[nodiscard]] std::map<std::uint16_t, simulator::Register> writable() const {
        auto out = station->controller.table().all();
        std::erase_if(out, [](const auto& each) {
            const auto& [number, reg] = each;
            const std::set<int> own{25, 1415, 1602, 1789};
            return reg.access != simulator::Access::ReadWrite || !reg.active ||
                   own.contains(number);
        });
        return out;
    }
    void set_registers(int salt) {
        for (const auto& [number, reg] : writable())
            set(number, reg.min + (number + salt) % (reg.max - reg.min + 1));
    }
    [[nodiscard]] Values registers() const {
        Values out;
        for (const auto& [number, reg] : writable())
            out[number] = reg.value;
        return out;
    }

    /// A profile with a step of every kind.
    void fill_profile(int number) {
        set_all({{4000, number}, {4002, 1}, {4050, 65 + number}, {4059, 66 + number}});
        for (int i = 1; i <= 4; ++i)
            set_all({{4001, i}, {4002, 3}, {4003, i}});
        set_all({{4001, 1}, {4007, -100 * number}, {4004, 1}, {4005, 2}, {4006, 3}, {4009, 4}});
        set_all({{4011, number}, {4001, 2}, {4012, 30 + number}});
        set_all({{4001, 4}, {4013, number}, {4015, 10 * number}});
        set_all({{4001, 5}, {4016, 3}, {4017, -5 * number}});
    }
    /// Everything that the profile registers show.
    Values profiles() {
        Values out;
        for (int profile = 1; profile <= get(4041); ++profile) {
            set(4000, profile);
            out[profile * 100000] = *get(4040);
            for (int step = 1; step <= get(4040); ++step) {
                set(4001, step);
                for (int number = 4003; number <= 4059; ++number)
                    if (const auto value = get(number); value && number != 4041)
                        out[profile * 100000 + step * 1000 + number - 4000] = *value;
            }
        }
        return out;
    }
    template <class Transfer, class... File> void run(const File&... name) {
        ui = {};
        ui.answers.assign(40, true);
        ui.file = file;
        const auto result =
            Transfer(TransferContext{link, modbus, clock, dir.path(), DeviceAddress("1"), ui, flag})
                .run(name...);
        EXPECT_TRUE(result.completed) << ::testing::PrintToString(ui.messages);
        EXPECT_EQ(result.faults, result.differences) << ::testing::PrintToString(ui.errors);
    }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    ConfigState config{dir.file("pelvan7.ini")};
    SerialState serial;
    ModbusState state;
    frm_Comms comms{[this] {
        return std::make_unique<LinePort>([](int) { return std::string("station"); },
                                          [this](const std::string&, const LineSettings& settings) {
                                              return std::make_unique<simulator::SimulatedLine>(
                                                  line_clock, station, settings);
                                          });
    }};
    ErrorLog log{clock, dir.file("errors")};
    ChannelTable channels{serial, config, comms, dialogs, log};
    CountdownPool countdowns{serial, tick};
    Link link{channels, countdowns, dialogs, log};
    Modbus modbus{state};
    RecordingListener ui;
    CancelFlag flag;
    const std::string file = dir.file("Reg Downloads/setup.txt");
    std::shared_ptr<simulator::Station> station;
    std::shared_ptr<simulator::LineClock> line_clock = std::make_shared<simulator::LineClock>(tick);
};

class RoundTripOnLine : public RoundTrip, public ::testing::WithParamInterface<const char*> {};

TEST_P(RoundTripOnLine, RestoresEveryRegisterAndProfileAndFindsWhatDiffers) {
    start(GetParam());
    set_registers(1);
    for (const int number : {1, 2, 3})
        fill_profile(number);
    set_all({{4000, 2}, {4002, 2}}); // a number without a profile between two
    fill_profile(4);
    const Values before = registers();
    const Values profiles_before = profiles();
    ASSERT_EQ(profiles_before.at(200000), 0);
    run<Download>();

    set_registers(2);
    set(25, 1);
    for (int number = 1; number <= 6; ++number) {
        set(4000, number);
        if (get(4042) == 0) set(4002, 1);
        set(4002, 3);
    }
    ASSERT_NE(registers(), before);

    run<Upload>(file);
    run<Comparison>(file);
    EXPECT_EQ(ui.messages.back(), "The controller holds what the file says.");
    EXPECT_EQ(registers(), before);
    EXPECT_EQ(profiles(), profiles_before);
    EXPECT_EQ(get(25), 0);

    set_all({{1500, 500}, {4000, 3}, {4002, 2}, {4000, 1}, {4001, 5}, {4017, 1234}});
    run<Comparison>(file);
    EXPECT_EQ(ui.messages.back(), "The controller differs from the file in 3 registers.");
    EXPECT_EQ(ui.errors[0], "Controller holds: 500               1500           " +
                                std::to_string(before.at(1500)) + "    Different");
    EXPECT_EQ(ui.errors[1], "Controller holds: 1234               4017           -5    Different");
    EXPECT_EQ(ui.errors[2],
              "Controller holds: no such profile               4000           3    Different");
}

INSTANTIATE_TEST_SUITE_P(Lines, RoundTripOnLine,
                         ::testing::Values("simulated:742", "simulated:742,lost=0.02,seed=5",
                                           "simulated:742,lost=0.02,late=0.02,seed=11"));

TEST_F(RoundTrip, ProfilesThatOnlyTheNumberingNeedsAreGoneAtTheEnd) {
    start("simulated:742,lost=0.02,seed=3");
    fill_profile(1);
    const Values before = profiles();
    run<Download>();
    std::string text = read_file(file);
    text.replace(text.find("\r\n4000 1\r\n") + 2, 6, "4000 5");
    write_file(file, text);
    run<Upload>(file);
    Values expected{{100000, 0}, {200000, 0}, {300000, 0}, {400000, 0}};
    for (const auto& [key, value] : before)
        expected[key + 400000] = value;
    EXPECT_EQ(profiles(), expected);
}

} // namespace
} // namespace pelvan::testing
