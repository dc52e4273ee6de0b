// Data Logging on a link that answers at once from a table of registers.
#pragma once

#include <map>

#include "logging/logging_form.h"
#include "support/error_of.h"
#include "support/frames.h"
#include "support/serial_rig.h"

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
        if (spoiled) return *spoiled;
        std::string reply = command.substr(0, 2);
        if (!registers.count(start)) {
            reply[1] = static_cast<char>(reply[1] | '\x80');
            return sealed(reply + '\2');
        }
        const std::string words = bytes(registers[start]);
        return sealed(reply + static_cast<char>(words.size()) + words);
    }

    std::map<int, std::string> registers; // the words of a reply, in hexadecimal
    std::optional<std::string> spoiled;   // whole reply in the place of the right one
    std::vector<std::string> sent;
    double exchange_ms = 80;

  private:
    FakeTick& tick_;
};

class LoggingTest : public ::testing::Test {
  protected:
    LoggingTest() {
        form.Show();
        form.txt_LogFilename.set_Text(log_file);
    }
    /// Fills a row as a loaded set does: "address,command,register,decimals".
    void use_row(int row, const std::string& columns) {
        int column = log_column::kAddress;
        for (const std::string& text : split(columns, ','))
            form.MSFlexGrid1.set_TextMatrix(row, column++, text);
        form.MSFlexGrid1.set_RowData(row, row);
    }
    std::string cell(int row, int column) { return form.MSFlexGrid1.TextMatrix(row, column); }
    void tick(int times) {
        for (int i = 0; i < times; ++i) {
            rig.tick.advance(form.tmr_LoggingInterval.Interval());
            form.tmr_LoggingInterval.Tick();
        }
    }
    std::string log_text() { return read_file(log_file); }

    SerialRig rig;
    FakeDesktop desktop;
    MessageGate gate{rig.dialogs};
    Services services{rig.tick, rig.clock, gate, desktop, rig.dir.path()};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    AnsweringLink link{rig};
    LoggingState state;
    frm_DataLogging form{services, gate, rig.config, link, modbus, state};
    std::string log_file = rig.dir.file("log.txt");
};

} // namespace pelvan::testing
