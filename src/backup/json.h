// The results of verbs as JSON.
#pragma once

#include <string>
#include <vector>

#include "backup/check.h"
#include "backup/diff.h"
#include "backup/overview.h"

namespace tarvo_backup {

// [{"path": ..., "old": text or null, "new": text or null}, ...]
std::string toJson(const std::vector<Difference>& differences);

// [{"line": ..., "column": ..., "severity": "error" or "warning", "path": ..., "message": ...},
// ...]
std::string toJson(const std::vector<Finding>& findings);

// {"title": ..., "sections": [{"title": ..., "fields": [{"label": ..., "text": ...}, ...],
//   "tables": [{"title": ..., "columns": [...], "rows": [[...], ...]}, ...]}, ...]}
std::string toJson(const Overview& overview);

}  // namespace tarvo_backup
