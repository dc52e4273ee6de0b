// Makes the window of a form, or the widget of a control, when it is first shown: start-up pays for
// none that is not used.
#pragma once

#include <functional>
#include <utility>

#include "forms/form.h"

namespace pelvan::desktop {

class FirstShow {
  public:
    /// `make` binds the control to a widget of its own; it runs once. The control must outlive
    /// this.
    FirstShow(Control& control, std::function<void()> make)
        : changes_(control.watch([this, &control, make = std::move(make)] {
              if (!control.Visible()) return;
              changes_.end();
              make();
          })) {}

  private:
    Subscription changes_;
};

} // namespace pelvan::desktop
