#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux_serial_devices.h"
#include "support/pty_pair.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;
using testing::PtyPair;

/// Trees below a directory of their own that look like /dev and /sys.
class SerialDevicesTest : public ::testing::Test {
  protected:
    SerialDevicesTest() : roots{directory.file("dev"), directory.file("sys")} {
        fs::create_directories(roots.dev + "/serial/by-id");
        fs::create_directories(roots.sys + "/class/tty");
    }
    void add_tty(const std::string& name) const {
        testing::write_file(roots.dev + "/" + name, "");
        fs::create_directories(roots.sys + "/class/tty/" + name);
    }

    testing::TempDir directory;
    DeviceRoots roots;
};

TEST_F(SerialDevicesTest, ListsWhatHasHardwareBehindIt) {
    for (const std::string name : {"ttyS0", "ttyS1", "ttyS10", "ttyS2", "ttyS16"}) {
        add_tty(name);
        testing::write_file(roots.sys + "/class/tty/" + name + "/type",
                            name == "ttyS1" ? "0\n" : "4\n");
    }
    for (const char* name : {"ttyUSB0", "tty1", "ttyUSBx"})
        add_tty(name);
    const std::string usb = roots.sys + "/devices/usb1/1-1/";
    fs::create_directories(usb + "1-1:1.0");
    testing::write_file(usb + "manufacturer", "Cable Works\n");
    testing::write_file(usb + "product", "Adapter\n");
    fs::create_directory_symlink(usb + "1-1:1.0", roots.sys + "/class/tty/ttyUSB0/device");
    fs::create_directories(roots.sys + "/class/tty/ttyUSB7"); // without a node
    fs::create_symlink("../../ttyUSB0", roots.dev + "/serial/by-id/usb-Adapter-port0");
    fs::create_symlink("../../ttyUSB9", roots.dev + "/serial/by-id/dangling");

    std::string listed;
    for (const SerialDevice& device : list_serial_devices(roots))
        listed += device.path.substr(roots.dev.size()) + "=" +
                  device.node.substr(roots.dev.size()) + " " + device.description + ";";
    EXPECT_EQ(listed, "/serial/by-id/usb-Adapter-port0=/ttyUSB0 Cable Works Adapter;"
                      "/ttyS0=/ttyS0 ;/ttyS2=/ttyS2 ;/ttyS10=/ttyS10 ;/ttyS16=/ttyS16 ;");
    EXPECT_TRUE(list_serial_devices({"/nowhere", "/nowhere"}).empty());

    EXPECT_EQ(built_in_device(1, roots), roots.dev + "/ttyS0");
    EXPECT_EQ(built_in_device(11, roots), roots.dev + "/ttyS10");
    for (const int number : {-1, 0, 2, 4, 17})
        EXPECT_FALSE(built_in_device(number, roots)) << number;
}

TEST_F(SerialDevicesTest, ProbesWithoutOpening) {
    add_tty("file");
    const PtyPair pty;
    EXPECT_EQ(probe_device(roots.dev + "/missing", roots), DeviceState::Missing);
    EXPECT_EQ(probe_device(roots.dev + "/file", roots), DeviceState::NotSerial);
    EXPECT_EQ(probe_device(pty.path(), roots), DeviceState::Openable);

    // /dev/null (1:3) stands for a port: what it is, is told by the tree alone.
    const std::string entry = roots.sys + "/dev/char/1:3";
    fs::create_directories(entry);
    fs::create_directories(roots.sys + "/class/mem");
    fs::create_directory_symlink(roots.sys + "/class/mem", entry + "/subsystem");
    EXPECT_EQ(probe_device("/dev/null", roots), DeviceState::NotSerial);
    fs::remove(entry + "/subsystem");
    fs::create_directory_symlink(roots.sys + "/class/tty", entry + "/subsystem");
    testing::write_file(entry + "/type", "0\n");
    EXPECT_EQ(probe_device("/dev/null", roots), DeviceState::NoHardware);
    testing::write_file(entry + "/type", "4\n");
    EXPECT_EQ(probe_device("/dev/null", roots), DeviceState::Openable);
}

TEST_F(SerialDevicesTest, NamesTheGroupToJoin) {
    add_tty("port");
    const std::string path = roots.dev + "/port";
    EXPECT_EQ(device_state_text(DeviceState::Missing, path), "not there");
    if (::geteuid() != 0 || ::chown(path.c_str(), 0, 20) != 0)
        GTEST_SKIP() << "only root may give a file to group dialout";
    ASSERT_EQ(::chmod(path.c_str(), 0660), 0);
    EXPECT_EQ(device_state_text(DeviceState::NoPermission, path),
              "no permission: join group dialout");
    ASSERT_EQ(::chmod(path.c_str(), 0600), 0);
    EXPECT_EQ(device_state_text(DeviceState::NoPermission, path), "no permission");
}

} // namespace
} // namespace pelvan
