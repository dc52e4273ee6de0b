// Looking for controllers on a bus whose settings nobody remembers. Everything that is sent is a
// read; a controller counts when two answers of its own, check and address included, agree.
//
// An answer may come when the next address is asked already. It names its sender, who is then asked
// again with more patience, and so is whoever was asked when it came; only then the line waits for
// 250 ms of silence, so that silent addresses stay quick. Bytes that are nobody's answer are noise:
// those who were asked shortly before are asked again, because noise may have hit an answer.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "scan/scan_find.h"
#include "scan/scan_line.h"
#include "serial/errors.h"

namespace pelvan {

struct ScanProgress {
    const ScanStep& step;
    int address = 0;
    double done = 0; // part of all, 0 to 1
    double left_ms = 0;
};

/// What a scan tells on its way.
class ScanListener {
  public:
    virtual ~ScanListener() = default;
    /// Before every address.
    virtual void probing(const ScanProgress& progress) = 0;
    virtual void found(const ScanFind& find) = 0;
    /// Something about the line that whoever searches should know.
    virtual void remark(const std::string& sentence) = 0;
    /// Comes every 10 ms: lets events run; false ends the scan at once.
    virtual bool go_on() = 0;
};

enum class ScanEnd {
    Completed,
    FoundFirst, // and was to stop there
    Cancelled,
    Failed, // the port did not open, or its line was lost
    Refused // nothing was sent: a tool has the lines, or the options ask for nothing
};

struct ScanResult {
    ScanEnd how = ScanEnd::Completed;
    /// Why it failed or was refused, in a sentence.
    std::string reason = {};
    std::vector<ScanFind> finds = {};
    std::size_t probes = 0; // requests that were sent
    double taken_ms = 0;
    bool garbled = false; // bytes that are no answer came again when they were asked for again
    /// Settings at which somebody else went on sending, and how many addresses were not asked
    /// there.
    std::vector<std::string> busy = {};
    std::size_t unasked = 0;
};

/// That a scan could not ask everybody, and why, in a sentence; empty when it did.
[[nodiscard]] std::string unfinished_text(const ScanResult& result);

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
    class Run;

    Link& link_;
    PortFactory make_port_;
    TickSource& tick_;
    Dialogs& dialogs_;
    ErrorLog& log_;
};

} // namespace pelvan
