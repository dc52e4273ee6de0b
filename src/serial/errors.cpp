#include "serial/errors.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

#include "platform/run_time_error.h"
#include "platform/text_file.h"
#include "text/date_time.h"
#include "text/numbers.h"

namespace pelvan {
namespace {

/// A port that is missing over night logs an error a second and row.
constexpr std::uintmax_t kMaxLogBytes = 10'000'000;

struct ErrorText {
    int number;
    const char* text;
};

// The texts are fixed: upper case, outer spaces and the doubled "ERROR ERROR" included.
constexpr std::array kErrorTexts{
    ErrorText{2, "SYNTAX ERROR"},
    ErrorText{3, "RETURN WITHOUT GOSUB ERROR"},
    ErrorText{4, "OUT OF DATA ERROR"},
    ErrorText{5, "ILLEGAL FUNCTION CALL ERROR"},
    ErrorText{6, "OVERFLOW ERROR"},
    ErrorText{7, "OUT OF MEMORY ERROR"},
    ErrorText{9, "SUBSCRIPT OUT OF RANGE ERROR"},
    ErrorText{10, "DUPLICATE DEFINITION ERROR"},
    ErrorText{11, "DIVISION BY ZERO ERROR"},
    ErrorText{13, "TYPE MISMATCH ERROR"},
    ErrorText{14, "OUT OF STRING SPACE ERROR"},
    ErrorText{16, "STRING FORMULA TOO COMPLEX ERROR"},
    ErrorText{19, "NO RESUME ERROR"},
    ErrorText{20, "RESUME WITHOUT ERROR ERROR"},
    ErrorText{24, "DEVICE TIMEOUT ERROR"},
    ErrorText{25, "DEVICE FAULT ERROR"},
    ErrorText{27, "THE PRINTER IS OUT OF PAPER"},
    ErrorText{51, "INTERNAL ERROR"},
    ErrorText{54, "BAD FILE MODE"},
    ErrorText{55, "FILE ALREADY OPEN ERROR"},
    ErrorText{58, "FILE ALREADY EXISTS ERROR"},
    ErrorText{61, "THE FLOPPY DISK IS FULL"},
    ErrorText{62, "INPUT PAST END OF FILE ERROR"},
    ErrorText{64, "BAD FILE NAME ERROR"},
    ErrorText{68, "DEVICE IS UNAVAILABLE"},
    ErrorText{70, "PERMISSION TO FILE IS DENIED"},
    ErrorText{72, "DISK MEDIA ERROR"},
    ErrorText{75, "PATH/FILE ACCESS ERROR"},
    ErrorText{76, "PATH NOT FOUND ERROR"},
};

std::string general_text(int number) {
    const auto* found =
        std::find_if(kErrorTexts.begin(), kErrorTexts.end(),
                     [number](const ErrorText& row) { return row.number == number; });
    if (found != kErrorTexts.end()) return found->text;
    if (number >= 8000 && number <= 8020)
        return "COMM ERROR NUMBER: " + std::to_string(number) + ".  " + "CHECK PORT/SETTINGS";
    return "ERROR NUMBER " + std::to_string(number) + " CHECK VB MANUAL FOR DESCRIPTION";
}

} // namespace

void show_error_message(Dialogs& dialogs, int number, const std::string& subject) {
    if (number == 53)
        dialogs.message_box("INSTALL DISK WITH FILE " + subject + " INTO DRIVE A",
                            "FILE NOT FOUND ERROR ");
    else if (number == 71)
        dialogs.message_box(" MAKE SURE DRIVE DOOR IS CLOSED & DISK IS INSTALLED CORRECTLY ",
                            "DISK ERROR READING DRIVE");
    else
        dialogs.message_box(general_text(number));
}

void ErrorLog::log_comm_error(const std::string& routine, int error_number) {
    std::error_code error;
    const auto size = std::filesystem::file_size(path_, error);
    // A log that cannot be renamed goes on growing: no entry is lost for it.
    if (!error && size >= kMaxLogBytes) std::filesystem::rename(path_, path_ + ".OLD", error);
    const LocalTime now = clock_.now();
    append_line(path_, date_text(now) + ", " + time_text(now) + ", " + routine + ", " +
                           "ERROR #, " + signed_number(error_number) + " ");
}

void ErrorLog::record(const std::string& routine, int error_number, Dialogs& dialogs) {
    try {
        log_comm_error(routine, error_number);
        unwritable_ = false;
    } catch (const RunTimeError& failure) {
        if (std::exchange(unwritable_, true)) return;
        std::error_code error;
        const auto place = std::filesystem::absolute(path_, error);
        dialogs.message_box("The error log " + (error ? path_ : place.string()) +
                            " cannot be written: " + general_text(failure.number()) + ".");
    }
}

} // namespace pelvan
