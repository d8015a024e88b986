#include "export/cmd_get_configuration.h"

#include <sqlite3.h>

#include <filesystem>
#include <map>
#include <set>
#include <utility>

#include "platform/debug_log.h"
#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using Lines = std::vector<std::string>;

// Elements of a section with the keys of their settings.
using Pairing = std::vector<std::pair<std::string, std::string>>;

const Pairing kIdentificationOfAll = {{"headendName", "identificacion_cabecera"},
                                      {"location", "identificacion_localizacion"},
                                      {"installationDate", "identificacion_fecha"}};
const Pairing kIdentificationOfRnb = {{"zenContractId", "identificacion_contrato"}};
const Pairing kIdentificationOfFamilyAAndLmv = {{"installer", "identificacion_instalador"},
                                                {"clientID", "identificacion_codCanal"}};
const Pairing kIdentificationOfFamilyA = {{"hostType", "identificacion_hostType"},
                                          {"TVModels", "identificacion_TVModels"},
                                          {"installationMode", "identificacion_installationMode"}};
const Pairing kRegional = {
    {"language", "codtimezone"}, {"country", "idtimezone"}, {"timezone", "subtimezone"}};
const Pairing kMaturityRating = {{"maturityRating", "MaturityRating"}};
const Pairing kMaintenance = {{"hour", "mantenimiento_hora"},
                              {"min", "mantenimiento_min"},
                              {"active", "mantenimiento_activo"}};
const Pairing kNetwork = {{"internet", "network_ConfigureNET"},
                          {"dhcp", "network_UseDHCPIP"},
                          {"ip", "network_IP"},
                          {"netmask", "network_Netmask"},
                          {"gateway", "network_Gateway"},
                          {"dns1", "network_PrimaryDNS"},
                          {"dns2", "network_SecondaryDNS"}};
const Pairing kRemoteControl = {{"active", "servidorZEN_activo"},
                                {"interval", "servidorZEN_intervalo"},
                                {"serverUrl", "servidorZEN_direccion"},
                                {"username", "servidorZEN_usuario"},
                                {"password", "servidorZEN_password"}};
const Pairing kLnb = {{"oscLowFreq", "LNB_fb"},
                      {"oscHighFreq", "LNB_fa"},
                      {"oscBandaCFreq", "LNB_fbandaC"},
                      {"oscBandaSatelite", "LNB_BandaSatelite"}};

std::string wrapped(const std::string& element, const std::string& content) {
    return "<" + element + ">" + content + "</" + element + ">";
}

// The leaves of a section where every setting has the value "=<key>".
std::string leavesOf(const Pairing& pairing) {
    std::string leaves;
    for (const auto& [element, key] : pairing) {
        leaves += wrapped(element, "=" + key);
    }
    return leaves;
}

constexpr const char* kFamilyASections =
    "identification regional maturityRating maintenances homeChannels serviceEPGs network "
    "dvbNetworks lnb diseqcs scramblings preferredLanguages modules";
constexpr const char* kRnbSections =
    "identification regional network remoteControl dvbNetworks lnb diseqcs scramblings "
    "preferredLanguages modules";
constexpr const char* kWvxbSections =
    "identification regional network dvbNetworks preferredLanguages modules";
constexpr const char* kOtherSections =
    "identification regional network dvbNetworks lnb diseqcs scramblings preferredLanguages "
    "modules";

class ExportedDocument : public test::ExportTest {
  protected:
    void insertSetting(const std::string& key, const std::string& sqlValue) {
        insertConfig("configuracionWebGlobal", "nombre, valor", "'" + key + "', " + sqlValue);
    }

    // Every setting that an export reads, with the value "=<key>".
    void insertAllSettings() {
        for (const Pairing* pairing :
             {&kIdentificationOfAll, &kIdentificationOfRnb, &kIdentificationOfFamilyAAndLmv,
              &kIdentificationOfFamilyA, &kRegional, &kMaturityRating, &kMaintenance, &kNetwork,
              &kRemoteControl, &kLnb}) {
            for (const auto& [element, key] : *pairing) {
                insertSetting(key, "'=" + key + "'");
            }
        }
    }

    // A folder is where this database should be.
    void makeUnopenable(const std::string& database) {
        device.removeFile(database);
        std::filesystem::create_directory(device.path(database));
    }

