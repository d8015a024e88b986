// The database files and their handles.
#pragma once

#include <memory>
#include <string>

#include "platform/platform.h"

namespace tarvodb {

// The configuration of the headend, shared with the device's other programs.
inline constexpr const char* kConfigDatabase = "/tarvo/DB/config_global.sqlite";
// What the device measures and learns while it runs.
inline constexpr const char* kStateDatabase = "/tmp/temp_global.sqlite";
// The conditional-access modules that the headend knows.
inline constexpr const char* kVsecureDatabase = "/tarvo/DB/vsec_global.sqlite";
// Commands of the remote-control server.
inline constexpr const char* kCommandDatabase = "/tarvo/DB/remote_control.sqlite";

// Makes SQLite cheap for a program with one thread: no locks, no memory statistics, its memory from
// a pool. To be called before the first open. Where something else has started SQLite before, or it
// was built otherwise, it stays as it is.
void prepareSqlite();

struct CloseDatabase {
    void operator()(sqlite3* db) const { platform::closeDatabase(db); }
};

// An open database; closed when it goes. Empty when the open failed.
using Database = std::unique_ptr<sqlite3, CloseDatabase>;

// Opens it with the device's common library. A database whose files are not to be trusted
// (db/trusted_files.h) counts as one that could not be opened, and standard error tells why.
Database openDatabase(const std::string& path);

// The same with SQLite itself. SQLite's result code; a failed open can give a handle too.
int openDatabaseFile(const std::string& path, Database& db);

// Closes it now. SQLite's result code; an empty one is closed already.
inline int close(Database& db) { return platform::closeDatabase(db.release()); }

// Runs one statement without rows, up to three times, one second apart (the last failure is
// followed by its second too). Returns SQLite's result code of the last try, 0 for success.
int execWithRetries(sqlite3* db, const char* sql);

}  // namespace tarvodb
