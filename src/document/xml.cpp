#include "document/xml.h"

#include <strings.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <rapidxml/rapidxml_print.hpp>

#include "document/nesting.h"
#include "text/to_int.h"

namespace document {

namespace {

// "line:column: reason". Counted in the text as it was, because parsing writes into its own.
std::string withPosition(const std::string& reason, std::size_t offset,
                         const std::string& original) {
    const std::string before = original.substr(0, offset);
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const std::size_t lineStart = before.rfind('\n') + 1;  // npos + 1 is the first column
    return std::to_string(line) + ":" + std::to_string(offset - lineStart + 1) + ": " + reason;
}

void parseInPlace(XmlDocument& document, char* text, const std::string& original) {
    if (const auto offset = firstElementBelow(original, kMaxLevels)) {
        throw ParseError(withPosition(
            "more than " + std::to_string(kMaxLevels) + " levels of elements", *offset, original));
    }
    try {
        document.parse<0>(text);
    } catch (const rapidxml::parse_error& error) {
        const auto offset = static_cast<std::size_t>(error.where<char>() - text);
        throw ParseError(withPosition(error.what(), offset, original));
    }
}

}  // namespace

void parse(XmlDocument& document, std::string& text) {
    const std::string original = text;
    parseInPlace(document, text.data(), original);
}

void parseCopy(XmlDocument& document, const std::string& text) {
    parseInPlace(document, document.allocate_string(text.c_str(), text.size() + 1), text);
}

std::string printed(const XmlNode& node, int flags) {
    std::string text;
    rapidxml::print(std::back_inserter(text), node, flags);
    return text;
}

const char* textOf(const XmlNode& node) {
    // The library gives an element the value of its first text, but not that of a CDATA section.
    const XmlNode* child = node.first_node();
    const bool isCdata =
        node.value_size() == 0 && child != nullptr && child->type() == rapidxml::node_cdata;
    return isCdata ? child->value() : node.value();
}

int numberOf(const XmlNode& node) { return text::toInt(textOf(node)); }

bool sameText(const char* a, const char* b) { return strcasecmp(a, b) == 0; }

bool hasName(const XmlNode& node, const char* name) { return sameText(node.name(), name); }

XmlNode* findSibling(XmlNode* first, const char* name) {
    if (name == nullptr) {
        return nullptr;
    }
    for (XmlNode* node = first; node != nullptr; node = node->next_sibling()) {
        if (std::strcmp(node->name(), name) == 0) {
            return node;
        }
    }
    return nullptr;
}

const XmlNode* childNamed(const XmlNode& parent, const char* name) {
    for (const XmlNode& child : childrenOf(parent)) {
        if (hasName(child, name)) {
            return &child;
        }
    }
    return nullptr;
}

const XmlNode* lastChildNamed(const XmlNode& parent, const char* name) {
    const XmlNode* last = nullptr;
    for (const XmlNode& child : childrenOf(parent)) {
        if (hasName(child, name)) {
            last = &child;
        }
    }
    return last;
}

const char* lastText(const XmlNode& parent, const char* name) {
    const XmlNode* child = lastChildNamed(parent, name);
    return child == nullptr ? nullptr : textOf(*child);
}

}  // namespace document
