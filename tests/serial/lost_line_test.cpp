// A line that is pulled and plugged in again, over real pseudo-terminals: what the next command
// says of it, and what is shown of it meanwhile.
#include <gtest/gtest.h>

#include <filesystem>

#include "config/device_map.h"
#include "platform/adapter_follower.h"
#include "platform/line_port.h"
#include "platform/serial_devices.h"
#include "serial/line_status.h"
#include "support/cases.h"
#include "support/pty_pair.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

/// Channel 0 on port 1, which stands for a link to the wire's end; channel 1 on port 2, which
/// stands for nothing; channels 2 and 3 on port 1 with the same settings and with others.
struct LostLineTest : ::testing::Test, SerialRig {
    LostLineTest() {
        make_port = [this] {
            return std::make_unique<LinePort>(
                [this](int port) { return device_for_port(port, config.gIniFile); },
                open_serial_device);
        };
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1", "1;9600,N,8,1;1", "1;4800,N,8,1;1"});
        ini_write_string("SERIAL DEVICES", "PORT 1", adapter, config.gIniFile);
        rebuild();
        plug_in();
    }
    void plug_in() {
        wire.emplace(PtyPair::Slave::KeepOpen);
        std::filesystem::create_symlink(wire->path(), adapter);
    }
    void pull() {
        wire.reset();
        std::filesystem::remove(adapter);
    }
    /// What is said when a command is sent, and what of it reaches the far end.
    Texts send() {
        dialogs.shown.clear();
        EXPECT_EQ(link.transmit(0, "ask", 20, 8), "");
        arrived = wire ? wire->receive(3, dialogs.shown.empty() ? 5000 : 0) : "";
        return dialogs.texts();
    }
    static std::string trouble_of(const std::string& device) {
        const DeviceState found = probe_device(device);
        return found == DeviceState::Openable ? "" : device_state_text(found, device);
    }
    std::string shown(int channel = 0) { return line_text("Full", observer.look(channel)); }

    const std::string adapter = dir.file("adapter");
    std::optional<PtyPair> wire;
    std::string arrived;
    LineObserver observer{table, config, trouble_of};
    const std::string line = "Full | Port 1 | " + device_name(adapter) + " | 9600,N,8,1 | ";
};

TEST_F(LostLineTest, TheNextCommandSaysThatTheDeviceIsGoneOrUsesTheOneThatCameBack) {
    int outages = 0;
    const Subscription back = link.device_back.subscribe([&](const Outage&) { ++outages; });
    EXPECT_EQ(send(), Texts{});
    EXPECT_EQ(arrived, "ask");
    pull();
    const std::string closed = "COMM ERROR NUMBER: 8018.  CHECK PORT/SETTINGS";
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(send(), (Texts{"ERROR READING COMM DEVICE", closed, closed, closed}));
        tick.advance(32500);
    }
    // Back after a failure, which is said once, and between two commands.
    for (const char* remark : {"The device was gone for 1 min 5 s.", ""}) {
        plug_in();
        EXPECT_EQ(link.take_remark(), "");
        EXPECT_EQ(send(), Texts{});
        EXPECT_EQ(arrived, "ask");
        EXPECT_EQ(link.take_remark(), remark);
        pull();
    }
    EXPECT_EQ(outages, 1);
    pull();
    send();
    plug_in();
    send();
    EXPECT_EQ(link.take_remark(), "The device was lost and opened again.");
}

TEST_F(LostLineTest, APortThatOpensLaterIsSaidToBeThereUnlessItWasSetUpAnew) {
    for (const bool set_up_anew : {false, true}) {
        pull();
        rebuild();
        Link other(table, countdowns, dialogs, log);
        const auto send_by_other = [&] { other.transmit(0, "ask", 20, 8); };
        send_by_other();
        tick.advance(12000);
        send_by_other();
        plug_in();
        if (set_up_anew) rebuild();
        send_by_other();
        EXPECT_EQ(other.take_remark(),
                  set_up_anew ? "" : "The port could not be opened for 12 s; it is open now.");
    }
}

