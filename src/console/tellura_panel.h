// The console's fields for a Tellura/AB packet.
#pragma once

#include "console/protocol_panel.h"
#include "console/tellura_sender.h"

namespace pelvan {

class TelluraPanel : public EntryPanel<TelluraEntry> {
  public:
    explicit TelluraPanel(TelluraSender& sender);

    Frame Fram_Tellura{"Fram_Tellura", "Tellura/AB Packet"};
    Label LblTelluraAddress{"LblTelluraAddress", "&Address"};
    TextBox TxtTelluraAddress{"TxtTelluraAddress", "1", "Device address, 1 to 32."};
    Label LblParameterAddress{"LblParameterAddress", "Para&meter"};
    TextBox TxtParameterAddress{"TxtParameterAddress", "01ca",
                                "Parameter address, four hexadecimal digits."};
    Label LblNoBytes{"LblNoBytes", "B&ytes"};
    TextBox TxtNoBytes{"TxtNoBytes", "2", "Number of bytes to read, 1 to 255."};
    Label LblData{"LblData", "&Data"};
    TextBox TxtData{"TxtData", "",
                    "Bytes to write, two hexadecimal digits each; spaces may stand between them."};
    OptionGroup OptReadWrite{
        "OptReadWrite", {{"&Read", "Ask for bytes."}, {"Wr&ite", "Write the data."}}, 0};
    OptionGroup OptErrorChecking{"OptErrorChecking",
                                 {{"&BCC", "One check byte, the complement of the sum."},
                                  {"CR&C", "Two check bytes, CRC-16."}},
                                 0};

    [[nodiscard]] TelluraEntry entry() const override;
    void set_entry(const TelluraEntry& entry) override;
    void show() override { set_visible(true); }
    void hide() override { set_visible(false); }
    void focus() override { TxtParameterAddress.SetFocus(); }
    TextBox* refused_box(const std::string& refusal) override;
    SendLine script_sender() override { return {}; }

  protected:
    SendOnce sender_for(const TelluraEntry& entry) override {
        return [this, entry] { return sender_.send(entry); };
    }

  private:
    void set_visible(bool on);

    TelluraSender& sender_;
};

} // namespace pelvan
