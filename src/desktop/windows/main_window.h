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
#include "desktop/system/theme_keeper.h"
#include "desktop/system/type_ahead.h"
#include "desktop/windows/first_show.h"
#include "desktop/windows/mdi_frame.h"

namespace pelvan::desktop {

class MainWindow {
  public:
    /// `directory` is where pelvan7.ini and the program's other files lie, `personal_file` what is
    /// remembered for the person; without one nothing is.
    explicit MainWindow(const std::string& directory, const std::string& personal_file = {});
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
    void follow_person();
    void place_frame();
    void keep_frame_place();
    [[nodiscard]] std::vector<const Form*> main_forms() const;
    void watch_ports();
    void print(const HistoryDocument& document, PrintAction action);

    PersonalSettings personal_;
    WindowPlaces places_{personal_};
    RecentFiles recent_{personal_};
    ThemeKeeper theme_{personal_};
    std::unique_ptr<TickSource> tick_;
    std::unique_ptr<Clock> clock_;
    TypeAhead type_ahead_;
    QtDialogs dialogs_{[this] { type_ahead_.drop_typed_meanwhile(); }, &recent_};
    QtDesktopServices desktop_;
    Application application_;
    PortWatcher watcher_;
    Subscription port_changes_;
    std::unique_ptr<MdiFrame> frame_;
    Subscription console_closed_;
    Subscription print_;
    Subscription preview_;
    Subscription room_;
    Subscription arranged_;
    Subscription theme_chosen_;
    std::deque<FirstShow> first_shows_;
    std::optional<MessageRouter::Diversion> unattended_; // from `end` on
};

} // namespace pelvan::desktop
