#include "personal/recent_files.h"

#include "platform/text_file.h"

namespace pelvan {
namespace {

constexpr char kSection[] = "RECENT FILES";

std::string key_of(const std::string& kind, int place) {
    return kind + " " + std::to_string(place + 1);
}

} // namespace

std::vector<std::string> RecentFiles::all(const std::string& kind) const {
    std::vector<std::string> files;
    for (int place = 0; place < kMaxFiles; ++place)
        if (std::string path = settings_.text(kSection, key_of(kind, place)); !path.empty())
            files.push_back(std::move(path));
    return files;
}

std::vector<std::string> RecentFiles::of(const std::string& kind) const {
    std::vector<std::string> files = all(kind);
    // One that is gone may come back with its stick: it keeps its place.
    std::erase_if(files, [](const std::string& path) { return !fileexists(path); });
    return files;
}

void RecentFiles::add(const std::string& kind, const std::string& path) {
    std::vector<std::string> files = all(kind);
    std::erase(files, path);
    files.insert(files.begin(), path);
    for (int place = 0; place < kMaxFiles && place < static_cast<int>(files.size()); ++place)
        settings_.set_text(kSection, key_of(kind, place), files[static_cast<std::size_t>(place)]);
}

} // namespace pelvan
