#include "listen/capture_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "support/error_of.h"
#include "support/frames.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

TEST(CaptureFileTest, HasEachFrameWithItsTimeItsProtocolAndItsDirection) {
    std::deque<ListenedFrame> frames;
    for (const auto& [ms, bytes] :
         {std::pair{123.5, frame("01 03 00 00 00 01")}, {161.5, frame("01 83 02")}, {223.5, "??"}})
        frames.push_back({0, classify_frame(bytes, ""), {}, {}, 1794000000000 + ms, {}, {}, bytes});
    const TempDir dir;
    save_capture(dir.file("three"), frames);
    const std::string name = "00 0C 00 08 6D 62 72 74 75 00 00 00 00 00 00 00 ";
    const std::string flags = "02 00 04 00 "; // 1 inbound, 2 outbound
    EXPECT_EQ(hex_of(read_file(dir.file("three"))),
              // Section: byte order, version 1.0, length unknown. Interface: link type 252.
              "0A 0D 0D 0A 1C 00 00 00 4D 3C 2B 1A 01 00 00 00 FF FF FF FF FF FF FF FF 1C 00 00 00 "
              "01 00 00 00 14 00 00 00 FC 00 00 00 00 00 00 00 14 00 00 00 "
              // Packet: interface, time in microseconds (high word first), lengths, data, options.
              "06 00 00 00 44 00 00 00 00 00 00 00 A2 5F 06 00 6C 02 BC 2C 18 00 00 00 "
              "18 00 00 00 " +
                  name + "01 03 00 00 00 01 84 0A " + flags +
                  "02 00 00 00 00 00 00 00 44 00 00 00 "
                  "06 00 00 00 44 00 00 00 00 00 00 00 A2 5F 06 00 DC 96 BC 2C 15 00 00 00 "
                  "15 00 00 00 " +
                  name + "01 83 02 C0 F1 00 00 00 " + flags +
                  "01 00 00 00 00 00 00 00 44 00 00 00 "
                  "06 00 00 00 30 00 00 00 00 00 00 00 A2 5F 06 00 0C 89 BD 2C 0E 00 00 00 "
                  "0E 00 00 00 00 0C 00 04 64 61 74 61 00 00 00 00 3F 3F 00 00 30 00 00 00");
}

TEST(CaptureFileTest, RefusesWhatCannotBeWrittenAtOnceAndWithTheNumbersOfEveryWriter) {
    const TempDir dir;
    ASSERT_EQ(::mkfifo(dir.file("pipe").c_str(), 0600), 0); // nobody reads it
    const auto error_at = [&](const std::string& name) {
        return error_of([&] { save_capture(dir.file(name), {}); });
    };
    EXPECT_EQ(error_at("pipe"), error_number::kPathFileAccess);
    EXPECT_EQ(error_at("missing/file"), error_number::kPathNotFound);
    EXPECT_EQ(error_of([] { save_capture("/dev/full", {}); }), error_number::kDiskFull);
}

} // namespace pelvan::testing
