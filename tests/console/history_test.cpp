#include <gtest/gtest.h>

#include "console/history_form.h"
#include "support/error_of.h"
#include "support/serial_rig.h"

namespace pelvan {
namespace {

class HistoryTest : public ::testing::Test, protected testing::SerialRig {
  protected:
    void fill() {
        history.add({"16:30:05.007", "1 3 100 1", "16:30:05.250", "1 3 2 725"});
        history.add({"16:30:06.000", "? C1", "16:30:06.010", std::string("OK\r\n\x06", 5)});
        history.add({"", std::string(70, 'x'), "", "long"});
    }
    std::string saved() {
        dialogs.files = {dir.file("saved.txt")};
        history.mnuSaveHistory.choose();
        return testing::read_file(dir.file("saved.txt"));
    }

    History history{services};
    HistoryForm& command = history.frmCommand;
    HistoryForm& response = history.frmResponse;
};

TEST_F(HistoryTest, SavesBothListsSideBySide) {
    fill();
    const std::string begin = "Command History and Command Response\r\n11-15-2026 16:30:05\r\n\r\n";
    const auto pad = [](std::string text) { return text + std::string(60 - text.size(), ' '); };
    EXPECT_EQ(saved(), begin + pad("Command") + " | Response\r\n" + pad("1 3 100 1") +
                           " | 1 3 2 725\r\n" + pad("? C1") + " | OK<0D><0A><06>\r\n" +
                           std::string(70, 'x') + " | long\r\n");
    EXPECT_TRUE(dialogs.requests[0].overwrite_prompt);
    response.mnuTimes.choose();
    EXPECT_NE(saved().find("16:30:05.007  " + pad("1 3 100 1") + " | 16:30:05.250  1 3 2 725\r\n"),
              std::string::npos);
}

TEST_F(HistoryTest, SavesAndPrintsNothingWhenThereIsNothingOrNobodyNamesAFile) {
    std::vector<HistoryDocument> printed;
    const auto print = [&](const HistoryDocument& document) { printed.push_back(document); };
    const Subscription printing = history.print_requested.subscribe(print);
    const Subscription previewing = history.preview_requested.subscribe(print);
    history.mnuSaveHistory.choose();
    history.mnuPrint.choose();
    EXPECT_TRUE(dialogs.requests.empty() && printed.empty());
    fill();
    history.mnuPrint.choose();
    history.mnuPrintPreview.choose();
    ASSERT_EQ(printed.size(), 2U);
    EXPECT_EQ(printed[1].rows[0].response, "1 3 2 725");
    history.mnuSaveHistory.choose(); // cancelled
    EXPECT_EQ(dialogs.requests.size(), 1U);
    dialogs.files = {dir.file("no/such/place.txt")};
    EXPECT_EQ(testing::error_of([&] { history.mnuSaveHistory.choose(); }), 76);
}

TEST_F(HistoryTest, LinesAndTimesStandInPairsUntilThereAreMoreThanTenThousand) {
    fill();
    EXPECT_FALSE(command.lst_Times.Visible());
    command.mnuTimes.choose();
    EXPECT_TRUE(response.lst_Times.Visible()) << "both at once";
    EXPECT_EQ(command.lst_Times.List(0), "16:30:05.007");
    EXPECT_EQ(response.lst_Times.List(0), "16:30:05.250");
    command.lst_Times.set_ListIndex(0);
    EXPECT_EQ(response.list.ListIndex(), 0);
    command.mnuCopyLine.choose();
    EXPECT_EQ(desktop.clipboard, "1 3 100 1");
    response.mnuTimes.choose();
    EXPECT_FALSE(command.lst_Times.Visible());
    for (int lines = 3; lines < 10001; ++lines)
        history.add({"", "ask", "", "answer"});
    EXPECT_EQ(command.list.ListCount(), 10001);
    history.add({"", "next", "", "reply"});
    EXPECT_EQ(command.list.ListCount(), 1);
    EXPECT_EQ(command.lst_Times.ListCount(), 1);
    response.mnuCopyAll.choose();
    EXPECT_EQ(desktop.clipboard, "reply\r\n");
}

TEST_F(HistoryTest, SeveralLinesAreSelectedInBothListsAndCopied) {
    fill();
    const std::vector<LineRange> two{{0, 0}, {2, 2}};
    command.list.set_Selected(two, 2);
    EXPECT_EQ(response.list.Selected(), two);
    EXPECT_EQ(response.lst_Times.Selected(), two);
    response.mnuCopyLine.choose();
    EXPECT_EQ(desktop.clipboard, "1 3 2 725\r\nlong\r\n");
    HistoryRow row{"16:30:07.000", "= \"A\",1", "16:30:07.100", "OK\r,"};
    row.entry.protocol = protocol::kXon;
    history.add(row, History::Select::IfAtEnd);
    EXPECT_EQ(response.list.Selected(), two) << "somebody is at work there";
    command.list.set_Selected({{2, 3}}, 3);
    command.mnuCopyCsv.choose();
    EXPECT_EQ(desktop.clipboard, "Sent,Protocol,Command,Received,Response\r\n,," +
                                     std::string(70, 'x') +
                                     ",,long\r\n16:30:07.000,Xon,\"= \"\"A\"\",1\",16:30:07.100,"
                                     "\"OK<0D>,\"\r\n");
    command.list.set_ListIndex(3);
    history.add(row, History::Select::IfAtEnd);
    EXPECT_EQ(response.list.ListIndex(), 4);
}

TEST_F(HistoryTest, ProtocolsStandBesideTheLinesWhereThereAreSeveral) {
    HistoryRow row{"", "ask", "", "answer"};
    const auto add = [&](int protocol_number) {
        row.entry.protocol = protocol_number;
        history.add(row);
        return command.lst_Protocols.Visible() && response.lst_Protocols.Visible();
    };
    EXPECT_FALSE(add(protocol::kModbus) || add(protocol::kModbus));
    EXPECT_TRUE(add(protocol::kTellura));
    EXPECT_EQ(command.lst_Protocols.List(2), "Tellura");
    EXPECT_EQ(command.list.List(2), "ask");
    history.clear();
    EXPECT_FALSE(add(protocol::kFull));
    history.undo_clear();
    EXPECT_TRUE(response.lst_Protocols.Visible());
}

TEST_F(HistoryTest, ClearedLinesComeBackInFrontOfThoseSince) {
    fill();
    command.mnuClear.choose();
    command.mnuClear.choose(); // of nothing: the lines before stay within reach
    history.add({"", "next", "", "reply"});
    history.mnuEdit.children.back()->choose();
    EXPECT_EQ(command.list.ListCount(), 4);
    EXPECT_EQ(command.lst_Times.List(0), "16:30:05.007");
    EXPECT_EQ(response.list.List(3), "reply");
    EXPECT_EQ(response.list.ListIndex(), 3);
    EXPECT_FALSE(command.mnuUndoClear.Enabled());
}

TEST_F(HistoryTest, TheScrollBarReachesTheEndOfAnyLine) {
    ScrollBar& bar = response.hscrl_List;
    bar.set_Max(HistoryForm::kScrollMaximum);
    for (const int reach : {3, 700, 19999, 123457}) {
        bar.set_Value(-20000);
        EXPECT_EQ(response.scrolled_pixels(reach), reach);
        for (const int pixels : {0, 1, reach / 2, reach}) {
            response.list_scrolled(pixels, reach);
            EXPECT_NEAR(response.scrolled_pixels(reach), pixels, reach / 20000);
        }
    }
    response.list_scrolled(700, 650); // a view whose range has just become smaller
    EXPECT_EQ(bar.Value(), -20000);
    EXPECT_TRUE(bar.Enabled());
    response.list_scrolled(0, 0);
    EXPECT_FALSE(bar.Enabled()) << "nothing to scroll";
    EXPECT_EQ(bar.Value(), 0);
}

TEST_F(HistoryTest, FindGoesRoundAndSaysWhenThereIsNone) {
    for (const char* line : {"alpha", "beta", "Alphabet", "gamma"})
        history.add({"", line, "", line});
    response.mnuFindNext.choose(); // asks, and is cancelled
    EXPECT_EQ(response.list.ListIndex(), 3);
    dialogs.inputs = {"ALPHA", "nowhere"};
    response.mnuFind.choose();
    EXPECT_EQ(response.list.ListIndex(), 0);
    response.mnuFindNext.choose();
    EXPECT_EQ(command.list.ListIndex(), 2) << "the twin is selected too";
    response.mnuFindNext.choose();
    EXPECT_EQ(response.list.ListIndex(), 0);
    EXPECT_TRUE(dialogs.shown.empty());
    response.mnuFind.choose();
    EXPECT_EQ(dialogs.texts().back(), "\"nowhere\" was not found in Command Response.");
    EXPECT_EQ(dialogs.last_default, "ALPHA");
}

} // namespace
} // namespace pelvan
