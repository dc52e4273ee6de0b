#include "console/history_form.h"
#include "serial/errors.h"
#include "text/strings.h"

namespace pelvan {
namespace {

/// Bytes of the texts that can be of any length.
std::size_t length_of(const CommandEntry& entry) {
    if (const auto* text = std::get_if<TextEntry>(&entry.fields))
        return text->device_address.size() + text->command.size();
    if (const auto* modbus = std::get_if<ModbusEntry>(&entry.fields))
        return modbus->address.size() + modbus->start_register.size() + modbus->values.size();
    if (const auto* tellura = std::get_if<TelluraEntry>(&entry.fields))
        return tellura->device_address.size() + tellura->parameter_address.size() +
               tellura->byte_count.size() + tellura->data.size();
    return 0;
}

} // namespace

History::History(Services& services)
    : frmCommand("frmCommand", "Command History", "lst_CommsCommand",
                 "Commands as they were sent. Selecting one selects its reply.", services),
      frmResponse("frmResponse", "Command Response", "lst_CommsResponse",
                  "What came back. Selecting a reply selects its command.", services),
      services_(services) {
    connect(frmCommand);
    connect(frmResponse);
    mnuEdit.children = {
        &frmResponse.mnuFind,    &frmResponse.mnuFindNext, nullptr,
        &frmResponse.mnuCopyAll, &frmResponse.mnuClear,    &frmResponse.mnuUndoClear};
    mnuSaveHistory.Click = [this] { save(); };
    mnuPrint.Click = [this] { hand_over(print_requested); };
    mnuPrintPreview.Click = [this] { hand_over(preview_requested); };
    empty_lists();
}

void History::connect(HistoryForm& form) {
    for (ListBox* list : form.lists()) {
        // Each list's Click leads here again, with nothing left to do.
        list->Click = [this, list] { select(list->Selected(), list->ListIndex()); };
        list->DblClick = [this] { hand_entry(recall_requested); };
        list->KeyDown = [this](Key key) {
            if (key == Key::Enter) hand_entry(recall_requested);
            return key == Key::Enter;
        };
    }
    form.mnuRecall.Click = [this] { hand_entry(recall_requested); };
    form.mnuSendAgain.Click = [this] { hand_entry(send_again_requested); };
    form.mnuCopyCsv.Click = [this] { copy_csv(); };
    form.mnuTimes.Click = [this, &form] { show_times(!form.mnuTimes.Checked()); };
    form.mnuClear.Click = [this] { clear(); };
    form.mnuUndoClear.Click = [this] { undo_clear(); };
    add_file_entries(form.mnuFile);
}

void History::add_file_entries(MenuEntry& file_menu) {
    file_menu.children.insert(file_menu.children.begin(),
                              {&mnuSaveHistory, &mnuPrint, &mnuPrintPreview, nullptr});
}

void History::join_console(Form& console, MenuEntry& file_menu) {
    add_file_entries(file_menu);
    console.menus.insert(console.menus.begin() + 1, &mnuEdit);
}

void History::add(const HistoryRow& row, Select select_line) {
    if (frmCommand.list.ListCount() > kMaxLines) clear();
    const bool selects = select_line == Select::Always || is_at_end();
    append(row);
    const int last = frmCommand.list.ListCount() - 1;
    if (selects) select({{last, last}}, last);
    show_protocols();
}

void History::append(const HistoryRow& row) {
    const std::string protocol_name = protocol::name(row.entry.protocol);
    frmCommand.add_line(shortened(row.command, kMaxLineLength), row.sent_at, protocol_name);
    frmResponse.add_line(shortened(row.response, kMaxLineLength), row.received_at, protocol_name);
    entries_.push_back(row.entry);
    if (length_of(row.entry) > kMaxLineLength) entries_.back().fields = {};
    if (!protocol_name.empty()) protocols_ |= 1U << static_cast<unsigned>(row.entry.protocol);
}

bool History::is_at_end() const {
    const int last = frmCommand.list.ListCount() - 1;
    const std::vector<LineRange>& selected = frmCommand.list.Selected();
    return selected.empty() || selected == std::vector<LineRange>{{last, last}};
}

void History::select(const std::vector<LineRange>& lines, int index) {
    // Copies: the lists change what they were handed from.
    const std::vector<LineRange> wanted = lines;
    frmCommand.select_lines(wanted, index);
    frmResponse.select_lines(wanted, index);
}

void History::empty_lists() {
    frmCommand.clear_lines();
    frmResponse.clear_lines();
    entries_.clear();
    protocols_ = 0;
    show_protocols();
    for (HistoryForm* form : {&frmCommand, &frmResponse})
        form->mnuUndoClear.set_Enabled(!cleared_.empty());
}

void History::clear() {
    if (frmCommand.list.ListCount() == 0) return;
    cleared_ = rows();
    empty_lists();
}

void History::undo_clear() {
    if (cleared_.empty()) return;
    std::vector<HistoryRow> lines = std::exchange(cleared_, {});
    const std::vector<HistoryRow> since = rows();
    lines.insert(lines.end(), since.begin(), since.end());
    empty_lists();
    for (const HistoryRow& each : lines)
        append(each);
    const int last = static_cast<int>(lines.size()) - 1;
    select({{last, last}}, last);
    show_protocols();
}

void History::show_times(bool shown) {
    for (HistoryForm* form : {&frmCommand, &frmResponse}) {
        form->mnuTimes.set_Checked(shown);
        form->lst_Times.set_Visible(shown);
    }
}

void History::show_protocols() {
    const bool mixed = (protocols_ & (protocols_ - 1)) != 0;
    for (HistoryForm* form : {&frmCommand, &frmResponse})
        form->lst_Protocols.set_Visible(mixed);
}

/// The command of the line with the focus goes to whoever does something with it.
void History::hand_entry(const Event<const CommandEntry&>& receiver) {
    const int index = frmCommand.list.ListIndex();
    if (index < 0) return;
    const CommandEntry entry = entries_[static_cast<std::size_t>(index)]; // sending adds a line
    if (entry.has_fields())
        receiver.raise(entry);
    else
        services_.dialogs.message_box(entry.protocol == protocol::kNone
                                          ? "This line is no command of the console."
                                          : "This line cannot be sent again from here: it belongs "
                                            "to the loop-back test, or it is too long.");
}

void History::copy_csv() {
    std::vector<HistoryRow> selected;
    for (const LineRange& range : frmCommand.list.Selected())
        for (int i = range.first; i <= range.last; ++i)
            selected.push_back(row(i));
    if (!selected.empty()) services_.desktop.set_clipboard_text(csv_text(selected));
}

HistoryRow History::row(int index) const {
    return {frmCommand.lst_Times.List(index),
            frmCommand.list.List(index),
            frmResponse.lst_Times.List(index),
            frmResponse.list.List(index),
            0,
            entries_[static_cast<std::size_t>(index)]};
}

std::vector<HistoryRow> History::rows() const {
    std::vector<HistoryRow> out;
    for (int i = 0; i < frmCommand.list.ListCount(); ++i)
        out.push_back(row(i));
    return out;
}

HistoryDocument History::document() const {
    const LocalTime now = services_.clock.now();
    return {frmCommand.Caption() + " and " + frmResponse.Caption(),
            date_text(now) + " " + time_text(now), frmCommand.mnuTimes.Checked(), rows()};
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
