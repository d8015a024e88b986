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
}

bool Row::setValue(std::size_t column, tSqlite3parent value) {
    if (values_[column].readsSameAs(value)) {
        return false;
    }
    putValue(column, std::move(value));
    return true;
}

void Row::putValue(std::size_t column, tSqlite3parent value) {
    values_[column] = std::move(value);
    modified_.set(column);
}

}  // namespace tarvodb
