#include "app/scan_settings.h"

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

} // namespace

std::string use_scanned_settings(const ScanFind& find, std::int16_t port, int line_mode,
                                 const ConfigState& config, ChannelTable& channels,
                                 Dialogs& dialogs) {
    PortSettings settings(config, channels);
    if (std::string refusal = settings.refusal(); !refusal.empty()) return refusal;
    const int channel = static_cast<int>(find.protocol);
    const auto known = settings.read(channel);
    const PortFields fields = fields_of(find, port, known ? known->mode : line_mode);
    for (const std::string& message : ValidatePortSettings(fields))
        return "The settings cannot be used:" + message + ".";
    std::string not_written = "The settings could not be written to " + config.gIniFile + ".";
    if (!settings.store(channel, fields, find.protocol == ScanProtocol::Xon)) {
        settings.rebuild();
        return not_written;
    }
    const std::vector<int> missing = settings.missing_before(channel);
    if (!missing.empty() &&
        dialogs.message_box(PortSettings::gap_question(channel, missing), {}, MessageButtons::YesNo,
                            MessageIcon::Exclamation) == MessageAnswer::Yes)
        if (!settings.add(missing)) return not_written;
    settings.rebuild();
    return protocol_name(channel) + " uses port " + fields.port + " with " +
           settings_text(find.line) + " now. " + settings.sharing(channel, fields);
}

} // namespace pelvan
