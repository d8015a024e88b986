#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/input_rows.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Not;

// The satellite children here meet no oscillator setting, so that no frequency is computed.
class ImportedInputs : public test::InputImportTest {
  protected:
    // Expects that the import of these inputs fails and stores nothing.
    void expectRefused(const std::string& inputs, int code, const std::string& message,
                       int loggedCode = 0) {
        SCOPED_TRACE(inputs);
        importInputs(inputs);
        expectFailure(code, message, loggedCode);
        EXPECT_THAT(writes(), IsEmpty());
    }
};

constexpr int kSatellite = 0;
constexpr int kTerrestrial = 1;
constexpr int kCable = 2;

// --- The children of an input, by its type ---------------------------------------------------

struct ChildCase {
    int type;
    const char* child;
    // The update of input 1's tuner, or nothing.
    const char* update;
    // What is told after the type.
    const char* log;
};

constexpr ChildCase kChildCases[] = {
    // A satellite input.
    {0, "<frequency>11500</frequency>", "NimGlobal SET  fe = '11500'", " frequency: 11500"},
    {0, "<frequency>011000</frequency>", "NimGlobal SET  fe = '011000'", " frequency: 011000"},
    {0, "<frequency>11000</frequency>", nullptr, " frequency: 11000"},
    {0, "<diseqc>3</diseqc>", "NimGlobal SET  DiSEqC = '3'", ""},
    {0, "<diseqc>03</diseqc>", "NimGlobal SET  DiSEqC = '03'", ""},
    {0, "<diseqc>0</diseqc>", nullptr, ""},
    {0, "<band>high</band>", "NimGlobal SET  banda_FI = '1'", " band: high"},
    {0, "<band>HIGH</band>", "NimGlobal SET  banda_FI = '1'", " band: HIGH"},
    {0, "<band>Low</band>", nullptr, " band: Low"},
    {0, "<rfLoop>1</rfLoop>", nullptr, " rfLoop: 1"},
    {0, "<PLSmode>auto</PLSmode>", nullptr, " PLSmode: auto"},
    {0, "<PLSmode>root</PLSmode>", "NimGlobal SET  ModoPLS = '1'", " PLSmode: root"},
    {0, "<PLSmode>gold</PLSmode>", "NimGlobal SET  ModoPLS = '2'", " PLSmode: gold"},
    {0, "<scramblingID>0012</scramblingID>", "NimGlobal SET  ScramblingID = '0012'",
     " scramblingID: 0012"},
    {0, "<scramblingID>00</scramblingID>", nullptr, " scramblingID: 00"},
    {0, "<scramblingID>none</scramblingID>", nullptr, " scramblingID: none"},
    {0, "<streamID>auto</streamID>", "NimGlobal SET  StreamID = '-2'", " streamID: auto"},
    {0, "<streamID>07</streamID>", "NimGlobal SET  StreamID = '7'", " streamID: 07"},
    {0, "<streamID>AUTO</streamID>", nullptr, " streamID: AUTO"},
    {0, "<bandwidth>5 MHz</bandwidth>", nullptr, " bandwidth: 5 MHz"},
    {0, "<hierarchy>none</hierarchy>", nullptr, " hierarchy: none"},
    {0, "<PLPID>5</PLPID>", nullptr, " PLPID: 5"},
    {0, "<autoScan>1</autoScan>", nullptr, " autoScan: 1"},
    {0, "<onidScan>1</onidScan>", nullptr, " onidScan: 1"},
    {0, "<tsidScan>1</tsidScan>", nullptr, " tsidScan: 1"},
    {0, "<symbolRate>1</symbolRate>", nullptr, " symbolRate: 1"},
    {0, "<constelacion>1</constelacion>", nullptr, " constelacion: 1"},
    // A terrestrial input.
    {1, "<frequency>506000</frequency>", "NimCOFDMGlobal SET  Frequency = '506000'",
     " frequency: 506000"},
    {1, "<frequency>0474000</frequency>", "NimCOFDMGlobal SET  Frequency = '0474000'",
     " frequency: 0474000"},
    {1, "<frequency>474000</frequency>", nullptr, " frequency: 474000"},
    {1, "<bandwidth>6 MHz</bandwidth>", "NimCOFDMGlobal SET  Bandwidth = '0'", " bandwidth: 6 MHz"},
    {1, "<bandwidth>7 MHz</bandwidth>", "NimCOFDMGlobal SET  Bandwidth = '1'", " bandwidth: 7 MHz"},
    {1, "<bandwidth>8 MHz</bandwidth>", "NimCOFDMGlobal SET  Bandwidth = '2'", " bandwidth: 8 MHz"},
    {1, "<hierarchy>High Priority</hierarchy>", "NimCOFDMGlobal SET  Hierarchy = '0'",
     " hierarchy: High Priority"},
    {1, "<hierarchy>Low Priority</hierarchy>", "NimCOFDMGlobal SET  Hierarchy = '1'",
     " hierarchy: Low Priority"},
    {1, "<PLPID>auto</PLPID>", "NimCOFDMGlobal SET  PLP_ID = '-2'", " PLPID: auto"},
    {1, "<PLPID>07</PLPID>", "NimCOFDMGlobal SET  PLP_ID = '7'", " PLPID: 07"},
    {1, "<PLPID>Auto</PLPID>", nullptr, " PLPID: Auto"},
    {1, "<autoScan>1</autoScan>", "NimCOFDMGlobal SET  trackingStatusEn = '1'", " autoScan: 1"},
    {1, "<autoScan>00</autoScan>", "NimCOFDMGlobal SET  trackingStatusEn = '00'", " autoScan: 00"},
    {1, "<onidScan>8916</onidScan>", "NimCOFDMGlobal SET  ONID_Tracking = '8916'",
     " onidScan: 8916"},
    {1, "<tsidScan>1011</tsidScan>", "NimCOFDMGlobal SET  TSID_Tracking = '1011'",
     " tsidScan: 1011"},
    {1, "<tsidScan>0</tsidScan>", nullptr, " tsidScan: 0"},
    {1, "<diseqc>3</diseqc>", nullptr, ""},
    {1, "<band>middle</band>", nullptr, " band: middle"},
    {1, "<PLSmode>none</PLSmode>", nullptr, " PLSmode: none"},
    {1, "<scramblingID>5</scramblingID>", nullptr, " scramblingID: 5"},
    {1, "<streamID>5</streamID>", nullptr, " streamID: 5"},
    {1, "<symbolRate>1</symbolRate>", nullptr, " symbolRate: 1"},
    {1, "<constelacion>1</constelacion>", nullptr, " constelacion: 1"},
    // A cable input.
    {2, "<frequency>314000</frequency>", "NimQAMGlobal SET  Frequency = '314000'",
     " frequency: 314000"},
    {2, "<frequency>0306000</frequency>", "NimQAMGlobal SET  Frequency = '0306000'",
     " frequency: 0306000"},
    {2, "<symbolRate>06900</symbolRate>", "NimQAMGlobal SET  SymbolRate = '06900'",
     " symbolRate: 06900"},
    {2, "<symbolRate>06875</symbolRate>", nullptr, " symbolRate: 06875"},
    {2, "<constelacion>04</constelacion>", "NimQAMGlobal SET  Constelacion = '04'",
     " constelacion: 04"},
    {2, "<constelacion>02</constelacion>", nullptr, " constelacion: 02"},
    {2, "<constelacion>QAM</constelacion>", "NimQAMGlobal SET  Constelacion = 'QAM'",
     " constelacion: QAM"},
    {2, "<diseqc>3</diseqc>", nullptr, ""},
    {2, "<band>middle</band>", nullptr, " band: middle"},
    {2, "<PLSmode>none</PLSmode>", nullptr, " PLSmode: none"},
    {2, "<bandwidth>5 MHz</bandwidth>", nullptr, " bandwidth: 5 MHz"},
    {2, "<hierarchy>none</hierarchy>", nullptr, " hierarchy: none"},
    {2, "<PLPID>5</PLPID>", nullptr, " PLPID: 5"},
    {2, "<tsidScan>1</tsidScan>", nullptr, " tsidScan: 1"},
    // Names without regard to letter case, and what is not a setting.
    {0, "<DISEQC>3</DISEQC>", "NimGlobal SET  DiSEqC = '3'", ""},
    {0, "<plsMODE>root</plsMODE>", "NimGlobal SET  ModoPLS = '1'", " PLSmode: root"},
    {2, "<SYMBOLRATE>6900</SYMBOLRATE>", "NimQAMGlobal SET  SymbolRate = '6900'",
     " symbolRate: 6900"},
    {0, "<quality>Good</quality>text<!-- comment -->", nullptr, ""},
};

