#include "import/cmd_set_configuration.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>

#include "platform/debug_log.h"
#include "support/scripted_command.h"
#include "support/section_import.h"

namespace {

using tarvo_remote_control::CmdSetConfiguration;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using testing::Not;

constexpr const char* kNetworkScript = "/tarvo/script/WAN_from_DB.sh";
constexpr const char* kKeyTool = "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";
constexpr const char* kOffsetsScript = "/tarvo/script/get_time_offsets.sh 0 \"Europe/Paris\"";
constexpr const char* kCronScript = "/etc/init.d/S60crond restart";

// A section that fails with 101.
constexpr const char* kBadSection = "<homeChannels><other/></homeChannels>";
constexpr const char* kNewIp = "<network><ip>10.0.0.2</ip></network>";
constexpr const char* kNewCountry = "<regional><country>FR</country></regional>";

std::string upperCased(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    return text;
}

class SetConfiguration : public test::SectionImportTest {
  protected:
    SetConfiguration() {
        setting("network_IP", "10.0.0.1");
        setting("network_Netmask", "255.0.0.0");
        setting("MaturityRating", "3");
        setting("codtimezone", "fra");
        setting("idtimezone", "ES");
        setting("subtimezone", "Europe/Paris");
        device.shellEffects[kOffsetsScript] = [this] {
            device.writeFile("/tmp/temp_tot_file_web", "offsets\n");
        };
    }
};

// --- The transaction -------------------------------------------------------------------------

TEST_F(SetConfiguration, AnEmptyConfigurationCommitsAnEmptyTransaction) {
    importSections("");
    expectSuccess();
    EXPECT_THAT(device.statements(), ElementsAre("BEGIN TRANSACTION", "COMMIT"));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    EXPECT_EQ(out(), "");
    expectUnchanged();
}

TEST_F(SetConfiguration, TheConfigurationDatabaseIsOpenedOnce) {
    importSections(kNewIp);
    EXPECT_THAT(device.eventsOf("open: "), ElementsAre("/tarvo/DB/config_global.sqlite"));
}

TEST_F(SetConfiguration, AnAbsentElementRecords101AndTouchesNothing) {
    CmdSetConfiguration command;
    device.forgetEvents();
    command.apply(nullptr);
    const test::Outcome outcome(command);
    EXPECT_THAT(outcome.errors, ElementsAre("101 Invalid command"));
    EXPECT_EQ(outcome.result, "1");
    EXPECT_THAT(device.events(), ElementsAre("log 59: r9::: Error 101, Invalid command"));
}

TEST_F(SetConfiguration, ADatabaseThatDoesNotOpenRecords102) {
    device.failOpens("/tarvo/DB/config_global.sqlite");
    importSections(kNewIp);
    expectErrors(
        {{"102 Could not access database: Could not open DB", "Error 102, Could not open DB"}});
    EXPECT_EQ(result(), "1");
    EXPECT_THAT(device.statements(), IsEmpty());
    EXPECT_EQ(out(), "");
}

TEST_F(SetConfiguration, ATransactionThatDoesNotStartRecords102AfterThreeTries) {
    device.failStatements("BEGIN TRANSACTION", 3, SQLITE_BUSY);
    importSections(kNewIp);
    expectErrors({{"102 Could not access database: Could not start transaction",
                   "Error 102, Could not start transaction"}});
    EXPECT_EQ(result(), "1");
    EXPECT_THAT(device.statements(),
                ElementsAre("BEGIN TRANSACTION", "BEGIN TRANSACTION", "BEGIN TRANSACTION"));
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "1", "1"));
    EXPECT_EQ(out(), "");
    expectUnchanged();
}

TEST_F(SetConfiguration, ATransactionThatStartsAtItsThirdTryGoesOn) {
    device.failStatements("BEGIN TRANSACTION", 2, SQLITE_BUSY);
    importSections("");
    expectSuccess();
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "1"));
}

