// The table of serial channels, one a protocol: built whole from the configuration file, opened on
// first use. A port is never reconfigured while it is open; a changed setting takes effect by
// rebuilding the table. Several channels may share one physical port.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "config/ini.h"
#include "platform/dialogs.h"
#include "platform/event.h"
#include "platform/scope_guard.h"
#include "serial/errors.h"
#include "serial/frame_exchange.h"
#include "serial/late_answers.h"
#include "serial/line_use.h"
#include "serial/serial_state.h"

namespace pelvan {

/// A channel of the configuration file as it stands there.
struct ChannelText {
    int number = 0;
    std::string port;
    std::string settings;
    /// What is wrong with the settings, and what comes of it; empty when nothing is.
    std::string fault;
};

/// Those that `init_comms` builds, four at most, up to the first without a port.
[[nodiscard]] std::vector<ChannelText> channel_texts(const ConfigState& config);

using PortFactory = std::function<std::unique_ptr<SerialPort>()>;

/// The hidden form that holds the serial control array: element 0 exists from its loading on.
class frm_Comms {
  public:
    explicit frm_Comms(PortFactory factory) : factory_(std::move(factory)) {}

    std::vector<std::unique_ptr<SerialPort>> com_Device;

    void load();
    /// Destroys every port object, which closes every open port.
    void unload();
    /// Creates the next element.
    SerialPort& extend();
    /// Raised for every element created, and (with null) before `unload` destroys all.
    Event<SerialPort*> element_changed;

  private:
    PortFactory factory_;
};

class ChannelTable {
  public:
    ChannelTable(SerialState& state, const ConfigState& config, frm_Comms& comms, Dialogs& dialogs,
                 ErrorLog& log)
        : state_(state), config_(config), comms_(comms), dialogs_(dialogs), log_(log) {}

    /// Closes every port and rebuilds all channels from the configuration file. Touches no device.
    ///
    /// A port number outside 1..16 in the file is reported again and again until the file is
    /// mended; more than four channels raise 9, channels 0 to 3 staying built. Asked for in a
    /// message box of an exchange or of another rebuild, it happens after that one. False, with a
    /// message, while a tool has claimed the lines.
    bool init_comms();

    /// Sets number, settings and modem-line mode of one existing, closed channel.
    void define_comms_control(std::int16_t channel, std::int16_t port, const std::string& settings,
                              const std::string& rts_mode);

    /// Makes sure that the channel's port is open and empty; returns the index of the object to
    /// use, which is another channel's when that one has the same port open with the same settings.
    ///
    /// A port whose line was lost is opened again; 8020 when its device is still gone. An unknown
    /// channel becomes 0, in the caller's variable too. Errors are shown, not raised.
    /// -1 while the table is empty, as it is while a rebuild waits at its first message.
    ///
    /// `for_exchange`: where replies end with their frame nothing is discarded, for the exchange
    /// looks at what it takes out of the port.
    std::int16_t open_port(std::int16_t& channel, bool for_exchange = false);
    /// How many bytes nobody had asked for stood in the port when `open_port` emptied it last.
    [[nodiscard]] std::size_t stray_bytes() const { return stray_bytes_; }

    /// Runs work that refers to port objects: a rebuild asked for meanwhile, in a message box say,
    /// follows the work.
    template <class Work> void keep_ports(Work&& work) {
        {
            ++keepers_;
            const ScopeGuard leave([this] { --keepers_; });
            work();
        }
        follow_up_rebuild();
    }

    [[nodiscard]] SerialState& state() { return state_; }
    /// How a channel exchanges; 9 outside 0..3.
    [[nodiscard]] const ExchangeWay& exchange_way(std::int16_t channel) const;
    /// What was seen of the device behind a port number since the program started.
    [[nodiscard]] Lumps& lumps(std::int16_t port_number) { return seen_[port_number].lumps; }
    /// What is remembered of a port object since the table was built; 9 outside 0..3.
    [[nodiscard]] LineRecord& line_record(std::int16_t port_index);
    [[nodiscard]] LineUse& line_use() { return line_use_; }
    [[nodiscard]] LateAnswers& late_answers() { return late_answers_; }
    /// Raised at the beginning of every rebuild, while the old ports still stand.
    Event<> before_rebuild;
    /// Raised before the port of another channel is closed to make way for the one that is opened.
    Event<SerialPort&> before_close;

  private:
    void rebuild();
    void follow_up_rebuild();
    std::int16_t open_target(std::int16_t channel, bool for_exchange);
    [[nodiscard]] bool build_channel(int n);
    void set_way(int channel, SerialPort& device, const std::string& settings);
    void set_settle_time(int channel, const std::string& settings);
    void apply_mode(std::int16_t channel, const std::string& rts_mode);
    [[nodiscard]] std::int16_t settle_twins(std::int16_t channel);

    SerialState& state_;
    const ConfigState& config_;
    frm_Comms& comms_;
    Dialogs& dialogs_;
    ErrorLog& log_;
    LineUse line_use_;
    LateAnswers late_answers_;
    std::array<ExchangeWay, kChannelLimit> ways_{};
    std::array<LineRecord, kChannelLimit> records_{};
    struct Seen {
        std::string device;
        Lumps lumps;
    };
    std::map<std::int16_t, Seen> seen_; // by port number
    std::size_t stray_bytes_ = 0;
    int keepers_ = 0; // exchanges and rebuilds under way, one in a message box of the other
    bool rebuild_wanted_ = false;
};

} // namespace pelvan
