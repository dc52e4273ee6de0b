#include "app/scan_settings.h"

#include "settings/channel_choices.h"
#include "settings/port_settings.h"
#include "settings/port_users.h"

namespace pelvan {
namespace {

PortFields fields_of(const ScanFind& find, std::int16_t port, int mode) {
    PortFields fields;
    set_settings(fields, settings_text(find.line));
    fields.port = std::to_string(port);
    fields.mode = mode;
    return fields;
}

/// What else the line needs: its echo taken out, and whole replies recommended.
std::string more_of(const ChannelChoices& choices, const ScanFind& find) {
    std::string text;
    if (choices.echo) text += "The echo of the line is taken out. ";
    if (!choices.complete && find.line.baud_rate >= kNoPauseBaud)
        text += "Replies come cut at this rate unless they end with their frame: see Port "
                "Settings. ";
    return text;
}

} // namespace

UsedSettings use_scanned_settings(const ScanFind& find, std::int16_t port, int line_mode,
                                  const ConfigState& config, ChannelTable& channels,
                                  Dialogs& dialogs) {
    PortSettings settings(config, channels);
    if (std::string refusal = settings.refusal(); !refusal.empty())
        return {false, std::move(refusal)};
    const int channel = static_cast<int>(find.protocol);
    // With which it was found: an adapter may be fed by these wires.
    const PortFields fields = fields_of(find, port, line_mode);
    for (const std::string& message : ValidatePortSettings(fields))
        return {false, "The settings cannot be used:" + message + "."};
    std::string not_written = "The settings could not be written to " + config.gIniFile + ".";
    ChannelChoices choices = read_choices(config, channel);
    choices.echo = find.echo;
    if (!settings.store(channel, fields, find.protocol == ScanProtocol::Xon) ||
        !store_choices(config, channel, choices)) {
        settings.rebuild();
        return {false, std::move(not_written)};
    }
    const std::vector<int> missing = settings.missing_before(channel);
    const bool add =
        !missing.empty() &&
        dialogs.message_box(PortSettings::gap_question(channel, missing), {}, MessageButtons::YesNo,
                            MessageIcon::Exclamation) == MessageAnswer::Yes;
    if (add && !settings.add(missing)) return {false, std::move(not_written)};
    settings.rebuild();
    if (!missing.empty() && !add)
        return {true, "Saved, but " + protocol_name(channel) +
                          " cannot be used before the protocols above it have ports too: see Port "
                          "Settings."};
    return {true, protocol_name(channel) + " uses port " + fields.port + " with " +
                      settings_text(find.line) + " now. " + more_of(choices, find) +
                      settings.sharing(channel, fields)};
}

} // namespace pelvan
