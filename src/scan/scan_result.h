// What a scan tells: on its way to whoever listens, and how it ended.
#pragma once

#include <string>
#include <vector>

#include "scan/scan_find.h"

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

/// An address whose answer was heard and that is no find.
struct UnsureAnswer {
    ScanProtocol protocol = ScanProtocol::Modbus;
    int address = 0;
    LineSettings line;
    /// It came too late for the patience of the scan; so much would do. 0 when it came in time, and
    /// no second one did.
    double patience_ms = 0;
};

struct ScanResult {
    ScanEnd how = ScanEnd::Completed;
    /// Why it failed or was refused, in a sentence.
    std::string reason = {};
    std::vector<ScanFind> finds = {};
    std::vector<UnsureAnswer> unsure = {};
    std::size_t probes = 0; // requests that were sent
    double taken_ms = 0;
    bool garbled = false; // bytes that are no answer came again when they were asked for again
    bool strays = false;  // bytes came that nobody was asked for
    /// Settings at which somebody else went on sending, and how many addresses were not asked
    /// there.
    std::vector<std::string> busy = {};
    std::size_t unasked = 0;
};

/// What to do about answers that made no find, in a sentence that ends the scan; empty when there
/// are none. `patience` is how whoever reads it calls the patience, which a number follows.
[[nodiscard]] std::string unsure_text(const ScanResult& result, const std::string& patience);
/// What the line showed of them: of one protocol at one setting, all late or all not.
[[nodiscard]] std::string unsure_remark(const std::vector<UnsureAnswer>& answers);

/// That one address gave both answers.
[[nodiscard]] std::string two_of_one_remark(const ScanStep& step, int address,
                                            const ProbeAnswer& one, const ProbeAnswer& other);

/// That a scan could not ask everybody, and why, in a sentence; empty when it did.
[[nodiscard]] std::string unfinished_text(const ScanResult& result);

} // namespace pelvan
