#include "console/tellura_panel.h"

#include "text/numbers.h"

namespace pelvan {
namespace {

/// 0, which every use refuses, for a text that is no whole number from 0 to 255.
std::uint8_t small_number(const std::string& text) {
    const double value = is_numeric(text) ? leading_number(text) : 0;
    const bool fits = value >= 0 && value <= 255 && value == static_cast<int>(value);
    return fits ? static_cast<std::uint8_t>(value) : std::uint8_t{0};
}

std::string without_blanks(const std::string& text) {
    std::string out;
    for (const char c : text)
        if (c != ' ') out += c;
    return out;
}

} // namespace

TelluraPanel::TelluraPanel(Services& services, Link& link, History& history)
    : link_(link), protocol_(link, services.dialogs), history_(history) {
    TxtData.set_Enabled(false);
    OptReadWrite.Click = [this](int index) {
        TxtNoBytes.set_Enabled(index == 0);
        TxtData.set_Enabled(index == 1);
    };
    for (TextBox* box : {&TxtTelluraAddress, &TxtParameterAddress, &TxtNoBytes, &TxtData})
        box->GotFocus = [box] { box->select_all(); };
}

TelluraEntry TelluraPanel::entry() const {
    return {TxtTelluraAddress.Text(),
            TxtParameterAddress.Text(),
            TxtNoBytes.Text(),
            TxtData.Text(),
            OptReadWrite.Value() == 1,
            OptErrorChecking.Value() == 1 ? TelluraCheck::Crc : TelluraCheck::Bcc};
}

void TelluraPanel::set_entry(const TelluraEntry& entry) {
    TxtTelluraAddress.set_Text(entry.device_address);
    TxtParameterAddress.set_Text(entry.parameter_address);
    TxtNoBytes.set_Text(entry.byte_count);
    TxtData.set_Text(entry.data);
    OptReadWrite.set_Value(entry.write ? 1 : 0);
    OptErrorChecking.set_Value(entry.check == TelluraCheck::Crc ? 1 : 0);
}

std::optional<TelluraPacket> TelluraPanel::build(const TelluraEntry& entry) {
    protocol_.set_check(entry.check);
    std::uint8_t address = small_number(entry.device_address);
    return protocol_.BuildRequest(address, entry.parameter_address, without_blanks(entry.data),
                                  entry.write, small_number(entry.byte_count));
}

SendOutcome TelluraPanel::send() {
    const TelluraEntry sent = entry();
    const auto request = build(sent);
    if (!request) return {SendOutcome::Kind::Refused, "Nothing was sent", false};
    recall_.remember(sent);
    history_.sending();
    const double begun = link_.countdowns().read_tick();
    const std::string reply = protocol_.Exchange(request->packet);
    const double taken = link_.countdowns().read_tick() - begun;
    std::string line = TelluraProt::DisplayPacket(reply);
    SendOutcome outcome = outcome_of(reply, sent.write, line);
    if (outcome.accepted)
        outcome.status = std::to_string(request->packet.size()) + " bytes sent, " +
                         std::to_string(reply.size()) + " received, " +
                         std::to_string(static_cast<long>(taken)) + " ms";
    history_.add(TelluraProt::DisplayPacket(request->packet), line);
    return outcome;
}

/// Judges a reply and puts what it says behind its bytes.
SendOutcome TelluraPanel::outcome_of(const std::string& reply, bool write, std::string& line) {
    if (reply == kTelluraBad) return {SendOutcome::Kind::NoReply, line, false};
    if (!protocol_.CheckReply(reply)) {
        const bool bcc = protocol_.check() == TelluraCheck::Bcc;
        line += bcc ? "  <--BCC ERROR!" : "  <--CRC ERROR!";
        return {SendOutcome::Kind::Done, "The reply came damaged: its check does not fit", false};
    }
    const TelluraReply said = protocol_.ReadReply(reply);
    if (said.status != 0) {
        const std::string refusal = "Refused with status " + hex_text(said.status, 2);
        line += "  " + refusal;
        return {SendOutcome::Kind::Done, refusal, false};
    }
    if (!said.data.empty())
        line += "  Data: " + TelluraProt::DisplayPacket(said.data);
    else
        line += write ? "  Written" : "  No data";
    return {SendOutcome::Kind::Done, {}, true};
}

bool TelluraPanel::recall_earlier() {
    const auto found = recall_.earlier(entry());
    if (found) set_entry(*found);
    return found.has_value();
}

bool TelluraPanel::recall_later() {
    const auto found = recall_.later();
    if (found) set_entry(*found);
    return found.has_value();
}

void TelluraPanel::set_visible(bool on) {
    for (Control* control : std::initializer_list<Control*>{
             &Fram_Tellura, &LblTelluraAddress, &TxtTelluraAddress, &LblParameterAddress,
             &TxtParameterAddress, &LblNoBytes, &TxtNoBytes, &LblData, &TxtData, &OptReadWrite,
             &OptErrorChecking})
        control->set_Visible(on);
}

} // namespace pelvan
