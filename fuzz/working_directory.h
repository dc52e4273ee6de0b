// A directory of the program's own for targets that run it whole: it is the process's working
// directory too, so that names without a path lie in it.
#pragma once

#include <unistd.h>

#include <filesystem>

#include "harness.h"
#include "support/temp_dir.h"

namespace pelvan::fuzz {

inline constexpr char kWorkingSet[] =
    "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOG TO FILE=TRUE\r\nLOGGING INTERVAL=2\r\n"
    "LOGGING FILENAME=log\r\n1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=100\r\n"
    "1DEVICEREGISTERDECIMAL=1\r\n2DEVICEADDRESS=1\r\n2DEVICECOMMAND=32\r\n2DEVICEREGISTER=1\r\n"
    "3DEVICEADDRESS=2\r\n3DEVICECOMMAND=6\r\n";
inline constexpr char kWorkingSetup[] =
    "*****\r\n   Model #:  742\r\n-\r\n-\r\n-\r\n-\r\n*****\r\n300 100\r\n319 5x\r\n500 25\r\n25 "
    "0\r\n";
inline constexpr char kWorkingProfiles[] =
    "4000 1\r\n4002 1\r\n4002 3\r\n4001 1\r\n4003 3\r\n4004 0\r\n4005 1\r\n4006 5\r\n4001 2\r\n"
    "4003 0\r\n4016 0\r\n";

/// Four channels on hostile lines; `how` chooses the protocol, whether they share a port, and how
/// replies end.
inline std::string hostile_configuration(unsigned how) {
    std::string ini = "[COMMS CONTROLS]\r\nDEFAULT PROTOCOL=" + std::to_string(how % 4) + "\r\n";
    for (int n = 0; n < 4; ++n) {
        const std::string device = "DEVICE " + std::to_string(n);
        const int port = (how & 0x10U) != 0 ? 1 : n + 1;
        ini += device + " COMM PORT =" + std::to_string(port) + "\r\n" + device +
               " PORT SETTING =" + (n == 2 ? "19200" : "9600") + ",N,8,1\r\n" + device +
               " RTS Mode =" + std::to_string(n + 1) + "\r\n";
        if ((how & 0x20U) != 0) ini += device + " EXCHANGE=COMPLETE\r\n";
    }
    return ini + "[SERIAL DEVICES]\r\nPORT 1=hostile\r\nPORT 2=hostile\r\nPORT 3=hostile\r\n"
                 "PORT 4=hostile\r\n";
}

inline const std::string& working_directory() {
    static const testing::TempDir dir;
    static const int moved = ::chdir(dir.path().c_str());
    require(moved == 0, "there is a working directory");
    return dir.path();
}

/// Empties it and puts small files of every kind there. The run says how the lines are configured,
/// and into which file somebody has written something.
inline void fill_working_directory(Input& input) {
    namespace fs = std::filesystem;
    const std::string& directory = working_directory();
    for (const auto& entry : fs::directory_iterator(directory))
        fs::remove_all(entry.path());
    fs::create_directory(directory + "/Download Sequences");
    const auto write = [&](const std::string& name, std::string_view bytes) {
        testing::write_file(directory + "/" + name, std::string(bytes));
    };
    static const std::string kPds =
        testing::read_file(PELVAN_SAMPLES "/Download Sequences/742.pds");
    write("Download Sequences/742.pds", kPds);
    write("Download Sequences/742.cds",
          "YES\r\n4000\r\n4002\r\n4040\r\n300\r\n319\r\n500\r\n501\r\n25\r\n");
    write("set.PV5", kWorkingSet);
    write("setup.txt", kWorkingSetup);
    write("profiles.txt", kWorkingProfiles);
    write("script.txt", "300 5\r\n? SP1\r\n319 x\r\n");
    const unsigned how = input.byte();
    write("pelvan7.ini", hostile_configuration(how));
    if ((how & 0xC0U) != 0xC0U) return;
    constexpr const char* kChanged[] = {"pelvan7.ini",
                                        "set.PV5",
                                        "setup.txt",
                                        "profiles.txt",
                                        "script.txt",
                                        "Download Sequences/742.cds",
                                        "Download Sequences/742.pds"};
    const std::string name = kChanged[input.below(std::size(kChanged))];
    std::string bytes = testing::read_file(directory + "/" + name);
    const std::size_t at = std::min<std::size_t>(input.byte() * 2, bytes.size());
    const std::size_t instead_of = input.byte();
    std::string typed(input.piece());
    std::replace(typed.begin(), typed.end(), '/', '-'); // no path leads out of the directory
    write(name, bytes.replace(at, instead_of, typed));
}

} // namespace pelvan::fuzz
