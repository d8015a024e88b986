#include "db/transaction.h"

#include <sqlite3.h>

#include "db/database.h"
#include "platform/platform.h"

namespace tarvodb {

namespace {

// SQLite asks these before it stores anything; not 0 refuses.
int refuse(void*) { return 1; }

// What is stored after the database's name has gone, or become another file's, is lost with the
// file.
int refuseWhenMoved(void* db) {
    int moved = 0;
    sqlite3_file_control(static_cast<sqlite3*>(db), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
    return moved;
}

void refuseCommits(sqlite3* db) { sqlite3_commit_hook(db, refuse, nullptr); }

void allowOwnCommit(sqlite3* db) { sqlite3_commit_hook(db, refuseWhenMoved, db); }

void allowCommits(sqlite3* db) { sqlite3_commit_hook(db, nullptr, nullptr); }

}  // namespace

bool Transaction::begin() {
    const bool begun = run("BEGIN TRANSACTION");
    if (begun) {
        refuseCommits(db_);
    }
    return begun;
}

bool Transaction::commit() {
    allowOwnCommit(db_);
    const bool committed = run("COMMIT");
    if (committed) {
        allowCommits(db_);
    } else {
        refuseCommits(db_);
    }
    return committed;
}

bool Transaction::rollback() {
    const bool undone = run("ROLLBACK");
    if (undone) {
        allowCommits(db_);
    }
    return undone;
}

bool Transaction::run(const char* sql) const {
    const int result = tries_ == Tries::three ? execWithRetries(db_, sql)
                                              : platform::executeSql(db_, sql, nullptr);
    return result == SQLITE_OK;
}

}  // namespace tarvodb
