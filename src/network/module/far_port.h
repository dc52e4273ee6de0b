// The settings of a serial port at the far end of RFC 2217.
#pragma once

#include <array>

#include "network/module/connection.h"
#include "platform/serial_line.h"

namespace pelvan {

class FarPort {
  public:
    explicit FarPort(const LineSettings& settings);

    /// What has become of it: taken over; refused, also as a whole; no answer, or the connection
    /// lost.
    enum class Outcome { Set, Refused, Silent };
    /// Sets the wires and the format and waits until the deadline for the server's word that it has
    /// taken the format over. The object must outlive the connection: answers may come late.
    [[nodiscard]] Outcome set_up(Connection& connection, Deadline deadline);

  private:
    using Setter = int (*)(sergensio*, unsigned, sergensio_done, void*);
    struct Setting {
        Setter set;
        unsigned wanted;
        double tolerance; // in parts of it
        bool answered = false;
        bool taken = false;
    };
    [[nodiscard]] bool all_answered() const;
    void set_wires(sergensio* port) const;

    LineSettings line_;
    std::array<Setting, 4> format_;
};

} // namespace pelvan
