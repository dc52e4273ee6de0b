// Finds an adapter again that comes back under another name: pulled and plugged in anew,
// "/dev/ttyUSB0" may be "/dev/ttyUSB1", and its link among the names by maker and serial number
// stays. What was opened by such a name needs no following.
#pragma once

#include <map>
#include <string>

namespace pelvan {

class AdapterFollower {
  public:
    /// `by_id` is the directory of the links that bear makers' names and serial numbers.
    explicit AdapterFollower(std::string by_id = "/dev/serial/by-id") : by_id_(std::move(by_id)) {}

    /// By which path to open a device now: the name of the adapter that it was when it was opened
    /// last, also while that is away, or the device's own path when it has had no such name. The
    /// node may be another adapter's by then, and gets its name a moment after it is there: nothing
    /// is sent to a stranger.
    [[nodiscard]] std::string path_of(const std::string& device) const;
    /// The name of the adapter that stands at the device's path instead of the one that was opened
    /// there; empty when none does.
    [[nodiscard]] std::string another_at(const std::string& device) const;
    /// Whatever stands at the device's path is the adapter from now on.
    void forget(const std::string& device) { links_.erase(device); }
    /// The device has been opened by `path_of`: remembers which adapter that is.
    void opened(const std::string& device);

  private:
    [[nodiscard]] std::string link_to(const std::string& path) const;

    std::string by_id_;
    std::map<std::string, std::string> links_; // by device
};

} // namespace pelvan
