// The Modbus half of the console: the fields of one command, its sending, and the recall of earlier
// ones. It shows nothing by itself; the console decides when it is visible.
#pragma once

#include "console/history.h"
#include "console/modbus_entry.h"
#include "console/recall.h"
#include "console/send_outcome.h"
#include "serial/link.h"

namespace pelvan {

class ModbusPanel {
  public:
    ModbusPanel(Services& services, Link& link, Modbus& modbus, History& history);

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
                       "A count to read, or the values to write, with blanks between them."};
    OptionGroup opt_NumberBase{"opt_NumberBase",
                               {{"Decimal", "Values are entered in decimal, -32768 to 32767."},
                                {"Hexadecimal", "Values are entered in hexadecimal, 0 to FFFF."}},
                               0};

    /// One exchange: builds, sends on channel 1, adds both renderings to the history. A refused
    /// request shows its text and sends nothing.
    SendOutcome send(DataFormat format);
    /// The same for an entry that does not stand in the fields and is not to be recalled; a refusal
    /// is in the outcome only.
    SendOutcome send(const ModbusEntry& sent, DataFormat format);

    /// The fields as they stand.
    [[nodiscard]] ModbusEntry entry() const;
    void set_entry(const ModbusEntry& entry);

    /// Shows the entry sent before (or after) the one shown; false at the end of the list.
    bool recall_earlier();
    bool recall_later();

    /// Called with a built frame before it is sent; may change it.
    std::function<void(std::string&)> before_send;

    void set_visible(bool on);

  private:
    void command_type_changed();

    Services& services_;
    Link& link_;
    Modbus& modbus_;
    History& history_;
    Recall<ModbusEntry> recall_;
};

} // namespace pelvan
