// Which files SQLite may be given.
//
// A journal beside a database is replayed by whoever opens that, and can name another file, which
// SQLite then deletes; a database can hold views that never end. So a database is only opened when
// it and what belongs to it come from those whose word counts.
#pragma once

#include <string>

namespace tarvodb {

// Why the database at `path` must not be opened; "" when nothing speaks against it. It, its
// journal, its write-ahead log and the index of that, where they are there, must be regular files
// that belong to root, to this user or to the owner of the configuration database. A folder in the
// place of a database is left to the open, which fails.
std::string reasonAgainst(const std::string& path);

}  // namespace tarvodb
