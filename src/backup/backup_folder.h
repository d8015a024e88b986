// A folder with the backups of a headend.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarvo_backup {

// Where backups are kept unless another folder is asked for.
inline constexpr const char* kBackupFolder = "/tarvo/backup";

// The document of the headend as it is now, from one consistent state of its databases. Throws
// Fault (cannotRead) unless it is complete: every statement succeeded, the configuration database
// is there, sound and not empty, and the document can be read back.
std::string verifiedExport();

// Throws Fault (cannotRead) unless the configuration database is there, sound and not empty.
void verifyConfiguration();

// Makes the folder when it is not there. Throws Fault (cannotWrite) unless it is a folder then that
// nobody but this user owns or may write to, and no link to one: whoever else could, would choose
// what is read there and removed as this program's own.
void makeOwnFolder(const std::string& folder);

struct Saved {
    std::string path;
    bool isUnchanged = false;  // `path` is an earlier backup with the same content
    std::vector<std::string> removed;
};

// Writes the document into the folder, which is made when it is not there, as
// HOST-2026-11-21T0315Z.xml, unless the newest backup of the host holds the same settings; further
// ones of that minute are HOST-2026-11-21T0315Z-2.xml and so on. Keeps the newest `keep` backups of
// the host, all of them without a number. Throws Fault.
Saved saveInto(const std::string& folder, const std::string& document,
               std::optional<std::size_t> keep);

}  // namespace tarvo_backup
