#include "db/record.h"

#include <algorithm>

namespace tarvodb {

Row::Row(const TableInfo& table) : table_(&table), values_(table.columns.size()) {}

Row::Row(const TableInfo& table, std::span<const char* const> cells) : table_(&table) {
    values_.reserve(table.columns.size());
    for (const char* cell : cells.first(std::min(cells.size(), table.columns.size()))) {
        values_.emplace_back(cell);
    }
    values_.resize(table.columns.size());
    filled_.set();
}

bool Row::setValue(std::size_t column, tSqlite3parent value) {
    if (filled_[column] && values_[column].readsSameAs(value)) {
        return false;
    }
    values_[column] = std::move(value);
    filled_.set(column);
    modified_.set(column);
    return true;
}

bool Row::setIfOtherNumber(std::size_t column, int number) {
    if (values_[column].asInt() == number) {
        return false;
    }
    setValue(column, columnValue(number));
    return true;
}

void Row::replaceKey(tSqlite3int key) {
    values_.front() = std::move(key);
    filled_.set(0);
}

}  // namespace tarvodb