    // What the last export left in the command's result document; without line ends.
    std::string data() { return document::printed(dataNode(), document::kNoIndenting); }
    std::string errorElements() {
        return document::printed(*document::childNamed(*dataNode().parent(), "errors"),
                                 document::kNoIndenting);
    }
    // The text of `result` as the command set it: printing the whole document sets it anew.
    std::string outcome() { return document::lastText(*dataNode().parent(), "result"); }

  private:
    // Reached through a node in it.
    document::XmlNode& dataNode() {
        document::XmlNode* probe = command().createNode("probe");
        command().result().appendToData(probe);
        document::XmlNode& data = *probe->parent();
        data.remove_last_node();
        return data;
    }
};

}  // namespace

TEST_F(ExportedDocument, HasTheSectionsOfTheModelInTheirOrder) {
    const std::map<std::string, std::string> sectionsOf = {
        {"QRA-310", kFamilyASections}, {"LMV-502", kFamilyASections}, {"PKD-707", kFamilyASections},
        {"RNB-K408", kRnbSections},    {"WVX-AQ4", kOtherSections},   {"LMV-512", kOtherSections},
        {"WVX-BQ4", kWvxbSections},    {"XYZ-1", kOtherSections}};
    ASSERT_EQ(sectionsOf.size(), test::kModels.size());
    for (const auto& [model, sections] : sectionsOf) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        EXPECT_EQ(childNames(""), sections);
    }
}

TEST_F(ExportedDocument, ComparesTheModelExactly) {
    for (const char* model : {"qra-310", "QRA-3100", "wvx-bq4", "rnb-k408"}) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        EXPECT_EQ(childNames(""), kOtherSections);
    }
}

TEST_F(ExportedDocument, IdentifiesTheHeadendWithTheLeavesOfTheModel) {
    insertAllSettings();
    const std::string all = leavesOf(kIdentificationOfAll);
    const std::string familyA =
        all + leavesOf(kIdentificationOfFamilyAAndLmv) + leavesOf(kIdentificationOfFamilyA);
    const std::map<std::string, std::string> leavesOfModel = {
        {"QRA-310", familyA},
        {"LMV-502", familyA},
        {"PKD-707", familyA},
        {"RNB-K408", all + leavesOf(kIdentificationOfRnb)},
        {"LMV-512", all + leavesOf(kIdentificationOfFamilyAAndLmv)},
        {"WVX-AQ4", all},
        {"WVX-BQ4", all},
        {"XYZ-1", all}};
    for (const auto& [model, leaves] : leavesOfModel) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(exported("identification"), wrapped("identification", leaves));
    }
}

TEST_F(ExportedDocument, HasInstallerAndClientButNoHostTypeOnAnLmv512) {
    becomeModel("LMV-512");
    exportConfiguration();
    EXPECT_EQ(childNames("identification"),
              "headendName location installationDate installer clientID");
}

TEST_F(ExportedDocument, HasTheSettingsOfItsSections) {
    insertAllSettings();
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        const bool familyA = model == "QRA-310" || model == "LMV-502" || model == "PKD-707";
        exportConfiguration();
        EXPECT_EQ(element("regional"), wrapped("regional", leavesOf(kRegional)));
        EXPECT_EQ(element("maturityRating"), familyA ? leavesOf(kMaturityRating) : "");
        EXPECT_EQ(
            element("maintenances"),
            familyA ? wrapped("maintenances", wrapped("maintenance", leavesOf(kMaintenance))) : "");
        EXPECT_EQ(element("network"), wrapped("network", leavesOf(kNetwork)));
        EXPECT_EQ(element("remoteControl"),
                  model == "RNB-K408" ? wrapped("remoteControl", leavesOf(kRemoteControl)) : "");
        EXPECT_EQ(element("lnb"), model == "WVX-BQ4" ? "" : wrapped("lnb", leavesOf(kLnb)));
    }
}

TEST_F(ExportedDocument, PairsTheRegionalElementsWithTheKeysThatImportReadsBack) {
    insertSetting("codtimezone", "'es'");
    insertSetting("idtimezone", "'ES'");
    insertSetting("subtimezone", "'Europe/Madrid'");
    EXPECT_EQ(exported("regional"),
              "<regional><language>es</language><country>ES</country>"
              "<timezone>Europe/Madrid</timezone></regional>");
}

