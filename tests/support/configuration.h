// A configuration file for tests of the joined program.
#pragma once

#include <vector>

#include "support/temp_dir.h"

namespace pelvan::testing {

/// Devices behind the channels 0, 1 ... at 9600; the ports are numbered from 1. `more` are further
/// keys of the channels' section.
inline void configure_devices(const TempDir& dir, const std::vector<std::string>& devices,
                              const std::string& more = {}) {
    std::string channels = "[COMMS CONTROLS]\r\n" + more;
    std::string ports = "[SERIAL DEVICES]\r\n";
    for (std::size_t n = 0; n < devices.size(); ++n) {
        const std::string name = "DEVICE " + std::to_string(n);
        const std::string port = std::to_string(n + 1);
        channels += name + " COMM PORT =" + port + "\r\n" + name + " PORT SETTING =9600,N,8,1\r\n";
        ports += "PORT " + port + "=" + devices[n] + "\r\n";
    }
    write_file(dir.file("pelvan7.ini"), channels + ports);
}

} // namespace pelvan::testing
