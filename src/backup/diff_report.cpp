#include "backup/diff_report.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace tarvo_backup {

namespace {

// The section, or the entry of a list of the first level.
std::string_view groupOf(const Difference& difference) {
    const std::string_view path = difference.path;
    const std::size_t first = path.find('/');
    if (first == std::string_view::npos) {
        return path;
    }
    // A slash inside brackets belongs to an identity.
    std::size_t depth = 0;
    for (std::size_t place = first + 1; place < path.size(); ++place) {
        depth += path[place] == '[' ? 1U : 0U;
        if (path[place] == ']' && depth > 0 && --depth == 0) {
            return path.substr(0, place + 1);
        }
        if (path[place] == '/' && depth == 0) {
            break;
        }
    }
    return path.substr(0, first);
}

std::string shown(const std::optional<std::string>& text) {
    if (!text) {
        return "(none)";
    }
    return text->empty() ? "\"\"" : onOneLine(*text);
}

std::string line(const Difference& difference, const Painter& paint) {
    const std::string path = onOneLine(difference.path) + ": ";
    const auto& [_, oldText, newText, holdsElements] = difference;
    const Style style = !oldText ? Style::added : !newText ? Style::removed : Style::changed;
    if (holdsElements) {
        return path + paint(style, oldText ? "removed" : "added");
    }
    return path + paint(Style::removed, shown(oldText)) + " -> " +
           paint(Style::added, shown(newText));
}

}  // namespace

void printDifferences(const std::vector<Difference>& differences, const Painter& paint,
                      std::ostream& out) {
    for (auto first = differences.begin(); first != differences.end();) {
        const std::string_view group = groupOf(*first);
        const auto end = std::find_if(
            first, differences.end(),
            [group](const Difference& difference) { return groupOf(difference) != group; });
        const auto count = end - first;
        out << (first == differences.begin() ? "" : "\n")
            << paint(Style::heading, onOneLine(group) + ": " + std::to_string(count) +
                                         (count == 1 ? " difference" : " differences"))
            << '\n';
        for (; first != end; ++first) {
            out << line(*first, paint) << '\n';
        }
    }
}

}  // namespace tarvo_backup
