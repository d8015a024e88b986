// Files that the caller names, for their owner alone.
#pragma once

#include <string>

namespace tarvo_backup {

// Writes the text to a file of mode 0600, which is on the disk before it takes an older one's
// place, and reads it back. Throws Fault (cannotWrite), also when a link, a device or a pipe has
// the name: a file in the place of /dev/null would be the end of the system.
void writeForOwner(const std::string& path, const std::string& text);

}  // namespace tarvo_backup
