// A whole setup from a simulated controller and back.
#include "scripted_controller.h"
#include "support/simulated_rig.h"

namespace pelvan::testing {

using Values = std::map<int, int>;

class RoundTrip : public ::testing::TestWithParam<std::tuple<const char*, bool>>,
                  public SimulatedRig {
  protected:
    RoundTrip() : SimulatedRig(std::get<0>(GetParam())) {}
    /// Everything that can be saved of the registers, each set to a value of its own before when
    /// there is a salt.
    Values values(std::optional<int> salt = {}) {
        Values out;
        for (const auto& [number, reg] : station->controller.table().all()) {
            const bool resets = number == 25 || number == 1415 || number == 1602 || number == 1789;
            const bool acts = number == 4122 || (number >= 4101 && number <= 4103);
            if (reg.access != simulator::Access::ReadWrite || !reg.active || resets || acts)
                continue;
            if (salt) set({{number, reg.min + (number + *salt) % (reg.max - reg.min + 1)}});
            out[number] = *get(number);
        }
        return out;
    }
    /// A profile with a step of every kind.
    void fill_profile(int number) {
        set({{4000, number}, {4002, 1}, {4050, 65 + number}, {4059, 66 + number}});
        for (int i = 1; i <= 4; ++i)
            set({{4001, i}, {4002, 3}, {4003, i}});
        set({{4001, 1}, {4007, -100 * number}, {4004, 1}, {4005, 2}, {4006, 3}, {4009, 4}});
        set({{4011, number}, {4001, 2}, {4012, 30}, {4001, 4}, {4013, number}, {4015, 10}});
        set({{4001, 5}, {4016, 3}, {4017, -5 * number}});
    }
    /// Everything that the profile registers show.
    Values profiles() {
        Values out;
        for (int profile = 1; profile <= get(4041); ++profile) {
            set({{4000, profile}});
            out[profile * 100000] = *get(4040);
            for (int step = 1; step <= get(4040); ++step) {
                set({{4001, step}});
                for (int number = 4003; number <= 4059; ++number)
                    if (const auto value = get(number); value && number != 4041)
                        out[profile * 100000 + step * 1000 + number - 4000] = *value;
            }
        }
        return out;
    }
    template <class Transfer, class... File> std::string run(const File&... name) {
        ui = {};
        ui.answers.assign(40, true);
        ui.file = file;
        const auto result =
            Transfer(TransferContext{link, modbus, clock, dir.path(), DeviceAddress("1"), ui, flag,
                                     std::get<1>(GetParam())})
                .run(name...);
        EXPECT_TRUE(result.completed) << ::testing::PrintToString(ui.messages);
        EXPECT_EQ(result.faults, result.differences) << ::testing::PrintToString(ui.errors);
        return ui.messages.back();
    }

    RecordingListener ui;
    CancelFlag flag;
    const std::string file = dir.file("setup.txt");
};

TEST_P(RoundTrip, RestoresEveryRegisterAndProfileAndFindsWhatDiffers) {
    const Values before = values(1);
    for (const int number : {1, 2, 3})
        fill_profile(number);
    set({{4000, 2}, {4002, 2}}); // a number without a profile between two
    fill_profile(4);
    const Values profiles_before = profiles();
    ASSERT_EQ(profiles_before.at(200000), 0);
    run<Download>();

    ASSERT_NE(values(2), before);
    set({{25, 1}});
    for (int number = 1; number <= 6; ++number) {
        set({{4000, number}});
        if (get(4042) == 0) set({{4002, 1}});
        set({{4002, 3}});
    }
    run<Upload>(file);
    EXPECT_EQ(run<Comparison>(file), "The controller holds what the file says.");
    EXPECT_EQ(values(), before);
    EXPECT_EQ(profiles(), profiles_before);
    EXPECT_EQ(get(25), 0);

    set({{1500, 500}, {4000, 3}, {4002, 2}, {4000, 1}, {4001, 5}, {4017, 1234}});
    EXPECT_EQ(run<Comparison>(file), "The controller differs from the file in 3 registers.");
    const std::string salted = std::to_string(before.at(1500));
    EXPECT_EQ(ui.errors,
              (Lines{entry("Controller holds: 500", "1500", salted, "Different"),
                     entry("Controller holds: 1234", "4017", "-5", "Different"),
                     entry("Controller holds: no such profile", "4000", "3", "Different")}));
}

class RestartTest : public RoundTrip {
  protected:
    /// Of the requests to profile registers one meets a controller that starts anew, which shows
    /// its first profile and step afterwards.
    void restart_at(int wanted) {
        fate = [this, wanted, count = 0](const Request& request) mutable {
            if (request.number < 4000 || request.number >= 4100) return Fate::Answered;
            if (++count != wanted) return Fate::Answered;
            set({{4000, 1}});
            return Fate::NotReceived;
        };
    }
    [[nodiscard]] std::string body() const {
        const std::string text = read_file(file);
        return text.substr(text.find("300 "));
    }
};

TEST_P(RestartTest, AControllerThatForgetsWhatIsSelectedGetsAndGivesEachProfileItsOwn) {
    write_file(dir.file("Download Sequences/742.cds"), "YES\n4000\n4002\n4040\n300\n");
    for (const int number : {1, 2})
        fill_profile(number);
    const Values profiles_before = profiles();
    run<Download>();
    const std::string whole = body();
    constexpr int kApart = 5;
    for (int at = 2; at < 90; at += kApart) {
        restart_at(at);
        run<Download>();
        EXPECT_EQ(body(), whole) << at;
        restart_at(at);
        EXPECT_EQ(run<Comparison>(file), "The controller holds what the file says.") << at;
        restart_at(at);
        run<Upload>(file);
        EXPECT_EQ(profiles(), profiles_before) << at;
    }
}

INSTANTIATE_TEST_SUITE_P(Lines, RestartTest,
                         ::testing::Combine(::testing::Values("simulated:742"), ::testing::Bool()));

INSTANTIATE_TEST_SUITE_P(
    Lines, RoundTrip,
    ::testing::Combine(::testing::Values("simulated:742", "simulated:742,lost=0.02,seed=5",
                                         "simulated:742,lost=0.02,late=0.02,seed=12"),
                       ::testing::Bool()));

} // namespace pelvan::testing
