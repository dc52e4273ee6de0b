// The windowed program: the platform's services on the screen, the application behind them, and a
// window for each of its forms.
#pragma once

#include <deque>
#include <memory>
#include <optional>

#include "app/application.h"
#include "desktop/printing/print_module.h"
#include "desktop/system/port_watcher.h"
#include "desktop/system/qt_desktop_services.h"
#include "desktop/system/qt_dialogs.h"
#include "desktop/system/type_ahead.h"
#include "desktop/windows/first_show.h"
#include "desktop/windows/mdi_frame.h"

namespace pelvan::desktop {

class MainWindow {
  public:
    /// `directory` is where pelvan7.ini and the program's other files lie.
    explicit MainWindow(const std::string& directory);
    ~MainWindow();

    /// Shows the frame, and runs the start-up as soon as it stands on the screen: whatever the
    /// start-up has to say (a bad port number, say) is said in front of a window. Returns then.
    void open();

    /// Ends the program without questions or messages; what data logging has gathered is written
    /// first.
    void end();

    [[nodiscard]] Application& application() { return application_; }
    [[nodiscard]] MdiFrame& frame() { return *frame_; }

  private:
    [[nodiscard]] BindContext bind_context();
    void make_children();
    void watch_ports();
    void print(const HistoryDocument& document, PrintAction action);

    std::unique_ptr<TickSource> tick_;
    std::unique_ptr<Clock> clock_;
    TypeAhead type_ahead_;
    QtDialogs dialogs_{[this] { type_ahead_.drop_typed_meanwhile(); }};
    QtDesktopServices desktop_;
    Application application_;
    PortWatcher watcher_;
    Subscription port_changes_;
    std::unique_ptr<MdiFrame> frame_;
    Subscription console_closed_;
    Subscription print_;
    Subscription preview_;
    std::deque<FirstShow> first_shows_;
    std::optional<MessageRouter::Diversion> unattended_; // from `end` on
};

} // namespace pelvan::desktop
