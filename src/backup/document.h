// A configuration document as the verbs look at it: the text, the tree that the import would see,
// and where in the text each of its nodes stands.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "backup/console.h"
#include "backup/fault.h"
#include "document/xml.h"

namespace tarvo_backup {

using document::XmlNode;

// Both count from 1; columns count bytes, as compilers and editors do.
struct Position {
    std::size_t line = 1;
    std::size_t column = 1;

    bool operator==(const Position&) const = default;
};

// The text is not well-formed: the place where that shows, and the reason.
class NotWellFormed : public Fault {
  public:
    NotWellFormed(const std::string& name, Position position, const std::string& reason);

    [[nodiscard]] Position position() const { return position_; }
    [[nodiscard]] const std::string& reason() const { return reason_; }

  private:
    Position position_;
    std::string reason_;
};

// Moving a document leaves its nodes where they are.
class Document {
  public:
    // `name` is how messages call the document. Throws NotWellFormed.
    Document(std::string name, std::string text);

    [[nodiscard]] const std::string& name() const { return name_; }
    // The text as it was read.
    [[nodiscard]] const std::string& text() const { return text_; }
    // The nameless node that holds the outermost ones.
    [[nodiscard]] const XmlNode& tree() const { return *tree_; }

    // The element around a document whose secrets are masked, so that no import takes it. Beside
    // what the import would find it is none.
    static constexpr const char* kRedacted = "redacted";
    [[nodiscard]] bool isRedacted() const;

    // What the import takes, found as the import finds it, inside a redacted document too; null
    // where it is missing.
    // `backup`, around the other two in a document of RNB-K408.
    [[nodiscard]] const XmlNode* backup() const;
    [[nodiscard]] const XmlNode* configuration() const;
    // `vsecureCAMList`, only inside a backup.
    [[nodiscard]] const XmlNode* camList() const;

    // Where the name of an element stands, or a nameless node's text behind its white space.
    [[nodiscard]] Position positionOf(const XmlNode& node) const;
    // Of a byte of the text.
    [[nodiscard]] Position positionOf(std::size_t offset) const;

  private:
    [[nodiscard]] const XmlNode* mark() const;
    [[nodiscard]] XmlNode* firstNode() const;
    [[nodiscard]] XmlNode* outermost(const char* name) const;

    std::string name_;
    std::string text_;
    // The parsed copy, in which the tree's names and texts stand at the offsets of `text_`.
    std::unique_ptr<std::string> parsed_;
    std::unique_ptr<document::XmlDocument> tree_;
    std::vector<std::size_t> lineStarts_;
};

// Reads the file at `path`, standard input for "-". Throws Fault (cannotRead) when it
// cannot be read, NotWellFormed.
Document readDocument(const std::string& path, const Console& console);

// As readDocument and Document, for one that must have a configuration. Throws Fault (usage) when
// it has none.
Document readConfiguration(const std::string& path, const Console& console);
Document configurationIn(std::string name, std::string text);

// The text of the file at `path`, standard input for "-". Throws Fault (cannotRead).
std::string readText(const std::string& path, const Console& console);

// How messages call a document at `path`.
std::string nameOf(const std::string& path);

}  // namespace tarvo_backup
