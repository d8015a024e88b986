#include "document/deferred_document.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace document {

namespace {

// What is smaller is cheaper in the tree.
constexpr std::size_t kWorthwhile = 1024;
// With a larger one, which is in memory as text and as a tree when it is loaded, little is gained.
constexpr std::size_t kLargestPart = 4;

// A deferred content stands in the text as an element in a CDATA section.
constexpr std::string_view kBegin = "<![CDATA[<x>";
constexpr std::string_view kEnd = "</x>]]>";
constexpr std::string_view kEndOfCdata = "]]>";

std::string_view contentIn(const std::string& text, const Extent& extent) {
    return std::string_view(text).substr(extent.begin, extent.end - extent.begin);
}

// The contents that are deferred; none when one of them cannot be, or is too large a part.
std::vector<Extent> deferrable(const std::string& text, const ElementPath& path) {
    std::vector<Extent> contents;
    for (const Extent& extent : contentsAt(text, path)) {
        const std::string_view content = contentIn(text, extent);
        if (content.size() > text.size() / kLargestPart ||
            content.find(kEndOfCdata) != std::string_view::npos) {
            return {};
        }
        if (content.size() >= kWorthwhile) {
            contents.push_back(extent);
        }
    }
    return contents;
}

// Moves the content of one element into another, which has none.
void moveContent(XmlNode& from, XmlNode& to) {
    while (XmlNode* child = from.first_node()) {
        from.remove_node(child);
        to.append_node(child);
    }
    to.value(from.value(), from.value_size());
}

}  // namespace

DeferredDocument::DeferredDocument(std::string text, const ElementPath& path) {
    const std::vector<Extent> contents =
        firstElementBelow(text, kMaxLevels) ? std::vector<Extent>{} : deferrable(text, path);
    if (contents.empty() || !parseWithout(contents, text)) {
        deferred_.clear();
        text_ = std::move(text);
        parse(tree_, text_);
    }
}

// False when anything in the document is malformed, or looks as a deferred content does.
bool DeferredDocument::parseWithout(const std::vector<Extent>& contents, const std::string& text) {
    text_.reserve(text.size() + contents.size() * (kBegin.size() + kEnd.size()));
    std::size_t done = 0;
    for (const Extent& extent : contents) {
        text_.append(text, done, extent.begin - done);
        text_ += kBegin;
        text_ += contentIn(text, extent);
        text_ += kEnd;
        done = extent.end;
    }
    text_.append(text, done);
    try {
        tree_.parse<0>(text_.data());
        for (const Extent& extent : contents) {
            std::string copy = "<x>" + std::string(contentIn(text, extent)) + "</x>";
            content_.parse<0>(copy.data());
            content_.clear();
        }
    } catch (const rapidxml::parse_error&) {
        return false;
    }
    findDeferred(tree_);
    return deferred_.size() == contents.size();
}

// Finds the elements below `parent` whose contents are deferred, and any that look like it.
void DeferredDocument::findDeferred(XmlNode& parent) {
    for (XmlNode* node = parent.first_node(); node != nullptr; node = node->next_sibling()) {
        const XmlNode* only = node->first_node();
        if (only != nullptr && only->type() == rapidxml::node_cdata &&
            std::string_view(only->value(), only->value_size()).starts_with("<x>")) {
            deferred_.push_back(node);
        }
        findDeferred(*node);
    }
}

void DeferredDocument::load(const XmlNode& element) {
    const auto found = std::find(deferred_.begin(), deferred_.end(), &element);
    if (found == deferred_.end()) {
        return;
    }
    if (loaded_ != nullptr) {
        loaded_->remove_all_nodes();
        loaded_->value("", 0);
    }
    content_.clear();
    loaded_ = *found;
    deferred_.erase(found);
    char* text = loaded_->first_node()->value();
    loaded_->remove_all_nodes();
    content_.parse<0>(text);
    moveContent(*content_.first_node(), *loaded_);
}

}  // namespace document
