// The content of the window "Bus Scan".
#pragma once

#include "desktop/bindings/bind.h"
#include "scan/scan_form.h"

namespace pelvan::desktop {

[[nodiscard]] QWidget* make_scan(const BindContext& context, frm_BusScan& form);

} // namespace pelvan::desktop
