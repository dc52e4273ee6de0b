// The window on a simulated controller: what is asked, listed and saved, and how it is ended.
#include "badrequests/bad_requests_form.h"

#include <gtest/gtest.h>

#include "support/configuration.h"
#include "support/serial_rig.h"
#include "support/simulated_ports.h"

namespace pelvan::testing {
namespace {

class BadRequestsForm : public ::testing::Test, public SerialRig {
  protected:
    BadRequestsForm() {
        tick.step_ms = 0.5;
        configure_devices(dir, std::vector<std::string>(4, "simulated:742"));
        rebuild();
        form.Show();
        dialogs.answers = {MessageAnswer::Yes};
    }

    SimulatedPorts simulated{*this};
    frm_BadRequests form{services, gate, link, [] { return 3; }};
};

TEST_F(BadRequestsForm, SendsAfterAQuestionListsAndSaves) {
    EXPECT_EQ(form.cmb_Protocol.Text(), "Tellura/AB");
    EXPECT_TRUE(form.cmb_Check.Visible());
    form.cmb_Protocol.set_ListIndex(1);
    EXPECT_FALSE(form.cmb_Check.Visible());
    EXPECT_EQ(form.txt_Read.Text() + " " + form.txt_Other.Text(), "0 247");
    form.txt_Wait.set_Text("never");
    int selected = 0; // what is typed next replaces it
    const auto counted = form.txt_Wait.watch_select_all([&] { ++selected; });
    form.cmdStart.press();
    EXPECT_GE(selected, 1);
    EXPECT_EQ(dialogs.texts().back(), "The time to wait is 0.1 to 10 seconds.");
    form.txt_Wait.set_Text("0.3");
    dialogs.answers = {MessageAnswer::No, MessageAnswer::Yes};
    form.cmdStart.press();
    EXPECT_EQ(dialogs.shown.back().buttons, MessageButtons::YesNoPreferNo);
    EXPECT_EQ(link.writes(), 0U) << "nobody agreed";
    EXPECT_FALSE(form.cmdSave.Enabled());
    desktop.on_turn = [&] { EXPECT_FALSE(form.cmdStart.Enabled() || form.txt_Address.Enabled()); };
    EXPECT_TRUE(form.txt_Address.KeyDown(Key::Enter));
    EXPECT_EQ(form.lbl_Status.Caption(), "14 passed.");
    EXPECT_EQ(form.lst_Lines.ListCount(), 14);
    EXPECT_EQ(frm_BadRequests::columns_of(form.lst_Lines.List(1)),
              (std::vector<std::string>{"Wrong CRC", "01 03 00 00 00 01 84 FF", "silence",
                                        "nothing", "passed"}));
    EXPECT_TRUE(form.cmdStart.Enabled());
    dialogs.files = {dir.file("report.txt")};
    form.mnuSave.choose();
    EXPECT_TRUE(read_file(dir.file("report.txt")).ends_with("\r\n14 passed.\r\n"));
}

TEST_F(BadRequestsForm, EscapeAndClosingEndASeriesAtOnce) {
    const auto end_by = [&](auto how) {
        dialogs.answers = {MessageAnswer::Yes};
        desktop.on_turn = [&, how] {
            if (form.lst_Lines.ListCount() == 2) how();
        };
        form.cmdStart.press();
        EXPECT_EQ(form.lbl_Status.Caption(), "2 passed. Cancelled.");
        EXPECT_FALSE(form.running() || form.cmdCancel.Enabled());
    };
    end_by([&] { EXPECT_TRUE(form.cmdCancel.KeyDown(Key::Escape)); });
    EXPECT_TRUE(form.Visible());
    EXPECT_FALSE(form.cmdCancel.KeyDown(Key::Escape)) << "nothing runs";
    end_by([&] { EXPECT_FALSE(form.Unload()); });
    EXPECT_FALSE(form.Visible());
}

TEST_F(BadRequestsForm, ALineInUseDisablesTheStart) {
    Link other{table, countdowns, dialogs, log, "Save/Restore Setup"};
    const LineClaim claim = other.claim();
    EXPECT_FALSE(form.cmdStart.Enabled());
    EXPECT_EQ(form.cmdStart.ToolTipText(), "The line is in use by Save/Restore Setup.");
}

} // namespace
} // namespace pelvan::testing
