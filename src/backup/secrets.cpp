#include "backup/secrets.h"

#include <algorithm>
#include <iterator>

#include "command/result_document.h"

namespace tarvo_backup {

namespace {

void mask(XmlNode& node) {
    if (isSecret(node.name()) && (node.first_node() != nullptr || node.value_size() != 0)) {
        node.remove_all_nodes();
        node.value(kMask);
        return;
    }
    for (XmlNode& child : document::childrenOf(node)) {
        mask(child);
    }
}

}  // namespace

bool isSecret(std::string_view name) {
    const std::string wanted(name);
    return std::any_of(
        std::begin(kSecretElements), std::end(kSecretElements),
        [&wanted](const char* each) { return document::sameText(each, wanted.c_str()); });
}

std::string redacted(const Document& document) {
    document::XmlDocument tree;
    document::parseCopy(tree, document.text());
    mask(tree);
    XmlNode* mark = tree.allocate_node(rapidxml::node_element, Document::kRedacted);
    while (XmlNode* node = tree.first_node()) {
        tree.remove_node(node);
        mark->append_node(node);
    }
    // A document that is redacted already stays as it is.
    XmlNode* only = mark->first_node();
    const bool isMarked = only != nullptr && only == mark->last_node() &&
                          std::string_view(only->name()) == Document::kRedacted;
    return std::string(tarvo_remote_control::kXmlDeclaration) + "\n" +
           document::printed(isMarked ? *only : *mark);
}

}  // namespace tarvo_backup
