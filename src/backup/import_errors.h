// What an import finds wrong with a document.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "backup/element_place.h"
#include "backup/sandbox.h"

namespace tarvo_backup {

struct ImportError {
    int code = 0;
    std::string text;
    std::optional<ElementPlace> element;

    bool operator==(const ImportError&) const = default;
};

// Each error once, though every try of the import meets it, with the document's element.
std::vector<ImportError> importErrors(const Document& document,
                                      const std::vector<RecordedError>& recorded);

// On one line: "error 401: modules/module[mac=...]/inputs/input[inputId=1]/...: Input type ..."
std::string described(const ImportError& error);

}  // namespace tarvo_backup
