// No bad request can be taken for a write, whichever part of it a receiver takes for a frame.
#include <gtest/gtest.h>

#include <set>

#include "badrequests/protocol_series.h"
#include "support/frames.h"
#include "support/serial_rig.h"

namespace pelvan::testing {
namespace {

const std::set<int> kWrites{5, 6, 8, 15, 16, 21, 22, 23};

std::string joined(const BadRequest& request) {
    std::string all;
    for (const std::string& part : request.parts)
        all += part;
    return all;
}

/// What a receiver without parity hears of characters with one: where the parity bit is 0 instead
/// of a stop bit, it takes that bit for the next character's start.
std::string heard_without_parity(const std::string& sent, char parity) {
    std::vector<bool> bits;
    for (const char c : sent) {
        bool ones = parity == 'O';
        bits.push_back(false);
        for (int i = 0; i < 8; ++i) {
            bits.push_back((static_cast<unsigned char>(c) >> i & 1) != 0);
            ones ^= bits.back();
        }
        bits.push_back(ones);
        bits.push_back(true);
    }
    bits.insert(bits.end(), 12, true);
    std::string heard;
    for (std::size_t at = 0; at + 10 <= bits.size();) {
        if (bits[at]) { // the line is idle
            ++at;
            continue;
        }
        unsigned value = 0;
        for (unsigned i = 0; i < 8; ++i)
            value |= (bits[at + 1 + i] ? 1U : 0U) << i;
        heard += static_cast<char>(static_cast<unsigned char>(value));
        at += bits[at + 9] ? 10U : 9U;
    }
    return heard;
}

/// The bytes of a Modbus write in these, wherever they begin and end.
std::string modbus_write_in(const std::string& bytes) {
    for (std::size_t begin = 0; begin + 4 <= bytes.size(); ++begin)
        for (std::size_t size = 2;
             kWrites.contains(bytes[begin + 1]) && begin + size + 2 <= bytes.size(); ++size)
            if (const std::string frame = sealed(bytes.substr(begin, size));
                frame == bytes.substr(begin, size + 2))
                return hex_of(frame);
    return {};
}

/// Whether anything in the bytes that begins and ends like a packet is a write, its check aside.
bool tellura_write_in(const std::string& bytes) {
    for (std::size_t at = 0; (at = bytes.find("\x10\x02", at)) != bytes.npos; ++at) {
        std::string body;
        for (std::size_t i = at + 2; i + 1 < bytes.size(); ++i) {
            if (bytes[i] == '\x10' && bytes[++i] == '\3') {
                if (body.size() >= 8 && body[2] == '\x8') return true;
                break;
            }
            body += bytes[i];
        }
    }
    return false;
}

class SeriesTest : public ::testing::Test, public SerialRig {
  protected:
    std::vector<BadRequest> series(const BadRequestOptions& options, const std::string& settings) {
        std::string refusal;
        const auto made = make_series(options, link, dialogs, refusal);
        EXPECT_EQ(refusal, "");
        return made ? made->requests(settings) : std::vector<BadRequest>();
    }
};

TEST_F(SeriesTest, NoModbusRequestHoldsAWrite) {
    BadRequestOptions options = default_options(1);
    int sent = 0;
    for (const char* const address : {"1", "2", "5", "6", "16", "17", "101", "246"})
        for (const char* const number :
             {"0", "1", "5", "6", "16", "256", "300", "1286", "4101", "65535"})
            for (const char* const settings : {"9600,N,8,1", "9600,E,8,1"}) {
                options.address = address;
                options.read = number;
                for (const BadRequest& request : series(options, settings)) {
                    const std::string bytes = joined(request);
                    const bool garbled = request.parity != '\0' && settings[5] == 'N';
                    const std::string heard =
                        garbled ? heard_without_parity(bytes, request.parity) : bytes;
                    EXPECT_NE(heard, garbled ? bytes : "") << request.name;
                    EXPECT_EQ(modbus_write_in(bytes + heard + bytes), "")
                        << request.name << ", address " << address << ", register " << number;
                    sent += request.not_applicable.empty() ? 1 : 0;
                }
            }
    EXPECT_GT(sent, 1900);
}

TEST_F(SeriesTest, ARequestThatWouldHoldAWriteWithItsNeighboursIsLeftOut) {
    BadRequestOptions options = default_options(1);
    options.read = "3080"; // 01 06 98 01 03 0C 08 00 01 98 where the CRC's bytes are exchanged
    int left_out = 0;
    for (const BadRequest& request : series(options, "9600,N,8,1")) {
        left_out +=
            request.name == "CRC bytes exchanged" && !request.not_applicable.empty() ? 1 : 0;
        EXPECT_TRUE(request.not_applicable.empty() || request.parts.empty()) << request.name;
    }
    EXPECT_EQ(left_out, 1);
}

TEST_F(SeriesTest, NoTextHoldsTheSignOfAWriteAndNoPacketItsCommand) {
    for (const int protocol : {0, 2})
        for (const char* const settings : {"9600,N,8,1", "1200,E,7,1", "1200,O,7,2"})
            for (const BadRequest& request : series(default_options(protocol), settings)) {
                const std::string bytes = request.opening + joined(request) + request.closing;
                EXPECT_EQ(bytes.find('='), bytes.npos) << request.name;
                EXPECT_EQ(request.parity, request.name != "Other parity" || settings[5] == 'N'
                                              ? '\0'
                                          : settings[5] == 'E' ? 'O'
                                                               : 'E');
            }
    BadRequestOptions options = default_options(3);
    for (int address = 1; address <= 31; ++address)
        for (const TelluraCheck check : {TelluraCheck::Bcc, TelluraCheck::Crc})
            for (const char* const parameter : {"0000", "01ca", "0810", "1002", "1003", "0808"}) {
                options.address = std::to_string(address);
                options.check = check;
                options.read = parameter;
                for (const BadRequest& request : series(options, "9600,N,8,1")) {
                    const std::string bytes = joined(request);
                    EXPECT_FALSE(tellura_write_in(bytes)) << request.name << hex_of(bytes);
                    if (request.parity != '\0') {
                        EXPECT_FALSE(tellura_write_in(heard_without_parity(bytes, request.parity)))
                            << hex_of(bytes);
                    }
                }
            }
}

TEST_F(SeriesTest, OptionsThatCannotBeUsedAreRefusedInWords) {
    struct Case {
        int protocol;
        std::string BadRequestOptions::*member;
        const char* text;
        const char* refusal;
    };
    const char* const no_read = "The command must begin with ? and only read, such as \"? C1\".";
    for (const Case& each :
         {Case{1, &BadRequestOptions::address, "0", "The address is a whole number from 1 to 247."},
          Case{1, &BadRequestOptions::address, "247",
               "The other address must not be the controller's own."},
          Case{1, &BadRequestOptions::read, "x", "The register is a whole number from 0 to 65535."},
          Case{0, &BadRequestOptions::other_address, "33",
               "The other address is a whole number from 0 to 32."},
          Case{0, &BadRequestOptions::read, "= SP1 5", no_read},
          Case{2, &BadRequestOptions::read, "? C1\r= SP1 5", no_read},
          Case{2, &BadRequestOptions::read, "?=", no_read},
          Case{3, &BadRequestOptions::read, "01g0",
               "The parameter address is four hexadecimal digits."}}) {
        BadRequestOptions options = default_options(each.protocol);
        options.*each.member = each.text;
        std::string refusal;
        EXPECT_EQ(make_series(options, link, dialogs, refusal), nullptr) << each.text;
        EXPECT_EQ(refusal, each.refusal);
    }
    EXPECT_TRUE(dialogs.shown.empty());
}

} // namespace
} // namespace pelvan::testing
