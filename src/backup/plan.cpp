#include "backup/plan.h"

#include <sqlite3.h>
#include <syslog.h>

#include <algorithm>

#include "backup/device_files.h"
#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/module_bindings.h"
#include "backup/progress.h"
#include "backup/tree.h"
#include "command/system_actions.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

using tarvo_remote_control::ErrorCode;

namespace {

// The import has read the same text into the same tree.
const XmlNode& nodeAt(const XmlNode& tree, const Place& place) {
    const XmlNode* node = &tree;
    for (const std::size_t index : place) {
        node = node->first_node();
        for (std::size_t skipped = 0; skipped < index; ++skipped) {
            node = node->next_sibling();
        }
    }
    return *node;
}

// Errors that are of all modules, not of the one that was read last.
bool isOfAllModules(ErrorCode code) {
    return code == ErrorCode::moduleNotFound || code == ErrorCode::moduleAmount;
}

const XmlNode* elementOfError(const Document& document, const RecordedError& error) {
    // Follows the error that ended the import, and says no more.
    if (!error.place || error.code == ErrorCode::setConfiguration) {
        return nullptr;
    }
    const XmlNode* node = &nodeAt(document.tree(), *error.place);
    while (isOfAllModules(error.code) && !document::hasName(*node, "modules")) {
        node = node->parent();
    }
    return node;
}

std::vector<PlannedError> plannedErrors(const Document& document,
                                        const std::vector<RecordedError>& errors) {
    std::vector<PlannedError> planned;
    for (const RecordedError& error : errors) {
        PlannedError one{.code = number(error.code), .text = error.text, .element = std::nullopt};
        if (const XmlNode* node = elementOfError(document, error)) {
            one.element = placeOf(document, *node);
        }
        if (std::find(planned.begin(), planned.end(), one) == planned.end()) {
            planned.push_back(std::move(one));
        }
    }
    return planned;
}

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

std::optional<Document> exported(Sandbox& sandbox, const char* name, std::string& reason) {
    try {
        return Document(name, exportIn(sandbox));
    } catch (const Fault& fault) {
        reason = fault.what();
        return std::nullopt;
    }
}

struct DatabasePair {
    std::string before;
    std::string after;
};

std::vector<DatabasePair> keepDatabases(const Sandbox& sandbox) {
    std::vector<DatabasePair> pairs;
    std::vector<CopyJob> jobs;
    for (const char* database : kChangedDatabases) {
        const std::string copy = sandbox.mapped(database);
        pairs.push_back({.before = copy + ".before", .after = copy});
        jobs.push_back({copy, pairs.back().before});
    }
    takeCopies(jobs);
    return pairs;
}

std::vector<RowChange> changesBetween(const std::vector<DatabasePair>& databases) {
    std::vector<RowChange> changes;
    for (const auto& [before, after] : databases) {
        try {
            auto more = rowChanges(before, after);
            std::move(more.begin(), more.end(), std::back_inserter(changes));
        } catch (const DatabaseFault& fault) {
            // Not there, or no database: the import could not change it either.
            if (fault.code() != SQLITE_CANTOPEN && fault.code() != SQLITE_NOTADB) {
                throw;
            }
        }
    }
    return changes;
}

bool isNetworkScript(const std::string& command) {
    return command == tarvo_remote_control::kNetworkScript;
}

}  // namespace

Plan makePlan(const Document& document) {
    beginStep("Copying the databases");
    Sandbox sandbox;
    loadIdentity();
    beginStep("Exporting the headend as it is");
    Plan plan;
    const auto before = exported(sandbox, "before", plan.changesUnknown);
    const auto databases = keepDatabases(sandbox);
    const ModuleBindings bindings = bindModules(document);
    plan.modules = bindings.modules;
    plan.leftOverModules = bindings.leftOver;

    beginStep("Importing into a copy");
    plan.status = importIn(sandbox, document.text());
    const Traffic traffic = sandbox.traffic();
    plan.tries = traffic.tries;
    plan.errors = plannedErrors(document, traffic.errors);
    plan.complaints = complaintsIn(traffic.log);
    plan.scripts = traffic.scripts;
    plan.runsNetworkScript = std::any_of(plan.scripts.begin(), plan.scripts.end(), isNetworkScript);
    plan.renames = traffic.renames;
    beginStep("Comparing");
    plan.rows = changesBetween(databases);
    if (before) {
        if (const auto after = exported(sandbox, "after", plan.changesUnknown)) {
            plan.changes = diff(*before, *after);
            if (plan.status == app::ExitStatus::success) {
                plan.notTaken = diff(document, *after);
            }
        }
    }
    plan.asymmetries = asymmetriesMetBy(document, plan);
    return plan;
}

}  // namespace tarvo_backup
