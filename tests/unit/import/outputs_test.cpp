#include <gmock/gmock.h>

#include <algorithm>
#include <cctype>

#include "platform/debug_log.h"
#include "support/module_import.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

// A module with two outputs, whose modulators hold codes that no text stands for.
class ImportedOutputs : public test::ModuleImportTest {
  protected:
    ImportedOutputs() {
        becomeModel("QRA-310");
        addModule(1, kMac);
        for (const char* output : {"1", "2"}) {
            const std::string id = output;
            rows("INSERT INTO SalidasLogicasGlobal VALUES (" + id + ", '" + kMac +
                 "', 101, 102, 0, 1, " + id + ", 0, 0)");
            rows("INSERT INTO RFOutGlobal VALUES (1" + id + ", '" + kMac +
                 "', 474000, 6900, 9, 9, 9, 9, 9, 9, 0, " + id + ", 1, 0)");
        }
    }

    static std::string output(int outputId, const std::string& children) {
        return "<output><outputId>" + std::to_string(outputId) + "</outputId>" + children +
               "</output>";
    }

    // `rfOutputMode` 0 is DVB-T, 1 DVB-C.
    void importOutputs(const std::string& outputs, int rfOutputMode = 0) {
        importModule("<modoSalidaRF>" + std::to_string(rfOutputMode) + "</modoSalidaRF><outputs>" +
                     outputs + "</outputs>");
    }

    void expectRefused(const std::string& outputs, int code, const std::string& message,
                       int loggedCode = 0) {
        SCOPED_TRACE(outputs);
        importOutputs(outputs);
        expectFailure(code, message, loggedCode);
        EXPECT_THAT(writes(), IsEmpty());
    }

    static std::string outputLine(const std::string& changes) {
        return "61: REMOTE_CONTROL::: New OUTPUT parameters: " + changes;
    }

    static std::string selectOutputs() {
        return "SELECT * FROM SalidasLogicasGlobal  WHERE MAC LIKE '02:00:00:00:00:11' ";
    }

    static std::string selectRf(int output) {
        return "SELECT * FROM RFOutGlobal  WHERE fk_idSalidasLogicasGlobal LIKE '" +
               std::to_string(output) + "' ";
    }
};

std::string inCase(int (*toCase)(int), std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [toCase](unsigned char character) {
        return static_cast<char>(toCase(character));
    });
    return text;
}

// --- Coded texts -----------------------------------------------------------------------------

struct CodedText {
    int rfOutputMode;
    const char* element;
    const char* text;
    const char* column;
    int code;
    const char* label = nullptr;  // " <element>: " otherwise
};

constexpr CodedText kCodedTexts[] = {
    {0, "modeOFDM", "2K", "Modo_OFDM", 0},
    {0, "modeOFDM", "8K", "Modo_OFDM", 1},
    {0, "bandwidth", "8 MHz", "Ancho_Banda", 0},
    {0, "bandwidth", "7 MHz", "Ancho_Banda", 1},
    {0, "bandwidth", "6 MHz", "Ancho_Banda", 2},
    {0, "guardInterval", "1/32", "Intervalo_Guarda", 0},
    {0, "guardInterval", "1/16", "Intervalo_Guarda", 1},
    {0, "guardInterval", "1/8", "Intervalo_Guarda", 2},
    {0, "guardInterval", "1/4", "Intervalo_Guarda", 3},
    {0, "constellation", "QPSK", "Constelacion", 0},
    {0, "constellation", "16 QAM", "Constelacion", 1},
    {0, "constellation", "64 QAM", "Constelacion", 2},
    {1, "constellation", "16 QAM", "Constelacion", 0},
    {1, "constellation", "32 QAM", "Constelacion", 1},
    {1, "constellation", "64 QAM", "Constelacion", 2},
    {1, "constellation", "128 QAM", "Constelacion", 3},
    {2, "constellation", "256 QAM", "Constelacion", 4},
    {0, "codeRate", "1/2", "Code_Rate", 0},
    {0, "codeRate", "2/3", "Code_Rate", 1},
    {0, "codeRate", "3/4", "Code_Rate", 2},
    {0, "codeRate", "5/6", "Code_Rate", 3},
    {0, "codeRate", "7/8", "Code_Rate", 4},
    {0, "formatIQ", "Normal", "Espectro_Salida", 0, "formatIQ: "},
    {0, "formatIQ", "Reversed", "Espectro_Salida", 1, "formatIQ: "},
};

