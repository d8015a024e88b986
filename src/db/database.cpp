#include "db/database.h"

#include <sqlite3.h>
#include <syslog.h>

#include <optional>

#include "db/like.h"
#include "db/pool_memory.h"
#include "db/sql_text.h"
#include "db/trusted_files.h"
#include "platform/debug_log.h"

namespace tarvodb {

namespace {

bool isRefused(const std::string& path, const std::string& reason) {
    if (!reason.empty()) {
        platform::printError("tarvo-config: " + reason + "; " + path + " is not opened\n");
    }
    return !reason.empty();
}

// How long a statement waits for a lock before its try counts as failed. A neighbour that writes
// every few milliseconds would otherwise meet all three tries of a select, whose rows then count as
// absent; for one that holds the lock longer the tries and their seconds are there.
constexpr int kLockMilliseconds = 50;

// Opens the database, which is looked at before and again after it: someone may have put another
// file there in between.
//   open() -> SQLite's result code, the handle in `db`
template <class Open>
int openTrusted(const std::string& path, Database& db, Open open) {
    const auto before = platform::fileStatus(path);
    if (isRefused(path, reasonAgainst(path))) {
        return SQLITE_CANTOPEN;
    }
    const int result = open();
    const auto after = platform::fileStatus(path);
    // One that was not there is by now, unless the open has failed.
    const bool isOther =
        before ? !(after && after->isSameFileAs(*before)) : result == SQLITE_OK && db && !after;
    const std::string reason = isOther ? path + " was replaced" : reasonAgainst(path);
    if (isRefused(path, reason)) {
        db.reset();
        return SQLITE_CANTOPEN;
    }
    if (db) {
        sqlite3_busy_timeout(db.get(), kLockMilliseconds);
    }
    return result;
}

}  // namespace

void prepareSqlite() {
    sqlite3_config(SQLITE_CONFIG_SINGLETHREAD);
    sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
    sqlite3_config(SQLITE_CONFIG_MALLOC, &poolMemory());
}

Database openDatabase(const std::string& path) {
    Database db;
    openTrusted(path, db, [&] {
        db.reset(platform::openDatabase(path));
        return SQLITE_OK;
    });
    if (db) {
        quickenLike(db.get());
    }
    return db;
}

int openDatabaseFile(const std::string& path, Database& db) {
    return openTrusted(path, db, [&] {
        sqlite3* handle = nullptr;
        const int result = platform::openDatabaseFile(path, &handle);
        db.reset(handle);
        return result;
    });
}

int execWithRetries(sqlite3* db, const char* sql) {
    constexpr int kTries = 3;
    int result = SQLITE_ERROR;
    for (int tryNumber = 1; tryNumber <= kTries; ++tryNumber) {
        char* rawMessage = nullptr;
        result = platform::executeSql(db, sql, &rawMessage);
        const SqliteText message(rawMessage);
        if (result == SQLITE_OK) {
            break;
        }
        platform::debugLog(LOG_INFO, "DB exec error (" + std::to_string(tryNumber) +
                                         " try): " + (message ? message.get() : ""));
        platform::sleepSeconds(1);
    }
    return result;
}

}  // namespace tarvodb
