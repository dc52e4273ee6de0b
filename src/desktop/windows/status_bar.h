// The frame's status bar.
#pragma once

#include "app/line_panel.h"
#include "desktop/bindings/bind.h"

class QMainWindow;

namespace pelvan::desktop {

/// Gives the window a status bar that shows the panel.
void add_status_bar(const BindContext& context, LinePanel& panel, QMainWindow& window);

} // namespace pelvan::desktop
