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
    : EntryPanel(protocol::kModbus),
      cmb_CommandType("cmb_CommandType", type_captions(), kReadHoldingIndex, false,
                      "What the controller is asked to do."),
      sender_(sender), bad_checksum_(bad_checksum) {
    // Both groups have a "Decimal".
    opt_NumberBase.set_Caption(lbl_NumberBase.Caption());
    opt_DataFormat.set_Caption(fram_DataFormat.Caption());
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

SendOnce ModbusPanel::sender_for(const ModbusEntry& entry) {
    return [this, entry, format = format()] { return send_as(entry, format); };
}

TextBox* ModbusPanel::refused_box(const std::string& refusal) {
    switch (refused_field(refusal)) {
    case ModbusField::Address:
        return &txt_Address;
    case ModbusField::Register:
        return &txt_Register;
    case ModbusField::Values:
        return &txt_Values;
    case ModbusField::None:
        break;
    }
    return nullptr;
}

SendOutcome ModbusPanel::send_as(const ModbusEntry& entry, DataFormat format) {
    return sender_.send(entry, {format, bad_checksum_.checked()});
}

SendLine ModbusPanel::script_sender() {
    return [this, format = format(), address = txt_Address.Text()](const std::string& line) {
        const ModbusEntry entry = write_register_entry(address, line);
        return noted(send_as(entry, format), entry);
    };
}

void ModbusPanel::set_visible(bool on) {
    for (Control* control : std::initializer_list<Control*>{
             &Fram_Modbus, &lbl_CommandType, &cmb_CommandType, &lbl_Address, &txt_Address,
             &lbl_Register, &txt_Register, &lbl_Values, &txt_Values, &lbl_NumberBase,
             &opt_NumberBase, &fram_DataFormat, &opt_DataFormat})
        control->set_Visible(on);
}

void ModbusPanel::command_type_changed() {
    const auto& type =
        modbus_command_types()[static_cast<std::size_t>(cmb_CommandType.ListIndex())];
    lbl_Register.set_Caption(type.register_caption);
    lbl_Values.set_Caption(type.values_caption);
    txt_Register.set_Enabled(type.command != ModbusCommand::LoopBack);
    const ValueKind kind = value_kind(type.command);
    if (kind == value_kind_) return;
    value_texts_.at(static_cast<std::size_t>(value_kind_)) = txt_Values.Text();
    value_kind_ = kind;
    txt_Values.set_Text(value_texts_.at(static_cast<std::size_t>(kind)));
}

} // namespace pelvan
