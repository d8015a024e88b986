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

constexpr std::string_view kBlanks = " \t\r\n";

// How long the user and password are that an address begins with, in front of its "@". Without a
// colon among them they may be a token, or the user of a mail address.
std::size_t credentialsLength(std::string_view address, bool mayBeToken) {
    const std::string_view authority = address.substr(0, address.find_first_of("/?# \t\r\n"));
    const std::size_t end = authority.rfind('@');
    const bool isMeant =
        end != std::string_view::npos &&
        (mayBeToken || authority.substr(0, end).find(':') != std::string_view::npos);
    return isMeant ? end : 0;
}

// In the tree that is printed stands behind each NUL what the library itself would write otherwise
// than it was read: a character that only a reference gives, or where a text between other nodes
// begins or ends, around which it puts line feeds and tabs.
constexpr char kEscape = '\0';
constexpr char kBegins = 'B';
constexpr char kEnds = 'E';

// Where all of it is white space, a parse takes none of it, unless by a reference.
std::string escaped(std::string_view text, bool mayBeBlank) {
    const bool isBlank = text.find_first_not_of(kBlanks) == std::string_view::npos;
    std::string result;
    for (const char character : text) {
        if (character == kEscape || (result.empty() && isBlank && !mayBeBlank)) {
            result += kEscape;
        }
        result += character;
    }
    return result;
}

std::string unescaped(std::string_view printed) {
    constexpr std::string_view kIndenting = "\n\t";
    std::string text;
    for (std::size_t at = 0; at < printed.size(); ++at) {
        if (printed[at] != kEscape) {
            text += printed[at];
            continue;
        }
        const char code = printed[++at];
        if (code == kBegins) {
            text.erase(text.find_last_not_of(kIndenting) + 1);
        } else if (code == kEnds) {
            at = printed.find_first_not_of(kIndenting, at + 1);
            if (printed[at] == kEscape) {
                text += "<!---->";  // another text begins
                at += 2;
            }
            --at;
        } else {
            text += "&#" + std::to_string(static_cast<int>(code)) + ";";
        }
    }
    return text;
}

void setValue(document::XmlDocument& tree, rapidxml::xml_base<char>& item,
              const std::string& value) {
    item.value(tree.allocate_string(value.c_str(), value.size() + 1), value.size());
}

void maskCredentials(document::XmlDocument& tree, XmlNode& node) {
    for (auto* attribute = node.first_attribute(); attribute != nullptr;
         attribute = attribute->next_attribute()) {
        const std::string_view text(attribute->value(), attribute->value_size());
        setValue(tree, *attribute, escaped(withoutCredentials(text), true));
    }
    const std::string text = withoutCredentials({node.value(), node.value_size()});
    if (node.type() != rapidxml::node_data) {
        setValue(tree, node, text);
        return;
    }
    const XmlNode& parent = *node.parent();
    const bool isAlone = parent.first_node() == parent.last_node();
    const std::string written = escaped(text, false);
    setValue(
        tree, node,
        isAlone ? written : std::string{kEscape, kBegins} + written + std::string{kEscape, kEnds});
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
    constexpr std::string_view kBeforeHost = "://";
    std::string masked;
    bool mayBeToken = false;
    while (!text.empty()) {
        if (const std::size_t length = credentialsLength(text, mayBeToken); length != 0) {
            masked += kMask;
            text.remove_prefix(length);
        }
        // On to the next host or word.
        std::size_t next = 0;
        for (mayBeToken = false; next < text.size() && !mayBeToken; ++next) {
            mayBeToken = text.substr(next).starts_with(kBeforeHost);
            if (kBlanks.find(text[next]) != std::string_view::npos) {
                ++next;
                break;
            }
        }
        next += mayBeToken ? kBeforeHost.size() - 1 : 0;
        masked += text.substr(0, next);
        text.remove_prefix(next);
    }
    return masked;
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
        text += unescaped(document::printed(*node));
    }
    return text;
}

}  // namespace tarvo_backup