TEST_F(ExportedDocument, ShowsTheRemoteControlPasswordAsItIsStored) {
    becomeModel("RNB-K408");
    insertSetting("servidorZEN_password", "'s3cret'");
    EXPECT_EQ(exported("remoteControl/password"), "<password>s3cret</password>");
}

TEST_F(ExportedDocument, HasEmptySectionsOnAnEmptyDatabase) {
    EXPECT_EQ(exported(""),
              "<configuration>"
              "<identification><headendName/><location/><installationDate/><installer/><clientID/>"
              "<hostType/><TVModels/><installationMode/></identification>"
              "<regional><language/><country/><timezone/></regional>"
              "<maturityRating/>"
              "<maintenances><maintenance><hour/><min/><active/></maintenance></maintenances>"
              "<homeChannels/><serviceEPGs/>"
              "<network><internet/><dhcp/><ip/><netmask/><gateway/><dns1/><dns2/></network>"
              "<dvbNetworks/>"
              "<lnb><oscLowFreq/><oscHighFreq/><oscBandaCFreq/><oscBandaSatelite/></lnb>"
              "<diseqcs/><scramblings/><preferredLanguages/><modules/>"
              "</configuration>");
}

TEST_F(ExportedDocument, LeavesAMissingSettingEmpty) { EXPECT_EQ(exported("network/ip"), "<ip/>"); }

TEST_F(ExportedDocument, LeavesAnEmptyOrNullSettingEmpty) {
    insertSetting("network_IP", "''");
    insertSetting("network_Netmask", "NULL");
    exportConfiguration();
    EXPECT_EQ(element("network/ip"), "<ip/>");
    EXPECT_EQ(element("network/netmask"), "<netmask/>");
}

TEST_F(ExportedDocument, KeepsASettingAsItIsStored) {
    insertSetting("identificacion_cabecera", "'  Hotel  '");
    insertSetting("identificacion_localizacion", "'007'");
    insertSetting("identificacion_fecha", "'50% %s %Q'");
    exportConfiguration();
    EXPECT_EQ(element("identification/headendName"), "<headendName>  Hotel  </headendName>");
    EXPECT_EQ(element("identification/location"), "<location>007</location>");
    EXPECT_EQ(element("identification/installationDate"),
              "<installationDate>50% %s %Q</installationDate>");
}

TEST_F(ExportedDocument, EscapesMarkupAndKeepsBytesAbove127) {
    insertSetting("identificacion_cabecera", "'<A> & \"B\" ''C'''");
    insertSetting("identificacion_localizacion",
                  "'Espa\xC3\xB1"
                  "a \xE9'");
    exportConfiguration();
    EXPECT_EQ(element("identification/headendName"),
              "<headendName>&lt;A&gt; &amp; &quot;B&quot; &apos;C&apos;</headendName>");
    EXPECT_EQ(element("identification/location"),
              "<location>Espa\xC3\xB1"
              "a \xE9</location>");
}

TEST_F(ExportedDocument, TakesTheLastOfTwoSettingsOfOneName) {
    insertSetting("network_IP", "'10.0.0.1'");
    insertSetting("network_IP", "'10.0.0.2'");
    EXPECT_EQ(exported("network/ip"), "<ip>10.0.0.2</ip>");
}

TEST_F(ExportedDocument, ComparesTheNamesOfSettingsExactly) {
    insertSetting("network_IP", "'10.0.0.1'");
    insertSetting("NETWORK_IP", "'10.0.0.2'");
    insertSetting("networkXIP", "'10.0.0.3'");
    EXPECT_EQ(exported("network/ip"), "<ip>10.0.0.1</ip>");
}

TEST_F(ExportedDocument, IgnoresASettingWithoutAName) {
    insertConfig("configuracionWebGlobal", "nombre, valor, aplicarBackup", "NULL, NULL, NULL");
    insertSetting("network_IP", "'10.0.0.1'");
    EXPECT_EQ(exported("network/ip"), "<ip>10.0.0.1</ip>");
}

