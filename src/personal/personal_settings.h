// What the program remembers for the person who works with it: where windows stood, which files
// were used last, light or dark. It lies in the person's own settings, beside none of the files
// that the program works with. All of it is a convenience: what cannot be read is missing, and what
// cannot be written is lost without a word.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>

namespace pelvan {

class PersonalSettings {
  public:
    /// `path` names a sectioned file, which is read when it is first asked for something; with an
    /// empty path nothing outlives the object.
    explicit PersonalSettings(std::string path = {}) : path_(std::move(path)) {}
    PersonalSettings(const PersonalSettings&) = delete;
    PersonalSettings& operator=(const PersonalSettings&) = delete;

    /// Empty when there is no such value.
    [[nodiscard]] std::string text(const std::string& section, const std::string& key) const;
    /// A text with a control character is not kept.
    void set_text(const std::string& section, const std::string& key, const std::string& text);
    /// Writes what was set since the last time, and leaves what another run of the program has
    /// written meanwhile. Waits for the disk, and up to 2 s for another writer.
    void save();

  private:
    std::string path_;
    mutable bool read_ = false;
    mutable std::string bytes_;
    std::map<std::pair<std::string, std::string>, std::string> set_; // by section and key
};

/// Where the person's settings lie by the customs of the system; empty when it names no place.
/// `variable` gives the text of an environment variable, null for one that is not set.
[[nodiscard]] std::string
personal_settings_path(const std::function<const char*(const char* name)>& variable);

/// The folder that holds it, and the settings of other programs, by the same customs.
[[nodiscard]] std::string
settings_folder(const std::function<const char*(const char* name)>& variable);

} // namespace pelvan
