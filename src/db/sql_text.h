// Texts that SQLite allocated.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <string>

namespace tarvodb {

struct FreeSqliteText {
    void operator()(char* text) const { sqlite3_free(text); }
};

using SqliteText = std::unique_ptr<char, FreeSqliteText>;

// `text` as an SQL literal, quoted by SQLite; NULL for a null pointer.
inline std::string quoted(const char* text) {
    return SqliteText(sqlite3_mprintf("%Q", text)).get();
}

}  // namespace tarvodb
