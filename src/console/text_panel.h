// The console's fields for the protocols that send command texts, Full and Xon: they share the
// command box, Full has a device address beside it. Earlier commands are kept for each of the two.
#pragma once

#include "console/protocol_panel.h"
#include "console/text_sender.h"

namespace pelvan {

class TextPanel {
  public:
    explicit TextPanel(TextSender& sender);

    Frame Fram_CommsCommand{"Fram_CommsCommand", "Command"};
    Label lbl_DeviceAddress{"lbl_DeviceAddress", "Device &Address"};
    TextBox txt_DeviceAddress{"txt_DeviceAddress", "1", "Device address, 0 to 32."};
    Label lbl_CommsCommand{"lbl_CommsCommand", "&Command"};
    TextBox txt_CommsCommand{"txt_CommsCommand", "", "Command text: ? reads, = writes."};

    [[nodiscard]] TextEntry entry() const;
    void set_entry(const TextEntry& entry);

    [[nodiscard]] ProtocolPanel& full() { return full_; }
    [[nodiscard]] ProtocolPanel& xon() { return xon_; }

  private:
    /// One of the two on the shared fields.
    class Half : public EntryPanel<TextEntry> {
      public:
        Half(TextPanel& fields, TextProtocol protocol)
            : EntryPanel(protocol == TextProtocol::Full ? protocol::kFull : protocol::kXon),
              fields_(fields), protocol_(protocol) {}
        TextEntry entry() const override { return fields_.entry(); }
        void set_entry(const TextEntry& entry) override { fields_.set_entry(entry); }
        void show() override { fields_.show_for(this); }
        void hide() override {
            if (fields_.shown_ == this) fields_.show_for(nullptr);
        }
        void focus() override { fields_.txt_CommsCommand.SetFocus(); }
        TextBox* refused_box(const std::string&) override { return &fields_.txt_CommsCommand; }
        SendLine script_sender() override;

      protected:
        SendOnce sender_for(const TextEntry& entry) override {
            return [this, entry] { return fields_.sender_.send(protocol_, entry); };
        }

      private:
        TextPanel& fields_;
        TextProtocol protocol_;
    };

    void show_for(const Half* half);

    TextSender& sender_;
    Half full_{*this, TextProtocol::Full};
    Half xon_{*this, TextProtocol::Xon};
    const Half* shown_ = &full_; // what the fields look like at first
};

} // namespace pelvan
