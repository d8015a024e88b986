// The door of tarvo-backup: open to the device, or leading into a sandbox while there is one.
#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string_view>

#include "backup/device_run.h"
#include "backup/fault.h"
#include "backup/sandbox.h"
#include "backup/sqlite.h"
#include "document/xml.h"
#include "platform/os.h"

namespace platform {

namespace fs = std::filesystem;

using tarvo_backup::ExitStatus;
using tarvo_backup::Fault;
using tarvo_backup::Sandbox;
using tarvo_backup::Traffic;

namespace {

Sandbox* enterSandbox() {
    Sandbox* sandbox = Sandbox::active();
    if (sandbox != nullptr) {
        tarvo_backup::endIfInterrupted();
    }
    return sandbox;
}

// Whether the device would take a file's content there, for the user that the program is run as:
// into the file that is there, or into a new one, also where a link leads to it.
bool canWrite(fs::path path) {
    constexpr int kMostLinks = 40;  // that the kernel follows
    std::error_code failed;
    for (int links = 0; links < kMostLinks && fs::is_symlink(path, failed); ++links) {
        path = path.parent_path() / fs::read_symlink(path, failed);
    }
    const auto found = fs::status(path, failed);
    const bool isNew = found.type() == fs::file_type::not_found;
    const fs::path written = isNew ? path.parent_path() / "." : path;
    return !fs::is_directory(found) &&
           ::faccessat(AT_FDCWD, written.c_str(), W_OK, AT_EACCESS) == 0;
}

// Whether the device would give a file that name, which may be too long.
bool canName(const fs::path& path) {
    std::error_code failed;
    const auto found = fs::symlink_status(path, failed);
    return fs::status_known(found) && !fs::is_directory(found);
}

// Where a database is that is about to be opened. One that is not there is made, in the copy.
std::string database(const std::string& path) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        return path;
    }
    std::string copy = sandbox->mapped(path);
    if (!os::fileStatus(copy)) {
        sandbox->noteMissing(path);
    }
    return copy;
}

template <class Read>
std::optional<std::string> readBy(Read read, const std::string& path) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        return read(path);
    }
    Traffic& traffic = sandbox->traffic();
    if (path == Sandbox::kDocument) {
        ++traffic.tries;
        document::lastRead = nullptr;  // of an earlier try's tree
    }
    const auto written = traffic.files.find(path);
    return written == traffic.files.end() ? read(path) : written->second;
}

int counted(int result, sqlite3* db, char** errorMessage) {
    if (Sandbox* sandbox = Sandbox::active(); sandbox != nullptr && result != SQLITE_OK) {
        ++sandbox->traffic().failedStatements;
        // That there is no room for the copy says nothing of the device.
        if (const int code = sqlite3_extended_errcode(db); tarvo_backup::isDiskFault(code)) {
            if (errorMessage != nullptr) {
                sqlite3_free(*errorMessage);
            }
            throw Fault(ExitStatus::cannotWrite, sandbox->folder() + ": " + sqlite3_errstr(code));
        }
    }
    return result;
}

}  // namespace

sqlite3* openDatabase(const std::string& path) { return os::openDatabase(database(path)); }

int openDatabaseFile(const std::string& path, sqlite3** db) {
    return os::openDatabaseFile(database(path), db);
}

int closeDatabase(sqlite3* db) { return os::closeDatabase(db); }

int executeSql(sqlite3* db, const char* sql, char** errorMessage) {
    // One that fails may have stored it all the same.
    if (enterSandbox() == nullptr && std::string_view(sql) == "COMMIT") {
        tarvo_backup::deviceIsChanged = true;
    }
    return counted(os::executeSql(db, sql, errorMessage), db, errorMessage);
}

int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage) {
    enterSandbox();
    return counted(os::getTable(db, sql, cells, rows, columns, errorMessage), db, errorMessage);
}

int runShell(const std::string& command) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        tarvo_backup::deviceIsChanged = true;
        return os::runShell(command);
    }
    sandbox->noteScript(command);
    return 0;
}

// Only the device's identity is read like this.
std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines) {
    return os::readCommandLines(command, maxLines);
}

void sleepSeconds(unsigned seconds) {
    if (enterSandbox() == nullptr) {
        os::sleepSeconds(seconds);
    }
}

// Whose a file is, is asked of the device's own: the copies are this program's. A database that the
// device does not have is the copy's.
std::optional<FileStatus> fileStatus(const std::string& path) {
    const auto ofDevice = os::fileStatus(path);
    const Sandbox* sandbox = enterSandbox();
    return ofDevice || sandbox == nullptr ? ofDevice : os::fileStatus(sandbox->mapped(path));
}

unsigned effectiveUser() { return os::effectiveUser(); }

std::optional<std::string> readFile(const std::string& path) { return readBy(os::readFile, path); }

std::optional<std::string> readRegularFile(const std::string& path) {
    return readBy(os::readRegularFile, path);
}

bool writeFile(const std::string& path, const std::string& content) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        return os::writeFile(path, content);
    }
    if (!canWrite(path)) {
        return false;
    }
    sandbox->traffic().files.insert_or_assign(path, content);
    return true;
}

// What an export writes is for this program: it needs no room on the device.
bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        return os::replaceFile(path, pieces, access);
    }
    std::string content;
    for (const std::string& piece : pieces) {
        content += piece;
    }
    sandbox->traffic().files.insert_or_assign(path, std::move(content));
    return true;
}

void renameFile(const std::string& from, const std::string& to) {
    Sandbox* sandbox = enterSandbox();
    if (sandbox == nullptr) {
        tarvo_backup::deviceIsChanged = true;
        os::renameFile(from, to);
    } else if (auto content = canName(to) ? readFile(from) : std::nullopt) {
        Traffic& traffic = sandbox->traffic();
        traffic.renames.push_back({from, to});
        traffic.files.insert_or_assign(to, std::move(content));
        traffic.files.insert_or_assign(from, std::nullopt);
    }
}

void removeFile(const std::string& path) {
    if (Sandbox* sandbox = enterSandbox()) {
        sandbox->traffic().files.insert_or_assign(path, std::nullopt);
    } else {
        os::removeFile(path);
    }
}

void syncFiles() {
    if (enterSandbox() == nullptr) {
        os::syncFiles();
    }
}

std::optional<std::time_t> modificationTime(const std::string& path) {
    return os::modificationTime(path);
}

// Through the streams that this program itself prints on, and that OutputMuted mutes.
bool print(std::string_view text) { return static_cast<bool>(std::cout << text << std::flush); }

void printError(std::string_view text) { std::cerr << text << std::flush; }

std::time_t now() { return os::now(); }

void logLine(int priority, const std::string& line) {
    if (Sandbox* sandbox = Sandbox::active()) {
        sandbox->noteLine(priority, line);
    } else {
        os::logLine(priority, line);
    }
}

void printSystemError(const char* message) {
    if (Sandbox::active() == nullptr) {
        printError(std::string(message) + ": " + std::strerror(errno) + '\n');
    }
}

}  // namespace platform
