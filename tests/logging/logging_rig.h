// A data logger on a link that answers at once from a table of registers.
#pragma once

#include <map>

#include "logging/data_logger.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"
#include "text/strings.h"

namespace pelvan::testing {

/// Knows registers by number, whatever the address; any other answers exception 2.
class AnsweringLink : public Link {
  public:
    explicit AnsweringLink(SerialRig& rig)
        : Link(rig.table, rig.countdowns, rig.dialogs, rig.log), tick_(rig.tick) {}

    std::string transmit(std::int16_t channel, const std::string& command, float timeout_ms,
                         std::int16_t quiet_chars) override {
        EXPECT_EQ(channel, 1);
        EXPECT_EQ(timeout_ms, 2000);
        EXPECT_EQ(quiet_chars, 30);
        sent.push_back(command);
        tick_.advance(exchange_ms);
        const int start =
            static_cast<unsigned char>(command[2]) * 256 + static_cast<unsigned char>(command[3]);
        if (corrupted) return *corrupted;
        std::string reply = command.substr(0, 2);
        if (!registers.count(start)) {
            reply[1] = static_cast<char>(reply[1] | '\x80');
            return sealed(reply + '\2');
        }
        const std::string words = bytes(registers[start]);
        return sealed(reply + static_cast<char>(words.size()) + words);
    }

    std::map<int, std::string> registers; // the words of a reply, in hexadecimal
    std::optional<std::string> corrupted; // whole reply instead of the right one
    std::vector<std::string> sent;
    double exchange_ms = 80;

  private:
    FakeTick& tick_;
};

class LoggingTest : public ::testing::Test {
  protected:
    LoggingTest() {
        link.registers = {{100, "02 D5"}, {101, "00 00"}, {200, "00 01 00 05"}};
        logger.read_tick_length();
        logger.set_file_name(log_file);
    }
    /// Writes a set file of rows "address,command,register,decimals" and further lines.
    std::string set_with(const std::vector<std::string>& rows, const std::string& lines = {}) {
        std::string text =
            "[LOGGING DATA DEVICE AND REGISTER SET]\r\nLOGGING FILENAME=" + log_file + "\r\n" +
            lines;
        for (std::size_t n = 0; n < rows.size(); ++n) {
            const auto columns = split(rows[n], ',');
            const char* keys[] = {"ADDRESS", "COMMAND", "REGISTER", "REGISTERDECIMAL"};
            for (std::size_t i = 0; i < columns.size(); ++i)
                text += std::to_string(n + 1) + "DEVICE" + keys[i] + "=" + columns[i] + "\r\n";
        }
        write_file(set_file, text);
        return set_file;
    }
    void load(const std::vector<std::string>& rows, const std::string& lines = {}) {
        logger.read_set(set_with(rows, lines));
    }
    void start(int seconds) {
        logger.set_interval(seconds);
        logger.start();
    }
    void tick(int times) {
        for (int i = 0; i < times; ++i) {
            if (!logger.timer().running()) return;
            rig.tick.advance(logger.timer().tick_ms());
            logger.tick();
        }
    }
    std::string value(int row) { return logger.reading(row).value; }
    std::string log_text() { return read_file(log_file); }
    std::ptrdiff_t lines() { return lines_of(log_text()); }
    static std::ptrdiff_t lines_of(const std::string& text) {
        return std::count(text.begin(), text.end(), '\n');
    }

    SerialRig rig;
    FakeDesktop desktop;
    MessageRouter gate{rig.dialogs};
    Services services{rig.tick, rig.clock, gate, desktop, rig.dir.path()};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    AnsweringLink link{rig};
    LoggingState state;
    DataLogger logger{services, gate, rig.config, link, modbus, state};
    std::string log_file = rig.dir.file("log.txt");
    std::string set_file = rig.dir.file("set.PV5");
};

} // namespace pelvan::testing
