#include "settings/port_settings.h"

#include <gtest/gtest.h>

#include "support/cases.h"

namespace pelvan {
namespace {

TEST(PortSettings, EachFieldIsCheckedInOrder) {
    // Port, baud, parity, data bits, stop bits; what the messages call not valid: data bits also
    // for the stop bits. 1.5 lies between 1 and 16.
    for (const auto& [typed, wrong] : testing::cases(
             "16;38400;e;7;2->| 1 ;300;O;8;1->|1.5;1200;E;8;1->|17;9600;N;8;1->,Comm Port|"
             "x;9600;n;8;1->,Comm Port|1;14400;n;8;1->,Baud Rate|1;115200;n;8;1->,Baud Rate|"
             "1;300;none;8;1->,Parity|1;300;;8;1->,Parity|1;300;O;8;1.5->,Data Bits|"
             "0;7;x;9;3->,Comm Port,Baud Rate,Parity,Data Bits,Data Bits")) {
        const auto field = split(typed, ';');
        auto messages = split(wrong, ',');
        messages.erase(messages.begin());
        for (std::string& message : messages)
            message = " The " + message + " specified is not valid, data will not be saved";
        EXPECT_EQ(ValidatePortSettings({field[0], field[1], field[2], field[3], field[4], 0}),
                  messages)
            << typed;
    }
}

} // namespace
} // namespace pelvan
