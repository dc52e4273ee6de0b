// A whole setup from a simulated controller and back, through the program as it is joined.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "app/application.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan::testing {
namespace {

namespace fs = std::filesystem;
using Values = std::map<int, int>;

class RoundTrip : public ::testing::Test {
  protected:
    void start(const std::string& device) {
        app.reset();
        write_file(dir.file("pelvan7.ini"),
                   "[COMMS CONTROLS]\r\n"
                   "DEVICE 0 COMM PORT =1\r\nDEVICE 0 PORT SETTING =9600,N,8,1\r\n"
                   "DEVICE 1 COMM PORT =2\r\nDEVICE 1 PORT SETTING =9600,N,8,1\r\n"
                   "[SERIAL DEVICES]\r\nPORT 2=" +
                       device + "\r\n");
        fs::create_directories(dir.file("Reg Downloads"));
        fs::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                 dir.file("Download Sequences"),
                 fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        app = std::make_unique<Application>(Services{tick, clock, dialogs, desktop, dir.path()},
                                            open_serial_device);
        app->session.config.gIniFile = dir.file("pelvan7.ini");
        app->channels.init_comms();
    }

    std::string exchange(int function, int number, int value) {
        std::array<float, 3> values{0, static_cast<float>(value), kValueListEnd};
        const std::string frame = app->modbus.ModbusBuildRequest(
            static_cast<std::int16_t>(function), 1, static_cast<float>(number), values);
        // A faulty line may swallow replies of this check, too.
        std::string reply;
        for (int i = 0; i < 10 && reply.empty(); ++i)
            reply = app->link.transmit(kModbusChannel, frame, 2000, 1);
        return app->modbus.ModbusDecodeDecimal(0, reply);
    }
    void set(int number, int value) {
        const std::string reply = exchange(6, number, value);
        ASSERT_TRUE(reply.starts_with("1 6 ")) << number << " = " << value << ": " << reply;
    }
    int get(int number) {
        EXPECT_TRUE(exchange(3, number, 1).starts_with("1 3 2 ")) << number;
        return static_cast<int>(app->session.modbus.gReplyValues[1]);
    }

    /// Registers of the sequence file that the controller lets be written, with their limits.
    const std::map<std::uint16_t, simulator::Register>& writable() {
        static const std::map<std::uint16_t, simulator::Register> found = [] {
            std::map<std::uint16_t, simulator::Register> out;
            const simulator::Controller controller(742);
            for (const auto& [number, reg] : controller.table().all())
                if (reg.access == simulator::Access::ReadWrite && reg.active && number != 25 &&
                    number != 1415 && number != 1602 && number != 1789)
                    out.emplace(number, reg);
            return out;
        }();
        return found;
    }
    void set_registers(unsigned seed) {
        std::mt19937 random(seed);
        for (const auto& [number, reg] : writable()) {
            const auto span = static_cast<unsigned>(reg.max - reg.min + 1);
            set(number, reg.min + static_cast<int>(random() % span));
        }
    }
    Values registers() {
        Values out;
        for (const auto& [number, reg] : writable())
            out[number] = get(number);
        return out;
    }

    void create_profile(int number) {
        set(4000, number);
        set(4002, 1);
    }
    /// A profile with a step of every kind.
    void fill_profile(int number, int salt) {
        create_profile(number);
        for (int i = 0; i < 10; ++i)
            set(4050 + i, 65 + salt + i);
        for (int i = 1; i <= 4; ++i) {
            set(4001, i);
            set(4002, 3);
            set(4003, i);
        }
        set(4001, 1);
        for (const int field : {4004, 4005, 4006, 4009, 4011})
            set(field, salt % 5 + 1);
        set(4007, -100 * salt);
        set(4001, 2);
        set(4012, 30 + salt);
        set(4001, 4);
        set(4013, number);
        set(4015, 10 * salt);
        set(4001, 5);
        set(4016, 3);
        set(4017, -5 * salt);
    }
    /// Everything that the profile registers show; the registers that a step lacks are left out.
    Values profiles() {
        Values out;
        const int highest = get(4041);
        for (int profile = 1; profile <= highest; ++profile) {
            set(4000, profile);
            const int steps = get(4040);
            out[profile * 100000] = steps;
            for (int step = 1; step <= steps; ++step) {
                set(4001, step);
                for (int number = 4003; number <= 4059; ++number) {
                    if (number != 4041 && exchange(3, number, 1).starts_with("1 3 2 "))
                        out[profile * 100000 + step * 1000 + number - 4000] =
                            static_cast<int>(app->session.modbus.gReplyValues[1]);
                }
            }
        }
        return out;
    }

