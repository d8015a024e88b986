// One row of a table: a value per column, in the table's order, and which columns were changed.
#pragma once

#include <bitset>
#include <cstddef>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "db/table.h"
#include "db/value.h"

namespace tarvodb {

// The part of a record that is the same for every table.
class Row {
  public:
    // A new row whose columns are all still to be filled; they read as NULL.
    explicit Row(const TableInfo& table);

    // A row with the first columns filled from `cells` (a null cell is NULL), the rest filled with
    // NULL. Cells beyond the table's columns are left out. Nothing counts as changed.
    Row(const TableInfo& table, std::span<const char* const> cells);

    [[nodiscard]] const TableInfo& table() const { return *table_; }
    [[nodiscard]] const tSqlite3parent& value(std::size_t column) const { return values_[column]; }
    [[nodiscard]] const tSqlite3parent& key() const { return values_.front(); }
    [[nodiscard]] bool isModified(std::size_t column) const { return modified_[column]; }

    // Sets a column and marks it as modified. In a filled column a value that reads the same as the
    // stored one (NULL and the empty text do) changes nothing. Returns whether the column was set.
    bool setValue(std::size_t column, tSqlite3parent value);

    // Sets the column to the decimal number when the stored number is another one ("05" and 5 are
    // the same number, NULL is 0). Returns whether it was another one.
    bool setIfOtherNumber(std::size_t column, int number);

    // For the table operations: the key that an insert was given, and the end of an update.
    void replaceKey(tSqlite3int key);
    void clearModified() { modified_.reset(); }

  private:
    const TableInfo* table_;
    std::vector<tSqlite3parent> values_;
    std::bitset<kMaxColumns> filled_;
    std::bitset<kMaxColumns> modified_;
};

template <class Table>
concept WritableTable = Table::info.has(Operation::insert) || Table::info.has(Operation::update);

// A row of `Table`, one of the tables of db/schema.h. Its columns are named by Table's enumerators.
template <class Table>
class Record : public Row {
  public:
    using Column = typename Table::Column;

    Record() : Row(Table::info) {}
    explicit Record(std::span<const char* const> cells) : Row(Table::info, cells) {}

    const tSqlite3parent& operator[](Column column) const { return value(column); }

    // See Row::setValue. `newValue` is a text, a number or a column value.
    template <class Value>
    bool set(Column column, const Value& newValue) requires WritableTable<Table> {
        return setValue(column, columnValue(newValue));
    }

    // See Row::setIfOtherNumber.
    bool setIfOtherNumber(Column column, int number) requires WritableTable<Table> {
        return Row::setIfOtherNumber(column, number);
    }

    [[nodiscard]] bool isModified(Column column) const { return Row::isModified(column); }
};

}  // namespace tarvodb