TEST_F(ExportedDocument, ReadsATableThatHasMoreColumns) {
    device.execute(tarvodb::kConfigDatabase,
                   "ALTER TABLE configuracionWebGlobal ADD COLUMN extra TEXT DEFAULT 'x'");
    insertSetting("network_IP", "'10.0.0.1'");
    insertSetting("network_Netmask", "'255.0.0.0'");
    exportConfiguration();
    EXPECT_EQ(element("network/ip"), "<ip>10.0.0.1</ip>");
    EXPECT_EQ(element("network/netmask"), "<netmask>255.0.0.0</netmask>");
}

TEST_F(ExportedDocument, GoesToAWriterInsteadOfTheResult) {
    insertSetting("network_IP", "'<1> & \"2\"'");
    insertConfig("RedesModulos", "MAC, HostName", "'M1', 'x'");
    insertConfig("ServiciosSalidaGlobal", "MAC, SSU, EstadoBorrado", "'M1', 0, 0");
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        document::TextWriter text("");
        CmdGetConfiguration command(text);
        command.execute();
        ASSERT_EQ(text.blocks().size(), 1U);
        EXPECT_EQ(text.blocks().front(),
                  document::printed(*this->command().getConfigurationNode()));
        EXPECT_EQ(command.getConfigurationNode(), nullptr);
        EXPECT_NE(command.resultXml().find("<data/>"), std::string::npos);
    }
}

TEST_F(ExportedDocument, IsNotWrittenWhenADatabaseCannotBeOpened) {
    device.failOpens(tarvodb::kStateDatabase);
    document::TextWriter text("");
    CmdGetConfiguration command(text);
    command.execute();
    EXPECT_EQ(text.blocks(), std::vector<std::string>{""});
    EXPECT_EQ(command.errors(), std::set{ErrorCode::database});
}

TEST_F(ExportedDocument, StandsInTheDataOfTheCommandsResult) {
    exportConfiguration();
    EXPECT_EQ(data(),
              "<data><getConfigurationResult>" + element("") + "</getConfigurationResult></data>");
    EXPECT_EQ(outcome(), "0");
    EXPECT_EQ(errorElements(), "<errors/>");
    EXPECT_TRUE(command().errors().empty());
}

TEST_F(ExportedDocument, LeavesTheRunStatusOfTheCommandAlone) {
    exportConfiguration();
    EXPECT_EQ(command().status(), RunStatus::created);
    command().run();
    EXPECT_EQ(command().status(), RunStatus::done);
}

TEST_F(ExportedDocument, IsNotThereBeforeTheCommandRuns) {
    EXPECT_EQ(CmdGetConfiguration().getConfigurationNode(), nullptr);
}

TEST_F(ExportedDocument, OpensTheConfigurationThenTheStateAndClosesBoth) {
    exportConfiguration();
    EXPECT_EQ(device.eventsOf("open: "),
              (Lines{"/tarvo/DB/config_global.sqlite", "/tmp/temp_global.sqlite"}));
    EXPECT_EQ(command().configDb(), nullptr);
    EXPECT_EQ(command().stateDb(), nullptr);
}

TEST_F(ExportedDocument, ClosesBothDatabasesAtItsEnd) {
    exportConfiguration();
    const auto& events = device.events();
    ASSERT_GE(events.size(), 2U);
    EXPECT_EQ(Lines(events.end() - 2, events.end()),
              (Lines{"close: /tarvo/DB/config_global.sqlite", "close: /tmp/temp_global.sqlite"}));
}

TEST_F(ExportedDocument, IsOfOneStateWhenNobodyWrites) {
    for (const char* mode : {"DELETE", "WAL"}) {
        device.execute(tarvodb::kConfigDatabase, std::string("PRAGMA journal_mode = ") + mode);
        device.execute(tarvodb::kStateDatabase, std::string("PRAGMA journal_mode = ") + mode);
        device.execute(tarvodb::kConfigDatabase, "INSERT INTO RedesModulos (MAC) VALUES ('m')");
        exportConfiguration();
        EXPECT_TRUE(command().isOfOneState()) << mode;
        // A select that fails has read nothing.
        device.failStatements("SELECT", 3, SQLITE_BUSY);
        exportConfiguration();
        EXPECT_TRUE(command().isOfOneState()) << mode;
    }
}

