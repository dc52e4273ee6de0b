#include "config/application_directory.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/run_time_error.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

namespace fs = std::filesystem;

/// A package under "usr", a portable folder "opt", a person under "home".
class ApplicationDirectoryTest : public ::testing::Test {
  protected:
    ApplicationDirectoryTest() {
        for (const char* folder : {"usr/bin", "usr/share/pelvan7/help", "opt/help", "home"})
            fs::create_directories(root_.file(folder));
        fs::create_directories(root_.file("usr/share/pelvan7/samples/Download Sequences"));
        write("usr/share/pelvan7/samples/pelvan7.ini", "sample");
        write("usr/share/pelvan7/samples/simulated-742.PV5", "set");
        write("usr/share/pelvan7/samples/Download Sequences/742.cds", "sequence");
        fs::permissions(root_.file("usr/share/pelvan7/samples/simulated-742.PV5"),
                        fs::perms::owner_read);
    }
    ~ApplicationDirectoryTest() override {
        fs::permissions(root_.file("opt"), fs::perms::owner_all);
    }

    void write(const std::string& name, const std::string& text) {
        write_file(root_.file(name), text);
    }
    std::string read(const std::string& name) { return read_file(root_.file(name)); }
    void make_read_only(const std::string& name) {
        fs::permissions(root_.file(name), fs::perms::owner_read | fs::perms::owner_exec);
    }
    /// The chosen directory below the root, its reason, and its notes, a line each.
    std::string choose(const std::string& program, const std::string& variable = {},
                       const std::string& home = "home", const std::string& data = {}) {
        const auto below = [this](const std::string& name) {
            return name.empty() ? name : root_.file(name);
        };
        const ApplicationDirectory chosen = choose_application_directory(
            {find_installation(root_.file(program)), below(variable), below(home), below(data)});
        std::string text = chosen.path + ": " + chosen.reason;
        for (const std::string& note : chosen.notes)
            text += "\n" + note;
        for (std::size_t at; (at = text.find(root_.path() + "/")) != std::string::npos;)
            text.erase(at, root_.path().size() + 1);
        return text;
    }

    TempDir root_;
};

TEST_F(ApplicationDirectoryTest, AVariableWinsAndItsMistakesAreToldAndNotWorkedAround) {
    EXPECT_EQ(choose("opt", "home"), "home: PELVAN_DIRECTORY names it");
    write("opt/pelvan7.ini", "old");
    fs::create_directories(root_.file("home/.local/share/pelvan7"));
    write("home/.local/share/pelvan7/pelvan7.ini", "mine");
    const std::string unused = "\nThe configuration in home/.local/share/pelvan7 is not used.";
    EXPECT_EQ(choose("opt", "opt"), "opt: PELVAN_DIRECTORY names it" + unused);
    EXPECT_EQ(choose("opt", "home"), "home: PELVAN_DIRECTORY names it\n"
                                     "The configuration in opt is not used." +
                                         unused);
    for (const char* wrong : {"nowhere", "usr/share/pelvan7/samples/pelvan7.ini"})
        EXPECT_THROW(choose("opt", wrong), RunTimeError) << wrong;
    EXPECT_FALSE(fs::exists(root_.file("nowhere")));
}

TEST_F(ApplicationDirectoryTest, WhatMayNotBeReadOrWrittenIsSaid) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root may be somebody else for a moment";
    const std::string file = root_.file("home/pelvan7.ini");
    testing::write_file(file, "[COMMS CONTROLS]\r\n");
    fs::permissions(file, fs::perms::owner_read);
    ASSERT_EQ(::setresuid(65534, 0, 0), 0); // asks for the rights of the real user
    const std::string chosen = choose("opt", "home");
    ASSERT_EQ(::setresuid(0, 0, 0), 0);
    EXPECT_EQ(chosen, "home: PELVAN_DIRECTORY names it\n"
                      "home/pelvan7.ini may not be read: it counts as empty.\n"
                      "Nothing can be saved in home.");
}

