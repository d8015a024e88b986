#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/module_import.h"

namespace {

using test::child;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kFirst = "02:00:00:00:00:11";
constexpr const char* kSecond = "02:00:00:00:00:22";
constexpr const char* kThird = "02:00:00:00:00:33";
constexpr const char* kUnknown = "02:FF:FF:FF:FF:FF";

// What a module element says of its module; null leaves the child out.
struct Kind {
    const char* family = "36";
    const char* model = "2";
    const char* master = "1";
};

// An element that gives the module that takes it the name `name`.
std::string named(const char* mac, const char* name, const Kind& kind = {}) {
    return "<module>" + child("mac", mac) + child("family", kind.family) +
           child("model", kind.model) + child("isMaster", kind.master) + child("name", name) +
           "</module>";
}

class ImportedModules : public test::ModuleImportTest {
  protected:
    ImportedModules() { becomeModel("QRA-310"); }

    // The name of a module's row.
    std::string nameOf(const char* mac) {
        const auto rows =
            stored("SELECT LabelName FROM RedesModulos WHERE MAC = '" + std::string(mac) + "'");
        return rows.empty() ? "no such module" : rows.front().front().value_or("NULL");
    }
};

// --- Which element is which module -----------------------------------------------------------

TEST_F(ImportedModules, AModuleIsFoundByItsMacWhateverTheOrder) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(named(kSecond, "b") + named(kFirst, "a"));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
    EXPECT_EQ(nameOf(kSecond), "b");
}

TEST_F(ImportedModules, AnUnknownMacTakesTheFreeModuleOfItsKindWithTheLowestMac) {
    addModule(1, kThird);
    addModule(2, kFirst, 36, 9);
    addModule(3, kSecond);
    importModules(named(kUnknown, "unknown") + named(kFirst, "other kind", {.model = "9"}) +
                  named("02:FF:FF:FF:FF:FE", "another"));
    expectSuccess();
    EXPECT_EQ(nameOf(kSecond), "unknown");
    EXPECT_EQ(nameOf(kThird), "another");
    EXPECT_EQ(nameOf(kFirst), "other kind");
}

TEST_F(ImportedModules, AModuleThatALaterElementNamesIsNotFreeForAnUnknownMac) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(named(kUnknown, "unknown") + named(kFirst, "named"));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "named");
    EXPECT_EQ(nameOf(kSecond), "unknown");
}

TEST_F(ImportedModules, AMacInOtherLetterCaseIsUnknown) {
    addModule(1, "02:00:00:00:00:AA");
    addModule(2, "02:00:00:00:00:BB");
    importModules(named("02:00:00:00:00:bb", "b") + named(kUnknown, "unknown"));
    expectSuccess();
    EXPECT_EQ(nameOf("02:00:00:00:00:AA"), "b");
}

TEST_F(ImportedModules, FamilyModelAndMasterFlagAreTheKind) {
    const Kind others[] = {{.family = "35"},    {.model = "3"},     {.master = "0"},
                           {.family = nullptr}, {.model = nullptr}, {.master = nullptr},
                           {.family = "036"},   {.model = " 2"},    {.master = ""}};
    addModule(1, kFirst);
    for (const Kind& other : others) {
        SCOPED_TRACE(named(kUnknown, "x", other));
        importModules(named(kUnknown, "x", other));
        expectFailure(501, "");
    }
}

TEST_F(ImportedModules, AMasterAndAnotherModuleAreToldApart) {
    addModule(1, kFirst, 36, 2, 0);
    addModule(2, kSecond, 36, 2, 1);
    importModules(named(kUnknown, "master") + named("02:FF:FF:FF:FF:FE", "other", {.master = "0"}));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "other");
    EXPECT_EQ(nameOf(kSecond), "master");
}

TEST_F(ImportedModules, WithoutAFreeModuleOfTheKindNothingIsImported) {
    addModule(1, kFirst);
    addModule(2, kSecond, 36, 3);
    importModules(named(kFirst, "a") + named(kUnknown, "b"));
    expectFailure(501, "");
    EXPECT_THAT(partStatements(), IsEmpty());
    EXPECT_THAT(changeLines(), IsEmpty());
    EXPECT_EQ(nameOf(kFirst), "old");
}

