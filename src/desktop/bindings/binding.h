// What every binding of a control model to a widget has in common. A binding belongs to its widget
// and ends with it, watching included; the model must outlive the widget. It shows the properties
// that all controls have, leaves the kind's own ones to a function, and keeps the two directions
// apart: what it sets in the widget is never told back to the model.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

#include "forms/controls.h"

class QKeyEvent;

namespace pelvan::desktop {

class ActivationTracker;

/// Runs an event handler of the program: the one place where its run-time errors end.
using EventRunner = std::function<void(const std::function<void()>&)>;

/// What a binding needs beside model and widget.
struct BindContext {
    EventRunner run;                         // required; every user event goes through it
    QObject* owner = nullptr;                // parent of what has no widget: timers, menus
    ActivationTracker* activation = nullptr; // of the forms' windows
    EventRunner run_unasked = run;           // for what nobody did: a timer's tick
};

/// Offers a key to the control's own handler, which `tell` runs; true when the handler took it.
bool hand_key(const Control& control, const QKeyEvent& event,
              const std::function<void(const std::function<void()>&)>& tell);

class Binding : public QObject {
  public:
    /// `show_kind` copies the kind's own properties into the widget.
    Binding(const BindContext& context, Control& control, QWidget* widget,
            std::function<void()> show_kind);

    /// Copies the model into the widget.
    void refresh();
    /// Hands a user's action to the model, then shows what the model made of it: it may have
    /// refused. Does nothing while the widget is being refreshed.
    void tell(const std::function<void()>& action);
    /// As `tell`, after the event that is being handled: for actions that may open a dialog.
    void tell_later(std::function<void()> action);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void show_common();
    void move_focus(bool& moved);

    BindContext context_;
    Control& control_;
    QWidget* widget_;
    std::function<void()> show_kind_;
    bool refreshing_ = false;
    bool moving_focus_ = false;
    bool shown_visible_ = true;
    Subscription changes_;
    Subscription focus_;
};

} // namespace pelvan::desktop
