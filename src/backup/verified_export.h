// The document of this headend, and that it is complete.
#pragma once

#include <string>

namespace tarvo_backup {

// The document of the headend as it is now, from one consistent state of its databases. Throws
// Fault (cannotRead) unless it is complete: every statement succeeded, the configuration database
// is there, sound and not empty, and the document can be read back.
std::string verifiedExport();

// Throws Fault (cannotRead) unless the configuration database is there, sound and not empty.
void verifyConfiguration();

}  // namespace tarvo_backup