class ImportedInputChild : public ImportedInputs, public testing::WithParamInterface<ChildCase> {};

TEST_P(ImportedInputChild, IsStoredOnItsTypeOfInputAndTold) {
    const ChildCase& given = GetParam();
    storeType(given.type);
    importInputs(input(1, given.type, given.child));
    expectSuccess();
    std::vector<std::string> expected;
    if (given.update != nullptr) {
        expected.push_back(
            "UPDATE " + std::string(given.update) + " , Estado = '1'  WHERE id" +
            std::string(given.update).substr(0, std::string(given.update).find(' ')) + " = '" +
            std::to_string(given.type + 1) + "1'");
    }
    EXPECT_EQ(writes(), expected);
    EXPECT_THAT(changeLines(),
                Contains(inputLine(" type: " + std::to_string(given.type) + given.log)));
}

INSTANTIATE_TEST_SUITE_P(Children, ImportedInputChild, testing::ValuesIn(kChildCases));

TEST_F(ImportedInputs, AnAutomaticPlsModeReplacesAnother) {
    rows("UPDATE NimGlobal SET ModoPLS = 1");
    importInputs(input(1, kSatellite, "<PLSmode>auto</PLSmode>"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre("UPDATE NimGlobal SET  ModoPLS = '0' , Estado = '1'  WHERE "
                                      "idNimGlobal = '11'"));
}

TEST_F(ImportedInputs, AStreamThatIsNotANumberIsZero) {
    rows("UPDATE NimGlobal SET StreamID = 4");
    importInputs(input(1, kSatellite, "<streamID>Auto</streamID>"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre("UPDATE NimGlobal SET  StreamID = '0' , Estado = '1'  WHERE "
                                      "idNimGlobal = '11'"));
}

TEST_F(ImportedInputs, TransportStreamAndTypeAreComparedAsNumbers) {
    importInputs(input(1, 0, "<tsid>01</tsid><onid>2x</onid>"));
    EXPECT_THAT(writes(), IsEmpty());
    importInputs(input(1, 0, "<tsid>0017</tsid><onid>none</onid>"));
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  TSID = '17' , ONID = '0' , Estado = '1'  "
                            "WHERE idEntradasGlobal = '1'"));
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 0 tsid: 0017 onid: none")));
}

