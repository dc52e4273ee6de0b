// One run of a bus scan: who is asked, who is asked again, and what counts as a find.
//
// An answer may come when the next address is asked already. It names its sender, who is then asked
// again with more patience, and so is whoever was asked when it came; only then the line waits for
// 250 ms of silence, so that silent addresses stay quick. Bytes that are nobody's answer are noise:
// those who were asked shortly before are asked again, because noise may have hit an answer. What
// comes back then as well is a device's, unless such bytes come while nobody is asked.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "scan/scan_asking.h"
#include "scan/scan_line.h"
#include "scan/scan_result.h"

namespace pelvan {

class ScanRun {
  public:
    /// What it works with, borrowed.
    struct Tools {
        Link& link;
        TickSource& tick;
        Dialogs& dialogs;
    };
    ScanRun(Tools tools, std::unique_ptr<SerialPort> port, const ScanOptions& options,
            ScanListener& listener, ScanResult& result);

    [[nodiscard]] bool empty() const { return plan_.empty(); }
    /// Whether the port was open at any setting.
    [[nodiscard]] bool opened() const { return opened_; }
    /// Raises errors of the port.
    void all();

  private:
    static constexpr int kTries = 3; // of whoever has answered once, for a second answer
    /// Controllers that are slow are slower at times.
    static constexpr double kMargin = 1.2;

    /// An address' own answer to what it was asked.
    struct Given {
        ProbeAnswer answer;
        double reply_ms;
        bool unsure; // of the time: another request may have been the answered one
    };

    /// Moments of the tick as those of the scan.
    [[nodiscard]] double scan_ms(double tick_ms) const { return tick_ms - begun_ms_; }
    [[nodiscard]] double now_ms() { return scan_ms(tools_.tick.precise_ms()); }
    [[nodiscard]] bool ended() { return !line_.go_on() || result_.how == ScanEnd::FoundFirst; }
    [[nodiscard]] bool open(const ScanStep& step);
    void give_up(std::size_t asked);
    void step(const ScanStep& step);
    void tell(int address);
    [[nodiscard]] std::ptrdiff_t settings_of(const ScanStep& step, int address) const;
    [[nodiscard]] bool is_settled(const ScanAsking& asking, int address) const;
    void tell_settings(int address);
    void remark_once(const std::string& sentence) {
        if (said_.insert(sentence).second) listener_.remark(sentence);
    }
    [[nodiscard]] double sure_patience_ms() const;
    Heard ask(int address, double patience_ms);
    Heard ask_patiently(int address, double patience_ms);
    [[nodiscard]] std::optional<Given> given(int address, const Heard& heard);
    void ask_first(int address);
    void confirm(int address, Given first);
    void settle(int address, double answer_ms);
    void list(int address, const Given& first, const Given& second);
    void hear(ScanAsking& asking, int address, const ProbeAnswer& answer);
    bool note(const std::string& bytes);
    void take(ScanAsking& asking, const Sender& sender);
    void note_silence();
    void listen_behind();
    void look_again(int address, std::string bytes);
    void ask_pending();
    bool ask_again(int address, double patience_ms);
    void tell_garbled(int address);
    void tell_strays();
    [[nodiscard]] bool is_of_settings_before(double arrived_ms);
    void leave_settings();

    Tools tools_;
    const ScanOptions& options_;
    ScanListener& listener_;
    ScanResult& result_;
    std::vector<ScanStep> plan_;
    double all_ms_;
    double begun_ms_ = tools_.tick.precise_ms();
    double done_ms_ = 0; // of the estimate
    bool opened_ = false;
    ScanLine line_;

    std::deque<ScanAsking> askings_; // at the present settings, in turn
    ScanAsking* asking_ = nullptr;   // the one of whoever is asked now
    /// Who answered late, and is asked again when the one who is asked now is done with.
    std::deque<std::pair<ScanAsking*, int>> pending_;
    double slowest_ms_ = 0;       // of all answers that came late
    std::string settings_before_; // the present ones; of this scan
    double opened_ms_ = 0;        // when the present ones began, by the tick
    int strays_ = 0;              // bursts
    int alone_ = 0;               // times that the line was listened to for them
    int busy_ = 0;
    std::string busy_settings_; // where this was so last
    std::set<std::string> said_;
    std::vector<std::string> refused_; // settings that the port does not have
};

} // namespace pelvan
