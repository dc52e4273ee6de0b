// What a scan sends to one address, by protocol, and what it makes of the bytes that come back. A
// probe only reads: no request here can change anything in a controller. Bytes in, values out; no
// port.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/dialogs.h"
#include "scan/scan_plan.h"
#include "serial/link.h"

namespace pelvan {

/// What an answer says.
struct ProbeAnswer {
    /// Two answers of one controller have the same.
    std::string kind;
    /// Empty where the protocol's probe does not tell.
    std::string model;
    /// In words for the list.
    std::string words;
    /// It is a gateway's word that nobody has the address.
    bool absent = false;
    /// It says that another answer will follow, or may.
    bool passing = false;
};

/// Whether one controller cannot have given both.
[[nodiscard]] bool are_of_two(const ProbeAnswer& one, const ProbeAnswer& other);

struct Sender {
    int address;
    ProbeAnswer answer;
};

class ScanProbe {
  public:
    ScanProbe() = default;
    ScanProbe(const ScanProbe&) = delete;
    ScanProbe& operator=(const ScanProbe&) = delete;
    virtual ~ScanProbe() = default;

    [[nodiscard]] virtual std::string request(int address) = 0;
    /// The bytes as this address' whole answer, check and address included; nothing for any others.
    [[nodiscard]] virtual std::optional<ProbeAnswer> answer(int address,
                                                            std::string_view received) const = 0;
    /// Whose whole answers stand somewhere in the bytes, in turn.
    [[nodiscard]] virtual std::vector<Sender> senders(std::string_view received) const = 0;
    /// Whether an answer carries a check; one that does not counts only when nothing follows it.
    [[nodiscard]] virtual bool checked() const { return true; }
    /// What ends the conversation when anything came back; empty where nothing does.
    [[nodiscard]] virtual std::string closing() const { return {}; }
};

/// Link and dialogs are borrowed; neither is used to exchange or to ask.
[[nodiscard]] std::unique_ptr<ScanProbe> make_probe(const ScanStep& step, Link& link,
                                                    Dialogs& dialogs);

} // namespace pelvan
