// Files that the caller names.
#pragma once

#include <string>

namespace tarvo_backup {

inline constexpr unsigned kOwnerOnly = 0600;

// These write the text to a file that is on the disk before it has its name, and read it back. They
// throw Fault (cannotWrite).

// In the place of an older file, unless a link, a device or a pipe has the name: a file in the
// place of /dev/null would be the end of the system. For its owner alone.
void writeForOwner(const std::string& path, const std::string& text);

// The same for those who could read the older file, or whom the process's mask leaves.
void writeForAll(const std::string& path, const std::string& text);

// A new file, for its owner alone. False when something has the name already.
bool createForOwner(const std::string& path, const std::string& text);

}  // namespace tarvo_backup
