// Where the program's files lie: what came with it (help, samples, libraries), and the directory
// that it works in (configuration, set files, setups), which is the person's.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace pelvan {

/// What came with the program.
struct Installation {
    std::string folder;  ///< of the executable
    std::string modules; ///< libraries that are loaded on first use
    std::string help;
    std::string samples;
    /// Everything lies in one folder that is the program's own; else it is spread over the
    /// system's.
    bool portable = true;
};

/// Looks beside the executable for the help, which makes the folder the program's own, as it is in
/// a build too; else in the places of a system that a package fills.
[[nodiscard]] Installation find_installation(const std::string& executable_folder);

/// That of the program that runs.
[[nodiscard]] Installation find_own_installation();

/// What the choice depends on. An empty text stands for a variable that is missing or empty.
struct DirectoryFacts {
    Installation installation;
    std::string variable;  ///< PELVAN_DIRECTORY
    std::string home;      ///< HOME
    std::string data_home; ///< XDG_DATA_HOME; a relative one counts as missing
};

struct ApplicationDirectory {
    std::string path;
    std::string reason;             ///< why this one, as the end of a sentence
    std::vector<std::string> notes; ///< sentences on what a person may wonder about
};

/// Chooses the directory of the configuration and of the program's other files: the variable's,
/// else the program's own folder when it may be written, else a folder for the person's data. That
/// one is made when it is missing, whole or not at all, from what lies beside the program, else
/// from the samples. What is there already is never changed. Where nothing can be written the
/// samples are read and a note says so. Throws `RunTimeError` 76 for a variable that names no
/// directory.
[[nodiscard]] ApplicationDirectory choose_application_directory(const DirectoryFacts& facts);

/// What hinders the program in the directory, in sentences: a configuration that is there and may
/// not be read counts as empty, and where nothing may be written nothing is saved.
[[nodiscard]] std::vector<std::string> directory_faults(const std::string& directory);
/// The first of them alone, naming the file; empty when it may be read or is not there.
[[nodiscard]] std::string configuration_fault(const std::string& directory);

} // namespace pelvan