TEST_F(SetConfiguration, AFailedSectionRollsBackWhatSectionsBeforeItWrote) {
    importSections(std::string(kNewIp) + kBadSection + "<maturityRating>5</maturityRating>");
    expectFailure({{"101 Invalid command", "Error 101, No homechannel element found"}});
    EXPECT_THAT(device.statements(),
                ElementsAre("BEGIN TRANSACTION",
                            "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'network_IP' ",
                            "UPDATE configuracionWebGlobal SET  valor = '10.0.0.2'  WHERE "
                            "idConfiguracionGlobal = '1'",
                            "ROLLBACK"));
    EXPECT_THAT(out(), Not(testing::HasSubstr("Processing: maturityRating")));
    EXPECT_THAT(codes(), ElementsAre(101, 202));
}

TEST_F(SetConfiguration, TheRollbackComesBeforeTheErrorOfTheConfiguration) {
    importSections(kBadSection);
    EXPECT_THAT(device.events(),
                ElementsAre("open: /tarvo/DB/config_global.sqlite", "sql: BEGIN TRANSACTION",
                            "log 59: r9::: Error 101, No homechannel element found",
                            "sql: ROLLBACK", "close: /tarvo/DB/config_global.sqlite",
                            "log 59: r9::: Error 202, Could not set configuration"));
}

TEST_F(SetConfiguration, ARollbackThatFailsRecords102Between) {
    device.failStatements("ROLLBACK", 3, SQLITE_IOERR);
    importSections(std::string(kNewIp) + kBadSection);
    expectErrors({{"101 Invalid command", "Error 101, No homechannel element found"},
                  {"102 Could not access database: Could not rollback transaction",
                   "Error 102, Could not rollback transaction"},
                  {"202 Could not set configuration", "Error 202, Could not set configuration"}});
    EXPECT_EQ(result(), "1");
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "1", "1"));
    EXPECT_EQ(std::count(device.events().begin(), device.events().end(), "sql: ROLLBACK"), 3);
    // The handle is closed all the same, which undoes an open transaction.
    expectUnchanged();
}

TEST_F(SetConfiguration, ACommitThatFailsRecords102RollsBackAndRunsNoPostAction) {
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    importSections(std::string(kNewIp) + kNewCountry);
    expectErrors({{"102 Could not access database: Could not commit transaction",
                   "Error 102, Could not commit transaction"}});
    EXPECT_EQ(result(), "1");
    const auto statements = device.statements();
    ASSERT_GE(statements.size(), 4U);
    EXPECT_THAT(std::vector(statements.end() - 4, statements.end()),
                ElementsAre("COMMIT", "COMMIT", "COMMIT", "ROLLBACK"));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    expectUnchanged();
}

TEST_F(SetConfiguration, CommitAndRollbackThatFailBothAreRecordedInThatOrder) {
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    device.failStatements("ROLLBACK", 3, SQLITE_BUSY);
    importSections(kNewIp);
    expectErrors({{"102 Could not access database: Could not commit transaction",
                   "Error 102, Could not commit transaction"},
                  {"102 Could not access database: Could not rollback transaction",
                   "Error 102, Could not rollback transaction"}});
    EXPECT_EQ(result(), "1");
    expectUnchanged();
}

TEST_F(SetConfiguration, OnceSqliteHasUndoneTheTransactionNothingIsStored) {
    // The statement is tried again, and there is room again.
    device.failStatementsUndoingAll("UPDATE", 1, SQLITE_FULL);
    importSections(std::string("<homeChannels/>") + kNewIp + "<diseqcs/>");
    expectErrors({{"102 Could not access database: Could not set value",
                   "Error 102, Could not set network/ip"},
                  {"102 Could not access database: Could not rollback transaction",
                   "Error 102, Could not rollback transaction"},
                  {"202 Could not set configuration", "Error 202, Could not set configuration"}});
    EXPECT_THAT(device.statements(), Not(Contains("COMMIT")));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    expectUnchanged();
}

