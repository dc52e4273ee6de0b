// The console's fields for a Tellura/AB packet, its sending, and the rendering of the reply.
#pragma once

#include <string>

#include "console/history.h"
#include "console/recall.h"
#include "console/send_outcome.h"
#include "protocols/tellura_ab/tellura_prot.h"

namespace pelvan {

struct TelluraEntry {
    std::string device_address = "1";
    std::string parameter_address = "01ca";
    std::string byte_count = "2";
    std::string data;
    bool write = false;
    TelluraCheck check = TelluraCheck::Bcc;
    bool operator==(const TelluraEntry&) const = default;
};

class TelluraPanel {
  public:
    TelluraPanel(Services& services, Link& link, History& history);

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
                    "Bytes to write, two hexadecimal digits each; blanks between them may stand."};
    OptionGroup OptReadWrite{
        "OptReadWrite", {{"&Read", "Ask for bytes."}, {"Wr&ite", "Write the data."}}, 0};
    OptionGroup OptErrorChecking{"OptErrorChecking",
                                 {{"&BCC", "One check byte, the complement of the sum."},
                                  {"CR&C", "Two check bytes, CRC-16."}},
                                 0};

    /// One exchange. A refused entry shows its message and sends nothing.
    SendOutcome send();

    [[nodiscard]] TelluraEntry entry() const;
    void set_entry(const TelluraEntry& entry);

    bool recall_earlier();
    bool recall_later();

    void set_visible(bool on);

  private:
    [[nodiscard]] std::optional<TelluraPacket> build(const TelluraEntry& entry);
    [[nodiscard]] SendOutcome outcome_of(const std::string& reply, bool write, std::string& line);

    Link& link_;
    TelluraProt protocol_;
    History& history_;
    Recall<TelluraEntry> recall_;
};

} // namespace pelvan
