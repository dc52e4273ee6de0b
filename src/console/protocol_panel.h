// What the console asks of the fields of a protocol, whichever it is.
#pragma once

#include <vector>

#include "console/command_script.h"
#include "console/input_history.h"
#include "forms/controls.h"

namespace pelvan {

class ProtocolPanel {
  public:
    virtual ~ProtocolPanel() = default;

    /// Sends what stands in the fields and, unless it is refused, remembers it.
    [[nodiscard]] virtual SendOutcome send() = 0;
    /// Shows the entry sent before (or after) the one shown; false at the end of the list.
    virtual bool recall_earlier() = 0;
    virtual bool recall_later() = 0;
    virtual void show() = 0;
    virtual void hide() = 0;
    /// Puts the focus into the box that a command begins with.
    virtual void focus() = 0;
    /// Sends the lines of a command script with the address and format that are chosen now,
    /// whatever happens to the boxes meanwhile; empty for a protocol whose commands fit no line.
    [[nodiscard]] virtual SendLine script_sender() = 0;
};

/// The recalling of what was sent, for fields that make up an `Entry`.
template <class Entry> class EntryPanel : public ProtocolPanel {
  public:
    /// The fields as they stand.
    [[nodiscard]] virtual Entry entry() const = 0;
    virtual void set_entry(const Entry& entry) = 0;

    SendOutcome send() final {
        const Entry sent = entry();
        SendOutcome outcome = send_entry(sent);
        if (outcome.kind != SendOutcome::Kind::Refused) inputs_.remember(sent);
        return outcome;
    }
    bool recall_earlier() final { return put(inputs_.earlier(entry())); }
    bool recall_later() final { return put(inputs_.later()); }

  protected:
    [[nodiscard]] virtual SendOutcome send_entry(const Entry& entry) = 0;

  private:
    bool put(const std::optional<Entry>& found) {
        if (found) set_entry(*found);
        return found.has_value();
    }
    InputHistory<Entry> inputs_;
};

} // namespace pelvan
