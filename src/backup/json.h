// The results of verbs as JSON.
#pragma once

#include <string>
#include <vector>

#include "backup/backup_folder.h"
#include "backup/check.h"
#include "backup/diff.h"
#include "backup/overview.h"
#include "backup/plan.h"
#include "backup/restore_report.h"
#include "backup/verified_export.h"

namespace tarvo_backup {

// [{"path": ..., "old": text or null, "new": text or null}, ...]
std::string toJson(const std::vector<Difference>& differences);

// [{"line": ..., "column": ..., "severity": "error" or "warning", "path": ..., "message": ...},
// ...]
std::string toJson(const std::vector<Finding>& findings);

// {"title": ..., "sections": [{"title": ..., "fields": [{"label": ..., "text": ...}, ...],
//   "tables": [{"title": ..., "columns": [...], "rows": [[...], ...]}, ...]}, ...]}
std::string toJson(const Overview& overview);

// {"status": of tarvo-config, "tries": ..., "errors": [...], ...}, as tarvo-backup(8) lists it.
std::string toJson(const Plan& plan);

// {"outcome": "restored", "refused", "declined" or "undone", "plan": {...}, ...}
std::string toJson(const RestoreReport& report);

// {"outcome": "confirmed", "undone" or "nothing", "document": name or null, ...}
std::string toJson(const Ending& ending);

// {"file": ..., "unchanged": ..., "removed": [...], "refusals": as errors of a plan, "notTried":
// why or null}
std::string toJson(const Saved& saved, const TriedExport& tried);

}  // namespace tarvo_backup
