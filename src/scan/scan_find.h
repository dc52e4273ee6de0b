// A controller that a scan has found, and its line in a table.
#pragma once

#include <array>
#include <string>

#include "scan/scan_probe.h"

namespace pelvan {

struct ScanFind {
    ScanProtocol protocol = ScanProtocol::Modbus;
    bool crc = false; // of Tellura/AB
    int address = 0;  // 0 in Xon, which has none
    LineSettings line;
    ProbeAnswer answer;
    double reply_ms = 0; // the slower of the two answers
    double after_ms = 0; // from the beginning of the scan
    bool echo = false;   // the line gave back what was sent
};

inline constexpr int kFindColumns = 7;
using FindColumns = std::array<std::string, kFindColumns>;

/// Protocol, address, settings, model, answer, reply time, when found; and what stands above them.
[[nodiscard]] FindColumns columns_of(const ScanFind& find);
[[nodiscard]] const FindColumns& find_headings();

/// "Modbus, address 5, 19200,E,8,1".
[[nodiscard]] std::string find_text(const ScanFind& find);

/// Whether one controller may have made both: a receiver that waits for one stop bit hears two as
/// well, and it is the same one whatever check its packets are asked with.
[[nodiscard]] bool may_be_same(const ScanFind& find, const ScanStep& step, int address);

} // namespace pelvan
