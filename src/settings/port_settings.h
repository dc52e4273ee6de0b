// The serial settings of a channel as texts that somebody edits: what they are, whether they may be
// stored, and the storing in the configuration file, after which all channels are rebuilt.
#pragma once

#include <string>
#include <vector>

#include "config/ini.h"
#include "serial/channel_table.h"

namespace pelvan {

struct PortFields {
    std::string port;
    std::string baud;
    std::string parity;
    std::string data_bits;
    std::string stop_bits;
    int mode = 0; // of RTS and DTR: 0 clear, 1 set, 2 RTS cleared while a reply is awaited
};

/// A message for every field that is not valid, in a fixed order; none when all may be stored.
[[nodiscard]] std::vector<std::string> ValidatePortSettings(const PortFields& fields);

class PortSettings {
  public:
    /// What a channel gets that has to be added.
    static constexpr char kDefaultPort[] = "2";
    static constexpr char kDefaultSettings[] = "9600,N,8,1";

    /// `config` and `channels` are borrowed.
    PortSettings(const ConfigState& config, ChannelTable& channels)
        : config_(config), channels_(channels) {}

    /// Why nothing may be stored now, in a sentence: a tool has claimed the lines. Else empty.
    [[nodiscard]] std::string refusal() const { return channels_.line_use().refusal(nullptr); }
    /// Rebuilds all channels from the file, or says who has the lines; an error leaves those that
    /// were built before it.
    void rebuild() { channels_.init_comms(); }
    /// The fields of a channel's port object; of a channel that the table does not have, a baud
    /// rate alone.
    [[nodiscard]] PortFields read(int channel) const;
    /// Writes a channel's three keys; false when they do not stand in the file then. They take
    /// effect with the next rebuild. `handshaking`: the mode is stored as that of a channel with
    /// XON/XOFF.
    [[nodiscard]] bool store(int channel, const PortFields& fields, bool handshaking);
    /// The channels whose missing keys hide this one: the list of channels ends at the first.
    [[nodiscard]] std::vector<int> missing_before(int channel) const;
    /// Gives channels the defaults; false when they do not stand in the file then.
    [[nodiscard]] bool add(const std::vector<int>& missing);

  private:
    [[nodiscard]] bool write_keys(int channel, const std::string& port, const std::string& settings,
                                  const std::string& mode) const;

    const ConfigState& config_;
    ChannelTable& channels_;
};

} // namespace pelvan
