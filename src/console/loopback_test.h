// The guided loop-back test of a serial port and its wiring, "Verify Communications Port": with the
// transmit and receive pins joined a text must come back, without the jumper it must not.
#pragma once

#include <functional>

#include "console/history.h"
#include "serial/link.h"

namespace pelvan {

/// Runs the test on a channel; true when it passed. Both sendings become pairs of the history;
/// `form` shows the hourglass meanwhile.
///
/// `jumper_moved(in)` is called when the user has confirmed having moved the jumper. Blocks up to
/// two seconds for each half, beside the message boxes; every outcome is one of these.
bool verify_port(Services& services, Link& link, History& history, Form& form, std::int16_t channel,
                 const std::function<void(bool in)>& jumper_moved);

/// Changes the last byte of a frame, so that its check is wrong: 255 becomes 0, all else 255.
void spoil_last_byte(std::string& frame);

} // namespace pelvan
