// One Modbus command of the console: an entry in, the outcome with its rendering out.
#pragma once

#include "console/modbus_entry.h"
#include "console/send_outcome.h"
#include "serial/careful_exchange.h"

namespace pelvan {

struct ModbusSendOptions {
    DataFormat format = DataFormat::Decimal;
    /// Send a wrong CRC, to see what the controller does.
    bool corrupt_crc = false;
};

/// Changes the last byte of a frame, so that its check is wrong: 255 becomes 0, all else 255.
void corrupt_last_byte(std::string& frame);

class ModbusSender {
  public:
    ModbusSender(Link& link, Modbus& modbus, Clock& clock)
        : link_(link), modbus_(modbus), clock_(clock) {}

    /// Builds, sends on channel 1 and decodes; a request that cannot be built is refused with the
    /// builder's text. A reply that is not the answer is shown, but not accepted. Blocks as
    /// `exchange_carefully` does, up to two seconds an exchange.
    [[nodiscard]] SendOutcome send(const ModbusEntry& entry, const ModbusSendOptions& options);

  private:
    [[nodiscard]] SendOutcome send_once(const ModbusEntry& entry, const ModbusSendOptions& options);
    [[nodiscard]] CarefulReply exchange(const std::string& frame, ExchangeTimes& times);

    Link& link_;
    Modbus& modbus_;
    Clock& clock_;
};

} // namespace pelvan
