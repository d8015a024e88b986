#include "backup/row_changes.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "backup/fault.h"
#include "db/schema.h"
#include "db/status_marks.h"
#include "mapping/element.h"

namespace tarvo_backup {

using tarvodb::RemovalMark;
using tarvodb::StatusMark;

namespace {

struct Table {
    std::vector<std::string> columns;
    std::map<long long, Cells> rows;
};

std::string quotedName(const std::string& name) {
    std::string quoted = "\"";
    for (const char character : name) {
        quoted += character;
        quoted += character == '"' ? "\"" : "";
    }
    return quoted + "\"";
}

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

Table readTable(sqlite3* db, const std::string& name) {
    Selected selected = select(db, "SELECT rowid, * FROM " + quotedName(name));
    Table table;
    table.columns.assign(selected.columns.begin() + 1, selected.columns.end());
    for (Cells& row : selected.rows) {
        const long long id = std::stoll(row.front().value_or("0"));
        row.erase(row.begin());
        table.rows.emplace(id, std::move(row));
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
        for (const auto& [id, row] : before_.rows) {
            const auto match = after_.rows.find(id);
            if (match == after_.rows.end()) {
                changes.push_back(change(id, RowChange::Kind::removed, &row, nullptr));
            } else if (match->second != row) {
                changes.push_back(change(id, RowChange::Kind::changed, &row, &match->second));
            }
        }
        for (const auto& [id, row] : after_.rows) {
            if (!before_.rows.contains(id)) {
                changes.push_back(change(id, RowChange::Kind::added, nullptr, &row));
            }
        }
    }

  private:
    [[nodiscard]] RowChange change(long long id, RowChange::Kind kind, const Cells* before,
                                   const Cells* after) const {
        const Cells& any = after == nullptr ? *before : *after;
        RowChange change{.table = name_,
                         .row = std::to_string(id),
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
