// The serial settings of a channel as texts that somebody edits: what they are, whether they may be
// stored, and the storing in the configuration file, after which all channels are rebuilt.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/ini.h"
#include "serial/channel_table.h"
#include "settings/port_devices.h"

namespace pelvan {

struct PortFields {
    std::string port;
    std::string baud;
    std::string parity;
    std::string data_bits;
    std::string stop_bits;
    int mode = 0; // of RTS and DTR: 0 clear, 1 set, 2 RTS cleared while a reply is awaited
};

/// "9600,N,8,1", and such a text taken apart; pieces that it lacks are empty.
[[nodiscard]] std::string settings_text(const PortFields& fields);
void set_settings(PortFields& fields, const std::string& settings);

/// The text fields of the settings, in the order in which they are judged.
enum class PortField { Port, Baud, Parity, DataBits, StopBits };

/// The fields that are not valid, in their order.
[[nodiscard]] std::vector<PortField> wrong_fields(const PortFields& fields);
/// A message for every field that is not valid, in a fixed order; none when all may be stored.
[[nodiscard]] std::vector<std::string> ValidatePortSettings(const PortFields& fields);

class PortSettings {
  public:
    /// `config` and `channels` are borrowed.
    PortSettings(const ConfigState& config, ChannelTable& channels)
        : config_(config), channels_(channels) {}

    /// Why nothing may be stored now, in a sentence: a tool has claimed the lines. Else empty.
    [[nodiscard]] std::string refusal() const { return channels_.line_use().refusal(nullptr); }
    /// Rebuilds all channels from the file, or says who has the lines; an error leaves those that
    /// were built before it.
    void rebuild() { channels_.init_comms(); }
    /// The fields of a channel's port object; of a channel behind a gap in the list, what the file
    /// says of it. Nothing when it is in neither.
    [[nodiscard]] std::optional<PortFields> read(int channel) const;
    /// Whether the file gives the channel a port.
    [[nodiscard]] bool configured(int channel) const;
    /// What a channel that nothing is known of may begin with: 9600,N,8,1 on a number that
    /// `devices` proposes, or what another channel has on that number.
    [[nodiscard]] PortFields proposal(int channel, const PortDevices& devices) const;
    /// What it means that other channels have the port, in a sentence; empty when none has it.
    [[nodiscard]] std::string sharing(int channel, const PortFields& fields) const;
    /// Writes a channel's three keys; false when they do not stand in the file then. They take
    /// effect with the next rebuild. `handshaking`: the mode is stored as that of a channel with
    /// XON/XOFF.
    [[nodiscard]] bool store(int channel, const PortFields& fields, bool handshaking);
    /// The channels whose missing keys hide this one: the list of channels ends at the first.
    [[nodiscard]] std::vector<int> missing_before(int channel) const;
    /// "Modbus can be used only when the Full protocol has a port too. Give it port 2?", of the
    /// `missing` channels before it.
    [[nodiscard]] static std::string gap_question(int channel, const std::vector<int>& missing);
    /// Gives channels port 2, with 9600,N,8,1 or what a channel has there already; false when that
    /// does not stand in the file then.
    [[nodiscard]] bool add(const std::vector<int>& missing);

  private:
    [[nodiscard]] PortFields table_fields(std::size_t channel) const;
    /// What a channel other than this one has on a port number, else the defaults.
    [[nodiscard]] PortFields fields_on(int number, int other_than) const;
    [[nodiscard]] bool write_keys(int channel, const std::string& port, const std::string& settings,
                                  const std::string& mode) const;

    const ConfigState& config_;
    ChannelTable& channels_;
};

} // namespace pelvan