TEST_F(ApplicationDirectoryTest, APortableFolderIsItsOwnDirectoryWhileItMayBeWritten) {
    EXPECT_EQ(choose("opt"), "opt: the program's own folder");
    fs::create_directories(root_.file("home/.local/share/pelvan7"));
    write("home/.local/share/pelvan7/pelvan7.ini", "mine");
    EXPECT_EQ(choose("opt"), "opt: the program's own folder\n"
                             "The configuration in home/.local/share/pelvan7 is not used.");
}

TEST_F(ApplicationDirectoryTest, APackageFillsThePersonsFolderOnceAndNeverTouchesItAgain) {
    EXPECT_EQ(choose("usr/bin"), "home/.local/share/pelvan7: the folder of your data\n"
                                 "Made and filled with the sample files.");
    const std::string folder = "home/.local/share/pelvan7/";
    EXPECT_EQ(read(folder + "Download Sequences/742.cds"), "sequence");
    EXPECT_EQ(read(folder + "pelvan7.ini.sample"), "sample");
    EXPECT_FALSE(fs::exists(root_.file(folder + "pelvan7.ini")));
    EXPECT_TRUE(fs::is_directory(root_.file(folder + "Reg Downloads")));
    const auto mode = fs::status(root_.file(folder + "simulated-742.PV5")).permissions();
    EXPECT_NE(mode & fs::perms::owner_write, fs::perms::none);

    write(folder + "simulated-742.PV5", "edited");
    EXPECT_EQ(choose("usr/bin"), "home/.local/share/pelvan7: the folder of your data");
    EXPECT_EQ(read(folder + "simulated-742.PV5"), "edited");
    EXPECT_EQ(choose("usr/bin", "", "home", "elsewhere").substr(0, 18), "elsewhere/pelvan7:");
}

TEST_F(ApplicationDirectoryTest, AnOldConfigurationBesideAReadOnlyProgramMovesAndIsNotLost) {
    write("opt/pelvan7.ini", "old");
    write("opt/oven.pv5", "old set");
    fs::create_directories(root_.file("opt/Reg Downloads"));
    write("opt/Reg Downloads/oven.txt", "setup");
    make_read_only("opt");
    const std::string chosen =
        "home/.local/share/pelvan7: the program's own folder cannot be written\n";
    EXPECT_EQ(choose("opt"),
              chosen + "Made and filled with the files that lie beside the program.");
    const std::string folder = "home/.local/share/pelvan7/";
    EXPECT_EQ(read(folder + "pelvan7.ini") + read(folder + "oven.pv5") +
                  read(folder + "Reg Downloads/oven.txt"),
              "oldold setsetup");
    EXPECT_EQ(choose("opt"), chosen + "The configuration in opt is not used.");
}

TEST_F(ApplicationDirectoryTest, WithoutAFolderForThePersonTheSamplesAreReadAndThatIsSaid) {
    write("file", "");
    for (const auto& [home, cause] : {std::pair{"", "HOME names no directory"},
                                      {"file", "file/.local/share/pelvan7: Not a directory"}})
        EXPECT_EQ(choose("usr/bin", "", home),
                  "usr/share/pelvan7/samples: no other directory can be written\n"
                  "Nothing can be saved here (" +
                      std::string(cause) + "): name another directory with --directory.");
}

TEST_F(ApplicationDirectoryTest, AFolderThatCannotBeFilledIsNotLeftHalfFilled) {
    fs::create_symlink("nowhere", root_.file("usr/share/pelvan7/samples/Download Sequences/x.cds"));
    EXPECT_NE(choose("usr/bin").find("Nothing can be saved here"), std::string::npos);
    EXPECT_TRUE(fs::is_empty(root_.file("home/.local/share")));
}

} // namespace pelvan::testing
