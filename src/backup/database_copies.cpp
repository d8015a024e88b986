#include "backup/database_copies.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <optional>
#include <utility>

#include "backup/interruption.h"
#include "backup/patience.h"
#include "backup/sqlite.h"
#include "db/trusted_files.h"
#include "platform/files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

namespace {

struct FinishBackup {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

using BackupHandle = std::unique_ptr<sqlite3_backup, FinishBackup>;

constexpr const char* kJournal = "-journal";
constexpr const char* kLog = "-wal";
constexpr const char* kLogIndex = "-shm";

// A copy's step tells the extended ones.
int primaryCode(int code) { return code & 0xff; }

// `work` gives SQLite's result code. Repeats it while others hold a database; `betweenTries` may
// throw.
template <class Work, class BetweenTries>
int whileBusy(Work work, BetweenTries betweenTries) {
    int code = SQLITE_OK;
    const auto attempt = [&] {
        code = work();
        return primaryCode(code) != SQLITE_BUSY;
    };
    tryPatiently("Waiting for another program that uses the databases", attempt, betweenTries);
    return code;
}

// The content of `from` into `to`; its result code is the one of the step.
int copyPages(sqlite3* to, sqlite3* from) {
    const BackupHandle backup(sqlite3_backup_init(to, "main", from, "main"));
    if (!backup) {
        return sqlite3_errcode(to);
    }
    const int code = sqlite3_backup_step(backup.get(), -1);
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

// A read transaction, which keeps writers from committing.
int beginReading(sqlite3* db) {
    return sqlite3_exec(db, "BEGIN; SELECT count(*) FROM sqlite_master", nullptr, nullptr, nullptr);
}

// What somebody else has put there can be a pipe, which never ends, or a link to any file.
void checkTrusted(const std::string& path) {
    if (const std::string reason = tarvodb::reasonAgainst(path); !reason.empty()) {
        throw Fault(ExitStatus::cannotRead, reason);
    }
}

// A database's file, and those beside it that belong to it: "" is the file itself.
constexpr const char* kFiles[] = {"", kJournal, kLog};
using Files = std::array<std::optional<std::string>, std::size(kFiles)>;

Files filesOf(const std::string& path) {
    Files files;
    std::transform(std::begin(kFiles), std::end(kFiles), files.begin(),
                   [&](const char* suffix) { return platform::files::readRegular(path + suffix); });
    return files;
}

// A database among those that are copied at one moment: held by a transaction that reads, or else
// its files.
struct Source {
    const CopyJob* job;
    Connection db;
    Files files;
};

void takeFiles(Source& source) {
    source.db.reset();
    source.files = filesOf(source.job->from);
    if (!source.files.front()) {
        throw Fault(ExitStatus::cannotRead, source.job->from + ": " + std::strerror(errno));
    }
}

// Whether it is in WAL mode and nobody has it open: SQLite, even when it only reads, would make
// files beside it. One that this program has open itself must not be opened as a file, the end of
// which would give up SQLite's locks.
bool isLogAtRest(const std::string& path) {
    if (fs::exists(path + kLogIndex)) {
        return false;
    }
    constexpr std::size_t kReadVersion = 19;  // of the format, in a database's header
    constexpr char kWal = 2;
    std::array<char, kReadVersion + 1> header{};
    std::ifstream(path, std::ios::binary).read(header.data(), header.size());
    return header[kReadVersion] == kWal;
}

// Takes hold of one more. A source that SQLite cannot read as it stands is taken as a file.
int hold(Source& source) {
    checkTrusted(source.job->from);
    if (isLogAtRest(source.job->from)) {
        takeFiles(source);
        return SQLITE_OK;
    }
    int code = tryOpening(source.job->from, Access::readOnly, source.db);
    checkTrusted(source.job->from);
    code = code == SQLITE_OK ? beginReading(source.db.get()) : code;
    switch (code) {
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
        case SQLITE_READONLY:  // a journal must be rolled back first
            takeFiles(source);
            return SQLITE_OK;
        default:
            return code;
    }
}

// A number that moves when a transaction finds that somebody else has written since the one before.
unsigned dataVersion(sqlite3* db) {
    unsigned version = 0;
    sqlite3_file_control(db, "main", SQLITE_FCNTL_DATA_VERSION, &version);
    return version;
}

// Whether nobody has written to it since it was held. A transaction that reads keeps writers out,
// but not those of a write-ahead log.
bool isAsItWasHeld(const Source& source) {
    if (!source.db) {
        return filesOf(source.job->from) == source.files;
    }
    sqlite3* db = source.db.get();
    if (query(db, "PRAGMA journal_mode") != std::vector<Cells>{{"wal"}}) {
        return true;
    }
    const unsigned version = dataVersion(db);
    query(db, "COMMIT");
    return beginReading(db) == SQLITE_OK && dataVersion(db) == version;
}

std::string bytesOf(const std::string& path) {
    auto content = platform::files::readRegular(path);
    if (!content) {
        throw Fault(ExitStatus::cannotRead, path + ": " + std::strerror(errno));
    }
    return *std::move(content);
}

void writeBytes(const std::string& path, const std::string& content) {
    if (!platform::files::write(path, content)) {
        throw Fault(ExitStatus::cannotWrite, path + ": " + std::strerror(errno));
    }
}

void writeFiles(const Files& files, const std::string& path) {
    for (std::size_t at = 0; at < files.size(); ++at) {
        if (files[at]) {
            writeBytes(path + kFiles[at], *files[at]);
        }
    }
    // Settles what a journal or a log holds. What SQLite cannot read stays as it is.
    Connection db;
    if (std::any_of(files.begin() + 1, files.end(), [](const auto& file) { return file; }) &&
        tryOpening(path, Access::readWrite, db) == SQLITE_OK) {
        beginReading(db.get());
    }
}

int copyContent(const Source& source) {
    if (!source.db) {
        writeFiles(source.files, source.job->to);
        return SQLITE_OK;
    }
    Connection to;
    const int code = tryOpening(source.job->to, Access::readWrite, to);
    return code == SQLITE_OK ? copyPages(to.get(), source.db.get()) : code;
}

// Nobody can use a file that is no database, so that nobody loses it. An empty one is a database.
void emptyRuin(const std::string& path) {
    // What was left beside it would be taken for the new one's.
    for (const char* suffix : {kJournal, kLog, kLogIndex}) {
        platform::removeFile(path + suffix);
    }
    std::error_code ignored;  // the next copy finds the ruin again
    fs::resize_file(path, 0, ignored);
}

}  // namespace

void copyFromDevice(const std::vector<CopyJob>& jobs) {
    std::string path;
    ExitStatus status = ExitStatus::cannotRead;
    const auto copyAll = [&] {
        std::vector<Source> sources;
        for (const CopyJob& job : jobs) {
            path = job.from;
            if (!fs::exists(job.from)) {
                continue;
            }
            sources.push_back({.job = &job, .db = nullptr, .files = {}});
            if (const int held = hold(sources.back()); held != SQLITE_OK) {
                return held;
            }
        }
        // Each was held before any is looked at again: they are of one moment.
        for (const Source& source : sources) {
            path = source.job->from;
            if (!isAsItWasHeld(source)) {
                return SQLITE_BUSY;
            }
        }
        for (const Source& source : sources) {
            path = source.job->from;
            const int copied = copyContent(source);
            // The sources are open: a file that cannot be opened is the copy, or its journal.
            if (isDiskFault(copied) || copied == SQLITE_CANTOPEN) {
                path = source.job->to;
                status = ExitStatus::cannotWrite;
            }
            if (copied != SQLITE_OK) {
                return copied;
            }
        }
        return SQLITE_OK;
    };
    const int code = whileBusy(copyAll, endIfInterrupted);
    checkResult(code, status, path);
}

void copyOwn(const CopyJob& job) {
    if (fs::exists(job.from)) {
        writeBytes(job.to, bytesOf(job.from));
    }
}

PutBack::PutBack(CopyJob job) : job_(std::move(job)) {
    if (!fs::exists(job_.to)) {
        return;
    }
    to_ = openConnection(job_.to, Access::readWrite);
    const auto read = [this] {
        const int code = beginReading(to_.get());
        sqlite3_exec(to_.get(), "COMMIT", nullptr, nullptr, nullptr);
        return code;
    };
    if (whileBusy(read, [] {}) == SQLITE_OK) {
        version_ = dataVersion(to_.get());
    }
}

// Gives SQLite's result code. Others are locked out before it is asked whether they have written.
int PutBack::copy(sqlite3* from, bool whoeverHasWritten) {
    const BackupHandle backup(sqlite3_backup_init(to_.get(), "main", from, "main"));
    if (!backup) {
        return sqlite3_errcode(to_.get());
    }
    int code = sqlite3_backup_step(backup.get(), 0);
    if (code == SQLITE_OK) {
        isOther_ = !whoeverHasWritten && version_ && dataVersion(to_.get()) != version_;
        if (isOther_) {
            return SQLITE_OK;
        }
        code = sqlite3_backup_step(backup.get(), -1);
    }
    return code == SQLITE_DONE ? SQLITE_OK : code;
}

bool PutBack::run(bool whoeverHasWritten) {
    const Connection from = openConnection(job_.from, Access::readOnly);
    const int copyCode = beginReading(from.get());
    if (copyCode == SQLITE_NOTADB) {
        writeBytes(job_.to, bytesOf(job_.from));  // there was none before either
        return true;
    }
    checkResult(copyCode, ExitStatus::cannotRead, job_.from);
    if (!to_) {
        to_ = openConnection(job_.to, Access::readWrite);
    }
    const auto copyPatiently = [&] {
        return whileBusy([&] { return copy(from.get(), whoeverHasWritten); }, [] {});
    };
    int code = copyPatiently();
    if (code == SQLITE_NOTADB || primaryCode(code) == SQLITE_CORRUPT) {
        emptyRuin(job_.to);
        code = copyPatiently();
    }
    checkResult(code, ExitStatus::cannotWrite, job_.to);
    return !isOther_;
}

}  // namespace tarvo_backup
