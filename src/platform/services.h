// What the platform gives to the tools, in one bundle: every form's constructor takes it.
#pragma once

#include <string>

#include "platform/desktop_services.h"
#include "platform/dialogs.h"
#include "platform/tick.h"

namespace pelvan {

struct Services {
    TickSource& tick;
    Clock& clock;
    Dialogs& dialogs;
    DesktopServices& desktop;
    /// Where the program's own files lie: the executable's directory, or the one given at start.
    std::string application_directory;
};

} // namespace pelvan
