// The marks in the status columns, for the device's own software to act on.
#pragma once

#include <concepts>

#include "db/value.h"

namespace tarvodb {

// Estado, estado, EstadoServicio, EstadoPID: changed and still to be applied.
enum class StatusMark : int { changed = 1 };

// EstadoBorrado
enum class RemovalMark : int { listed = 0, toBeRemoved = 2 };

template <class T>
concept Mark = std::same_as<T, StatusMark> || std::same_as<T, RemovalMark>;

// The mark as a column stores it; db/record.h finds this one by the mark's type.
template <Mark T>
tSqlite3parent columnValue(T mark) {
    return columnValue(static_cast<int>(mark));
}

// Whether a status column holds the mark. NULL reads as 0.
template <Mark T>
bool holds(const tSqlite3parent& column, T mark) {
    return column.asInt() == static_cast<int>(mark);
}

}  // namespace tarvodb
