// Layout of the window that saves and restores setups.
#pragma once

#include "desktop/bindings/bind.h"
#include "transfer/download_parm_form.h"

namespace pelvan::desktop {

/// The address and the transfers' buttons along the top, the steps on the left, what went wrong on
/// the right, progress and cancel along the bottom.
[[nodiscard]] QWidget* make_transfer(const BindContext& context, frm_DownloadParm& form);

} // namespace pelvan::desktop
