#include "serial/trap.h"

namespace pelvan {

void ErrorTrap::record(const RunTimeError& error) {
    try {
        log_.log_comm_error(routine_, error.number());
    } catch (const RunTimeError& unwritable) {
        show_error_message(dialogs_, unwritable.number(), unwritable.subject());
    }
}

} // namespace pelvan
