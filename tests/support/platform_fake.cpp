// The fake side of the platform door.
#include <sqlite3.h>
#include <sys/stat.h>

#include <iostream>

#include "platform/files.h"
#include "platform/platform.h"
#include "support/fake_device.h"

namespace platform {

namespace {

using test::FakeDevice;

FakeDevice& device() { return FakeDevice::current(); }

// Notes a statement. Its result code and message when it is to fail, otherwise nothing.
std::optional<int> notedFailure(sqlite3* db, const char* sql, char** message) {
    device().note(std::string("sql: ") + sql);
    device().runEffectOf(sql);
    const FakeDevice::Failure* failure = device().failureFor(sql);
    if (failure == nullptr) {
        return std::nullopt;
    }
    if (failure->undoesTransaction) {
        sqlite3_exec(db, "ROLLBACK", nullptr, nullptr, nullptr);
    }
    if (message != nullptr && !failure->message.empty()) {
        *message = sqlite3_mprintf("%s", failure->message.c_str());
    }
    return failure->code;
}

// A test's databases need not survive a power failure.
int openQuickly(const std::string& path, sqlite3** db) {
    const int result = sqlite3_open(device().path(path).c_str(), db);
    sqlite3_exec(*db, "PRAGMA synchronous = OFF", nullptr, nullptr, nullptr);
    return result;
}

}  // namespace

sqlite3* openDatabase(const std::string& path) {
    device().note("open: " + path);
    sqlite3* db = nullptr;
    if (device().opensFail(path) || openQuickly(path, &db) != SQLITE_OK) {
        sqlite3_close(db);
        return nullptr;
    }
    device().openHandles[db] = path;
    if (const auto effect = device().whenOpened.find(path); effect != device().whenOpened.end()) {
        effect->second();
    }
    return db;
}

int openDatabaseFile(const std::string& path, sqlite3** db) {
    device().note("open: " + path);
    const int result = openQuickly(path, db);
    device().openHandles[*db] = path;
    return result;
}

int closeDatabase(sqlite3* db) {
    if (db == nullptr) {
        return SQLITE_OK;
    }
    const std::string path = device().openHandles[db];
    device().openHandles.erase(db);
    device().note("close: " + path);
    const int result = sqlite3_close(db);
    const auto scripted = device().closeResults.find(path);
    return scripted == device().closeResults.end() ? result : scripted->second;
}

int executeSql(sqlite3* db, const char* sql, char** errorMessage) {
    const auto failure = notedFailure(db, sql, errorMessage);
    return failure ? *failure : sqlite3_exec(db, sql, nullptr, nullptr, errorMessage);
}

int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage) {
    const auto failure = notedFailure(db, sql, errorMessage);
    return failure ? *failure : sqlite3_get_table(db, sql, cells, rows, columns, errorMessage);
}

int runShell(const std::string& command) {
    device().note("shell: " + command);
    if (const auto effect = device().shellEffects.find(command);
        effect != device().shellEffects.end()) {
        effect->second();
    }
    const auto result = device().shellResults.find(command);
    return result == device().shellResults.end() ? 0 : result->second;
}

std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines) {
    device().note("read: " + command);
    std::vector<std::string> lines = device().commandLines[command];
    lines.resize(std::min(lines.size(), maxLines));
    return lines;
}

void sleepSeconds(unsigned seconds) { device().note("sleep: " + std::to_string(seconds)); }

std::optional<FileStatus> fileStatus(const std::string& path) {
    auto status = files::status(device().path(path));
    if (const auto owner = device().owners.find(path); status && owner != device().owners.end()) {
        status->owner = owner->second;
    }
    return status;
}

unsigned effectiveUser() { return device().user; }

std::optional<std::string> readFile(const std::string& path) { return device().readFile(path); }

std::optional<std::string> readRegularFile(const std::string& path) {
    return files::readRegular(device().path(path));
}

bool writeFile(const std::string& path, const std::string& content) {
    device().note("write: " + path);
    if (!std::filesystem::is_directory(device().path(path).parent_path()) ||
        std::filesystem::is_directory(device().path(path))) {
        return false;
    }
    device().writeFile(path, content);
    return true;
}

bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access) {
    device().note("write: " + path);
    return files::replace(device().path(path), pieces, access);
}

void renameFile(const std::string& from, const std::string& to) {
    device().note("rename: " + from + " " + to);
    std::error_code ignored;
    std::filesystem::rename(device().path(from), device().path(to), ignored);
}

void removeFile(const std::string& path) {
    device().note("remove: " + path);
    device().removeFile(path);
}

void syncFiles() { device().note("sync"); }

std::optional<std::time_t> modificationTime(const std::string& path) {
    struct stat status {};
    return stat(device().path(path).c_str(), &status) == 0 ? std::optional(status.st_mtime)
                                                           : std::nullopt;
}

bool print(std::string_view text) { return static_cast<bool>(std::cout << text << std::flush); }

void printError(std::string_view text) { std::cerr << text << std::flush; }

std::time_t now() { return device().time; }

void logLine(int priority, const std::string& line) {
    device().note("log " + std::to_string(priority) + ": " + line);
}

void printSystemError(const char* message) { device().note(std::string("perror: ") + message); }

}  // namespace platform
