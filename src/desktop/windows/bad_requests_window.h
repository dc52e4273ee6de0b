// The child window of bad requests: layout and bindings.
#pragma once

#include "badrequests/bad_requests_form.h"
#include "desktop/bindings/bind.h"

namespace pelvan::desktop {

/// The window's content, bound to the form.
[[nodiscard]] QWidget* make_bad_requests(const BindContext& context, frm_BadRequests& form);

} // namespace pelvan::desktop
