// Databases and SI table files with any content are exported: what comes out is XML.
#include <string>

#include "app/run_modes.h"
#include "db/database.h"
#include "document/xml.h"
#include "fuzz_device.h"

namespace {

struct Table {
    const char* database;
    const char* name;
};

constexpr Table kTables[] = {
    {tarvodb::kConfigDatabase, "configuracionWebGlobal"},
    {tarvodb::kConfigDatabase, "MantenimientoHomeChannelsGlobal"},
    {tarvodb::kConfigDatabase, "RedesCabecera"},
    {tarvodb::kConfigDatabase, "RedesModulos"},
    {tarvodb::kConfigDatabase, "DiSEqCGlobal"},
    {tarvodb::kConfigDatabase, "AudioLanguageListGlobal"},
    {tarvodb::kConfigDatabase, "ScramblingGlobal"},
    {tarvodb::kConfigDatabase, "ScramblingKeysGlobal"},
    {tarvodb::kConfigDatabase, "NimGlobal"},
    {tarvodb::kConfigDatabase, "NimCOFDMGlobal"},
    {tarvodb::kConfigDatabase, "NimQAMGlobal"},
    {tarvodb::kConfigDatabase, "EntradasGlobal"},
    {tarvodb::kConfigDatabase, "SalidasLogicasGlobal"},
    {tarvodb::kConfigDatabase, "RFOutGlobal"},
    {tarvodb::kConfigDatabase, "ServiciosSalidaGlobal"},
    {tarvodb::kConfigDatabase, "PIDsSalidaGlobal"},
    {tarvodb::kConfigDatabase, "Service_EPG"},
    {tarvodb::kConfigDatabase, "Service_EPG_audios"},
    {tarvodb::kConfigDatabase, "Service_EPG_replacing"},
    {tarvodb::kConfigDatabase, "Service_EPG_Satellite"},
    {tarvodb::kStateDatabase, "ServiciosEntradaGlobal"},
    {tarvodb::kStateDatabase, "ModulosCabecera"},
    {tarvodb::kStateDatabase, "CAMInfoGlobal"},
    {tarvodb::kStateDatabase, "TempNIMGlobal"},
    {tarvodb::kVsecureDatabase, "VSecure"},
};

// A value of any kind. Rows refer to each other by small numbers.
std::string literal(fuzz::Bytes& bytes) {
    switch (bytes.byte() % 5) {
        case 0:
            return "NULL";
        case 1:
            return std::to_string(bytes.byte() % 8);
        case 2:
            return std::to_string(bytes.number());
        case 3: {
            std::string hex;
            for (const char c : bytes.text()) {
                constexpr const char* kDigits = "0123456789ABCDEF";
                hex += {kDigits[(c >> 4) & 15], kDigits[c & 15]};
            }
            return bytes.byte() % 2 == 0 ? "X'" + hex + "'" : "CAST(X'" + hex + "' AS TEXT)";
        }
        default:
            return "-0.5e" + std::to_string(bytes.byte());
    }
}

// Changes one column of some rows, or deletes or doubles them, or takes the whole table away.
void disturb(test::FakeDevice& device, fuzz::Bytes& bytes) {
    const Table& table = kTables[bytes.byte() % std::size(kTables)];
    const std::string name = table.name;
    const std::string rows = " WHERE rowid % 4 = " + std::to_string(bytes.byte() % 5);
    const auto columns = device.query(
        table.database, "SELECT name FROM pragma_table_info('" + name + "') ORDER BY cid DESC");
    if (columns.empty()) {
        return;
    }
    const std::string column = *columns[bytes.byte() % columns.size()].front();
    switch (bytes.byte() % 8) {
        case 0:
            return device.execute(table.database, "DELETE FROM " + name + rows);
        case 1:
            return device.execute(table.database, "DROP TABLE " + name);
        case 2:
            return device.execute(table.database, "ALTER TABLE " + name + " ADD COLUMN c" +
                                                      std::to_string(columns.size()) + "_" +
                                                      std::to_string(bytes.byte()));
        default:
            return device.execute(table.database, "UPDATE OR IGNORE " + name + " SET " + column +
                                                      " = " + literal(bytes) + rows);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Bytes bytes(data, size);
    static const char* const models[] = {"QRA-310", "LMV-502", "PKD-707", "RNB-K408",
                                         "WVX-AQ4", "LMV-512", "WVX-BQ4", "none"};
    fuzz::Device device(models[bytes.byte() % std::size(models)]);
    device.files().writeFile("/tarvo/datosWeb/tablasSI/NIT_table_12345", bytes.text());
    constexpr int kDisturbances = 12;
    for (int i = 0; i < kDisturbances && !bytes.empty(); ++i) {
        disturb(device.files(), bytes);
    }
    const auto status = app::exportConfiguration(app::kOutputFile);
    auto backup = device.files().readFile(app::kOutputFile);
    fuzz::require((status == app::ExitStatus::success) == backup.has_value(),
                  "the file and the status differ");
    if (backup) {
        document::XmlDocument document;
        document::parse(document, *backup);
        fuzz::require(document.first_node() != nullptr, "the document is empty");
    }
    return 0;
}