TEST_F(ImportedModules, AKnownMacWithAnotherFamilyOrModelIsRefusedWithItsMac) {
    addModule(1, kFirst);
    for (const Kind& other : {Kind{.family = "37"}, Kind{.family = "036"}, Kind{.model = "3"},
                              Kind{.model = ""}, Kind{.family = nullptr}}) {
        SCOPED_TRACE(named(kFirst, "x", other));
        importModules(named(kFirst, "x", other));
        expectFailure(502, kFirst);
    }
}

TEST_F(ImportedModules, AKnownMacIsTakenWhateverTheMasterFlag) {
    addModule(1, kFirst);
    importModules(named(kFirst, "a", {.master = "0"}));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModules, AWrongKindIsToldBeforeTheAmountAndBeforeLaterElements) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(named(kFirst, "a", {.model = "3"}) + "<modul/>");
    expectFailure(502, kFirst);
}

TEST_F(ImportedModules, AMacThatStandsTwiceTakesAnotherModuleOfItsKindTheSecondTime) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(named(kSecond, "one") + named(kSecond, "two"));
    expectSuccess();
    EXPECT_EQ(nameOf(kSecond), "one");
    EXPECT_EQ(nameOf(kFirst), "two");
}

TEST_F(ImportedModules, AMacThatStandsTwiceWithoutAnotherModuleOfItsKindIsRefused) {
    addModule(1, kFirst);
    addModule(2, kSecond, 36, 3);
    importModules(named(kFirst, "one") + named(kFirst, "two"));
    expectFailure(501, "");
}

// --- How many modules ------------------------------------------------------------------------

TEST_F(ImportedModules, ADocumentWithFewerModulesThanTheHeadendIsRefused) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(named(kFirst, "a"));
    expectFailure(503, "");
    EXPECT_EQ(nameOf(kFirst), "old");
}

TEST_F(ImportedModules, ADocumentWithMoreModulesThanTheHeadendIsRefused) {
    addModule(1, kFirst);
    importModules(named(kFirst, "a") + named(kUnknown, "b"));
    expectFailure(503, "");
}

TEST_F(ImportedModules, AnEmptySectionIsRefusedForItsAmount) {
    addModule(1, kFirst);
    importModules("");
    expectFailure(503, "");
}

TEST_F(ImportedModules, AWrongAmountIsExplainedInTheDebugLog) {
    platform::debugMask = 0x10;
    addModule(1, kFirst);
    addModule(2, kSecond);
    addModule(3, kThird);
    importModules(named(kFirst, "a") + named(kUnknown, "b"));
    expectFailure(503, "");
    EXPECT_THAT(device.logLines(),
                Contains(StartsWith("3: Error 503, Invalid amount of modules, "
                                    "headendAssignedModules: 3\nxmlAssignedModules: 2\n"
                                    "notAssignedModules: 1")));
}

TEST_F(ImportedModules, AModuleWithoutAMacElementIsNotCounted) {
    addModule(1, kFirst);
    importModules(named(nullptr, "a"));
    expectFailure(503, "");
}

TEST_F(ImportedModules, AnEmptyMacElementCountsAndIsAssignedByKind) {
    addModule(1, kFirst);
    importModules(named("", "a"));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModules, EveryMacElementThatIsReadCounts) {
    addModule(1, kFirst);
    importModules("<module><mac>" + std::string(kUnknown) + "</mac><mac>" + kFirst +
                  "</mac><family>36</family><model>2</model><isMaster>1</isMaster></module>");
    expectFailure(503, "");
}

TEST_F(ImportedModules, TheLastMacElementThatIsReadTellsTheModule) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules("<module><mac>" + std::string(kFirst) + "</mac><mac>" + kSecond +
                  "</mac><family>36</family><model>2</model><isMaster>1</isMaster>"
                  "<name>a</name></module>");
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "old");
    EXPECT_EQ(nameOf(kSecond), "a");
}

