#include "db/schema.h"

#include <map>
#include <ostream>
#include <sstream>

#include "db/database.h"
#include "db/operations.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

using Lines = std::vector<std::string>;

struct ExpectedColumn {
    std::string name;
    char kind;
};
using ExpectedColumns = std::vector<ExpectedColumn>;

struct ExpectedTable {
    const TableInfo* info;
    std::string name;
    const char* database;
    ExpectedColumns columns;
    std::string operations;

    [[nodiscard]] bool has(const std::string& operation) const {
        return (" " + operations + " ").find(" " + operation + " ") != std::string::npos;
    }
};

std::ostream& operator<<(std::ostream& out, const ExpectedTable& table) {
    return out << table.name;
}

// From "name kind, name kind".
ExpectedColumns columns(const std::string& text) {
    ExpectedColumns found;
    std::istringstream words(text);
    std::string name;
    std::string kind;
    while (words >> name >> kind) {
        found.push_back({name, kind[0]});
    }
    return found;
}

// Nameless columns, as the last position (counted from 1) of each run of one kind.
ExpectedColumns positions(const std::vector<std::pair<std::size_t, char>>& runs) {
    ExpectedColumns found;
    for (const auto& [last, kind] : runs) {
        found.resize(last, {"", kind});
    }
    return found;
}

