// One transfer on its way: what it is given, and what its parts share. It lives as long as the
// transfer.
#pragma once

#include <string>

#include "platform/tick.h"
#include "registers/controller_access.h"

namespace pelvan {

/// What a transfer works with; borrowed for as long as it runs.
struct TransferContext {
    Link& link;
    Modbus& modbus;
    Clock& clock;
    /// Where the folders of setups and of sequence files lie.
    std::string directory;
    DeviceAddress address;
    TransferListener& listener;
    CancelFlag& cancel;
    /// Registers that follow one another are read with one request.
    bool together = false;
};

/// How a transfer ended.
struct TransferResult {
    /// It did what it was asked to, single faults aside.
    bool completed = false;
    /// Everything that went wrong with single registers: refusals, damaged replies, differences.
    int faults = 0;
    /// Registers that hold something else than the file.
    int differences = 0;
    /// The file that was written, in whole or in part; empty when none was.
    std::string file = {};
};

class TransferRun {
  public:
    explicit TransferRun(const TransferContext& context)
        : claim(context.link.claim()), listener(context.listener), cancel(context.cancel),
          directory(context.directory), errors(listener),
          access(context.link, context.modbus, context.address, listener, cancel, errors,
                 context.together) {}
    TransferRun(const TransferRun&) = delete;
    TransferRun& operator=(const TransferRun&) = delete;

    void log(const std::string& text) {
        listener.log(text);
        listener.let_events_run();
    }
    [[nodiscard]] bool canceled() const { return cancel.canceled; }

    /// Nobody else's request may stand between two of a transfer.
    const LineClaim claim;
    TransferListener& listener;
    CancelFlag& cancel;
    const std::string directory;
    TransferErrors errors;
    ControllerAccess access;
};

} // namespace pelvan
