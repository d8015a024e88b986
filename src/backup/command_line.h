// The command line of tarvo-backup.
#pragma once

#include "backup/console.h"
#include "backup/exit_status.h"

namespace tarvo_backup {

// Runs the verb that the arguments ask for. Faults are reported on the console's `err`.
ExitStatus run(int argc, const char* const* argv, const Console& console);

}  // namespace tarvo_backup
