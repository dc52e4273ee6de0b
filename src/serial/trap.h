// Where errors of the port are trapped: a routine runs each statement that touches the port through
// `ErrorTrap::run`, which logs a failure under the routine's name and does what the routine's own
// table says for its number.
#pragma once

#include <string>

#include "platform/dialogs.h"
#include "platform/run_time_error.h"
#include "serial/errors.h"

namespace pelvan {

/// What a routine does after a trapped error: the statement again, the next one, or out.
enum class Resume { Retry, Next, Leave };

class ErrorTrap {
  public:
    ErrorTrap(ErrorLog& log, Dialogs& dialogs, std::string routine)
        : log_(log), dialogs_(dialogs), routine_(std::move(routine)) {}

    /// Runs the statement; on a RunTimeError asks `table(error)`. False when the routine must
    /// leave.
    template <class Statement, class Table> bool run(Statement&& statement, Table&& table) {
        for (;;) {
            try {
                statement();
                return true;
            } catch (const RunTimeError& error) {
                record(error);
                switch (handle(error, table)) {
                case Resume::Retry:
                    continue;
                case Resume::Next:
                    return true;
                case Resume::Leave:
                    return false;
                }
            }
        }
    }

    /// Logs an error, and raises none.
    void record(const RunTimeError& error);

  private:
    /// An error inside an error's handling is logged and shown, and ends in the next statement.
    template <class Table> Resume handle(const RunTimeError& error, Table&& table) {
        try {
            return table(error);
        } catch (const RunTimeError& second) {
            record(second);
            show_error_message(dialogs_, second.number(), second.subject());
            return Resume::Next;
        }
    }

    ErrorLog& log_;
    Dialogs& dialogs_;
    std::string routine_;
};

} // namespace pelvan
