// The child window of ramp profiles: binds the form's controls to widgets, which a library that is
// loaded on first use puts in their places, beside tables and curves of its own.
#pragma once

#include "desktop/windows/mdi_frame.h"
#include "profile/window/profile_logic_form.h"

namespace pelvan::desktop {

/// Adds the form's window to the frame; says so and unloads the form when the library is missing in
/// the directory.
void add_profile_window(const QString& directory, frm_ProfileLogic& form, Dialogs& dialogs,
                        MdiFrame& frame);

} // namespace pelvan::desktop
