// The results of verbs as JSON.
#pragma once

#include <string>
#include <vector>

#include "backup/check.h"
#include "backup/diff.h"

namespace tarvo_backup {

// [{"path": ..., "old": text or null, "new": text or null}, ...]
std::string toJson(const std::vector<Difference>& differences);

// [{"line": ..., "column": ..., "severity": "error" or "warning", "path": ..., "message": ...},
// ...]
std::string toJson(const std::vector<Finding>& findings);

}  // namespace tarvo_backup
