#include <sqlite3.h>

#include <algorithm>
#include <map>
#include <utility>

#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

// A module that can have a CAM: family 36, and no model without one.
constexpr const char* kCamModule = "'M1', 36, 1";

const std::vector<std::string> kModelsWithCardState = {"QRA-310", "LMV-502", "PKD-707", "WVX-AQ4"};

class ExportedModules : public test::ExportTest {
  protected:
    void insertModule(const std::string& macFamilyModel) {
        insertConfig("RedesModulos", "MAC, Familia, Modelo", macFamilyModel);
    }

    // A CAM state row of module M1.
    void insertCam(const std::string& columns, const std::string& values) {
        insertState("CAMInfoGlobal", "MAC, " + columns, "'M1', " + values);
    }

    [[nodiscard]] std::string leaf(const std::string& name) const {
        return element("modules/module/" + name);
    }

    // The five CAM elements after an export.
    std::string exportedCam() {
        exportConfiguration();
        return leaf("CAMSerialNumber") + leaf("CAMVersion") + leaf("CardSerialNumber") +
               leaf("CardRights") + leaf("CardStatus");
    }
};

bool hasCardState(const std::string& model) {
    return std::find(kModelsWithCardState.begin(), kModelsWithCardState.end(), model) !=
           kModelsWithCardState.end();
}

}  // namespace

TEST_F(ExportedModules, ShowWhatIsStored) {
    insertConfig("RedesModulos",
                 "idRedMod, MAC, HostName, LabelName, RED, Familia, Modelo, Master, HWVersion,"
                 " NumeroSerie, PairedHost, Atenuacion, ResetFactory, NFS_Server, UpgradeCounter,"
                 " ModoSalidaRF, estado",
                 "101, '02:AA:00:00:00:01', 'host', 'label', 105, 106, 107, 108, 'hw', 'serial',"
                 " 'paired', 112, 113, 114, 115, 116, 117");
    EXPECT_EQ(exported("modules"),
              "<modules><module>"
              "<id>host</id><mac>02:AA:00:00:00:01</mac><isMaster>108</isMaster>"
              "<name>label</name><family>106</family><model>107</model>"
              "<modoSalidaRF>116</modoSalidaRF><serialNumber>serial</serialNumber>"
              "<hwVersion>hw</hwVersion><attenuation>112</attenuation>"
              "<dvbNetworkId>105</dvbNetworkId><inputs/><outputs/><services/>"
              "</module></modules>");
}

TEST_F(ExportedModules, HaveTheChildrenOfTheModelInTheirOrder) {
    insertModule(kCamModule);
    insertState("ModulosCabecera", "MAC", "'M1'");
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        const std::string names = model == "RNB-K408" ? "" : "name family model modoSalidaRF ";
        const std::string cardState = hasCardState(model) ? "CardRights CardStatus " : "";
        EXPECT_EQ(childNames("modules/module"),
                  "id mac isMaster " + names +
                      "serialNumber CAMSerialNumber CAMVersion CardSerialNumber " + cardState +
                      "hwVersion swVersion attenuation dvbNetworkId inputs outputs services");
    }
}

TEST_F(ExportedModules, HaveCamElementsOnlyWhereAModuleCanHaveACam) {
    const std::vector<std::pair<std::string, bool>> hasCam = {
        {"36, 0", true},   {"36, 1", true},      {"36, 2", false},     {"36, 3", true},
        {"36, 12", true},  {"36, 13", false},    {"36, 14", true},     {"36, NULL", true},
        {"35, 1", false},  {"37, 1", false},     {"0, 0", false},      {"NULL, NULL", false},
        {"36, -2", true},  {"'abc', 1", false},  {"'36abc', 1", true}, {"-36, 1", false},
        {"36, 102", true}, {"36, '2nd'", false},
    };
    for (const auto& [familyAndModel, expected] : hasCam) {
        SCOPED_TRACE(familyAndModel);
        device.execute(tarvodb::kConfigDatabase, "DELETE FROM RedesModulos");
        insertModule("'M1', " + familyAndModel);
        exportConfiguration();
        for (const char* name :
             {"CAMSerialNumber", "CAMVersion", "CardSerialNumber", "CardRights", "CardStatus"}) {
            EXPECT_EQ(!leaf(name).empty(), expected) << name;
        }
        const auto statements = device.statements();
        EXPECT_EQ(std::count(statements.begin(), statements.end(),
                             "SELECT * FROM CAMInfoGlobal  WHERE MAC LIKE 'M1' "),
                  expected ? 1 : 0);
    }
}

