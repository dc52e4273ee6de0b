// A port number taken from the channels for a while: whoever holds the loan may open the device
// with settings of its own. The channels' objects keep their settings throughout, so that what they
// had is what they have again, however the loan ends.
#pragma once

#include <vector>

#include "serial/channel_table.h"

namespace pelvan {

class PortLoan {
  public:
    /// Closes the objects of the number. The lines are claimed by the borrower meanwhile, so that
    /// nobody opens or rebuilds them.
    PortLoan(ChannelTable& channels, std::int16_t number);
    PortLoan(const PortLoan&) = delete;
    PortLoan& operator=(const PortLoan&) = delete;
    /// Opens those again that were open. One that does not open is left to its next use to report;
    /// who listened on it is told, as when another channel takes a port.
    ~PortLoan();

  private:
    ChannelTable& channels_;
    std::vector<SerialPort*> closed_;
};

} // namespace pelvan
