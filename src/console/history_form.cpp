#include "console/history_form.h"

#include "serial/errors.h"
#include "text/strings.h"

namespace pelvan {

HistoryForm::HistoryForm(const std::string& name, const std::string& caption,
                         const std::string& list_name, const std::string& list_tool_tip,
                         Services& services)
    : Form(name, caption), list(list_name, caption, list_tool_tip),
      lst_Times(list_name + "Times", caption + ", times"), hscrl_List("hscrl_List", 0, 0),
      mnuFile("mnuFile", "&File"), mnuFileClose("mnuFileClose", "&Close Window", "Ctrl+F4"),
      mnuEdit("mnuEdit", "&Edit"),
      mnuCopyLine("mnuCopyLine", "&Copy Line", "Ctrl+C", "Copy the selected line."),
      mnuCopyAll("mnuCopyAll", "Copy &All Lines", "Ctrl+Shift+C",
                 "Copy every line of this window."),
      mnuFind("mnuFind", "&Find...", "Ctrl+F", "Find a text in this window."),
      mnuFindNext("mnuFindNext", "Find &Next", "F3", "The next line with that text."),
      mnuTimes("mnuTimes", "Show &Times", "Ctrl+T",
               "Show beside each line when it was sent or received, in milliseconds."),
      mnuClear("mnuClear", "C&lear Both Windows", "Ctrl+Shift+Del",
               "Empty Command History and Command Response."),
      mnuDiagnostics("mnuDiagnostics", diagnostics_text::kMenu),
      mnuverifyport("mnuverifyport", diagnostics_text::kVerifyPort, "",
                    diagnostics_text::kVerifyPortTip),
      mnuGenbadCS("mnuGenbadCS", diagnostics_text::kBadChecksum, "",
                  diagnostics_text::kBadChecksumTip),
      mnuHelp("mnuHelp", "&Help"), mnuHelpContents("mnuHelpContents", "&Contents"),
      services_(services) {
    set_help_page("history");
    mnuFile.children = {&mnuFileClose};
    mnuEdit.children = {&mnuCopyLine, &mnuCopyAll, nullptr,   &mnuFind,
                        &mnuFindNext, nullptr,     &mnuTimes, &mnuClear};
    mnuTimes.make_checkable();
    lst_Times.set_Visible(false);
    mnuFind.Click = [this] { mnuFind_Click(); };
    mnuFindNext.Click = [this] { mnuFindNext_Click(); };
    mnuGenbadCS.make_checkable();
    mnuDiagnostics.children = {&mnuverifyport, &mnuGenbadCS};
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuFile, &mnuEdit, &mnuDiagnostics, &mnuHelp};
    mnuFileClose.Click = [this] { Unload(); };
    mnuCopyLine.Click = [this] { copy_line(); };
    mnuCopyAll.Click = [this] { copy_all(); };
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
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

void HistoryForm::add_line(const std::string& line, const std::string& time) {
    list.AddItem(line);
    lst_Times.AddItem(time);
}

void HistoryForm::select_line(int index) {
    list.set_ListIndex(index);
    lst_Times.set_ListIndex(index);
}

void HistoryForm::clear_lines() {
    list.Clear();
    lst_Times.Clear();
}

History::History(Services& services)
    : frmCommand("frmCommand", "Command History", "lst_CommsCommand",
                 "Commands as they were sent. Selecting one selects its reply.", services),
      frmResponse("frmResponse", "Command Response", "lst_CommsResponse",
                  "What came back. Selecting a reply selects its command.", services),
      services_(services) {
    for (HistoryForm* form : {&frmCommand, &frmResponse}) {
        form->list.Click = [this, form] { select(form->list.ListIndex()); };
        form->lst_Times.Click = [this, form] { select(form->lst_Times.ListIndex()); };
        form->mnuTimes.Click = [this, form] { show_times(!form->mnuTimes.Checked()); };
        form->mnuClear.Click = [this] { clear(); };
        add_file_entries(form->mnuFile);
    }
    mnuEdit.children = {&frmResponse.mnuFind, &frmResponse.mnuFindNext, nullptr,
                        &frmResponse.mnuCopyAll, &frmResponse.mnuClear};
    mnuSaveHistory.Click = [this] { save(); };
    mnuPrint.Click = [this] { hand_over(print_requested); };
    mnuPrintPreview.Click = [this] { hand_over(preview_requested); };
}

void History::add_file_entries(MenuEntry& file_menu) {
    file_menu.children.insert(file_menu.children.begin(),
                              {&mnuSaveHistory, &mnuPrint, &mnuPrintPreview, nullptr});
}

void History::join_console(Form& console, MenuEntry& file_menu) {
    add_file_entries(file_menu);
    console.menus.insert(console.menus.begin() + 1, &mnuEdit);
}

void History::add(const HistoryRow& row) {
    if (frmCommand.list.ListCount() > kMaxLines) clear();
    frmCommand.add_line(shortened(row.command, kMaxLineLength), row.sent_at);
    frmResponse.add_line(shortened(row.response, kMaxLineLength), row.received_at);
    select(frmCommand.list.ListCount() - 1);
}

void History::select(int index) {
    // Each list's Click leads here again, with nothing left to do.
    frmCommand.select_line(index);
    frmResponse.select_line(index);
}

void History::clear() {
    frmCommand.clear_lines();
    frmResponse.clear_lines();
}

void History::show_times(bool shown) {
    for (HistoryForm* form : {&frmCommand, &frmResponse}) {
        form->mnuTimes.set_Checked(shown);
        form->lst_Times.set_Visible(shown);
    }
}

HistoryDocument History::document() const {
    const LocalTime now = services_.clock.now();
    HistoryDocument document{frmCommand.Caption() + " and " + frmResponse.Caption(),
                             date_text(now) + " " + time_text(now),
                             frmCommand.mnuTimes.Checked(),
                             {}};
    for (int i = 0; i < frmCommand.list.ListCount(); ++i)
        document.rows.push_back({frmCommand.lst_Times.List(i), frmCommand.list.List(i),
                                 frmResponse.lst_Times.List(i), frmResponse.list.List(i)});
    return document;
}

bool History::is_empty() {
    const bool empty = frmCommand.list.ListCount() == 0;
    if (empty) services_.dialogs.message_box("There is nothing in the history yet.");
    return empty;
}

void History::save() {
    if (is_empty()) return;
    FileDialogRequest request;
    request.title = "Save History";
    request.filter = "Text Files (*.txt)|*.txt|All Files (*.*)|*.*|";
    request.file_name = "Command History.txt";
    request.default_extension = "txt";
    request.overwrite_prompt = true;
    request.refuse_read_only = true;
    const auto path = services_.dialogs.save_file(request);
    if (path) save_document(document(), *path);
}

void History::hand_over(const Event<const HistoryDocument&>& printer) {
    if (!is_empty()) printer.raise(document());
}

} // namespace pelvan
