// Data Logging on a link that answers at once from a table of registers.
#pragma once

#include <map>

#include "logging/logging_form.h"
#include "support/error_of.h"
#include "support/serial_rig.h"

namespace pelvan::testing {

/// Knows holding registers by number; anything else answers exception 2, silent ones nothing.
class AnsweringLink : public Link {
  public:
    AnsweringLink(SerialRig& rig, Modbus& modbus)
        : Link(rig.table, rig.countdowns, rig.dialogs, rig.log), modbus_(modbus), tick_(rig.tick) {}

    std::string transmit(std::int16_t channel, const std::string& command, float timeout_ms,
                         std::int16_t quiet_chars) override {
        EXPECT_EQ(channel, 1);
        EXPECT_EQ(timeout_ms, 2000);
        EXPECT_EQ(quiet_chars, 30);
        sent.push_back(command);
        tick_.advance(exchange_ms);
        if (on_transmit) on_transmit();
        const int start = number_at(command, 2);
        if (spoiled.count(start)) return spoiled[start];
        const std::string head = command.substr(0, 2);
        if (!registers.count(start)) {
            std::string exception = head + '\x02';
            exception[1] = static_cast<char>(exception[1] | '\x80');
            return with_crc(exception);
        }
        std::string data;
        for (const int value : registers[start]) {
            data += static_cast<char>((value >> 8) & 0xFF);
            data += static_cast<char>(value & 0xFF);
        }
        return with_crc(head + static_cast<char>(data.size()) + data);
    }

    std::map<int, std::vector<int>> registers;
    std::map<int, std::string> spoiled; // whole replies by start register
    std::vector<std::string> sent;
    std::function<void()> on_transmit;
    double exchange_ms = 80;

  private:
    static int number_at(const std::string& frame, std::size_t at) {
        return static_cast<unsigned char>(frame[at]) * 256 +
               static_cast<unsigned char>(frame[at + 1]);
    }
    std::string with_crc(const std::string& frame) {
        modbus_.ModbusCrc(frame);
        return frame + static_cast<char>(modbus_.state().gCrcLow) +
               static_cast<char>(modbus_.state().gCrcHigh);
    }
    Modbus& modbus_;
    FakeTick& tick_;
};

class LoggingTest : public ::testing::Test {
  protected:
    LoggingTest() {
        form.Show();
        form.txt_LogFilename.set_Text(log_file);
    }
    /// Fills a row as a loaded set does.
    void use_row(int row, const std::vector<std::string>& columns) {
        for (std::size_t i = 0; i < columns.size(); ++i)
            form.MSFlexGrid1.set_TextMatrix(row, static_cast<int>(i) + 1, columns[i]);
        form.MSFlexGrid1.set_RowData(row, row);
    }
    std::string value(int row) { return form.MSFlexGrid1.TextMatrix(row, log_column::kValue); }
    /// As the program's one place for untrapped errors does: the number, 0 when none.
    static int error_in(const std::function<void()>& handler) { return error_of(handler); }
    void tick(int times) {
        for (int i = 0; i < times; ++i) {
            rig.tick.advance(form.tmr_LoggingInterval.Interval());
            form.tmr_LoggingInterval.Tick();
        }
    }
    void set_interval(int seconds) {
        form.scrl_LoggingInterval[0].set_Value(seconds / 3600);
        form.scrl_LoggingInterval[1].set_Value(seconds / 60 % 60);
        form.scrl_LoggingInterval[2].set_Value(seconds % 60);
    }
    std::string log_text() { return read_file(log_file); }

    SerialRig rig;
    FakeDesktop desktop;
    MessageGate gate{rig.dialogs};
    Services services{rig.tick, rig.clock, gate, desktop, rig.dir.path()};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    AnsweringLink link{rig, modbus};
    LoggingState state;
    frm_DataLogging form{services, gate, rig.config, link, modbus, state};
    std::string log_file = rig.dir.file("log.txt");
};

} // namespace pelvan::testing
