// Texts that SQLite allocated.
#pragma once

#include <sqlite3.h>

#include <memory>
#include <new>
#include <string>

namespace tarvodb {

struct FreeSqliteText {
    void operator()(char* text) const { sqlite3_free(text); }
};

using SqliteText = std::unique_ptr<char, FreeSqliteText>;

// Takes over what SQLite has formatted. It is null when there was no memory for it, and would go
// out as an empty statement, which succeeds: that is std::bad_alloc.
inline SqliteText formatted(char* text) {
    if (text == nullptr) {
        throw std::bad_alloc();
    }
    return SqliteText(text);
}

// `text` as an SQL literal, quoted by SQLite; NULL for a null pointer.
inline std::string quoted(const char* text) { return formatted(sqlite3_mprintf("%Q", text)).get(); }

}  // namespace tarvodb
