// What is known of a table: its name, its columns in stored order and the operations it has.
// Statements, records and log lines are all derived from this description.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>
#include <string_view>

namespace tarvodb {

// What a column's text stands for, and so the element that the column comes from: values travel as
// text either way.
enum class ColumnKind : char { integer, text };

struct ColumnInfo {
    std::string_view name;
    ColumnKind kind = ColumnKind::integer;
};

enum class Operation : unsigned {
    select = 1,
    insert = 2,
    update = 4,
    deleteAll = 8,
    deleteId = 16,
};

constexpr Operation operator|(Operation a, Operation b) {
    return static_cast<Operation>(static_cast<unsigned>(a) | static_cast<unsigned>(b));
}

// The first column is the table's key.
struct TableInfo {
    const char* name;
    std::span<const ColumnInfo> columns;
    Operation operations;

    [[nodiscard]] constexpr bool has(Operation operation) const {
        return (static_cast<unsigned>(operations) & static_cast<unsigned>(operation)) != 0;
    }
};

// The columns of a table, in stored order: makes the enumeration `Column` and the descriptions
// `integerColumns` from one list of names. `tableOf(column)` is the column's table.
#define TARVO_COLUMNS(...)                                             \
    enum Column { __VA_ARGS__ };                                       \
    friend constexpr const TableInfo& tableOf(Column) { return info; } \
    static constexpr auto integerColumns = columnsNamed<countNames(#__VA_ARGS__)>(#__VA_ARGS__)

constexpr std::size_t countNames(std::string_view names) {
    return static_cast<std::size_t>(std::count(names.begin(), names.end(), ',')) + 1;
}

// Integer columns from their names, joined by ", ".
template <std::size_t Size>
constexpr std::array<ColumnInfo, Size> columnsNamed(std::string_view names) {
    std::array<ColumnInfo, Size> columns{};
    for (ColumnInfo& column : columns) {
        const std::size_t end = std::min(names.find(','), names.size());
        column.name = names.substr(0, end);
        names.remove_prefix(std::min(end + 2, names.size()));
    }
    return columns;
}

template <std::size_t Size>
constexpr std::array<ColumnInfo, Size> withTextColumns(std::array<ColumnInfo, Size> columns,
                                                       std::initializer_list<std::size_t> text) {
    for (const std::size_t column : text) {
        columns[column].kind = ColumnKind::text;
    }
    return columns;
}

template <std::size_t Size>
constexpr std::array<ColumnInfo, Size> asText(std::array<ColumnInfo, Size> columns) {
    for (ColumnInfo& column : columns) {
        column.kind = ColumnKind::text;
    }
    return columns;
}

// The columns of a table that is only read by position have no names here, only their kinds: 'I'
// integer, 'T' text.
template <std::size_t Size>
constexpr std::array<ColumnInfo, Size - 1> columnsByPosition(const char (&kinds)[Size]) {
    std::array<ColumnInfo, Size - 1> columns{};
    for (std::size_t column = 0; column < columns.size(); ++column) {
        columns[column].kind = kinds[column] == 'T' ? ColumnKind::text : ColumnKind::integer;
    }
    return columns;
}

// The most columns that a table may have.
inline constexpr std::size_t kMaxColumns = 64;

}  // namespace tarvodb
