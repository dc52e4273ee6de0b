// Layout of Data Logging.
#pragma once

#include "desktop/bindings/bind.h"
#include "desktop/windows/mdi_frame.h"
#include "logging/logging_form.h"

namespace pelvan::desktop {

/// The window's contents: grid, interval, file options, status. The trend opens above `frame`, in
/// a window of its own that is no child of the frame: looking at it is no leaving of this window.
[[nodiscard]] QWidget* make_logging(const BindContext& context, frm_DataLogging& form,
                                    Dialogs& dialogs, MdiFrame& frame);

} // namespace pelvan::desktop
