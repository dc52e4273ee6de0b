// A configuration file for tests of the joined program.
#pragma once

#include "support/temp_dir.h"

namespace pelvan::testing {

/// Channels 0 to 3 on ports 1 to 4, all of which stand for one device; `more` are further keys.
inline void configure_device(const TempDir& dir, const std::string& device,
                             const std::string& more = {}) {
    std::string channels = "[COMMS CONTROLS]\r\n" + more;
    std::string devices = "[SERIAL DEVICES]\r\n";
    for (int n = 0; n < 4; ++n) {
        const std::string name = "DEVICE " + std::to_string(n);
        const std::string port = std::to_string(n + 1);
        channels += name + " COMM PORT=" + port + "\r\n" + name + " PORT SETTING=9600,N,8,1\r\n";
        devices += "PORT " + port + "=" + device + "\r\n";
    }
    write_file(dir.file("pelvan7.ini"), channels + devices);
}

} // namespace pelvan::testing
