#include "backup/findings.h"

#include <algorithm>
#include <utility>

#include "backup/utf8.h"

namespace tarvo_backup {

std::string inQuotes(std::string_view text) { return "'" + onOneLine(shortened(text)) + "'"; }

std::vector<Finding> Findings::byPosition() && {
    std::stable_sort(list_.begin(), list_.end(), [](const Finding& a, const Finding& b) {
        return std::pair(a.position.line, a.position.column) <
               std::pair(b.position.line, b.position.column);
    });
    return std::move(list_);
}

}  // namespace tarvo_backup
