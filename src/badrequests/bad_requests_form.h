// "Bad Requests": sends a controller requests that are wrong on purpose and lists what it does. The
// series runs to its end inside the handler that started it, and lets the window's events run while
// it waits, so that it can be cancelled at any moment.
#pragma once

#include <functional>
#include <string>

#include "badrequests/bad_request_run.h"
#include "forms/form.h"
#include "forms/lists.h"
#include "platform/event.h"
#include "platform/services.h"

namespace pelvan {

class frm_BadRequests : public Form, private BadRequestListener {
  public:
    /// `messages` is the router that the link's messages go through; `selected_protocol` says which
    /// protocol the window begins with.
    frm_BadRequests(Services& services, MessageRouter& messages, Link& link,
                    std::function<int()> selected_protocol);

    Label lbl_Protocol{"lbl_BadProtocol", "&Protocol"};
    ComboBox cmb_Protocol;
    Label lbl_Address{"lbl_BadAddress", "&Address"};
    TextBox txt_Address{"txt_BadAddress", {}, "Address of the controller that is tested."};
    Label lbl_Read{"lbl_BadRead"};
    TextBox txt_Read{"txt_BadRead"};
    Label lbl_Other{"lbl_BadOther", "&Other address"};
    TextBox txt_Other{"txt_BadOther", {}, "An address that no controller on the line has."};
    Label lbl_Check{"lbl_BadCheck", "Chec&k"};
    ComboBox cmb_Check;
    Label lbl_Wait{"lbl_BadWait", "Wa&it (seconds)"};
    TextBox txt_Wait{"txt_BadWait", "1",
                     "How long an answer to a bad request is waited for, 0.1 to 10 seconds. Longer "
                     "than the controller ever takes."};
    Button cmdStart{"cmdBadStart", "Sta&rt", "Send the bad requests, after a question (Enter)."};
    Button cmdCancel{"cmdBadCancel", "&Cancel", "End the series at once (Escape)."};
    Button cmdSave{"cmdBadSave", "Sa&ve Report...", "Save the list as a text file (Ctrl+S)."};
    Label lbl_Lines{"lbl_BadLines", "R&equests"};
    ListBox lst_Lines{"lst_BadLines", "Requests"};
    ProgressBar ProgressBar1{"prg_BadRequests"};
    Label lbl_Status{"lbl_BadStatus"};

    MenuEntry mnuFile{"mnuBadFile", "&File"};
    MenuEntry mnuSave{"mnuBadSave", "Save &Report...", "Ctrl+S", "Save the list as a text file."};
    MenuEntry mnuClose{"mnuBadClose", "&Close Window", "Ctrl+F4"};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents"};

    /// The titles of the columns, and what a line of the list has in them.
    [[nodiscard]] static std::vector<std::string> column_titles();
    [[nodiscard]] static std::vector<std::string> columns_of(const std::string& line);

    void Form_Load() override;
    /// During a series it is cancelled, and the window goes when it has ended.
    bool Form_Unload() override;

    void cmdStart_Click();
    void cmdSave_Click();
    /// Ends a series that runs, without a question.
    void cancel();
    [[nodiscard]] bool running() const { return running_; }
    /// A series has ended, however it ended.
    Event<> ended;

  private:
    class Running;

    void connect_controls();
    void choose_protocol();
    [[nodiscard]] BadRequestOptions options() const;
    void show_refusal(const std::string& refusal);
    [[nodiscard]] bool confirmed(const BadRequestOptions& options);
    void show_state();
    void sending(int number, int of, const std::string& name) override;
    void listed(const BadRequestLine& line) override;
    [[nodiscard]] bool go_on() override;

    Services& services_;
    Link& link_;
    BadRequestRun run_;
    std::function<int()> selected_protocol_;
    BadRequestResult result_;
    LocalTime begun_;
    bool running_ = false;
    bool canceled_ = false;
    bool close_when_done_ = false;
    Subscription line_use_;
};

} // namespace pelvan