TEST_F(ImportedInputs, AnInputTakesItsNewTypeAndThatTypesChildren) {
    importInputs(input(2, kCable, "<frequency>314000</frequency><band>high</band>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  tipoEntrada = '2' , Estado = '1'  WHERE "
                            "idEntradasGlobal = '2'",
                            "UPDATE NimQAMGlobal SET  Frequency = '314000' , Estado = '1'  WHERE "
                            "idNimQAMGlobal = '32'"));
}

TEST_F(ImportedInputs, ChildrenBeforeTheTypeAreOfTheNewTypeToo) {
    importInputs("<input><frequency>314000</frequency><inputId>1</inputId><type>2</type></input>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT Frequency FROM NimQAMGlobal WHERE idNimQAMGlobal = 31"),
                ElementsAre(ElementsAre("314000")));
    EXPECT_THAT(changeLines(), Contains(inputLine(" frequency: 314000 type: 2")));
}

TEST_F(ImportedInputs, ProgressIsPrinted) {
    importInputs(input(1, 0, "<onid>6</onid><tsid>005</tsid>"));
    EXPECT_EQ(out(),
              "Processing: modules\nProcessing: Inputs\nInput: Type = 0\nInput: ONID = 6\n"
              "Input: TSID = 005\n");
}

TEST_F(ImportedInputs, ChangesAreInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importInputs(input(1, 0, "<tsid>5</tsid>"));
    EXPECT_THAT(device.logLines(), Contains("5: New INPUT parameters:  type: 0 tsid: 5"));
    EXPECT_THAT(device.logLines(), Contains(inputLine(" type: 0 tsid: 5")));
}

