// Where the elements of a document go while they are made, in the document's order.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "document/xml.h"

namespace document {

// Names are literals, or live as long as the writer and what it makes.
class Writer {
  public:
    Writer() = default;
    virtual ~Writer() = default;
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;

    // What is written until close() stands in the element.
    virtual void open(const char* name) = 0;
    virtual void close() = 0;
    // An element without children; null is an element without text.
    virtual void leaf(const char* name, const char* text) = 0;
};

// Appends the elements to a node. They live as long as its document, `pool`.
class TreeWriter : public Writer {
  public:
    TreeWriter(XmlDocument& pool, XmlNode& parent) : pool_(pool), parent_(&parent) {}

    void open(const char* name) override { parent_ = append(name, nullptr); }
    void close() override { parent_ = parent_->parent(); }
    void leaf(const char* name, const char* text) override { append(name, text); }

  private:
    XmlNode* append(const char* name, const char* text);

    XmlDocument& pool_;
    XmlNode* parent_;
};

// Prints the elements at once, as printed() prints a tree: a document is in memory once.
class TextWriter : public Writer {
  public:
    // `before` is what stands before the first element.
    explicit TextWriter(std::string_view before);

    void open(const char* name) override;
    void close() override;
    void leaf(const char* name, const char* text) override;

    // Writes text that is not an element.
    void add(std::string_view text) { blocks_.back() += text; }

    // What was written, to be read one after the other.
    [[nodiscard]] const std::vector<std::string>& blocks() const { return blocks_; }

  private:
    void startElement(const char* name);
    void endElement(const char* name);
    void indent() { blocks_.back().append(open_.size(), '\t'); }

    std::vector<std::string> blocks_;
    std::vector<const char*> open_;
    // Whether the last element that was opened has no child yet, and the end of its tag is missing.
    bool isEmpty_ = false;
};

}  // namespace document
