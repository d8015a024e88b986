#include <sqlite3.h>

#include <map>
#include <utility>

#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

const std::string kInput = "modules/module/inputs/input/";

const std::vector<std::string> kTypes = {"0", "1", "2"};
const std::map<std::string, std::string> kTunerTable = {
    {"0", "NimGlobal"}, {"1", "NimCOFDMGlobal"}, {"2", "NimQAMGlobal"}};
const std::map<std::string, std::string> kTunerNumber = {
    {"0", "fk_idNim"}, {"1", "fk_idNimCOFDM"}, {"2", "fk_idNimQAM"}};
const std::map<std::string, std::string> kStateTable = {
    {"0", "TempNIMGlobal"}, {"1", "TempNIMCOFDMGlobal"}, {"2", "TempNIMQAMGlobal"}};

std::string quality(const std::string& text) {
    return text.empty() ? "<signalQuality/>" : "<signalQuality>" + text + "</signalQuality>";
}

// One module, M1, whose input row 11 is its input number 1.
class ExportedInputs : public test::ExportTest {
  protected:
    ExportedInputs() { insertConfig("RedesModulos", "MAC, Familia, Modelo", "'M1', 1, 1"); }

    void insertInput(const std::string& type, int rowId = 11, int number = 1) {
        insertConfig("EntradasGlobal", "idEntradasGlobal, MAC, tipoEntrada, fk_idEntrada",
                     std::to_string(rowId) + ", 'M1', " + type + ", " + std::to_string(number));
    }

    // A tuner row of input row 11.
    void insertTuner(const std::string& type, const std::string& columns = "MAC",
                     const std::string& values = "'M1'") {
        insertConfig(kTunerTable.at(type), "fk_idEntradasGlobal, " + columns, "11, " + values);
    }

    // The input row 11 of a type with one tuner row.
    void insertTunedInput(const std::string& type) {
        insertInput(type);
        insertTuner(type);
    }

    void removeInputs() {
        device.execute(tarvodb::kConfigDatabase,
                       "DELETE FROM EntradasGlobal; DELETE FROM NimGlobal;"
                       " DELETE FROM NimCOFDMGlobal; DELETE FROM NimQAMGlobal");
    }

    void insertStateOf(const std::string& type, const std::string& locked,
                       const std::string& qualityCode, const std::string& input = "1",
                       const std::string& mac = "M1") {
        insertState(kStateTable.at(type), "MAC, fk_idEntrada, Locked, Calidad",
                    "'" + mac + "', " + input + ", " + locked + ", " + qualityCode);
    }

    [[nodiscard]] std::string leaf(const std::string& name) const { return element(kInput + name); }
    std::string exportedInputs() { return exported("modules/module/inputs"); }
    std::string exportedNames() {
        exportConfiguration();
        return childNames("modules/module/inputs/input");
    }

    [[nodiscard]] std::vector<std::string> statementsOn(const std::string& tablePrefix) const {
        std::vector<std::string> found;
        for (const std::string& statement : device.statements()) {
            if (statement.starts_with("SELECT * FROM " + tablePrefix)) {
                found.push_back(statement);
            }
        }
        return found;
    }
};

}  // namespace

TEST_F(ExportedInputs, ShowASatelliteTuner) {
    insertConfig("EntradasGlobal",
                 "idEntradasGlobal, MAC, tipoEntrada, TSID, ONID, Activo, ResumenNIT,"
                 " fk_idEntrada, Estado",
                 "11, 'M1', 0, 104, 105, 106, '107', 108, 109");
    insertConfig("NimGlobal",
                 "idNimGlobal, MAC, Frequency, SymbolRate, banda_FI, fe, STANDBY, DiSEqC,"
                 " RFIN_LOOP, fk_idEntradasGlobal, fk_idNim, ModoPLS, ScramblingID, StreamID,"
                 " Estado",
                 "201, 'M1', 203, 204, 1, 206, 207, 0, 209, 11, 2, 1, 213, 214, 215");
    insertStateOf("0", "1", "2", "108");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId>108</inputId><active>106</active><type>0</type>"
              "<onid>105</onid><tsid>104</tsid><frequency>206</frequency><diseqc>0</diseqc>"
              "<band>high</band><PLSmode>gold</PLSmode><scramblingID>213</scramblingID>"
              "<streamID>214</streamID><rfLoop>209</rfLoop>"
              "<inputStatus><signalQuality>Good</signalQuality></inputStatus></input></inputs>");
}

