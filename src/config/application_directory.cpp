#include "config/application_directory.h"

#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "platform/run_time_error.h"
#include "text/strings.h"

// From the folder of the executable to those of the package; set by the build for its layout.
#ifndef PELVAN_MODULE_PATH
#define PELVAN_MODULE_PATH "../lib/pelvan7"
#endif
#ifndef PELVAN_DATA_PATH
#define PELVAN_DATA_PATH "../share/pelvan7"
#endif

namespace pelvan {
namespace {

namespace fs = std::filesystem;

constexpr char kConfiguration[] = "pelvan7.ini";
/// The sample names ports that this machine may not have: it is there to be read.
constexpr char kSampleConfiguration[] = "pelvan7.ini.sample";
constexpr char kFolderName[] = "pelvan7";

bool is_there(const fs::path& path) {
    std::error_code error;
    return fs::exists(path, error);
}

bool is_folder(const fs::path& path) {
    std::error_code error;
    return fs::is_directory(path, error);
}

/// As for the files in it: what nobody may write is not written by the superuser either.
bool may_write(const fs::path& directory) {
    constexpr auto kAnyone =
        fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    std::error_code error;
    const fs::file_status status = fs::status(directory, error);
    return fs::is_directory(status) && (status.permissions() & kAnyone) != fs::perms::none &&
           access(directory.c_str(), W_OK | X_OK) == 0;
}

std::optional<fs::path> personal_folder(const DirectoryFacts& facts) {
    const fs::path data = facts.data_home;
    if (data.is_absolute()) return data / kFolderName;
    const fs::path home = facts.home;
    if (home.is_absolute()) return home / ".local" / "share" / kFolderName;
    return std::nullopt;
}

bool is_set(const fs::path& file) {
    return upper_case(file.extension().string()) == ".PV5";
}

/// Links are followed: what is copied must not lead back to where nothing can be written.
void copy_present(const fs::path& from, const fs::path& to) {
    if (is_there(from)) fs::copy(from, to, fs::copy_options::recursive);
}

/// The configuration and the sets of a folder, and its setups and sequences.
void copy_files(const fs::path& from, const fs::path& to, const char* configuration) {
    copy_present(from / kConfiguration, to / configuration);
    for (const fs::directory_entry& entry : fs::directory_iterator(from))
        if (entry.is_regular_file() && is_set(entry.path()))
            fs::copy_file(entry.path(), to / entry.path().filename());
    for (const char* folder : {"Download Sequences", "Reg Downloads"})
        copy_present(from / folder, to / folder);
    fs::create_directories(to / "Reg Downloads");
}

void let_owner_write(const fs::path& folder) {
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(folder))
        fs::permissions(entry.path(), fs::perms::owner_write, fs::perm_options::add);
}

/// Beside its place first: a folder that is half filled is never taken for the person's.
void make_personal(const fs::path& folder, const Installation& installation, bool from_program) {
    fs::create_directories(folder.parent_path());
    fs::path filling = folder;
    filling += ".new-" + std::to_string(getpid());
    fs::create_directory(filling);
    try {
        if (from_program)
            copy_files(installation.folder, filling, kConfiguration);
        else
            copy_files(installation.samples, filling, kSampleConfiguration);
        let_owner_write(filling);
        fs::rename(filling, folder);
    } catch (...) {
        std::error_code ignored;
        fs::remove_all(filling, ignored);
        throw;
    }
}

ApplicationDirectory read_only(const Installation& installation, const std::string& cause) {
    const bool own = installation.portable || !is_folder(installation.samples);
    return {
        own ? installation.folder : installation.samples,
        "no other directory can be written",
        {"Nothing can be saved here (" + cause + "): name another directory with --directory."}};
}

std::string unused_note(const fs::path& directory) {
    return "The configuration in " + directory.string() + " is not used.";
}

/// Who has forgotten the variable looks for a configuration that lies where it would be without.
ApplicationDirectory named_by_variable(const DirectoryFacts& facts) {
    std::error_code error;
    const fs::path path = fs::absolute(facts.variable, error);
    if (error || !is_folder(path)) throw RunTimeError(error_number::kPathNotFound, facts.variable);
    ApplicationDirectory chosen{path.string(), "PELVAN_DIRECTORY names it",
                                directory_faults(path.string())};
    const auto note = [&](const fs::path& other) {
        if (is_there(other / kConfiguration) && !fs::equivalent(other, path, error))
            chosen.notes.push_back(unused_note(other));
    };
    if (facts.installation.portable) note(facts.installation.folder);
    if (const auto folder = personal_folder(facts)) note(*folder);
    return chosen;
}

ApplicationDirectory personal(const fs::path& folder, const Installation& installation) {
    ApplicationDirectory chosen{folder.string(), "the program's own folder cannot be written", {}};
    if (!installation.portable) chosen.reason = "the folder of your data";
    const fs::path old = fs::path(installation.folder) / kConfiguration;
    if (is_folder(folder)) {
        chosen.notes = directory_faults(folder.string());
        if (is_there(old)) chosen.notes.push_back(unused_note(installation.folder));
        return chosen;
    }
    try {
        make_personal(folder, installation, is_there(old));
        chosen.notes.push_back(
            "Made and filled with the " +
            std::string(is_there(old) ? "files that lie beside the program." : "sample files."));
        return chosen;
    } catch (const fs::filesystem_error& error) {
        // Another start of the program may have made it meanwhile.
        if (is_folder(folder)) return chosen;
        return read_only(installation, folder.string() + ": " + error.code().message());
    }
}

} // namespace

std::string configuration_fault(const std::string& directory) {
    const fs::path file = fs::path(directory) / kConfiguration;
    if (access(file.c_str(), R_OK) == 0 || errno != EACCES) return {};
    return file.string() + " may not be read: it counts as empty.";
}

std::vector<std::string> directory_faults(const std::string& directory) {
    std::vector<std::string> faults;
    if (std::string fault = configuration_fault(directory); !fault.empty())
        faults.push_back(std::move(fault));
    if (!may_write(directory)) faults.push_back("Nothing can be saved in " + directory + ".");
    return faults;
}

Installation find_installation(const std::string& executable_folder) {
    const fs::path folder = executable_folder;
    if (is_folder(folder / "help"))
        return {folder.string(), folder.string(), (folder / "help").string(), folder.string(),
                true};
    const fs::path data = (folder / PELVAN_DATA_PATH).lexically_normal();
    // A build without windows has neither help nor package: its folder is its own, too.
    const bool packaged = is_folder(data / "help");
    return {folder.string(), (folder / PELVAN_MODULE_PATH).lexically_normal().string(),
            (data / "help").string(), (data / "samples").string(), !packaged};
}

Installation find_own_installation() {
    std::error_code error;
    const auto executable = fs::read_symlink("/proc/self/exe", error);
    return find_installation((error ? fs::current_path() : executable.parent_path()).string());
}

ApplicationDirectory choose_application_directory(const DirectoryFacts& facts) {
    if (!facts.variable.empty()) return named_by_variable(facts);
    const Installation& installation = facts.installation;
    const auto folder = personal_folder(facts);
    // The folder of all the system's programs is nobody's own, even where root may write it.
    if (installation.portable && may_write(installation.folder)) {
        ApplicationDirectory chosen{installation.folder, "the program's own folder",
                                    directory_faults(installation.folder)};
        if (folder && is_there(*folder / kConfiguration))
            chosen.notes.push_back(unused_note(*folder));
        return chosen;
    }
    if (!folder) return read_only(installation, "HOME names no directory");
    return personal(*folder, installation);
}

} // namespace pelvan
