// The faults of a document, all of them.
#pragma once

#include <string>
#include <vector>

#include "backup/document.h"

namespace tarvo_backup {

enum class Severity {
    warning,  // the import takes it, on some controller at least, and a person would not
    error,    // every import ends with an error
};

struct Finding {
    Position position;
    Severity severity;
    // Below `configuration` or `backup`, as in a Difference; empty for the document as a whole.
    std::string path;
    std::string message;

    bool operator==(const Finding&) const = default;
};

// The faults of the document, by position.
std::vector<Finding> check(const Document& document);

}  // namespace tarvo_backup