TEST_F(ExportedInputs, ShowATerrestrialTuner) {
    insertInput("1");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "2, 209");
    insertConfig("NimCOFDMGlobal",
                 "idNimCOFDMGlobal, MAC, Frequency, Bandwidth, Hierarchy, trackingStatusEn,"
                 " TSID_Tracking, ONID_Tracking, STANDBY, fk_idEntradasGlobal, fk_idNimCOFDM,"
                 " PLP_ID, Estado",
                 "301, 'M1', 303, 1, 1, 306, 307, 308, 309, 11, 2, 312, 313");
    insertStateOf("1", "1", "1");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId>1</inputId><active/><type>1</type><onid/><tsid/>"
              "<frequency>303</frequency><bandwidth>7 MHz</bandwidth>"
              "<hierarchy>Low Priority</hierarchy><PLPID>312</PLPID><autoScan>306</autoScan>"
              "<onidScan>308</onidScan><tsidScan>307</tsidScan>"
              "<inputStatus><signalQuality>Marginal</signalQuality></inputStatus>"
              "<rfLoop>209</rfLoop></input></inputs>");
}

TEST_F(ExportedInputs, ShowACableTuner) {
    insertInput("2");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "2, 209");
    insertConfig("NimQAMGlobal",
                 "idNimQAMGlobal, MAC, Frequency, SymbolRate, Constelacion, STANDBY,"
                 " fk_idEntradasGlobal, fk_idNimQAM, Estado",
                 "401, 'M1', 403, 404, 2, 406, 11, 2, 409");
    insertStateOf("2", "0", "2");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId>1</inputId><active/><type>2</type><onid/><tsid/>"
              "<frequency>403</frequency><symbolRate>404</symbolRate><constelacion>2</constelacion>"
              "<inputStatus><signalQuality>Unlocked</signalQuality></inputStatus>"
              "<rfLoop>209</rfLoop></input></inputs>");
}

TEST_F(ExportedInputs, HaveTheChildrenOfTypeAndModelInTheirOrder) {
    for (const std::string& type : kTypes) {
        insertInput(type);
        insertTuner("0", "fk_idNim", "2");
        if (type != "0") {
            insertTuner(type, kTunerNumber.at(type), "2");
        }
        for (const std::string& model : test::kModels) {
            SCOPED_TRACE(model + ", type " + type);
            becomeModel(model);
            const bool rnb = model == "RNB-K408";
            const std::string status = rnb ? "" : " inputStatus";
            const std::map<std::string, std::string> tunerNames = {
                {"0", "frequency diseqc band PLSmode scramblingID streamID rfLoop" + status},
                {"1", "frequency bandwidth hierarchy PLPID autoScan onidScan tsidScan" + status +
                          " rfLoop"},
                {"2", "frequency symbolRate constelacion" + status + " rfLoop"}};
            EXPECT_EQ(exportedNames(), std::string("inputId active ") +
                                           (rnb ? "" : "type onid tsid ") + tunerNames.at(type));
        }
        removeInputs();
    }
}

TEST_F(ExportedInputs, EndAfterTheirIdentityWhenTheTypeIsUnknown) {
    for (const char* type : {"3", "-1", "10"}) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type);
        for (const std::string& tunerType : kTypes) {
            insertTuner(tunerType);
        }
        EXPECT_EQ(exportedNames(), "inputId active type onid tsid");
        EXPECT_EQ(leaf("type"), std::string("<type>") + type + "</type>");
    }
}

TEST_F(ExportedInputs, AreSatelliteInputsWhenTheTypeIsNotANumber) {
    for (const char* type : {"NULL", "''", "'sat'"}) {
        SCOPED_TRACE(type);
        removeInputs();
        insertTunedInput("0");
        updateConfig("EntradasGlobal", std::string("tipoEntrada = ") + type);
        EXPECT_EQ(exportedNames(),
                  "inputId active type onid tsid frequency diseqc band PLSmode scramblingID "
                  "streamID inputStatus");
    }
}

TEST_F(ExportedInputs, AreThoseOfTheModuleInTheOrderOfTheTable) {
    insertInput("3", 12, 2);
    insertConfig("EntradasGlobal", "idEntradasGlobal, MAC, tipoEntrada, fk_idEntrada",
                 "13, 'M2', 3, 3");
    insertInput("3", 14, 1);
    exportConfiguration();
    EXPECT_EQ(childNames("modules/module/inputs"), "input input");
    EXPECT_EQ(element("modules/module/inputs/input[1]/inputId"), "<inputId>2</inputId>");
    EXPECT_EQ(element("modules/module/inputs/input[2]/inputId"), "<inputId>1</inputId>");
}

