// Pending events, clipboard, screen size and help, as the windowed program has them.
#pragma once

#include <QString>
#include <memory>

#include "platform/desktop_services.h"

namespace pelvan::desktop {

class HelpWindow;

class QtDesktopServices : public DesktopServices {
  public:
    /// `help_folder` is where the help pages are installed.
    explicit QtDesktopServices(std::string help_folder);
    ~QtDesktopServices() override;

    void let_events_run() override;
    void set_clipboard_text(const std::string& text) override;
    ScreenSize screen_size() override;
    /// The pages of the folder stand for the help file.
    void set_help_file(const std::string&) override {}
    void show_help(const std::string& page) override;

  private:
    std::string help_folder_;
    std::unique_ptr<HelpWindow> help_window_; // made when help is first asked for
};

} // namespace pelvan::desktop