TEST_F(ExportedModules, AreAllThereInTheOrderOfTheTable) {
    insertModule("'M2', 1, 1");
    insertModule("'M1', 1, 1");
    insertModule("'M2', 1, 1");
    exportConfiguration();
    EXPECT_EQ(childNames("modules"), "module module module");
    EXPECT_EQ(element("modules/module[1]/mac"), "<mac>M2</mac>");
    EXPECT_EQ(element("modules/module[2]/mac"), "<mac>M1</mac>");
    EXPECT_EQ(element("modules/module[3]/mac"), "<mac>M2</mac>");
}

TEST_F(ExportedModules, HaveEmptyElementsForNullColumns) {
    insertConfig("RedesModulos", "idRedMod", "1");
    EXPECT_EQ(exported("modules"),
              "<modules><module><id/><mac/><isMaster/><name/><family/><model/><modoSalidaRF/>"
              "<serialNumber/><hwVersion/><attenuation/><dvbNetworkId/><inputs/><outputs/>"
              "<services/></module></modules>");
}

TEST_F(ExportedModules, SearchWithAnEmptyMacWhenItIsNull) {
    insertModule("NULL, 36, 1");
    insertState("CAMInfoGlobal", "MAC, CAMSerialNumber", "NULL, 'of no module'");
    insertState("ModulosCabecera", "MAC, SWVersion", "'', '1.0'");
    exportConfiguration();
    EXPECT_EQ(leaf("CAMSerialNumber"), "<CAMSerialNumber/>");
    EXPECT_EQ(leaf("swVersion"), "<swVersion>1.0</swVersion>");
    const auto statements = device.statements();
    const std::vector<std::string> ofTheModule(statements.end() - 5, statements.end());
    EXPECT_EQ(ofTheModule, (std::vector<std::string>{
                               "SELECT * FROM CAMInfoGlobal  WHERE MAC LIKE '' ",
                               "SELECT * FROM ModulosCabecera  WHERE MAC LIKE '' ",
                               "SELECT * FROM EntradasGlobal  WHERE MAC LIKE '' ",
                               "SELECT * FROM SalidasLogicasGlobal  WHERE MAC LIKE '' ",
                               "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE '' "}));
}

TEST_F(ExportedModules, FindTheirStateWithoutRegardToCase) {
    insertModule("'aa:bb', 36, 1");
    insertState("ModulosCabecera", "MAC, SWVersion", "'AA:BB', '1.0'");
    exportConfiguration();
    EXPECT_EQ(leaf("mac"), "<mac>aa:bb</mac>");
    EXPECT_EQ(leaf("swVersion"), "<swVersion>1.0</swVersion>");
}

TEST_F(ExportedModules, QuoteTheMacInStatements) {
    insertModule("'M''1 50%', 36, 1");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M''1 50', '1.0'");
    exportConfiguration();
    EXPECT_EQ(leaf("mac"), "<mac>M&apos;1 50%</mac>");
    EXPECT_EQ(leaf("swVersion"), "<swVersion>1.0</swVersion>");
    EXPECT_EQ(test::last(device.statements()),
              "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE 'M''1 50%' ");
}