TEST_F(ExportedInputs, AreAnEmptySectionWithoutRows) { EXPECT_EQ(exportedInputs(), "<inputs/>"); }

TEST_F(ExportedInputs, EndAfterTheirIdentityWithoutATunerRow) {
    for (const std::string& type : kTypes) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type);
        EXPECT_EQ(exportedNames(), "inputId active type onid tsid");
    }
}

TEST_F(ExportedInputs, FindTheirTunersByTheirRow) {
    insertInput("0", 11, 5);
    insertConfig("NimGlobal", "fk_idEntradasGlobal, fe", "5, 555");
    insertConfig("NimGlobal", "fk_idEntradasGlobal, fe", "11, 111");
    insertConfig("NimGlobal", "fk_idEntradasGlobal, fe", "111, 999");
    exportConfiguration();
    EXPECT_EQ(leaf("frequency[1]"), "<frequency>111</frequency>");
    EXPECT_EQ(leaf("frequency[2]"), "");
}

TEST_F(ExportedInputs, ShowSeveralTunersOneAfterTheOther) {
    const std::map<std::string, std::string> namesOf = {
        {"0", "frequency diseqc band PLSmode scramblingID streamID inputStatus"},
        {"1", "frequency bandwidth hierarchy PLPID autoScan onidScan tsidScan inputStatus"},
        {"2", "frequency symbolRate constelacion inputStatus"}};
    for (const auto& [type, names] : namesOf) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type);
        const std::string column = type == "0" ? "fe" : "Frequency";
        insertTuner(type, column, "300");
        insertTuner(type, column, "200");
        EXPECT_EQ(exportedNames(), "inputId active type onid tsid " + names + " " + names);
        EXPECT_EQ(leaf("frequency[1]"), "<frequency>300</frequency>");
        EXPECT_EQ(leaf("frequency[2]"), "<frequency>200</frequency>");
    }
}

TEST_F(ExportedInputs, HaveEmptyElementsForNullColumns) {
    insertConfig("EntradasGlobal", "idEntradasGlobal, MAC", "11, 'M1'");
    insertTuner("0");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId/><active/><type/><onid/><tsid/><frequency/><diseqc/>"
              "<band>low</band><PLSmode>auto</PLSmode><scramblingID/><streamID/><inputStatus/>"
              "</input></inputs>");
    insertTuner("1");
    updateConfig("EntradasGlobal", "tipoEntrada = 1");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId/><active/><type>1</type><onid/><tsid/><frequency/>"
              "<bandwidth>6 MHz</bandwidth><hierarchy>High Priority</hierarchy><PLPID/><autoScan/>"
              "<onidScan/><tsidScan/><inputStatus/></input></inputs>");
    insertTuner("2");
    updateConfig("EntradasGlobal", "tipoEntrada = 2");
    EXPECT_EQ(exportedInputs(),
              "<inputs><input><inputId/><active/><type>2</type><onid/><tsid/><frequency/>"
              "<symbolRate/><constelacion/><inputStatus/></input></inputs>");
}

TEST_F(ExportedInputs, ShowNumbersAsTheyAreStored) {
    insertTunedInput("0");
    updateConfig("EntradasGlobal", "Activo = 'on', ONID = '0x20', TSID = ''");
    updateConfig("NimGlobal", "fe = '11778 <MHz>', ScramblingID = 'none'");
    exportConfiguration();
    EXPECT_EQ(leaf("active"), "<active>on</active>");
    EXPECT_EQ(leaf("onid"), "<onid>0x20</onid>");
    EXPECT_EQ(leaf("tsid"), "<tsid/>");
    EXPECT_EQ(leaf("frequency"), "<frequency>11778 &lt;MHz&gt;</frequency>");
    EXPECT_EQ(leaf("scramblingID"), "<scramblingID>none</scramblingID>");
}

TEST_F(ExportedInputs, ShowTheBandOnlyWithoutADiseqcPosition) {
    insertTunedInput("0");
    const std::map<std::string, bool> hasBand = {{"-1", true},  {"0", true},    {"NULL", true},
                                                 {"'x'", true}, {"1", false},   {"2", false},
                                                 {"64", false}, {"'1x'", false}};
    for (const auto& [diseqc, expected] : hasBand) {
        SCOPED_TRACE(diseqc);
        updateConfig("NimGlobal", "DiSEqC = " + diseqc);
        exportConfiguration();
        EXPECT_EQ(leaf("band"), expected ? "<band>low</band>" : "");
    }
}

