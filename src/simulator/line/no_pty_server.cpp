// For systems without pseudo-terminals.
#include "simulator/line/pty_server.h"

namespace pelvan::simulator {

int serve_on_pty(const PtyServerOptions&, std::atomic<bool>&,
                 const std::function<void(const std::string&)>& report) {
    report("Pseudo-terminals are not available on this system.");
    return 1;
}

} // namespace pelvan::simulator