TEST_F(ImportedInputs, NullColumnsReadAsZero) {
    rows("UPDATE EntradasGlobal SET tipoEntrada = NULL, TSID = NULL, Activo = NULL");
    rows("UPDATE NimGlobal SET STANDBY = NULL, StreamID = NULL, DiSEqC = NULL, fe = NULL");
    importInputs(input(1, 0,
                       "<tsid>0</tsid><active>0</active><streamID>0</streamID><diseqc/>"
                       "<frequency/>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedInputs, AStatusThatIsSetAlreadyIsNotWrittenAgain) {
    rows("UPDATE EntradasGlobal SET Estado = 1");
    importInputs(input(1, 0, "<tsid>5</tsid>"));
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  TSID = '5'  WHERE idEntradasGlobal = "
                            "'1'"));
}

TEST_F(ImportedInputs, TheModulesInputsAreFoundWithoutLetterCase) {
    rows("UPDATE RedesModulos SET MAC = '02:00:00:00:00:AB'");
    rows("UPDATE EntradasGlobal SET MAC = '02:00:00:00:00:ab'");
    importModules(
        "<module><mac>02:00:00:00:00:AB</mac><family>36</family><model>2</model>"
        "<isMaster>1</isMaster><inputs>" +
        input(1, 0, "<tsid>5</tsid>") + "</inputs></module>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT TSID FROM EntradasGlobal"),
                ElementsAre(ElementsAre("5"), ElementsAre("1")));
}

TEST_F(ImportedInputs, OtherModulesInputsAreLeftAlone) {
    rows("INSERT INTO EntradasGlobal VALUES (0, '02:00:00:00:00:99', 0, 1, 2, 1, NULL, 1, 0)");
    importInputs(input(1, 0, "<tsid>5</tsid>"));
    EXPECT_THAT(stored("SELECT TSID FROM EntradasGlobal"),
                ElementsAre(ElementsAre("1"), ElementsAre("5"), ElementsAre("1")));
}

