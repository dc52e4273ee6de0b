// The two history windows, "Command History" and "Command Response": every command that was sent is
// a line in the first, its reply the line of the same number in the second.
#pragma once

#include <string>

#include "platform/controls.h"
#include "platform/services.h"

namespace pelvan {

/// One of the two windows: a list over the whole window, a scroll bar along its bottom edge.
class HistoryForm : public Form {
  public:
    HistoryForm(const std::string& name, const std::string& caption, const std::string& list_name,
                const std::string& list_tool_tip, Services& services);

    ListBox list;
    /// Moves the list to the left by its value in twips; it counts downwards from 0.
    ScrollBar hscrl_List;

    MenuEntry mnuFile, mnuFileClose;
    MenuEntry mnuEdit, mnuCopyLine, mnuCopyAll, mnuClear;
    MenuEntry mnuHelp, mnuHelpContents;

    /// How far the scroll bar reaches, set when the windows are arranged.
    static constexpr int kScrollMaximum = -20000;

    bool Form_Unload() override;

  private:
    void copy_line();
    void copy_all();
    Services& services_;
};

class History {
  public:
    explicit History(Services& services);

    HistoryForm frmCommand;
    HistoryForm frmResponse;

    /// Adds a pair of lines and selects it. Both lists are cleared before an entry that would
    /// follow 10,000 others, so that a session of days stays bounded.
    void add(const std::string& command, const std::string& response);
    void clear();

    static constexpr int kLineLimit = 10000;
};

} // namespace pelvan
