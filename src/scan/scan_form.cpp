#include "scan/scan_form.h"

#include <algorithm>
#include <utility>

#include "config/device_map.h"
#include "scan/scan_channel.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

constexpr char kReadsOnly[] = "A scan only reads: it changes nothing in a controller.";
constexpr char kNothingFound[] =
    "No controller answered. Look at its supply, the cable, and whether the two wires of an RS-485 "
    "line are crossed; or try more rates and formats, or more patience.";
constexpr char kNoValidAnswer[] =
    "No controller was found, but something answers: see below, or try more rates and formats.";
constexpr char kOnlyStrays[] =
    "No controller answered, but somebody else sends, or the line is disturbed: see below.";
constexpr const char* kParityCaptions[] = {"No parit&y", "E&ven parity", "O&dd parity"};
constexpr char kParityLetters[] = {'N', 'E', 'O'};
constexpr std::ptrdiff_t kMostRemarks = 3; // lines
constexpr double kTellEveryMs = 200;
constexpr std::size_t kUsualRates = 4; // of the list, whose likely ones come first

template <std::size_t Count, std::size_t... Index>
std::array<CheckBox, Count> boxes(const char* name, std::index_sequence<Index...>) {
    return {CheckBox{control_name(name, static_cast<int>(Index))}...};
}

template <std::size_t Count> std::array<CheckBox, Count> boxes(const char* name) {
    return boxes<Count>(name, std::make_index_sequence<Count>());
}

std::string row_of(const ScanFind& find) {
    std::string row;
    for (const std::string& column : columns_of(find))
        row += (row.empty() ? "" : "\t") + column;
    return row;
}

} // namespace

frm_BusScan::frm_BusScan(Services& services, const ConfigState& config, Link& link, BusScan& scan,
                         ScanHost& host)
    : Form("frm_BusScan", "Bus Scan"), chk_Protocol(boxes<kScanProtocols>("chk_Protocol")),
      chk_Baud(boxes<kRates>("chk_Baud")), chk_Parity(boxes<kParities>("chk_Parity")),
      services_(services), config_(config), link_(link), scan_(scan), host_(host) {
    set_help_page("bus_scan");
    make_boxes();
    connect();
    lbl_Status.set_Caption(kReadsOnly);
    mnuHelpContents.Click = [this] { services_.desktop.show_help(help_page()); };
    mnuHelp.children = {&mnuHelpContents};
    menus = {&mnuHelp};
    show_state();
}

void frm_BusScan::make_boxes() {
    constexpr const char* kCaptions[] = {"&Full", "Mod&bus", "Xo&n", "Te&llura/AB"};
    constexpr const char* kTips[] = {"Polls the addresses 0 to 32, and ends each poll.",
                                     "Reads register 0 of the addresses 1 to 247.",
                                     "Asks \"? C1\"; controllers of this protocol have no address.",
                                     "Reads parameter 0000 of the addresses 1 to 32."};
    for (std::size_t i = 0; i < chk_Protocol.size(); ++i) {
        chk_Protocol[i].set_Caption(kCaptions[i]);
        chk_Protocol[i].set_ToolTipText(kTips[i]);
        chk_Protocol[i].set_Value(1);
    }
    for (std::size_t i = 0; i < chk_Baud.size(); ++i) {
        chk_Baud[i].set_Caption(std::to_string(scan_baud_rates()[i]));
        chk_Baud[i].set_ToolTipText("Bits a second.");
        chk_Baud[i].set_Value(i < kUsualRates ? 1 : 0);
    }
    for (std::size_t i = 0; i < chk_Parity.size(); ++i) {
        chk_Parity[i].set_Caption(kParityCaptions[i]);
        chk_Parity[i].set_ToolTipText("Try all chosen rates with it.");
        chk_Parity[i].set_Value(1);
    }
}

std::vector<CheckBox*> frm_BusScan::check_boxes() {
    std::vector<CheckBox*> all{&chk_StopAtFirst, &chk_TwoStopBits, &chk_SevenBits};
    for (CheckBox& box : chk_Protocol)
        all.push_back(&box);
    for (CheckBox& box : chk_Baud)
        all.push_back(&box);
    for (CheckBox& box : chk_Parity)
        all.push_back(&box);
    return all;
}

std::vector<Control*> frm_BusScan::choices() {
    std::vector<Control*> all{&cmb_Port, &txt_First, &txt_Last, &txt_Patience};
    for (CheckBox* box : check_boxes())
        all.push_back(box);
    return all;
}

