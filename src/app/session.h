// Session state: what lives from start to exit and belongs to no window. Each folder declares its
// own slice; code gets the slices that it uses by reference.
#pragma once

#include "config/ini.h"
#include "listen/listen_state.h"
#include "logging/logging_state.h"
#include "protocols/modbus/modbus.h"
#include "serial/serial_state.h"

namespace pelvan {

struct Session {
    ConfigState config;
    SerialState serial;
    ModbusState modbus;
    ListenState listen;
    LoggingState logging;
};

} // namespace pelvan