class ImportedOutputCode : public ImportedOutputs, public testing::WithParamInterface<CodedText> {};

TEST_P(ImportedOutputCode, IsReadFromItsTextInAnyLetterCase) {
    const CodedText& coded = GetParam();
    const std::string text = coded.text;
    for (const std::string& given :
         {text, inCase(std::toupper, text), inCase(std::tolower, text)}) {
        SCOPED_TRACE(given);
        rows("UPDATE RFOutGlobal SET " + std::string(coded.column) + " = 9, Estado = 0");
        importOutputs(
            output(1, "<" + std::string(coded.element) + ">" + given + "</" + coded.element + ">"),
            coded.rfOutputMode);
        expectSuccess();
        EXPECT_THAT(writes(), Contains("UPDATE RFOutGlobal SET  " + std::string(coded.column) +
                                       " = '" + std::to_string(coded.code) +
                                       "' , Estado = '1'  WHERE idRFOutGlobal = '11'"));
        const std::string label =
            coded.label != nullptr ? coded.label : " " + std::string(coded.element) + ": ";
        EXPECT_THAT(changeLines(), Contains(outputLine(label + given)));
    }
}

INSTANTIATE_TEST_SUITE_P(Texts, ImportedOutputCode, testing::ValuesIn(kCodedTexts));

struct WrongText {
    int rfOutputMode;
    const char* element;
    const char* text;
    const char* messageEnd = "";
};

TEST_F(ImportedOutputs, AMisspeltTextIsRefusedAndNothingOfTheElementIsWritten) {
    const WrongText wrongTexts[] = {
        {0, "active", "2"},
        {0, "active", "-1"},
        {0, "active", "3"},
        {0, "modeOFDM", "4K"},
        {0, "modeOFDM", ""},
        {0, "modeOFDM", "1"},
        {0, "bandwidth", "8MHz"},
        {0, "bandwidth", "5 MHz"},
        {0, "guardInterval", "1/64"},
        {0, "constellation", "QPSK ", " DVBT"},
        {0, "constellation", "32 QAM", " DVBT"},
        {0, "constellation", "256 QAM", " DVBT"},
        {1, "constellation", "QPSK", " DVBC"},
        {1, "constellation", "512 QAM", " DVBC"},
        {5, "constellation", "", " DVBC"},
        {0, "codeRate", "1/3"},
        {0, "codeRate", "3/ 4"},
        {0, "formatIQ", "Inverted"},
    };
    for (const auto& [rfOutputMode, element, text, messageEnd] : wrongTexts) {
        const std::string name = element;
        SCOPED_TRACE(name + " " + text);
        importOutputs(output(2, "<onid>5</onid><frequency>1</frequency><" + name + ">" + text +
                                    "</" + name + "><tsid>6</tsid>"),
                      rfOutputMode);
        expectFailure(402, "Invalid value for module/output/" + name + messageEnd);
        EXPECT_THAT(writes(), IsEmpty());
        EXPECT_THAT(changeLines(),
                    ElementsAre("61: REMOTE_CONTROL::: New Module parameters:  modoSalidaRF: " +
                                std::to_string(rfOutputMode)));
    }
}

TEST_F(ImportedOutputs, QpskIsRejectedOnACableModule) {
    importOutputs(output(1, "<constellation>QPSK</constellation>"), 1);
    expectFailure(402, "Invalid value for module/output/constellation DVBC");
}

TEST_F(ImportedOutputs, TheFirstWrongValueEndsTheElement) {
    expectRefused(output(1, "<codeRate>x</codeRate><formatIQ>x</formatIQ>"), 402,
                  "Invalid value for module/output/codeRate");
}

