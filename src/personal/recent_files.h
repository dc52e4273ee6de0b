// The files that the person opened or saved last, a list for each kind of file.
#pragma once

#include <string>
#include <vector>

#include "personal/personal_settings.h"

namespace pelvan {

class RecentFiles {
  public:
    static constexpr int kMaxFiles = 10;

    /// `settings` is borrowed and must outlive this.
    explicit RecentFiles(PersonalSettings& settings) : settings_(settings) {}

    /// The last one first; files that are not there are left out. Looks each of them up, so that a
    /// share that does not answer is waited for.
    [[nodiscard]] std::vector<std::string> of(const std::string& kind) const;
    /// Puts a file to the top of its list.
    void add(const std::string& kind, const std::string& path);

  private:
    [[nodiscard]] std::vector<std::string> all(const std::string& kind) const;
    PersonalSettings& settings_;
};

} // namespace pelvan