TEST_F(ExportedDocument, IsNotOfOneStateWhenSomebodyWritesBetweenTwoSelects) {
    for (const char* mode : {"DELETE", "WAL"}) {
        device.execute(tarvodb::kConfigDatabase, std::string("PRAGMA journal_mode = ") + mode);
        device.beforeStatement("SELECT * FROM RedesModulos", [this] {
            device.execute(tarvodb::kConfigDatabase,
                           "INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES ('deu')");
        });
        exportConfiguration();
        EXPECT_FALSE(command().isOfOneState()) << mode;
    }
}

TEST_F(ExportedDocument, IsOfOneStateWhenSomebodyWritesBeforeTheFirstSelect) {
    device.beforeStatement("SELECT * FROM configuracionWebGlobal", [this] {
        device.execute(tarvodb::kConfigDatabase,
                       "INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES ('deu')");
    });
    exportConfiguration();
    EXPECT_TRUE(command().isOfOneState());
}

TEST_F(ExportedDocument, IsNotOfOneStateWhenTheMeasuredValuesChange) {
    device.execute(tarvodb::kConfigDatabase, "INSERT INTO RedesModulos (MAC) VALUES ('m'), ('n')");
    device.beforeStatement("SELECT * FROM ModulosCabecera  WHERE MAC LIKE 'n'", [this] {
        device.execute(tarvodb::kStateDatabase, "INSERT INTO CAMInfoGlobal (MAC) VALUES ('m')");
    });
    exportConfiguration();
    EXPECT_FALSE(command().isOfOneState());
}

TEST_F(ExportedDocument, WritesAndLogsNothing) {
    insertAllSettings();
    exportConfiguration();
    for (const std::string& event : device.events()) {
        EXPECT_TRUE(event.starts_with("open: ") || event.starts_with("close: ") ||
                    event.starts_with("sql: SELECT * FROM "))
            << event;
    }
    EXPECT_EQ(out(), "");
    EXPECT_EQ(err(), "");
}

TEST_F(ExportedDocument, ReadsTheTablesInTheOrderOfTheSections) {
    const std::map<std::string, Lines> statementsOf = {
        {"QRA-310",
         {"SELECT * FROM configuracionWebGlobal ", "SELECT * FROM MantenimientoHomeChannelsGlobal ",
          "SELECT * FROM Service_EPG ", "SELECT * FROM RedesCabecera ",
          "SELECT * FROM DiSEqCGlobal ", "SELECT * FROM ScramblingKeysGlobal ",
          "SELECT * FROM AudioLanguageListGlobal ", "SELECT * FROM RedesModulos "}},
        {"RNB-K408",
         {"SELECT * FROM configuracionWebGlobal ", "SELECT * FROM RedesCabecera ",
          "SELECT * FROM DiSEqCGlobal ", "SELECT * FROM ScramblingKeysGlobal ",
          "SELECT * FROM AudioLanguageListGlobal ", "SELECT * FROM RedesModulos "}},
        {"WVX-BQ4",
         {"SELECT * FROM configuracionWebGlobal ", "SELECT * FROM RedesCabecera ",
          "SELECT * FROM AudioLanguageListGlobal ", "SELECT * FROM RedesModulos "}},
    };
    for (const auto& [model, statements] : statementsOf) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        EXPECT_EQ(device.statements(), statements);
    }
}

