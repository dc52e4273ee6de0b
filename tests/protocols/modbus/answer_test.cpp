// Which replies can be the answer to a request.
#include <gtest/gtest.h>

#include "protocols/modbus/modbus.h"
#include "support/frames.h"

namespace pelvan {
namespace {

using testing::frame;

TEST(ModbusAnswer, IsTheRequestsInAddressFunctionLengthAndEcho) {
    struct Case {
        const char* request;
        std::vector<const char*> answers;
        std::vector<const char*> others;
    };
    const Case cases[] = {
        {"01 03 00 05 00 02",
         {"01 03 04 00 01 00 02", "01 83 02"},
         {"", "01 03", "01 03 02 00 01", "01 03 02 00 01 00 02", "02 03 04 00 01 00 02",
          "01 04 04 00 01 00 02", "01 86 02", "01 83 02 00", "01 03 05 00 01 00 02 00"}},
        {"01 01 00 00 00 09", {"01 01 02 FF 01"}, {"01 01 01 FF", "01 01 03 FF 01 00"}},
        {"01 06 01 2C 00 05",
         {"01 06 01 2C 00 05", "01 86 03"},
         {"01 06 01 2C 00 09", "01 06 01 2D 00 05", "01 03 02 00 09", "01 06 01 2C 00 05 00"}},
        {"01 10 00 01 00 01 02 00 07", {"01 10 00 01 00 01"}, {"01 10 00 01 00 02"}},
        {"01 08 00 00 12 34", {"01 08 00 00 12 34"}, {"01 08 00 00 12 35"}},
        {"01 08 00 0B 00 00", {"01 08 00 0B 00 17"}, {"01 08 00 0C 00 17"}},
    };
    for (const auto& [request, answers, others] : cases) {
        for (const char* reply : answers)
            EXPECT_TRUE(can_answer(frame(request), frame(reply))) << request << " > " << reply;
        for (const char* reply : others)
            EXPECT_FALSE(can_answer(frame(request), frame(reply))) << request << " > " << reply;
    }
    EXPECT_FALSE(can_answer("", ""));
}

} // namespace
} // namespace pelvan
