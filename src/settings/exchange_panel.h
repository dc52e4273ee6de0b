// How a channel ends its replies and whether its line echoes: the choices, and what speaks for the
// first on this line. The window of the port settings holds one, for the channel whose frame it
// shows.
#pragma once

#include <optional>

#include "config/ini.h"
#include "forms/controls.h"
#include "serial/channel_table.h"

namespace pelvan {

/// What to say about a line of this baud rate: whether frames are recommended and why, and what is
/// known of its adapter. Empty when there is nothing to say.
[[nodiscard]] std::string exchange_advice(double baud_rate, bool complete, bool networked,
                                          const Lumps& lumps, std::optional<int> latency_timer_ms);

class ExchangePanel {
  public:
    /// Both are borrowed.
    ExchangePanel(const ConfigState& config, ChannelTable& channels);

    Frame fram_Exchange{"fram_Exchange", "On the Line"};
    CheckBox chk_Complete{"chk_Complete", "E&nd replies with their frame, not with a pause",
                          "A reply ends with the last byte of its frame, the next request keeps "
                          "3.5 characters of silence, and waiting leaves the processor free."};
    Label lbl_Advice{"lbl_Advice"};
    CheckBox chk_Echo{
        "chk_Echo", "The line &echoes what is sent (two-wire converter)",
        "What was sent is taken out of what comes, and compared: where it differs, two "
        "were sending at once, and the reply does not count."};

    /// There for the channel of the Xon protocol alone.
    CheckBox chk_OwnHandshake{
        "chk_OwnHandshake", "Stop at &XOFF in the program (for adapters that ignore it)",
        "Commands go out character by character, and stop where the device sends XOFF, until it "
        "sends XON. Otherwise this is left to the driver, and some adapters do not do it."};

    /// Shows what the file says of a channel.
    void fill(int channel);
    /// Brings the advice up to date with the texts of the port number's and the baud rate's boxes.
    void advise(const std::string& port, const std::string& baud_rate);
    /// As `store_choices`.
    [[nodiscard]] bool store(int channel) const;
    /// Somebody changed the choice.
    std::function<void()> changed;

  private:
    void show_advice();

    const ConfigState& config_;
    ChannelTable& channels_;
    std::string port_;
    std::string baud_rate_;
};

} // namespace pelvan
