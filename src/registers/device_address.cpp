#include "registers/device_address.h"

#include <array>

#include "platform/run_time_error.h"
#include "serial/errors.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

/// No request is built for it: "1O" must not reach controller 1.
constexpr std::int16_t kNoAddress = -1;

constexpr std::int16_t kReadHolding = 3;

} // namespace

DeviceAddress::DeviceAddress(const std::string& text)
    : number_(is_numeric(trim(text)) ? int16_from(leading_number(text)) : kNoAddress),
      width_(text.size()) {}

bool address_refused(const std::string& text, Modbus& modbus, Dialogs& dialogs) {
    try {
        std::array<float, 3> values{0, 1, kValueListEnd};
        const std::string frame =
            modbus.ModbusBuildRequest(kReadHolding, DeviceAddress(text).number(), 0, values);
        if (!is_refusal(frame)) return false;
        dialogs.message_box(frame);
    } catch (const RunTimeError& error) {
        show_error_message(dialogs, error.number());
    }
    return true;
}

} // namespace pelvan
