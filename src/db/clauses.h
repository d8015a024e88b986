// The conditions that selects are made with. Every comparison is LIKE: letter case does not count,
// and "_" and "%" in a value are wildcards.
#pragma once

#include <vector>

#include "db/operations.h"
#include "db/record.h"
#include "db/schema.h"

namespace tarvodb {

namespace clause {

// The rows of one module.
inline constexpr Clause<1> kByMac = " WHERE MAC LIKE %Q ";
// The tuner rows of one input.
inline constexpr Clause<1> kByInput = " WHERE fk_idEntradasGlobal LIKE %Q ";
// The RF rows of one logical output.
inline constexpr Clause<1> kByLogicalOutput = " WHERE fk_idSalidasLogicasGlobal LIKE %Q ";
// The child rows of one service of the programme guide.
inline constexpr Clause<1> kByServiceEpg = " WHERE fk_idService_EPG LIKE %Q ";
// One received service of a module's input: MAC, OSID, input number.
inline constexpr Clause<3> kByInputService =
    " WHERE MAC LIKE %Q  and OSID LIKE %Q  and fk_idEntrada LIKE %Q ";

// Settings by their key, streams by their service row.
inline constexpr Clause<1> kByNombre = " WHERE nombre LIKE %Q ";
inline constexpr Clause<1> kByServiceRow = " WHERE fk_idSSG LIKE %Q ";

inline constexpr Clause<1> kByService = " WHERE idSSG LIKE %Q ";
inline constexpr Clause<1> kByNetwork = " WHERE idRed LIKE %Q ";
inline constexpr Clause<1> kByHomeChannel = " WHERE idMantenimiento LIKE %Q ";
inline constexpr Clause<1> kByDiseqc = " WHERE idDiSEqCGlobal LIKE %Q";
inline constexpr Clause<1> kByDiseqcPosition = " WHERE Posicion LIKE %Q";
inline constexpr Clause<1> kByScramblingName = " WHERE ScramblingName LIKE %Q ";
inline constexpr Clause<1> kByScramblingSystem = " WHERE System LIKE %Q";
inline constexpr Clause<1> kByEpgSatellite = " WHERE idService_EPG_Satellite LIKE %Q ";
inline constexpr Clause<1> kByClient = " WHERE idCliente LIKE %Q ";

}  // namespace clause

// Selects with a fixed condition, an optional column to order by (null for none) and an optional
// limit of rows (0 for none). A NULL value is passed as SQL NULL, which nothing is LIKE.

// Settings by their key.
std::vector<Record<configuracionWebGlobal>> selectByNombre(sqlite3* db, const tSqlite3parent& value,
                                                           const char* orderBy = nullptr,
                                                           unsigned limit = 0);
// Satellite tuners by their input row.
std::vector<Record<NimGlobal>> selectByFkIdEntradasGlobal(sqlite3* db, const tSqlite3parent& value,
                                                          const char* orderBy = nullptr,
                                                          unsigned limit = 0);
// Elementary streams by their service row.
std::vector<Record<PIDsSalidaGlobal>> selectByFkIdSSG(sqlite3* db, const tSqlite3parent& value,
                                                      const char* orderBy = nullptr,
                                                      unsigned limit = 0);

}  // namespace tarvodb
