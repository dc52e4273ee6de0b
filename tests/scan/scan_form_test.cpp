#include "scan/scan_form.h"

#include "bus_rig.h"

namespace pelvan {
namespace {

using testing::BusRig;

class ScanFormTest : public ::testing::Test, protected BusRig, private ScanHost {
  protected:
    ScanFormTest() {
        testing::write_file(config.gIniFile, testing::read_file(config.gIniFile) +
                                                 "[SERIAL DEVICES]\r\nPORT 2=bus\r\n");
        form.Show();
    }
    [[nodiscard]] const std::string& status() const { return form.lbl_Status.Caption(); }
    void choose_little() {
        for (std::size_t i = 1; i < form.chk_Baud.size(); ++i)
            form.chk_Baud[i].set_Value(0);
        for (std::size_t i = 1; i < form.chk_Parity.size(); ++i)
            form.chk_Parity[i].set_Value(0);
    }

    std::vector<std::string> used;
    frm_BusScan form{services, config, scan_link, scan, *this};

  private:
    [[nodiscard]] int selected_protocol() const override { return 1; }
    std::string use_settings(const ScanFind& find, std::int16_t port, int line_mode) override {
        used.push_back(find_text(find) + " on " + std::to_string(port) + ", mode " +
                       std::to_string(line_mode));
        return "Used.";
    }
};

TEST_F(ScanFormTest, ScansAndUsesWhatItFound) {
    add(ScanProtocol::Modbus, "9600,N,8,1", ",address=7");
    add(ScanProtocol::Xon, "9600,N,8,1", "");
    EXPECT_EQ(form.cmb_Port.Text(), "2: bus");
    EXPECT_FALSE(form.cmd_Use.Enabled());
    EXPECT_EQ(status(), "A scan only reads: it changes nothing in a controller.");
    choose_little();
    EXPECT_EQ(form.lbl_Estimate.Caption(),
              "About 35 s for 345 requests, the most likely ones first.");
    bool working = false;
    desktop.on_turn = [&] {
        working = working || (status().starts_with("Modbus at 9600,N,8,1, address ") &&
                              status().ends_with(" left, 1 controller found."));
        EXPECT_TRUE(!form.cmd_Start.Enabled() && form.cmd_Cancel.Enabled() &&
                    !form.txt_First.Enabled() && !form.cmd_Use.Enabled());
    };
    form.cmd_Start.press();
    EXPECT_TRUE(working);
    EXPECT_TRUE(status().starts_with("2 controllers found in ")) << status();
    EXPECT_TRUE(
        form.lst_Found.List(0).starts_with("Modbus\t7\t9600,N,8,1\t742\tregister 0 holds 742\t"));
    EXPECT_EQ(form.lst_Found.ListIndex(), 0);
    form.lst_Found.set_ListIndex(1);
    EXPECT_TRUE(form.lst_Found.KeyDown(Key::Enter));
    EXPECT_EQ(used, (std::vector<std::string>{"Xon, 9600,N,8,1 on 2, mode 1"}));
    EXPECT_EQ(status(), "Used.");
}

TEST_F(ScanFormTest, SaysWhatCannotBeTriedAndHowItEnded) {
    choose_little();
    const std::vector<std::tuple<TextBox*, std::string, std::string>> wrong{
        {&form.txt_First, "-1", "The first address is 0 to 247."},
        {&form.txt_First, "200x", "The first address is 0 to 247."},
        {&form.txt_Last, "248", "The last address is 0 to 247."},
        {&form.txt_Last, "", "The last address is 0 to 247."},
        {&form.txt_Patience, "9", "Patience is 10 to 2000 ms."}};
    for (const auto& [box, text, sentence] : wrong) {
        const std::string before = box->Text();
        box->set_Text(text);
        EXPECT_EQ(form.lbl_Estimate.Caption(), sentence);
        form.cmd_Start.press();
        EXPECT_EQ(dialogs.texts().back(), sentence);
        box->set_Text(before);
    }
    form.chk_Baud[0].set_Value(0);
    EXPECT_EQ(form.lbl_Estimate.Caption(), "Choose a baud rate.");
    form.chk_Baud[0].set_Value(1);
    EXPECT_TRUE(written.empty());

    desktop.on_turn = [&] {
        // Goes when the scan has ended.
        if (tick.now() > 3000 && form.running()) {
            EXPECT_FALSE(form.Unload());
        }
    };
    form.cmd_Start.press();
    EXPECT_FALSE(form.Visible());
    EXPECT_TRUE(status().starts_with("Cancelled after ")) << status();
    desktop.on_turn = nullptr;
    form.Show();
    form.cmd_Start.press();
    EXPECT_TRUE(status().starts_with("No controller answered.")) << status();
    const LineClaim claim = link.claim();
    EXPECT_FALSE(form.cmd_Start.Enabled());
    EXPECT_EQ(form.cmd_Start.ToolTipText(), "The line is in use by another window.");
}

} // namespace
} // namespace pelvan
