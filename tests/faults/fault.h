// The one fault of a run of the program, and what the run did.
//
// A run is a process of its own. What it did stands in memory that it shares with its parent, so
// that it can be read however the run ended.
#pragma once

#include <sqlite3.h>

#include <array>
#include <cstddef>

namespace faults {

// What the program does that can fail. Each is counted from 1 in a run.
enum class Step {
    none,
    statement,         // an SQL statement
    databaseOpen,      // SQLite opens a file of a database,
    databaseRead,      // reads,
    databaseWrite,     // writes,
    databaseSync,      // brings it to the disk,
    databaseTruncate,  // shortens it,
    databaseDelete,    // deletes it,
    databaseLock,      // or locks it
    databaseChange,    // any of these that changes what is on the disk
    newMemory,         // operator new
    sqliteMemory,      // SQLite's allocations
    file,              // the program's own calls for files: open, write, fsync, rename...
    output,            // a write to standard output
};

// How a step fails.
enum class Way {
    refused,    // with `Fault::code`, having done nothing
    full,       // as on a full disk: a write is cut off; SQLite rolls a transaction back itself
    killed,     // the process ends at once, its last write cut off
    powerLost,  // the process ends at once, and what was not brought to the disk may be gone
};

constexpr unsigned long kForEver = static_cast<unsigned long>(-1);

struct Fault {
    Step step = Step::none;
    Way way = Way::refused;
    int code = SQLITE_ERROR;  // SQLite's result code, or errno for the program's own files
    unsigned long first = 1;  // the first occurrence that fails
    unsigned long times = 1;  // how many in a row
    unsigned seed = 0;        // which of the unsynced writes a power loss keeps
};

struct Run {
    Fault fault;
    bool armed = false;
    unsigned long count = 0;            // of the fault's step
    unsigned long struck = 0;           // how often it failed
    unsigned long struckInActions = 0;  // of these, after the first action had run
    unsigned long selectsGivenUp =
        0;                           // selects that failed three times: their rows count as absent
    unsigned long sleptSeconds = 0;  // no time has passed
    bool renamedUnsynced = false;    // a file took another's place before it was on the disk
    long liveObjects = 0;            // of operator new
    std::array<char, 4096> actions{};  // the commands that ran, a line each
    std::size_t actionsLength = 0;
};

// Of this process or, after it, of its child.
Run& run();

// Counts an occurrence. True when it is to fail.
bool strikes(Step step);

// While one exists, the process's calls for files are not counted as the program's own.
class NotTheProgram {
  public:
    NotTheProgram() { ++depth; }
    ~NotTheProgram() { --depth; }
    NotTheProgram(const NotTheProgram&) = delete;
    NotTheProgram& operator=(const NotTheProgram&) = delete;
    static bool any() { return depth > 0; }

  private:
    static inline int depth = 0;
};

// Lets the fault strike SQLite's files and memory: a default VFS between SQLite and the real one.
// Before the first use of SQLite.
void interposeSqlite();

}  // namespace faults
