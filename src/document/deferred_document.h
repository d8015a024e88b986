// A parsed document, parts of which become a tree only when they are asked for.
#pragma once

#include <string>
#include <vector>

#include "document/nesting.h"
#include "document/xml.h"

namespace document {

// The tree of a document, in which the elements at one path have no content until it is asked for.
// A document that gains nothing by it, because one of them is a large part of it, is whole.
class DeferredDocument {
  public:
    // Throws ParseError, as parse() does, also for what is deferred.
    DeferredDocument(std::string text, const ElementPath& path);
    DeferredDocument(const DeferredDocument&) = delete;
    DeferredDocument& operator=(const DeferredDocument&) = delete;

    // The first of the outermost nodes; null in an empty document.
    [[nodiscard]] XmlNode* firstNode() const { return tree_.first_node(); }

    // Gives the element its content, unless it has it. The one that got its content before has none
    // any more, and gets none again: a document is gone through once.
    void load(const XmlNode& element);

  private:
    bool parseWithout(const std::vector<Extent>& contents, const std::string& text);
    void findDeferred(XmlNode& parent);

    std::string text_;
    XmlDocument tree_;
    std::vector<XmlNode*> deferred_;
    XmlDocument content_;
    XmlNode* loaded_ = nullptr;
};

}  // namespace document
