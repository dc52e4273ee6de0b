// One Tellura/AB packet of the console: an entry in, the outcome with both packets' bytes out.
#pragma once

#include <optional>
#include <string>

#include "console/send_outcome.h"
#include "platform/message_router.h"
#include "protocols/tellura_ab/tellura_prot.h"

namespace pelvan {

class TelluraSender {
  public:
    TelluraSender(Link& link, Clock& clock, Dialogs& dialogs)
        : link_(link), clock_(clock), messages_(dialogs), protocol_(link, messages_) {}

    /// One exchange; a packet that cannot be built is refused with the builder's message. Blocks up
    /// to nine seconds.
    [[nodiscard]] SendOutcome send(const TelluraEntry& entry);

  private:
    [[nodiscard]] SendOutcome send_once(const TelluraEntry& entry);
    [[nodiscard]] std::optional<TelluraPacket> build(const TelluraEntry& entry,
                                                     std::string& refusal);
    void judge(const std::string& reply, bool write, std::string& line, SendOutcome& outcome);

    Link& link_;
    Clock& clock_;
    MessageRouter messages_; // the builder's message is part of the outcome
    TelluraProt protocol_;
};

} // namespace pelvan
