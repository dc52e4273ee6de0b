// One run of a bus scan: who is asked, who is asked again, and what counts as a find.
//
// An answer may come when the next address is asked already. It names its sender, who is then asked
// again with more patience, and so is whoever was asked when it came; only then the line waits for
// 250 ms of silence, so that silent addresses stay quick. Bytes that are nobody's answer are noise:
// those who were asked shortly before are asked again, because noise may have hit an answer.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

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
    struct Asked {
        int address;
        double at_ms;
    };

    [[nodiscard]] double now_ms() { return tools_.tick.precise_ms() - begun_ms_; }
    [[nodiscard]] bool ended() { return !line_.go_on() || result_.how == ScanEnd::FoundFirst; }
    [[nodiscard]] bool open(const ScanStep& step);
    void give_up(std::size_t asked);
    void step();
    void tell(int address);
    [[nodiscard]] std::ptrdiff_t settings_of(int address) const;
    [[nodiscard]] bool is_settled(int address) const;
    void tell_settings(int address);
    void remark_once(const std::string& sentence) {
        if (said_.insert(sentence).second) listener_.remark(sentence);
    }
    Heard ask(int address, double patience_ms);
    void ask_first(int address);
    void confirm(int address, ProbeAnswer first, double reply_ms);
    void look_again(int address, std::string bytes);
    void ask_again(int address, double patience_ms);
    void tell_garbled(int address);
    [[nodiscard]] std::vector<int> asked_lately() const;

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

    const ScanStep* step_ = nullptr;
    std::unique_ptr<ScanProbe> probe_;
    std::vector<Asked> asked_;        // of this step, in turn
    std::map<int, int> repeats_;      // because of noise, by address
    std::map<int, int> sure_repeats_; // because of an answer that came late
    int busy_ = 0;
    std::string busy_settings_; // where this was so last
    std::set<std::string> said_;
    std::vector<std::string> refused_; // settings that the port does not have
};

} // namespace pelvan
