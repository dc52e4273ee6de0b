#include "personal/personal_settings.h"

#include <algorithm>
#include <filesystem>
#include <optional>

#include "platform/sectioned_text.h"
#include "platform/whole_file.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;

constexpr char kFolder[] = "pelvan7";
constexpr char kFile[] = "settings.ini";

/// As the file's reader gives it back: spaces and quotes at the ends would be taken off.
std::string quoted(const std::string& text) {
    const auto is_lost = [](char c) { return c == ' ' || c == '"' || c == '\''; };
    if (text.empty() || (!is_lost(text.front()) && !is_lost(text.back()))) return text;
    return '"' + text + '"';
}

bool is_plain(const std::string& text) {
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return static_cast<unsigned char>(c) < ' '; });
}

} // namespace

std::string PersonalSettings::text(const std::string& section, const std::string& key) const {
    const auto found = set_.find({section, key});
    if (found != set_.end()) return found->second;
    if (!std::exchange(read_, true) && !path_.empty() && read_whole_file(path_, bytes_) != 0)
        bytes_.clear();
    return find_value(bytes_, section, key).value_or("");
}

void PersonalSettings::set_text(const std::string& section, const std::string& key,
                                const std::string& text) {
    if (is_plain(text) && this->text(section, key) != text) set_[{section, key}] = text;
}

void PersonalSettings::save() {
    if (set_.empty() || path_.empty()) return;
    std::error_code ignored; // the file's own error follows
    fs::create_directories(fs::path(path_).parent_path(), ignored);
    const auto change = [this](std::string_view present) {
        std::string bytes(present);
        for (const auto& [name, text] : set_)
            bytes = with_value(bytes, name.first, name.second, quoted(text));
        bytes_ = bytes;
        return bytes;
    };
    if (change_whole_file(path_, change) != 0) return; // kept for another try
    read_ = true;
    set_.clear();
}

std::string settings_folder(const std::function<const char*(const char* name)>& variable) {
    const auto folder = [&](const char* name) -> std::optional<fs::path> {
        const char* text = variable(name);
        // A relative path would lie somewhere else with every start.
        if (text == nullptr || !fs::path(text).is_absolute()) return std::nullopt;
        return fs::path(text);
    };
#ifdef _WIN32
    if (const auto own = folder("APPDATA")) return own->string();
#else
    if (const auto own = folder("XDG_CONFIG_HOME")) return own->string();
    if (const auto home = folder("HOME")) return (*home / ".config").string();
#endif
    return {};
}

std::string personal_settings_path(const std::function<const char*(const char* name)>& variable) {
    const std::string folder = settings_folder(variable);
    return folder.empty() ? std::string() : (fs::path(folder) / kFolder / kFile).string();
}

} // namespace pelvan
