// Texts for run-time error numbers, and the log of trapped errors.
#pragma once

#include <cstdint>
#include <string>

#include "platform/dialogs.h"
#include "platform/tick.h"

namespace pelvan {

/// Shows the general message for a run-time error number in a message box.
///
/// `subject` is the file that an error 53 is about, as far as the caller knows it.
void show_error_message(Dialogs& dialogs, int number, const std::string& subject = {});

class ErrorLog {
  public:
    /// The bare name: the log lies in the process's current directory, wherever that is.
    static constexpr char kFileName[] = "PELVAN5VB.ERR";

    explicit ErrorLog(Clock& clock, std::string path = kFileName)
        : clock_(clock), path_(std::move(path)) {}

    /// Appends one line; opens and closes the file. A log that cannot be written raises its file
    /// error. A log of 10 MB is kept as ".OLD" instead of an older one and begun again.
    void log_comm_error(const std::string& routine, int error_number);
    /// The same for an error in whose handling no other one may be raised. That the log cannot be
    /// written is told, and told again only after it could be written.
    void record(const std::string& routine, int error_number, Dialogs& dialogs);

  private:
    Clock& clock_;
    std::string path_;
    bool unwritable_ = false;
};

} // namespace pelvan
