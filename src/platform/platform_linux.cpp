#include <sqlite3.h>
#include <sys/stat.h>
#include <syslog.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <memory>

#include "platform/files.h"
#include "platform/open_db.h"
#include "platform/os.h"

namespace platform::os {

namespace {

struct ClosePipe {
    void operator()(FILE* pipe) const { pclose(pipe); }
};

// One of the C library's: the C++ library's own streams bring their locales along, which take
// longer to start, and more memory, than all else of a small run.
class StandardStream {
  public:
    explicit StandardStream(FILE* file) : file_(file) {}

    bool print(std::string_view text) {
        isWhole_ = isWhole_ && std::fwrite(text.data(), 1, text.size(), file_) == text.size() &&
                   std::fflush(file_) == 0;
        return isWhole_;
    }

  private:
    FILE* file_;
    bool isWhole_ = true;
};

}  // namespace

sqlite3* openDatabase(const std::string& path) { return openDb(path); }

int openDatabaseFile(const std::string& path, sqlite3** db) {
    return sqlite3_open(path.c_str(), db);
}

int closeDatabase(sqlite3* db) { return sqlite3_close(db); }

int executeSql(sqlite3* db, const char* sql, char** errorMessage) {
    return sqlite3_exec(db, sql, nullptr, nullptr, errorMessage);
}

int getTable(sqlite3* db, const char* sql, char*** cells, int* rows, int* columns,
             char** errorMessage) {
    return sqlite3_get_table(db, sql, cells, rows, columns, errorMessage);
}

int runShell(const std::string& command) {
    const int result = system(command.c_str());  // NOLINT(concurrency-mt-unsafe): one thread
    // system() keeps an interrupt from us, which was for us too when it has ended the script.
    if (WIFSIGNALED(result) && WTERMSIG(result) == SIGINT) {
        raise(SIGINT);
    }
    return result;
}

std::vector<std::string> readCommandLines(const std::string& command, std::size_t maxLines) {
    std::vector<std::string> lines;
    const std::unique_ptr<FILE, ClosePipe> pipe(popen(command.c_str(), "r"));
    if (!pipe) {
        return lines;
    }
    std::array<char, 128> line{};
    while (lines.size() < maxLines && std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
        lines.emplace_back(line.data());
    }
    return lines;
}

void sleepSeconds(unsigned seconds) {
    // A signal that does not end the program does not shorten its sleep either.
    while (seconds > 0) {
        seconds = sleep(seconds);
    }
}

std::optional<FileStatus> fileStatus(const std::string& path) { return files::status(path); }

unsigned effectiveUser() { return geteuid(); }

std::optional<std::string> readFile(const std::string& path) { return files::read(path); }

std::optional<std::string> readRegularFile(const std::string& path) {
    return files::readRegular(path);
}

bool writeFile(const std::string& path, const std::string& content) {
    return files::write(path, content);
}

bool replaceFile(const std::string& path, std::span<const std::string> pieces,
                 const FileAccess& access) {
    return files::replace(path, pieces, access);
}

void renameFile(const std::string& from, const std::string& to) {
    std::rename(from.c_str(), to.c_str());
}

void removeFile(const std::string& path) { unlink(path.c_str()); }

void syncFiles() { sync(); }

std::optional<std::time_t> modificationTime(const std::string& path) {
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return status.st_mtime;
}

bool print(std::string_view text) {
    static StandardStream stream(stdout);
    return stream.print(text);
}

void printError(std::string_view text) {
    static StandardStream stream(stderr);
    stream.print(text);
}

std::time_t now() { return std::time(nullptr); }

void logLine(int priority, const std::string& line) { syslog(priority, "%s", line.c_str()); }

void printSystemError(const char* message) { std::perror(message); }

}  // namespace platform::os
