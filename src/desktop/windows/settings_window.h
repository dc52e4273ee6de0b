// Layout of the port settings and of the list of serial devices: dialogs that hold the frame while
// they are open.
#pragma once

#include "desktop/windows/mdi_frame.h"
#include "settings/comms_settings_form.h"
#include "settings/serial_devices_form.h"

namespace pelvan::desktop {

/// Both windows are children of `frame` and bound to their forms.
QWidget* make_comms_settings(const BindContext& context, frm_CommsSettings& form, MdiFrame& frame);
QWidget* make_serial_devices(const BindContext& context, frm_SerialDevices& form, MdiFrame& frame);

} // namespace pelvan::desktop
