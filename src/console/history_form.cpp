#include "console/history_form.h"

#include <algorithm>
#include <cmath>

#include "text/strings.h"

namespace pelvan {

HistoryForm::HistoryForm(const std::string& name, const std::string& caption,
                         const std::string& list_name, const std::string& list_tool_tip,
                         Services& services)
    : Form(name, caption), list(list_name, caption, list_tool_tip),
      lst_Times(list_name + "Times", caption + ", times"),
      lst_Protocols(list_name + "Protocols", caption + ", protocols"),
      hscrl_List("hscrl_List", 0, 0, 0, "Moves the lines to the left."),
      mnuFile("mnuFile", "&File"), mnuFileClose("mnuFileClose", "&Close Window", "Ctrl+F4"),
      mnuEdit("mnuEdit", "&Edit"),
      mnuRecall("mnuRecall", "&Put into the Fields\tEnter", "",
                "Put the command of this line into the console's fields. Also by a double-click."),
      mnuSendAgain("mnuSendAgain", "&Send Again", "Ctrl+Enter",
                   "Send the command of this line again; the console's fields stay as they are."),
      mnuCopyLine("mnuCopyLine", "&Copy", "Ctrl+C",
                  "Copy the selected lines; Shift and Ctrl select several."),
      mnuCopyCsv("mnuCopyCsv", "Copy as CS&V", "",
                 "Copy the selected commands and their responses, with protocol and times, for a "
                 "spreadsheet."),
      mnuCopyAll("mnuCopyAll", "Copy &All Lines", "Ctrl+Shift+C",
                 "Copy every line of this window."),
      mnuFind("mnuFind", "&Find...", "Ctrl+F", "Find a text in this window."),
      mnuFindNext("mnuFindNext", "Find &Next", "F3", "The next line with that text."),
      mnuTimes("mnuTimes", "Show &Times", "Ctrl+T",
               "Show beside each line when it was sent or received, in milliseconds."),
      mnuClear("mnuClear", "C&lear Both Windows", "Ctrl+Shift+Del",
               "Empty Command History and Command Response."),
      mnuUndoClear("mnuUndoClear", "&Undo Clear", "Ctrl+Z",
                   "Bring back the lines that were cleared last."),
      mnuPopUp("mnuPopUp"), mnuDiagnostics("mnuDiagnostics", diagnostics_text::kMenu),
      mnuverifyport("mnuverifyport", diagnostics_text::kVerifyPort, "",
                    diagnostics_text::kVerifyPortTip),
      mnuGenbadCS("mnuGenbadCS", diagnostics_text::kBadChecksum, "",
                  diagnostics_text::kBadChecksumTip),
      mnuHelp("mnuHelp", "&Help"), mnuHelpContents("mnuHelpContents", "&Contents"),
      services_(services) {
    set_help_page("history");
    for (ListBox* each : lists())
        each->make_multi_select();
    lst_Times.set_Visible(false);
    lst_Protocols.set_Visible(false);
    mnuFile.children = {&mnuFileClose};
    mnuEdit.children = {&mnuRecall,  &mnuSendAgain, nullptr,      &mnuCopyLine, &mnuCopyCsv,
                        &mnuCopyAll, nullptr,       &mnuFind,     &mnuFindNext, nullptr,
                        &mnuTimes,   &mnuClear,     &mnuUndoClear};
    mnuPopUp.children = {&mnuRecall,  &mnuSendAgain, nullptr, &mnuCopyLine,
                         &mnuCopyCsv, &mnuCopyAll,   nullptr, &mnuTimes};
    mnuTimes.make_checkable();
    mnuFind.Click = [this] { mnuFind_Click(); };
    mnuFindNext.Click = [this] { mnuFindNext_Click(); };
    mnuGenbadCS.make_checkable();
    mnuDiagnostics.children = {&mnuverifyport, &mnuGenbadCS};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuEdit, &mnuDiagnostics, &mnuHelp};
    mnuFileClose.Click = [this] { Unload(); };
    mnuCopyLine.Click = [this] { copy_lines(); };
    mnuCopyAll.Click = [this] { copy_all(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
}

void HistoryForm::copy_lines() {
    const std::vector<LineRange>& selected = list.Selected();
    if (selected.empty()) return;
    std::string text;
    for (const LineRange& range : selected)
        for (int i = range.first; i <= range.last; ++i)
            text += list.List(i) + "\r\n";
    // A single line without its end fits into a box as well.
    if (selected.size() == 1 && selected[0].first == selected[0].last) text.resize(text.size() - 2);
    services_.desktop.set_clipboard_text(text);
}

void HistoryForm::copy_all() {
    std::string text;
    for (int i = 0; i < list.ListCount(); ++i)
        text += list.List(i) + "\r\n";
    services_.desktop.set_clipboard_text(text);
}

void HistoryForm::mnuFind_Click() {
    const std::string text = services_.dialogs.input_box("Find this text:", "Find", wanted_);
    if (text.empty()) return; // cancelled
    wanted_ = text;
    mnuFindNext_Click();
}

void HistoryForm::mnuFindNext_Click() {
    if (wanted_.empty()) {
        mnuFind_Click();
        return;
    }
    const std::string wanted = upper_case(wanted_);
    const int count = list.ListCount();
    for (int step = 1; step <= count; ++step) {
        const int index = (list.ListIndex() + step) % count;
        if (upper_case(list.List(index)).find(wanted) == std::string::npos) continue;
        list.set_ListIndex(index);
        return;
    }
    services_.dialogs.message_box("\"" + wanted_ + "\" was not found in " + Caption() + ".");
}

int HistoryForm::scrolled_pixels(int reach) const {
    const double share = hscrl_List.Max() == 0 ? 0.0 : 1.0 * hscrl_List.Value() / hscrl_List.Max();
    return static_cast<int>(std::lround(share * reach));
}

void HistoryForm::list_scrolled(int pixels, int reach) {
    // Several values may stand for one pixel: a bar that is right already stays where it is held.
    hscrl_List.set_Enabled(reach > 0);
    if (reach > 0 && scrolled_pixels(reach) == pixels) return;
    const double share = reach > 0 ? std::clamp(1.0 * pixels / reach, 0.0, 1.0) : 0.0;
    hscrl_List.set_Value(static_cast<int>(std::lround(share * hscrl_List.Max())));
}

void HistoryForm::add_line(const std::string& line, const std::string& time,
                           const std::string& protocol) {
    list.AddItem(line);
    lst_Times.AddItem(time);
    lst_Protocols.AddItem(protocol);
}

void HistoryForm::select_lines(const std::vector<LineRange>& lines, int index) {
    for (ListBox* each : lists())
        each->set_Selected(lines, index);
}

void HistoryForm::clear_lines() {
    for (ListBox* each : lists())
        each->Clear();
}

} // namespace pelvan