TEST_F(ImportedInputs, MissingTablesCountAsEmpty) {
    rows("DROP TABLE NimQAMGlobal");
    rows("DROP TABLE DiSEqCGlobal");
    rows("DROP TABLE configuracionWebGlobal");
    importInputs(input(2, 0, "<diseqc>3</diseqc>"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre("UPDATE NimGlobal SET  DiSEqC = '3' , Estado = '1'  WHERE "
                                      "idNimGlobal = '12'"));
    rows("DROP TABLE EntradasGlobal");
    importInputs(input(2, 0, "<diseqc>4</diseqc>"));
    expectFailure(102, "No module inputs found");
}

// --- Which input -----------------------------------------------------------------------------

TEST_F(ImportedInputs, AModuleWithoutInputRowsIsRefused) {
    rows("DELETE FROM EntradasGlobal");
    expectRefused(input(1, 0, ""), 102, "No module inputs found");
    expectRefused("", 102, "No module inputs found");
}

TEST_F(ImportedInputs, AnEmptySectionChangesNothing) {
    importInputs("");
    expectSuccess();
    EXPECT_THAT(partStatements(), ElementsAre(selectInputs()));
}

TEST_F(ImportedInputs, AnotherElementIsRefused) {
    expectRefused("<inpt/>", 101, "No input element found");
    expectRefused("text", 101, "No input element found");
}

TEST_F(ImportedInputs, TheNumberOfAnInputIsRequired) {
    expectRefused("<input><type>0</type></input>", 401, "Input has no inputId field");
    expectRefused("<input/>", 401, "Input has no inputId field");
}

TEST_F(ImportedInputs, TheNumberOfAnInputIs1Or2) {
    for (const char* number : {"0", "3", "-1", "x", ""}) {
        expectRefused("<input><inputId>" + std::string(number) + "</inputId><type>0</type></input>",
                      401, "Input inputId should be 1 or 2");
    }
}

TEST_F(ImportedInputs, TheTypeOfAnInputIsRequired) {
    expectRefused("<input><inputId>1</inputId></input>", 401, "Input has no type field");
}

TEST_F(ImportedInputs, TheTypeOfAnInputIs0To2) {
    expectRefused(input(1, 3, ""), 401, "Input type should be 0, 1 or 2");
    expectRefused(input(1, -1, ""), 401, "Input type should be 0, 1 or 2");
}

TEST_F(ImportedInputs, AWrongTypeHasADebugLineOfItsOwn) {
    platform::debugMask = 0x10;
    expectRefused(input(1, 3, ""), 401, "Input type should be 0, 1 or 2");
    EXPECT_THAT(device.logLines(), Contains("3: Error 401, Input Input type should be 0, 1 or 2"));
    EXPECT_THAT(device.logLines(), Not(Contains("3: Error 401, Input type should be 0, 1 or 2")));
}

TEST_F(ImportedInputs, AWrongNumberIsInTheDebugLogAsItIsLogged) {
    platform::debugMask = 0x10;
    expectRefused(input(3, 0, ""), 401, "Input inputId should be 1 or 2");
    EXPECT_THAT(device.logLines(), Contains("3: Error 401, Input inputId should be 1 or 2"));
}

TEST_F(ImportedInputs, ATypeThatIsNotANumberIsSatellite) {
    importInputs("<input><inputId>1</inputId><type>cable</type><diseqc>3</diseqc></input>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT DiSEqC FROM NimGlobal WHERE idNimGlobal = 11"),
                ElementsAre(ElementsAre("3")));
}

TEST_F(ImportedInputs, TheFirstOfSeveralNumbersAndTypesCounts) {
    importInputs(
        "<input><inputId>1</inputId><inputId>2</inputId><type>0</type>"
        "<diseqc>3</diseqc><tsid>5</tsid></input>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT idEntradasGlobal FROM EntradasGlobal WHERE TSID = 5"),
                ElementsAre(ElementsAre("1")));
    EXPECT_THAT(stored("SELECT idNimGlobal FROM NimGlobal WHERE DiSEqC = 3"),
                ElementsAre(ElementsAre("11")));
}

TEST_F(ImportedInputs, AnInputThatTheModuleDoesNotHaveIsNotFound) {
    rows("DELETE FROM EntradasGlobal WHERE fk_idEntrada = 2");
    expectRefused(input(2, 0, ""), 401, "Input could not be found");
}

TEST_F(ImportedInputs, AnInputNeedsATunerOfItsNewType) {
    const char* const tables[] = {"NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal"};
    for (const int type : {kSatellite, kTerrestrial, kCable}) {
        rows("DELETE FROM " + std::string(tables[type]) + " WHERE fk_idEntradasGlobal = 1");
        expectRefused(input(1, type, "<tsid>5</tsid>"), 401, "Input could not be found");
    }
}

TEST_F(ImportedInputs, AnInputNeedsNoTunerOfTheOtherTypes) {
    rows("DELETE FROM NimCOFDMGlobal");
    rows("DELETE FROM NimQAMGlobal");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    expectSuccess();
    EXPECT_EQ(writes().size(), 1U);
}

TEST_F(ImportedInputs, TheFirstOfSeveralTunersIsTaken) {
    rows("INSERT INTO NimGlobal (idNimGlobal, fk_idEntradasGlobal, DiSEqC) VALUES (40, 1, 0)");
    importInputs(input(1, 0, "<diseqc>3</diseqc>"));
    EXPECT_THAT(stored("SELECT idNimGlobal FROM NimGlobal WHERE DiSEqC = 3"),
                ElementsAre(ElementsAre("11")));
}