TEST_F(ImportedModules, ReadingStopsWhenAllFourAreThere) {
    addModule(1, kFirst);
    importModule("<mac>" + std::string(kUnknown) + "</mac><family>1</family><name>a</name>");
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModules, ReadingGoesOnOverEmptyElements) {
    addModule(1, kFirst);
    importModules("<module><mac>" + std::string(kFirst) +
                  "</mac><family/><model>2</model><isMaster>1</isMaster><family>36</family>"
                  "<name>a</name></module>");
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModules, NamesAreComparedWithoutLetterCase) {
    addModule(1, kFirst);
    importConfiguration("<MODULES><Module><MAC>" + std::string(kFirst) +
                        "</MAC><FAMILY>36</FAMILY><Model>2</Model><ISMASTER>1</ISMASTER>"
                        "<NAME>a</NAME><Attenuation>7</Attenuation></Module></MODULES>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT LabelName, Atenuacion, estado FROM RedesModulos"),
                ElementsAre(ElementsAre("a", "7", "1")));
}

TEST_F(ImportedModules, AMacMayHoldAQuote) {
    addModule(1, "a''b");
    importModules(named("a'b", "new"));
    expectSuccess();
    EXPECT_EQ(nameOf("a''b"), "new");
}

// --- Model RNB-K408 --------------------------------------------------------------------------

class ImportedModulesOfRnb : public ImportedModules {
  protected:
    ImportedModulesOfRnb() { becomeModel("RNB-K408"); }

    // As this model exports it: without family and model.
    static std::string element(const char* mac, const char* name) {
        return named(mac, name, {.family = nullptr, .model = nullptr});
    }
};

TEST_F(ImportedModulesOfRnb, AModuleIsFoundByItsMacAlone) {
    addModule(1, kFirst);
    addModule(2, kSecond, 35, 7, 0);
    importModules(element(kSecond, "b") + element(kFirst, "a"));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
    EXPECT_EQ(nameOf(kSecond), "b");
}

TEST_F(ImportedModulesOfRnb, ReadingStopsAfterTheMac) {
    addModule(1, kFirst);
    importModules(named(kFirst, "a", {.family = "1", .model = "1"}));
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModulesOfRnb, TheFirstMacElementTellsTheModule) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules("<module><mac>" + std::string(kFirst) + "</mac><mac>" + kSecond +
                  "</mac><name>a</name></module>");
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
    EXPECT_EQ(nameOf(kSecond), "old");
}

TEST_F(ImportedModulesOfRnb, AnUnknownMacTakesTheLowestFreeModuleOfAnyKind) {
    addModule(1, kThird, 1, 1, 1);
    addModule(2, kSecond, 2, 2, 0);
    addModule(3, kFirst, 3, 3, 0);
    importModules(element(kUnknown, "unknown") + element(kFirst, "first"));
    expectSuccess();
    EXPECT_EQ(nameOf(kSecond), "unknown");
    EXPECT_EQ(nameOf(kFirst), "first");
    EXPECT_EQ(nameOf(kThird), "old");
}

TEST_F(ImportedModulesOfRnb, ADocumentMayHaveFewerModulesThanTheHeadend) {
    addModule(1, kFirst);
    addModule(2, kSecond);
    importModules(element(kSecond, "b"));
    expectSuccess();
    EXPECT_EQ(nameOf(kSecond), "b");
    importModules("");
    expectSuccess();
}

TEST_F(ImportedModulesOfRnb, AModuleTooManyIsNotFound) {
    addModule(1, kFirst);
    importModules(element(kFirst, "a") + element(kUnknown, "b"));
    expectFailure(501, "");
}

// Only the headend's side is taken as empty: what an element tells before its MAC is compared.
TEST_F(ImportedModulesOfRnb, AFamilyBeforeTheMacIsAnotherKind) {
    addModule(1, kFirst);
    importModules("<module><family>36</family><mac>" + std::string(kFirst) + "</mac></module>");
    expectFailure(502, kFirst);
}

// --- Bad sections ----------------------------------------------------------------------------

