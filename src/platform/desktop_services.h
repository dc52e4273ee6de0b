// What the program asks of the desktop beside dialogs and windows.
#pragma once

#include <string>

namespace pelvan {

struct ScreenSize {
    int width = 0; // pixels of 1/96 inch
    int height = 0;
};

class DesktopServices {
  public:
    virtual ~DesktopServices() = default;

    /// Lets pending window events (repaints, key strokes) run; returns when none is left.
    virtual void let_events_run() = 0;

    /// Lets the windows paint what changed and lets the system see that the program lives, in the
    /// middle of work that must not be disturbed: what people type or click meanwhile comes later,
    /// and so do timers where the system can hold them back.
    virtual void paint_windows() = 0;

    virtual void set_clipboard_text(const std::string& text) = 0;

    /// Opens the folder that a file lies in, where the desktop shows folders; false when it cannot.
    virtual bool show_folder_of(const std::string& path) = 0;

    /// Usable area of the screen that the program starts on.
    virtual ScreenSize screen_size() = 0;

    /// Shows a page of the help; an empty page means the contents. The help file is set once at
    /// start.
    virtual void set_help_file(const std::string& name) = 0;
    virtual void show_help(const std::string& page) = 0;
};

} // namespace pelvan
