// The builder's frames, put to a slave built on libmodbus, and its replies, put to the decoder.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "protocols/modbus/bytes.h"

namespace pelvan {
namespace {

constexpr int kPatienceMs = 10'000;

class LibmodbusSlave : public ::testing::Test {
  protected:
    void SetUp() override {
        char name[128] = {};
        termios raw{};
        cfmakeraw(&raw);
        ASSERT_EQ(openpty(&master_, &line_, name, &raw, nullptr), 0);
        int output[2] = {-1, -1};
        ASSERT_EQ(pipe2(output, O_CLOEXEC), 0);
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        std::string program = PELVAN_MODBUS_SLAVE;
        char* const arguments[] = {program.data(), name, nullptr};
        const int failed =
            posix_spawn(&slave_, program.c_str(), &actions, nullptr, arguments, environ);
        posix_spawn_file_actions_destroy(&actions);
        close(output[1]);
        ASSERT_EQ(failed, 0);
        EXPECT_EQ(read_bytes(output[0], 6), "ready\n");
        close(output[0]);
    }
    void TearDown() override {
        if (slave_ > 0) {
            kill(slave_, SIGKILL);
            waitpid(slave_, nullptr, 0);
        }
        close(line_);
        close(master_);
    }

    /// Up to `count` bytes; fewer when the other end stays silent.
    static std::string read_bytes(int file, std::size_t count) {
        std::string out;
        pollfd waiting{file, POLLIN, 0};
        while (out.size() < count && poll(&waiting, 1, kPatienceMs) == 1) {
            char buffer[300];
            const ssize_t got = read(file, buffer, count - out.size());
            if (got <= 0) break;
            out.append(buffer, static_cast<std::size_t>(got));
        }
        return out;
    }

    std::string exchange(int function, float start, std::vector<float> values,
                         std::size_t reply_bytes) {
        values.insert(values.begin(), 0);
        const std::string request =
            modbus_.ModbusBuildRequest(static_cast<std::int16_t>(function), 1, start, values);
        EXPECT_EQ(write(master_, request.data(), request.size()),
                  static_cast<ssize_t>(request.size()));
        return modbus_.ModbusDecodeSmartDecimal(0, read_bytes(master_, reply_bytes));
    }

  private:
    int master_ = -1;
    int line_ = -1;
    pid_t slave_ = -1;
    ModbusState state_;
    Modbus modbus_{state_};
};

TEST_F(LibmodbusSlave, TakesTheBuildersFrames) {
    EXPECT_EQ(exchange(3, 98, {4}, 13), "980 990 -1000 -1010");
    EXPECT_EQ(exchange(4, 5, {1}, 7), "51");
    EXPECT_EQ(exchange(1, 3, {4}, 6), "9");
    EXPECT_EQ(exchange(2, 0, {8}, 6), "170");
    EXPECT_EQ(exchange(6, 7, {-12}, 8), "7 -12");
    EXPECT_EQ(exchange(5, 4, {-256}, 8), "4 -256");
    EXPECT_EQ(exchange(16, 20, {-1, 5}, 8), "20 2");
    EXPECT_EQ(exchange(3, 20, {2}, 9), "-1 5");
    EXPECT_EQ(exchange(1, 3, {4}, 6), "11");
    EXPECT_EQ(exchange(3, 198, {4}, 5), "Exception Error: 131 2");
}

} // namespace
} // namespace pelvan
