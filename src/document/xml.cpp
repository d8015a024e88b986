#include "document/xml.h"

#include <strings.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <rapidxml/rapidxml_print.hpp>
#include <string_view>
#include <vector>

#include "document/nesting.h"
#include "text/to_int.h"

namespace document {

namespace {

// Where the lines of a text begin. Taken before the parse, which writes into its text; a copy of
// the text would weigh many times as much.
class LineStarts {
  public:
    explicit LineStarts(std::string_view text) {
        starts_.reserve(1 + static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')));
        starts_.push_back(0);
        for (auto end = text.find('\n'); end != std::string_view::npos;
             end = text.find('\n', end + 1)) {
            starts_.push_back(static_cast<std::uint32_t>(end + 1));
        }
    }

    // "line:column: reason".
    [[nodiscard]] std::string withPosition(std::size_t offset, const std::string& reason) const {
        const auto next = std::upper_bound(starts_.begin(), starts_.end(), offset);
        return std::to_string(next - starts_.begin()) + ":" +
               std::to_string(offset - *std::prev(next) + 1) + ": " + reason;
    }

  private:
    std::vector<std::uint32_t> starts_;
};

// Parses `buffer`, which holds `text` and may be its own.
void parseInPlace(XmlDocument& document, char* buffer, const std::string& text) {
    const LineStarts lines(text);
    if (const auto offset = firstElementBelow(text, kMaxLevels)) {
        throw ParseError(lines.withPosition(
            *offset, "more than " + std::to_string(kMaxLevels) + " levels of elements"));
    }
    try {
        document.parse<0>(buffer);
    } catch (const rapidxml::parse_error& error) {
        const auto offset = static_cast<std::size_t>(error.where<char>() - buffer);
        throw ParseError(lines.withPosition(offset, error.what()));
    }
}

}  // namespace

void parse(XmlDocument& document, std::string& text) { parseInPlace(document, text.data(), text); }

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
    const XmlNode* child = parent.first_node();
    while (child != nullptr && !hasName(*child, name)) {
        child = child->next_sibling();
    }
    lastRead = child == nullptr ? lastRead : child;
    return child;
}

const XmlNode* lastChildNamed(const XmlNode& parent, const char* name) {
    // The library's last_node() is undefined where there is none.
    const XmlNode* child = parent.first_node() == nullptr ? nullptr : parent.last_node();
    while (child != nullptr && !hasName(*child, name)) {
        child = child->previous_sibling();
    }
    return child;
}

const char* lastText(const XmlNode& parent, const char* name) {
    const XmlNode* child = lastChildNamed(parent, name);
    return child == nullptr ? nullptr : textOf(*child);
}

}  // namespace document
