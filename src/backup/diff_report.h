// Differences for people.
#pragma once

#include <ostream>
#include <vector>

#include "backup/console.h"
#include "backup/diff.h"

namespace tarvo_backup {

// A line for each difference, in groups by section or module:
//   modules/module[mac=02:1E:A4:00:10:01]: 2 differences
//   modules/module[mac=02:1E:A4:00:10:01]/services/service[outputId=1,outputSid=501]/lcn: 17 -> 18
void printDifferences(const std::vector<Difference>& differences, const Painter& paint,
                      std::ostream& out);

}  // namespace tarvo_backup
