// Layout of the console and of the two history windows.
#pragma once

#include "console/console_form.h"
#include "desktop/bindings/bind.h"

namespace pelvan::desktop {

/// The console's contents: protocol, the chosen protocol's fields, data format, sending, status.
[[nodiscard]] QWidget* make_console(const BindContext& context, frm_Pelvan5VB& form);

/// A history window's contents: the list over the whole window, its scroll bar along the bottom
/// edge.
[[nodiscard]] QWidget* make_history(const BindContext& context, HistoryForm& form);

} // namespace pelvan::desktop
