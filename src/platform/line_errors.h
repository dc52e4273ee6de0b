// What went wrong on a serial line by the count of its hardware, where the driver tells.
#pragma once

#include <string>

namespace pelvan {

struct LineErrors {
    long parity = 0;
    long framing = 0;  // a character without its stop bit: a wrong baud rate or format as a rule
    long overruns = 0; // bytes that came before the ones before them were fetched
    long breaks = 0;
    bool operator==(const LineErrors&) const = default;
};

/// "no line errors", "line errors: 2 parity, 1 framing"; kinds that did not occur are left out.
[[nodiscard]] std::string line_errors_text(const LineErrors& errors);

} // namespace pelvan
