// A controller's address as somebody entered it.
#pragma once

#include <cstdint>
#include <string>

#include "platform/dialogs.h"
#include "protocols/modbus/modbus.h"

namespace pelvan {

class DeviceAddress {
  public:
    /// 6 (overflow) for a number beyond 16 bits; what is no number is an address that is refused.
    explicit DeviceAddress(const std::string& text);
    [[nodiscard]] std::int16_t number() const { return number_; }
    /// Characters of the text: where the value stands in a reply is counted from them.
    [[nodiscard]] std::size_t width() const { return width_; }

  private:
    std::int16_t number_;
    std::size_t width_;
};

/// Whether no request can be built for the address, which is told then. Who looks before work on
/// the line begins need not ask about the line's settings.
[[nodiscard]] bool address_refused(const std::string& text, Modbus& modbus, Dialogs& dialogs);

} // namespace pelvan
