// The one place where a run-time error that no routine traps ends up: it ends the event handler
// that it happened in, its message is shown, and the program goes on.
#pragma once

#include <exception>
#include <functional>
#include <new>

#include "platform/run_time_error.h"
#include "serial/errors.h"

namespace pelvan {

class ErrorBoundary {
  public:
    explicit ErrorBoundary(Dialogs& dialogs) : dialogs_(dialogs) {}

    /// Runs a handler; false when a run-time error ended it.
    bool run(const std::function<void()>& handler) {
        try {
            handler();
            return true;
        } catch (const RunTimeError& error) {
            show_error_message(dialogs_, error.number(), error.subject());
        } catch (const std::bad_alloc&) {
            show_error_message(dialogs_, kOutOfMemory);
        } catch (const std::exception&) {
            // A fault of the program's own: better told and survived than the end of a session.
            show_error_message(dialogs_, kInternalError);
        }
        return false;
    }

  private:
    static constexpr int kOutOfMemory = 7;
    static constexpr int kInternalError = 51;
    Dialogs& dialogs_;
};

} // namespace pelvan
