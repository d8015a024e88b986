#include "backup/sqlite.h"

#include <sqlite3.h>

namespace tarvo_backup {

void CloseConnection::operator()(sqlite3* db) const { sqlite3_close(db); }

namespace {

struct FinalizeStatement {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

}  // namespace

int tryOpening(const std::string& path, Access access, Connection& db) {
    const int flags = access == Access::readOnly ? SQLITE_OPEN_READONLY
                                                 : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    sqlite3* handle = nullptr;
    const int code = sqlite3_open_v2(path.c_str(), &handle, flags, nullptr);
    db.reset(handle);  // a failed open hands one out too
    return code;
}

void checkResult(int code, ExitStatus status, const std::string& path) {
    if (code != SQLITE_OK) {
        throw DatabaseFault(code, status, path + ": " + sqlite3_errstr(code));
    }
}

bool isDiskFault(int code) {
    switch (code) {
        case SQLITE_FULL:
        case SQLITE_IOERR_WRITE:
        case SQLITE_IOERR_FSYNC:
        case SQLITE_IOERR_DIR_FSYNC:
        case SQLITE_IOERR_TRUNCATE:
        case SQLITE_IOERR_DELETE:
            return true;
        default:
            return false;
    }
}

Connection openConnection(const std::string& path, Access access) {
    Connection db;
    checkResult(tryOpening(path, access, db),
                access == Access::readOnly ? ExitStatus::cannotRead : ExitStatus::cannotWrite,
                path);
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

}  // namespace tarvo_backup
