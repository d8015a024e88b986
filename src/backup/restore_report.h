// What the verbs restore, confirm and undo tell.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/exit_status.h"
#include "backup/diff.h"
#include "backup/plan.h"
#include "backup/restore_record.h"

namespace tarvo_backup {

enum class RestoreOutcome {
    restored,
    refused,   // by the plan; nothing was begun
    declined,  // by whoever was asked
    undone,    // the import failed
};

struct RestoreReport {
    RestoreOutcome outcome = RestoreOutcome::refused;
    // An earlier restore that had not come to its end was undone first.
    std::optional<Undone> undoneEarlier;
    Plan plan;
    // The backup from before. Empty when nothing was begun, as what follows.
    std::string backup;
    std::optional<app::ExitStatus> importStatus;
    std::vector<Difference> notTaken;
    // Why that cannot be told; empty where it can.
    std::string notCompared;
    std::optional<int> confirmMinutes;
};

// How a restore that was to be confirmed has ended.
struct Ending {
    enum class Outcome { nothing, confirmed, undone };

    Outcome outcome = Outcome::nothing;
    std::string document;  // empty for nothing
    std::optional<Undone> undone;
};

}  // namespace tarvo_backup