TEST_F(ExportedInputs, NameTheBandOfASatelliteTuner) {
    insertTunedInput("0");
    expectTexts("NimGlobal", "banda_FI", kInput + "band",
                {{"0", "low"}, {"1", "high"}, {"2", ""}, {"-1", ""}, {"NULL", "low"}});
}

TEST_F(ExportedInputs, NameTheLayerScramblingOfASatelliteTuner) {
    insertTunedInput("0");
    expectTexts("NimGlobal", "ModoPLS", kInput + "PLSmode",
                {{"0", "auto"},
                 {"1", "gold"},
                 {"2", "root"},
                 {"3", "auto"},
                 {"-1", "auto"},
                 {"NULL", "auto"}});
}

TEST_F(ExportedInputs, ShowTheStreamIdOfASatelliteTunerOrAuto) {
    insertTunedInput("0");
    expectTexts(
        "NimGlobal", "StreamID", kInput + "streamID",
        {{"-2", "auto"}, {"-3", "-3"}, {"-1", "-1"}, {"0", "0"}, {"255", "255"}, {"NULL", ""}});
}

TEST_F(ExportedInputs, NameTheBandwidthOfATerrestrialTunerCountingUp) {
    insertTunedInput("1");
    expectTexts("NimCOFDMGlobal", "Bandwidth", kInput + "bandwidth",
                {{"0", "6 MHz"},
                 {"1", "7 MHz"},
                 {"2", "8 MHz"},
                 {"3", ""},
                 {"-1", ""},
                 {"NULL", "6 MHz"},
                 {"'wide'", "6 MHz"}});
}

TEST_F(ExportedInputs, NameTheHierarchyOfATerrestrialTuner) {
    insertTunedInput("1");
    expectTexts("NimCOFDMGlobal", "Hierarchy", kInput + "hierarchy",
                {{"0", "High Priority"},
                 {"1", "Low Priority"},
                 {"2", ""},
                 {"-1", ""},
                 {"NULL", "High Priority"}});
}

TEST_F(ExportedInputs, ShowThePipeOfATerrestrialTunerOrAuto) {
    insertTunedInput("1");
    expectTexts(
        "NimCOFDMGlobal", "PLP_ID", kInput + "PLPID",
        {{"-2", "auto"}, {"-3", "-3"}, {"-1", "-1"}, {"0", "0"}, {"255", "255"}, {"NULL", ""}});
}

TEST_F(ExportedInputs, ShowTheConstellationOfACableTunerAsItsCode) {
    insertTunedInput("2");
    expectTexts("NimQAMGlobal", "Constelacion", kInput + "constelacion",
                {{"0", "0"}, {"4", "4"}, {"99", "99"}, {"NULL", ""}});
}

TEST_F(ExportedInputs, ShowTheLoopOnlyOfASecondTuner) {
    for (const std::string& type : kTypes) {
        removeInputs();
        insertTunedInput(type);
        const std::map<std::string, bool> hasLoop = {{"NULL", false}, {"-1", false}, {"0", false},
                                                     {"1", false},    {"2", true},   {"3", true}};
        for (const auto& [number, expected] : hasLoop) {
            SCOPED_TRACE(type + ", tuner " + number);
            updateConfig(kTunerTable.at(type), kTunerNumber.at(type) + " = " + number);
            exportConfiguration();
            EXPECT_EQ(leaf("rfLoop"), expected ? "<rfLoop/>" : "");
        }
    }
}

TEST_F(ExportedInputs, TakeTheLoopOfTheLastSecondSatelliteTuner) {
    insertInput("0");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "1, 7");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "2, 8");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "3, 9");
    insertTuner("0", "fk_idNim, RFIN_LOOP", "1, 6");
    exportConfiguration();
    EXPECT_EQ(leaf("rfLoop[1]"), "<rfLoop>9</rfLoop>");
    EXPECT_EQ(leaf("rfLoop[2]"), "<rfLoop>9</rfLoop>");
    EXPECT_EQ(leaf("rfLoop[3]"), "");
}

