// A data logger on a scripted port that answers from a table of replies.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "logging/data_logger.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"
#include "text/strings.h"

namespace pelvan::testing {

class LoggingTest : public ::testing::Test, protected SerialRig {
  protected:
    LoggingTest() {
        build({"1;9600,N,8,1;1", "2;9600,N,8,1;1"});
        ports[1]->responder = [this](const std::string& request) { return answer(request); };
        logger.read_tick_length();
        logger.set_file_name(log_file);
    }
    /// Writes a set file of rows "address,command,register,decimals" and further lines.
    std::string set_with(const std::vector<std::string>& rows, const std::string& lines = {}) {
        const char* const keys[] = {"ADDRESS", "COMMAND", "REGISTER", "REGISTERDECIMAL"};
        std::string text = "[LOGGING DATA DEVICE AND REGISTER SET]\r\n" + lines +
                           "LOGGING FILENAME=" + log_file + "\r\n";
        for (std::size_t row = 0; row < rows.size(); ++row)
            for (std::size_t i = 0; const std::string& column : split(rows[row], ','))
                text += std::to_string(row + 1) + "DEVICE" + keys[i++] + "=" + column + "\r\n";
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
    void run(int ticks) {
        for (int i = 0; i < ticks && logger.timer().running(); ++i) {
            tick.advance(logger.timer().tick_ms());
            logger.tick();
        }
    }
    /// The timer, the requests, the count of the buffer, and the boxes since the last look.
    std::string seen() {
        const auto boxes = std::exchange(dialogs.shown, {}).size();
        return (logger.timer().running() ? "runs, " : "stands, ") + std::to_string(sent().size()) +
               " sent, " + std::to_string(logging.gLogBufferCount) + " gathered, " +
               std::to_string(boxes) + " shown";
    }
    std::vector<std::string>& sent() { return ports[1]->outputs; }
    LogReading reading(int row) { return logger.reading(row); }
    std::string log_text() { return read_file(log_file); }
    /// In the log file, after so many ticks more.
    std::ptrdiff_t lines(int ticks = 0) {
        run(ticks);
        return std::ranges::count(log_text(), '\n');
    }

    /// By the first four bytes of the request; whatever else is asked for is exception 2.
    std::map<std::string, std::string> replies{{"01 03 00 64", "01 03 02 02 D5"},
                                               {"01 03 00 65", "01 03 02 00 00"},
                                               {"01 03 00 C8", "01 03 04 00 01 00 05"}};
    std::optional<std::string> instead; // of the right reply
    double exchange_ms = 0;             // before the reply
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    LoggingState logging;
    DataLogger logger{services, gate, config, link, modbus, logging};
    std::string log_file = dir.file("log.txt");
    std::string set_file = dir.file("set.PV5");

  private:
    std::vector<Arrival> answer(const std::string& request) {
        tick.advance(exchange_ms);
        if (instead) return {{0, *instead}};
        if (const auto known = replies.find(hex_of(request.substr(0, 4))); known != replies.end())
            return {{0, frame(known->second)}};
        return {{0, sealed({request[0], static_cast<char>(request[1] | '\x80'), '\2'})}};
    }
};

} // namespace pelvan::testing
