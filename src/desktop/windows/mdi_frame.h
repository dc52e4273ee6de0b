// The frame window: the area of the child windows, the menu bar with the menus of the active child
// and the frame's own, the Window menu, the keys that go from child to child,
// help on F1, and the activation rule. What the menus' entries do is the forms' business.
#pragma once

#include <QMainWindow>
#include <map>

#include "desktop/bindings/activation.h"
#include "desktop/bindings/bind.h"
#include "platform/desktop_services.h"

class QMdiArea;
class QMdiSubWindow;

namespace pelvan::desktop {

class MdiFrame : public QMainWindow {
  public:
    /// `form` stands for the frame itself: its caption, its state, and the menus shown whichever
    /// child window is active. It is shown by the form's `Show` or by the window's own `show`;
    /// closing it unloads the form, and it stays when the form refuses.
    MdiFrame(const BindContext& context, Form& form, DesktopServices& services);
    ~MdiFrame() override;

    /// Puts the content into a child window bound to the form; both stay the frame's.
    QMdiSubWindow* add_child(Form& form, QWidget* content);

    /// Adds an entry to the top of the Window menu, which exists from the first one on. The
    /// children that can be seen are listed below.
    void add_window_entry(MenuEntry& entry);

    /// What is painted first of the frame.
    [[nodiscard]] QWidget& canvas() const;

    /// Form of the active child window; null when there is none.
    [[nodiscard]] Form* active_form() const;

    /// The context to bind the controls and windows of the children with.
    [[nodiscard]] const BindContext& context() const { return context_; }

    /// As F1 does with the active child's page.
    void show_help(const std::string& page);

    void setVisible(bool visible) override;

  protected:
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void child_activated(QMdiSubWindow* child);
    void show_menus();
    void list_children();
    void add_keys();
    std::vector<QMenu*> make_menus(Form& form);

    struct Child {
        Form* form;
        std::vector<QMenu*> menus;
    };

    ActivationTracker activation_;
    BindContext context_;
    Form& form_;
    DesktopServices& services_;
    QMdiArea* area_;
    std::map<QMdiSubWindow*, Child> children_;
    std::vector<QMenu*> own_menus_;
    QMenu* window_menu_ = nullptr;
    std::vector<QAction*> listed_;
    bool becoming_visible_ = false;
    Subscription changes_;
};

} // namespace pelvan::desktop
