// One command text of the console in the protocols Full and Xon: an entry in, the outcome out.
#pragma once

#include <string>
#include <string_view>

#include "console/send_outcome.h"
#include "protocols/full/full_protocol.h"

namespace pelvan {

enum class TextProtocol { Full, Xon };

/// A text from the line as it is listed: without the carriage return and line feed at its end, each
/// other byte that is no printable character as its hexadecimal value, "<0D>".
[[nodiscard]] std::string printable(std::string_view text);

class TextSender {
  public:
    /// The dialogs are those of the Full dialogue's own messages.
    TextSender(Link& link, Clock& clock, Dialogs& dialogs)
        : link_(link), clock_(clock), full_(link, dialogs) {}

    /// One exchange, carefully. Blocks up to two seconds in Xon; in Full as `full_command` does.
    [[nodiscard]] SendOutcome send(TextProtocol protocol, const TextEntry& entry);

  private:
    [[nodiscard]] SendOutcome send_full(const TextEntry& entry);
    [[nodiscard]] SendOutcome send_xon(const std::string& command);

    Link& link_;
    Clock& clock_;
    FullProtocol full_;
};

} // namespace pelvan
