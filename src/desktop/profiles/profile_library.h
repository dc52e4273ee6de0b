// The way to the profile window, whose code lies in a library that is loaded when the window is
// first asked for.
#pragma once

#include <QString>

#include "desktop/profiles/profile_module.h"

namespace pelvan::desktop {

struct MadeProfileWindow {
    ProfileWindow window; // without content when the library is missing
    QString error;
};

/// Loads the library from the directory and makes the window's content of the parts, which it owns
/// from then on.
[[nodiscard]] MadeProfileWindow make_profile_window(const QString& directory,
                                                    const ProfileParts& parts);

} // namespace pelvan::desktop