void frm_BusScan::connect() {
    const auto changed = [this] { show_estimate(); };
    for (CheckBox* box : check_boxes())
        box->Click = changed;
    for (TextBox* box : {&txt_First, &txt_Last, &txt_Patience}) {
        box->Change = changed;
        box->GotFocus = [box] { box->select_all(); };
    }
    for (Control* control : choices()) {
        control->KeyDown = [this](Key key) {
            if (key != Key::Enter) return false;
            cmd_Start.press();
            return true;
        };
    }
    cmb_Port.Click = changed;
    cmd_Start.Click = [this] { cmd_Start_Click(); };
    cmd_Cancel.Click = [this] { cancel(); };
    cmd_Use.Click = [this] { cmd_Use_Click(); };
    cmd_Exit.Click = [this] { Unload(); };
    lst_Found.Click = [this] { show_state(); };
    lst_Found.DblClick = [this] { cmd_Use.press(); };
    lst_Found.KeyDown = [this](Key key) {
        if (key == Key::Enter) cmd_Use.press();
        return key == Key::Enter;
    };
}

void frm_BusScan::Form_Activate() {
    if (running_) return;
    list_ports();
    show_estimate();
    show_state();
}

/// The numbers that stand for something or that a channel has; at first the selected channel's.
void frm_BusScan::list_ports() {
    const auto& devices = link_.channels().state().gCommDevice;
    const auto selected = static_cast<std::size_t>(host_.selected_protocol());
    std::int16_t wanted = chosen_port();
    if (wanted == 0 && selected < devices.size()) wanted = devices[selected]->CommPort();
    ports_.clear();
    std::vector<std::string> texts;
    int chosen = -1;
    for (std::int16_t number = kMinPortNumber; number <= kMaxPortNumber; ++number) {
        const auto device = device_for_port(number, config_.gIniFile);
        const bool used = std::any_of(devices.begin(), devices.end(), [number](SerialPort* port) {
            return port->CommPort() == number;
        });
        if (!device && !used) continue;
        if (number == wanted || chosen < 0) chosen = static_cast<int>(ports_.size());
        ports_.push_back(number);
        texts.push_back(std::to_string(number) + ": " + device.value_or("no device"));
    }
    cmb_Port.set_items(texts);
    cmb_Port.set_ListIndex(chosen);
}

std::int16_t frm_BusScan::chosen_port() const {
    const int index = cmb_Port.ListIndex();
    return index < 0 || ports_.empty() ? std::int16_t{0} : ports_[static_cast<std::size_t>(index)];
}

ScanOptions frm_BusScan::options() const {
    ScanOptions options;
    std::erase_if(options.protocols, [this](ScanProtocol protocol) {
        return !chk_Protocol[static_cast<std::size_t>(protocol)].checked();
    });
    prepare_scan(options, link_.channels().state(), config_, chosen_port(),
                 host_.selected_protocol());
    options.baud_rates.clear();
    for (std::size_t i = 0; i < chk_Baud.size(); ++i)
        if (chk_Baud[i].checked()) options.baud_rates.push_back(scan_baud_rates()[i]);
    options.parities.clear();
    for (std::size_t i = 0; i < chk_Parity.size(); ++i)
        if (chk_Parity[i].checked()) options.parities += kParityLetters[i];
    if (chk_TwoStopBits.checked()) options.stop_bits.push_back(2);
    if (chk_SevenBits.checked()) options.data_bits.push_back(7);
    options.first_address = static_cast<int>(leading_number(txt_First.Text()));
    options.last_address = static_cast<int>(leading_number(txt_Last.Text()));
    options.patience_ms = leading_number(txt_Patience.Text());
    options.stops_at_first = chk_StopAtFirst.checked();
    return options;
}

std::string frm_BusScan::problem(TextBox*& box) {
    box = &txt_First;
    const auto first = whole_number(txt_First.Text(), 0, kMaxScanAddress);
    if (!first) return "The first address is 0 to 247.";
    box = &txt_Last;
    const auto last = whole_number(txt_Last.Text(), 0, kMaxScanAddress);
    if (!last || *last < *first) return "The last address is " + txt_First.Text() + " to 247.";
    box = &txt_Patience;
    if (!whole_number(txt_Patience.Text(), kMinScanPatienceMs, kMaxScanPatienceMs))
        return "Patience is 10 to 2000 ms.";
    box = nullptr;
    if (chosen_port() == 0)
        return "No port number stands for a device: see Settings, Serial Devices.";
    const ScanOptions wanted = options();
    if (wanted.protocols.empty()) return "Choose a protocol.";
    if (wanted.baud_rates.empty()) return "Choose a baud rate.";
    if (wanted.parities.empty()) return "Choose a parity.";
    if (plan_scan(wanted).empty()) return "No chosen protocol has these addresses.";
    return {};
}

