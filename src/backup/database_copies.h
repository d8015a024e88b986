// Copies of databases: of the device's, which others use, and of this program's own.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "backup/sqlite.h"

namespace tarvo_backup {

struct CopyJob {
    std::string from;
    std::string to;
};

// Copies whole databases of the device, all of them as they are at one moment: their writers are
// waited for, half a minute at most. A source that is not there leaves no file; one that is no
// database is copied as it is. What a journal still has to undo is undone in the copy. The sources
// are only read, and those that db/trusted_files.h speaks against not even opened. Throws
// DatabaseFault or Fault, which name the file: cannotRead for a source, cannotWrite for a copy. And
// Interrupted.
void copyFromDevice(const std::vector<CopyJob>& jobs);

// Copies a database that nobody else uses: one that copyFromDevice() has made. A source that is not
// there leaves no file. Throws Fault.
void copyOwn(const CopyJob& job);

// Makes the content of a database that others use that of a copy, all or nothing unless the file
// was no database any more, or the copy is none.
class PutBack {
  public:
    // From here on it is noticed when others write to the database. Throws DatabaseFault.
    explicit PutBack(CopyJob job);

    // Gives false, and does nothing, when they have, unless it is to be done all the same. Waits as
    // copyFromDevice(). Throws DatabaseFault or Fault (cannotWrite).
    bool run(bool whoeverHasWritten);

  private:
    int copy(sqlite3* from, bool whoeverHasWritten);

    CopyJob job_;
    Connection to_;
    std::optional<unsigned> version_;  // of the database as it was; nothing where it was none
    bool isOther_ = false;
};

}  // namespace tarvo_backup
