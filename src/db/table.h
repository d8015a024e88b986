// What is known of a table: its name, its columns in stored order and the operations it has.
// Statements, records and log lines are all derived from this description.
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <span>
#include <string_view>

namespace tarvodb {

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

// The first column is the table's key. The columns of a table that is only read, by position, have
// no names here.
struct TableInfo {
    const char* name;
    std::span<const std::string_view> columns;
    Operation operations;

    [[nodiscard]] constexpr bool has(Operation operation) const {
        return (static_cast<unsigned>(operations) & static_cast<unsigned>(operation)) != 0;
    }
};

// The columns of a table, in stored order: makes the enumeration `Column` and the names `columns`
// from one list. `tableOf(column)` is the column's table.
#define TARVO_COLUMNS(...)                                             \
    enum Column { __VA_ARGS__ };                                       \
    friend constexpr const TableInfo& tableOf(Column) { return info; } \
    static constexpr auto columns = separated<countNames(#__VA_ARGS__)>(#__VA_ARGS__)

constexpr std::size_t countNames(std::string_view names) {
    return static_cast<std::size_t>(std::count(names.begin(), names.end(), ',')) + 1;
}

// Names that are joined by ", ".
template <std::size_t Size>
constexpr std::array<std::string_view, Size> separated(std::string_view names) {
    std::array<std::string_view, Size> columns;
    for (std::string_view& column : columns) {
        const std::size_t end = std::min(names.find(','), names.size());
        column = names.substr(0, end);
        names.remove_prefix(std::min(end + 2, names.size()));
    }
    return columns;
}

// The most columns that a table may have.
inline constexpr std::size_t kMaxColumns = 64;

}  // namespace tarvodb
