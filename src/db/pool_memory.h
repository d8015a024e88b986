// Memory for SQLite in a program with one thread and a short life.
#pragma once

struct sqlite3_mem_methods;

namespace tarvodb {

// SQLite asks for many small pieces for each statement and gives them back at its end. These
// methods keep the small ones by their sizes for the next statement, and return none of them to the
// system.
const sqlite3_mem_methods& poolMemory();

}  // namespace tarvodb