TEST_F(ExportedDocument, ReadsEveryRowWithItsRowsBeforeTheNext) {
    insertConfig("MantenimientoHomeChannelsGlobal", "Frequency", "11778");
    insertConfig("Service_EPG", "idService_EPG, fk_idService_EPG_Satellite", "8, 9");
    insertConfig("RedesCabecera", "idRed, NID", "1, 100");
    insertConfig("DiSEqCGlobal", "Posicion", "1");
    insertConfig("ScramblingKeysGlobal", "System", "'VSecure'");
    insertConfig("AudioLanguageListGlobal", "AudioCode", "'spa'");
    insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M1', 36, 1");
    insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M2', 35, 1");
    insertConfig("EntradasGlobal", "idEntradasGlobal, MAC, tipoEntrada, fk_idEntrada",
                 "11, 'M1', 0, 1");
    insertConfig("EntradasGlobal", "idEntradasGlobal, MAC, tipoEntrada, fk_idEntrada",
                 "12, 'M1', 1, 2");
    insertConfig("EntradasGlobal", "idEntradasGlobal, MAC, tipoEntrada, fk_idEntrada",
                 "13, 'M1', 2, 3");
    insertConfig("NimGlobal", "fk_idEntradasGlobal", "11");
    insertConfig("NimGlobal", "fk_idEntradasGlobal", "11");
    insertConfig("NimCOFDMGlobal", "fk_idEntradasGlobal", "12");
    insertConfig("NimQAMGlobal", "fk_idEntradasGlobal", "13");
    insertConfig("SalidasLogicasGlobal", "idSalidasLogicasGlobal, MAC", "21, 'M1'");
    insertConfig("SalidasLogicasGlobal", "idSalidasLogicasGlobal, MAC", "22, 'M1'");
    insertConfig("ServiciosSalidaGlobal", "idSSG, MAC, OSID, fk_idEntrada, SSU, EstadoBorrado",
                 "31, 'M1', 500, 1, 0, 0");

    exportConfiguration();

    EXPECT_EQ(
        device.statements(),
        (Lines{
            "SELECT * FROM configuracionWebGlobal ",
            "SELECT * FROM MantenimientoHomeChannelsGlobal ",
            "SELECT * FROM Service_EPG ",
            "SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '9' ",
            "SELECT * FROM Service_EPG_audios  WHERE fk_idService_EPG LIKE '8' ",
            "SELECT * FROM Service_EPG_replacing  WHERE fk_idService_EPG LIKE '8' ",
            "SELECT * FROM RedesCabecera ",
            "SELECT * FROM DiSEqCGlobal ",
            "SELECT * FROM ScramblingKeysGlobal ",
            "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE 'VSecure' ",
            "SELECT * FROM AudioLanguageListGlobal ",
            "SELECT * FROM RedesModulos ",
            "SELECT * FROM CAMInfoGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM ModulosCabecera  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM EntradasGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '11' ",
            "SELECT * FROM TempNIMGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM TempNIMGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '12' ",
            "SELECT * FROM NimCOFDMGlobal  WHERE fk_idEntradasGlobal LIKE '12' ",
            "SELECT * FROM TempNIMCOFDMGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '13' ",
            "SELECT * FROM NimQAMGlobal  WHERE fk_idEntradasGlobal LIKE '13' ",
            "SELECT * FROM TempNIMQAMGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM SalidasLogicasGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM RFOutGlobal  WHERE fk_idSalidasLogicasGlobal LIKE '21' ",
            "SELECT * FROM RFOutGlobal  WHERE fk_idSalidasLogicasGlobal LIKE '22' ",
            "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M1' ",
            "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '31' ",
            "SELECT * FROM ServiciosEntradaGlobal  WHERE MAC LIKE 'M1'  and OSID LIKE '500'  and "
            "fk_idEntrada LIKE '1' ",
            "SELECT * FROM ModulosCabecera  WHERE MAC LIKE 'M2' ",
            "SELECT * FROM EntradasGlobal  WHERE MAC LIKE 'M2' ",
            "SELECT * FROM SalidasLogicasGlobal  WHERE MAC LIKE 'M2' ",
            "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M2' ",
        }));
}

TEST_F(ExportedDocument, IsNotMadeWithoutTheConfigurationDatabase) {
    device.failOpens(tarvodb::kConfigDatabase);
    exportConfiguration();
    EXPECT_EQ(command().errors(), std::set{ErrorCode{102}});
    EXPECT_EQ(errorElements(),
              "<errors><error><id>102</id><text>Could not access database</text></error></errors>");
    EXPECT_EQ(data(), "<data/>");
    EXPECT_EQ(outcome(), "1");
    EXPECT_EQ(device.events(), (Lines{"open: /tarvo/DB/config_global.sqlite"}));
}

TEST_F(ExportedDocument, TellsTheDebugLogThatItIsNotMade) {
    platform::debugMask = 0x10;
    device.failOpens(tarvodb::kConfigDatabase);
    exportConfiguration();
    EXPECT_EQ(device.logLines(), (Lines{"3: Command error: 102 Could not access database"}));
}

TEST_F(ExportedDocument, IsNotMadeWithoutTheStateDatabase) {
    device.failOpens(tarvodb::kStateDatabase);
    exportConfiguration();
    EXPECT_EQ(command().errors(), std::set{ErrorCode{102}});
    EXPECT_EQ(errorElements(),
              "<errors><error><id>102</id><text>Could not access database</text></error></errors>");
    EXPECT_EQ(data(), "<data/>");
    EXPECT_EQ(outcome(), "1");
    EXPECT_EQ(device.events(),
              (Lines{"open: /tarvo/DB/config_global.sqlite", "open: /tmp/temp_global.sqlite"}));
}

