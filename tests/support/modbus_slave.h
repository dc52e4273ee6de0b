// A Modbus slave that is not ours (built on libmodbus) in a process of its own, and the wire to it.
#pragma once

#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>

#include "support/pty_pair.h"

namespace pelvan::testing {

/// Serves slave address 1 on a serial device until it is destroyed.
class ModbusSlaveProcess {
  public:
    /// `program` is the slave's executable; returns when it answers.
    ModbusSlaveProcess(const std::string& program, const std::string& device) {
        std::array<int, 2> output{-1, -1};
        if (::pipe2(output.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
        process_ = ::fork();
        if (process_ == 0) {
            ::dup2(output[1], STDOUT_FILENO);
            ::execl(program.c_str(), program.c_str(), device.c_str(), nullptr);
            ::_exit(1);
        }
        ::close(output[1]);
        char ready = 0; // the first letter of "ready": the line is open
        const bool begun = ::read(output[0], &ready, 1) == 1;
        ::close(output[0]);
        if (!begun) throw std::runtime_error("the slave did not start");
    }
    ModbusSlaveProcess(ModbusSlaveProcess&&) = delete;
    ~ModbusSlaveProcess() {
        if (process_ <= 0) return;
        ::kill(process_, SIGKILL);
        ::waitpid(process_, nullptr, 0);
    }

  private:
    pid_t process_ = -1;
};

/// A wire between two serial devices: what is written to one arrives at the other.
class PtyWire {
  public:
    /// Hears what passes, and whether it comes from `one_end`; on a thread of the wire's own.
    using Tap = std::function<void(bool from_one_end, const std::string& bytes)>;

    explicit PtyWire(Tap tap = {}) : tap_(std::move(tap)), pump_([this] { pump(); }) {}
    PtyWire(PtyWire&&) = delete;
    ~PtyWire() {
        stop_ = true;
        pump_.join();
    }
    [[nodiscard]] const std::string& one_end() const { return one_.path(); }
    [[nodiscard]] const std::string& other_end() const { return other_.path(); }

  private:
    void pump() {
        std::array<pollfd, 2> ends{pollfd{one_.master(), POLLIN, 0},
                                   pollfd{other_.master(), POLLIN, 0}};
        while (!stop_) {
            if (::poll(ends.data(), ends.size(), 50) <= 0) continue;
            for (std::size_t i = 0; i < ends.size(); ++i)
                if (ends[i].revents & POLLIN) carry(ends[i].fd, ends[1 - i].fd, i == 0);
        }
    }
    void carry(int from, int to, bool from_one_end) const {
        std::array<char, 4096> bytes{};
        const ssize_t got = ::read(from, bytes.data(), bytes.size());
        if (tap_ && got > 0)
            tap_(from_one_end, std::string(bytes.data(), static_cast<std::size_t>(got)));
        if (got > 0 && ::write(to, bytes.data(), static_cast<std::size_t>(got)) != got)
            throw std::runtime_error("the wire took not all bytes");
    }

    PtyPair one_{PtyPair::Slave::KeepOpen};
    PtyPair other_{PtyPair::Slave::KeepOpen};
    Tap tap_;
    std::atomic<bool> stop_{false};
    std::thread pump_;
};

} // namespace pelvan::testing
