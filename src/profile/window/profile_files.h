// Profiles in text files, as the profile window opens and saves them: which file, which model it is
// of, and what is asked before something is lost.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/services.h"
#include "profile/window/profile_work.h"

namespace pelvan {

/// Models that have a .pds in the directory, in order.
[[nodiscard]] std::vector<int> profile_models(const std::string& directory);

/// The model that a saved setup says it is of; nothing for other files.
[[nodiscard]] std::optional<int> model_of_setup(const std::string& path);

class ProfileFiles {
  public:
    ProfileFiles(Services& services, ProfileWork& work) : services_(services), work_(work) {}

    /// Asks for a file and takes its profiles; what it has to say of them, as sentences. Nothing
    /// when nobody chose one, or when it could not be opened, which it tells in a box.
    [[nodiscard]] std::optional<std::string> open();
    /// The same with a file that was chosen already.
    [[nodiscard]] std::optional<std::string> open(const std::string& path);
    /// Asks for a name when there is none yet. False when nothing was saved.
    bool save();
    bool save_as();
    /// Takes a model's format; asks first when something would be lost. False when it stays.
    bool use_model(int model);
    /// Whether what is not saved may go; asks when there is something.
    [[nodiscard]] bool may_lose(const std::string& question);

    /// Without its folder; empty before there is one.
    [[nodiscard]] std::string name() const;
    /// The profiles have no file any more.
    void forget() { path_.clear(); }

  private:
    [[nodiscard]] FileDialogRequest request() const;
    void warn(const std::string& text);
    bool load_model(int model);

    Services& services_;
    ProfileWork& work_;
    std::string path_;
};

} // namespace pelvan
