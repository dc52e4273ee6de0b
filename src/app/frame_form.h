// The frame window, whose loading starts everything: the menus that every window shows, the places
// of the three main windows, and what closing asks.
#pragma once

#include "app/line_panel.h"
#include "forms/form.h"
#include "personal/theme.h"
#include "platform/desktop_services.h"
#include "platform/event.h"

namespace pelvan {

class Application;

/// The frame window; loading it starts everything.
class MDIPelvan6 : public Form {
  public:
    explicit MDIPelvan6(Application& application);

    /// The tools and settings are reached from every window.
    MenuEntry mnuTools{"mnuTools", "&Tools"};
    MenuEntry mnuListen{"mnuListen", "&Listening Mode", "Ctrl+Shift+L",
                        "Watch a line without sending anything."};
    MenuEntry mnuTransfer{"mnuTransfer", "&Save/Restore Setup", "Ctrl+Shift+S",
                          "A controller's registers into a file and back."};
    MenuEntry mnuDataLogging{"mnuDataLogging", "&Data Logging", "Ctrl+Shift+D",
                             "Poll registers at an interval and log them."};
    MenuEntry mnuProfileLogic{"mnuProfileLogic", "&Profile Logic", "Ctrl+Shift+R",
                              "Ramp profiles: write, check, start, hold and watch them."};
    /// In every window's menus, because an oven does not wait until somebody finds its window.
    MenuEntry mnuHoldProfile{"mnuHoldProfile", "&Hold Profile", "F12",
                             "Hold the ramp profile that runs; its set points stay."};
    /// Stands in the Diagnostics menus.
    MenuEntry mnuBusScan{"mnuBusScan", "Bus &Scan...", "Ctrl+Shift+B",
                         "Search a line for controllers whose settings nobody remembers."};
    /// In the Diagnostics menus.
    MenuEntry mnuBadRequests{
        "mnuBadRequests", "Bad &Requests...", "",
        "Send a controller requests that are wrong on purpose, and see what it does."};
    MenuEntry mnuSettings{"mnuSettings", "&Settings"};
    MenuEntry mnuPortSettings{"mnuPortSettings", "&Port Settings...", "F9",
                              "Port, baud rate and format of the selected protocol's channel."};
    MenuEntry mnuSerialDevices{"mnuSerialDevices", "&Serial Devices...", "Shift+F9",
                               "Which device of this machine a port number stands for."};
    MenuEntry mnuTheme{"mnuTheme", "&Theme"};
    MenuEntry mnuThemeDesktop{"mnuThemeDesktop", "As the &Desktop", "",
                              "Light or dark as the desktop has it, and follow its changes."};
    MenuEntry mnuThemeLight{"mnuThemeLight", "&Light"};
    MenuEntry mnuThemeDark{"mnuThemeDark", "D&ark"};
    MenuEntry mnuWindow{"mnuWindow", "&Window"};
    MenuEntry mnuArrange{"mnuArrange", "&Arrange", "Ctrl+Shift+A",
                         "Put the three windows back where they were at the start."};
    MenuEntry mnuShowConsole{"mnuShowConsole", "Command &Center", "Ctrl+1"};
    MenuEntry mnuShowCommand{"mnuShowCommand", "Command &History", "Ctrl+2"};
    MenuEntry mnuShowResponse{"mnuShowResponse", "Command &Response", "Ctrl+3"};

    /// The status bar.
    LinePanel line;

    /// In every window's Help menu.
    MenuEntry mnuAbout{"mnuAbout", "&About Pelvan 7", "", "Version and files of this program."};

    /// The frame window's size, and the room in it for the other windows.
    struct Size {
        ScreenSize outside;
        ScreenSize inside;
    };
    /// What About says behind the configuration file, on lines of their own.
    std::string directory_note;
    /// How large the frame is; without it the screen counts.
    std::function<Size()> frame_size;
    /// The person wants these windows where the program puts them, whatever was remembered.
    Event<> arranged;
    /// The person chose a theme; `show_theme` ticks its entry.
    Event<ThemeChoice> theme_chosen;
    void show_theme(ThemeChoice choice);

    /// Sets the help file, loads the console, then the two history windows, and arranges the three.
    void MDIForm_Load();
    /// The console along the top, Command History and Command Response side by side below it; all
    /// three become visible.
    void arrange();
    /// The same for those that are visible, when the frame has another size.
    void place_windows();
    /// Asks what closing the frame asks; without a frame the console closes.
    void mnuExit_Click();
    void mnuAbout_Click();
    /// Data Logging at the frame's top left, over the three windows.
    void mnuDataLogging_Click();

    void Form_Load() override { MDIForm_Load(); }
    /// Closing the frame closes its windows: data logging writes what it has gathered, and the
    /// console ends the program. A running transfer asks whether to cancel; the frame then closes
    /// when it has ended.
    bool Form_Unload() override;

  private:
    void make_window_menu();
    void make_theme_menu();
    void close_after(Event<>& ended);

    Application& application_;
    [[nodiscard]] bool scan_ends();

    Subscription work_end_; // the frame closes then
};

} // namespace pelvan
