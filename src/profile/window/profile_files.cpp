#include "profile/window/profile_files.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "platform/run_time_error.h"
#include "profile/profile_text.h"
#include "registers/setup_file.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;

constexpr long kMaxModel = 65535; // a register holds it

} // namespace

std::vector<int> profile_models(const std::string& directory) {
    std::vector<int> models;
    std::error_code error;
    const fs::path folder = path_in(directory, kDownloadSequences);
    for (fs::directory_iterator it(folder, error), end; !error && it != end; it.increment(error)) {
        if (it->path().extension() != ".pds") continue;
        if (const auto model = whole_number(it->path().stem().string(), 1, kMaxModel))
            models.push_back(static_cast<int>(*model));
    }
    std::sort(models.begin(), models.end());
    return models;
}

std::optional<int> model_of_setup(const std::string& path) {
    try {
        const auto reader = opentextfile(path);
        const std::string line = skip_to_line(*reader, kModelLine + 1);
        if (line.find("Model") == std::string::npos) return std::nullopt;
        const float model = model_in_header(line);
        if (model < 1 || model > kMaxModel) return std::nullopt;
        return static_cast<int>(model);
    } catch (const RunTimeError&) {
        return std::nullopt; // whoever opens it says why
    }
}

FileDialogRequest ProfileFiles::request() const {
    FileDialogRequest request;
    request.filter = kSetupFileFilter;
    request.initial_directory = reg_downloads_path(services_.application_directory);
    request.default_extension = "txt";
    request.kind = "profiles";
    return request;
}

void ProfileFiles::warn(const std::string& text) {
    services_.dialogs.message_box(text, {}, MessageButtons::Ok, MessageIcon::Exclamation);
}

bool ProfileFiles::may_lose(const std::string& question) {
    if (!work_.editor().dirty()) return true;
    return services_.dialogs.message_box("The profiles are neither in a file nor in a controller "
                                         "as they are now.\n\n" +
                                             question,
                                         {}, MessageButtons::YesNoPreferNo) == MessageAnswer::Yes;
}

bool ProfileFiles::load_model(int model) {
    LoadedModel loaded = load_profile_model(services_.application_directory, model);
    if (!loaded.model) {
        warn(loaded.problem);
        return false;
    }
    work_.use(std::move(*loaded.model));
    path_.clear();
    return true;
}

bool ProfileFiles::use_model(int model) {
    if (work_.model() == model) return true;
    return may_lose("Take another model, and lose them?") && load_model(model);
}

std::optional<std::string> ProfileFiles::open() {
    FileDialogRequest wanted = request();
    wanted.must_exist = true;
    const auto path = services_.dialogs.open_file(wanted);
    return path ? open(*path) : std::nullopt;
}

std::optional<std::string> ProfileFiles::open(const std::string& path) {
    if (!may_lose("Open the file, and lose them?")) return std::nullopt;
    const int model = model_of_setup(path).value_or(work_.model());
    if (model != work_.model() && !load_model(model)) return std::nullopt;
    ReadProfiles read = load_profiles(work_.format(), path);
    if (!read.problem.empty()) {
        warn(read.problem);
        return std::nullopt;
    }
    std::string told = count_text(read.profiles.size(), "profile") + " opened.";
    for (const std::string& note : read.notes)
        told += " " + note;
    work_.edit([&read](ProfileEditor& editor) {
        editor.open(std::move(read.profiles));
        return std::string();
    });
    path_ = path;
    return told;
}

bool ProfileFiles::save() {
    if (path_.empty()) return save_as();
    const std::string problem = save_profiles(work_.format(), work_.editor().profiles(), path_);
    if (!problem.empty()) {
        warn(problem);
        return false;
    }
    work_.edit([](ProfileEditor& editor) {
        editor.mark_saved();
        return std::string();
    });
    return true;
}

bool ProfileFiles::save_as() {
    FileDialogRequest wanted = request();
    wanted.overwrite_prompt = true;
    wanted.file_name = path_.empty() ? "profiles.txt" : name();
    const auto path = services_.dialogs.save_file(wanted);
    if (!path) return false;
    const std::string before = std::exchange(path_, with_text_extension(*path));
    if (save()) return true;
    path_ = before;
    return false;
}

std::string ProfileFiles::name() const {
    return path_.substr(path_.find_last_of("/\\") + 1);
}

} // namespace pelvan
