// What a running transfer knows about itself, shared by the form and the classes that do its parts.
#pragma once

namespace pelvan {

struct TransferRun {
    bool running = false;
    /// Set when the user gives up; the transfer ends at the next register.
    bool cancel = false;
    /// The window was closed meanwhile: it goes when the transfer has ended.
    bool close_when_done = false;
    /// Refused writes that stand in the current error file.
    float error_count = 0;
    /// Everything that went wrong with single registers, refused writes included.
    int faults = 0;
    /// Lines of earlier transfers in the list of errors.
    int errors_before = 0;
    /// Registers that hold something else than the file.
    int differences = 0;
    /// The transfer did what it was asked to, single faults aside.
    bool completed = false;
};

} // namespace pelvan
