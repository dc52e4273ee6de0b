// Profiles on the line of a simulated controller.
#pragma once

#include "profile/profile_writer.h"
#include "support/recording_listener.h"
#include "support/simulated_rig.h"

namespace pelvan::testing {

class LineTest : public ::testing::Test {
  protected:
    void open(const std::string& device) {
        rig = std::make_unique<SimulatedRig>(device);
        ui = {};
        ui.answers.assign(100, true);
        cancel = {};
    }
    [[nodiscard]] TransferContext context() {
        return {rig->link,          rig->modbus, rig->clock, rig->dir.path(),
                DeviceAddress("1"), ui,          cancel};
    }
    [[nodiscard]] const ProfileFormat& format() const { return model.format; }

    /// A profile with steps of every kind in turn, every field a value of its own.
    [[nodiscard]] Profile example(int number, int steps) const {
        Profile profile = new_profile(format(), number);
        EXPECT_EQ(set_profile_name(format(), profile, "NUMBER " + std::to_string(number)), "");
        profile.steps.clear();
        for (int i = 0; i + 1 < steps; ++i)
            profile.steps.push_back(filled(1 + i % 4, number * 100 + i));
        profile.steps.push_back(filled(0, number));
        return profile;
    }
    [[nodiscard]] ProfileSet examples(const std::vector<int>& numbers, int steps) const {
        ProfileSet set;
        for (const int number : numbers)
            set.emplace(number, example(number, steps));
        return set;
    }
    /// What the controller holds, seen past the line.
    [[nodiscard]] ProfileSet held() const {
        ProfileSet set;
        for (int number = 1; number <= rig->get(format().highest_profile.number); ++number) {
            rig->set({{format().profile_number.number, number}});
            const int steps = *rig->get(format().step_count.number);
            if (steps == 0) continue;
            Profile& profile = set[number];
            profile.number = number;
            for (const ProfileField& field : format().own)
                profile.own[field.number] = *rig->get(field.number);
            for (int step = 1; step <= steps; ++step) {
                rig->set({{format().step_number.number, step}});
                profile.steps.push_back({*rig->get(format().step_type.number), {}});
                for (int field = 4004; field <= 4017; ++field)
                    if (const auto value = rig->get(field))
                        profile.steps.back().fields[field] = *value;
            }
        }
        return set;
    }

    const ProfileModel model = *load_profile_model(PELVAN_SAMPLES, 742).model;
    std::unique_ptr<SimulatedRig> rig;
    RecordingListener ui;
    CancelFlag cancel;

  private:
    [[nodiscard]] ProfileStep filled(int type, int salt) const {
        const StepKind& kind = format().kinds.at(type);
        ProfileStep step = new_step(kind);
        for (const ProfileField& field : kind.fields)
            step.fields[field.number] =
                field.min + (salt * 7 + field.number) % (field.max - field.min + 1);
        return step;
    }
};

} // namespace pelvan::testing
