// The console's controls for sending a command again and again: start and stop, the interval, and
// what has come of it so far.
#pragma once

#include <functional>
#include <string>

#include "console/history_form.h"
#include "console/repeat.h"
#include "forms/controls.h"
#include "platform/services.h"

namespace pelvan {

class RepeatPanel {
  public:
    /// The label shows why a sending failed.
    RepeatPanel(Services& services, Repeat& repeat, History& history, Label& status);

    Button cmd_Repeat{"cmd_Repeat"};
    Label lbl_RepeatInterval{"lbl_RepeatInterval", "every"};
    TextBox txt_RepeatInterval{"txt_RepeatInterval", "1",
                               "Seconds from one sending to the next, 0.1 to 3600."};
    Label lbl_RepeatUnit{"lbl_RepeatUnit", "s"};
    /// Replies, failures and times.
    Label lbl_Repeat{"lbl_Repeat"};
    Timer tmr_Repeat{"tmr_Repeat"};
    /// The same as the button, for the console's menu.
    MenuEntry mnuRepeat{"mnuRepeat", "&Repeat Command", "Ctrl+R",
                        "Send the command at an interval until it is stopped."};

    /// The command that is to be repeated, as the fields hold it now.
    std::function<SendOnce()> command;
    /// Whether the window is in the middle of something else, so that nothing may be sent now.
    std::function<bool()> occupied;
    /// A command could not be built.
    std::function<void(const std::string& refusal)> refused;

    void cmd_Repeat_Click();
    void tmr_Repeat_Timer();
    [[nodiscard]] bool running() const { return repeat_.running(); }
    void stop();
    /// Somebody has the line: no new beginning, but an end at any time. Empty when nobody has.
    void hold(const std::string& holder);

  private:
    void start();
    void show();
    [[nodiscard]] std::string state_text() const;

    Services& services_;
    Repeat& repeat_;
    History& history_;
    Label& status_;
    std::string holder_;
};

} // namespace pelvan
