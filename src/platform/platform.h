// The one door to the device: databases, processes, files, time and the system log.
//
// tarvo-config links platform_direct.cpp, which hands everything on to Linux (platform/os.h).
// tarvo-backup links a door that can be shut behind a private copy of the device
// (backup/sandbox_door.cpp). Unit tests link a fake with the same functions that keeps time,
// collects what went through the door and maps device paths into a temporary folder.
#pragma once

#include <cstdint>
#include <ctime>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

struct sqlite3;

namespace platform {

// --- Databases -------------------------------------------------------------------------------

// Opens (and creates if needed) the SQLite file at `path` with the device's common library.
// The caller owns the handle and closes it with closeDatabase. Null on failure.
sqlite3* openDatabase(const std::string& path);

// Opens the SQLite file at `path` with SQLite itself and returns SQLite's result code. SQLite
// hands out a handle also when it fails; the caller owns it either way. For the device identity,
// which is read from such a handle too.
int openDatabaseFile(const std::string& path, sqlite3** db);

// SQLite's result code. Null is ignored.
int closeDatabase(sqlite3* db);

// sqlite3_exec without a callback. Returns SQLite's result code; a non-null *errorMessage belongs
// to the caller (sqlite3_free).
int executeSql(sqlite3* db, const char* sql, char** errorMessage);

// sqlite3_get_table. `*cells` belongs to the caller (sqlite3_free_table), *errorMessage as above.
int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage);

// --- Processes -------------------------------------------------------------------------------

// Runs `command` through the shell, waits for it and returns the result of system(), a wait status:
// 0 is success, 256 an exit status of 1. A command that an interrupt (SIGINT) has ended interrupts
// the program too.
int runShell(const std::string& command);

// Runs `command` through the shell and returns the first lines of its output, line ends included.
// At most `maxLines` lines, each of at most 127 characters (a longer line continues in the next).
// Empty when the command cannot be started or prints nothing.
std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines);

void sleepSeconds(unsigned seconds);

// --- Files -----------------------------------------------------------------------------------

// What a path names; a link is not followed.
struct FileStatus {
    bool isRegular = false;
    bool isFolder = false;
    unsigned owner = 0;
    unsigned group = 0;
    unsigned mode = 0;  // the permission bits
    // The two that tell one file from another.
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    bool isSameFileAs(const FileStatus& other) const {
        return device == other.device && number == other.number;
    }
};

// Nothing when there is no such file.
std::optional<FileStatus> fileStatus(const std::string& path);

// Who this program is for the device's files.
unsigned effectiveUser();

// The whole content, or nothing when the file cannot be opened or read.
std::optional<std::string> readFile(const std::string& path);

// The same for a file in a folder where anybody may put something: nothing for a link, a pipe or
// whatever else is not a regular file.
std::optional<std::string> readRegularFile(const std::string& path);

// Replaces the file's content in its place. False when it cannot be opened for writing, or when not
// all was written.
bool writeFile(const std::string& path, const std::string& content);

// Who may read and write a file: its permission bits, and its group unless it is the program's own.
struct FileAccess {
    unsigned mode;
    std::optional<unsigned> group = {};
};

// Replaces the file by a new one, which is on the disk before it takes the old one's place: there
// is one of the two, whole, at any time. A link or a pipe that stands there is replaced itself. The
// new file is called `path` + ".new-" and six characters until then; a program that is killed
// leaves it. False when it could not be done; the old file is still there then. Its content is the
// pieces, one after the other.
bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access);
inline bool replaceFile(const std::string& path, const std::string& content,
                        const FileAccess& access) {
    return replaceFile(path, {&content, 1}, access);
}

// Failures of these two are ignored: a file that is not there needs no work.
void renameFile(const std::string& from, const std::string& to);
void removeFile(const std::string& path);

// Asks the kernel to bring all written files to the disk.
void syncFiles();

// Nothing when the file's status cannot be read.
std::optional<std::time_t> modificationTime(const std::string& path);

// --- Standard streams ------------------------------------------------------------------------

// What is printed goes out at once: it stands before what a script prints, and is there whatever
// ends the program. After a text that could not be printed none is, on that stream.

// Whether all that was ever printed has been written.
bool print(std::string_view text);

// On standard error.
void printError(std::string_view text);

// --- Time and log ----------------------------------------------------------------------------

std::time_t now();

// Sends `line` to syslog as it stands. `priority` is syslog's facility|level value.
void logLine(int priority, const std::string& line);

// Prints `message`, followed by the text of the last system error, on standard error.
void printSystemError(const char* message);

}  // namespace platform
