#include "platform/adapter_follower.h"

#include <filesystem>

namespace pelvan {

namespace fs = std::filesystem;

std::string AdapterFollower::path_of(const std::string& device) const {
    const auto link = links_.find(device);
    std::error_code error;
    return link != links_.end() && fs::exists(link->second, error) ? link->second : device;
}

void AdapterFollower::opened(const std::string& device) {
    std::error_code error;
    const fs::path node = fs::canonical(path_of(device), error);
    links_.erase(device);
    if (error || fs::path(device).parent_path() == by_id_) return;
    for (fs::directory_iterator it(by_id_, error), end; !error && it != end; it.increment(error)) {
        std::error_code broken; // a link that leads nowhere is none
        if (fs::canonical(it->path(), broken) == node && !broken)
            links_[device] = it->path().string();
    }
}

} // namespace pelvan
