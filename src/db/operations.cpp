#include "db/operations.h"

#include <sqlite3.h>
#include <syslog.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "db/sql_text.h"
#include "platform/platform.h"

namespace tarvodb {

void ResultTable::FreeTable::operator()(char** cells) const { sqlite3_free_table(cells); }

std::span<const char* const> ResultTable::row(std::size_t row) const {
    // The first row of cells holds the column names.
    return {cells_.get() + (row + 1) * columns_, columns_};
}

namespace core {

namespace {

void logFault(const char* operation, const std::string& text) {
    platform::logLine(LOG_ERR, std::string("[ERROR_DB]") + operation + ": " + text + "\n");
}

// Calls `statement` until it succeeds, at most three times, and logs what fails.
//   statement(char** errorMessage) -> SQLite's result code
//   faultText(int code, int attempt) -> the text of the first log line; attempts count from 0
template <class Statement, class FaultText>
bool tryThreeTimes(const char* operation, Statement statement, FaultText faultText) {
    constexpr int kTries = 3;
    for (int attempt = 0; attempt < kTries; ++attempt) {
        char* rawMessage = nullptr;
        const int code = statement(&rawMessage);
        const SqliteText message(rawMessage);
        if (code == SQLITE_OK) {
            return true;
        }
        logFault(operation, faultText(code, attempt));
        if (message) {
            logFault(operation, message.get());
            platform::printSystemError(message.get());
        }
        platform::sleepSeconds(static_cast<unsigned>(attempt) + 1);
    }
    return false;
}

// The same for a statement without rows.
template <class FaultText>
bool executeThreeTimes(const char* operation, sqlite3* db, const std::string& sql,
                       FaultText faultText) {
    return tryThreeTimes(
        operation, [&](char** message) { return platform::executeSql(db, sql.c_str(), message); },
        faultText);
}

std::string attemptText(const std::string& text, int attempt) {
    return text + std::to_string(attempt);
}

std::string codedAttemptText(int code, const std::string& text, int attempt) {
    return "Error (" + std::to_string(code) + ") " + attemptText(text, attempt);
}

std::string joinedColumnNames(const TableInfo& table) {
    std::string names;
    for (const std::string_view column : table.columns) {
        names += names.empty() ? "" : ", ";
        names += column;
    }
    return names;
}

std::string keyCondition(const Row& row) {
    return " WHERE " + std::string(row.table().columns.front()) + " = " + quoted(row.key().text());
}

}  // namespace

ResultTable doSelect(sqlite3* db, const TableInfo& table, const char* clause,
                     std::span<const char* const> arguments) {
    std::array<const char*, kMaxArguments> given{};
    std::copy(arguments.begin(), arguments.end(), given.begin());
    const std::string format =
        std::string("SELECT * FROM ") + table.name + " " + (clause == nullptr ? "" : clause);
    const SqliteText sql = formatted(sqlite3_mprintf(format.c_str(), given[0], given[1], given[2]));

    ResultTable result;
    tryThreeTimes(
        "doSelect",
        [&](char** message) {
            char** cells = nullptr;
            int rows = 0;
            int columns = 0;
            const int code = platform::getTable(db, sql.get(), &cells, &rows, &columns, message);
            const bool ok = code == SQLITE_OK;
            result = ResultTable(cells, ok ? rows : 0, ok ? columns : 0);
            return code;
        },
        [&](int, int attempt) {
            return attemptText(
                std::string("Error leyendo datos tabla ") + table.name + " . intento: ", attempt);
        });
    return result;
}

bool insert(Row& row, sqlite3* db) {
    const TableInfo& table = row.table();
    std::string values;
    for (std::size_t column = 0; column < table.columns.size(); ++column) {
        values += values.empty() ? "" : ", ";
        values += quoted(row.value(column).text());
    }
    const std::string sql = std::string("INSERT INTO ") + table.name + " (" +
                            joinedColumnNames(table) + ")  VALUES (" + values + " )";
    const bool inserted = executeThreeTimes("insert", db, sql, [&](int code, int attempt) {
        return codedAttemptText(
            code,
            std::string("inserting register in table ") + table.name + " . Attempt: ", attempt);
    });
    if (inserted) {
        // Row ids are 32-bit numbers on the device.
        const auto rowId = static_cast<std::int32_t>(sqlite3_last_insert_rowid(db));
        row.replaceKey(tSqlite3int(static_cast<long>(rowId)));
    }
    return inserted;
}

bool update(Row& row, sqlite3* db) {
    const TableInfo& table = row.table();
    std::string assignments;
    for (std::size_t column = 0; column < table.columns.size(); ++column) {
        if (!row.isModified(column)) {
            continue;
        }
        // An update writes a text's first "%" as a blank, and the record follows what is stored.
        // An insert writes texts as they stand.
        std::string text = row.value(column).asString();
        if (const std::size_t percent = text.find('%'); percent != std::string::npos) {
            text[percent] = ' ';
            row.setValue(column, tSqlite3parent(std::move(text)));
        }
        assignments += assignments.empty() ? "" : ",";
        assignments += " " + std::string(table.columns[column]) + " = " +
                       quoted(row.value(column).text()) + " ";
    }
    if (assignments.empty()) {
        return true;
    }
    const std::string sql =
        std::string("UPDATE ") + table.name + " SET " + assignments + keyCondition(row);
    const bool updated = executeThreeTimes("update", db, sql, [&](int, int attempt) {
        return attemptText(std::string("Error actualizando datos registro en tabla ") + table.name +
                               " . intento: ",
                           attempt);
    });
    if (updated) {
        row.clearModified();
    }
    return updated;
}

bool deleteAll(const TableInfo& table, sqlite3* db, bool vacuum) {
    const std::string sql = std::string("DELETE FROM ") + table.name;
    const bool deleted = executeThreeTimes("deleteAll", db, sql, [&](int, int) {
        return std::string("Error eliminando la tabla ") + table.name;
    });
    if (deleted && vacuum) {
        platform::executeSql(db, "vacuum", nullptr);
    }
    return deleted;
}

bool deleteId(const Row& row, sqlite3* db) {
    const TableInfo& table = row.table();
    const std::string sql = std::string("DELETE FROM ") + table.name + keyCondition(row);
    return executeThreeTimes("deleteId", db, sql, [&](int code, int attempt) {
        return codedAttemptText(
            code,
            std::string("borrando registro en tabla ") + table.name + " . intento: ", attempt);
    });
}

}  // namespace core

}  // namespace tarvodb
