#include "backup/import_errors.h"

#include <algorithm>

#include "backup/console.h"

namespace tarvo_backup {

using tarvo_remote_control::ErrorCode;

namespace {

// The import has read the same text into the same tree.
const XmlNode& nodeAt(const XmlNode& tree, const Place& place) {
    const XmlNode* node = &tree;
    for (const std::size_t index : place) {
        node = node->first_node();
        for (std::size_t skipped = 0; skipped < index; ++skipped) {
            node = node->next_sibling();
        }
    }
    return *node;
}

// Errors that are of all modules, not of the one that was read last.
bool isOfAllModules(ErrorCode code) {
    return code == ErrorCode::moduleNotFound || code == ErrorCode::moduleAmount;
}

const XmlNode* elementOfError(const Document& document, const RecordedError& error) {
    // Follows the error that ended the import, and says no more.
    if (!error.place || error.code == ErrorCode::setConfiguration) {
        return nullptr;
    }
    const XmlNode* node = &nodeAt(document.tree(), *error.place);
    while (isOfAllModules(error.code) && !document::hasName(*node, "modules")) {
        node = node->parent();
    }
    return node;
}

}  // namespace

std::vector<ImportError> importErrors(const Document& document,
                                      const std::vector<RecordedError>& recorded) {
    std::vector<ImportError> errors;
    for (const RecordedError& each : recorded) {
        ImportError error{.code = number(each.code), .text = each.text, .element = std::nullopt};
        if (const XmlNode* node = elementOfError(document, each)) {
            error.element = placeOf(document, *node);
        }
        if (std::find(errors.begin(), errors.end(), error) == errors.end()) {
            errors.push_back(std::move(error));
        }
    }
    return errors;
}

std::string described(const ImportError& error) {
    std::string line = "error " + std::to_string(error.code) + ": ";
    if (error.element && !error.element->path.empty()) {
        line += onOneLine(error.element->path) + ": ";
    }
    return line + onOneLine(error.text);
}

}  // namespace tarvo_backup
