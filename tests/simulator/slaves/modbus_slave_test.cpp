#include <gtest/gtest.h>

#include <array>

#include "simulator/slaves/modbus_slave.h"
#include "support/frames.h"

using namespace pelvan::simulator;
using pelvan::testing::frame;
using pelvan::testing::hex_of;

TEST(ModbusSlave, AnswersEveryFunctionAndException) {
    const std::vector<std::array<const char*, 3>> cases{
        {{"input registers are the same", "01 04 00 00 00 01", "01 04 02 02 E6"}},
        {{"coil on", "01 05 00 03 FF 00", "01 05 00 03 FF 00"}},
        {{"coil with a bad value", "01 05 00 03 00 01", "01 85 03"}},
        {{"one coil is on", "01 01 00 00 00 0A", "01 01 02 08 00"}},
        {{"coils, a word each", "01 0F 00 00 00 03 06 00 01 00 00 FF 00", "01 0F 00 00 00 03"}},
        {{"as written: coils 0 and 2 on", "01 01 00 00 00 04", "01 01 01 0D"}},
        {{"coils, packed", "01 0F 00 00 00 0A 02 05 02", "01 0F 00 00 00 0A"}},
        {{"as written: 0, 2 and 9 on", "01 01 00 00 00 0A", "01 01 02 05 02"}},
        {{"coils with a wrong byte count", "01 0F 00 00 00 03 05 00 01 00 00 FF", "01 8F 03"}},
        {{"inputs", "01 02 00 00 00 0C", "01 02 02 00 00"}},
        {{"out of limit", "01 06 01 2C 27 10", "01 86 03"}},
        {{"inactive", "01 03 02 80 00 01", "01 83 02"}},
        {{"too many registers", "01 03 02 58 00 7E", "01 83 03"}},
        {{"several", "01 10 03 22 00 02 04 FC 18 03 E8", "01 10 03 22 00 02"}},
        {{"several, the last refused", "01 10 03 22 00 02 04 00 00 7F FF", "01 90 03"}},
        {{"none is written", "01 03 03 22 00 02", "01 03 04 FC 18 03 E8"}},
        {{"loop-back", "01 08 00 00 12 34", "01 08 00 00 12 34"}},
        {{"other diagnostics", "01 08 00 01 00 00", "01 88 01"}},
        {{"unknown function", "01 07", "01 87 01"}},
        {{"two values behind a single write", "01 06 01 2C 00 01 00 02", "01 86 03"}},
        {{"another address", "02 03 00 00 00 01", ""}},
        {{"broadcast", "00 06 01 2C 00 07", ""}},
        {{"the broadcast was executed", "01 03 01 2C 00 01", "01 03 02 00 07"}},
        {{"end of the register space", "01 03 FF FF 00 02", "01 83 02"}},
        {{"730: another model", "01 03 00 00 00 01", "01 03 02 02 DA"}},
        {{"730 has no profiles", "01 03 0F A0 00 01", "01 83 02"}},
        {{"730 has no second loop", "01 03 01 3F 00 01", "01 83 02"}},
    };
    Controller full(742);
    Controller small(730);
    for (const auto& [what, request, reply] : cases) {
        Controller& controller = std::string_view(what).starts_with("730") ? small : full;
        const std::string answer = modbus_reply(controller, 1, frame(request));
        EXPECT_EQ(hex_of(answer), *reply == 0 ? "" : hex_of(frame(reply))) << what;
    }
}
