// SQLite as the verbs use it beside the import's own.
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
// The same for who must know SQLite's result code.
int tryOpening(const std::string& path, Access access, Connection& db);

// Throws DatabaseFault, which names the file, unless SQLite's result code tells of success.
void checkResult(int code, ExitStatus status, const std::string& path);

// Whether a file could not be written, by SQLite's extended result code.
bool isDiskFault(int code);

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

}  // namespace tarvo_backup
