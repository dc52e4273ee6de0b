#include "settings/device_picker_panel.h"

#include "platform/scope_guard.h"
#include "text/strings.h"

namespace pelvan {

DevicePickerPanel::DevicePickerPanel(Services& services, const ConfigState& config,
                                     ChannelTable& channels, DeviceLookup lookup, Purpose purpose)
    : cmb_Device("cmb_Device", {}, -1, true,
                 "Choose a device of the list, or type its path: /dev/ttyUSB0, a link to it, "
                 "tcp://host:port, rfc2217://host:port, simulated:742."),
      services_(services), config_(config), devices_(config, channels, std::move(lookup)),
      purpose_(purpose) {
    cmb_Device.Click = [this] { choose(true); };
    cmb_Device.Change = [this] { choose(false); };
    cmb_Device.GotFocus = [this] { cmb_Device.select_all(); };
    cmd_AssignDevice.set_Visible(purpose == Purpose::ForNumbers);
    cmd_AssignDevice.Click = [this] {
        ask_about_stranger();
        assign_pending();
    };
    cmd_RefreshDevices.Click = [this] { refresh(); };
}

void DevicePickerPanel::refresh() {
    devices_.refresh();
    show_port(number_);
    changed.raise();
}

void DevicePickerPanel::show_port(int number) {
    number_ = is_port_number(number) ? number : 0;
    for (Control* control : std::initializer_list<Control*>{&cmd_AssignDevice, &cmb_Device})
        control->set_Enabled(number_ > 0);
    fill(number_ > 0 ? wanted(number_) : "");
    show_state();
}

/// What was chosen for the number, what is assigned to it, or what may be proposed for it.
std::string DevicePickerPanel::wanted(int number) {
    if (const auto found = chosen_.find(number); found != chosen_.end()) return found->second;
    std::string standing = devices_.standing(number);
    if (purpose_ == Purpose::ForNumbers || !standing.empty()) return standing;
    if (!chosen_.empty() && !chosen_.begin()->second.empty()) { // for another number: it goes along
        std::string device = chosen_.begin()->second;
        chosen_ = {{number, device}};
        return device;
    }
    const std::string only = devices_.only_device();
    return devices_.number_of(only) == 0 ? only : "";
}

void DevicePickerPanel::fill(const std::string& wanted_device) {
    filling_ = true;
    const ScopeGuard filled([this] { filling_ = false; });
    choices_ = devices_.choices(wanted_device);
    std::vector<std::string> texts;
    int present = 0;
    for (const DeviceChoice& choice : choices_) {
        if (choice.device == wanted_device) present = static_cast<int>(texts.size());
        texts.push_back(choice.text);
    }
    cmb_Device.set_items(std::move(texts));
    cmb_Device.set_ListIndex(present);
}

std::string DevicePickerPanel::device() const {
    const int listed = cmb_Device.ListIndex();
    return listed >= 0 ? choices_[static_cast<std::size_t>(listed)].device
                       : trim(cmb_Device.Text());
}

void DevicePickerPanel::choose(bool listed) {
    if (filling_ || number_ == 0) return;
    if (purpose_ == Purpose::ForChannel) chosen_.clear();
    if (devices_.is_change(number_, device()))
        chosen_[number_] = device();
    else
        chosen_.erase(number_);
    show_state();
    chosen.raise(listed);
}

std::string DevicePickerPanel::pending_question() const {
    std::string text = "Chosen, but not assigned yet:\n";
    for (const auto& [number, device] : chosen_)
        text += "Port " + std::to_string(number) + ": " +
                (device.empty() ? "no assignment" : device) + "\n";
    return text + "Assign it?";
}

void DevicePickerPanel::show_state() {
    if (number_ == 0) {
        lbl_DeviceState.set_Caption("Port numbers run from 1 to 16.");
        return;
    }
    const std::string port = "Port " + std::to_string(number_);
    std::string text = port + ": " + devices_.meaning(number_) + devices_.users(number_);
    const std::string chosen_device = device();
    if (devices_.is_change(number_, chosen_device)) {
        const bool saves = purpose_ == Purpose::ForChannel;
        const int other = saves ? devices_.number_of(chosen_device) : 0;
        text += saves ? "\nSaving " : "\nAssigning ";
        if (chosen_device.empty())
            text += "ends the assignment.";
        else if (other > 0 && other != number_)
            text += "takes port " + std::to_string(other) + ", which stands for this device.";
        else
            text += "lets it stand for " + chosen_device + ": " + devices_.state(chosen_device);
    } else if (chosen_device.empty() && devices_.standing(number_).empty()) {
        text += "\nChoose a device of the list, or type its path.";
    }
    lbl_DeviceState.set_Caption(text);
}

bool DevicePickerPanel::may_assign(const std::string& device) {
    const DeviceObjection objection = devices_.objection(device);
    if (objection.sentence.empty()) return true;
    if (objection.lasting)
        services_.dialogs.message_box(objection.sentence, {}, MessageButtons::Ok,
                                      MessageIcon::Exclamation);
    return !objection.lasting &&
           services_.dialogs.message_box(objection.sentence + " Keep it all the same?", {},
                                         MessageButtons::YesNoPreferNo,
                                         MessageIcon::Exclamation) == MessageAnswer::Yes;
}

void DevicePickerPanel::ask_about_stranger() {
    const std::string question = devices_.stranger_question(device());
    if (question.empty() ||
        services_.dialogs.message_box(question, {}, MessageButtons::YesNoPreferNo,
                                      MessageIcon::Exclamation) != MessageAnswer::Yes)
        return;
    devices_.adopt(device());
    show_state();
    changed.raise();
}

bool DevicePickerPanel::accept() {
    ask_about_stranger();
    return !devices_.is_change(number_, device()) || may_assign(device());
}

bool DevicePickerPanel::write() {
    if (devices_.is_change(number_, device()) && !devices_.write(number_, device())) return false;
    chosen_.clear();
    return true;
}

bool DevicePickerPanel::assign(int number, const std::string& device) {
    if (!may_assign(device)) return false;
    if (devices_.write(number, device)) return true;
    services_.dialogs.message_box("The assignment could not be written to " + config_.gIniFile +
                                  ".");
    return false;
}

bool DevicePickerPanel::assign_pending() {
    if (chosen_.empty()) return true;
    if (const std::string refusal = devices_.refusal(); !refusal.empty()) {
        services_.dialogs.message_box(refusal);
        return false;
    }
    const std::size_t wanted_count = chosen_.size();
    while (!chosen_.empty() && assign(chosen_.begin()->first, chosen_.begin()->second))
        chosen_.erase(chosen_.begin());
    if (chosen_.size() < wanted_count) devices_.rebuild();
    show_port(chosen_.empty() ? number_ : chosen_.begin()->first);
    changed.raise();
    return chosen_.empty();
}

} // namespace pelvan
