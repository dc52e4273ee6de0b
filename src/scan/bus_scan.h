// Looking for controllers on a bus whose settings nobody remembers. Everything that is sent is a
// read; a controller counts when two answers of its own, check and address included, agree.
#pragma once

#include "scan/scan_line.h"
#include "scan/scan_result.h"
#include "serial/errors.h"

namespace pelvan {

class BusScan {
  public:
    /// All are borrowed. The port is one that `make_port` makes, the lines are the link's.
    BusScan(Link& link, PortFactory make_port, TickSource& tick, Dialogs& dialogs, ErrorLog& log)
        : link_(link), make_port_(std::move(make_port)), tick_(tick), dialogs_(dialogs), log_(log) {
    }

    /// Blocks for as long as the scan takes, and has the lines claimed meanwhile. The channels'
    /// ports are theirs again when it returns. Errors of the port end it and are logged; none is
    /// raised or shown.
    [[nodiscard]] ScanResult run(const ScanOptions& options, ScanListener& listener);

  private:
    Link& link_;
    PortFactory make_port_;
    TickSource& tick_;
    Dialogs& dialogs_;
    ErrorLog& log_;
};

} // namespace pelvan
