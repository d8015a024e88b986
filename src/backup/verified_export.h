// The document of this headend, and that it is complete.
#pragma once

#include <string>
#include <vector>

#include "backup/import_errors.h"

namespace tarvo_backup {

class Sandbox;

// The document of the headend as it is now, from one consistent state of its databases. Throws
// Fault (cannotRead) unless it is complete: every statement succeeded, the configuration database
// is there, sound and not empty, and the document can be read back.
std::string verifiedExport();
// The same of a headend that was copied before.
std::string verifiedExportIn(Sandbox& sandbox);

struct TriedExport {
    std::string document;
    // Why this headend would not take the document back as it is; empty when it would.
    std::vector<ImportError> refusals;
    // Why that could not be tried, for lack of room; empty when it was.
    std::string notTried;
};

// The same, imported into a private copy of the headend after that.
TriedExport triedExport();

}  // namespace tarvo_backup
