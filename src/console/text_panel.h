// The console's fields for the protocols that send command texts, Full and Xon: they share the
// command box, Full has a device address beside it. Earlier commands are kept for each of the two.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "console/history.h"
#include "console/recall.h"
#include "console/send_outcome.h"
#include "protocols/full/full_protocol.h"

namespace pelvan {

enum class TextProtocol { Full, Xon };

struct TextEntry {
    std::string device_address; // Full only
    std::string command;
    bool operator==(const TextEntry&) const = default;
};

/// A text from the line as it is listed: without the carriage return and line feed at its end, each
/// other byte that is no printable character as its hexadecimal value, "<0D>".
[[nodiscard]] std::string printable(std::string_view text);

class TextPanel {
  public:
    TextPanel(Services& services, Link& link, History& history);

    Frame Fram_CommsCommand{"Fram_CommsCommand", "Command"};
    Label lbl_DeviceAddress{"lbl_DeviceAddress", "Device &Address"};
    TextBox txt_DeviceAddress{"txt_DeviceAddress", "1", "Device address, 0 to 32."};
    Label lbl_CommsCommand{"lbl_CommsCommand", "&Command"};
    TextBox txt_CommsCommand{"txt_CommsCommand", "", "Command text: ? reads, = writes."};

    /// Sends what stands in the boxes and remembers it.
    SendOutcome send(TextProtocol protocol);
    /// One exchange, whose command and reply become a pair of the history.
    SendOutcome send(TextProtocol protocol, const TextEntry& entry);

    [[nodiscard]] TextEntry entry() const;
    void set_entry(const TextEntry& entry);

    bool recall_earlier(TextProtocol protocol);
    bool recall_later(TextProtocol protocol);

    void show_for(TextProtocol protocol);
    void hide();

  private:
    [[nodiscard]] Recall<TextEntry>& recall(TextProtocol protocol);
    SendOutcome send_full(const TextEntry& entry);
    SendOutcome send_xon(const std::string& command);

    Link& link_;
    FullProtocol full_;
    History& history_;
    std::array<Recall<TextEntry>, 2> recalls_;
};

} // namespace pelvan
