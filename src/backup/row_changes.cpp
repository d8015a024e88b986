#include "backup/row_changes.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <tuple>

#include "backup/fault.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "document/xml.h"
#include "mapping/element.h"

namespace tarvo_backup {

using tarvodb::RemovalMark;
using tarvodb::StatusMark;

namespace {

// What identifies a row: its id or, where it has none, a text of its own.
struct RowKey {
    long long id = 0;
    std::string text = {};

    bool operator<(const RowKey& other) const {
        return std::tie(id, text) < std::tie(other.id, other.text);
    }
};

struct Table {
    std::vector<std::string> columns;
    std::map<RowKey, Cells> rows;
};

std::string quoted(const std::string& text, char quote) {
    std::string result(1, quote);
    for (const char character : text) {
        result.append(character == quote ? 2 : 1, character);
    }
    return result + quote;
}

std::string quotedName(const std::string& name) { return quoted(name, '"'); }

std::vector<std::string> firstColumn(const std::vector<Cells>& rows) {
    std::vector<std::string> cells;
    cells.reserve(rows.size());
    for (const Cells& row : rows) {
        cells.push_back(row.front().value_or(""));
    }
    return cells;
}

std::vector<std::string> tablesOf(sqlite3* db) {
    return firstColumn(query(db,
                             "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT "
                             "LIKE 'sqlite_%' ORDER BY name"));
}

// The name by which the table has its rows' ids; none where it has no such ids, or a column of each
// of these names.
const char* rowIdName(sqlite3* db, const std::string& table,
                      const std::vector<std::string>& columns) {
    for (const char* name : {"rowid", "_rowid_", "oid"}) {
        if (std::any_of(columns.begin(), columns.end(), [name](const std::string& column) {
                return document::sameText(column.c_str(), name);
            })) {
            continue;
        }
        try {
            select(db, "SELECT " + std::string(name) + " FROM " + quotedName(table) + " LIMIT 0");
            return name;
        } catch (const DatabaseFault&) {
            return nullptr;
        }
    }
    return nullptr;
}

// The columns that identify a row without an id: those of the primary key, or all.
std::vector<std::string> keyColumns(sqlite3* db, const std::string& table,
                                    const std::vector<std::string>& columns) {
    const auto key = firstColumn(query(db, "SELECT name FROM pragma_table_info(" +
                                               quoted(table, '\'') + ") WHERE pk > 0 ORDER BY pk"));
    return key.empty() ? columns : key;
}

Table readTable(sqlite3* db, const std::string& name) {
    const std::string source = " FROM " + quotedName(name);
    Table table{.columns = select(db, "SELECT *" + source + " LIMIT 0").columns, .rows = {}};
    const char* id = rowIdName(db, name, table.columns);
    std::string key;
    if (id == nullptr) {
        for (const std::string& column : keyColumns(db, name, table.columns)) {
            key += (key.empty() ? "quote(" : " || ',' || quote(") + quotedName(column) + ")";
        }
    }
    std::map<std::string, std::size_t> counts;
    for (Cells& row : query(db, "SELECT " + (id == nullptr ? key : id) + ", *" + source)) {
        RowKey rowKey;
        const std::string text = row.front().value_or("");
        row.erase(row.begin());
        if (id != nullptr) {
            rowKey.id = std::stoll(text);
        } else {
            const std::size_t count = ++counts[text];
            rowKey.text = count == 1 ? text : text + " #" + std::to_string(count);
        }
        table.rows.emplace(std::move(rowKey), std::move(row));
    }
    return table;
}

// Finds what is different between a table's rows.
class TableComparison {
  public:
    TableComparison(std::string name, const Table& before, const Table& after)
        : name_(std::move(name)), before_(before), after_(after) {
        const auto found = std::find(after.columns.begin(), after.columns.end(), "MAC");
        mac_ = static_cast<std::size_t>(found - after.columns.begin());
    }

    void appendTo(std::vector<RowChange>& changes) const {
        for (const auto& [key, row] : before_.rows) {
            const auto match = after_.rows.find(key);
            if (match == after_.rows.end()) {
                changes.push_back(change(key, RowChange::Kind::removed, &row, nullptr));
            } else if (match->second != row) {
                changes.push_back(change(key, RowChange::Kind::changed, &row, &match->second));
            }
        }
        for (const auto& [key, row] : after_.rows) {
            if (!before_.rows.contains(key)) {
                changes.push_back(change(key, RowChange::Kind::added, nullptr, &row));
            }
        }
    }