TEST_F(ImportedOutputs, AWrongValueIsInTheDebugLogToo) {
    platform::debugMask = 0x10;
    expectRefused(output(1, "<formatIQ>x</formatIQ>"), 402,
                  "Invalid value for module/output/formatIQ");
    EXPECT_THAT(device.logLines(), Contains("3: Error 402, Invalid value for module/output/"
                                            "formatIQ"));
}

TEST_F(ImportedOutputs, AFailingElementRollsBackTheOneBeforeIt) {
    importOutputs(output(1, "<onid>5</onid>") + output(2, "<formatIQ>x</formatIQ>"));
    expectFailure(402, "Invalid value for module/output/formatIQ");
    EXPECT_THAT(stored("SELECT DISTINCT ONID_Out FROM SalidasLogicasGlobal"),
                ElementsAre(ElementsAre("102")));
}

TEST_F(ImportedOutputs, ACodeThatIsStoredAlreadyIsNotWritten) {
    rows("UPDATE RFOutGlobal SET Modo_OFDM = '01', Espectro_Salida = NULL");
    importOutputs(output(1, "<modeOFDM>8K</modeOFDM><formatIQ>Normal</formatIQ>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(), Contains(outputLine(" modeOFDM: 8KformatIQ: Normal")));
}

// --- Texts and switches ----------------------------------------------------------------------

TEST_F(ImportedOutputs, IdentifiersAndFrequenciesAreComparedAsTexts) {
    const std::pair<const char*, const char*> cases[] = {
        {"<onid>0102</onid>",
         "SalidasLogicasGlobal SET  ONID_Out = '0102' , Estado = '1'  WHERE "
         "idSalidasLogicasGlobal = '1'"},
        {"<tsid>x</tsid>",
         "SalidasLogicasGlobal SET  TSID_Out = 'x' , Estado = '1'  WHERE "
         "idSalidasLogicasGlobal = '1'"},
        {"<frequency>0474000</frequency>",
         "RFOutGlobal SET  Frecuencia = '0474000' , Estado = "
         "'1'  WHERE idRFOutGlobal = '11'"},
        {"<symbolRate/>",
         "RFOutGlobal SET  Symbol_Rate = '' , Estado = '1'  WHERE idRFOutGlobal "
         "= '11'"},
        {"<SymbolRATE>6875</SymbolRATE>",
         "RFOutGlobal SET  Symbol_Rate = '6875' , Estado = '1'  "
         "WHERE idRFOutGlobal = '11'"},
    };
    for (const auto& [child, update] : cases) {
        SCOPED_TRACE(child);
        rows("UPDATE SalidasLogicasGlobal SET TSID_Out = 101, ONID_Out = 102, Estado = 0");
        rows("UPDATE RFOutGlobal SET Frecuencia = 474000, Symbol_Rate = 6900, Estado = 0");
        importOutputs(output(1, child));
        expectSuccess();
        EXPECT_THAT(writes(), ElementsAre("UPDATE " + std::string(update)));
    }
}

TEST_F(ImportedOutputs, UnchangedOutputsAreToldButNotWritten) {
    importOutputs(output(1,
                         "<onid>102</onid><tsid>101</tsid><frequency>474000</frequency>"
                         "<symbolRate>6900</symbolRate><active>0</active>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(),
                Contains(outputLine(" onid: 102 tsid: 101 frequency: 474000 symbolRate: 6900 "
                                    "active: 0")));
}

TEST_F(ImportedOutputs, OtherChildrenAndTextsAreIgnored) {
    importOutputs(output(1, "text<power>9</power><!-- c -->"));
    expectSuccess();
    EXPECT_THAT(changeLines(), Contains(outputLine("")));
}

struct Switch {
    const char* stored;
    const char* given;
    // The columns that are written, or nothing.
    const char* assignments;
};

TEST_F(ImportedOutputs, AnOutputThatIsOnHoldsMode3) {
    const Switch switches[] = {
        {"0", "1", "Modo_Salida_Modulacion = '3' , Estado = '1' "},
        {"3", "0", "Modo_Salida_Modulacion = '0' , Estado = '1' "},
        {"NULL", "1", "Modo_Salida_Modulacion = '3' , Estado = '1' "},
        {"1", "0", "Modo_Salida_Modulacion = '0' , Estado = '1' "},
        // The stored 3 never equals 1: the row counts as changed, its mode stays.
        {"3", "1", "Estado = '1' "},
        {"3", "01", "Estado = '1' "},
        {"1", "1", nullptr},
        {"0", "0", nullptr},
        {"0", "off", nullptr},
        {"NULL", "0", nullptr},
    };
    for (const auto& [storedMode, given, assignments] : switches) {
        SCOPED_TRACE(std::string(storedMode) + " -> " + given);
        rows("UPDATE RFOutGlobal SET Modo_Salida_Modulacion = " + std::string(storedMode) +
             ", Estado = 0");
        importOutputs(output(1, "<active>" + std::string(given) + "</active>"));
        expectSuccess();
        std::vector<std::string> expected;
        if (assignments != nullptr) {
            expected.push_back("UPDATE RFOutGlobal SET  " + std::string(assignments) +
                               " WHERE idRFOutGlobal = '11'");
        }
        EXPECT_EQ(writes(), expected);
        EXPECT_THAT(changeLines(), Contains(outputLine(" active: " + std::string(given))));
    }
}

TEST_F(ImportedOutputs, AnOutputThatStaysOnWithItsStatusSetWritesNothing) {
    rows("UPDATE RFOutGlobal SET Modo_Salida_Modulacion = 3, Estado = 1");
    importOutputs(output(1, "<active>1</active>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedOutputs, ChangesAreInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importOutputs(output(1, "<onid>5</onid>"));
    EXPECT_THAT(device.logLines(), Contains("5: New OUTPUT parameters:  onid: 5"));
    EXPECT_THAT(device.logLines(), Contains(outputLine(" onid: 5")));
}

// --- Which output ----------------------------------------------------------------------------

TEST_F(ImportedOutputs, AModuleWithoutOutputRowsIsRefused) {
    rows("DELETE FROM SalidasLogicasGlobal");
    expectRefused(output(1, ""), 102, "No module outputs found");
    expectRefused("", 102, "No module outputs found");
}

TEST_F(ImportedOutputs, AnEmptySectionChangesNothing) {
    importOutputs("");
    expectSuccess();
    EXPECT_THAT(partStatements(), ElementsAre(selectOutputs()));
}

TEST_F(ImportedOutputs, AnotherElementIsRefusedWithAMessage) {
    expectRefused("<outpt/>", 101, "No output element found");
    expectRefused("text", 101, "No output element found");
}

TEST_F(ImportedOutputs, TheNumberOfAnOutputIsRequired) {
    expectRefused("<output/>", 402, "Output has no outputId field");
    expectRefused("<output><inputId>1</inputId></output>", 402, "Output has no outputId field");
}

TEST_F(ImportedOutputs, TheNumberOfAnOutputIs1Or2) {
    for (const char* number : {"0", "3", "-1", "x", ""}) {
        expectRefused("<output><outputId>" + std::string(number) + "</outputId></output>", 402,
                      "Output outputId should be 1 or 2");
    }
}

TEST_F(ImportedOutputs, TheFirstOfSeveralNumbersCounts) {
    importOutputs("<OUTPUT><onid>5</onid><OutputID>2</OutputID><outputId>1</outputId></OUTPUT>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT idSalidasLogicasGlobal FROM SalidasLogicasGlobal WHERE ONID_Out = "
                       "5"),
                ElementsAre(ElementsAre("2")));
}

TEST_F(ImportedOutputs, AnOutputThatTheModuleDoesNotHaveIsRecordedAndLoggedUnderTwoCodes) {
    platform::debugMask = 0x10;
    rows("DELETE FROM SalidasLogicasGlobal WHERE fk_idSalidasLogicas = 2");
    expectRefused(output(2, ""), 402, "Output could not be found", 101);
    EXPECT_THAT(device.logLines(), Contains("3: Error 101, Output could not be found"));
    EXPECT_THAT(device.logLines(), Not(Contains("3: Error 402, Output could not be found")));
}

TEST_F(ImportedOutputs, AnOutputWithoutAModulatorIsNotFoundEither) {
    rows("DELETE FROM RFOutGlobal WHERE fk_idSalidasLogicasGlobal = 1");
    expectRefused(output(1, "<onid>5</onid>"), 402, "Output could not be found", 101);
}

TEST_F(ImportedOutputs, TheFirstOfSeveralRowsIsTaken) {
    rows(
        "INSERT INTO SalidasLogicasGlobal (idSalidasLogicasGlobal, MAC, fk_idSalidasLogicas) "
        "VALUES (5, '02:00:00:00:00:11', 1)");
    rows("INSERT INTO RFOutGlobal (idRFOutGlobal, fk_idSalidasLogicasGlobal) VALUES (15, 1)");
    importOutputs(output(1, "<onid>5</onid><frequency>6</frequency>"));
    EXPECT_THAT(stored("SELECT idSalidasLogicasGlobal FROM SalidasLogicasGlobal WHERE ONID_Out = "
                       "5"),
                ElementsAre(ElementsAre("1")));
    EXPECT_THAT(stored("SELECT idRFOutGlobal FROM RFOutGlobal WHERE Frecuencia = 6"),
                ElementsAre(ElementsAre("11")));
}

TEST_F(ImportedOutputs, MissingTablesCountAsEmpty) {
    rows("DROP TABLE RFOutGlobal");
    expectRefused(output(1, ""), 402, "Output could not be found", 101);
    rows("DROP TABLE SalidasLogicasGlobal");
    expectRefused(output(1, ""), 102, "No module outputs found");
}

// --- The second output of two models ---------------------------------------------------------

struct SecondOutput {
    const char* storedActive;
    const char* children;
    const char* activeAfter;
};

constexpr SecondOutput kSecondOutputs[] = {
    {"1", "<modeOFDM>8K</modeOFDM><active>0</active>", "0"},
    {"1", "<active>0</active><modeOFDM>8k</modeOFDM>", "0"},
    {"1", "<modeOFDM>8K</modeOFDM>", "0"},
    {"0", "<modeOFDM>8K</modeOFDM><active>1</active>", "1"},
    {"0", "<modeOFDM>2K</modeOFDM><active>0</active>", "1"},
    {"0", "<modeOFDM>2K</modeOFDM><active>1</active>", "1"},
    {"0", "<active>0</active>", "1"},
    {"0", "", "1"},
    {"0", "<modeOFDM>8K</modeOFDM><modeOFDM>2K</modeOFDM>", "1"},
};

TEST_F(ImportedOutputs, TheSecondOutputOfTwoModelsIsOffOnlyAs8KThatIsNotActive) {
    for (const char* model : {"LMV-502", "LMV-512"}) {
        becomeModel(model);
        for (const auto& [storedActive, children, activeAfter] : kSecondOutputs) {
            SCOPED_TRACE(std::string(model) + " " + children);
            rows("UPDATE SalidasLogicasGlobal SET Activo = " + std::string(storedActive) +
                 ", Estado = 0");
            importOutputs(output(2, children));
            expectSuccess();
            EXPECT_THAT(writes(), Contains("UPDATE SalidasLogicasGlobal SET  Activo = '" +
                                           std::string(activeAfter) +
                                           "' , Estado = '1'  WHERE idSalidasLogicasGlobal = "
                                           "'2'"));
        }
    }
}

TEST_F(ImportedOutputs, ASecondOutputThatIsAsItShouldBeIsNotWritten) {
    becomeModel("LMV-512");
    importOutputs(output(2, "<active>0</active>"));
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedOutputs, TheFirstOutputAndOtherModelsHaveNoSuchRule) {
    rows("UPDATE RFOutGlobal SET Modo_OFDM = 1");
    importOutputs(output(2, "<modeOFDM>8K</modeOFDM><active>0</active>"));
    EXPECT_THAT(writes(), IsEmpty());
    becomeModel("LMV-502");
    importOutputs(output(1, "<modeOFDM>8K</modeOFDM><active>0</active>"));
    EXPECT_THAT(writes(), IsEmpty());
}

// --- Updates that fail -----------------------------------------------------------------------

TEST_F(ImportedOutputs, AFailedUpdateOfTheOutputStillWritesItsModulator) {
    device.failStatements("UPDATE SalidasLogicasGlobal", 3, 5, "locked");
    importOutputs(output(1, "<onid>5</onid><frequency>6</frequency>") +
                  output(2, "<onid>7</onid>"));
    expectFailure(102, "Could not update sg");
    EXPECT_EQ(test::last(writes()),
              "UPDATE RFOutGlobal SET  Frecuencia = '6' , Estado = '1'  WHERE idRFOutGlobal = "
              "'11'");
    EXPECT_THAT(stored("SELECT DISTINCT Frecuencia FROM RFOutGlobal"),
                ElementsAre(ElementsAre("474000")));
}

TEST_F(ImportedOutputs, AFailedUpdateOfTheModulatorIsReported) {
    device.failStatements("UPDATE RFOutGlobal", 3, 5, "locked");
    importOutputs(output(1, "<onid>5</onid><frequency>6</frequency>"));
    expectFailure(102, "Could not update rfog");
    EXPECT_THAT(changeLines(), Contains(outputLine(" onid: 5 frequency: 6")));
}

TEST_F(ImportedOutputs, BothFailedUpdatesAreReported) {
    device.failStatements("UPDATE SalidasLogicasGlobal", 3, 5, "locked");
    device.failStatements("UPDATE RFOutGlobal", 3, 5, "locked");
    importOutputs(output(1, "<onid>5</onid><frequency>6</frequency>"));
    expectFailures({{102, "Could not update sg"}, {102, "Could not update rfog"}});
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedOutputs, StatementsComeInTheirOrder) {
    becomeModel("LMV-502");
    importModule("<outputs>" +
                 output(2,
                        "<active>0</active><modeOFDM>8K</modeOFDM><tsid>7</tsid>"
                        "<frequency>506000</frequency>") +
                 output(1,
                        "<formatIQ>reversed</formatIQ><active>1</active><onid>8</onid>"
                        "<bandwidth>7 MHz</bandwidth><guardInterval>1/4</guardInterval>"
                        "<constellation>64 QAM</constellation><codeRate>7/8</codeRate>"
                        "<symbolRate>0</symbolRate>") +
                 "</outputs>");
    expectSuccess();
    EXPECT_THAT(
        device.statements(),
        ElementsAre(
            "BEGIN TRANSACTION", "SELECT * FROM RedesModulos ",
            "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:11' ", selectOutputs(),
            selectRf(2),
            "UPDATE SalidasLogicasGlobal SET  TSID_Out = '7' , Activo = '0' , Estado = '1'  WHERE "
            "idSalidasLogicasGlobal = '2'",
            "UPDATE RFOutGlobal SET  Frecuencia = '506000' , Modo_OFDM = '1' , Estado = '1'  WHERE "
            "idRFOutGlobal = '12'",
            selectRf(1),
            "UPDATE SalidasLogicasGlobal SET  ONID_Out = '8' , Estado = '1'  WHERE "
            "idSalidasLogicasGlobal = '1'",
            "UPDATE RFOutGlobal SET  Symbol_Rate = '0' , Ancho_Banda = '1' , Intervalo_Guarda = "
            "'3' , Constelacion = '2' , Code_Rate = '4' , Espectro_Salida = '1' , "
            "Modo_Salida_Modulacion = '3' , Estado = '1'  WHERE idRFOutGlobal = '11'",
            "COMMIT"));
    EXPECT_THAT(device.logLines(),
                ElementsAre(outputLine(" active: 0 modeOFDM: 8K tsid: 7 frequency: 506000"),
                            outputLine("formatIQ: reversed active: 1 onid: 8 bandwidth: 7 MHz "
                                       "guardInterval: 1/4 constellation: 64 QAM codeRate: 7/8 "
                                       "symbolRate: 0"),
                            "61: REMOTE_CONTROL::: New Module parameters: "));
    EXPECT_EQ(out(), "Processing: modules\nProcessing: Outputs\n");
}

}  // namespace
