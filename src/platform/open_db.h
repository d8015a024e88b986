// What the device's libtarvocommon.so exports for us.
#pragma once

#include <string>

struct sqlite3;

// Opens (and creates if needed) the SQLite database at `path`. The caller owns the handle and
// closes it with sqlite3_close. Null on failure. The path is taken by value: the exported symbol
// depends on it.
sqlite3* openDb(std::string path);
