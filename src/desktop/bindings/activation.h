// Decides when a form is activated: when the person comes to it from another window of the program.
// Coming back from a dialog or from another program is no activation, because neither changes which
// of the program's windows was used last; a form in a modal window is a dialog. A form that is
// shown by the program runs its own Form_Activate; here it is only remembered.
#pragma once

#include <utility>

#include "desktop/bindings/binding.h"
#include "forms/form.h"

namespace pelvan::desktop {

class ActivationTracker {
  public:
    explicit ActivationTracker(EventRunner run) : run_(std::move(run)) {}

    /// The window of this form has become the active one.
    void entered(Form& form) {
        if (last_ == &form) return;
        last_ = &form;
        if (form.loaded()) run_([&form] { form.Form_Activate(); });
    }
    /// The program has brought the form forward itself. True when it was the active one already.
    bool shown(Form& form) { return std::exchange(last_, &form) == &form; }
    /// The form's window is gone.
    void forget(const Form& form) {
        if (last_ == &form) last_ = nullptr;
    }

  private:
    EventRunner run_;
    const Form* last_ = nullptr;
};

} // namespace pelvan::desktop
