// What the parts of a document say of each other.
#pragma once

#include "backup/findings.h"

namespace tarvo_backup {

// References that lead nowhere, and numbers that several entries have where one may: DiSEqC
// positions, and the channel numbers of a network. The import takes all of that.
void checkReferences(const XmlNode& configuration, Findings& findings);

}  // namespace tarvo_backup
