// A few helpers over the XML library.
//
// Documents hold elements only. Text that stands between elements is a child without a name; a
// comment is not a child.
#pragma once

// A document then holds this much of its content in itself, which is mostly on the stack, and the
// rest on the heap. The library's own 64 kB for each are more than a small stack has.
#define RAPIDXML_STATIC_POOL_SIZE 1024

#include <iterator>
#include <rapidxml/rapidxml.hpp>
#include <stdexcept>
#include <string>

namespace document {

using XmlDocument = rapidxml::xml_document<char>;
using XmlNode = rapidxml::xml_node<char>;

// Passed to printed(): no line feeds and tabs between elements.
inline constexpr int kNoIndenting = 0x1;

// `text` is not well-formed XML, or nested too deeply (document/nesting.h); what() gives the reason
// with its line and column.
class ParseError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Replaces `document`'s content by the parse of `text`, in place: `text` is modified and must
// outlive every use of the tree. A UTF-8 byte order mark is skipped. Throws ParseError.
void parse(XmlDocument& document, std::string& text);

// As parse, over a copy of `text` in the document's own pool.
void parseCopy(XmlDocument& document, const std::string& text);

// The tree as text, indented unless `flags` has kNoIndenting.
std::string printed(const XmlNode& node, int flags = 0);

// The text of an element, "" when it has none: its first plain text or, without one, the CDATA
// section that it begins with. Lives as long as the tree.
const char* textOf(const XmlNode& node);

// The text of an element read as a decimal integer, 0 when it is not a number.
int numberOf(const XmlNode& node);

// Names in imported documents are compared without regard to letter case, but for the outermost
// ones (findSibling).
bool sameText(const char* a, const char* b);
inline bool hasName(const XmlNode& node, const char* name) {
    // Most names differ in their first letters, whose case is the bit that is set here.
    constexpr int kCase = 0x20;
    return (*node.name() | kCase) == (*name | kCase) && sameText(node.name(), name);
}

// The first node of the sibling chain that starts at `first` whose name is exactly `name`. Null
// when there is none, or when `first` or `name` is null.
XmlNode* findSibling(XmlNode* first, const char* name);

// The first child of that name, without regard to case; null when there is none.
const XmlNode* childNamed(const XmlNode& parent, const char* name);

// The last such child.
const XmlNode* lastChildNamed(const XmlNode& parent, const char* name);

// The text of the last child of that name; null when there is none.
const char* lastText(const XmlNode& parent, const char* name);

// The row of a table whose `name` names the node, without regard to case; null when there is
// none.
template <class Rows>
auto* rowFor(const Rows& rows, const XmlNode& node) {
    for (const auto& row : rows) {
        if (hasName(node, row.name)) {
            return &row;
        }
    }
    return static_cast<decltype(&*std::begin(rows))>(nullptr);
}

// The child that a loop over childrenOf, or childNamed, came to last: for whoever tells where in a
// document an error is. It does not outlive its tree.
inline const XmlNode* lastRead = nullptr;

// The children of a node in document order, for range-for; those of a const node are const.
template <class Node>
class Children {
  public:
    class Iterator {
      public:
        explicit Iterator(Node* node) : node_(node) {}
        Node& operator*() const {
            lastRead = node_;
            return *node_;
        }
        Iterator& operator++() {
            node_ = node_->next_sibling();
            return *this;
        }
        bool operator==(const Iterator& other) const = default;

      private:
        Node* node_;
    };

    explicit Children(Node& parent) : first_(parent.first_node()) {}
    [[nodiscard]] Iterator begin() const { return Iterator(first_); }
    [[nodiscard]] static Iterator end() { return Iterator(nullptr); }

  private:
    Node* first_;
};

template <class Node>
Children<Node> childrenOf(Node& parent) {
    return Children<Node>(parent);
}

}  // namespace document