TEST_F(SetConfiguration, ATransactionThatAReadHasLostIsNotCommitted) {
    // All that follows the read would have succeeded.
    device.failStatementsUndoingAll("SELECT", 1, SQLITE_IOERR);
    importSections("<homeChannels/><network><ip>10.0.0.1</ip></network>");
    expectErrors({{"102 Could not access database: Could not commit transaction",
                   "Error 102, Could not commit transaction"},
                  {"102 Could not access database: Could not rollback transaction",
                   "Error 102, Could not rollback transaction"}});
    expectUnchanged();
}

TEST_F(SetConfiguration, ACommitThatSqliteUndoesStoresNothingAndRunsNothing) {
    device.failStatementsUndoingAll("COMMIT", 1, SQLITE_FULL);
    importSections(kNewIp);
    expectErrors({{"102 Could not access database: Could not commit transaction",
                   "Error 102, Could not commit transaction"},
                  {"102 Could not access database: Could not rollback transaction",
                   "Error 102, Could not rollback transaction"}});
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    expectUnchanged();
}

TEST_F(SetConfiguration, RollbackAndCloseReturnsWhatClosingReturned) {
    const test::ParsedXml xml("<configuration/>");
    device.failStatements("BEGIN TRANSACTION", 3, SQLITE_BUSY);
    device.closeResults[tarvodb::kConfigDatabase] = SQLITE_BUSY;
    CmdSetConfiguration command;
    command.apply(&xml.root());
    EXPECT_EQ(command.rollbackAndClose(), SQLITE_BUSY);
    EXPECT_EQ(test::last(device.events()), "close: /tarvo/DB/config_global.sqlite");
}

TEST_F(SetConfiguration, ASecondImportStartsWithoutThePostActionsOfTheFirst) {
    const test::ParsedXml first(std::string("<configuration>") + kNewIp + "</configuration>");
    const test::ParsedXml second("<configuration/>");
    CmdSetConfiguration command;
    command.apply(&first.root());
    command.apply(&second.root());
    EXPECT_THAT(device.shellCommands(), ElementsAre(kNetworkScript));
}

TEST_F(SetConfiguration, AFailedSectionSetsTheResultWhichAFailedTransactionLeavesAsItWas) {
    const test::ParsedXml good("<configuration/>");
    const test::ParsedXml bad(std::string("<configuration>") + kBadSection + "</configuration>");
    CmdSetConfiguration command;
    command.apply(&good.root());
    EXPECT_EQ(test::Outcome(command).result, "0");
    device.failStatements("BEGIN TRANSACTION", 3, SQLITE_BUSY);
    command.apply(&good.root());
    EXPECT_EQ(test::Outcome(command).result, "0");
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    command.apply(&good.root());
    EXPECT_EQ(test::Outcome(command).result, "0");
    command.apply(nullptr);
    EXPECT_EQ(test::Outcome(command).result, "0");
    command.apply(&bad.root());
    EXPECT_EQ(test::Outcome(command).result, "1");
}

// --- The sections ----------------------------------------------------------------------------

