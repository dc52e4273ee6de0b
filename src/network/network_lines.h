// Opens ports over the network and remembers what became of them. An opening runs in a thread of
// its own, because neither a name that is looked up nor a library can be told to come to an end:
// after a bounded wait it is given up and ends by itself.
#pragma once

#include <map>
#include <memory>
#include <string>

#include "network/network_module.h"
#include "platform/event.h"
#include "platform/tick.h"

namespace pelvan {

/// How to reach the library: null, and then why in `error`, where it cannot be loaded.
using FindNetworkModule = std::function<OpenNetworkLine(std::string& error)>;

/// Finds the library in a folder; it stays loaded. Looked for again at each call until it is there.
[[nodiscard]] FindNetworkModule network_module_in(const std::string& folder);

struct NetworkPatience {
    /// As long as a controller may take for a reply. A window stands still meanwhile.
    int first_ms = 2000;
    /// For a host that has not answered in that time, or has answered too late, `recent_ms` ago: a
    /// tool that asks for a hundred registers would stand still for minutes.
    int again_ms = 500;
    /// So long, too, a host's addresses count that were looked up: a slow name service would take
    /// up all the time of each opening.
    int recent_ms = 10000;
};

class NetworkLines {
  public:
    /// `tick` is borrowed.
    NetworkLines(TickSource& tick, FindNetworkModule find_module, NetworkPatience patience = {})
        : tick_(tick), find_module_(std::move(find_module)), patience_(patience) {}

    /// Opens a device that `is_network`. 8002 for a text that is not well-formed and a name that
    /// nobody knows, 8006 without the library, 8015 when the server does not take over the
    /// settings, 8010 for all else. Blocks for the time of `NetworkPatience` at most.
    [[nodiscard]] std::unique_ptr<SerialLine> open(const std::string& device,
                                                   const LineSettings& settings);
    /// Why the last opening of the device failed, or how its line was lost, in words; empty while
    /// there is nothing to say.
    [[nodiscard]] std::string trouble(const std::string& device) const;

    /// Raised before an opening, which blocks, with the device.
    Event<const std::string&> opening;
    /// Raised when one has failed for another reason than before, or a line was lost for another
    /// reason than the one lost before, with a sentence on the device.
    [[nodiscard]] Event<const std::string&>& failed() { return troubles_->told; }

  private:
    class Opening;
    /// By device. Lines may outlive the object that has opened them.
    struct Troubles {
        void tell_loss(const std::string& device, const std::string& reason);
        std::map<std::string, std::string> now;
        std::map<std::string, std::string> last_loss;
        Event<const std::string&> told;
    };

    [[noreturn]] void fail(const std::string& device, int error, const std::string& reason);
    [[noreturn]] void fail_late(const std::string& device, const Opening& one);
    void keep_addresses(const std::string& device, const Opening& one);
    [[nodiscard]] std::shared_ptr<const void> known_addresses(const std::string& device);
    [[nodiscard]] int patience_for(const std::string& device);
    [[nodiscard]] std::shared_ptr<Opening> begin(const std::string& device,
                                                 const LineSettings& settings, int timeout_ms,
                                                 OpenNetworkLine module);

    TickSource& tick_;
    FindNetworkModule find_module_;
    NetworkPatience patience_;
    struct LookUp {
        std::shared_ptr<const void> addresses;
        std::uint32_t at;
    };
    std::map<std::string, std::uint32_t> silent_since_;        // hosts that did not answer in time
    std::map<std::string, std::shared_ptr<Opening>> given_up_; // that may still be running
    std::map<std::string, LookUp> looked_up_;
    std::shared_ptr<Troubles> troubles_ = std::make_shared<Troubles>();
};

} // namespace pelvan
