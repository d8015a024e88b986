// A folder with the backups of a headend.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace tarvo_backup {

// Where backups are kept unless another folder is asked for.
inline constexpr const char* kBackupFolder = "/tarvo/backup";

struct Saved {
    std::string path;
    bool isUnchanged = false;  // `path` is an earlier backup with the same content
    std::vector<std::string> removed;
};

// Writes the document into the folder, which is made when it is not there, as
// HOST-2026-11-21T0315Z.xml, unless the newest backup of the host holds the same settings; further
// ones of that minute are HOST-2026-11-21T0315Z-2.xml and so on. Keeps the newest `keep` backups of
// the host, all of them without a number. One works in a folder at a time; where others cannot be
// kept out, nothing of theirs is replaced at least. Removes what runs that were killed have left.
// Throws Fault.
Saved saveInto(const std::string& folder, const std::string& document,
               std::optional<std::size_t> keep);

}  // namespace tarvo_backup
