// What a restore would do.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/exit_status.h"
#include "backup/asymmetries.h"
#include "backup/diff.h"
#include "backup/document.h"
#include "backup/import_errors.h"
#include "backup/module_bindings.h"
#include "backup/row_changes.h"
#include "backup/sandbox.h"

namespace tarvo_backup {

struct Plan {
    // Why tarvo-backup restore would not begin: what it saves before could not be saved. Empty
    // where it would.
    std::string notBegun;
    // What tarvo-config FILE would end with, and after how many tries.
    app::ExitStatus status = app::ExitStatus::success;
    std::size_t tries = 0;
    std::vector<ImportError> errors;
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

    bool operator==(const Plan&) const = default;

    // Whether a restore would do anything at all.
    [[nodiscard]] bool isEmpty() const {
        return notBegun.empty() && status == app::ExitStatus::success && errors.empty() &&
               changes.empty() && changesUnknown.empty() && rows.empty() && scripts.empty() &&
               renames.empty();
    }
};

// What a restore would do to the headend as it is at one moment, and the headend of that moment.
// While it lives, the door leads into its copy.
class PlannedRestore {
  public:
    // Imports the document into a private copy of the device. Throws Fault, and Interrupted.
    explicit PlannedRestore(const Document& document);

    [[nodiscard]] const Plan& plan() const { return plan_; }
    // The document of the headend before, as verifiedExport() gives it. Empty where the plan says
    // that nothing is begun.
    [[nodiscard]] const std::string& headend() const { return headend_; }
    // Where the copy of one of the databases that an import changes is, as it was before. There is
    // no file where the device had none.
    [[nodiscard]] std::string databaseBefore(const std::string& path) const;

  private:
    [[nodiscard]] std::optional<Document> exported(const char* name);
    void makeBackup();
    [[nodiscard]] std::vector<RowChange> rowsChanged() const;

    Sandbox sandbox_;
    Plan plan_;
    std::string headend_;
};

}  // namespace tarvo_backup