TEST_F(ImportedInputs, AnInputThatStandsTwiceIsWrittenTwice) {
    importInputs(input(1, 0, "<tsid>5</tsid>") + input(1, 0, "<tsid>6</tsid>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  TSID = '5' , Estado = '1'  WHERE "
                            "idEntradasGlobal = '1'",
                            "UPDATE EntradasGlobal SET  TSID = '6'  WHERE idEntradasGlobal = "
                            "'1'"));
}

TEST_F(ImportedInputs, ANonElementAfterAnInputRollsThatInputBack) {
    importInputs(input(1, 0, "<tsid>5</tsid>") + "<other/>");
    expectFailure(101, "No input element found");
    EXPECT_THAT(stored("SELECT TSID FROM EntradasGlobal WHERE idEntradasGlobal = 1"),
                ElementsAre(ElementsAre("1")));
}

// --- Values that are refused -----------------------------------------------------------------

struct WrongValue {
    int inputId;
    int type;
    const char* element;
    const char* text;
    int code;
};

TEST_F(ImportedInputs, AWrongValueIsRefused) {
    const WrongValue wrongValues[] = {
        {1, 0, "active", "2", 401},        {1, 1, "active", "-1", 401},
        {1, 0, "band", "middle", 401},     {1, 0, "band", "", 401},
        {2, 0, "rfLoop", "2", 401},        {2, 1, "rfLoop", "-1", 401},
        {1, 1, "hierarchy", "none", 401},  {1, 1, "hierarchy", "low priority", 401},
        {1, 1, "bandwidth", "5 MHz", 402}, {1, 1, "bandwidth", "8 mhz", 402},
        {1, 1, "bandwidth", "8MHz", 402},  {1, 0, "PLSmode", "Gold", 402},
        {1, 0, "PLSmode", "silver", 402},  {1, 0, "PLSmode", "", 402},
    };
    for (const WrongValue& wrong : wrongValues) {
        const std::string element = wrong.element;
        expectRefused(input(wrong.inputId, wrong.type,
                            "<tsid>5</tsid><" + element + ">" + wrong.text + "</" + element +
                                "><onid>6</onid>"),
                      wrong.code, "Invalid value for module/input/" + element, 401);
        EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New Module parameters: "));
        EXPECT_EQ(out().find("ONID"), std::string::npos);
    }
}

TEST_F(ImportedInputs, AWrongBandwidthIsAnInputsErrorInTheDebugLogToo) {
    platform::debugMask = 0x10;
    storeType(kTerrestrial);
    expectRefused(input(1, kTerrestrial, "<bandwidth>5 MHz</bandwidth>"), 402,
                  "Invalid value for module/input/bandwidth", 401);
    EXPECT_THAT(device.logLines(),
                Contains("3: Error 401, Invalid value for module/input/bandwidth"));
}

TEST_F(ImportedInputs, AWrongPlsModeIsAnInputsErrorInTheDebugLogToo) {
    platform::debugMask = 0x10;
    expectRefused(input(1, kSatellite, "<PLSmode>x</PLSmode>"), 402,
                  "Invalid value for module/input/PLSmode", 401);
    EXPECT_THAT(device.logLines(),
                Contains("3: Error 401, Invalid value for module/input/PLSmode"));
}

// --- The loop --------------------------------------------------------------------------------

TEST_F(ImportedInputs, Input2CanBeFedThroughTheLoop) {
    importInputs(input(2, 0, "<rfLoop>1</rfLoop>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT RFIN_LOOP, Estado FROM NimGlobal WHERE idNimGlobal = 12"),
                ElementsAre(ElementsAre("1", "1")));
    importInputs(input(2, 0, "<rfLoop>00</rfLoop>"));
    EXPECT_THAT(stored("SELECT RFIN_LOOP FROM NimGlobal WHERE idNimGlobal = 12"),
                ElementsAre(ElementsAre("0")));
}