TEST_F(ExportedDocument, IsTriedAgainTenTimesWithoutADatabase) {
    device.failOpens(tarvodb::kConfigDatabase);
    CmdGetConfiguration command;
    command.run();
    EXPECT_EQ(command.errors(), std::set{ErrorCode{102}});
    EXPECT_EQ(device.eventsOf("open: "), Lines(11, "/tarvo/DB/config_global.sqlite"));
    EXPECT_EQ(device.sleeps(), Lines(10, "1"));
}

TEST_F(ExportedDocument, StandsOnceInTheDataAfterATryThatFailed) {
    insertSetting("network_IP", "'10.0.0.1'");
    const auto state = device.readFile(tarvodb::kStateDatabase).value();
    makeUnopenable(tarvodb::kStateDatabase);
    exportConfiguration();
    ASSERT_EQ(command().errors(), std::set{ErrorCode{102}});

    device.removeFile(tarvodb::kStateDatabase);
    device.writeFile(tarvodb::kStateDatabase, state);
    command().result().reset();
    command().execute();

    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(element("network/ip"), "<ip>10.0.0.1</ip>");
    EXPECT_EQ(data(),
              "<data><getConfigurationResult>" + element("") + "</getConfigurationResult></data>");
    EXPECT_EQ(outcome(), "0");
}

TEST_F(ExportedDocument, GoesOnWithoutTheRowsOfASelectThatFailedThreeTimes) {
    insertAllSettings();
    insertConfig("AudioLanguageListGlobal", "AudioCode", "'spa'");
    device.failStatements("SELECT * FROM configuracionWebGlobal", 3, SQLITE_BUSY,
                          "database is locked");

    exportConfiguration();

    EXPECT_EQ(element("regional"), "<regional><language/><country/><timezone/></regional>");
    EXPECT_EQ(element("preferredLanguages"),
              "<preferredLanguages><language>spa</language></preferredLanguages>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(outcome(), "0");
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3"}));
    const std::string attempt =
        "3: [ERROR_DB]doSelect: Error leyendo datos tabla configuracionWebGlobal . intento: ";
    const std::string reason = "3: [ERROR_DB]doSelect: database is locked\n";
    EXPECT_EQ(device.logLines(),
              (Lines{attempt + "0\n", reason, attempt + "1\n", reason, attempt + "2\n", reason}));
}

TEST_F(ExportedDocument, TakesTheRowsOfTheThirdTry) {
    insertSetting("network_IP", "'10.0.0.1'");
    device.failStatements("SELECT * FROM configuracionWebGlobal", 2, SQLITE_BUSY);
    EXPECT_EQ(exported("network/ip"), "<ip>10.0.0.1</ip>");
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2"}));
}

TEST_F(ExportedDocument, HasTheSectionOfAMissingTableWithoutRows) {
    const std::map<std::string, std::string> sectionOf = {
        {"MantenimientoHomeChannelsGlobal", "homeChannels"},
        {"Service_EPG", "serviceEPGs"},
        {"RedesCabecera", "dvbNetworks"},
        {"DiSEqCGlobal", "diseqcs"},
        {"ScramblingKeysGlobal", "scramblings"},
        {"AudioLanguageListGlobal", "preferredLanguages"},
        {"RedesModulos", "modules"}};
    for (const auto& [table, section] : sectionOf) {
        SCOPED_TRACE(table);
        device.execute(tarvodb::kConfigDatabase, "DROP TABLE " + table);
        EXPECT_EQ(exported(section), "<" + section + "/>");
        EXPECT_EQ(childNames(""), kFamilyASections);
        EXPECT_TRUE(command().errors().empty());
    }
}

TEST_F(ExportedDocument, IsEmptyWhenTheFilesAreNotDatabases) {
    exportConfiguration();
    const std::string empty = element("");
    device.writeFile(tarvodb::kConfigDatabase, std::string(2000, 'x'));
    device.writeFile(tarvodb::kStateDatabase, std::string(2000, 'x'));
    EXPECT_EQ(exported(""), empty);
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(outcome(), "0");
}

}  // namespace tarvo_remote_control
