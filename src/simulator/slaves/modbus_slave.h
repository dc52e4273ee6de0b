// The Modbus RTU end of a simulated controller: functions 1, 2, 3, 4, 5, 6, 8, 15 and 16, and the
// exceptions 1 (function), 2 (register) and 3 (value). It gets whole frames whose CRC fits; finding
// them on the line is the responder's.
#pragma once

#include <string>
#include <string_view>

#include "simulator/controller/controller.h"

namespace pelvan::simulator {

/// The reply frame to a request frame, empty when none is due: another address, or a broadcast.
[[nodiscard]] std::string modbus_reply(Controller& controller, unsigned address,
                                       std::string_view request);

} // namespace pelvan::simulator