TEST_F(SetConfiguration, EverySectionIsKnownInAnyLetterCase) {
    // What each section does at the least.
    struct Known {
        const char* name;
        const char* content;
        const char* statement;
    };
    constexpr Known kKnown[] = {
        {"identification", "<location>x</location>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'identificacion_localizacion' "},
        {"regional", "<timezone>Europe/Paris</timezone>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'subtimezone' "},
        {"maturityRating", "3",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'MaturityRating' "},
        {"maintenances", "<maintenance><hour>1</hour><min>2</min><active>1</active></maintenance>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'mantenimiento_hora' "},
        {"homeChannels", "", "DELETE FROM MantenimientoHomeChannelsGlobal"},
        {"serviceEPGs", "", "DELETE FROM Service_EPG"},
        {"remoteControl", "<active>1</active>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'servidorZEN_activo' "},
        {"network", "<ip>10.0.0.1</ip>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'network_IP' "},
        {"dvbNetworks", "", "DELETE FROM RedesCabecera"},
        {"lnb", "<oscLowFreq>1</oscLowFreq>",
         "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'LNB_fb' "},
        {"diseqcs", "", "DELETE FROM DiSEqCGlobal"},
        {"preferredLanguages", "", "DELETE FROM AudioLanguageListGlobal"},
        {"scramblings", "<scrambling><name>VSecure</name></scrambling>",
         "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE 'VSecure' "},
    };
    for (const auto& [name, content, statement] : kKnown) {
        for (const std::string& spelt : {std::string(name), upperCased(name)}) {
            SCOPED_TRACE(spelt);
            importSections("<" + spelt + ">" + content + "</" + spelt + ">");
            expectSuccess();
            EXPECT_THAT(device.statements(), Contains(statement));
        }
    }
}

TEST_F(SetConfiguration, TheModulesSectionIsKnownInAnyLetterCase) {
    for (const std::string& spelt : {std::string("modules"), std::string("MODULES")}) {
        importSections("<" + spelt + "/>");
        EXPECT_THAT(errorLines(),
                    Not(Contains("59: r9::: Unknown configuration setting: " + spelt)));
    }
}

TEST_F(SetConfiguration, SectionsAreProcessedInTheOrderOfTheDocument) {
    importSections("<lnb/><Identification/><maturityRating>3</maturityRating><lnb/>");
    expectSuccess();
    EXPECT_THAT(out(), testing::MatchesRegex("Processing: lnb\n"
                                             "Processing: Identification\n"
                                             "Processing: maturityRating\n"
                                             "setConfig: MaturityRating = 3\n"
                                             "0x[0-9a-f]+\n"
                                             "Processing: lnb\n"));
}

TEST_F(SetConfiguration, AnUnknownSectionIsLoggedAndSkipped) {
    importSections(std::string("<Wireless><ip>1</ip></Wireless>") + kNewIp);
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(result(), "0");
    EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Unknown configuration setting: Wireless"));
    EXPECT_EQ(valueOf("network_IP"), "10.0.0.2");
}

TEST_F(SetConfiguration, WhiteSpaceAndCommentsBetweenSectionsAreNotSections) {
    importSections(std::string("\n  <!-- the address -->\n\t") + kNewIp + "\n  ");
    expectSuccess();
    EXPECT_EQ(valueOf("network_IP"), "10.0.0.2");
    EXPECT_THAT(out(), testing::StartsWith("Processing: network\n"));
}

TEST_F(SetConfiguration, TextBetweenSectionsIsSkippedLikeAnUnknownSection) {
    importSections(std::string("stray text") + kNewIp + "<![CDATA[more]]>");
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(result(), "0");
    EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Unknown configuration setting: ",
                                          "59: r9::: Unknown configuration setting: "));
    EXPECT_EQ(valueOf("network_IP"), "10.0.0.2");
}

// --- Post-actions ----------------------------------------------------------------------------

TEST_F(SetConfiguration, TheNetworkScriptRunsOnceHoweverManyKeysChanged) {
    importSections(
        "<network><ip>10.0.0.2</ip><netmask>255.255.0.0</netmask></network>"
        "<network><gateway>10.0.0.254</gateway></network>");
    expectSuccess();
    EXPECT_THAT(device.shellCommands(), ElementsAre(kNetworkScript));
}

TEST_F(SetConfiguration, PostActionsRunAfterTheCommit) {
    importSections(kNewIp);
    const auto& events = device.events();
    ASSERT_GE(events.size(), 3U);
    EXPECT_THAT(std::vector(events.end() - 3, events.end()),
                ElementsAre("sql: COMMIT", "close: /tarvo/DB/config_global.sqlite",
                            std::string("shell: ") + kNetworkScript));
}

