// The two history windows, "Command History" and "Command Response": every command that was sent is
// a line in the first, its reply the line of the same number in the second. Both lists together are
// saved and printed as one document (history_document.h).
#pragma once

#include <array>
#include <string>
#include <vector>

#include "console/history_document.h"
#include "forms/form.h"
#include "forms/lists.h"
#include "platform/event.h"
#include "platform/services.h"

namespace pelvan {

/// The menu of diagnostics, which stands in the console's menu bar and in both windows'.
namespace diagnostics_text {
inline constexpr char kMenu[] = "Dia&gnostics";
inline constexpr char kVerifyPort[] = "&Verify Communication's Port";
inline constexpr char kVerifyPortTip[] = "Loop-back test of the port and its wiring.";
inline constexpr char kBadChecksum[] = "Generate &Bad Checksum";
inline constexpr char kBadChecksumTip[] =
    "Send Modbus requests with a wrong CRC, to see what the controller does.";
} // namespace diagnostics_text

/// One of the two windows: a list over the whole window, a scroll bar along its bottom edge.
class HistoryForm : public Form {
  public:
    HistoryForm(const std::string& name, const std::string& caption, const std::string& list_name,
                const std::string& list_tool_tip, Services& services);

    ListBox list;
    /// When each line came to be, beside the list; hidden at first.
    ListBox lst_Times;
    /// Each line's protocol, beside the list; shown while there are lines of several.
    ListBox lst_Protocols;
    /// Moves the list to the left, to the end of its longest line at Max; it counts downwards from
    /// 0.
    ScrollBar hscrl_List;

    MenuEntry mnuFile, mnuFileClose;
    MenuEntry mnuEdit, mnuRecall, mnuSendAgain, mnuCopyLine, mnuCopyCsv, mnuCopyAll;
    MenuEntry mnuFind, mnuFindNext, mnuTimes, mnuClear, mnuUndoClear;
    /// The pop-up menu of the list.
    MenuEntry mnuPopUp;
    /// The same entries as in the console's menu; the console gives them their meaning.
    MenuEntry mnuDiagnostics, mnuverifyport, mnuGenbadCS;
    MenuEntry mnuHelp, mnuHelpContents;

    /// How far the scroll bar reaches, set when the windows are arranged.
    static constexpr int kScrollMaximum = -20000;

    void mnuFind_Click();
    /// Selects the next line that holds the text, beginning again behind the last line; asks for a
    /// text when there is none yet, and says when no line holds it.
    void mnuFindNext_Click();

    /// How far the list stands to the left, in the pixels of which `reach` bring the end of its
    /// longest line into sight.
    [[nodiscard]] int scrolled_pixels(int reach) const;
    /// The list was moved to the left without the scroll bar, or its reach is another now.
    void list_scrolled(int pixels, int reach);

    void add_line(const std::string& line, const std::string& time, const std::string& protocol);
    /// Selects lines in all lists of the window.
    void select_lines(const std::vector<LineRange>& lines, int index);
    void clear_lines();
    [[nodiscard]] std::array<ListBox*, 3> lists() { return {&list, &lst_Times, &lst_Protocols}; }

  private:
    void copy_lines();
    void copy_all();
    Services& services_;
    std::string wanted_;
};

class History {
  public:
    explicit History(Services& services);

    HistoryForm frmCommand;
    HistoryForm frmResponse;

    enum class Select {
        Always,
        /// Unless somebody has selected other lines than the last one.
        IfAtEnd,
    };
    /// Adds a pair of lines and selects it. Both lists are cleared first when they hold more than
    /// 10,000, so that a session of days stays bounded.
    void add(const HistoryRow& row, Select select = Select::Always);
    /// Empties both lists; what they held can be brought back.
    void clear();
    /// Brings back what was cleared last, in front of what came since.
    void undo_clear();

    /// For the File menu of both windows and the console.
    MenuEntry mnuSaveHistory{"mnuSaveHistory", "&Save History...", "Ctrl+S",
                             "Save commands and responses side by side in a text file."};
    MenuEntry mnuPrint{"mnuPrint", "&Print...", "Ctrl+P",
                       "Print commands and responses, on paper or into a PDF file."};
    MenuEntry mnuPrintPreview{"mnuPrintPreview", "Print Pre&view...", "Ctrl+Shift+P",
                              "Show the pages before they are printed."};
    /// The console's Edit menu, which works on the responses.
    MenuEntry mnuEdit{"mnuEdit", "&Edit"};
    /// Gives the console those entries: File ones above its own, Edit behind File.
    void join_console(Form& console, MenuEntry& file_menu);

    /// Both lists as they stand.
    [[nodiscard]] HistoryDocument document() const;
    /// The document is to be printed, or its pages are to be shown first.
    Event<const HistoryDocument&> print_requested;
    Event<const HistoryDocument&> preview_requested;
    /// A line's command is to come back into the fields, or to be sent again as it is.
    Event<const CommandEntry&> recall_requested;
    Event<const CommandEntry&> send_again_requested;

    static constexpr int kMaxLines = 10000;
    /// Bytes of a line; the longest Modbus rendering has some 1,500. A list that has to lay out a
    /// line of a megabyte stands still. What longer entries were is not kept.
    static constexpr std::size_t kMaxLineLength = 2000;

  private:
    void connect(HistoryForm& form);
    void append(const HistoryRow& row);
    [[nodiscard]] HistoryRow row(int index) const;
    [[nodiscard]] std::vector<HistoryRow> rows() const;
    [[nodiscard]] bool is_at_end() const;
    void empty_lists();
    void select(const std::vector<LineRange>& lines, int index);
    void show_times(bool shown);
    void show_protocols();
    void hand_entry(const Event<const CommandEntry&>& receiver);
    void copy_csv();
    void add_file_entries(MenuEntry& file_menu);
    void save();
    void hand_over(const Event<const HistoryDocument&>& printer);
    [[nodiscard]] bool is_empty();

    Services& services_;
    std::vector<CommandEntry> entries_; // of the lines
    unsigned protocols_ = 0;            // one bit each that a line has
    std::vector<HistoryRow> cleared_;
};

} // namespace pelvan