const std::vector<ExpectedTable>& expectedTables() {
    static const std::vector<ExpectedTable> tables = {
        {&configuracionWebGlobal::info, "configuracionWebGlobal", kConfigDatabase,
         columns("idConfiguracionGlobal I, nombre T, valor T, aplicarBackup I"),
         "select insert update"},
        {&MantenimientoHomeChannelsGlobal::info, "MantenimientoHomeChannelsGlobal", kConfigDatabase,
         columns("idMantenimiento I, Frequency I, Orbita I, Polaridad I, Banda I, SymbolRate I, "
                 "ONID I, TSID I, Estado I"),
         "select insert deleteAll"},
        {&RedesCabecera::info, "RedesCabecera", kConfigDatabase,
         columns("idRed I, NombreRed T, NID I, ONID_Out I, NIT_Patron I, Version_NIT_Patron I, "
                 "Tipo_NIT_Patron I, Auto_Service_List I, LCN_Offset I, LCN_Mode I, LCN_Type I, "
                 "Force_ServiceName I, NIT_Version I, NIT_Data_Source I, TV_Type I, CI_TV_Type I, "
                 "LG_comp_VSecure I, Block_PIDs I, Decrypt_PIDs I, CellID I, NIT_Follow I, "
                 "estado I"),
         "select insert deleteAll"},
        {&RedesModulos::info, "RedesModulos", kConfigDatabase,
         columns("idRedMod I, MAC T, HostName T, LabelName T, RED I, Familia I, Modelo I, "
                 "Master I, HWVersion T, NumeroSerie T, PairedHost T, Atenuacion I, "
                 "ResetFactory I, NFS_Server I, UpgradeCounter I, ModoSalidaRF I, estado I"),
         "select update"},
        {&DiSEqCGlobal::info, "DiSEqCGlobal", kConfigDatabase,
         columns("idDiSEqCGlobal I, Nombre T, Posicion I, Orbita I, Polaridad I, Banda I, "
                 "Estado I"),
         "select insert deleteAll"},
        {&AudioLanguageListGlobal::info, "AudioLanguageListGlobal", kConfigDatabase,
         columns("idALLG I, AudioCode T"), "select insert deleteAll"},
        {&ScramblingGlobal::info, "ScramblingGlobal", kConfigDatabase,
         columns("idScrambling I, ScramblingName T, Mode I, Estado I"), "select insert update"},
        {&ScramblingKeysGlobal::info, "ScramblingKeysGlobal", kConfigDatabase,
         columns("idScramblingKeys I, Mode I, Frequency I, System T, Odd T, Even T, K_Shared T, "
                 "EK_Odd T, EK_Even T, Date T, Estado I"),
         "select insert update"},
        {&NimGlobal::info, "NimGlobal", kConfigDatabase,
         columns("idNimGlobal I, MAC T, Frequency I, SymbolRate I, banda_FI I, fe I, STANDBY I, "
                 "DiSEqC I, RFIN_LOOP I, fk_idEntradasGlobal I, fk_idNim I, ModoPLS I, "
                 "ScramblingID I, StreamID I, Estado I"),
         "select update"},
        {&NimCOFDMGlobal::info, "NimCOFDMGlobal", kConfigDatabase,
         columns("idNimCOFDMGlobal I, MAC T, Frequency I, Bandwidth I, Hierarchy I, "
                 "trackingStatusEn I, TSID_Tracking I, ONID_Tracking I, STANDBY I, "
                 "fk_idEntradasGlobal I, fk_idNimCOFDM I, PLP_ID I, Estado I"),
         "select update"},
        {&NimQAMGlobal::info, "NimQAMGlobal", kConfigDatabase,
         columns("idNimQAMGlobal I, MAC T, Frequency I, SymbolRate I, Constelacion I, STANDBY I, "
                 "fk_idEntradasGlobal I, fk_idNimQAM I, Estado I"),
         "select update"},
        {&EntradasGlobal::info, "EntradasGlobal", kConfigDatabase,
         columns("idEntradasGlobal I, MAC T, tipoEntrada I, TSID I, ONID I, Activo I, "
                 "ResumenNIT T, fk_idEntrada I, Estado I"),
         "select update"},
        {&SalidasLogicasGlobal::info, "SalidasLogicasGlobal", kConfigDatabase,
         columns("idSalidasLogicasGlobal I, MAC T, TSID_Out I, ONID_Out I, tipoSalida I, "
                 "Activo I, fk_idSalidasLogicas I, num_check_solapamientos I, Estado I"),
         "select update"},
        {&RFOutGlobal::info, "RFOutGlobal", kConfigDatabase,
         columns("idRFOutGlobal I, MAC T, Frecuencia I, Symbol_Rate I, Ancho_Banda I, "
                 "Modo_OFDM I, Intervalo_Guarda I, Constelacion I, Code_Rate I, "
                 "Espectro_Salida I, Modo_Salida_Modulacion I, fk_idSalidasLogicasGlobal I, "
                 "fk_idRFOut I, Estado I"),
         "select update"},
        {&ServiciosSalidaGlobal::info, "ServiciosSalidaGlobal", kConfigDatabase,
         columns("idSSG I, MAC T, OSID I, SID I, NombreEntrada T, NombreSalida T, "
                 "NombreForzado I, Tipo I, VideoFormat I, Service_Type I, Video_peak_bitrate I, "
                 "fk_idEntrada I, fk_idSalidasLogicas I, Seleccionado I, Especial I, Orden I, "
                 "Descifrar I, Transcoding I, OLCN I, LCN I, LCNForzado I, SimulcastLCN I, "
                 "idEPG I, DuplicadoClonado I, SSU I, PMT_pid I, EstadoBorrado I, "
                 "EstadoServicio I"),
         "select insert update"},
        {&PIDsSalidaGlobal::info, "PIDsSalidaGlobal", kConfigDatabase,
         columns("idPSG I, MAC T, fk_idSSG I, fk_idEntrada I, fk_idSalidasLogicas I, Orden I, "
                 "Tipo I, StreamId I, AudioCode T, EstadoPID I, EstadoBorrado I"),
         "select insert update"},
        {&Service_EPG::info, "Service_EPG", kConfigDatabase,
         columns("idService_EPG I, ONID I, TSID I, SID I, EPG I, LCN I, "
                 "fk_idService_EPG_Satellite I, Video_Type I, Video_peak_bitrate I, "
                 "Service_type I, Nombre T, Proveedor T"),
         "select insert deleteAll"},
        {&Service_EPG_audios::info, "Service_EPG_audios", kConfigDatabase,
         columns("idService_EPG_audios_EPG I, fk_idService_EPG I, Language_code T, Audio_Type I, "
                 "Estado I"),
         "select insert deleteAll"},
        {&Service_EPG_replacing::info, "Service_EPG_replacing", kConfigDatabase,
         columns("idService_EPG_replacing I, fk_idService_EPG I, replacing_epg_channel_id I, "
                 "Estado I"),
         "select insert deleteAll"},
        {&Service_EPG_Satellite::info, "Service_EPG_Satellite", kConfigDatabase,
         columns("idService_EPG_Satellite I, TSID I, ONID I, Frequency I, SymbolRate I, "
                 "Polaridad I, Orbita I, West_East_Flag I, Estado I"),
         "select insert deleteAll"},
        {&ServiciosEntradaGlobal::info, "ServiciosEntradaGlobal", kStateDatabase,
         positions({{1, 'I'}, {2, 'T'}, {5, 'I'}, {7, 'T'}, {19, 'I'}}), "select"},
        {&ModulosCabecera::info, "ModulosCabecera", kStateDatabase,
         positions({{1, 'I'}, {7, 'T'}, {9, 'I'}, {14, 'T'}, {15, 'I'}, {20, 'T'}, {31, 'I'}}),
         "select"},
        {&CAMInfoGlobal::info, "CAMInfoGlobal", kStateDatabase,
         positions({{1, 'I'}, {2, 'T'}, {11, 'I'}, {12, 'T'}, {27, 'I'}, {30, 'T'}, {36, 'I'}}),
         "select"},
        {&TempNIMGlobal::info, "TempNIMGlobal", kStateDatabase,
         positions({{1, 'I'}, {2, 'T'}, {19, 'I'}}), "select"},
        {&TempNIMCOFDMGlobal::info, "TempNIMCOFDMGlobal", kStateDatabase,
         positions({{1, 'I'}, {2, 'T'}, {12, 'I'}}), "select"},
        {&TempNIMQAMGlobal::info, "TempNIMQAMGlobal", kStateDatabase,
         positions({{1, 'I'}, {2, 'T'}, {14, 'I'}}), "select"},
        {&VSecure::info, "VSecure", kVsecureDatabase,
         columns("idVSecure T, Fabricante T, idCliente T, K_Publica T, EK_Shared T, Alta T, "
                 "Reintentos T, Error T, Descripcion T, estado T"),
         "select insert update deleteAll"},
        // A stored command is loaded from a record that somebody has selected.
        {&RCCommand::info, "RCCommand", kCommandDatabase,
         columns("id I, commandId I, status I, nextTime I, schedule T, command T, result T"),
         "select insert update deleteAll deleteId"},
    };
    return tables;
}