TEST_F(ImportedModules, AHeadendWithoutModulesIsRefused) {
    importModules(named(kFirst, "a"));
    expectFailure(102, "No modules found");
}

TEST_F(ImportedModules, AMissingTableCountsAsNoModules) {
    rows("DROP TABLE RedesModulos");
    importModules(named(kFirst, "a"));
    expectFailure(102, "No modules found");
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "2", "3"));
}

TEST_F(ImportedModules, AnotherElementIsRecordedWithoutAMessageAndLoggedWithOne) {
    platform::debugMask = 0x10;
    addModule(1, kFirst);
    for (const std::string& other : {named(kFirst, "a") + "<modul/>", named(kFirst, "a") + "text",
                                     std::string("<modules/>")}) {
        SCOPED_TRACE(other);
        importModules(other);
        EXPECT_THAT(errors(),
                    ElementsAre("101 Invalid command", "202 Could not set configuration"));
        EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Error 101, No module element found",
                                              "59: r9::: Error 202, Could not set configuration"));
        EXPECT_THAT(device.logLines(), Contains("3: Error 101, No module element found"));
        EXPECT_THAT(writes(), IsEmpty());
    }
}

TEST_F(ImportedModules, ACommentBetweenElementsIsNotAnElement) {
    addModule(1, kFirst);
    importModules("<!-- one -->\n  " + named(kFirst, "a") + "\n<!-- two -->");
    expectSuccess();
    EXPECT_EQ(nameOf(kFirst), "a");
}

TEST_F(ImportedModules, AModuleThatIsGoneMeanwhileIsNotLocated) {
    addModule(1, kFirst);
    device.failStatements("SELECT * FROM RedesModulos  WHERE MAC LIKE", 3, 5, "locked");
    importModules(named(kFirst, "a"));
    expectFailure(102, "Could not locate module");
    EXPECT_THAT(changeLines(), IsEmpty());
}

// --- A module's own settings -----------------------------------------------------------------

class ImportedModule : public ImportedModules {
  protected:
    ImportedModule() { addModule(1, kMac); }
};

struct Setting {
    const char* element;
    const char* text;
    const char* assignment;
    const char* log;
};

TEST_F(ImportedModule, EachSettingIsStoredAndTold) {
    const Setting settings[] = {
        {"attenuation", "7", "Atenuacion = '7'", "attenuation: 7"},
        {"attenuation", "-3dB", "Atenuacion = '-3'", "attenuation: -3"},
        {"attenuation", "none", "Atenuacion = '0'", "attenuation: 0"},
        {"name", "Sports", "LabelName = 'Sports'", " name: Sports"},
        {"name", "", "LabelName = ''", " name: "},
        {"name", "OLD", "LabelName = 'OLD'", " name: OLD"},
        {"dvbNetworkId", "12", "RED = '12'", " dvbNetworkId: 12"},
        {"modoSalidaRF", "1", "ModoSalidaRF = '1'", " modoSalidaRF: 1"},
    };
    for (const Setting& setting : settings) {
        SCOPED_TRACE(setting.log);
        rows(
            "UPDATE RedesModulos SET LabelName = 'old', RED = 1, Atenuacion = 5, "
            "ModoSalidaRF = 0, estado = 0");
        importModule(child(setting.element, setting.text));
        expectSuccess();
        EXPECT_THAT(writes(),
                    ElementsAre("UPDATE RedesModulos SET  " + std::string(setting.assignment) +
                                " , estado = '1'  WHERE idRedMod = '1'"));
        EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New Module parameters: " +
                                               std::string(setting.log)));
    }
}

TEST_F(ImportedModule, SettingsThatAreStoredAlreadyAreToldButNotWritten) {
    importModule(
        "<attenuation>05</attenuation><name>old</name><dvbNetworkId>1</dvbNetworkId>"
        "<modoSalidaRF>x</modoSalidaRF>");
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(),
                ElementsAre("61: REMOTE_CONTROL::: New Module parameters: attenuation: 5 name: old "
                            "dvbNetworkId: 1 modoSalidaRF: 0"));
}

