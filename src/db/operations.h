// The operations that move records in and out of tables.
//
// Every statement is tried up to three times, with sleeps of 1, 2 and 3 seconds after a failure
// (the last one too), because other programs of the device write to the same files. Each failure
// is logged; the caller sees only true, false or an empty list. No operation begins or ends a
// transaction. Which operations a table has stands in its description; the others do not compile.
#pragma once

#include <algorithm>
#include <array>
#include <concepts>
#include <memory>
#include <span>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "db/record.h"

struct sqlite3;

namespace tarvodb {

// The rows that a select gave, with SQLite's storage. Empty when the select failed.
class ResultTable {
  public:
    ResultTable() = default;
    ResultTable(char** cells, int rows, int columns)
        : cells_(cells),
          rows_(static_cast<std::size_t>(rows)),
          columns_(static_cast<std::size_t>(columns)) {}

    [[nodiscard]] std::size_t rows() const { return rows_; }

    // The cells of row `row`, counted from 0. A null cell is SQL NULL.
    [[nodiscard]] std::span<const char* const> row(std::size_t row) const;

  private:
    struct FreeTable {
        void operator()(char** cells) const;
    };
    std::unique_ptr<char*, FreeTable> cells_;
    std::size_t rows_ = 0;
    std::size_t columns_ = 0;
};

// The parts that are the same for every table.
namespace core {

// At most this many arguments go into a select's clause.
inline constexpr std::size_t kMaxArguments = 3;

ResultTable doSelect(sqlite3* db, const TableInfo& table, const char* clause,
                     std::span<const char* const> arguments);
bool insert(Row& row, sqlite3* db);
bool update(Row& row, sqlite3* db);
bool deleteAll(const TableInfo& table, sqlite3* db, bool vacuum);
bool deleteId(const Row& row, sqlite3* db);

}  // namespace core

// A format text that is appended to a select, with the number of its directives: %Q for a value,
// %q for the name of a column. It is known when the program is compiled.
template <std::size_t Arguments>
struct Clause {
    static_assert(Arguments <= core::kMaxArguments);

    // NOLINTNEXTLINE(google-explicit-constructor): a clause is written as its text
    consteval Clause(const char* format) : text(format) {
        const std::string_view all = format;
        if (static_cast<std::size_t>(std::count(all.begin(), all.end(), '%')) != Arguments) {
            throw std::invalid_argument("the clause has another number of directives");
        }
    }

    const char* text;
};

template <class Table>
std::vector<Record<Table>> recordsOf(const ResultTable& result) {
    static_assert(Table::info.has(Operation::select), "this table has no select");
    std::vector<Record<Table>> records;
    records.reserve(result.rows());
    for (std::size_t row = 0; row < result.rows(); ++row) {
        records.emplace_back(result.row(row));
    }
    return records;
}

// The rows of the table, in the order that SQLite returns. A failed select gives no rows, like an
// empty table, after six seconds.
template <class Table>
std::vector<Record<Table>> doSelect(sqlite3* db) {
    return recordsOf<Table>(core::doSelect(db, Table::info, nullptr, {}));
}

// The same with a clause; a null argument is SQL NULL for %Q.
template <class Table, std::size_t Size, std::convertible_to<const char*>... Arguments>
requires(sizeof...(Arguments) ==
         Size) std::vector<Record<Table>> doSelect(sqlite3* db, const Clause<Size>& clause,
                                                   Arguments... arguments) {
    const std::array<const char*, Size> texts{arguments...};
    return recordsOf<Table>(core::doSelect(db, Table::info, clause.text, texts));
}

// Writes the record as a new row, all columns of it. A NULL key lets SQLite choose the row id. On
// success the record's key is the new row id; its modified marks stay as they are.
template <class Table>
bool insert(Record<Table>& record, sqlite3* db) {
    static_assert(Table::info.has(Operation::insert), "this table has no insert");
    return core::insert(record, db);
}

// Writes the modified columns back to the row that has the record's key, and clears the marks. A
// record without marks needs no statement and succeeds. The first "%" of a written text becomes a
// blank, in the record too.
template <class Table>
bool update(Record<Table>& record, sqlite3* db) {
    static_assert(Table::info.has(Operation::update), "this table has no update");
    return core::update(record, db);
}

// Empties the table. With `vacuum` the file is compacted afterwards, whose failure does not count.
template <class Table>
bool deleteAll(sqlite3* db, bool vacuum = false) {
    static_assert(Table::info.has(Operation::deleteAll), "this table has no deleteAll");
    return core::deleteAll(Table::info, db, vacuum);
}

// Removes the row that has the record's key.
template <class Table>
bool deleteId(const Record<Table>& record, sqlite3* db) {
    static_assert(Table::info.has(Operation::deleteId), "this table has no deleteId");
    return core::deleteId(record, db);
}

}  // namespace tarvodb