TEST_F(ExportedInputs, TakeTheLoopOfTheSatelliteTunersOnAnyType) {
    for (const char* type : {"1", "2"}) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type);
        insertTuner(type, kTunerNumber.at(type), "2");
        insertTuner("0", "fk_idNim, RFIN_LOOP", "1, 7");
        exportConfiguration();
        EXPECT_EQ(leaf("rfLoop"), "<rfLoop/>");
        insertTuner("0", "fk_idNim, RFIN_LOOP", "2, 8");
        exportConfiguration();
        EXPECT_EQ(leaf("rfLoop"), "<rfLoop>8</rfLoop>");
    }
}

TEST_F(ExportedInputs, SelectTheirSatelliteTunersWhateverTheirType) {
    for (const char* type : {"0", "1", "2", "3"}) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type);
        exportConfiguration();
        const std::string bySatellite =
            "SELECT * FROM NimGlobal  WHERE fk_idEntradasGlobal LIKE '11' ";
        std::vector<std::string> statements = {bySatellite};
        if (std::string(type) == "1") {
            statements.emplace_back(
                "SELECT * FROM NimCOFDMGlobal  WHERE fk_idEntradasGlobal LIKE '11' ");
        } else if (std::string(type) == "2") {
            statements.emplace_back(
                "SELECT * FROM NimQAMGlobal  WHERE fk_idEntradasGlobal LIKE '11' ");
        }
        EXPECT_EQ(statementsOn("Nim"), statements);
    }
}

TEST_F(ExportedInputs, HaveNoStatusOnAnRnb) {
    becomeModel("RNB-K408");
    for (const std::string& type : kTypes) {
        SCOPED_TRACE(type);
        removeInputs();
        insertTunedInput(type);
        insertStateOf(type, "1", "2");
        exportConfiguration();
        EXPECT_EQ(leaf("inputStatus"), "");
        EXPECT_EQ(statementsOn("Temp"), std::vector<std::string>());
    }
}

TEST_F(ExportedInputs, HaveAnEmptyStatusWithoutStateRows) {
    for (const std::string& type : kTypes) {
        SCOPED_TRACE(type);
        removeInputs();
        insertTunedInput(type);
        insertStateOf(type, "1", "2", "1", "M2");
        exportConfiguration();
        EXPECT_EQ(leaf("inputStatus"), "<inputStatus/>");
    }
}

TEST_F(ExportedInputs, NameTheSignalQualityOfALockedTuner) {
    const std::map<std::string, std::string> textOf = {
        {"0", "Bad"}, {"1", "Marginal"}, {"2", "Good"}, {"3", ""},
        {"-1", ""},   {"NULL", "Bad"},   {"'?'", "Bad"}};
    for (const std::string& type : kTypes) {
        removeInputs();
        insertTunedInput(type);
        insertStateOf(type, "1", "0");
        for (const auto& [code, text] : textOf) {
            SCOPED_TRACE(type + ", code " + code);
            updateState(kStateTable.at(type), "Calidad = " + code);
            exportConfiguration();
            EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality(text) + "</inputStatus>");
        }
    }
}

TEST_F(ExportedInputs, CallATunerUnlockedWhateverItsQuality) {
    for (const std::string& type : kTypes) {
        removeInputs();
        insertTunedInput(type);
        insertStateOf(type, "0", "2");
        // Of a satellite tuner 1 alone means locked, of the others every number but 0.
        const std::map<std::string, bool> isLocked = {{"0", false},       {"1", true},
                                                      {"2", type != "0"}, {"-1", type != "0"},
                                                      {"NULL", false},    {"'yes'", false}};
        for (const auto& [locked, expected] : isLocked) {
            SCOPED_TRACE(type + ", locked " + locked);
            updateState(kStateTable.at(type), "Locked = " + locked);
            exportConfiguration();
            EXPECT_EQ(leaf("inputStatus/signalQuality"), quality(expected ? "Good" : "Unlocked"));
        }
    }
}

TEST_F(ExportedInputs, ReadTheSatelliteStateByThePositionOfItsColumns) {
    insertInput("0", 11, 5);
    insertTuner("0");
    device.execute(tarvodb::kStateDatabase,
                   "INSERT INTO TempNIMGlobal VALUES (1, 'M1', 3, 4, 5, 6, 7, 8, 9, 10, 11, 1, 13,"
                   " 14, 15, 16, 17, 1, 19)");
    exportConfiguration();
    EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality("Marginal") + "</inputStatus>");
}

TEST_F(ExportedInputs, ReadTheTerrestrialStateByThePositionOfItsColumns) {
    insertTunedInput("1");
    device.execute(tarvodb::kStateDatabase,
                   "INSERT INTO TempNIMCOFDMGlobal VALUES (1, 'M1', 0, 0, 0, 0, 0, 1, 0, 0, 9, 0)");
    exportConfiguration();
    EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality("Marginal") + "</inputStatus>");
}

