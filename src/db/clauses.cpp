#include "db/clauses.h"

#include <array>
#include <string>

#include "db/record.h"

namespace tarvodb {

namespace {

template <class Table>
std::vector<Record<Table>> selectBy(sqlite3* db, const Clause<1>& condition,
                                    const tSqlite3parent& value, const char* orderBy,
                                    unsigned limit) {
    std::string clause = condition.text;
    if (orderBy != nullptr) {
        clause += "ORDER BY %q";
    }
    if (limit != 0) {
        clause += " limit 0," + std::to_string(limit);
    }
    const std::array arguments{value.text(), orderBy};
    return recordsOf<Table>(core::doSelect(db, Table::info, clause.c_str(), arguments));
}

}  // namespace

std::vector<Record<configuracionWebGlobal>> selectByNombre(sqlite3* db, const tSqlite3parent& value,
                                                           const char* orderBy, unsigned limit) {
    return selectBy<configuracionWebGlobal>(db, clause::kByNombre, value, orderBy, limit);
}

std::vector<Record<NimGlobal>> selectByFkIdEntradasGlobal(sqlite3* db, const tSqlite3parent& value,
                                                          const char* orderBy, unsigned limit) {
    return selectBy<NimGlobal>(db, clause::kByInput, value, orderBy, limit);
}

std::vector<Record<PIDsSalidaGlobal>> selectByFkIdSSG(sqlite3* db, const tSqlite3parent& value,
                                                      const char* orderBy, unsigned limit) {
    return selectBy<PIDsSalidaGlobal>(db, clause::kByServiceRow, value, orderBy, limit);
}

}  // namespace tarvodb
