// The builder's frames, put to a slave built on libmodbus, and its replies, put to the decoder.
#include <gtest/gtest.h>

#include "protocols/modbus/bytes.h"
#include "support/modbus_slave.h"

namespace pelvan {
namespace {

class LibmodbusSlave : public ::testing::Test {
  protected:
    std::string exchange(int function, float start, std::vector<float> values,
                         std::size_t reply_bytes) {
        values.insert(values.begin(), 0);
        const std::string request =
            modbus_.ModbusBuildRequest(static_cast<std::int16_t>(function), 1, start, values);
        line_.send(request);
        return modbus_.ModbusDecodeSmartDecimal(0, line_.receive(reply_bytes));
    }

  private:
    testing::PtyPair line_{testing::PtyPair::Slave::KeepOpen};
    testing::ModbusSlaveProcess slave_{PELVAN_MODBUS_SLAVE, line_.path()};
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
