#include <gtest/gtest.h>

#include "serial/errors.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan {
namespace {

TEST(ErrorMessages, NumbersWithTitlesAndInsertions) {
    const std::vector<std::tuple<int, std::string, std::string>> cases{
        {1, "ERROR NUMBER 1 CHECK VB MANUAL FOR DESCRIPTION", ""},
        {20, "RESUME WITHOUT ERROR ERROR", ""},
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

} // namespace
} // namespace pelvan
