// Makes a form's window when the form is first shown: start-up pays for none that is not used.
#pragma once

#include <functional>

#include "forms/form.h"

namespace pelvan::desktop {

/// `make` binds the form to a window of its own, which takes this watcher's place.
inline void make_on_first_show(Form& form, std::function<void()> make) {
    form.watch([&form, make = std::move(make)] {
        if (!form.Visible()) return;
        const auto kept = make; // binding ends this function object
        kept();
    });
}

} // namespace pelvan::desktop
