// Commands of the terminal in a directory of their own, on simulated controllers and a fake tick.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <sstream>

#include "support/cases.h"
#include "support/configuration.h"
#include "support/fake_time.h"
#include "terminal/terminal.h"

namespace pelvan {

/// The head of a log set and its first row, a register of the controller.
constexpr char kLogSet[] = "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOGGING INTERVAL=30\r\n"
                           "1DEVICEADDRESS=1\r\n1DEVICECOMMAND=3\r\n1DEVICEREGISTER=0\r\n";

class CommandTest : public ::testing::Test {
  protected:
    CommandTest() { configure("simulated:742"); }

    void configure(const std::string& device) {
        testing::configure_devices(dir, std::vector<std::string>(4, device),
                                   "DEFAULT PROTOCOL=3\r\n");
    }
    /// Runs a command line, its words parted by spaces, those with spaces in them 'quoted'; the
    /// exit code, -1 when the windows are wanted.
    int run(const std::string& line) {
        std::vector<std::string> arguments;
        std::istringstream words(line);
        for (std::string word; words >> std::quoted(word, '\'');)
            arguments.push_back(word);
        out.str("");
        err.str("");
        TerminalEnvironment environment{
            out, err, *tick_source, clock, open_device, find_directory ? "" : dir.path(), stop};
        environment.find_directory = find_directory;
        environment.wait_ms = [this](int ms) {
            tick.advance(ms);
            if (on_wait) on_wait();
        };
        return run_terminal(arguments, environment).value_or(-1);
    }
    void expect(const std::string& line, int code, const std::string& output,
                const std::string& error = {}) {
        EXPECT_EQ(run(line), code) << line;
        EXPECT_EQ(out.str(), output) << line;
        EXPECT_EQ(err.str(), error) << line;
    }
    /// Expects one line on standard error for each "command->message" of a table, of any text where
    /// none is given.
    void expect_failures(int code, const std::string& table) {
        for (const auto& [line, message] : testing::cases(table)) {
            EXPECT_EQ(run(line), code) << line;
            const std::string text = err.str();
            EXPECT_EQ(std::ranges::count(text, '\n'), 1) << line << ": " << text;
            EXPECT_TRUE(message.empty() || text == "pelvan7: " + message + "\n") << text;
        }
    }
    [[nodiscard]] bool printed(const std::string& text) const {
        return out.str().find(text) != std::string::npos;
    }
    [[nodiscard]] bool told(const std::string& text) const {
        return err.str().find(text) != std::string::npos;
    }

    testing::TempDir dir;
    testing::FakeTick tick;
    TickSource* tick_source = &tick;
    testing::FakeClock clock;
    /// Says where the files lie when --directory does not; else the rig's directory is given.
    std::function<ApplicationDirectory()> find_directory;
    std::ostringstream out;
    std::ostringstream err;
    std::atomic<bool> stop{false};
    LineOpener open_device = open_serial_device;
    std::function<void()> on_wait;
};

} // namespace pelvan