TEST_F(SetConfiguration, AnUnchangedNetworkRunsNoScript) {
    importSections("<network><ip>10.0.0.1</ip></network>");
    expectSuccess();
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(SetConfiguration, ChangedRemoteControlSettingsRunNothing) {
    importSections("<remoteControl><active>1</active></remoteControl>");
    expectSuccess();
    EXPECT_EQ(valueOf("servidorZEN_activo"), "1");
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    EXPECT_THAT(device.eventsOf("open: "), testing::SizeIs(1));
}

TEST_F(SetConfiguration, PostActionsRunInTheirOrderWhateverTheOrderOfTheSections) {
    becomeModel("RNB-K408");
    importSections(std::string("<scramblings/>") + kNewCountry + kNewIp);
    expectSuccess();
    EXPECT_THAT(device.shellCommands(),
                ElementsAre(kNetworkScript, kOffsetsScript, kCronScript, kKeyTool));
}

TEST_F(SetConfiguration, AFailedNetworkScriptRecords203AndEndsThePostActions) {
    // Exit status 1, killed by signal 9, not found, no shell.
    for (const int result : {256, 9, 32512, -1}) {
        SCOPED_TRACE(result);
        becomeModel("RNB-K408");
        device.shellResults[kNetworkScript] = result;
        importSections("<network><ip>" + std::to_string(result) + "</ip></network><scramblings/>" +
                       "<regional><country>" + std::to_string(result) + "</country></regional>");
        expectErrors({{"203 Could not apply network configuration",
                       "Error 203, Could not apply network configuration"}});
        EXPECT_EQ(this->result(), "1");
        EXPECT_THAT(device.shellCommands(), ElementsAre(kNetworkScript));
        EXPECT_EQ(test::last(device.statements()), "COMMIT");
        EXPECT_EQ(valueOf("network_IP"), std::to_string(result));
    }
}

TEST_F(SetConfiguration, AFailedRegionalPostActionDoesNotCount) {
    becomeModel("RNB-K408");
    device.shellResults[kOffsetsScript] = 256;
    importSections(std::string(kNewCountry) + "<scramblings/>");
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(result(), "0");
    EXPECT_THAT(device.shellCommands(), ElementsAre(kOffsetsScript, kKeyTool));
}

TEST_F(SetConfiguration, UnchangedRegionalSettingsLeaveTheClockAlone) {
    importSections("<regional><country>ES</country></regional>");
    expectSuccess();
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    EXPECT_FALSE(device.exists("/tarvo/conf/timezone/localtime"));
}

TEST_F(SetConfiguration, AFailedKeyToolRecords911AndKeepsTheImport) {
    for (const int result : {256, 9, 32512}) {
        SCOPED_TRACE(result);
        becomeModel("RNB-K408");
        device.shellResults[kKeyTool] = result;
        importSections("<maturityRating>" + std::to_string(result) +
                       "</maturityRating><scramblings/>");
        expectErrors({{"911 Error regenerating scrambling key",
                       "Error 911, Error regenerating scrambling key"}});
        EXPECT_EQ(this->result(), "1");
        EXPECT_EQ(test::last(device.statements()), "COMMIT");
        EXPECT_EQ(valueOf("MaturityRating"), std::to_string(result));
    }
}

TEST_F(SetConfiguration, OnlyTheRnbRunsTheKeyTool) {
    for (const char* model : {"QRA-310", "LMV-502", "LMV-512", "PKD-707", "WVX-AQ4", "WVX-BQ4"}) {
        SCOPED_TRACE(model);
        becomeModel(model);
        importSections("<scramblings><scrambling><name>VSecure</name><oddKey>" +
                       std::string(model) + "</oddKey></scrambling></scramblings>");
        expectSuccess();
        EXPECT_THAT(device.shellCommands(), IsEmpty());
    }
}

TEST_F(SetConfiguration, TheRnbRunsTheKeyToolOnceAndOnlyForScramblings) {
    becomeModel("RNB-K408");
    importSections("<scramblings/><scramblings/>");
    EXPECT_THAT(device.shellCommands(), ElementsAre(kKeyTool));
    importSections("<maturityRating>7</maturityRating>");
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(SetConfiguration, AFailedImportRunsNoPostAction) {
    becomeModel("RNB-K408");
    importSections(std::string(kNewIp) + kNewCountry + "<scramblings/>" + kBadSection);
    expectFailure({{"101 Invalid command", "Error 101, No homechannel element found"}});
}

// --- The command form ------------------------------------------------------------------------

class SetConfigurationCommand : public SetConfiguration {
  protected:
    test::Outcome executed(const std::string& commandElement) {
        const test::CommandDocument document("<command><id>7</id><data>" + commandElement +
                                             "</data></command>");
        CmdSetConfiguration command(document.element());
        device.forgetEvents();
        command.execute();
        return test::Outcome(command);
    }
};

TEST_F(SetConfigurationCommand, ItsConfigurationElementIsApplied) {
    const auto outcome = executed(
        "<setConfiguration><other/><configuration><maturityRating>5</maturityRating>"
        "</configuration></setConfiguration>");
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_EQ(outcome.result, "0");
    EXPECT_EQ(outcome.data, "<setConfigurationResult/>");
    EXPECT_EQ(valueOf("MaturityRating"), "5");
}

TEST_F(SetConfigurationCommand, WithoutAConfigurationElementItRecords101) {
    const auto outcome = executed("<setConfiguration><other/></setConfiguration>");
    EXPECT_THAT(outcome.errors, ElementsAre("101 Invalid command"));
    EXPECT_EQ(outcome.result, "1");
    EXPECT_EQ(outcome.data, "<setConfigurationResult/>");
    EXPECT_THAT(device.events(), ElementsAre("log 59: r9::: Error 101, Invalid command"));
}

TEST_F(SetConfigurationCommand, WithoutACommandDocumentItRecords101) {
    CmdSetConfiguration command;
    device.forgetEvents();
    command.execute();
    const test::Outcome outcome(command);
    EXPECT_THAT(outcome.errors, ElementsAre("101 Invalid command"));
    EXPECT_EQ(outcome.data, "<setConfigurationResult/>");
    EXPECT_THAT(device.events(), ElementsAre("log 59: r9::: Error 101, Invalid command"));
}

// --- The debug log ---------------------------------------------------------------------------

class SetConfigurationDebugLog : public SetConfiguration {
  protected:
    SetConfigurationDebugLog() { platform::debugMask = 0x10; }
};

TEST_F(SetConfigurationDebugLog, AnErrorIsRepeatedThere) {
    device.failOpens("/tarvo/DB/config_global.sqlite");
    importSections("");
    EXPECT_THAT(device.logLines(),
                testing::UnorderedElementsAre(
                    "3: Command error: 102 Could not access database: Could not open DB",
                    "3: Error 102, Could not open DB", "59: r9::: Error 102, Could not open DB"));
}

TEST_F(SetConfigurationDebugLog, AnErrorWithoutAMessageIsRepeatedWithTheTextOfItsCode) {
    importSections(kBadSection);
    EXPECT_THAT(device.logLines(),
                IsSupersetOf({"3: Command error: 202 Could not set configuration",
                              "3: Error 202, Could not set configuration"}));
}

TEST_F(SetConfigurationDebugLog, AnUnknownSectionIsToldThere) {
    importSections("<Wireless/>");
    EXPECT_THAT(device.logLines(),
                testing::UnorderedElementsAre("3: Unknown configuration setting: Wireless",
                                              "59: r9::: Unknown configuration setting: Wireless"));
}

TEST_F(SetConfigurationDebugLog, AFailedTryOfTheTransactionIsToldThere) {
    device.failStatements("COMMIT", 2, SQLITE_BUSY, "database is locked");
    importSections("");
    EXPECT_THAT(device.logLines(), ElementsAre("6: DB exec error (1 try): database is locked",
                                               "6: DB exec error (2 try): database is locked"));
}

}  // namespace