TEST_F(ExportedModules, ShowNumbersAsTheyAreStored) {
    insertConfig("RedesModulos", "MAC, Familia, Modelo, Master, Atenuacion, ModoSalidaRF, RED",
                 "'M1', 'thirty', 'one', 'yes', '12abc', '', -3");
    exportConfiguration();
    EXPECT_EQ(leaf("family"), "<family>thirty</family>");
    EXPECT_EQ(leaf("model"), "<model>one</model>");
    EXPECT_EQ(leaf("isMaster"), "<isMaster>yes</isMaster>");
    EXPECT_EQ(leaf("attenuation"), "<attenuation>12abc</attenuation>");
    EXPECT_EQ(leaf("modoSalidaRF"), "<modoSalidaRF/>");
    EXPECT_EQ(leaf("dvbNetworkId"), "<dvbNetworkId>-3</dvbNetworkId>");
}

TEST_F(ExportedModules, EscapeMarkupAndKeepBytesAbove127) {
    insertConfig("RedesModulos", "HostName, LabelName", "'a<b>&\"''', 'caf\xC3\xA9 \xE9'");
    exportConfiguration();
    EXPECT_EQ(leaf("id"), "<id>a&lt;b&gt;&amp;&quot;&apos;</id>");
    EXPECT_EQ(leaf("name"), "<name>caf\xC3\xA9 \xE9</name>");
}

TEST_F(ExportedModules, HaveTheirOwnInputsOutputsAndServices) {
    insertModule("'M1', 1, 1");
    insertModule("'M2', 1, 1");
    insertConfig("EntradasGlobal", "MAC, fk_idEntrada", "'M2', 7");
    insertConfig("SalidasLogicasGlobal", "MAC, fk_idSalidasLogicas", "'M1', 8");
    insertConfig("ServiciosSalidaGlobal", "MAC, SID, SSU, EstadoBorrado", "'M2', 9, 0, 0");
    exportConfiguration();
    EXPECT_EQ(element("modules/module[1]/inputs"), "<inputs/>");
    EXPECT_EQ(element("modules/module[1]/outputs/output/outputId"), "<outputId>8</outputId>");
    EXPECT_EQ(element("modules/module[1]/services"), "<services/>");
    EXPECT_EQ(element("modules/module[2]/inputs/input/inputId"), "<inputId>7</inputId>");
    EXPECT_EQ(element("modules/module[2]/outputs"), "<outputs/>");
    EXPECT_EQ(element("modules/module[2]/services/service/outputSid"), "<outputSid>9</outputSid>");
}

TEST_F(ExportedModules, PassTheirFamilyAndModelToTheServices) {
    insertModule("'M1', 36, 1");
    insertModule("'M2', 36, 2");
    insertConfig("ServiciosSalidaGlobal", "MAC, SSU, EstadoBorrado", "'M1', 0, 0");
    insertConfig("ServiciosSalidaGlobal", "MAC, SSU, EstadoBorrado", "'M2', 0, 0");
    exportConfiguration();
    EXPECT_EQ(element("modules/module[1]/services/service/serviceStatus"), "<serviceStatus/>");
    EXPECT_EQ(element("modules/module[2]/services/service/serviceStatus"), "");
}

TEST_F(ExportedModules, ReadATableThatHasMoreColumns) {
    device.execute(tarvodb::kConfigDatabase,
                   "ALTER TABLE RedesModulos ADD COLUMN extra TEXT DEFAULT 'x'");
    insertModule("'M1', 1, 2");
    insertModule("'M2', 3, 4");
    exportConfiguration();
    EXPECT_EQ(element("modules/module[2]/mac"), "<mac>M2</mac>");
    EXPECT_EQ(element("modules/module[2]/model"), "<model>4</model>");
}

TEST_F(ExportedModules, ShowTheCamStateByThePositionOfItsColumns) {
    insertModule(kCamModule);
    device.execute(tarvodb::kStateDatabase,
                   "INSERT INTO CAMInfoGlobal VALUES (1, 'M1', 3, 4, 5, 6, 7, 8, 9, 4, 11, 'c12',"
                   " 13, 14, 49, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 'c28', 'c29',"
                   " 'c30', 31, 32, 33, 34, 35, 36)");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber>c12</CAMSerialNumber><CAMVersion>13</CAMVersion>"
              "<CardSerialNumber>11</CardSerialNumber><CardRights>Rights OK</CardRights>"
              "<CardStatus>Not Supported</CardStatus>");
}

