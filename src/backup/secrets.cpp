#include "backup/secrets.h"

#include <algorithm>
#include <vector>

#include "command/result_document.h"
#include "mapping/document_tree.h"

namespace tarvo_backup {

namespace {

std::vector<const char*> secretNames(const mapping::Element& element) {
    std::vector<const char*> names;
    mapping::forEachChild(element, [&names](const mapping::Element& child) {
        if (child.secret) {
            names.push_back(child.name);
        }
        const auto more = secretNames(child);
        names.insert(names.end(), more.begin(), more.end());
    });
    return names;
}

void maskCredentials(document::XmlDocument& tree, XmlNode& node) {
    const std::string_view text(node.value(), node.value_size());
    if (const std::string masked = withoutCredentials(text); masked != text) {
        node.value(tree.allocate_string(masked.c_str(), masked.size() + 1), masked.size());
    }
}

void mask(document::XmlDocument& tree, XmlNode& node) {
    if (isSecret(node.name())) {
        node.remove_all_attributes();
        if (node.first_node() != nullptr) {
            node.remove_all_nodes();
            node.value(kMask);
        }
        return;
    }
    maskCredentials(tree, node);
    for (XmlNode& child : document::childrenOf(node)) {
        mask(tree, child);
    }
}

}  // namespace

bool isSecret(std::string_view name) {
    static const std::vector<const char*> kNames = secretNames(mapping::kBackup);
    const std::string wanted(name);
    return std::any_of(kNames.begin(), kNames.end(), [&wanted](const char* each) {
        return document::sameText(each, wanted.c_str());
    });
}

std::string withoutCredentials(std::string_view text) {
    constexpr std::string_view kBefore = "://";
    std::string masked;
    for (std::size_t at = text.find(kBefore); at != std::string_view::npos;
         at = text.find(kBefore)) {
        masked += text.substr(0, at + kBefore.size());
        text.remove_prefix(at + kBefore.size());
        const std::string_view authority = text.substr(0, text.find_first_of("/?# \t\r\n"));
        if (const std::size_t end = authority.rfind('@'); end != std::string_view::npos) {
            masked += kMask;
            text.remove_prefix(end);
        }
    }
    return masked.append(text);
}

std::string redacted(const Document& document) {
    document::XmlDocument tree;
    document::parseCopy(tree, document.text());
    mask(tree, tree);
    if (!document.isRedacted()) {
        XmlNode* mark = tree.allocate_node(rapidxml::node_element, Document::kRedacted);
        while (XmlNode* node = tree.first_node()) {
            tree.remove_node(node);
            mark->append_node(node);
        }
        tree.append_node(mark);
    }
    std::string text = std::string(tarvo_remote_control::kXmlDeclaration) + "\n";
    for (const XmlNode* node = tree.first_node(); node != nullptr; node = node->next_sibling()) {
        text += document::printed(*node);
    }
    return text;
}

}  // namespace tarvo_backup