class TableSchema : public test::DeviceTest, public testing::WithParamInterface<ExpectedTable> {
  protected:
    TableSchema() : db_(openDatabase(GetParam().database)) { device.forgetEvents(); }

    static const ExpectedTable& table() { return GetParam(); }
    sqlite3* db() { return db_.get(); }

    // `text` once per column, with "#" for the column's name.
    static std::string joined(const std::string& text, const std::string& separator) {
        std::string all;
        for (const ExpectedColumn& column : table().columns) {
            std::string piece = text;
            if (const std::size_t mark = piece.find('#'); mark != std::string::npos) {
                piece.replace(mark, 1, column.name);
            }
            all += (all.empty() ? "" : separator) + piece;
        }
        return all;
    }

  private:
    Database db_;
};

}  // namespace

TEST_P(TableSchema, HasTheColumnsOfTheDeviceInStoredOrder) {
    EXPECT_EQ(table().info->name, table().name);
    ASSERT_EQ(table().info->columns.size(), table().columns.size());
    for (std::size_t column = 0; column < table().columns.size(); ++column) {
        SCOPED_TRACE(column);
        EXPECT_EQ(std::string(table().info->columns[column]), table().columns[column].name);
    }
}

TEST_P(TableSchema, HasTheOperationsOfItsTable) {
    const std::map<std::string, Operation> operations = {
        {"select", Operation::select},     {"insert", Operation::insert},
        {"update", Operation::update},     {"deleteAll", Operation::deleteAll},
        {"deleteId", Operation::deleteId},
    };
    for (const auto& [name, operation] : operations) {
        EXPECT_EQ(table().info->has(operation), table().has(name)) << name;
    }
}

TEST_P(TableSchema, AgreesWithTheSimulatedDevice) {
    const auto found =
        device.query(table().database, "SELECT name, type, pk FROM pragma_table_info('" +
                                           table().name + "') ORDER BY cid");
    ASSERT_EQ(found.size(), table().columns.size());
    // SQLite gives a NULL key the next row id only where the key is declared like this, so the
    // device's text key is one too.
    EXPECT_EQ(found[0][1], "INTEGER");
    EXPECT_EQ(found[0][2], "1");
    for (std::size_t column = 0; column < found.size(); ++column) {
        SCOPED_TRACE(found[column][0].value_or(""));
        const ExpectedColumn& expected = table().columns[column];
        if (!expected.name.empty()) {
            EXPECT_EQ(found[column][0], expected.name);
        }
        if (column > 0) {
            EXPECT_EQ(found[column][1], expected.kind == 'T' ? "TEXT" : "INTEGER");
            EXPECT_EQ(found[column][2], "0");
        }
    }
}

TEST_P(TableSchema, IsSelectedWithAllItsColumns) {
    EXPECT_EQ(core::doSelect(db(), *table().info, nullptr, {}).rows(), 0U);
    EXPECT_EQ(device.events(), Lines{"sql: SELECT * FROM " + table().name + " "});
}

TEST_P(TableSchema, IsInsertedWithAllItsColumns) {
    if (!table().has("insert")) {
        return;
    }
    tarvodb::Row row(*table().info);
    EXPECT_TRUE(core::insert(row, db()));
    EXPECT_EQ(device.events(), Lines{"sql: INSERT INTO " + table().name + " (" + joined("#", ", ") +
                                     ")  VALUES (" + joined("NULL", ", ") + " )"});
    EXPECT_EQ(row.key().asString(), "1");
}

TEST_P(TableSchema, IsUpdatedByItsKey) {
    if (!table().has("update")) {
        return;
    }
    tarvodb::Row row(*table().info);
    for (std::size_t column = 0; column < table().columns.size(); ++column) {
        row.setValue(column, tSqlite3parent("5"));
    }
    EXPECT_TRUE(core::update(row, db()));
    EXPECT_EQ(device.events(),
              Lines{"sql: UPDATE " + table().name + " SET " + joined(" # = '5' ", ",") + " WHERE " +
                    table().columns.front().name + " = '5'"});
}

TEST_P(TableSchema, IsEmptiedAsAWhole) {
    if (!table().has("deleteAll")) {
        return;
    }
    EXPECT_TRUE(core::deleteAll(*table().info, db(), false));
    EXPECT_EQ(device.events(), Lines{"sql: DELETE FROM " + table().name});
}

INSTANTIATE_TEST_SUITE_P(Every, TableSchema, testing::ValuesIn(expectedTables()),
                         [](const auto& table) { return table.param.name; });

}  // namespace tarvodb
