// An overview on a terminal.
#pragma once

#include <ostream>

#include "backup/console.h"
#include "backup/overview.h"

namespace tarvo_backup {

void printText(const Overview& overview, const Painter& paint, std::ostream& out);

}  // namespace tarvo_backup
