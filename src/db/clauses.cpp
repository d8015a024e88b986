#include "db/clauses.h"

#include <string>

namespace tarvodb {

namespace {

template <class Table>
std::vector<Record<Table>> selectBy(sqlite3* db, const char* condition, const tSqlite3parent& value,
                                    const char* orderBy, unsigned limit) {
    std::string clause = condition;
    if (orderBy != nullptr) {
        clause += "ORDER BY %q";
    }
    if (limit != 0) {
        clause += " limit 0," + std::to_string(limit);
    }
    return doSelect<Table>(db, clause.c_str(), value.text(), orderBy);
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
