#include "db/watched_database.h"

#include <sqlite3.h>

namespace tarvodb {

namespace {

// Whether a page of the file has been read. The number below means nothing before that.
bool hasRead(sqlite3* db) {
    int pages = 0;
    int highest = 0;
    sqlite3_db_status(db, SQLITE_DBSTATUS_CACHE_MISS, &pages, &highest, 0);
    return pages > 0;
}

// A number that moves when a statement finds that somebody else has written since the one before.
std::optional<unsigned> dataVersion(sqlite3* db) {
    if (db == nullptr || !hasRead(db)) {
        return std::nullopt;
    }
    unsigned version = 0;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

}  // namespace

sqlite3* WatchedDatabase::handle() {
    // It moves with a statement only, so that before the second is as good as after the first.
    if (isAsked_ && !first_) {
        first_ = dataVersion(db_.get());
    }
    isAsked_ = true;
    return db_.get();
}

bool WatchedDatabase::hasChanged() const { return first_ && dataVersion(db_.get()) != first_; }

}  // namespace tarvodb