TEST_F(ExportedModules, ShowTheCamAsEmptyWithoutAStateRow) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC, CAMSerialNumber", "'M2', 'of another module'");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber/><CAMVersion/><CardSerialNumber/>"
              "<CardRights>KO. No rights</CardRights><CardStatus>No API</CardStatus>");
}

TEST_F(ExportedModules, ShowTheCamAsEmptyWhenItsColumnsAreNull) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC", "'M1'");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber/><CAMVersion/><CardSerialNumber/>"
              "<CardRights>KO. No rights</CardRights><CardStatus>No API</CardStatus>");
}

TEST_F(ExportedModules, ShowTheLastOfSeveralCamStateRows) {
    insertModule(kCamModule);
    const char* columns = "CAMSerialNumber, CAMVersion, CardSerialNumber, RightsHours, CardStatus";
    insertCam(columns, "'first', 1, 11, 100, 1");
    insertState("CAMInfoGlobal", "MAC, CAMSerialNumber", "'M2', 'of another module'");
    insertCam(columns, "'last', 2, 22, 30, 2");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber>last</CAMSerialNumber><CAMVersion>2</CAMVersion>"
              "<CardSerialNumber>22</CardSerialNumber><CardRights>Less than 48 hours</CardRights>"
              "<CardStatus>No SmartCard</CardStatus>");
}

TEST_F(ExportedModules, KeepNothingOfAnEarlierCamStateRow) {
    insertModule(kCamModule);
    insertCam("CAMSerialNumber, CAMVersion, CardSerialNumber, RightsHours, CardStatus",
              "'first', 1, 11, 100, 1");
    insertState("CAMInfoGlobal", "MAC", "'M1'");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber/><CAMVersion/><CardSerialNumber/>"
              "<CardRights>KO. No rights</CardRights><CardStatus>No API</CardStatus>");
}

TEST_F(ExportedModules, TellHowLongTheRightsOfACardLast) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC", "'M1'");
    const std::map<std::string, std::string> textOf = {
        {"100000", "Rights OK"},      {"49", "Rights OK"},          {"48", "Less than 48 hours"},
        {"47", "Less than 48 hours"}, {"25", "Less than 48 hours"}, {"24", "KO. No rights"},
        {"23", "Less than 24 hours"}, {"1", "Less than 24 hours"},  {"0", "KO. No rights"},
        {"-1", "Less than 24 hours"}, {"-5", "Less than 24 hours"}, {"'none'", "KO. No rights"},
        {"NULL", "KO. No rights"},    {"'49 h'", "Rights OK"},
    };
    for (const auto& [hours, text] : textOf) {
        SCOPED_TRACE(hours);
        updateState("CAMInfoGlobal", "RightsHours = " + hours);
        exportConfiguration();
        EXPECT_EQ(leaf("CardRights"), "<CardRights>" + text + "</CardRights>");
    }
}

TEST_F(ExportedModules, TellTheStatusOfACard) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC", "'M1'");
    const std::map<std::string, std::string> textOf = {
        {"-1", "No API"},      {"0", "No API"},         {"1", "OK"},
        {"2", "No SmartCard"}, {"3", "Mute SmartCard"}, {"4", "Not Supported"},
        {"5", "No API"},       {"NULL", "No API"},      {"'1 card'", "OK"},
    };
    for (const auto& [code, text] : textOf) {
        SCOPED_TRACE(code);
        updateState("CAMInfoGlobal", "CardStatus = " + code);
        exportConfiguration();
        EXPECT_EQ(leaf("CardStatus"), "<CardStatus>" + text + "</CardStatus>");
    }
}

TEST_F(ExportedModules, PutZerosBeforeACardSerialNumberOnAnRnb) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC, CardSerialNumber", "'M1', 12345");
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        EXPECT_EQ(leaf("CardSerialNumber"), model == "RNB-K408"
                                                ? "<CardSerialNumber>00012345</CardSerialNumber>"
                                                : "<CardSerialNumber>12345</CardSerialNumber>");
    }
}

