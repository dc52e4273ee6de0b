// Pending events, clipboard, screen size and help, as the windowed program has them.
#pragma once

#include <QString>
#include <memory>

#include "personal/window_places.h"
#include "platform/desktop_services.h"

namespace pelvan::desktop {

class HelpWindow;

class QtDesktopServices : public DesktopServices {
  public:
    /// `help_folder` is where the help pages are installed; `places` (borrowed) remembers where
    /// the help stands.
    explicit QtDesktopServices(std::string help_folder, WindowPlaces* places = nullptr);
    ~QtDesktopServices() override;

    void let_events_run() override;
    void paint_windows() override;
    void set_clipboard_text(const std::string& text) override;
    bool show_folder_of(const std::string& path) override;
    ScreenSize screen_size() override;
    /// The pages of the folder stand for the help file.
    void set_help_file(const std::string&) override {}
    void show_help(const std::string& page) override;
    /// Before what remembers their places ends.
    void close_windows();

  private:
    std::string help_folder_;
    WindowPlaces* places_;
    std::unique_ptr<HelpWindow> help_window_; // made when help is first asked for
};

} // namespace pelvan::desktop
