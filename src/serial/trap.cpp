#include "serial/trap.h"

namespace pelvan {

void ErrorTrap::record(const RunTimeError& error) {
    log_.record(routine_, error.number(), dialogs_);
}

} // namespace pelvan
