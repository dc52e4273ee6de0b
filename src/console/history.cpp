#include "console/history.h"

namespace pelvan {

HistoryForm::HistoryForm(const std::string& name, const std::string& caption,
                         const std::string& list_name, const std::string& list_tool_tip,
                         Services& services)
    : Form(name, caption), list(list_name, caption, list_tool_tip), hscrl_List("hscrl_List", 0, 0),
      mnuFile("mnuFile", "&File"), mnuFileClose("mnuFileClose", "&Close Window", "Ctrl+F4"),
      mnuEdit("mnuEdit", "&Edit"),
      mnuCopyLine("mnuCopyLine", "&Copy Line", "Ctrl+C", "Copy the selected line."),
      mnuCopyAll("mnuCopyAll", "Copy &All Lines", "Ctrl+Shift+C",
                 "Copy every line of this window."),
      mnuClear("mnuClear", "C&lear Both Windows", "Ctrl+Shift+Del",
               "Empty Command History and Command Response."),
      mnuHelp("mnuHelp", "&Help"), mnuHelpContents("mnuHelpContents", "&Contents", "F1"),
      services_(services) {
    set_help_page("history");
    mnuFile.children = {&mnuFileClose};
    mnuEdit.children = {&mnuCopyLine, &mnuCopyAll, nullptr, &mnuClear};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuEdit, &mnuHelp};
    mnuFileClose.Click = [this] { Unload(); };
    mnuCopyLine.Click = [this] { copy_line(); };
    mnuCopyAll.Click = [this] { copy_all(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
}

bool HistoryForm::Form_Unload() {
    // The lists outlive their windows: nothing that went over the wire is lost by closing one.
    return true;
}

void HistoryForm::copy_line() {
    if (list.ListIndex() >= 0) services_.desktop.set_clipboard_text(list.List(list.ListIndex()));
}

void HistoryForm::copy_all() {
    std::string text;
    for (int i = 0; i < list.ListCount(); ++i)
        text += list.List(i) + "\r\n";
    services_.desktop.set_clipboard_text(text);
}

History::History(Services& services)
    : frmCommand("frmCommand", "Command History", "lst_CommsCommand",
                 "Commands as they were sent. Selecting one selects its reply.", services),
      frmResponse("frmResponse", "Command Response", "lst_CommsResponse",
                  "What came back. Selecting a reply selects its command.", services) {
    frmCommand.list.Click = [this] { frmResponse.list.set_ListIndex(frmCommand.list.ListIndex()); };
    frmResponse.list.Click = [this] {
        frmCommand.list.set_ListIndex(frmResponse.list.ListIndex());
    };
    frmCommand.mnuClear.Click = [this] { clear(); };
    frmResponse.mnuClear.Click = [this] { clear(); };
}

void History::add(const std::string& command, const std::string& response) {
    if (frmCommand.list.ListCount() >= kLineLimit) clear();
    frmCommand.list.AddItem(command);
    frmResponse.list.AddItem(response);
    frmCommand.list.set_ListIndex(frmCommand.list.ListCount() - 1);
}

void History::clear() {
    frmCommand.list.Clear();
    frmResponse.list.Clear();
}

} // namespace pelvan
