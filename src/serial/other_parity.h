// A channel's port, opened with a parity that its device does not have, for a request that is to
// arrive damaged. Whoever does this has claimed the lines.
#pragma once

#include "serial/channel_table.h"

namespace pelvan {

/// The port has the other parity for as long as this lives; then it is opened with its own again,
/// however the work between ended.
class OtherParity {
  public:
    /// Closes the port and opens it with this parity. Raises the errors of an opening (8015: the
    /// line has no such parity), everything being put back before. Modem lines may drop meanwhile.
    OtherParity(ChannelTable& channels, std::int16_t channel, char parity);
    OtherParity(const OtherParity&) = delete;
    OtherParity& operator=(const OtherParity&) = delete;
    ~OtherParity() { put_back(); }

  private:
    void put_back();

    SerialPort& port_;
    bool was_open_;
};

/// The object through which a channel's port is open, which may be that of another channel with the
/// same port and settings; the channel's own where none is. 9 for a channel that does not exist.
[[nodiscard]] SerialPort& port_in_use(ChannelTable& channels, std::int16_t channel);

} // namespace pelvan
