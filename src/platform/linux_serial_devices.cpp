#include "platform/linux_serial_devices.h"

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <limits>
#include <map>
#include <tuple>

#include "platform/serial_port.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace pelvan {
namespace {

namespace fs = std::filesystem;

const std::string kBuiltInName = "ttyS";

std::string first_line(const fs::path& file) {
    std::string line;
    std::ifstream in(file);
    std::getline(in, line);
    return trim(line);
}

/// Type 0 is a node that the kernel keeps ready without a port behind it.
bool has_uart(const std::string& type) {
    return !type.empty() && type != "0";
}

/// The number behind the prefix, -1 when the name is not built like that.
int number_after(const std::string& prefix, const std::string& name) {
    if (!name.starts_with(prefix)) return -1;
    const auto digits = std::string_view(name).substr(prefix.size());
    return static_cast<int>(whole_number(digits, 0, std::numeric_limits<int>::max()).value_or(-1));
}

/// Entries of a directory; none where it cannot be read.
std::vector<fs::path> entries_of(const fs::path& directory) {
    std::vector<fs::path> entries;
    std::error_code error;
    for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error))
        entries.push_back(it->path());
    std::sort(entries.begin(), entries.end());
    return entries;
}

/// Maker and product of the USB device that the tty belongs to, some levels above its interface.
std::string usb_description(const fs::path& tty) {
    std::error_code error;
    fs::path place = fs::canonical(tty / "device", error);
    for (int level = 0; level < 4 && !error; ++level, place = place.parent_path()) {
        const std::string product = first_line(place / "product");
        if (!product.empty()) return trim(first_line(place / "manufacturer") + " " + product);
    }
    return {};
}

std::string uart_description(const fs::path& tty) {
    const std::string address = first_line(tty / "port");
    const std::string interrupt = first_line(tty / "irq");
    if (address.empty() || interrupt.empty()) return {};
    return "built in, address " + address + ", interrupt " + interrupt;
}

/// Links of the by-id directory by the name of the node that they lead to.
std::map<std::string, std::string> by_id_links(const DeviceRoots& roots) {
    std::map<std::string, std::string> links;
    for (const fs::path& link : entries_of(fs::path(roots.dev) / "serial/by-id")) {
        std::error_code error;
        const fs::path node = fs::canonical(link, error);
        if (!error) links.emplace(node.filename().string(), link.string());
    }
    return links;
}

bool is_listed(const fs::path& tty) {
    const std::string name = tty.filename().string();
    if (number_after(kBuiltInName, name) >= 0) return has_uart(first_line(tty / "type"));
    return number_after("ttyUSB", name) >= 0 || number_after("ttyACM", name) >= 0;
}

/// By-id links first, then the nodes by kind and number.
bool stands_before(const SerialDevice& left, const SerialDevice& right) {
    const auto rank = [](const SerialDevice& device) {
        const std::size_t digits = device.path.find_last_not_of("0123456789") + 1;
        const bool is_node = device.path == device.node;
        return std::make_tuple(is_node, is_node ? device.path.substr(0, digits) : device.path,
                               is_node ? device.path.size() : 0, device.path);
    };
    return rank(left) < rank(right);
}

} // namespace

std::vector<SerialDevice> list_serial_devices(const DeviceRoots& roots) {
    std::vector<SerialDevice> devices;
    const auto links = by_id_links(roots);
    for (const fs::path& tty : entries_of(fs::path(roots.sys) / "class/tty")) {
        const std::string name = tty.filename().string();
        SerialDevice device;
        device.node = (fs::path(roots.dev) / name).string();
        std::error_code error;
        if (!is_listed(tty) || !fs::exists(device.node, error)) continue;
        const auto link = links.find(name);
        device.path = link == links.end() ? device.node : link->second;
        device.built_in = number_after(kBuiltInName, name) >= 0;
        device.description = device.built_in ? uart_description(tty) : usb_description(tty);
        devices.push_back(std::move(device));
    }
    std::sort(devices.begin(), devices.end(), stands_before);
    return devices;
}