TEST_F(ImportedInputs, Input1IsNeverFedThroughTheLoop) {
    rows("UPDATE NimGlobal SET RFIN_LOOP = 1 WHERE idNimGlobal = 11");
    importInputs(input(1, 0, "<rfLoop>7</rfLoop>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT RFIN_LOOP FROM NimGlobal WHERE idNimGlobal = 11"),
                ElementsAre(ElementsAre("0")));
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 0 rfLoop: 7")));
}

TEST_F(ImportedInputs, TheLoopIsStoredOnEveryTypeOfInputWithASatelliteTuner) {
    storeType(kTerrestrial);
    importInputs(input(2, kTerrestrial, "<rfLoop>1</rfLoop>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT RFIN_LOOP FROM NimGlobal WHERE idNimGlobal = 12"),
                ElementsAre(ElementsAre("1")));
}

TEST_F(ImportedInputs, WithoutASatelliteTunerTheLoopIsOnlyTold) {
    storeType(kTerrestrial);
    rows("DELETE FROM NimGlobal");
    importInputs(input(2, kTerrestrial, "<rfLoop>7</rfLoop>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 1 rfLoop: 7")));
}

// --- Stand-by --------------------------------------------------------------------------------

TEST_F(ImportedInputs, SwitchingAnInputOnEndsTheStandbyOfAllItsTuners) {
    rows("UPDATE EntradasGlobal SET Activo = 0");
    for (const char* table : {"NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal"}) {
        rows("UPDATE " + std::string(table) + " SET STANDBY = 1");
    }
    importInputs(input(2, 0, "<active>1</active>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  Activo = '1' , Estado = '1'  WHERE "
                            "idEntradasGlobal = '2'",
                            "UPDATE NimGlobal SET  STANDBY = '0' , Estado = '1'  WHERE "
                            "idNimGlobal = '12'",
                            "UPDATE NimCOFDMGlobal SET  STANDBY = '0' , Estado = '1'  WHERE "
                            "idNimCOFDMGlobal = '22'",
                            "UPDATE NimQAMGlobal SET  STANDBY = '0' , Estado = '1'  WHERE "
                            "idNimQAMGlobal = '32'"));
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 0STANDBY: 0")));
}

TEST_F(ImportedInputs, SwitchingAnInputOffPutsAllItsTunersOnStandby) {
    storeType(kCable);
    importInputs(input(2, kCable, "<active>00</active>"));
    expectSuccess();
    for (const char* table : {"NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal"}) {
        EXPECT_THAT(
            stored("SELECT fk_idEntradasGlobal, STANDBY, Estado FROM " + std::string(table)),
            ElementsAre(ElementsAre("1", "0", "0"), ElementsAre("2", "1", "1")));
    }
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 2STANDBY: 1")));
}

TEST_F(ImportedInputs, AnInputThatStaysOnLeavesTheStandbyAlone) {
    rows("UPDATE NimGlobal SET STANDBY = 1");
    importInputs(input(1, 0, "<active>1</active>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 0")));
}

TEST_F(ImportedInputs, ATunerThatStandsByAlreadyIsNotWritten) {
    rows("UPDATE NimGlobal SET STANDBY = 1");
    rows("UPDATE NimQAMGlobal SET STANDBY = 1");
    importInputs(input(2, 0, "<active>0</active>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE EntradasGlobal SET  Activo = '0' , Estado = '1'  WHERE "
                            "idEntradasGlobal = '2'",
                            "UPDATE NimCOFDMGlobal SET  STANDBY = '1' , Estado = '1'  WHERE "
                            "idNimCOFDMGlobal = '22'"));
}

TEST_F(ImportedInputs, MissingTunersAreSkippedWhenAnInputIsSwitched) {
    storeType(kTerrestrial);
    rows("DELETE FROM NimGlobal");
    rows("DELETE FROM NimQAMGlobal");
    importInputs(input(2, kTerrestrial, "<active>0</active>"));
    expectSuccess();
    EXPECT_EQ(writes().size(), 2U);
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 1STANDBY: 1")));
}

TEST_F(ImportedInputs, AnActiveThatIsNotANumberIsOff) {
    importInputs(input(2, 0, "<active>yes</active>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT Activo FROM EntradasGlobal WHERE idEntradasGlobal = 2"),
                ElementsAre(ElementsAre("0")));
}

