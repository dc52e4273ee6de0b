// A capture as other programs read it: a pcapng file in which each frame is one packet with its
// time. The link type is that of exported protocol units, each naming its protocol, so that
// Wireshark shows Modbus RTU at once, without a setting. Bytes that are no Modbus frame are kept
// as plain data. Each packet's flags tell requests (outbound) from replies (inbound).
#pragma once

#include <deque>
#include <string>

#include "listen/traffic.h"
#include "platform/posix_file.h"

namespace pelvan {

class CaptureWriter {
  public:
    /// Creates or empties the file; a pipe must have its reader. File errors (61, 70, 75, 76) from
    /// every function; none waits.
    explicit CaptureWriter(std::string path);
    /// Handed to the system before it returns.
    void add(const ListenedFrame& frame);

  private:
    void write(const std::string& block);

    std::string path_;
    PosixFile file_;
};

/// Writes the frames to a new file.
void save_capture(const std::string& path, const std::deque<ListenedFrame>& frames);

} // namespace pelvan
