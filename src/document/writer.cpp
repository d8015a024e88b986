#include "document/writer.h"

#include <cstring>

namespace document {

namespace {

// A growing text is copied as a whole, and old and new are in memory then.
constexpr std::size_t kBlock = 1 << 16;
// Begins the next one early enough for nearly all elements.
constexpr std::size_t kFull = kBlock - 1024;

constexpr const char* kSpecial = "<>&'\"";

std::string_view reference(char special) {
    switch (special) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '\'':
            return "&apos;";
        default:
            return "&quot;";
    }
}

void appendEscaped(std::string& out, const char* text) {
    std::size_t plain = std::strcspn(text, kSpecial);
    for (; text[plain] != '\0'; plain = std::strcspn(text, kSpecial)) {
        out.append(text, plain);
        out += reference(text[plain]);
        text += plain + 1;
    }
    out.append(text, plain);
}

}  // namespace

XmlNode* TreeWriter::append(const char* name, const char* text) {
    XmlNode* node = pool_.allocate_node(rapidxml::node_element, name,
                                        text == nullptr ? nullptr : pool_.allocate_string(text));
    parent_->append_node(node);
    return node;
}

TextWriter::TextWriter(std::string_view before) : blocks_(1) {
    blocks_.back().reserve(kBlock);
    add(before);
}

// Leaves the tag open.
void TextWriter::startElement(const char* name) {
    if (isEmpty_) {
        add(">\n");
        isEmpty_ = false;
    }
    if (blocks_.back().size() > kFull) {
        blocks_.emplace_back().reserve(kBlock);
    }
    indent();
    add("<");
    add(name);
}

void TextWriter::endElement(const char* name) {
    add("</");
    add(name);
    add(">\n");
}

void TextWriter::open(const char* name) {
    startElement(name);
    open_.push_back(name);
    isEmpty_ = true;
}

void TextWriter::close() {
    const char* name = open_.back();
    open_.pop_back();
    if (isEmpty_) {
        add("/>\n");
        isEmpty_ = false;
    } else {
        indent();
        endElement(name);
    }
}

void TextWriter::leaf(const char* name, const char* text) {
    startElement(name);
    if (text == nullptr || *text == '\0') {
        add("/>\n");
        return;
    }
    add(">");
    appendEscaped(blocks_.back(), text);
    endElement(name);
}

}  // namespace document
