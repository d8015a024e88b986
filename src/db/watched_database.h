// A database that is read by one statement after the other, without a lock that would keep others
// from writing in between.
#pragma once

#include <optional>
#include <utility>

#include "db/database.h"

namespace tarvodb {

class WatchedDatabase {
  public:
    // Nothing is open.
    WatchedDatabase() = default;
    // `db` is empty when it could not be opened.
    explicit WatchedDatabase(Database db) : db_(std::move(db)) {}

    [[nodiscard]] bool isOpen() const { return db_ != nullptr; }

    // The handle for the next statement; asked for anew for each. Null when nothing is open.
    sqlite3* handle();

    // Whether another connection has changed the database between the first statement and the last.
    // What cannot be told counts as unchanged.
    [[nodiscard]] bool hasChanged() const;

  private:
    Database db_;
    bool isAsked_ = false;
    // SQLite's number for what the first statement has read.
    std::optional<unsigned> first_;
};

}  // namespace tarvodb
