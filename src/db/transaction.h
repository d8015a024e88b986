// One change of a database, all or nothing.
#pragma once

#include <cstdint>

struct sqlite3;

namespace tarvodb {

// How often a transaction's own statements are tried: once, or as execWithRetries does.
enum class Tries : std::uint8_t { one, three };

// The transaction of a command on its open handle, which must outlive it.
//
// A full disk, an I/O error or missing memory makes SQLite undo the whole transaction by itself
// and go back to storing every statement at once. Between a begin that succeeded and the end
// nothing is stored all the same: what follows such an undo fails, COMMIT included, until the
// handle is closed. Nor is anything stored into a file that has lost its name meanwhile, because
// somebody has put another in its place. A transaction that is neither committed nor rolled back is
// undone when its handle is closed.
class Transaction {
  public:
    Transaction(sqlite3* db, Tries tries) : db_(db), tries_(tries) {}

    // Each returns whether its statement succeeded.
    bool begin();
    bool commit();
    bool rollback();

  private:
    [[nodiscard]] bool run(const char* sql) const;

    sqlite3* db_;
    Tries tries_;
};

}  // namespace tarvodb
