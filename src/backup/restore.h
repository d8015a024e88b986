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
    // After a failure, which is undone, nothing of this is set.
    std::vector<Difference> notTaken;
    bool isUnconfirmed = false;
};

// Imports the document as tarvo-config does, with copies of the databases at hand; an import that
// fails is undone. With `toConfirm` a process of its own undoes it after that time, or at once when
// this process is killed before it is done. Throws Fault.
Restored restore(const Document& document, const Plan& plan,
                 std::optional<std::chrono::seconds> toConfirm, RestoreLock& lock);

// Puts the databases and files back, and runs again what the restore had run. The caller holds the
// lock. Throws Fault, and leaves the state for another try then.
void undo(RestoreState state);

// Undoes what an ended process has left. Gives whether there was something. The caller holds the
// lock.
bool undoAbandoned();

}  // namespace tarvo_backup
