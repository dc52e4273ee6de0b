// Ports over the network against a server that others wrote, with a pseudo-terminal behind it and
// the simulated controller behind that.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>

#include <future>

#include "network/network_rig.h"
#include "network/tcp_server.h"
#include "simulator/line/pty_server.h"
#include "support/frames.h"
#include "support/temp_dir.h"

using namespace pelvan;
using namespace pelvan::testing;

namespace {

class Ser2net : public ::testing::Test {
  protected:
    void SetUp() override {
        std::promise<void> ready;
        controller_ = std::async(std::launch::async, [this, &ready] {
            simulator::serve_on_pty({*simulator::parse_simulated_device("simulated:742"), link_},
                                    stop_, [&ready](const std::string&) { ready.set_value(); });
        });
        ready.get_future().wait();
        begin_server();
    }
    void TearDown() override {
        end_server();
        stop_ = true;
    }

    void begin_server() {
        const std::string connector = "\n  connector: serialdev," + link_ +
                                      ",9600n81,local\n  options:\n    kickolduser: false\n";
        write_file(dir_.file("ser2net.yaml"),
                   "connection: &far\n  accepter: telnet(rfc2217),tcp,127.0.0.1," +
                       std::to_string(far_) + connector +
                       "connection: &plain\n  accepter: tcp,127.0.0.1," + std::to_string(plain_) +
                       connector);
        const std::string file = dir_.file("ser2net.yaml");
        server_ = ::fork();
        if (server_ == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            const int nowhere = ::open("/dev/null", O_RDWR);
            ::dup2(nowhere, 1);
            ::dup2(nowhere, 2); // it complains about what this machine lacks for announcing it
            ::execl(PELVAN_SER2NET, "ser2net", "-n", "-u", "-c", file.c_str(), nullptr);
            ::_exit(127);
        }
    }
    void end_server() {
        if (server_ > 0) ::kill(server_, SIGKILL);
        ::waitpid(std::exchange(server_, 0), nullptr, 0);
    }
    /// Opens while the server is still starting, too.
    static int open(NetworkRig& rig) {
        const double end = rig.tick->precise_ms() + 5000;
        int error = rig.open();
        while (error == 8010 && rig.tick->precise_ms() < end)
            error = rig.open();
        return error;
    }
    [[nodiscard]] std::string device(const std::string& scheme) const {
        return scheme + "://127.0.0.1:" + std::to_string(scheme == "tcp" ? plain_ : far_);
    }
    /// What the port behind the server is set to.
    [[nodiscard]] termios settings() const {
        termios found{};
        const int port = ::open(link_.c_str(), O_RDWR | O_NOCTTY);
        ::tcgetattr(port, &found);
        ::close(port);
        return found;
    }

    const TempDir dir_;
    const std::string link_ = dir_.file("port");
    const int far_ = Listener().port();
    const int plain_ = Listener().port();
    const std::string request_ = frame("01 03 00 00 00 01");
    const std::string reply_ = frame("01 03 02 02 E6"); // model 742
    std::atomic<bool> stop_{false};
    std::future<void> controller_; // waits for its thread when it goes
    pid_t server_ = 0;
};

} // namespace

TEST_F(Ser2net, BothWaysReachTheControllerAndRfc2217SetsItsPort) {
    {
        NetworkRig rig(device("tcp"));
        rig.port.set_Settings("19200,E,7,2"); // stays here
        ASSERT_EQ(open(rig), 0) << rig.lines.trouble(rig.device);
        EXPECT_EQ(rig.exchange(request_, reply_.size()), reply_);
        EXPECT_EQ(::cfgetospeed(std::make_unique<termios>(settings()).get()), B9600);
    }
    for (const char* format : {"19200,N,8,1", "4800,O,7,2"}) {
        NetworkRig rig(device("rfc2217"));
        rig.port.set_Settings(format);
        ASSERT_EQ(open(rig), 0) << rig.lines.trouble(rig.device);
        const termios far = settings();
        const bool first = format[0] == '1';
        EXPECT_EQ(::cfgetospeed(&far), first ? B19200 : B4800);
        if (first) {
            EXPECT_EQ(rig.exchange(request_, reply_.size()), reply_);
        } else {
            EXPECT_NE(far.c_cflag & CSTOPB, 0U);
        }
        EXPECT_EQ(rig.port.line_errors(), LineErrors{});
    }
}

TEST_F(Ser2net, AServerThatIsTakenIsNotAvailableAndOneThatStartsAgainIsUsedAgain) {
    NetworkRig first(device("rfc2217"));
    ASSERT_EQ(open(first), 0);
    NetworkRig second(device("rfc2217"));
    EXPECT_EQ(second.open(), 8010);
    EXPECT_NE(second.lines.trouble(second.device).find("another client"), std::string::npos)
        << second.lines.trouble(second.device);
    end_server();
    while (!first.port.lost())
        std::this_thread::yield();
    first.port.set_PortOpen(false);
    EXPECT_EQ(first.open(), 8010);
    begin_server();
    ASSERT_EQ(open(first), 0);
    EXPECT_EQ(first.exchange(request_, reply_.size()), reply_);
}
