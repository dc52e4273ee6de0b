// Sending a command script from the console.
#include "console_rig.h"
#include "support/error_of.h"

namespace pelvan {
namespace {

using Texts = std::vector<std::string>;

class SetupFile : public ::testing::Test, protected testing::ConsoleRig {
  protected:
    SetupFile() {
        start(Texts(4, "simulated:742"), protocol::kFull);
        console.modbus.opt_DataFormat.set_Value(static_cast<int>(DataFormat::SmartDec));
    }
    /// Sends a script; what was said.
    Texts send_script(int protocol_number, const std::string& text) {
        testing::write_file(script_file, text);
        dialogs.files = {script_file};
        console.opt_Protocol.set_Value(protocol_number);
        dialogs.shown.clear();
        console.mnuSendSetupFile.choose();
        return dialogs.texts();
    }

    const std::string script_file = dir.file("setup.txt");
};

TEST_F(SetupFile, GoesLineByLineInEachProtocol) {
    const auto expect = [this](int number, const std::string& text, const Texts& sent) {
        history.clear();
        const std::string summary = sent.size() == 1 ? "1 line sent" : "2 lines sent";
        EXPECT_EQ(send_script(number, text), Texts{summary});
        EXPECT_EQ(pairs(), sent);
    };
    expect(protocol::kFull, "; a comment\r\n\r\n= SP1 50\r\n  ? SP1  \n",
           {"= SP1 50 > MESSAGE COMPLETED", "? SP1 > 50.0"});
    expect(protocol::kXon, "= SP1 60", {"= SP1 60 > OK"});
    expect(protocol::kModbus, "300 700\r\n319\t700\r\n",
           {"300 700 > 300 700", "319 700 > 319 700"});
    // Has no commands that a line could hold.
    EXPECT_EQ(send_script(protocol::kTellura, "= SP1 60"), Texts{});
    dialogs.files.clear();
    console.opt_Protocol.set_Value(protocol::kFull);
    console.mnuSendSetupFile.choose(); // no file chosen
    EXPECT_EQ(dialogs.requests.size(), 4U);
    EXPECT_TRUE(dialogs.shown.empty());
}

TEST_F(SetupFile, AsksAtALineThatFails) {
    using enum MessageAnswer;
    dialogs.answers = {Retry, Skip, Skip, Cancel};
    EXPECT_EQ(send_script(protocol::kFull, "= SP1 50\r\n= SP1 5000\r\n= C1 3\r\n; note\r\n"
                                           "= SP1 51\r\n= XYZ 1\r\n= SP1 52\r\n"),
              (Texts{"Line 2 failed:\n= SP1 5000\n\nInput out of limit",
                     "Line 2 failed:\n= SP1 5000\n\nInput out of limit",
                     "Line 3 failed:\n= C1 3\n\nRead only command",
                     "Line 6 failed:\n= XYZ 1\n\nCommand not found",
                     "2 lines sent, 2 skipped after a failure, cancelled with 2 left"}));
    EXPECT_EQ(dialogs.shown[0].buttons, MessageButtons::RetrySkipCancel);
    EXPECT_EQ(pairs().size(), 6U);
    console.modbus.txt_Address.set_Text("1");
    dialogs.answers.assign(6, Skip);
    const Texts texts = send_script(
        protocol::kModbus, "300\r\n300 1 2\r\n300 40000\r\nname value\r\n100 5\r\n65000 1\r\n");
    EXPECT_EQ(texts.size(), 7U);
    EXPECT_EQ(texts.at(3), "Line 4 failed:\nname value\n\nBad REGISTER entered.");
    EXPECT_EQ(texts.at(5), "Line 6 failed:\n65000 1\n\nrefused: no such register (exception 2)");
    EXPECT_EQ(pairs().size(), 8U); // the others were refused before they were sent
    dialogs.answers = {Cancel};
    EXPECT_EQ(send_script(protocol::kXon, "= C1 3")[0], "Line 1 failed:\n= C1 3\n\nERROR 26");
}

TEST_F(SetupFile, ALineWhoseReplyIsDamagedIsNotCountedAsSent) {
    for (const auto& [fault, response] :
         {std::pair{"crc", "RESPONSE FROM CONTROLLER HAS CRC ERROR!"},
          std::pair{"lost", "No response from the controller at address 1."}}) {
        testing::configure_devices(dir, Texts(2, std::string("simulated:742,") + fault + "=1"));
        dialogs.answers = {MessageAnswer::Skip};
        EXPECT_EQ(send_script(protocol::kModbus, "300 700\r\n"),
                  (Texts{std::string("Line 1 failed:\n300 700\n\n") + response,
                         "0 lines sent, 1 skipped after a failure"}));
        console.opt_Protocol.set_Value(protocol::kFull); // the ports are set up anew with the next
    }
}

TEST_F(SetupFile, WhatIsNoTextIsRefusedAndLongLinesAreCutWhereTheyAreShown) {
    using std::string_literals::operator""s;
    EXPECT_EQ(send_script(protocol::kFull, "= SP1 50\r\n\0\x7F"
                                           "ELF"s),
              Texts{"\"" + script_file + "\" is no text file."});
    EXPECT_TRUE(pairs().empty());
    desktop.on_turn = [&] { EXPECT_LT(console.lbl_Status.Caption().size(), 300U); };
    const Texts texts = send_script(protocol::kFull, "? " + std::string(1'000'000, 'x'));
    EXPECT_LT(texts.at(0).size(), 600U);
    EXPECT_LT(pairs().at(0).size(), 5000U);
}

TEST_F(SetupFile, ShowsProgressMayBeCancelledAndLeavesTheLineToItself) {
    Texts states;
    Link other{table, countdowns, dialogs, log};
    const std::string in_use = "The line is in use by Command Center.";
    desktop.on_turn = [&] {
        states.push_back(console.lbl_Status.Caption());
        EXPECT_TRUE(console.script.prg_SetupFile.Visible());
        EXPECT_FALSE(console.cmd_SendCommand.Enabled() || console.opt_Protocol.Enabled());
        EXPECT_EQ(console.cmd_SendCommand.ToolTipText(), in_use);
        EXPECT_EQ(other.refusal(), in_use);
        console.mnuSendSetupFile.choose();
        history.frmCommand.mnuverifyport.choose();
        if (states.size() == 3) console.script.cmd_CancelSetup.press();
    };
    const std::string end = "2 lines sent, cancelled with 1 left";
    EXPECT_EQ(send_script(protocol::kFull, "= SP1 50\r\n= SP1 51\r\n= SP1 52\r\n"), Texts{end});
    EXPECT_EQ(states, (Texts{"1 of 3: = SP1 50", "2 of 3: = SP1 51", "3 of 3: = SP1 52"}));
    EXPECT_EQ(console.lbl_Status.Caption(), end);
    EXPECT_FALSE(console.script.prg_SetupFile.Visible());
    EXPECT_TRUE(console.cmd_SendCommand.Enabled());
    EXPECT_EQ(other.refusal(), "");
    dialogs.shown.clear();
    const LineClaim claim = other.claim();
    EXPECT_EQ(console.mnuSendSetupFile.ToolTipText(), "The line is in use by another window.");
    console.mnuSendSetupFile_Click();
    EXPECT_EQ(dialogs.texts(), Texts{"The line is in use by another window."});
    EXPECT_EQ(pairs().size(), 2U);
}

TEST_F(SetupFile, AClosedConsoleEndsItWithoutAWordAndAMissingFileLeavesItUsable) {
    dialogs.files = {dir.file("none.txt")};
    EXPECT_EQ(testing::error_of([&] { console.mnuSendSetupFile.choose(); }), 53);
    EXPECT_TRUE(console.cmd_SendCommand.Enabled());
    EXPECT_FALSE(console.script.running());
    desktop.on_turn = [&] { console.Unload(); };
    EXPECT_EQ(send_script(protocol::kFull, "= SP1 50\r\n= SP1 51\r\n"), Texts{});
    EXPECT_TRUE(pairs().empty());
}

} // namespace
} // namespace pelvan
