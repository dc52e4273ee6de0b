#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "support/fake_time.h"
#include "support/temp_dir.h"
#include "terminal/terminal.h"

namespace pelvan {
namespace {

using Arguments = std::vector<std::string>;

/// Every run has a simulated controller of its own, as it came from the factory.
class TransferCommand : public ::testing::Test {
  protected:
    TransferCommand() {
        tick.step_ms = 0.5;
        std::filesystem::create_directory(dir.file("Reg Downloads"));
        std::filesystem::copy(std::string(PELVAN_SAMPLES) + "/Download Sequences",
                              dir.file("Download Sequences"));
    }
    int run(const Arguments& arguments, const std::string& device = "simulated:742") {
        testing::write_file(dir.file("pelvan7.ini"),
                            "[COMMS CONTROLS]\r\n"
                            "DEVICE 0 COMM PORT=1\r\nDEVICE 0 PORT SETTING=9600,N,8,1\r\n"
                            "DEVICE 1 COMM PORT=2\r\nDEVICE 1 PORT SETTING=9600,N,8,1\r\n"
                            "[SERIAL DEVICES]\r\nPORT 2=" +
                                device + "\r\n");
        out.str("");
        err.str("");
        TerminalEnvironment environment{out,        err, tick, clock, open_serial_device,
                                        dir.path(), stop};
        return run_terminal(arguments, environment).value_or(-1);
    }
    [[nodiscard]] bool told(const std::string& text) const {
        return err.str().find(text) != std::string::npos;
    }

    testing::TempDir dir;
    testing::FakeTick tick;
    testing::FakeClock clock;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
};

TEST_F(TransferCommand, SavesComparesAndRestores) {
    const std::string file = dir.file("setup.txt");
    EXPECT_EQ(run({"save", file}), exit_code::kDone) << err.str();
    EXPECT_TRUE(told("pelvan7: 50 %\n"));
    EXPECT_TRUE(testing::read_file(file).ends_with("25 0\r\n"));
    EXPECT_EQ(run({"compare", file}), exit_code::kDone) << err.str();
    EXPECT_EQ(run({"restore", file, "--yes", "--compare"}), exit_code::kDone) << err.str();

    std::string text = testing::read_file(file);
    text.replace(text.find("\r\n1500 -15\r\n"), 12, "\r\n1500 -9999\r\n");
    testing::write_file(file, text);
    EXPECT_EQ(run({"compare", file}), exit_code::kFailed);
    EXPECT_TRUE(told("Controller holds: -15               1500           -9999    Different"));
    EXPECT_EQ(run({"restore", file, "--yes"}), exit_code::kFailed) << "beyond the limits";
    EXPECT_TRUE(told("1500           -9999    Error"));
}

TEST_F(TransferCommand, NothingHappensWithoutTheAnswerThatItNeeds) {
    const std::string file = dir.file("setup.txt");
    testing::write_file(file, "old");
    EXPECT_EQ(run({"save", file}), exit_code::kFailed);
    EXPECT_EQ(testing::read_file(file), "old");
    EXPECT_EQ(run({"restore", file}), exit_code::kFailed);
    EXPECT_TRUE(told("Upload Canceled!"));
    EXPECT_EQ(run({"restore", dir.file("none.txt"), "--yes"}), exit_code::kBadOption);
    EXPECT_EQ(run({"save", file, "--address", "0"}), exit_code::kBadOption);
    EXPECT_EQ(run({"save", file, "--address", "9", "--retries", "2"}), exit_code::kFailed);
    EXPECT_TRUE(told("Need to check Comm Port Settings."));
}

TEST_F(TransferCommand, AnInterruptEndsAsACancel) {
    stop = true;
    const std::string file = dir.file("setup.txt");
    EXPECT_EQ(run({"save", file}), exit_code::kFailed);
    EXPECT_TRUE(told("Download was Canceled."));
    EXPECT_FALSE(testing::read_file(file).ends_with("25 0\r\n"));
}

} // namespace
} // namespace pelvan
