#include "network/network_address.h"

#include <gtest/gtest.h>

using namespace pelvan;

TEST(NetworkAddress, TakesNamesAddressesAndPorts) {
    struct Case {
        const char* text;
        bool rfc2217;
        const char* host;
        int port;
    };
    for (const Case& row : {Case{"tcp://furnace-3.example:4001", false, "furnace-3.example", 4001},
                            Case{"rfc2217://10.0.0.7:1", true, "10.0.0.7", 1},
                            Case{"TCP://[::1]:65535", false, "::1", 65535},
                            Case{"Rfc2217://[fe80::1%eth0]:2217", true, "fe80::1%eth0", 2217}}) {
        const auto address = parse_network_address(row.text);
        ASSERT_TRUE(address) << row.text;
        EXPECT_EQ(address->rfc2217, row.rfc2217) << row.text;
        EXPECT_EQ(address->host, row.host);
        EXPECT_EQ(address->port, row.port);
        EXPECT_EQ(network_address_fault(row.text), "");
    }
}

TEST(NetworkAddress, SaysWhatIsWrong) {
    const std::vector<std::pair<std::string, std::string>> cases{
        {"tcp://", "names no host"},
        {"tcp://:4001", "names no host"},
        {"tcp://host", "names no port"},
        {"tcp://host:", "names no port"},
        {"rfc2217://[::1]", "names no port: write rfc2217://host:port"},
        {"rfc2217://::1:1", "as in rfc2217://["},
        {"tcp://[::1]4001", "names no port"},
        {"tcp://host:0", "from 1 to 65535"},
        {"tcp://host:65536", "from 1 to 65535"},
        {"tcp://host:99999999999999999999", "from 1 to 65535"},
        {"tcp://host:-1", "from 1 to 65535"},
        {"tcp://host:4001/", "from 1 to 65535"},
        {"tcp://host: 4001", "from 1 to 65535"},
        {"tcp://::1:4001", "brackets"},
        {"tcp://[::1:4001", "bracket"},
        {"tcp://my host:4001", "no blanks"},
        {"tcp:// host:4001", "no blanks"},
        {"tcp://host,nodelay:4001", "letters"}, // a comma is the library's own
        {"tcp://" + std::string(254, 'a') + ":1", "letters"},
        {"tcp://h\xC3\xB6st:1", "letters"},
    };
    for (const auto& [text, fault] : cases) {
        EXPECT_TRUE(is_network(text)) << text;
        EXPECT_FALSE(parse_network_address(text)) << text;
        EXPECT_NE(network_address_fault(text).find(fault), std::string::npos)
            << text << " " << network_address_fault(text);
    }
    for (const char* other :
         {"", "tcp", "tcp:", "/dev/tcp://host:1", "simulated:742", "http://h:1"})
        EXPECT_FALSE(is_network(other)) << other;
}
