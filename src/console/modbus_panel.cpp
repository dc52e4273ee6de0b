#include "console/modbus_panel.h"

namespace pelvan {
namespace {

std::vector<std::string> type_captions() {
    std::vector<std::string> captions;
    for (const ModbusCommandType& type : modbus_command_types())
        captions.emplace_back(type.caption);
    return captions;
}

constexpr int kReadHoldingIndex = 2;

} // namespace

ModbusPanel::ModbusPanel(Services& services, Link& link, Modbus& modbus, History& history)
    : cmb_CommandType("cmb_CommandType", type_captions(), kReadHoldingIndex, false,
                      "What the controller is asked to do."),
      services_(services), link_(link), modbus_(modbus), history_(history) {
    cmb_CommandType.Click = [this] { command_type_changed(); };
    for (TextBox* box : {&txt_Address, &txt_Register, &txt_Values}) {
        box->GotFocus = [box] { box->select_all(); };
    }
}

ModbusEntry ModbusPanel::entry() const {
    return {static_cast<std::size_t>(cmb_CommandType.ListIndex()), txt_Address.Text(),
            txt_Register.Text(), txt_Values.Text(), opt_NumberBase.Value() == 1};
}

void ModbusPanel::set_entry(const ModbusEntry& entry) {
    cmb_CommandType.set_ListIndex(static_cast<int>(entry.type));
    txt_Address.set_Text(entry.address);
    txt_Register.set_Text(entry.start_register);
    txt_Values.set_Text(entry.values);
    opt_NumberBase.set_Value(entry.hexadecimal ? 1 : 0);
}

SendOutcome ModbusPanel::send(DataFormat format) {
    const ModbusEntry sent = entry();
    SendOutcome outcome = send(sent, format);
    if (outcome.kind == SendOutcome::Kind::Refused)
        services_.dialogs.message_box(outcome.status);
    else
        recall_.remember(sent);
    return outcome;
}

SendOutcome ModbusPanel::send(const ModbusEntry& sent, DataFormat format) {
    std::string frame = build_request(modbus_, sent);
    if (is_refusal(frame)) return {SendOutcome::Kind::Refused, frame, false};
    if (before_send) before_send(frame);
    // The request is rendered before the reply overwrites the numbers that decoding leaves behind.
    const std::string command = render(modbus_, format, 1, frame);
    history_.sending();
    const double begun = link_.countdowns().read_tick();
    const std::string reply =
        link_.transmit(kModbusChannel, frame, kModbusTimeoutMs, kModbusQuietChars);
    const double taken = link_.countdowns().read_tick() - begun;
    const std::string response = response_line(modbus_, format, sent, reply);
    history_.add(command, response);
    if (reply.empty() && !is_broadcast(sent)) return {SendOutcome::Kind::NoReply, response, false};
    const bool accepted = reply.empty() || is_valid_answer(frame, reply);
    if (reply.empty() || !accepted) return {SendOutcome::Kind::Done, response, accepted};
    return {SendOutcome::Kind::Done,
            std::to_string(frame.size()) + " bytes sent, " + std::to_string(reply.size()) +
                " received, " + std::to_string(static_cast<long>(taken)) + " ms",
            true};
}

bool ModbusPanel::recall_earlier() {
    const auto found = recall_.earlier(entry());
    if (found) set_entry(*found);
    return found.has_value();
}

bool ModbusPanel::recall_later() {
    const auto found = recall_.later();
    if (found) set_entry(*found);
    return found.has_value();
}

void ModbusPanel::set_visible(bool on) {
    for (Control* control :
         {static_cast<Control*>(&Fram_Modbus), static_cast<Control*>(&lbl_CommandType),
          static_cast<Control*>(&cmb_CommandType), static_cast<Control*>(&lbl_Address),
          static_cast<Control*>(&txt_Address), static_cast<Control*>(&lbl_Register),
          static_cast<Control*>(&txt_Register), static_cast<Control*>(&lbl_Values),
          static_cast<Control*>(&txt_Values), static_cast<Control*>(&opt_NumberBase)})
        control->set_Visible(on);
}

void ModbusPanel::command_type_changed() {
    const auto& type =
        modbus_command_types()[static_cast<std::size_t>(cmb_CommandType.ListIndex())];
    lbl_Register.set_Caption(type.register_caption);
    lbl_Values.set_Caption(type.values_caption);
    txt_Register.set_Enabled(type.command != ModbusCommand::LoopBack);
}

} // namespace pelvan
