// The console's fields for a Modbus command and the format in which it is shown.
#pragma once

#include "console/modbus_sender.h"
#include "console/protocol_panel.h"
#include "forms/lists.h"

namespace pelvan {

class ModbusPanel : public EntryPanel<ModbusEntry> {
  public:
    /// Requests go out with a wrong CRC while `bad_checksum` is checked.
    ModbusPanel(ModbusSender& sender, const CheckBox& bad_checksum);

    Frame Fram_Modbus{"Fram_Modbus", "Modbus Command"};
    Label lbl_CommandType{"lbl_CommandType", "Command T&ype"};
    ComboBox cmb_CommandType;
    Label lbl_Address{"lbl_Address", "&Address"};
    TextBox txt_Address{"txt_Address", "1",
                        "Controller address, 1 to 247; 0 reaches every controller."};
    Label lbl_Register{"lbl_Register", "&Register"};
    TextBox txt_Register{"txt_Register", "0", "Start register, coil or sub-function, 0 to 65535."};
    Label lbl_Values{"lbl_Values", "&Count"};
    TextBox txt_Values{"txt_Values", "1",
                       "A count to read, or the values to write, with spaces between them."};
    Label lbl_NumberBase{"lbl_NumberBase", "Values entered in"};
    OptionGroup opt_NumberBase{"opt_NumberBase",
                               {{"Decimal", "Values are entered in decimal, -32768 to 32767."},
                                {"Hexadecimal", "Values are entered in hexadecimal, 0 to FFFF."}},
                               0};
    Frame fram_DataFormat{"fram_DataFormat", "Data F&ormat"};
    OptionGroup opt_DataFormat{
        "opt_DataFormat",
        {{"Decimal", "Complete packets as decimal numbers."},
         {"Hex", "Complete packets as hexadecimal numbers."},
         {"SmartDec", "Only the pertinent information, as decimal numbers."}},
        0};

    [[nodiscard]] ModbusEntry entry() const override;
    void set_entry(const ModbusEntry& entry) override;
    void show() override { set_visible(true); }
    void hide() override { set_visible(false); }
    void focus() override { txt_Register.SetFocus(); }
    TextBox* refused_box(const std::string& refusal) override;
    /// A line is "register value" in decimal.
    SendLine script_sender() override;

  protected:
    SendOnce sender_for(const ModbusEntry& entry) override;

  private:
    [[nodiscard]] DataFormat format() const {
        return static_cast<DataFormat>(opt_DataFormat.Value());
    }
    SendOutcome send_as(const ModbusEntry& entry, DataFormat format);
    void set_visible(bool on);
    void command_type_changed();

    ModbusSender& sender_;
    const CheckBox& bad_checksum_;
    ValueKind value_kind_ = ValueKind::Count; // of what stands in the value box
    /// What last stood in the value box, by kind: a count that was read never becomes a value that
    /// is written.
    std::array<std::string, kValueKinds> value_texts_{"1", "", "0"};
};

} // namespace pelvan