TEST_F(ImportedModule, OtherChildrenAndTextsAreIgnored) {
    importModule("<id>x</id>text<serialNumber>9</serialNumber><hwVersion/><!-- c -->");
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New Module parameters: "));
}

TEST_F(ImportedModule, NullColumnsReadAsZeroAndAsTheEmptyText) {
    rows("UPDATE RedesModulos SET LabelName = NULL, RED = NULL, Atenuacion = NULL");
    importModule("<attenuation>0</attenuation><name/><dvbNetworkId/>");
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
    importModule("<dvbNetworkId>3</dvbNetworkId>");
    EXPECT_THAT(stored("SELECT LabelName, RED, Atenuacion FROM RedesModulos"),
                ElementsAre(ElementsAre(std::nullopt, "3", std::nullopt)));
}

TEST_F(ImportedModule, ANameMayHoldAnyCharacter) {
    importModule("<name>Bob&apos;s &quot;A&amp;B&quot; &lt;\xC3\xA9&gt;</name>");
    expectSuccess();
    EXPECT_EQ(nameOf(kMac), "Bob's \"A&B\" <\xC3\xA9>");
    importModule("<name>50% of 100%</name>");
    expectSuccess();
    EXPECT_EQ(nameOf(kMac), "50  of 100%");
}

TEST_F(ImportedModule, AStatusThatIsSetAlreadyIsNotWrittenAgain) {
    rows("UPDATE RedesModulos SET estado = 1");
    importModule("<attenuation>7</attenuation>");
    EXPECT_THAT(writes(),
                ElementsAre("UPDATE RedesModulos SET  Atenuacion = '7'  WHERE idRedMod = '1'"));
}

TEST_F(ImportedModule, AFailedUpdateIsReported) {
    device.failStatements("UPDATE RedesModulos", 3, 5, "locked");
    importModule("<attenuation>7</attenuation>");
    expectFailure(102, "Could not save 'module'");
    EXPECT_THAT(changeLines(),
                ElementsAre("61: REMOTE_CONTROL::: New Module parameters: attenuation: 7"));
}

TEST_F(ImportedModule, ChangesAreInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importModule("<attenuation>7</attenuation>");
    EXPECT_THAT(device.logLines(),
                testing::UnorderedElementsAre("5: New Module parameters: attenuation: 7",
                                              "61: REMOTE_CONTROL::: New Module parameters: "
                                              "attenuation: 7"));
}

TEST_F(ImportedModule, AFailingPartEndsTheModuleButItsChangesSoFarAreTold) {
    for (const char* part : {"inputs", "outputs"}) {
        SCOPED_TRACE(part);
        importModule("<attenuation>7</attenuation>" + child(part, "") + "<name>new</name>");
        expectFailure(102, "No module " + std::string(part) + " found");
        EXPECT_THAT(changeLines(),
                    ElementsAre("61: REMOTE_CONTROL::: New Module parameters: attenuation: 7"));
        EXPECT_THAT(writes(), IsEmpty());
    }
}

TEST_F(ImportedModule, FailingServicesEndTheModuleToo) {
    importModule("<services><servic/></services><attenuation>7</attenuation>");
    expectFailure(101, "No service element found");
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New Module parameters: "));
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedModule, TheFirstFailingModuleEndsTheSection) {
    addModule(2, kSecond);
    importModules(moduleElement("<inputs/>") + named(kSecond, "b"));
    expectFailure(102, "No module inputs found");
    EXPECT_EQ(nameOf(kSecond), "old");
    EXPECT_EQ(changeLines().size(), 1U);
}

TEST_F(ImportedModule, AModuleWrittenBeforeAFailingOneIsRolledBack) {
    addModule(2, kSecond);
    importModules(named(kSecond, "b") + moduleElement("<inputs/>"));
    expectFailure(102, "No module inputs found");
    EXPECT_THAT(writes(), ElementsAre(StartsWith("UPDATE RedesModulos SET  LabelName = 'b' ")));
    EXPECT_EQ(nameOf(kSecond), "old");
}

