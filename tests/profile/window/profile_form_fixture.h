// The profile window's form on a simulated controller, driven as a person would.
#pragma once

#include "profile/window/profile_logic_form.h"
#include "support/simulated_rig.h"

namespace pelvan::testing {

class ProfileForm : public ::testing::Test {
  protected:
    void open(const std::string& device = "simulated:742") {
        rig = std::make_unique<SimulatedRig>(device);
        rig->desktop.on_turn = [this] {
            if (on_turn) on_turn();
        };
        form = std::make_unique<frm_ProfileLogic>(rig->services, rig->link, rig->modbus);
        form->Show();
    }
    void answer(std::deque<MessageAnswer> answers) { rig->dialogs.answers = std::move(answers); }
    [[nodiscard]] Sheet& steps() { return form->step_sheet(); }
    [[nodiscard]] int column(const std::string& heading) {
        for (int i = 0; i < steps().columns(); ++i)
            if (steps().heading(i).starts_with(heading)) return i;
        ADD_FAILURE() << heading;
        return 0;
    }
    [[nodiscard]] SheetCell cell(int row, const std::string& heading) {
        return steps().cell(row, column(heading));
    }
    /// Types a text into a step's cell; the sentence that refuses it.
    std::string type(int row, const std::string& heading, const std::string& text) {
        const std::string problem = steps().problem(row, column(heading), text);
        steps().enter(row, column(heading), text);
        return problem;
    }
    /// Half an hour up to 100 degrees, an hour there, and the end.
    void make_profile() {
        form->menu.mnuNew.choose();
        form->menu.mnuInsert.choose();
        form->menu.mnuInsert.choose();
        type(0, "Kind", "ramp in a time");
        type(0, "min", "30");
        type(0, "set point 1", "100");
        type(1, "h", "1");
    }
    void write_profile() {
        answer({MessageAnswer::Yes});
        form->menu.mnuWrite.choose();
    }
    void start_profile() {
        rig->dialogs.inputs = {"1"};
        answer({MessageAnswer::Yes});
        form->menu.mnuStart.choose();
    }
    [[nodiscard]] std::string state() const { return form->run.lbl_State.Caption(); }
    /// So much time passes, then the timer ticks.
    void tick(double seconds) {
        rig->tick.advance(seconds * 1000);
        form->run.tmr_Poll.Tick();
    }

    std::unique_ptr<SimulatedRig> rig;
    std::unique_ptr<frm_ProfileLogic> form;
    std::function<void()> on_turn;
};

} // namespace pelvan::testing
