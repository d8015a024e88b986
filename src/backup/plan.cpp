#include "backup/plan.h"

#include <sqlite3.h>
#include <syslog.h>

#include <algorithm>

#include "backup/database_copies.h"
#include "backup/device_files.h"
#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/module_bindings.h"
#include "backup/progress.h"
#include "backup/tree.h"
#include "backup/verified_export.h"
#include "command/system_actions.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

namespace {

// The lines of the import's log that tell of a fault: those that it writes itself, which all begin
// alike, and those of the databases.
std::vector<std::string> complaintsIn(const std::vector<LogLine>& log) {
    constexpr std::string_view kPrefix = "r9::: ";
    std::vector<std::string> complaints;
    for (const auto& [priority, text] : log) {
        const bool isOfImport = priority == (LOG_NEWS | LOG_ERR);
        if (!isOfImport && !text.starts_with("[ERROR_DB]")) {
            continue;
        }
        std::string complaint = isOfImport ? text.substr(kPrefix.size()) : text;
        complaint.erase(complaint.find_last_not_of('\n') + 1);
        if (!complaint.starts_with("Error ") &&
            std::find(complaints.begin(), complaints.end(), complaint) == complaints.end()) {
            complaints.push_back(std::move(complaint));
        }
    }
    return complaints;
}

bool isNetworkScript(const std::string& command) {
    return command == tarvo_remote_control::kNetworkScript;
}

}  // namespace

PlannedRestore::PlannedRestore(const Document& document) {
    makeBackup();
    loadIdentity();
    beginStep("Exporting the headend as it is");
    const auto before =
        headend_.empty() ? exported("before") : std::optional(Document("before", headend_));
    for (const char* database : kChangedDatabases) {
        copyOwn({.from = sandbox_.mapped(database), .to = databaseBefore(database)});
    }
    {
        const OutputMuted muted;
        ModuleBindings bindings = bindModules(document);
        plan_.modules = std::move(bindings.modules);
        plan_.leftOverModules = std::move(bindings.leftOver);
    }

    beginStep("Importing into a copy");
    plan_.status = importIn(sandbox_, document.text());
    const Traffic traffic = sandbox_.traffic();
    plan_.tries = traffic.tries;
    plan_.errors = importErrors(document, traffic.errors);
    plan_.complaints = complaintsIn(traffic.log);
    plan_.scripts = traffic.scripts;
    plan_.runsNetworkScript =
        std::any_of(plan_.scripts.begin(), plan_.scripts.end(), isNetworkScript);
    plan_.renames = traffic.renames;
    beginStep("Comparing");
    plan_.rows = rowsChanged();
    if (before) {
        if (const auto after = exported("after")) {
            plan_.changes = diff(*before, *after);
            if (plan_.status == app::ExitStatus::success) {
                plan_.notTaken = diff(document, *after);
            }
        }
    }
    plan_.asymmetries = asymmetriesMetBy(document, plan_);
}

std::string PlannedRestore::databaseBefore(const std::string& path) const {
    return sandbox_.mapped(path) + ".before";
}

// A disk that is full is nothing that a plan tells, it ends it.
void PlannedRestore::makeBackup() {
    try {
        headend_ = verifiedExportIn(sandbox_);
    } catch (const Fault& fault) {
        if (fault.status() != ExitStatus::cannotRead) {
            throw;
        }
        plan_.notBegun = fault.what();
    }
}

std::optional<Document> PlannedRestore::exported(const char* name) {
    try {
        return Document(name, exportIn(sandbox_));
    } catch (const Fault& fault) {
        if (fault.status() == ExitStatus::cannotWrite) {
            throw;
        }
        plan_.changesUnknown = fault.what();
        return std::nullopt;
    }
}

std::vector<RowChange> PlannedRestore::rowsChanged() const {
    std::vector<RowChange> changes;
    for (const char* database : kChangedDatabases) {
        try {
            auto more = rowChanges(databaseBefore(database), sandbox_.mapped(database));
            std::move(more.begin(), more.end(), std::back_inserter(changes));
        } catch (const DatabaseFault& fault) {
            // Not there, or no database: the import could not change it either.
            if (fault.code() != SQLITE_CANTOPEN && fault.code() != SQLITE_NOTADB) {
                throw Fault(fault.status(), std::string(database) + ": " + fault.what());
            }
        }
    }
    return changes;
}

}  // namespace tarvo_backup
