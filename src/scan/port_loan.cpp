#include "scan/port_loan.h"

#include "platform/run_time_error.h"

namespace pelvan {

PortLoan::PortLoan(ChannelTable& channels, std::int16_t number) : channels_(channels) {
    for (SerialPort* port : channels.state().gCommDevice) {
        if (port->CommPort() != number || !port->PortOpen()) continue;
        closed_.push_back(port);
        port->set_PortOpen(false);
    }
}

PortLoan::~PortLoan() {
    for (SerialPort* port : closed_) {
        try {
            port->set_PortOpen(true);
        } catch (const RunTimeError&) {
            channels_.before_close.raise(*port);
        }
    }
}

} // namespace pelvan
