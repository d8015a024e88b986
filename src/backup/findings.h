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

// As messages show a text of the document: on one line, a long one without its middle.
std::string inQuotes(std::string_view text);

// Finds faults on its way through the elements of a document.
class Walk {
  public:
    explicit Walk(Findings& findings) : findings_(findings) {}

    void add(Severity severity, const XmlNode& node, const std::string& message) {
        findings_.add(severity, node, path_, message);
    }
    // Of an element in the one where the walk is.
    void add(Severity severity, const XmlNode& node, const char* name, const std::string& message) {
        within({.name = name}, [&] { add(severity, node, message); });
    }

    // The path to where the walk is.
    [[nodiscard]] std::string place() const { return pathText(path_); }

    template <class Visit>
    void within(const Step& step, Visit visit) {
        path_.push_back(step);
        visit();
        path_.pop_back();
    }

    // Visits the entries of `node`, which `list` is the row of, with the row of an entry.
    template <class Visit>
    void entries(const mapping::Element& list, const XmlNode& node, Visit visit) {
        const mapping::Element& entry = list.children[0];
        std::size_t place = 0;
        within({.name = list.name}, [&] {
            for (const XmlNode& child : document::childrenOf(node)) {
                place += isElement(child) ? 1U : 0U;
                if (document::hasName(child, entry.name)) {
                    const std::string identity = identityOf(entry, child);
                    within({.name = entry.name, .identity = &identity, .place = place},
                           [&] { visit(entry, child); });
                }
            }
        });
    }

  private:
    Findings& findings_;
    Path path_;
};

}  // namespace tarvo_backup
