#include "backup/tree.h"

#include "backup/utf8.h"
#include "backup/values.h"

namespace tarvo_backup {

using mapping::Element;

bool isElement(const XmlNode& node) { return node.type() == rapidxml::node_element; }

const XmlNode* elementFrom(const XmlNode* node) {
    while (node != nullptr && !isElement(*node)) {
        node = node->next_sibling();
    }
    return node;
}

const Element* rowOf(const Element* parent, const XmlNode& node) {
    return parent == nullptr ? nullptr : mapping::childOf(*parent, node.name());
}

std::string identityOf(const Element& entry, const XmlNode& node) {
    if (entry.identity) {
        return canonicalText(&entry, node);
    }
    std::string identity;
    for (const Element& row : entry.children) {
        const XmlNode* child = row.identity ? document::childNamed(node, row.name) : nullptr;
        if (child != nullptr) {
            identity += identity.empty() ? "" : ",";
            identity += row.name;
            identity += '=';
            identity += canonicalText(&row, *child);
        }
    }
    return identity;
}

const char* shownName(const Element* row, const XmlNode& node) {
    return row == nullptr ? node.name() : row->name;
}

std::string pathText(const Path& path) {
    constexpr std::size_t kLongest = 1000;
    std::string text;
    for (const Step& step : path) {
        text += text.empty() ? "" : "/";
        text += shortened(step.name);
        if (step.identity != nullptr) {
            text += '[';
            text += step.identity->empty() ? std::to_string(step.place) : shortened(*step.identity);
            text += ']';
        }
    }
    return shortened(text, kLongest);
}

}  // namespace tarvo_backup
