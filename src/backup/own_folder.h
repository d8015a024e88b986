// Folders in which only this user's programs may write.
#pragma once

#include <string>

namespace tarvo_backup {

// Makes the folder when it is not there. Throws Fault (cannotWrite) unless it is a folder then that
// nobody but this user owns or may write to: whoever else could, would choose what is read there
// and removed as this program's own. A link to one is refused, too: what it leads to may be missing
// when the device starts, and a restore is undone then by what the folder holds.
void makeOwnFolder(const std::string& folder);

}  // namespace tarvo_backup
