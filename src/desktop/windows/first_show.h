// Makes a form's window when the form is first shown: start-up pays for none that is not used.
#pragma once

#include <functional>
#include <utility>

#include "forms/form.h"

namespace pelvan::desktop {

class FirstShow {
  public:
    /// `make` binds the form to a window of its own; it runs once. The form must outlive this.
    FirstShow(Form& form, std::function<void()> make)
        : changes_(form.watch([this, &form, make = std::move(make)] {
              if (!form.Visible()) return;
              changes_.end();
              make();
          })) {}

  private:
    Subscription changes_;
};

} // namespace pelvan::desktop
