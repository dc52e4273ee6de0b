// The console's work in every protocol, without its window: what a window, a terminal command or a
// script sends goes through one of these.
#pragma once

#include "console/modbus_sender.h"
#include "console/tellura_sender.h"
#include "console/text_sender.h"

namespace pelvan {

struct Senders {
    Senders(Link& link, Modbus& modbus_protocol, Clock& clock, Dialogs& dialogs)
        : modbus(link, modbus_protocol, clock), text(link, clock, dialogs),
          tellura(link, clock, dialogs) {}

    ModbusSender modbus;
    TextSender text;
    TelluraSender tellura;
};

} // namespace pelvan