void frm_BusScan::show_estimate() {
    if (running_) return;
    TextBox* box = nullptr;
    std::string text = problem(box);
    if (text.empty()) {
        const ScanOptions wanted = options();
        const std::vector<ScanStep> plan = plan_scan(wanted);
        text = "About " + scan_time_text(estimated_ms(plan, wanted.patience_ms)) + " for " +
               count_text(probes_of(plan), "request") + ", the most likely ones first.";
    }
    lbl_Estimate.set_Caption(text);
}

/// What is enabled when.
void frm_BusScan::show_state() {
    const std::string refusal = running_ ? std::string() : link_.refusal();
    for (Control* choice : choices())
        choice->set_Enabled(!running_);
    cmd_Start.set_Enabled(!running_);
    cmd_Start.hold(refusal);
    cmd_Cancel.set_Enabled(running_);
    cmd_Use.set_Enabled(!running_ && lst_Found.ListIndex() >= 0);
    cmd_Use.hold(refusal);
}

void frm_BusScan::cmd_Start_Click() {
    if (running_) return;
    TextBox* box = nullptr;
    if (const std::string wrong = problem(box); !wrong.empty()) {
        services_.dialogs.message_box(wrong);
        if (box != nullptr) box->SetFocus();
        return;
    }
    const ScanOptions wanted = options();
    scanned_port_ = wanted.port;
    line_mode_ = wanted.line_mode;
    finds_.clear();
    lst_Found.Clear();
    lbl_Remarks.set_Caption("");
    lbl_Status.set_Caption("Opening the port...");
    pgb_Scan.set_Value(0);
    running_ = go_on_ = true;
    close_when_done_ = false;
    told_ms_ = 0;
    show_state();
    cmd_Cancel.SetFocus();
    const ScanResult result = scan_.run(wanted, *this);
    running_ = false;
    pgb_Scan.set_Value(0);
    show_result(result);
    show_estimate();
    show_state();
    if (!close_when_done_)
        (finds_.empty() ? static_cast<Control&>(cmd_Start) : lst_Found).SetFocus();
    if (close_when_done_) Unload();
    ended.raise();
}

void frm_BusScan::show_result(const ScanResult& result) {
    const std::string count = count_text(finds_.size(), "controller");
    const std::string time = scan_time_text(result.taken_ms);
    std::string text = count + " found in " + time + ".";
    switch (result.how) {
    case ScanEnd::Completed:
        if (result.unasked > 0)
            text = count + " found. " + unfinished_text(result);
        else if (finds_.empty() && result.unsure.empty())
            text = result.garbled ? kNoValidAnswer : result.strays ? kOnlyStrays : kNothingFound;
        break;
    case ScanEnd::FoundFirst:
        break;
    case ScanEnd::Cancelled:
        text = "Cancelled after " + time + ": " + count + " found.";
        break;
    case ScanEnd::Failed:
        text = result.reason + (finds_.empty() ? "" : " " + count + " found before.");
        break;
    case ScanEnd::Refused:
        text = result.reason;
        break;
    }
    if (const std::string unsure = unsure_text(result, "Patience (ms)"); !unsure.empty())
        text += " " + unsure;
    lbl_Status.set_Caption(text);
    if (!finds_.empty()) lst_Found.set_ListIndex(0);
}

void frm_BusScan::cmd_Use_Click() {
    const int index = lst_Found.ListIndex();
    if (index < 0 || running_) return;
    const ScanFind find = finds_[static_cast<std::size_t>(index)];
    lbl_Status.set_Caption(host_.use_settings(find, scanned_port_, line_mode_));
}

bool frm_BusScan::Form_Unload() {
    if (!running_) return true;
    cancel();
    close_when_done_ = true;
    return false;
}

void frm_BusScan::probing(const ScanProgress& progress) {
    const double now_ms = services_.tick.precise_ms();
    if (now_ms - told_ms_ < kTellEveryMs) return;
    told_ms_ = now_ms;
    pgb_Scan.set_Value(progress.done * pgb_Scan.Max());
    const ScanStep& step = progress.step;
    std::string text =
        std::string(scan_protocol_name(step.protocol)) + " at " + settings_text(step.line);
    if (step.protocol != ScanProtocol::Xon) text += ", address " + std::to_string(progress.address);
    lbl_Status.set_Caption(text + ". About " + scan_time_text(progress.left_ms) + " left, " +
                           count_text(finds_.size(), "controller") + " found.");
}

void frm_BusScan::found(const ScanFind& find) {
    finds_.push_back(find);
    lst_Found.AddItem(row_of(find));
}

void frm_BusScan::remark(const std::string& sentence) {
    const std::string before = lbl_Remarks.Caption();
    if (std::count(before.begin(), before.end(), '\n') >= kMostRemarks - 1) return;
    lbl_Remarks.set_Caption(before.empty() ? sentence : before + "\n" + sentence);
}

bool frm_BusScan::go_on() {
    services_.desktop.let_events_run();
    return go_on_;
}

} // namespace pelvan