// --- Updates that fail -----------------------------------------------------------------------

TEST_F(ImportedInputs, AFailedUpdateOfTheInputStillWritesItsTuners) {
    device.failStatements("UPDATE EntradasGlobal", 3, 5, "locked");
    importInputs(input(1, 0, "<tsid>5</tsid><diseqc>3</diseqc>") + input(2, 0, "<tsid>6</tsid>"));
    expectFailure(102, "Could not update eg");
    const std::string updateOfInput =
        "UPDATE EntradasGlobal SET  TSID = '5' , Estado = '1'  WHERE idEntradasGlobal = '1'";
    EXPECT_THAT(writes(), ElementsAre(updateOfInput, updateOfInput, updateOfInput,
                                      "UPDATE NimGlobal SET  DiSEqC = '3' , Estado = '1'  WHERE "
                                      "idNimGlobal = '11'"));
    EXPECT_THAT(changeLines(), Contains(inputLine(" type: 0 tsid: 5")));
    EXPECT_THAT(changeLines(), Not(Contains(inputLine(" type: 0 tsid: 6"))));
}

TEST_F(ImportedInputs, EveryFailedUpdateOfAnInputIsReported) {
    for (const char* table : {"NimGlobal", "NimCOFDMGlobal", "NimQAMGlobal"}) {
        device.failStatements("UPDATE " + std::string(table), 3, 5, "locked");
    }
    importInputs(input(2, 0, "<active>0</active>"));
    expectFailures({{102, "Could not update nim"},
                    {102, "Could not update nimCOFDM"},
                    {102, "Could not update nimQAM"}});
    EXPECT_THAT(stored("SELECT DISTINCT Activo FROM EntradasGlobal"),
                ElementsAre(ElementsAre("1")));
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedInputs, StatementsComeInTheirOrder) {
    importInputs(input(1, kCable, "<onid>9</onid><symbolRate>6900</symbolRate><active>0</active>") +
                 input(2, kTerrestrial, "<frequency>506000</frequency>"));
    expectSuccess();
    EXPECT_THAT(
        device.statements(),
        ElementsAre(
            "BEGIN TRANSACTION", "SELECT * FROM RedesModulos ",
            "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:11' ", selectInputs(),
            selectTuner("NimGlobal", 1), selectTuner("NimCOFDMGlobal", 1),
            selectTuner("NimQAMGlobal", 1),
            "UPDATE EntradasGlobal SET  tipoEntrada = '2' , ONID = '9' , Activo = '0' , Estado = "
            "'1'  WHERE idEntradasGlobal = '1'",
            "SELECT * FROM DiSEqCGlobal  WHERE Posicion LIKE '0'",
            "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'LNB_fb' ",
            "UPDATE NimGlobal SET  STANDBY = '1' , Estado = '1'  WHERE idNimGlobal = '11'",
            "UPDATE NimCOFDMGlobal SET  STANDBY = '1' , Estado = '1'  WHERE idNimCOFDMGlobal = "
            "'21'",
            "UPDATE NimQAMGlobal SET  SymbolRate = '6900' , STANDBY = '1' , Estado = '1'  WHERE "
            "idNimQAMGlobal = '31'",
            selectTuner("NimGlobal", 2), selectTuner("NimCOFDMGlobal", 2),
            selectTuner("NimQAMGlobal", 2),
            "UPDATE EntradasGlobal SET  tipoEntrada = '1' , Estado = '1'  WHERE idEntradasGlobal "
            "= '2'",
            "UPDATE NimCOFDMGlobal SET  Frequency = '506000' , Estado = '1'  WHERE "
            "idNimCOFDMGlobal = '22'",
            "COMMIT"));
    EXPECT_THAT(device.logLines(),
                ElementsAre(inputLine(" type: 2 onid: 9 symbolRate: 6900STANDBY: 1"),
                            inputLine(" type: 1 frequency: 506000"),
                            "61: REMOTE_CONTROL::: New Module parameters: "));
}

}  // namespace
