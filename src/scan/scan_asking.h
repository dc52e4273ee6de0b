// What one protocol has asked at the present settings, and what came: who may still answer which
// request, and what each address has said. Moments are milliseconds of the scan.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "scan/scan_probe.h"

namespace pelvan {

/// An answer that comes later than this is not taken for the request's.
inline constexpr double kLatestAnswerMs = 3000;

/// Between the end of a request and an answer.
struct AnswerTime {
    double ms = 0; // since the first request that was still without an answer
    /// A later request may have been the one that was answered.
    bool unsure = false;
};

class ScanAsking {
  public:
    ScanAsking(const ScanStep& step, std::unique_ptr<ScanProbe> probe)
        : step_(&step), probe_(std::move(probe)) {}

    [[nodiscard]] const ScanStep& step() const { return *step_; }
    [[nodiscard]] ScanProbe& probe() const { return *probe_; }

    void sent(int address, double at_ms) { requests_.push_back({address, at_ms, true}); }
    [[nodiscard]] bool has_asked(int address) const;
    /// Those who were asked in the time before the last request, the last one first, each once.
    [[nodiscard]] std::vector<int> asked_lately(double before_ms) const;
    /// An answer came at that moment; it belongs to the first request that is without one.
    AnswerTime answered(int address, double at_ms);
    /// Nothing that was sent to the address before is answered any more.
    void forget_requests(int address);
    /// Takes note of what the address has said; what it had said before when that was somebody
    /// else's, as no controller says both.
    [[nodiscard]] const ProbeAnswer* contradicted(int address, const ProbeAnswer& answer);

    /// How often an address was asked again because of noise.
    std::map<int, int> repeats = {};
    /// Because of an answer that came late.
    std::map<int, int> sure_repeats = {};
    /// Whose answer was heard and has made no find so far, and how long it took; 0 for one in time.
    std::map<int, double> unsure = {};

  private:
    struct Request {
        int address;
        double at_ms;
        bool open; // nothing has come for it
    };

    const ScanStep* step_;
    std::unique_ptr<ScanProbe> probe_;
    std::vector<Request> requests_; // in turn
    std::map<int, ProbeAnswer> said_;
};

} // namespace pelvan
