// The line errors of a listen session: what the hardware counts while somebody listens, also when
// the device goes and comes back, which makes its count begin anew.
#pragma once

#include <optional>
#include <string>

#include "platform/serial_port.h"

namespace pelvan {

/// "No line errors.", "Line errors: 2 parity, 1 framing.", or that the driver does not count them.
[[nodiscard]] std::string line_errors_sentence(const std::optional<LineErrors>& errors);

class LineErrorCount {
  public:
    /// Counts from here on.
    void begin(const SerialPort& port);
    /// Takes over what the port has counted by now; a port that is lost or closed tells nothing.
    void look(const SerialPort& port);
    /// Nothing where the driver does not count.
    [[nodiscard]] std::optional<LineErrors> total() const;

  private:
    LineErrors earlier_; // of openings before this one
    std::optional<LineErrors> start_;
    LineErrors last_;
};

} // namespace pelvan
