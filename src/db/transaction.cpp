#include "db/transaction.h"

#include <sqlite3.h>

#include "db/database.h"
#include "platform/platform.h"

namespace tarvodb {

namespace {

// SQLite asks this before it stores anything; not 0 refuses.
int refuse(void*) { return 1; }

void refuseCommits(sqlite3* db) { sqlite3_commit_hook(db, refuse, nullptr); }

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
    allowCommits(db_);
    const bool committed = run("COMMIT");
    if (!committed) {
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
