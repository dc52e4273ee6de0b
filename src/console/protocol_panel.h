// What the console asks of the fields of a protocol, whichever it is.
#pragma once

#include "console/command_script.h"
#include "console/input_history.h"
#include "console/repeat.h"
#include "forms/controls.h"

namespace pelvan {

class ProtocolPanel {
  public:
    virtual ~ProtocolPanel() = default;

    /// Sends what stands in the fields and, unless it is refused, remembers it.
    [[nodiscard]] virtual SendOutcome send() = 0;
    /// The fields as they stand.
    [[nodiscard]] virtual CommandEntry command() const = 0;
    /// Puts a command of this protocol into the fields; one of another is left alone.
    virtual void put(const CommandEntry& command) = 0;
    /// Sends a command of this protocol in the format that is chosen now, whatever happens to the
    /// fields meanwhile; empty for one of another protocol.
    [[nodiscard]] virtual SendOnce sender_of(const CommandEntry& command) = 0;
    /// Shows the entry sent before (or after) the one shown.
    virtual void recall_earlier() = 0;
    virtual void recall_later() = 0;
    virtual void show() = 0;
    virtual void hide() = 0;
    /// Puts the focus into the box that a command begins with.
    virtual void focus() = 0;
    /// The box whose text a refusal complains of; null when it is none.
    [[nodiscard]] virtual TextBox* refused_box(const std::string& refusal) = 0;
    /// Sends the lines of a command script with the address and format that are chosen now,
    /// whatever happens to the boxes meanwhile; empty for a protocol whose commands fit no line.
    [[nodiscard]] virtual SendLine script_sender() = 0;
};

/// The recalling of what was sent, for fields that make up an `Entry`.
template <class Entry> class EntryPanel : public ProtocolPanel {
  public:
    explicit EntryPanel(int protocol_number) : protocol_(protocol_number) {}

    [[nodiscard]] virtual Entry entry() const = 0;
    virtual void set_entry(const Entry& entry) = 0;

    SendOutcome send() final {
        const Entry sent = entry();
        SendOutcome outcome = noted(sender_for(sent)(), sent);
        if (outcome.kind != SendOutcome::Kind::Refused) inputs_.remember(sent);
        return outcome;
    }
    CommandEntry command() const final { return {protocol_, entry()}; }
    void put(const CommandEntry& command) final {
        if (const Entry* fields = fields_of(command)) set_entry(*fields);
    }
    SendOnce sender_of(const CommandEntry& command) final {
        const Entry* const fields = fields_of(command);
        if (fields == nullptr) return {};
        return [this, sent = *fields, send = sender_for(*fields)] { return noted(send(), sent); };
    }
    void recall_earlier() final { put_found(inputs_.earlier(entry())); }
    void recall_later() final { put_found(inputs_.later()); }

  protected:
    /// Sends an entry in the format that is chosen now.
    [[nodiscard]] virtual SendOnce sender_for(const Entry& entry) = 0;
    /// The outcome with what its line was made of.
    [[nodiscard]] SendOutcome noted(SendOutcome outcome, const Entry& sent) const {
        if (outcome.row) outcome.row->entry = {protocol_, sent};
        return outcome;
    }

  private:
    [[nodiscard]] const Entry* fields_of(const CommandEntry& command) const {
        return command.protocol == protocol_ ? std::get_if<Entry>(&command.fields) : nullptr;
    }
    void put_found(const std::optional<Entry>& found) {
        if (found) set_entry(*found);
    }
    int protocol_;
    InputHistory<Entry> inputs_;
};

} // namespace pelvan
