#include "db/database.h"

#include <sqlite3.h>
#include <syslog.h>

#include "db/like.h"
#include "db/sql_text.h"
#include "platform/debug_log.h"

namespace tarvodb {

Database openDatabase(const std::string& path) {
    Database db(platform::openDatabase(path));
    if (db) {
        quickenLike(db.get());
    }
    return db;
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
