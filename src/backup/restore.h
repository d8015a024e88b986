// Restoring a document so that it can be undone.
#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "backup/document.h"
#include "backup/plan.h"
#include "backup/restore_state.h"

namespace tarvo_backup {

struct Restored {
    app::ExitStatus status = app::ExitStatus::success;
    // What the headend shows otherwise than the document. Empty after a failure, which is undone.
    std::vector<Difference> notTaken = {};
    // Why that could not be found out; empty when it was.
    std::string notCompared = {};
    std::optional<Undone> undone = {};
};

// Keeps copies of the databases and files that the restore changes, as they were when it was
// planned. Gives the state with which it can begin. The caller holds the lock. Throws Fault; no
// copy is left then.
RestoreState keepForUndo(const Document& document, const PlannedRestore& planned);

// Imports the document as tarvo-config does; an import that fails is undone. `state` is what
// keepForUndo() gave, and the door is open to the device again. With `toConfirm` a process of its
// own undoes it after that time, or at once when this process is killed before it is done. Throws
// Fault; the restore is undone by the next call then, if it was begun.
Restored restore(const Document& document, RestoreState state,
                 std::optional<std::chrono::seconds> toConfirm, RestoreLock& lock);

// Puts the databases and files back, and runs again what the restore had run. What is there is
// saved among the backups before: as a document, or the databases themselves where none can be
// made. The caller holds the lock. Throws Fault, which says so when it is still to be undone.
Undone undo(RestoreState state);

// Undoes what an ended process has left, if there is something. The caller holds the lock.
std::optional<Undone> undoAbandoned();

}  // namespace tarvo_backup
