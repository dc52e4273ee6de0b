// Sending a command script from the console.
#include <gtest/gtest.h>

#include "console_rig.h"
#include "support/error_of.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;
using testing::ConsoleRig;

class SetupFile : public ::testing::Test {
  protected:
    void choose_file(const std::string& text) {
        testing::write_file(rig.dir.file("setup.txt"), text);
        rig.dialogs.files.push_back(rig.dir.file("setup.txt"));
    }
    void send_with(int protocol_number) {
        console.opt_Protocol.set_Value(protocol_number);
        console.mnuSendSetupFile.choose();
    }

    ConsoleRig rig{Texts(4, "simulated:742"), protocol::kFull};
    frm_Pelvan5VB& console = rig.console;
};

TEST_F(SetupFile, GoesLineByLineInEachProtocol) {
    const std::vector<std::tuple<int, std::string, Texts, std::string>> cases{
        {protocol::kFull,
         "; a comment\r\n\r\n= SP1 50\r\n  ? SP1  \n",
         {"= SP1 50 > MESSAGE COMPLETED", "? SP1 > 50.0"},
         "2 lines sent"},
        {protocol::kXon, "= SP1 60", {"= SP1 60 > OK"}, "1 line sent"},
        {protocol::kModbus,
         "300 700\r\n319\t700\r\n",
         {"300 700 > 300 700", "319 700 > 319 700"},
         "2 lines sent"},
    };
    console.modbus.opt_DataFormat.set_Value(static_cast<int>(DataFormat::SmartDec));
    for (const auto& [number, text, pairs, summary] : cases) {
        rig.history.clear();
        rig.dialogs.shown.clear();
        choose_file(text);
        send_with(number);
        EXPECT_EQ(rig.dialogs.texts(), Texts{summary});
        EXPECT_EQ(rig.pairs(), pairs);
    }
    rig.dialogs.shown.clear();
    send_with(protocol::kTellura); // has no commands that a line could hold
    EXPECT_EQ(rig.dialogs.requests.size(), 3U);
    send_with(protocol::kFull); // no file chosen
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

TEST_F(SetupFile, AsksAtALineThatFails) {
    choose_file(
        "= SP1 50\r\n= SP1 5000\r\n= C1 3\r\n; note\r\n= SP1 51\r\n= XYZ 1\r\n= SP1 52\r\n");
    rig.dialogs.answers = {MessageAnswer::Retry, MessageAnswer::Skip, MessageAnswer::Skip,
                           MessageAnswer::Cancel};
    send_with(protocol::kFull);
    EXPECT_EQ(rig.dialogs.texts(),
              (Texts{"Line 2 failed:\n= SP1 5000\n\nInput out of limit",
                     "Line 2 failed:\n= SP1 5000\n\nInput out of limit",
                     "Line 3 failed:\n= C1 3\n\nRead only command",
                     "Line 6 failed:\n= XYZ 1\n\nCommand not found",
                     "2 lines sent, 2 skipped after a failure, cancelled with 2 left"}));
    EXPECT_EQ(rig.dialogs.shown[0].buttons, MessageButtons::RetrySkipCancel);
    EXPECT_EQ(rig.pairs().size(), 6U);
}

TEST_F(SetupFile, WhatFailsInModbusAndXon) {
    console.modbus.txt_Address.set_Text("1");
    choose_file("300\r\n300 1 2\r\n300 40000\r\nname value\r\n100 5\r\n65000 1\r\n");
    rig.dialogs.answers.assign(6, MessageAnswer::Skip);
    send_with(protocol::kModbus);
    EXPECT_EQ(rig.dialogs.shown.size(), 7U);
    EXPECT_EQ(rig.dialogs.shown[3].text, "Line 4 failed:\nname value\n\nBad REGISTER entered.");
    EXPECT_EQ(rig.pairs().size(), 2U); // the others were refused before they were sent
    rig.dialogs.shown.clear();
    choose_file("= C1 3\r\n");
    rig.dialogs.answers = {MessageAnswer::Cancel};
    send_with(protocol::kXon);
    EXPECT_EQ(rig.dialogs.shown[0].text, "Line 1 failed:\n= C1 3\n\nERROR 26");
}

TEST_F(SetupFile, ALineWhoseReplyIsDamagedIsNotCountedAsSent) {
    for (const auto& [fault, response] :
         {std::pair{"crc", "RESPONSE FROM CONTROLLER HAS CRC ERROR!"},
          std::pair{"lost", "No response from the controller at address 1."}}) {
        ConsoleRig damaged(Texts(4, std::string("simulated:742,") + fault + "=1"),
                           protocol::kModbus);
        damaged.console.modbus.opt_DataFormat.set_Value(2);
        testing::write_file(damaged.dir.file("setup.txt"), "300 700\r\n");
        damaged.dialogs.files.push_back(damaged.dir.file("setup.txt"));
        damaged.dialogs.answers = {MessageAnswer::Skip};
        damaged.console.mnuSendSetupFile.choose();
        EXPECT_EQ(damaged.dialogs.texts(),
                  (Texts{std::string("Line 1 failed:\n300 700\n\n") + response,
                         "0 lines sent, 1 skipped after a failure"}));
    }
}

TEST_F(SetupFile, WhatIsNoTextIsRefusedAndLongLinesAreCutWhereTheyAreShown) {
    choose_file(std::string("= SP1 50\r\n\0\x7F"
                            "ELF",
                            16));
    send_with(protocol::kFull);
    EXPECT_EQ(rig.dialogs.texts(), Texts{"\"" + rig.dir.file("setup.txt") + "\" is no text file."});
    EXPECT_TRUE(rig.pairs().empty());
    rig.dialogs.shown.clear();
    choose_file("? " + std::string(1'000'000, 'x'));
    rig.desktop.on_turn = [&] { EXPECT_LT(console.lbl_Status.Caption().size(), 300U); };
    send_with(protocol::kFull);
    EXPECT_LT(rig.dialogs.texts().front().size(), 600U);
    EXPECT_LT(rig.pairs().front().size(), 5000U);
}

TEST_F(SetupFile, ShowsProgressMayBeCancelledAndLeavesTheLineToItself) {
    choose_file("= SP1 50\r\n= SP1 51\r\n= SP1 52\r\n");
    Texts states;
    Link other{rig.table, rig.countdowns, rig.dialogs, rig.log};
    rig.desktop.on_turn = [&] {
        states.push_back(console.lbl_Status.Caption());
        EXPECT_TRUE(console.script.prg_SetupFile.Visible());
        EXPECT_FALSE(console.cmd_SendCommand.Enabled() || console.opt_Protocol.Enabled());
        EXPECT_EQ(console.cmd_SendCommand.ToolTipText(), "The line is in use by Command Center.");
        EXPECT_EQ(other.refusal(), "The line is in use by Command Center.");
        console.mnuSendSetupFile.choose();
        rig.history.frmCommand.mnuverifyport.choose();
        if (states.size() == 3) console.script.cmd_CancelSetup.press();
    };
    send_with(protocol::kFull);
    EXPECT_EQ(states, (Texts{"1 of 3: = SP1 50", "2 of 3: = SP1 51", "3 of 3: = SP1 52"}));
    EXPECT_EQ(rig.dialogs.texts(), Texts{"2 lines sent, cancelled with 1 left"});
    EXPECT_EQ(console.lbl_Status.Caption(), "2 lines sent, cancelled with 1 left");
    EXPECT_FALSE(console.script.prg_SetupFile.Visible());
    EXPECT_TRUE(console.cmd_SendCommand.Enabled());
    EXPECT_TRUE(other.refusal().empty());
    rig.dialogs.shown.clear();
    const LineClaim claim = other.claim();
    EXPECT_EQ(console.mnuSendSetupFile.ToolTipText(), "The line is in use by another window.");
    console.mnuSendSetupFile_Click();
    EXPECT_EQ(rig.dialogs.texts(), Texts{"The line is in use by another window."});
    EXPECT_EQ(rig.pairs().size(), 2U);
}

TEST_F(SetupFile, AClosedConsoleEndsItWithoutAWordAndAMissingFileLeavesItUsable) {
    rig.dialogs.files.push_back(rig.dir.file("none.txt"));
    EXPECT_EQ(testing::error_of([&] { console.mnuSendSetupFile.choose(); }), 53);
    EXPECT_TRUE(console.cmd_SendCommand.Enabled());
    EXPECT_FALSE(console.script.running());
    rig.dialogs.shown.clear();
    choose_file("= SP1 50\r\n= SP1 51\r\n");
    rig.desktop.on_turn = [&] { console.Unload(); };
    send_with(protocol::kFull);
    EXPECT_TRUE(rig.pairs().empty());
    EXPECT_TRUE(rig.dialogs.shown.empty());
}

} // namespace
} // namespace pelvan
