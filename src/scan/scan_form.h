// The window "Bus Scan": what to try, the scan on its way, and the controllers that it has found,
// whose settings can be put into their channel.
#pragma once

#include <array>

#include "config/ini.h"
#include "forms/form.h"
#include "forms/lists.h"
#include "platform/services.h"
#include "scan/bus_scan.h"

namespace pelvan {

/// What the window asks of the program round it.
class ScanHost {
  public:
    virtual ~ScanHost() = default;
    /// The protocol selected on the console.
    [[nodiscard]] virtual int selected_protocol() const = 0;
    /// Puts the settings into the channel of the find's protocol and saves them; says what it did,
    /// or why not.
    virtual std::string use_settings(const ScanFind& find, std::int16_t port, int line_mode) = 0;
};

class frm_BusScan : public Form, private ScanListener {
  public:
    static constexpr std::size_t kRates = 8;
    static constexpr std::size_t kParities = 3;

    frm_BusScan(Services& services, const ConfigState& config, Link& link, BusScan& scan,
                ScanHost& host);

    Label lbl_Port{"lbl_Port", "&Port"};
    ComboBox cmb_Port{"cmb_Port", {}, -1, false, "The port number whose line is searched."};
    Frame fram_Protocols{"fram_Protocols", "Protocols"};
    std::array<CheckBox, kScanProtocols> chk_Protocol;
    Frame fram_Baud{"fram_Baud", "Baud Rates"};
    std::array<CheckBox, kRates> chk_Baud;
    Frame fram_Format{"fram_Format", "Character Format"};
    std::array<CheckBox, kParities> chk_Parity;
    CheckBox chk_TwoStopBits{"chk_TwoStopBits", "&2 stop bits, too",
                             "Most controllers with 2 stop bits are found with 1 already."};
    CheckBox chk_SevenBits{"chk_SevenBits", "&7 data bits, too",
                           "For Full and Xon; the frames of the others need 8."};
    Frame fram_Addresses{"fram_Addresses", "Addresses"};
    Label lbl_First{"lbl_First", "Fro&m"};
    TextBox txt_First{"txt_First", "0",
                      "First address, 0 to 247. A protocol is asked for those that it has."};
    Label lbl_Last{"lbl_Last", "t&o"};
    TextBox txt_Last{"txt_Last", "247", "Last address, 0 to 247."};
    Label lbl_Patience{"lbl_Patience", "Pati&ence (ms)"};
    TextBox txt_Patience{"txt_Patience", std::to_string(kScanPatienceMs),
                         "How long a controller may take to begin its answer, 10 to 2000 ms. One "
                         "that takes longer is found when its answer comes within 250 ms more."};
    CheckBox chk_StopAtFirst{"chk_StopAtFirst", "Stop at the f&irst controller",
                             "End the scan as soon as one controller is found."};
    /// How long it will take, or what is wrong with the choice.
    Label lbl_Estimate{"lbl_Estimate"};
    Button cmd_Start{"cmd_Start", "Sta&rt Scan", "Search the line. Nothing but reads is sent."};
    Button cmd_Cancel{"cmd_Cancel", "Cancel", "End the scan at once (Escape)."};
    ProgressBar pgb_Scan{"pgb_Scan"};
    /// What is tried now, how it ended, what was done with a find.
    Label lbl_Status{"lbl_Status"};
    Label lbl_Found{"lbl_Found", "&Controllers found"};
    /// The columns of a find, parted by tabs.
    ListBox lst_Found{"lst_Found", "", "Enter uses the settings of the selected controller."};
    /// What the scan has met on the line.
    Label lbl_Remarks{"lbl_Remarks"};
    Button cmd_Use{"cmd_Use", "&Use These Settings",
                   "Put port, baud rate and format into the channel of the selected controller's "
                   "protocol, and save them."};
    Button cmd_Exit{"cmd_Exit", "E&xit"};
    MenuEntry mnuHelp{"mnuHelp", "&Help"};
    MenuEntry mnuHelpContents{"mnuHelpContents", "&Contents"};

    void Form_Activate() override;
    /// During a scan cancels it; the window goes when the scan has ended.
    bool Form_Unload() override;
    void cmd_Start_Click();
    void cmd_Use_Click();
    /// Ends a scan that runs, without a question: it has changed nothing.
    void cancel() { go_on_ = false; }
    [[nodiscard]] bool running() const { return running_; }
    /// A scan has ended, however it ended.
    Event<> ended;

  private:
    void make_boxes();
    void connect();
    void list_ports();
    [[nodiscard]] std::int16_t chosen_port() const;
    [[nodiscard]] ScanOptions options() const;
    /// What is wrong with the choice, in a sentence, and the box to mend it in; empty when it can
    /// be tried.
    [[nodiscard]] std::string problem(TextBox*& box);
    void show_estimate();
    void show_state();
    void show_result(const ScanResult& result);
    [[nodiscard]] std::vector<CheckBox*> check_boxes();
    /// What is fixed while a scan runs.
    [[nodiscard]] std::vector<Control*> choices();

    void probing(const ScanProgress& progress) override;
    void found(const ScanFind& find) override;
    void remark(const std::string& sentence) override;
    bool go_on() override;

    Services& services_;
    const ConfigState& config_;
    Link& link_;
    BusScan& scan_;
    ScanHost& host_;
    std::vector<std::int16_t> ports_; // as they stand in the list
    std::vector<ScanFind> finds_;     // as they stand in the list
    std::int16_t scanned_port_ = 0;
    int line_mode_ = 1;
    bool running_ = false;
    bool go_on_ = true;
    bool close_when_done_ = false;
    double told_ms_ = 0; // when the status was shown last
    Subscription line_use_ =
        link_.channels().line_use().changed.subscribe([this] { show_state(); });
};

} // namespace pelvan
