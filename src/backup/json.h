// The results of verbs as JSON.
#pragma once

#include <string>
#include <vector>

#include "backup/diff.h"

namespace tarvo_backup {

// [{"path": ..., "old": text or null, "new": text or null}, ...]
std::string toJson(const std::vector<Difference>& differences);

}  // namespace tarvo_backup
