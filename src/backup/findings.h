// Where the checks of a document put what they find.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "backup/check.h"
#include "backup/tree.h"

namespace tarvo_backup {

class Findings {
  public:
    explicit Findings(const Document& document) : document_(document) {}

    void add(Severity severity, const XmlNode& node, const Path& path, const std::string& message) {
        list_.push_back({.position = document_.positionOf(node),
                         .severity = severity,
                         .path = pathText(path),
                         .message = message});
    }
    // Of a place in the text.
    void add(Severity severity, std::size_t offset, const std::string& message) {
        list_.push_back({.position = document_.positionOf(offset),
                         .severity = severity,
                         .path = "",
                         .message = message});
    }

    [[nodiscard]] std::vector<Finding> byPosition() &&;

  private:
    const Document& document_;
    std::vector<Finding> list_;
};

// As messages show a text of the document.
std::string inQuotes(std::string_view text);

}  // namespace tarvo_backup
