#include "backup/document.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iterator>
#include <sstream>
#include <utility>

#include "mapping/document_tree.h"

namespace tarvo_backup {

namespace {

std::vector<std::size_t> lineStartsOf(const std::string& text) {
    std::vector<std::size_t> starts{0};
    for (std::size_t end = text.find('\n'); end != std::string::npos;
         end = text.find('\n', end + 1)) {
        starts.push_back(end + 1);
    }
    return starts;
}

}  // namespace

NotWellFormed::NotWellFormed(const std::string& name, Position position, const std::string& reason)
    : Fault(ExitStatus::usage, name + ":" + std::to_string(position.line) + ":" +
                                   std::to_string(position.column) + ": " + reason),
      position_(position),
      reason_(reason) {}

Document::Document(std::string name, std::string text)
    : name_(std::move(name)),
      text_(std::move(text)),
      parsed_(std::make_unique<std::string>(text_)),
      tree_(std::make_unique<document::XmlDocument>()),
      lineStarts_(lineStartsOf(text_)) {
    try {
        document::parse(*tree_, *parsed_);
    } catch (const document::ParseError& error) {
        // "line:column: reason"
        Position position;
        char separator = 0;
        std::string reason;
        std::istringstream message(error.what());
        message >> position.line >> separator >> position.column >> separator;
        std::getline(message >> std::ws, reason);
        throw NotWellFormed(name_, position, reason);
    }
}

const XmlNode* Document::mark() const {
    XmlNode* first = tree_->first_node();
    const bool isRead = document::findSibling(first, mapping::kBackup.name) != nullptr ||
                        document::findSibling(first, mapping::kConfiguration.name) != nullptr;
    return isRead ? nullptr : document::findSibling(first, kRedacted);
}

bool Document::isRedacted() const { return mark() != nullptr; }

XmlNode* Document::firstNode() const {
    const XmlNode* around = mark();
    return (around == nullptr ? *tree_ : *around).first_node();
}

XmlNode* Document::outermost(const char* name) const {
    const XmlNode* around = backup();
    return document::findSibling(around == nullptr ? firstNode() : around->first_node(), name);
}

const XmlNode* Document::backup() const {
    return document::findSibling(firstNode(), mapping::kBackup.name);
}

const XmlNode* Document::configuration() const { return outermost(mapping::kConfiguration.name); }

const XmlNode* Document::camList() const {
    return backup() == nullptr ? nullptr : outermost(mapping::kBackupCamList.name);
}

Position Document::positionOf(const XmlNode& node) const {
    const bool isText = node.name_size() == 0;
    const char* place = isText ? node.value() : node.name();
    const auto offset = static_cast<std::size_t>(place - parsed_->data());
    // Up to its first other character a text stands as it was read. There is none in what is empty.
    const std::size_t shown = isText ? text_.find_first_not_of(" \t\n\r", offset) : offset;
    return positionOf(shown - offset < node.value_size() ? shown : offset);
}

Position Document::positionOf(std::size_t offset) const {
    const auto next = std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset);
    const auto line = static_cast<std::size_t>(std::distance(lineStarts_.begin(), next));
    return {.line = line, .column = offset - lineStarts_[line - 1] + 1};
}

std::string nameOf(const std::string& path) {
    return path == "-" ? "standard input" : onOneLine(path);
}

std::string readText(const std::string& path, const Console& console) {
    std::ifstream file;
    if (path != "-") {
        file.open(path, std::ios::binary);
    }
    std::istream& source = path == "-" ? console.in : file;
    std::string text;
    std::array<char, 1U << 16U> block{};
    while (source.read(block.data(), block.size()), source.gcount() > 0) {
        text.append(block.data(), static_cast<std::size_t>(source.gcount()));
    }
    // A folder opens like a file, and fails at the first byte.
    if (source.bad() || (path != "-" && !file.is_open())) {
        throw Fault(ExitStatus::cannotRead, nameOf(path) + ": " + std::strerror(errno));
    }
    return text;
}

Document readDocument(const std::string& path, const Console& console) {
    return Document(nameOf(path), readText(path, console));
}

Document configurationIn(std::string name, std::string text) {
    Document document(std::move(name), std::move(text));
    if (document.configuration() == nullptr) {
        throw Fault(ExitStatus::usage, document.name() + ": no 'configuration' element");
    }
    return document;
}

Document readConfiguration(const std::string& path, const Console& console) {
    return configurationIn(nameOf(path), readText(path, console));
}

}  // namespace tarvo_backup
