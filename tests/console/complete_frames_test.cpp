// Replies of all protocols at 38400, where the settle time is 0: the pause cuts them, their frames
// do not.
#include <gtest/gtest.h>

#include "console/senders.h"
#include "support/frames.h"
#include "support/simulated_ports.h"

namespace pelvan::testing {

class CompleteFramesTest : public ::testing::Test, public SerialRig {
  protected:
    void start(const std::string& way, const std::string& device = "simulated:742") {
        configure_devices(dir, std::vector<std::string>(4, device));
        std::string text = read_file(config.gIniFile);
        for (std::size_t at = 0; (at = text.find("9600", at)) != text.npos; ++at)
            text.replace(at, 4, "38400");
        write_file(config.gIniFile, text);
        exchange_by(way);
    }
    /// How many of twenty commands got their answer.
    template <class Send> int answered(const Send& send) {
        int count = 0;
        for (int i = 0; i < 20; ++i) {
            count += send().accepted ? 1 : 0;
            tick.advance(LateAnswers::kDoubtMs + 1); // nobody is in doubt any more
        }
        return count;
    }
    int answered_modbus() {
        return answered([&] { return senders.modbus.send({2, "1", "0", "3", false}, {}); });
    }

    SimulatedPorts simulated{*this};
    ModbusState modbus_state;
    Modbus modbus{modbus_state};
    Senders senders{link, modbus, clock, dialogs};
};

TEST_F(CompleteFramesTest, At38400ThePauseCutsModbusRepliesAndFramesComeWhole) {
    start("QUIET");
    EXPECT_LT(answered_modbus(), 10);
    start("COMPLETE");
    EXPECT_EQ(answered_modbus(), 20);
}

TEST_F(CompleteFramesTest, At38400AllOtherProtocolsComeWhole) {
    start("COMPLETE");
    for (const char* command : {"? C1", "= SP1 50"}) {
        const auto text = [&](TextProtocol protocol) {
            return answered([&] { return senders.text.send(protocol, {"1", command}); });
        };
        EXPECT_EQ(text(TextProtocol::Full), 20) << command;
        EXPECT_EQ(text(TextProtocol::Xon), 20) << command;
    }
    for (const auto check : {TelluraCheck::Bcc, TelluraCheck::Crc})
        EXPECT_EQ(answered([&] {
                      return senders.tellura.send({"1", "0000", "2", "", false, check});
                  }),
                  20);
}

TEST_F(CompleteFramesTest, DamagedAndLateRepliesAreNotTakenForAnswers) {
    for (const char* fault : {"flip=1", "gap=1", "noise=1", "other=1", "lost=1", "crc=1"}) {
        start("COMPLETE", "simulated:742," + std::string(fault));
        EXPECT_EQ(answered_modbus(), 0) << fault;
    }
    start("COMPLETE", "simulated:742,late=1");
    EXPECT_EQ(answered_modbus(), 20) << "within the time-out";
}

} // namespace pelvan::testing
