#include "platform/adapter_follower.h"

#include <filesystem>

namespace pelvan {

namespace fs = std::filesystem;

std::string AdapterFollower::path_of(const std::string& device) const {
    const auto link = links_.find(device);
    return link == links_.end() ? device : link->second;
}

std::string AdapterFollower::another_at(const std::string& device) const {
    const auto link = links_.find(device);
    std::error_code error;
    if (link == links_.end() || fs::exists(link->second, error)) return {};
    return link_to(device);
}

void AdapterFollower::opened(const std::string& device) {
    const std::string link = link_to(path_of(device));
    links_.erase(device);
    if (!link.empty() && fs::path(device).parent_path() != by_id_) links_[device] = link;
}

/// The last of the names that lead where the path leads.
std::string AdapterFollower::link_to(const std::string& path) const {
    std::string found;
    std::error_code error;
    const fs::path node = fs::canonical(path, error);
    if (error) return found;
    for (fs::directory_iterator it(by_id_, error), end; !error && it != end; it.increment(error)) {
        std::error_code broken; // a link that leads nowhere is none
        if (fs::canonical(it->path(), broken) == node && !broken) found = it->path().string();
    }
    return found;
}

} // namespace pelvan
