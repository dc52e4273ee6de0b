// The frame's status bar: the line of the protocol that is chosen on the console and how it is
// doing, whoever uses it, and what makes requests go out wrong on purpose. Brought up to date twice
// a second, so that an adapter that is pulled or plugged in shows.
#pragma once

#include <vector>

#include "forms/controls.h"
#include "serial/line_status.h"

namespace pelvan {

class Application;

class LinePanel {
  public:
    /// Both are borrowed; `port_settings` is what a press on the line leads to.
    LinePanel(Application& application, MenuEntry& port_settings);

    /// The line in words.
    Button cmd_Line{"cmd_Line"};
    /// There while requests go out with a wrong check.
    Label lbl_BadChecksum{"lbl_BadChecksum", "Generate Bad Checksum is on"};
    /// Runs from the start-up on.
    Timer tmr_Line{"tmr_Line"};

    /// Asks the front end to show the line as it is now, before work that lets no event run.
    Event<> before_block;

    /// Looks at the line and shows it.
    void look();
    /// Whether what is shown keeps commands from their answers: no device, or an echo that is
    /// wrong.
    [[nodiscard]] bool trouble() const { return trouble_; }

  private:
    void show_checksum();

    Application& application_;
    LineObserver observer_;
    bool trouble_ = false;
    std::vector<Subscription> changes_;
};

} // namespace pelvan
