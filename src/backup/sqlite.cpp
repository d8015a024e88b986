#include "backup/sqlite.h"

#include <sqlite3.h>

#include <filesystem>

#include "backup/interruption.h"
#include "backup/patience.h"
#include "db/trusted_files.h"
#include "platform/platform.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

void CloseConnection::operator()(sqlite3* db) const { sqlite3_close(db); }

namespace {

struct FinishBackup {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};
struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

constexpr const char* kJournal = "-journal";

// `work` gives SQLite's result code. Repeats it while others hold a database; `betweenTries` may
// throw.
template <class Work, class BetweenTries>
int whileBusy(Work work, BetweenTries betweenTries) {
    int code = SQLITE_OK;
    const auto attempt = [&] {
        code = work();
        return code != SQLITE_BUSY;
    };
    tryPatiently("Waiting for another program that uses the databases", attempt, betweenTries);
    return code;
}

void check(int code, ExitStatus status, const std::string& path) {
    if (code != SQLITE_OK) {
        throw DatabaseFault(code, status, path + ": " + sqlite3_errstr(code));
    }
}

int open(const std::string& path, Access access, Connection& db) {
    const int flags = access == Access::readOnly ? SQLITE_OPEN_READONLY
                                                 : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    db.reset(handle);  // a failed open hands one out too
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
    int code = open(source.job->from, Access::readOnly, source.db);
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

void copyFile(const Source& source) {
    const auto& [from, to] = *source.job;
    fs::copy_file(from, to, fs::copy_options::overwrite_existing);
    if (fs::exists(from + kJournal)) {
        fs::copy_file(from + kJournal, to + kJournal, fs::copy_options::overwrite_existing);
    }
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

int copyContent(const Source& source) {
    if (source.asItIs) {
        copyFile(source);
        return SQLITE_OK;
    }
    Connection to;
    const int code = open(source.job->to, Access::readWrite, to);
    return code == SQLITE_OK ? copyPages(to.get(), source.db.get()) : code;
}

}  // namespace

Connection openConnection(const std::string& path, Access access) {
    Connection db;
    check(open(path, access, db),
          access == Access::readOnly ? ExitStatus::cannotRead : ExitStatus::cannotWrite, path);
    return db;
}

Selected select(sqlite3* db, const std::string& sql) {
    sqlite3_stmt* prepared = nullptr;
    const auto checked = [db](int code) {
        if (code != SQLITE_OK && code != SQLITE_ROW && code != SQLITE_DONE) {
            throw DatabaseFault(code, ExitStatus::cannotRead, sqlite3_errmsg(db));
        }
        return code;
    };
    checked(sqlite3_prepare_v2(db, sql.c_str(), -1, &prepared, nullptr));
    const std::unique_ptr<sqlite3_stmt, FinalizeStatement> statement(prepared);
    Selected selected;
    for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
        selected.columns.emplace_back(sqlite3_column_name(prepared, column));
    }
    while (checked(sqlite3_step(prepared)) == SQLITE_ROW) {
        Cells& row = selected.rows.emplace_back();
        for (int column = 0; column < sqlite3_column_count(prepared); ++column) {
            const auto* text = sqlite3_column_text(prepared, column);
            const auto size = static_cast<std::size_t>(sqlite3_column_bytes(prepared, column));
            row.push_back(text == nullptr
                              ? Cell()
                              : Cell(std::string(reinterpret_cast<const char*>(text), size)));
        }
    }
    return selected;
}

std::vector<Cells> query(sqlite3* db, const std::string& sql) { return select(db, sql).rows; }

void takeCopies(const std::vector<CopyJob>& jobs) {
    std::string path;
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
            if (const int copied = copyContent(source); copied != SQLITE_OK) {
                return copied;
            }
        }
        return SQLITE_OK;
    };
    check(whileBusy(copyAll, endIfInterrupted), ExitStatus::cannotRead, path);
}

void putBack(const CopyJob& job) {
    const Connection from = openConnection(job.from, Access::readOnly);
    const Connection to = openConnection(job.to, Access::readWrite);
    const auto copy = [&] {
        return whileBusy([&] { return copyPages(to.get(), from.get()); }, [] {});
    };
    int code = copy();
    if (code == SQLITE_NOTADB) {
        emptyRuin(job.to);
        code = copy();
    }
    check(code, ExitStatus::cannotWrite, job.to);
}

}  // namespace tarvo_backup
