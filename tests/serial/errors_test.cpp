#include "serial/errors.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "support/cases.h"
#include "support/fake_dialogs.h"
#include "support/fake_time.h"
#include "support/temp_dir.h"

namespace pelvan::testing {

TEST(ErrorMessages, NumbersWithTitlesAndInsertions) {
    FakeDialogs dialogs;
    for (const auto& [number, text] :
         cases("1->ERROR NUMBER 1 CHECK VB MANUAL FOR DESCRIPTION|2->SYNTAX ERROR|"
               "3->RETURN WITHOUT GOSUB ERROR|4->OUT OF DATA ERROR|5->ILLEGAL FUNCTION CALL ERROR|"
               "6->OVERFLOW ERROR|7->OUT OF MEMORY ERROR|9->SUBSCRIPT OUT OF RANGE ERROR|"
               "10->DUPLICATE DEFINITION ERROR|11->DIVISION BY ZERO ERROR|13->TYPE MISMATCH ERROR|"
               "14->OUT OF STRING SPACE ERROR|16->STRING FORMULA TOO COMPLEX ERROR|"
               "19->NO RESUME ERROR|20->RESUME WITHOUT ERROR ERROR|24->DEVICE TIMEOUT ERROR|"
               "25->DEVICE FAULT ERROR|27->THE PRINTER IS OUT OF PAPER|51->INTERNAL ERROR|"
               "54->BAD FILE MODE|55->FILE ALREADY OPEN ERROR|58->FILE ALREADY EXISTS ERROR|"
               "61->THE FLOPPY DISK IS FULL|62->INPUT PAST END OF FILE ERROR|"
               "64->BAD FILE NAME ERROR|68->DEVICE IS UNAVAILABLE|"
               "70->PERMISSION TO FILE IS DENIED|72->DISK MEDIA ERROR|75->PATH/FILE ACCESS ERROR|"
               "76->PATH NOT FOUND ERROR|"
               "53->FILE NOT FOUND ERROR :INSTALL DISK WITH FILE setup.txt INTO DRIVE A|"
               "71->DISK ERROR READING DRIVE:"
               " MAKE SURE DRIVE DOOR IS CLOSED & DISK IS INSTALLED CORRECTLY |"
               "7999->ERROR NUMBER 7999 CHECK VB MANUAL FOR DESCRIPTION|"
               "8000->COMM ERROR NUMBER: 8000.  CHECK PORT/SETTINGS|"
               "8020->COMM ERROR NUMBER: 8020.  CHECK PORT/SETTINGS|"
               "8021->ERROR NUMBER 8021 CHECK VB MANUAL FOR DESCRIPTION")) {
        show_error_message(dialogs, std::stoi(number), "setup.txt");
        const auto& box = dialogs.shown.back();
        EXPECT_EQ(box.title + (box.title.empty() ? "" : ":") + box.text, text);
    }
}

TEST(ErrorLogFile, AppendsOneLineAnErrorAndBeginsAgainAtTenMegabytes) {
    const TempDir dir;
    const std::string path = dir.file("log"), old = dir.file("log.OLD");
    write_file(old, "older");
    FakeClock clock;
    ErrorLog log(clock, path);
    log.log_comm_error("open_port", 8002);
    clock.time = {2027, 1, 2, 3, 4, 5};
    const std::string second = "01-02-2027, 03:04:05, transmit, ERROR #,  57 \r\n";
    log.log_comm_error("transmit", 57);
    EXPECT_EQ(read_file(path), "11-15-2026, 16:30:05, open_port, ERROR #,  8002 \r\n" + second);
    std::filesystem::resize_file(path, 9'999'999);
    log.log_comm_error("transmit", 57);
    EXPECT_EQ(read_file(old), "older");
    std::filesystem::resize_file(path, 10'000'000);
    log.log_comm_error("transmit", 57);
    EXPECT_EQ(std::filesystem::file_size(old), 10'000'000U);
    EXPECT_EQ(read_file(path), second);
}

TEST(ErrorLogFile, ALogThatCannotBeWrittenIsToldOnceUntilItCan) {
    const TempDir dir;
    const std::string path = dir.file("folder/log");
    FakeClock clock;
    FakeDialogs dialogs;
    ErrorLog log(clock, path);
    for (const bool may : {false, true, false}) {
        if (may)
            std::filesystem::create_directory(dir.file("folder"));
        else
            std::filesystem::remove_all(dir.file("folder"));
        for (int i = 0; i < 2; ++i)
            log.record("transmit", 57, dialogs);
    }
    ASSERT_EQ(dialogs.shown.size(), 2U);
    EXPECT_EQ(dialogs.shown[0].text,
              "The error log " + path + " cannot be written: PATH NOT FOUND ERROR.");
}

} // namespace pelvan::testing