TEST_F(ExportedModules, KeepAnEmptyCardSerialNumberEmptyOnAnRnb) {
    becomeModel("RNB-K408");
    insertModule(kCamModule);
    exportConfiguration();
    EXPECT_EQ(leaf("CardSerialNumber"), "<CardSerialNumber/>");
    insertState("CAMInfoGlobal", "MAC", "'M1'");
    for (const char* empty : {"NULL", "''"}) {
        updateState("CAMInfoGlobal", std::string("CardSerialNumber = ") + empty);
        exportConfiguration();
        EXPECT_EQ(leaf("CardSerialNumber"), "<CardSerialNumber/>") << empty;
    }
    updateState("CAMInfoGlobal", "CardSerialNumber = 0");
    exportConfiguration();
    EXPECT_EQ(leaf("CardSerialNumber"), "<CardSerialNumber>0000</CardSerialNumber>");
}

TEST_F(ExportedModules, ShowTheFirmwareByThePositionOfItsColumn) {
    insertModule("'M1', 1, 1");
    device.execute(tarvodb::kStateDatabase,
                   "INSERT INTO ModulosCabecera VALUES (1, 'M1', 'c3', 'c4', 'c5', 'c6', 'c7', 8,"
                   " 9, 'c10', 'c11', 'c12', 'c13', 'c14', 15, 'c16', 'c17', 'c18', 'c19', 'c20',"
                   " 21, 22, 23, 24, 25, 26, 27, 28, 29, 30, 31)");
    exportConfiguration();
    EXPECT_EQ(leaf("swVersion"), "<swVersion>c12</swVersion>");
}

TEST_F(ExportedModules, ShowEveryFirmwareOfTheirOwn) {
    insertModule("'M1', 1, 1");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M1', '2.0'");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M2', '9.0'");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M1', NULL");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M1', '1.0'");
    exportConfiguration();
    EXPECT_EQ(leaf("swVersion[1]"), "<swVersion>2.0</swVersion>");
    EXPECT_EQ(leaf("swVersion[2]"), "<swVersion/>");
    EXPECT_EQ(leaf("swVersion[3]"), "<swVersion>1.0</swVersion>");
    EXPECT_EQ(leaf("swVersion[4]"), "");
}

TEST_F(ExportedModules, HaveNoStateWhenItsSelectsFail) {
    insertModule(kCamModule);
    insertState("CAMInfoGlobal", "MAC, CAMSerialNumber", "'M1', 'C1'");
    insertState("ModulosCabecera", "MAC, SWVersion", "'M1', '1.0'");
    device.failStatements("SELECT * FROM CAMInfoGlobal", 3, SQLITE_BUSY);
    device.failStatements("SELECT * FROM ModulosCabecera", 3, SQLITE_BUSY);
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber/><CAMVersion/><CardSerialNumber/>"
              "<CardRights>KO. No rights</CardRights><CardStatus>No API</CardStatus>");
    EXPECT_EQ(leaf("swVersion"), "");
    EXPECT_EQ(leaf("hwVersion"), "<hwVersion/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.sleeps(), (std::vector<std::string>{"1", "2", "3", "1", "2", "3"}));
}

TEST_F(ExportedModules, HaveNoStateWithoutTheStateTables) {
    insertModule(kCamModule);
    device.execute(tarvodb::kStateDatabase, "DROP TABLE CAMInfoGlobal");
    device.execute(tarvodb::kStateDatabase, "DROP TABLE ModulosCabecera");
    EXPECT_EQ(exportedCam(),
              "<CAMSerialNumber/><CAMVersion/><CardSerialNumber/>"
              "<CardRights>KO. No rights</CardRights><CardStatus>No API</CardStatus>");
    EXPECT_EQ(leaf("swVersion"), "");
    EXPECT_TRUE(command().errors().empty());
}

}  // namespace tarvo_remote_control