TEST_F(ExportedInputs, ReadTheCableStateByThePositionOfItsColumns) {
    insertTunedInput("2");
    device.execute(
        tarvodb::kStateDatabase,
        "INSERT INTO TempNIMQAMGlobal VALUES (1, 'M1', 0, 0, 0, 0, 0, 1, 0, 0, 0, 0, 9, 0)");
    exportConfiguration();
    EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality("Marginal") + "</inputStatus>");
}

TEST_F(ExportedInputs, ShowTheSatelliteStateOfTheirOwnNumberAlone) {
    insertInput("0", 11, 1);
    insertTuner("0");
    insertInput("0", 12, 2);
    insertConfig("NimGlobal", "fk_idEntradasGlobal", "12");
    insertStateOf("0", "1", "0", "1");
    insertStateOf("0", "1", "1", "2");
    insertStateOf("0", "0", "0", "1");
    insertStateOf("0", "1", "2", "12");
    insertStateOf("0", "1", "2", "NULL");
    exportConfiguration();
    EXPECT_EQ(element("modules/module/inputs/input[1]/inputStatus"),
              "<inputStatus>" + quality("Bad") + quality("Unlocked") + "</inputStatus>");
    EXPECT_EQ(element("modules/module/inputs/input[2]/inputStatus"),
              "<inputStatus>" + quality("Marginal") + "</inputStatus>");
}

TEST_F(ExportedInputs, CompareTheirNumberWithTheSatelliteStateAsIntegers) {
    insertTunedInput("0");
    insertStateOf("0", "1", "2", "'1st'");
    exportConfiguration();
    EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality("Good") + "</inputStatus>");
    updateConfig("EntradasGlobal", "fk_idEntrada = NULL");
    updateState("TempNIMGlobal", "fk_idEntrada = 0");
    exportConfiguration();
    EXPECT_EQ(leaf("inputStatus"), "<inputStatus>" + quality("Good") + "</inputStatus>");
}

TEST_F(ExportedInputs, ShowTheTerrestrialAndCableStateOfTheWholeModule) {
    for (const char* type : {"1", "2"}) {
        SCOPED_TRACE(type);
        removeInputs();
        insertInput(type, 11, 1);
        insertTuner(type);
        insertInput(type, 12, 2);
        insertConfig(kTunerTable.at(type), "fk_idEntradasGlobal", "12");
        insertStateOf(type, "1", "2", "1");
        insertStateOf(type, "0", "0", "2");
        insertStateOf(type, "1", "0", "1", "M2");
        exportConfiguration();
        const std::string both =
            "<inputStatus>" + quality("Good") + quality("Unlocked") + "</inputStatus>";
        EXPECT_EQ(element("modules/module/inputs/input[1]/inputStatus"), both);
        EXPECT_EQ(element("modules/module/inputs/input[2]/inputStatus"), both);
    }
}

TEST_F(ExportedInputs, AreAnEmptySectionWhenTheirSelectFails) {
    insertTunedInput("0");
    device.failStatements("SELECT * FROM EntradasGlobal", 3, SQLITE_BUSY);
    EXPECT_EQ(exportedInputs(), "<inputs/>");
    EXPECT_TRUE(command().errors().empty());
}

TEST_F(ExportedInputs, EndAfterTheirIdentityWhenTheSelectOfTheTunersFails) {
    for (const std::string& type : kTypes) {
        SCOPED_TRACE(type);
        removeInputs();
        insertTunedInput(type);
        device.failStatements("SELECT * FROM " + kTunerTable.at(type) + " ", 3, SQLITE_BUSY);
        EXPECT_EQ(exportedNames(), "inputId active type onid tsid");
        EXPECT_TRUE(command().errors().empty());
    }
}

TEST_F(ExportedInputs, HaveAnEmptyStatusWithoutAStateTable) {
    for (const std::string& type : kTypes) {
        SCOPED_TRACE(type);
        removeInputs();
        device.execute(tarvodb::kStateDatabase, "DROP TABLE " + kStateTable.at(type));
        insertTunedInput(type);
        exportConfiguration();
        EXPECT_EQ(leaf("inputStatus"), "<inputStatus/>");
        EXPECT_TRUE(command().errors().empty());
    }
}

}  // namespace tarvo_remote_control