// Nodes are links here, too: what they lead to is another pseudo-terminal each time.
TEST(AdapterFollowerTest, FindsAnAdapterByItsNameUnderAnotherNode) {
    namespace fs = std::filesystem;
    const TempDir dir;
    const std::string by_id = dir.file("by-id");
    fs::create_directory(by_id);
    const PtyPair one, other;
    const std::string one_id = by_id + "/usb-maker-1", other_id = by_id + "/usb-maker-2";
    const std::string usb0 = dir.file("ttyUSB0"), usb1 = dir.file("ttyUSB1");
    const auto plug = [](const PtyPair& adapter, const std::string& node, const std::string& id) {
        for (const std::string& name : {node, id})
            fs::create_symlink(adapter.path(), name);
    };
    const auto pull = [](const std::string& node, const std::string& id) {
        fs::remove(node);
        fs::remove(id);
    };
    AdapterFollower follower(by_id);
    follower.opened(usb0); // not there
    EXPECT_EQ(follower.path_of(usb0), usb0);
    plug(one, usb0, one_id);
    follower.opened(usb0);
    EXPECT_EQ(follower.path_of(usb0), one_id);
    pull(usb0, one_id);
    EXPECT_EQ(follower.path_of(usb0), one_id) << "also while it is away";
    plug(other, usb0, other_id);
    plug(one, usb1, one_id);
    EXPECT_EQ(follower.path_of(usb0), one_id);
    follower.opened(usb0);
    EXPECT_EQ(follower.path_of(usb0), one_id);
    EXPECT_EQ(follower.another_at(usb0), "");
    pull(usb1, one_id);
    EXPECT_EQ(follower.path_of(usb0), one_id) << "never the other adapter in its place";
    EXPECT_EQ(follower.another_at(usb0), other_id);
    follower.forget(usb0);
    EXPECT_EQ(follower.path_of(usb0), usb0) << "unless somebody wants it";
    EXPECT_EQ(follower.another_at(usb0), "");
    for (const std::string& unnamed : {other_id, std::string("simulated:742")}) {
        follower.opened(unnamed);
        EXPECT_EQ(follower.path_of(unnamed), unnamed);
    }
    EXPECT_EQ(AdapterFollower(dir.file("none")).path_of(usb0), usb0);
}

TEST_F(LostLineTest, WhatIsShownFollowsThePlugAndTheAssignmentAndGivesUpALostLine) {
    EXPECT_EQ(shown(), line + "closed");
    send();
    EXPECT_EQ(shown(), line + "open");
    wire->send("late");
    EXPECT_EQ(shown(), line + "open");
    EXPECT_EQ(state.gCommDevice[0]->Input(), "late") << "looking takes no bytes away";
    pull();
    EXPECT_EQ(shown(), line + "not there");
    EXPECT_EQ(state.gCommDevice[0]->CommID(), -1);
    plug_in();
    EXPECT_EQ(shown(), line + "closed");
    send();
    EXPECT_EQ(shown(), line + "open");
    ini_write_string("SERIAL DEVICES", "PORT 1", "/dev/null", config.gIniFile);
    rebuild();
    EXPECT_EQ(shown(), "Full | Port 1 | null | 9600,N,8,1 | not a serial device");
}

TEST_F(LostLineTest, EachStateAndSharedPortsAreTold) {
    send(); // through channel 0
    EXPECT_EQ(shown(2), line + "open") << "the same port with the same settings";
    EXPECT_TRUE(shown(3).ends_with("4800,N,8,1 | closed"));
    EXPECT_EQ(shown(1), "Full | Port 2 stands for no device: F9 sets it up");
    EXPECT_EQ(shown(4), "No port for Full: F9 sets it up");
    Link logging(table, countdowns, dialogs, log, "Data Logging");
    const LineClaim claim = logging.claim();
    EXPECT_EQ(shown(), line + "open | in use by Data Logging");
    for (const auto& [device, name] :
         cases("/dev/ttyUSB0->ttyUSB0|simulated:742->simulated:742|/tmp/line->/tmp/line|"
               "/dev/serial/by-id/usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0->"
               "usb-FTDI_FT232R_USB_UART_A50285BI-if00-port0|"
               "/dev/serial/by-id/usb-A_maker_of_long_names_Serial_Converter_0001-if00-port0->"
               "usb-A_maker_of_long_na...verter_0001-if00-port0"))
        EXPECT_EQ(device_name(device), name);
}

} // namespace pelvan::testing
