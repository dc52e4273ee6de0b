#include "console/text_panel.h"

#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

constexpr std::int16_t kXonChannel = 2;
constexpr float kXonTimeoutMs = 2000;
constexpr std::int16_t kXonQuietChars = 1;
constexpr char kXonRefusal[] = "ERROR";
constexpr char kNoData[] = "(an empty reply)";
constexpr char kNoReadOrWrite[] = "Acknowledged; neither a read nor a write";

/// -1, which is no device's address, for a text that is no small whole number.
std::int16_t address_number(const std::string& text) {
    const double value = is_numeric(text) ? leading_number(text) : -1;
    const bool whole = value >= 0 && value <= 999 && value == static_cast<int>(value);
    return whole ? static_cast<std::int16_t>(value) : std::int16_t{-1};
}

bool says_nothing_came(const std::string& result) {
    return result == kFullNotConnected || result == kFullNakNotReceived ||
           result == kFullNoErrorCode;
}

std::string taken_text(double ms) {
    return "Done in " + std::to_string(static_cast<long>(ms)) + " ms";
}

} // namespace

std::string printable(std::string_view text) {
    while (!text.empty() && (text.back() == '\r' || text.back() == '\n'))
        text.remove_suffix(1);
    std::string out;
    for (const char c : text) {
        if (c >= ' ' && c <= '~')
            out += c;
        else
            out += "<" + hex_text(static_cast<unsigned char>(c), 2) + ">";
    }
    return out;
}

TextPanel::TextPanel(Services& services, Link& link, History& history)
    : link_(link), full_(link, services.dialogs), history_(history) {
    for (TextBox* box : {&txt_DeviceAddress, &txt_CommsCommand})
        box->GotFocus = [box] { box->select_all(); };
}

TextEntry TextPanel::entry() const {
    return {txt_DeviceAddress.Text(), txt_CommsCommand.Text()};
}

void TextPanel::set_entry(const TextEntry& entry) {
    txt_DeviceAddress.set_Text(entry.device_address);
    txt_CommsCommand.set_Text(entry.command);
}

SendOutcome TextPanel::send(TextProtocol protocol) {
    const TextEntry sent = entry();
    recall(protocol).remember(sent);
    return send(protocol, sent);
}

SendOutcome TextPanel::send(TextProtocol protocol, const TextEntry& entry) {
    return protocol == TextProtocol::Full ? send_full(entry) : send_xon(entry.command);
}

SendOutcome TextPanel::send_full(const TextEntry& entry) {
    history_.sending();
    const double begun = link_.countdowns().read_tick();
    const std::string result = full_.full_command(
        entry.command, address_number(entry.device_address), kFullCommandTimeoutMs);
    const double taken = link_.countdowns().read_tick() - begun;
    std::string shown = printable(result);
    if (result.empty()) shown = entry.command.starts_with('?') ? kNoData : kNoReadOrWrite;
    history_.add(printable(entry.command), shown);
    if (!full_.completed() && says_nothing_came(result))
        return {SendOutcome::Kind::NoReply, shown, false};
    return {SendOutcome::Kind::Done, full_.completed() ? taken_text(taken) : shown,
            full_.completed()};
}

SendOutcome TextPanel::send_xon(const std::string& command) {
    history_.sending();
    const double begun = link_.countdowns().read_tick();
    const std::string reply =
        link_.transmit(kXonChannel, command + "\r", kXonTimeoutMs, kXonQuietChars);
    const double taken = link_.countdowns().read_tick() - begun;
    std::string shown = printable(reply);
    if (reply.empty())
        shown = "No response from the controller.";
    else if (shown.empty())
        shown = kNoData;
    history_.add(printable(command), shown);
    if (reply.empty()) return {SendOutcome::Kind::NoReply, shown, false};
    const bool accepted = !reply.starts_with(kXonRefusal);
    return {SendOutcome::Kind::Done, accepted ? taken_text(taken) : shown, accepted};
}

Recall<TextEntry>& TextPanel::recall(TextProtocol protocol) {
    return recalls_[protocol == TextProtocol::Full ? 0 : 1];
}

bool TextPanel::recall_earlier(TextProtocol protocol) {
    const auto found = recall(protocol).earlier(entry());
    if (found) set_entry(*found);
    return found.has_value();
}

bool TextPanel::recall_later(TextProtocol protocol) {
    const auto found = recall(protocol).later();
    if (found) set_entry(*found);
    return found.has_value();
}

void TextPanel::show_for(TextProtocol protocol) {
    Fram_CommsCommand.set_Visible(true);
    lbl_CommsCommand.set_Visible(true);
    txt_CommsCommand.set_Visible(true);
    lbl_DeviceAddress.set_Visible(protocol == TextProtocol::Full);
    txt_DeviceAddress.set_Visible(protocol == TextProtocol::Full);
}

void TextPanel::hide() {
    for (Control* control :
         std::initializer_list<Control*>{&Fram_CommsCommand, &lbl_CommsCommand, &txt_CommsCommand,
                                         &lbl_DeviceAddress, &txt_DeviceAddress})
        control->set_Visible(false);
}

} // namespace pelvan
