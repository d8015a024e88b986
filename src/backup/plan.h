// What a restore would do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/exit_status.h"
#include "backup/asymmetries.h"
#include "backup/diff.h"
#include "backup/document.h"
#include "backup/element_place.h"
#include "backup/module_bindings.h"
#include "backup/row_changes.h"
#include "backup/sandbox.h"

namespace tarvo_backup {

struct PlannedError {
    int code = 0;
    std::string text;
    std::optional<ElementPlace> element;

    bool operator==(const PlannedError&) const = default;
};

struct Plan {
    // What tarvo-config FILE would end with, and after how many tries.
    app::ExitStatus status = app::ExitStatus::success;
    std::size_t tries = 0;
    // Each error once, though every try meets it.
    std::vector<PlannedError> errors;
    // What the import would log as an error besides.
    std::vector<std::string> complaints;
    // Of what an export shows.
    std::vector<Difference> changes;
    // What the device would still show otherwise than the document. Empty after a failed import.
    std::vector<Difference> notTaken;
    // Why the changes cannot be told; empty where they can.
    std::string changesUnknown;
    std::vector<RowChange> rows;
    std::vector<ModuleBinding> modules;
    std::vector<std::string> leftOverModules;  // by MAC
    std::vector<std::string> scripts;
    bool runsNetworkScript = false;
    std::vector<Rename> renames;
    std::vector<const Asymmetry*> asymmetries;

    // Whether a restore would do anything at all.
    [[nodiscard]] bool isEmpty() const {
        return status == app::ExitStatus::success && errors.empty() && changes.empty() &&
               changesUnknown.empty() && rows.empty() && scripts.empty() && renames.empty();
    }
};

// Imports the document into a private copy of the device. Throws Fault, and Interrupted.
Plan makePlan(const Document& document);

}  // namespace tarvo_backup