// --- The RF output mode ----------------------------------------------------------------------

class ImportedRfOutputMode : public ImportedModule {
  protected:
    ImportedRfOutputMode() {
        rows(
            "INSERT INTO SalidasLogicasGlobal (idSalidasLogicasGlobal, MAC, fk_idSalidasLogicas) "
            "VALUES (1, '02:00:00:00:00:11', 1)");
        rows(
            "INSERT INTO RFOutGlobal (idRFOutGlobal, fk_idSalidasLogicasGlobal, Constelacion) "
            "VALUES (11, 1, 9)");
    }

    static std::string outputs(const char* constellation) {
        return "<outputs><output><outputId>1</outputId>" + child("constellation", constellation) +
               "</output></outputs>";
    }
};

TEST_F(ImportedRfOutputMode, OutputsTakeTheModeThatCameBeforeThem) {
    importModule("<modoSalidaRF>1</modoSalidaRF>" + outputs("256 QAM"));
    expectSuccess();
    importModule("<modoSalidaRF>1</modoSalidaRF>" + outputs("QPSK"));
    expectFailure(402, "Invalid value for module/output/constellation DVBC");
}

TEST_F(ImportedRfOutputMode, AModeAfterTheOutputsComesTooLate) {
    importModule(outputs("QPSK") + "<modoSalidaRF>1</modoSalidaRF>");
    expectSuccess();
    importModule(outputs("256 QAM") + "<modoSalidaRF>1</modoSalidaRF>");
    expectFailure(402, "Invalid value for module/output/constellation DVBT");
}

TEST_F(ImportedRfOutputMode, TheStoredModeDoesNotCount) {
    rows("UPDATE RedesModulos SET ModoSalidaRF = 1");
    importModule(outputs("QPSK"));
    expectSuccess();
}

TEST_F(ImportedRfOutputMode, AModeThatIsNotANumberIsDvbT) {
    importModule("<modoSalidaRF>DVB-C</modoSalidaRF>" + outputs("QPSK"));
    expectSuccess();
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedModule, PartsAndModulesAreWrittenInTheOrderOfTheDocument) {
    addModule(2, kSecond);
    for (const char* mac : {kFirst, kSecond}) {
        rows("INSERT INTO EntradasGlobal (MAC) VALUES ('" + std::string(mac) + "')");
        rows("INSERT INTO SalidasLogicasGlobal (MAC) VALUES ('" + std::string(mac) + "')");
    }
    importModules(
        "<module><mac>02:00:00:00:00:22</mac><family>36</family><model>2</model>"
        "<isMaster>1</isMaster><services/><attenuation>9</attenuation></module>" +
        moduleElement("<outputs/><name>new</name><inputs/><dvbNetworkId>2"
                      "</dvbNetworkId>"));
    expectSuccess();
    EXPECT_THAT(
        device.statements(),
        ElementsAre("BEGIN TRANSACTION", "SELECT * FROM RedesModulos ",
                    "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:22' ",
                    "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE '02:00:00:00:00:22' ",
                    "UPDATE RedesModulos SET  Atenuacion = '9' , estado = '1'  WHERE idRedMod = "
                    "'2'",
                    "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:11' ",
                    "SELECT * FROM SalidasLogicasGlobal  WHERE MAC LIKE '02:00:00:00:00:11' ",
                    "SELECT * FROM EntradasGlobal  WHERE MAC LIKE '02:00:00:00:00:11' ",
                    "UPDATE RedesModulos SET  LabelName = 'new' , RED = '2' , estado = '1'  WHERE "
                    "idRedMod = '1'",
                    "COMMIT"));
    EXPECT_EQ(out(),
              "Processing: modules\nProcessing: Services\nProcessing: Outputs\n"
              "Processing: Inputs\n");
    EXPECT_THAT(device.logLines(),
                ElementsAre("61: REMOTE_CONTROL::: New Module parameters: attenuation: 9",
                            "61: REMOTE_CONTROL::: New Module parameters:  name: new "
                            "dvbNetworkId: 2"));
}

}  // namespace
