// Layout of the listen window.
#pragma once

#include "desktop/bindings/bind.h"
#include "listen/listen_form.h"

namespace pelvan::desktop {

/// Options, statistics and the captured lines in one tab, the traffic in the second, the status
/// below both.
[[nodiscard]] QWidget* make_listen(const BindContext& context, frm_Listen& form);

} // namespace pelvan::desktop
