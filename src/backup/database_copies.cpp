#include "backup/database_copies.h"

#include <sqlite3.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <memory>

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

constexpr const char* kJournal = "-journal";

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
    const std::unique_ptr<sqlite3_backup, FinishBackup> backup(
        sqlite3_backup_init(to, "main", from, "main"));
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

// A database among those that are copied at one moment.
struct Source {
    const CopyJob* job;
    Connection db;
    bool asItIs = false;  // as a file, without SQLite
};

// What somebody else has put there can be a pipe, which never ends, or a link to any file.
void checkTrusted(const std::string& path) {
    if (const std::string reason = tarvodb::reasonAgainst(path); !reason.empty()) {
        throw Fault(ExitStatus::cannotRead, reason);
    }
}

// Takes hold of one more. A source that SQLite cannot read as it stands is taken as a file.
int hold(Source& source) {
    checkTrusted(source.job->from);
    int code = tryOpening(source.job->from, Access::readOnly, source.db);
    checkTrusted(source.job->from);
    code = code == SQLITE_OK ? beginReading(source.db.get()) : code;
    switch (code) {
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
        case SQLITE_READONLY:  // a journal must be rolled back first
            source.db.reset();
            source.asItIs = true;
            return SQLITE_OK;
        default:
            return code;
    }
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

// The database and its journal, if it has one. Another program that opens it rolls the journal
// back; when that happens meanwhile, the two need not belong together, and the result is
// SQLITE_BUSY.
int copyWithJournal(const CopyJob& job) {
    const std::string journal = job.from + kJournal;
    const auto toUndo = platform::files::readRegular(journal);
    const std::string content = bytesOf(job.from);
    if (platform::files::readRegular(journal) != toUndo) {
        return SQLITE_BUSY;
    }
    writeBytes(job.to, content);
    if (toUndo) {
        writeBytes(job.to + kJournal, *toUndo);
        // Rolls it back. What SQLite cannot read stays as it is.
        Connection db;
        if (tryOpening(job.to, Access::readWrite, db) == SQLITE_OK) {
            beginReading(db.get());
        }
    }
    return SQLITE_OK;
}

int copyContent(const Source& source) {
    if (source.asItIs) {
        return copyWithJournal(*source.job);
    }
    Connection to;
    const int code = tryOpening(source.job->to, Access::readWrite, to);
    return code == SQLITE_OK ? copyPages(to.get(), source.db.get()) : code;
}

// Nobody can use a file that is no database, so that nobody loses it. An empty one is a database.
void emptyRuin(const std::string& path) {
    // What was left beside it would be taken for the new one's.
    for (const char* suffix : {kJournal, "-wal", "-shm"}) {
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
            sources.push_back({.job = &job, .db = nullptr});
            if (const int held = hold(sources.back()); held != SQLITE_OK) {
                return held;
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

void putBack(const CopyJob& job) {
    const Connection from = openConnection(job.from, Access::readOnly);
    if (beginReading(from.get()) == SQLITE_NOTADB) {
        writeBytes(job.to, bytesOf(job.from));  // there was none before either
        return;
    }
    const Connection to = openConnection(job.to, Access::readWrite);
    const auto copy = [&] {
        return whileBusy([&] { return copyPages(to.get(), from.get()); }, [] {});
    };
    int code = copy();
    if (code == SQLITE_NOTADB) {
        emptyRuin(job.to);
        code = copy();
    }
    checkResult(code, ExitStatus::cannotWrite, job.to);
}

}  // namespace tarvo_backup
