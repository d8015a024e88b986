// SQLite as the verbs use it on copies and for copying.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backup/fault.h"

struct sqlite3;

namespace tarvo_backup {

struct CloseConnection {
    void operator()(sqlite3* db) const;
};
using Connection = std::unique_ptr<sqlite3, CloseConnection>;

enum class Access { readOnly, readWrite };

// SQLite refused; code() is its result code.
class DatabaseFault : public Fault {
  public:
    DatabaseFault(int code, ExitStatus status, const std::string& message)
        : Fault(status, message), code_(code) {}
    [[nodiscard]] int code() const { return code_; }

  private:
    int code_;
};

// Opens the file, which readWrite makes when it is not there. Throws DatabaseFault.
Connection openConnection(const std::string& path, Access access);

using Cell = std::optional<std::string>;  // nothing is NULL
using Cells = std::vector<Cell>;

struct Selected {
    std::vector<std::string> columns;
    std::vector<Cells> rows;
};
// What the statement gives. Throws DatabaseFault.
Selected select(sqlite3* db, const std::string& sql);
// The rows alone.
std::vector<Cells> query(sqlite3* db, const std::string& sql);

struct CopyJob {
    std::string from;
    std::string to;
};

// Copies whole databases, all of them as they are at one moment: their writers are waited for, half
// a minute at most. A source that is not there leaves no file; one that is no database is copied
// as it is; one with a journal that still has to be rolled back is copied with it. The sources are
// only read, and those that db/trusted_files.h speaks against not even opened. Throws DatabaseFault
// or Fault (cannotRead), and Interrupted.
void takeCopies(const std::vector<CopyJob>& jobs);

// Makes the content of a database that others use that of a copy, all or nothing unless the file
// was no database any more. Waits in the same way. Throws DatabaseFault (cannotWrite).
void putBack(const CopyJob& job);

}  // namespace tarvo_backup
