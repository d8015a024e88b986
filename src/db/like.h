// A cheaper LIKE. The conditions of nearly all statements compare a column with a number or a name,
// and SQLite's own LIKE makes each number of a column a text to do so.
#pragma once

struct sqlite3;

namespace tarvodb {

// Replaces the two-argument like() of `db` by one with the same results, as soon as the first
// statement that reads the schema has ended. Where the schema mentions NOCASE, SQLite keeps its
// own: it may search such an index for a LIKE, which it does for no other function, and then gives
// the rows in the index's order.
void quickenLike(sqlite3* db);

// Gives `db` the quick LIKE as a function of that name, taking the pattern and then the value.
// Returns SQLite's result code.
int addQuickLike(sqlite3* db, const char* name);

}  // namespace tarvodb
