// The conditions that selects are made with. Every comparison is LIKE: letter case does not count,
// and "_" and "%" in a value are wildcards.
#pragma once

#include <vector>

#include "db/operations.h"
#include "db/schema.h"

namespace tarvodb {

namespace clause {

// The rows of one module.
inline constexpr const char* kByMac = " WHERE MAC LIKE %Q ";
// The tuner rows of one input.
inline constexpr const char* kByInput = " WHERE fk_idEntradasGlobal LIKE %Q ";
// The RF rows of one logical output.
inline constexpr const char* kByLogicalOutput = " WHERE fk_idSalidasLogicasGlobal LIKE %Q ";
// The child rows of one service of the programme guide.
inline constexpr const char* kByServiceEpg = " WHERE fk_idService_EPG LIKE %Q ";
// One received service of a module's input: MAC, OSID, input number.
inline constexpr const char* kByInputService =
    " WHERE MAC LIKE %Q  and OSID LIKE %Q  and fk_idEntrada LIKE %Q ";

// Settings by their key, streams by their service row.
inline constexpr const char* kByNombre = " WHERE nombre LIKE %Q ";
inline constexpr const char* kByServiceRow = " WHERE fk_idSSG LIKE %Q ";

inline constexpr const char* kByService = " WHERE idSSG LIKE %Q ";
inline constexpr const char* kByNetwork = " WHERE idRed LIKE %Q ";
inline constexpr const char* kByHomeChannel = " WHERE idMantenimiento LIKE %Q ";
inline constexpr const char* kByDiseqc = " WHERE idDiSEqCGlobal LIKE %Q";
inline constexpr const char* kByDiseqcPosition = " WHERE Posicion LIKE %Q";
inline constexpr const char* kByScramblingName = " WHERE ScramblingName LIKE %Q ";
inline constexpr const char* kByScramblingSystem = " WHERE System LIKE %Q";
inline constexpr const char* kByEpgSatellite = " WHERE idService_EPG_Satellite LIKE %Q ";
inline constexpr const char* kByClient = " WHERE idCliente LIKE %Q ";

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
