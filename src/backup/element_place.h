// Where in a document something is.
#pragma once

#include <string>

#include "backup/document.h"

namespace tarvo_backup {

struct ElementPlace {
    // As the paths of differences: "modules/module[mac=02:1E:A4:00:10:01]/inputs/input[inputId=1]".
    std::string path;
    Position position;

    bool operator==(const ElementPlace&) const = default;
};

// `node` is one of the document's.
ElementPlace placeOf(const Document& document, const XmlNode& node);

}  // namespace tarvo_backup
