#include "device.h"

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "db/database.h"
#include "fault.h"

namespace faults {

namespace fs = std::filesystem;

namespace {

constexpr const char* kFolders[] = {"/tmp", "/tarvo/DB", "/tarvo/conf"};

// SQLite's own function: these are not the program's statements.
using Sqlite = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

Sqlite opened(const std::string& path) {
    sqlite3* db = nullptr;
    const int result = sqlite3_open_v2(path.c_str(), &db, SQLITE_OPEN_READWRITE, "unix");
    Sqlite owner(db, &sqlite3_close);
    if (result != SQLITE_OK) {
        throw std::runtime_error(path + ": " + sqlite3_errmsg(db));
    }
    return owner;
}

// Calls `eachRow` with the statement of each row.
template <class EachRow>
void query(sqlite3* db, const std::string& sql, EachRow eachRow) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    const std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)> owner(statement,
                                                                           &sqlite3_finalize);
    int result = SQLITE_ERROR;
    while (statement != nullptr && (result = sqlite3_step(statement)) == SQLITE_ROW) {
        eachRow(statement);
    }
    if (result != SQLITE_DONE) {
        throw std::runtime_error(sql + ": " + sqlite3_errmsg(db));
    }
}

std::string textOf(sqlite3_stmt* statement, int column) {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, column));
    return text == nullptr ? "NULL" : "'" + std::string(text) + "'";
}

std::vector<std::string> firstColumn(sqlite3* db, const std::string& sql) {
    std::vector<std::string> texts;
    query(db, sql, [&](sqlite3_stmt* row) {
        texts.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(row, 0)));
    });
    return texts;
}

}  // namespace

std::string rowsOf(const std::string& database) {
    const Sqlite db = opened(database);
    if (const auto found = firstColumn(db.get(), "PRAGMA integrity_check"); found.front() != "ok") {
        throw std::runtime_error(database + ": " + found.front());
    }
    std::string rows;
    for (const std::string& table :
         firstColumn(db.get(), "SELECT name FROM sqlite_master WHERE type = 'table'")) {
        query(db.get(), "SELECT * FROM " + table, [&](sqlite3_stmt* row) {
            rows += table;
            for (int column = 0; column < sqlite3_column_count(row); ++column) {
                rows += " " + textOf(row, column);
            }
            rows += "\n";
        });
    }
    return rows;
}

void execute(const std::string& database, const std::string& sql) {
    query(opened(database).get(), sql, [](sqlite3_stmt*) {});
}

std::optional<std::string> contentOf(const std::string& path) {
    const NotTheProgram guard;
    const std::ifstream file(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::ostringstream content;
    content << file.rdbuf();
    return std::move(content).str();
}

Files Files::ofDevice() {
    Files files;
    for (const char* folder : kFolders) {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            if (entry.is_regular_file()) {
                files.contents_[entry.path()] = contentOf(entry.path()).value_or("");
            }
        }
    }
    return files;
}

void Files::restore() const {
    const Files now = ofDevice();
    for (const auto& [path, content] : now.contents_) {
        if (!contents_.contains(path)) {
            fs::remove(path);
        }
    }
    const NotTheProgram guard;
    for (const auto& [path, content] : contents_) {
        if (!same(now, path)) {
            std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
        }
    }
}

std::vector<std::string> Files::strangersIn(const Files& later) const {
    std::vector<std::string> strangers;
    for (const auto& [path, content] : later.contents_) {
        if (!contents_.contains(path)) {
            strangers.push_back(path);
        }
    }
    return strangers;
}

bool Files::same(const Files& other, const std::string& path) const {
    const auto mine = contents_.find(path);
    const auto others = other.contents_.find(path);
    return mine != contents_.end() && others != other.contents_.end() &&
           mine->second == others->second;
}

void makeSmall() {
    const std::string firstModule = " NOT IN (SELECT min(MAC) FROM RedesModulos)";
    for (const char* table :
         {"NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal", "EntradasGlobal", "SalidasLogicasGlobal",
          "RFOutGlobal", "ServiciosSalidaGlobal", "PIDsSalidaGlobal", "RedesModulos"}) {
        execute(tarvodb::kConfigDatabase,
                std::string("DELETE FROM ") + table + " WHERE MAC" + firstModule);
    }
    for (const char* few :
         {"ServiciosSalidaGlobal WHERE idSSG > 3", "PIDsSalidaGlobal WHERE fk_idSSG > 3",
          "Service_EPG WHERE idService_EPG > 2", "Service_EPG_audios WHERE fk_idService_EPG > 2",
          "Service_EPG_replacing WHERE fk_idService_EPG > 2",
          "MantenimientoHomeChannelsGlobal WHERE idMantenimiento > 1",
          "RedesCabecera WHERE idRed > 1", "DiSEqCGlobal WHERE idDiSEqCGlobal > 1"}) {
        execute(tarvodb::kConfigDatabase, std::string("DELETE FROM ") + few);
    }
    execute(tarvodb::kVsecureDatabase, "DELETE FROM VSecure WHERE idVSecure > 2");
    for (const char* database :
         {tarvodb::kConfigDatabase, tarvodb::kVsecureDatabase, tarvodb::kStateDatabase}) {
        execute(database, "VACUUM");
    }
}

}  // namespace faults
