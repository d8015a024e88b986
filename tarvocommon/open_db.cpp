#include "platform/open_db.h"

#include <sqlite3.h>

sqlite3* openDb(std::string path) {  // NOLINT(performance-unnecessary-value-param)
    sqlite3* db = nullptr;
    if (sqlite3_open(path.c_str(), &db) == SQLITE_OK) {
        return db;
    }
    sqlite3_close(db);  // a failed open still hands out a handle
    return nullptr;
}
