#include "backup/element_place.h"

#include <algorithm>
#include <vector>

#include "backup/tree.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

using mapping::Element;

namespace {

std::size_t placeInList(const XmlNode& node) {
    std::size_t place = 1;
    for (const XmlNode* before = firstElement(*node.parent()); before != &node;
         before = nextElement(*before)) {
        ++place;
    }
    return place;
}

}  // namespace

ElementPlace placeOf(const Document& document, const XmlNode& node) {
    // From below `configuration` or `backup`, which paths leave out.
    std::vector<const XmlNode*> nodes;
    for (const XmlNode* each = &node; each->parent() != nullptr; each = each->parent()) {
        if (isElement(*each)) {
            nodes.push_back(each);
        }
    }
    std::reverse(nodes.begin(), nodes.end());
    Path path;
    std::vector<std::string> identities(nodes.size());
    const Element* row = &mapping::kBackup;
    for (std::size_t depth = 0; depth < nodes.size(); ++depth) {
        const XmlNode& each = *nodes[depth];
        if (&each == document.backup()) {
            continue;
        }
        const bool isEntry = row != nullptr && row->kind == mapping::Kind::list;
        row = rowOf(row, each);
        if (&each == document.configuration()) {
            continue;
        }
        Step step{.name = shownName(row, each)};
        if (isEntry) {
            identities[depth] = row == nullptr ? "" : identityOf(*row, each);
            step.identity = &identities[depth];
            step.place = placeInList(each);
        }
        path.push_back(step);
    }
    return {.path = pathText(path), .position = document.positionOf(node)};
}

}  // namespace tarvo_backup
