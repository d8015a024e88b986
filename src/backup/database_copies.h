// Copies of databases: of the device's, which others use, and of this program's own.
#pragma once

#include <string>
#include <vector>

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
// was no database any more, or the copy is none. Waits as copyFromDevice(). Throws DatabaseFault or
// Fault (cannotWrite).
void putBack(const CopyJob& job);

}  // namespace tarvo_backup
