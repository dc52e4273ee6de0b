#include <gtest/gtest.h>

#include <filesystem>

#include "serial/errors.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

TEST(ErrorMessages, NumbersWithTitlesAndInsertions) {
    const std::vector<std::tuple<int, std::string, std::string>> cases{
        {1, "ERROR NUMBER 1 CHECK VB MANUAL FOR DESCRIPTION", ""},
        {2, "SYNTAX ERROR", ""},
        {3, "RETURN WITHOUT GOSUB ERROR", ""},
        {4, "OUT OF DATA ERROR", ""},
        {5, "ILLEGAL FUNCTION CALL ERROR", ""},
        {6, "OVERFLOW ERROR", ""},
        {7, "OUT OF MEMORY ERROR", ""},
        {9, "SUBSCRIPT OUT OF RANGE ERROR", ""},
        {10, "DUPLICATE DEFINITION ERROR", ""},
        {11, "DIVISION BY ZERO ERROR", ""},
        {13, "TYPE MISMATCH ERROR", ""},
        {14, "OUT OF STRING SPACE ERROR", ""},
        {16, "STRING FORMULA TOO COMPLEX ERROR", ""},
        {19, "NO RESUME ERROR", ""},
        {20, "RESUME WITHOUT ERROR ERROR", ""},
        {24, "DEVICE TIMEOUT ERROR", ""},
        {25, "DEVICE FAULT ERROR", ""},
        {27, "THE PRINTER IS OUT OF PAPER", ""},
        {51, "INTERNAL ERROR", ""},
        {54, "BAD FILE MODE", ""},
        {55, "FILE ALREADY OPEN ERROR", ""},
        {58, "FILE ALREADY EXISTS ERROR", ""},
        {61, "THE FLOPPY DISK IS FULL", ""},
        {62, "INPUT PAST END OF FILE ERROR", ""},
        {64, "BAD FILE NAME ERROR", ""},
        {68, "DEVICE IS UNAVAILABLE", ""},
        {70, "PERMISSION TO FILE IS DENIED", ""},
        {72, "DISK MEDIA ERROR", ""},
        {75, "PATH/FILE ACCESS ERROR", ""},
        {76, "PATH NOT FOUND ERROR", ""},
        {53, "INSTALL DISK WITH FILE setup.txt INTO DRIVE A", "FILE NOT FOUND ERROR "},
        {71, " MAKE SURE DRIVE DOOR IS CLOSED & DISK IS INSTALLED CORRECTLY ",
         "DISK ERROR READING DRIVE"},
        {7999, "ERROR NUMBER 7999 CHECK VB MANUAL FOR DESCRIPTION", ""},
        {8000, "COMM ERROR NUMBER: 8000.  CHECK PORT/SETTINGS", ""},
        {8020, "COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS", ""},
        {8021, "ERROR NUMBER 8021 CHECK VB MANUAL FOR DESCRIPTION", ""},
    };
    testing::FakeDialogs dialogs;
    for (const auto& [number, text, title] : cases) {
        show_error_message(dialogs, number, "setup.txt");
        EXPECT_EQ(dialogs.shown.back().text, text);
        EXPECT_EQ(dialogs.shown.back().title, title);
    }
}

TEST(ErrorLogFile, AppendsOneLineAnError) {
    testing::TempDir dir;
    testing::FakeClock clock;
    ErrorLog log(clock, dir.file("log"));
    log.log_comm_error("open_port", 8002);
    clock.time = {2027, 1, 2, 3, 4, 5};
    log.log_comm_error("transmit", 57);
    EXPECT_EQ(testing::read_file(dir.file("log")),
              "11-15-2026, 16:30:05, open_port, ERROR #,  8002 \r\n"
              "01-02-2027, 03:04:05, transmit, ERROR #,  57 \r\n");
}

TEST(ErrorLogFile, IsKeptAndBegunAgainAtTenMegabytes) {
    constexpr std::uintmax_t kFull = 10'000'000;
    testing::TempDir dir;
    testing::FakeClock clock;
    ErrorLog log(clock, dir.file("log"));
    testing::write_file(dir.file("log.OLD"), "older");
    for (const std::uintmax_t size : {kFull - 1, kFull}) {
        testing::write_file(dir.file("log"), "");
        std::filesystem::resize_file(dir.file("log"), size);
        log.log_comm_error("transmit", 57);
        const bool kept = std::filesystem::file_size(dir.file("log.OLD")) == kFull;
        EXPECT_EQ(kept, size == kFull);
        EXPECT_EQ(std::filesystem::file_size(dir.file("log")) < 100, kept);
    }
}

} // namespace
} // namespace pelvan