  private:
    [[nodiscard]] RowChange change(const RowKey& key, RowChange::Kind kind, const Cells* before,
                                   const Cells* after) const {
        const Cells& any = after == nullptr ? *before : *after;
        RowChange change{.table = name_,
                         .row = key.text.empty() ? std::to_string(key.id) : key.text,
                         .mac = mac_ < any.size() ? any[mac_].value_or("") : "",
                         .kind = kind,
                         .cells = {}};
        for (std::size_t column = 0; column < any.size(); ++column) {
            const Cell older = before == nullptr ? Cell() : (*before)[column];
            const Cell newer = after == nullptr ? Cell() : (*after)[column];
            if (kind != RowChange::Kind::changed || older != newer) {
                change.cells.push_back({after_.columns[column], older, newer});
            }
        }
        return change;
    }

    std::string name_;
    const Table& before_;
    const Table& after_;
    std::size_t mac_;
};

struct MarkMeaning {
    mapping::Column column;
    int mark;
    const char* meaning;
};

constexpr int kChanged = static_cast<int>(StatusMark::changed);
constexpr int kToBeRemoved = static_cast<int>(RemovalMark::toBeRemoved);

constexpr MarkMeaning kMeanings[] = {
    {tarvodb::ServiciosSalidaGlobal::EstadoBorrado, kToBeRemoved, "service to be removed"},
    {tarvodb::ServiciosSalidaGlobal::EstadoServicio, kChanged, "service to be applied"},
    {tarvodb::PIDsSalidaGlobal::EstadoBorrado, kToBeRemoved, "stream to be removed"},
    {tarvodb::PIDsSalidaGlobal::EstadoPID, kChanged, "stream to be applied"},
    {tarvodb::RFOutGlobal::Estado, kChanged, "output to be applied"},
    {tarvodb::SalidasLogicasGlobal::Estado, kChanged, "logical output to be applied"},
    {tarvodb::EntradasGlobal::Estado, kChanged, "input to be applied"},
    {tarvodb::NimGlobal::Estado, kChanged, "satellite tuner to be applied"},
    {tarvodb::NimCOFDMGlobal::Estado, kChanged, "terrestrial tuner to be applied"},
    {tarvodb::NimQAMGlobal::Estado, kChanged, "cable tuner to be applied"},
    {tarvodb::RedesModulos::estado, kChanged, "module to be applied"},
    {tarvodb::RedesCabecera::estado, kChanged, "network to be applied"},
    {tarvodb::DiSEqCGlobal::Estado, kChanged, "DiSEqC position to be applied"},
    {tarvodb::MantenimientoHomeChannelsGlobal::Estado, kChanged, "home channel to be applied"},
    {tarvodb::ScramblingGlobal::Estado, kChanged, "scrambling to be applied"},
    {tarvodb::ScramblingKeysGlobal::Estado, kChanged, "scrambling keys to be applied"},
    {tarvodb::VSecure::estado, kChanged, "conditional-access module to be processed"},
};

bool isMark(const MarkMeaning& known, const RowChange& row, const CellChange& cell) {
    const tarvodb::TableInfo& table = *known.column.table;
    return row.table == table.name && cell.column == table.columns[known.column.index] &&
           cell.after == std::to_string(known.mark);
}

}  // namespace

std::vector<RowChange> rowChanges(const std::string& before, const std::string& after) {
    const Connection older = openConnection(before, Access::readOnly);
    const Connection newer = openConnection(after, Access::readOnly);
    const auto failUnless = [&](bool isSame) {
        if (!isSame) {
            throw Fault(ExitStatus::failure, after + ": its tables are not those of " + before);
        }
    };
    const std::vector<std::string> tables = tablesOf(older.get());
    failUnless(tablesOf(newer.get()) == tables);
    std::vector<RowChange> changes;
    for (const std::string& name : tables) {
        const Table oldRows = readTable(older.get(), name);
        const Table newRows = readTable(newer.get(), name);
        failUnless(newRows.columns == oldRows.columns);
        TableComparison(name, oldRows, newRows).appendTo(changes);
    }
    return changes;
}

std::vector<Mark> marksIn(const std::vector<RowChange>& changes) {
    std::vector<Mark> marks;
    for (const RowChange& row : changes) {
        for (const CellChange& cell : row.cells) {
            const auto* found =
                std::find_if(std::begin(kMeanings), std::end(kMeanings),
                             [&](const MarkMeaning& known) { return isMark(known, row, cell); });
            if (found != std::end(kMeanings)) {
                marks.push_back({found->meaning, &row, &cell});
            }
        }
    }
    return marks;
}

}  // namespace tarvo_backup
