#include "settings/port_settings.h"

#include <gtest/gtest.h>

#include "text/strings.h"

namespace pelvan {
namespace {

TEST(PortSettings, EachFieldIsCheckedInOrder) {
    // Port, baud, parity, data bits, stop bits; what the messages call not valid.
    const std::vector<std::pair<std::string, std::string>> cases{
        {"16;38400;e;7;2", ""},
        {" 1 ;300;O;8;1", ""},
        {"1.5;1200;E;8;1", ""}, // lies between 1 and 16
        {"17;9600;N;8;1", "Comm Port"},
        {"x;9600;n;8;1", "Comm Port"},
        {"1;14400;n;8;1", "Baud Rate"},
        {"1;115200;n;8;1", "Baud Rate"},
        {"1;300;none;8;1", "Parity"},
        {"1;300;;8;1", "Parity"},
        {"1;300;O;8;1.5", "Data Bits"}, // for the stop bits
        {"0;7;x;9;3", "Comm Port|Baud Rate|Parity|Data Bits|Data Bits"},
    };
    for (const auto& [typed, wrong] : cases) {
        const auto field = split(typed, ';');
        std::string reported;
        for (const std::string& message :
             ValidatePortSettings({field[0], field[1], field[2], field[3], field[4], 0})) {
            const std::string begin = " The ",
                              end = " specified is not valid, data will not be saved";
            ASSERT_TRUE(message.starts_with(begin) && message.ends_with(end)) << message;
            reported += (reported.empty() ? "" : "|") +
                        message.substr(begin.size(), message.size() - begin.size() - end.size());
        }
        EXPECT_EQ(reported, wrong) << typed;
    }
}

} // namespace
} // namespace pelvan