    void save() {
        dialogs.files.push_back(file());
        dialogs.answers.assign(40, MessageAnswer::Yes);
        app->transfer.cmdDownload.press();
        ASSERT_TRUE(app->transfer.run().completed) << ::testing::PrintToString(dialogs.texts());
    }
    void restore() {
        dialogs.files.push_back(file());
        dialogs.answers.assign(40, MessageAnswer::Yes);
        app->transfer.cmdUpload.press();
    }
    [[nodiscard]] std::string file() const { return dir.file("Reg Downloads/setup.txt"); }

    TempDir dir;
    FakeTick tick;
    FakeClock clock;
    FakeDialogs dialogs;
    FakeDesktop desktop;
    std::unique_ptr<Application> app;
};

class RoundTripOnLine : public RoundTrip, public ::testing::WithParamInterface<const char*> {};

TEST_P(RoundTripOnLine, RestoresEveryRegisterAndProfile) {
    start(GetParam());
    tick.step_ms = 0.5;
    set_registers(1);
    fill_profile(1, 1);
    fill_profile(2, 2);
    fill_profile(3, 3);
    set(4000, 2); // a number without a profile between two
    set(4002, 2);
    fill_profile(4, 4);
    const Values before = registers();
    const Values profiles_before = profiles();
    ASSERT_EQ(profiles_before.at(200000), 0);
    save();
    EXPECT_EQ(app->transfer.run().faults, 0)
        << ::testing::PrintToString(app->transfer.List2.List(0));
    EXPECT_TRUE(read_file(file()).ends_with("\r\n25 0\r\n"));

    set_registers(2);
    set(25, 1);
    for (int number = 1; number <= 6; ++number) {
        set(4000, number);
        if (get(4042) == 0) create_profile(number);
        set(4002, 3);
    }
    ASSERT_NE(registers(), before);

    app->transfer.chkCompare.set_Value(1);
    restore();
    ASSERT_TRUE(app->transfer.run().completed) << ::testing::PrintToString(dialogs.texts());
    EXPECT_EQ(app->transfer.run().faults, 0)
        << ::testing::PrintToString(app->transfer.List2.List(0));
    EXPECT_EQ(dialogs.texts().back(), "The controller holds what the file says.");
    EXPECT_EQ(registers(), before);
    EXPECT_EQ(profiles(), profiles_before);
    EXPECT_EQ(get(25), 0);
}

INSTANTIATE_TEST_SUITE_P(Lines, RoundTripOnLine,
                         ::testing::Values("simulated:742", "simulated:742,lost=0.02,seed=5",
                                           "simulated:742,lost=0.02,late=0.02,seed=11"));

TEST_F(RoundTrip, AnotherModelIsRefusedAfterTheErase) {
    start("simulated:742");
    tick.step_ms = 0.5;
    save();
    start("simulated:730");
    set(1500, 77);
    restore();
    EXPECT_FALSE(app->transfer.run().completed);
    EXPECT_EQ(dialogs.texts().back(), "Model number from the controller does not match the model "
                                      "number from the text file so Upload of values is canceled.");
    EXPECT_EQ(get(1500), -15) << "erased although nothing was restored";
    EXPECT_TRUE(app->transfer.cmdUpload.Enabled());
}

TEST_F(RoundTrip, ProfilesThatOnlyTheNumberingNeedsAreGoneAtTheEnd) {
    start("simulated:742,lost=0.02,seed=3");
    tick.step_ms = 0.5;
    fill_profile(1, 1);
    const Values before = profiles();
    save();
    std::string text = read_file(file());
    text.replace(text.find("\r\n4000 1\r\n") + 2, 6, "4000 5");
    write_file(file(), text);
    restore();
    ASSERT_TRUE(app->transfer.run().completed) << ::testing::PrintToString(dialogs.texts());
    const Values after = profiles();
    EXPECT_EQ(get(4041), 5);
    for (const int number : {1, 2, 3, 4})
        EXPECT_EQ(after.at(number * 100000), 0) << number;
    EXPECT_EQ(after.size(), before.size() + 4);
    for (const auto& [key, value] : before)
        EXPECT_EQ(after.at(key + 400000), value) << key;
}

TEST_F(RoundTrip, CompareListsWhatDiffers) {
    start("simulated:742");
    tick.step_ms = 0.5;
    fill_profile(1, 1);
    save();
    set(1500, 500);
    set(4000, 1);
    set(4001, 5);
    set(4017, 1234);
    dialogs.files.push_back(file());
    app->transfer.cmdCompare.press();
    EXPECT_EQ(dialogs.texts().back(), "The controller differs from the file in 2 registers.");
    EXPECT_EQ(app->transfer.List2.List(0),
              "Controller holds: 500               1500           -15    Different");
    EXPECT_EQ(app->transfer.List2.List(1),
              "Controller holds: 1234               4017           -5    Different");
}

} // namespace
} // namespace pelvan::testing
