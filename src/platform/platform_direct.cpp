// The door of tarvo-config: always open.
#include "platform/os.h"

namespace platform {

sqlite3* openDatabase(const std::string& path) { return os::openDatabase(path); }

int openDatabaseFile(const std::string& path, sqlite3** db) {
    return os::openDatabaseFile(path, db);
}

int closeDatabase(sqlite3* db) { return os::closeDatabase(db); }

int executeSql(sqlite3* db, const char* sql, char** errorMessage) {
    return os::executeSql(db, sql, errorMessage);
}

int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage) {
    return os::getTable(db, sql, cells, rows, columns, errorMessage);
}

int runShell(const std::string& command) { return os::runShell(command); }

std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines) {
    return os::readCommandLines(command, maxLines);
}

void sleepSeconds(unsigned seconds) { os::sleepSeconds(seconds); }

std::optional<FileStatus> fileStatus(const std::string& path) { return os::fileStatus(path); }

unsigned effectiveUser() { return os::effectiveUser(); }

std::optional<std::string> readFile(const std::string& path) { return os::readFile(path); }

std::optional<std::string> readRegularFile(const std::string& path) {
    return os::readRegularFile(path);
}

bool writeFile(const std::string& path, const std::string& content) {
    return os::writeFile(path, content);
}

bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access) {
    return os::replaceFile(path, pieces, access);
}

void renameFile(const std::string& from, const std::string& to) { os::renameFile(from, to); }

void removeFile(const std::string& path) { os::removeFile(path); }

void syncFiles() { os::syncFiles(); }

std::optional<std::time_t> modificationTime(const std::string& path) {
    return os::modificationTime(path);
}

bool print(std::string_view text) { return os::print(text); }

void printError(std::string_view text) { os::printError(text); }

std::time_t now() { return os::now(); }

void logLine(int priority, const std::string& line) { os::logLine(priority, line); }

void printSystemError(const char* message) { os::printSystemError(message); }

}  // namespace platform
