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

ModbusPanel::ModbusPanel(ModbusSender& sender, const CheckBox& bad_checksum)
    : cmb_CommandType("cmb_CommandType", type_captions(), kReadHoldingIndex, false,
                      "What the controller is asked to do."),
      sender_(sender), bad_checksum_(bad_checksum) {
    cmb_CommandType.Click = [this] { command_type_changed(); };
    for (TextBox* box : {&txt_Address, &txt_Register, &txt_Values})
        box->GotFocus = [box] { box->select_all(); };
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

SendOutcome ModbusPanel::send_entry(const ModbusEntry& entry) {
    return send_as(entry, format());
}

SendOutcome ModbusPanel::send_as(const ModbusEntry& entry, DataFormat format) {
    return sender_.send(entry, {format, bad_checksum_.checked()});
}

SendLine ModbusPanel::script_sender() {
    return [this, format = format(), address = txt_Address.Text()](const std::string& line) {
        return send_as(write_register_entry(address, line), format);
    };
}

void ModbusPanel::set_visible(bool on) {
    for (Control* control : std::initializer_list<Control*>{
             &Fram_Modbus, &lbl_CommandType, &cmb_CommandType, &lbl_Address, &txt_Address,
             &lbl_Register, &txt_Register, &lbl_Values, &txt_Values, &opt_NumberBase,
             &fram_DataFormat, &opt_DataFormat})
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
