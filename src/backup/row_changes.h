// What is different between the rows of two copies of a database.
#pragma once

#include <string>
#include <vector>

#include "backup/sqlite.h"

namespace tarvo_backup {

struct CellChange {
    std::string column;
    Cell before;
    Cell after;

    bool operator==(const CellChange&) const = default;
};

struct RowChange {
    enum class Kind { added, removed, changed };

    std::string table;
    // Its row id; where it has none, the texts of its primary key as SQL, or of all its columns.
    std::string row;
    std::string mac;  // of the module that it belongs to; empty where the table has none
    Kind kind;
    std::vector<CellChange> cells;  // of an added or removed row: all

    bool operator==(const RowChange&) const = default;
};

// By tables, and by row ids in them. The copies must hold the same tables. Throws DatabaseFault.
std::vector<RowChange> rowChanges(const std::string& before, const std::string& after);

// A status column that got a value on which the device's own software acts.
struct Mark {
    const char* meaning;
    const RowChange* row;
    const CellChange* cell;
};

// Points into `changes`.
std::vector<Mark> marksIn(const std::vector<RowChange>& changes);

}  // namespace tarvo_backup
