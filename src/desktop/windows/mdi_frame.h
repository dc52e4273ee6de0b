// The frame window: the area of the child windows, the menu bar with the menus of the active child
// and the frame's own, the Window menu, the keys that go from child to child, help on F1, where the
// children stand, and the activation rule. What the menus' entries do is the forms' business.
#pragma once

#include <QMainWindow>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "desktop/bindings/activation.h"
#include "desktop/bindings/bind.h"
#include "desktop/system/place_keeper.h"
#include "desktop/windows/focus_keeper.h"
#include "platform/desktop_services.h"

class QMdiArea;
class QMdiSubWindow;
class QShortcut;

namespace pelvan::desktop {

class MdiFrame : public QMainWindow {
  public:
    /// `form` stands for the frame itself: its caption, its state, and the menus shown whichever
    /// child window is active. It is shown by the form's `Show` or by the window's own `show`;
    /// closing it unloads the form, and it stays when the form refuses.
    /// `places` (borrowed) remembers where the children stand.
    MdiFrame(const BindContext& context, Form& form, DesktopServices& services,
             WindowPlaces& places);
    ~MdiFrame() override;

    /// Puts the content into a child window bound to the form; both stay the frame's. It stands
    /// where the person had it, else at `place` (in pixels; an empty one is made to measure), and
    /// the form's own `Move` asks for another one. It never comes to stand outside the frame.
    QMdiSubWindow* add_child(Form& form, QWidget* content, const QRect& place = {});

    /// Whether the windows of these forms stand where the program put them.
    [[nodiscard]] bool stand_as_put(const std::vector<const Form*>& forms) const;
    /// From now on these windows are the program's to place, wherever the person has had them.
    void forget_places(const std::vector<const Form*>& forms);
    /// Raised when the room for the children has another size.
    Event<> room_changed;

    /// Adds an entry to the top of the Window menu, which exists from the first one on. The
    /// children that can be seen are listed below.
    ///
    /// Those of the children that have an entry of their name are not listed again.
    void add_window_entry(MenuEntry& entry);

    /// What is painted first of the frame.
    [[nodiscard]] QWidget& canvas() const;

    /// Form of the active child window; null when there is none.
    [[nodiscard]] Form* active_form() const;

    /// The context to bind the controls and windows of the children with.
    [[nodiscard]] const BindContext& context() const { return context_; }

    /// Where windows stood, also those that are no children.
    [[nodiscard]] WindowPlaces& places() const { return places_; }

    /// As F1 does with the active child's page.
    void show_help(const std::string& page);

    void setVisible(bool visible) override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void child_activated(QMdiSubWindow* child);
    void show_menus();
    [[nodiscard]] QMdiSubWindow* current_child() const;
    [[nodiscard]] bool has_entry(const QMdiSubWindow& child) const;
    void list_children();
    void add_keys();
    std::vector<QMenu*> make_menus(Form& form);

    struct Child {
        Form* form;
        std::vector<QMenu*> menus;
        PlaceKeeper* place;
        Subscription moves;
    };
    [[nodiscard]] std::vector<PlaceKeeper*> keepers_of(const std::vector<const Form*>& forms) const;

    ActivationTracker activation_;
    BindContext context_;
    Form& form_;
    DesktopServices& services_;
    WindowPlaces& places_;
    QMdiArea* area_;
    std::unique_ptr<FocusKeeper> focus_;
    std::map<QMdiSubWindow*, Child> children_;
    std::vector<QMenu*> own_menus_;
    QMenu* window_menu_ = nullptr;
    std::vector<QAction*> entries_; // of the Window menu
    std::vector<QAction*> listed_;
    std::optional<QMdiSubWindow*> menus_of_; // whose menus are shown
    std::vector<QShortcut*> close_keys_;     // of the active child
    bool becoming_visible_ = false;
    Subscription changes_;
};

} // namespace pelvan::desktop