DeviceState probe_device(const std::string& path, const DeviceRoots& roots) {
    struct stat node {};
    if (::stat(path.c_str(), &node) < 0)
        return errno == EACCES ? DeviceState::NoPermission : DeviceState::Missing;
    if (!S_ISCHR(node.st_mode)) return DeviceState::NotSerial;

    // Pseudo-terminals have no entry here; they count as what they say they are.
    const fs::path entry =
        fs::path(roots.sys) / "dev/char" /
        (std::to_string(major(node.st_rdev)) + ":" + std::to_string(minor(node.st_rdev)));
    std::error_code error;
    const fs::path subsystem = fs::canonical(entry / "subsystem", error);
    if (!error && subsystem.filename() != "tty") return DeviceState::NotSerial;
    if (first_line(entry / "type") == "0") return DeviceState::NoHardware;
    if (::faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) != 0)
        return DeviceState::NoPermission;
    return DeviceState::Openable;
}

std::optional<std::string> built_in_device(int number, const DeviceRoots& roots) {
    if (!is_port_number(number)) return {};
    const std::string name = kBuiltInName + std::to_string(number - 1);
    if (!has_uart(first_line(fs::path(roots.sys) / "class/tty" / name / "type"))) return {};
    return (fs::path(roots.dev) / name).string();
}

std::optional<int> latency_timer_ms(const std::string& path, const DeviceRoots& roots) {
    constexpr int kLongest = 255;
    std::error_code error;
    const fs::path node = fs::canonical(path, error);
    if (error) return {};
    const fs::path tty = fs::path(roots.sys) / "class/tty" / node.filename();
    const auto ms = whole_number(first_line(tty / "device/latency_timer"), 0, kLongest);
    return ms ? std::optional(static_cast<int>(*ms)) : std::nullopt;
}

std::optional<int> latency_timer_ms(const std::string& path) {
    return latency_timer_ms(path, DeviceRoots{});
}

std::vector<SerialDevice> list_serial_devices() {
    return list_serial_devices(DeviceRoots{});
}

DeviceState probe_device(const std::string& path) {
    return probe_device(path, DeviceRoots{});
}

std::optional<std::string> built_in_device(int number) {
    return built_in_device(number, DeviceRoots{});
}

std::string joining_text(const std::string& path) {
    struct stat node {};
    if (::stat(path.c_str(), &node) < 0 || (node.st_mode & 060) != 060 || node.st_gid == 0)
        return {};
    const group* const owner = ::getgrgid(node.st_gid);
    if (owner == nullptr) return {};
    const std::string name = owner->gr_name;
    const passwd* const person = ::getpwuid(::geteuid());
    const std::string who = person != nullptr ? person->pw_name : "$USER";
    return "join group " + name + " (sudo usermod -aG " + name + " " + who + "), then log in again";
}

bool same_device(const std::string& one, const std::string& other) {
    std::error_code error;
    return one == other || fs::equivalent(one, other, error);
}

bool is_open_on(int handle, const std::string& path) {
    struct stat open {};
    struct stat node {};
    return ::fstat(handle, &open) == 0 && ::stat(path.c_str(), &node) == 0 &&
           S_ISCHR(open.st_mode) && S_ISCHR(node.st_mode) && open.st_rdev == node.st_rdev;
}

std::string device_state_text(DeviceState state, const std::string& path) {
    switch (state) {
    case DeviceState::Openable:
        return "may be opened";
    case DeviceState::Missing:
        return "not there";
    case DeviceState::NoHardware:
        return "no hardware behind it";
    case DeviceState::NotSerial:
        return "not a serial device";
    case DeviceState::NoPermission:
        break;
    }
    const std::string joining = joining_text(path);
    return joining.empty() ? "no permission" : "no permission: " + joining;
}

} // namespace pelvan
