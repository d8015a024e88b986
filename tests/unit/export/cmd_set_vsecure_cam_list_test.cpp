#include "export/cmd_set_vsecure_cam_list.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <cstdlib>
#include <ctime>

#include "platform/debug_log.h"
#include "support/import_fixture.h"
#include "support/scripted_command.h"

namespace {

using tarvo_remote_control::CmdSetVsecureCAMList;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Rows = std::vector<test::Row>;

constexpr const char* kKeyTool = "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";
constexpr const char* kDelete = "DELETE FROM VSecure";

std::string insertOf(const std::string& values) {
    return "INSERT INTO VSecure (idVSecure, Fabricante, idCliente, K_Publica, EK_Shared, Alta, "
           "Reintentos, Error, Descripcion, estado)  VALUES (" +
           values + " )";
}

std::string selectOf(const std::string& serialNumber) {
    return "SELECT * FROM VSecure  WHERE idCliente LIKE '" + serialNumber + "' ";
}

std::string updateOf(const std::string& assignments) {
    return "UPDATE VSecure SET " + assignments + " WHERE idVSecure = '4'";
}

std::string cam(const std::string& serialNumber, const std::string& children = "") {
    return "<cam><serialNumber>" + serialNumber + "</serialNumber>" + children + "</cam>";
}

// Local time for the time of a test.
class TimeZone {
  public:
    explicit TimeZone(const char* name) {
        setenv("TZ", name, 1);
        tzset();
    }
    ~TimeZone() {
        unsetenv("TZ");
        tzset();
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
};

class SetVsecureCAMList : public test::DeviceTest {
  protected:
    SetVsecureCAMList() {
        becomeModel("QRA-310");
        rows(
            "INSERT INTO VSecure VALUES (4, 'Maker', 'C4', 'key', 'shared', '2020-01-01', '2', "
            "'1', 'first', '0'), (5, 'Maker', 'C5', 'k5', 's5', '2020-01-02', '0', '0', 'second', "
            "'0')");
    }

    void rows(const std::string& sql) { device.execute(tarvodb::kVsecureDatabase, sql); }
    [[nodiscard]] Rows table() const {
        return device.query(tarvodb::kVsecureDatabase, "SELECT * FROM VSecure");
    }
    [[nodiscard]] Rows select(const std::string& columns) const {
        return device.query(tarvodb::kVsecureDatabase, "SELECT " + columns + " FROM VSecure");
    }

    // Applies a list of these children.
    bool apply(const std::string& children, bool partial) {
        const test::ParsedXml xml("<vsecureCAMList>" + children + "</vsecureCAMList>");
        before_ = table();
        device.forgetEvents();
        CmdSetVsecureCAMList command;
        const bool applied = command.apply(&xml.root(), partial);
        errors_ = test::Outcome(command).errors;
        return applied;
    }
    bool applyFull(const std::string& children) { return apply(children, false); }
    bool applyPartial(const std::string& children) { return apply(children, true); }

    // Without those of the transaction.
    [[nodiscard]] std::vector<std::string> listStatements() const {
        std::vector<std::string> found = device.statements();
        std::erase_if(found, [](const std::string& sql) {
            return sql == "BEGIN TRANSACTION" || sql == "COMMIT" || sql == "ROLLBACK";
        });
        return found;
    }

    [[nodiscard]] const std::vector<std::string>& errors() const { return errors_; }
    // The table before the last list.
    [[nodiscard]] const Rows& before() const { return before_; }

    // Rolled back, with these errors and without the key tool.
    void expectRolledBack(const std::vector<std::string>& expected) {
        EXPECT_EQ(errors_, expected);
        EXPECT_EQ(test::last(device.statements()), "ROLLBACK");
        EXPECT_THAT(device.shellCommands(), IsEmpty());
        expectUnchanged();
    }
    void expectUnchanged() { EXPECT_EQ(table(), before_); }

  private:
    std::vector<std::string> errors_;
    Rows before_;
};

// --- The full list ---------------------------------------------------------------------------

TEST_F(SetVsecureCAMList, AFullListWithoutModulesEmptiesTheTable) {
    EXPECT_TRUE(applyFull(""));
    EXPECT_THAT(device.events(), ElementsAre("open: /tarvo/DB/vsec_global.sqlite",
                                             "sql: BEGIN TRANSACTION", "sql: DELETE FROM VSecure",
                                             "sql: COMMIT", "close: /tarvo/DB/vsec_global.sqlite",
                                             std::string("shell: ") + kKeyTool));
    EXPECT_THAT(table(), IsEmpty());
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(SetVsecureCAMList, AFullListReplacesTheTableInTheOrderOfTheDocument) {
    device.time = 1699963200;  // 2023-11-14 12:00 UTC
    EXPECT_TRUE(
        applyFull(cam("C9",
                      "<hasPublicKey>1</hasPublicKey><publicKey>pk</publicKey>"
                      "<manufacturer>M</manufacturer><registerDate>2021-05-06</registerDate>"
                      "<ekShared>ek</ekShared><description>d</description>") +
                  cam("C4")));
    EXPECT_THAT(
        device.statements(),
        ElementsAre("BEGIN TRANSACTION", kDelete,
                    insertOf("NULL, 'M', 'C9', 'pk', 'ek', '2021-05-06', '0', '0', 'd', "
                             "'1'"),
                    insertOf("NULL, '', 'C4', '', '', '2023-11-14', '0', '0', '', '1'"), "COMMIT"));
    EXPECT_EQ(select("idVSecure, idCliente"), (Rows{{"1", "C9"}, {"2", "C4"}}));
}

TEST_F(SetVsecureCAMList, ANewModuleIsRegisteredOnTheLocalDate) {
    const TimeZone ahead("AHEAD-14");
    device.time = 1700000000;  // 2023-11-14 22:13:20 UTC
    EXPECT_TRUE(applyFull(cam("C9")));
    EXPECT_EQ(select("Alta"), (Rows{{"2023-11-15"}}));
}

TEST_F(SetVsecureCAMList, AFullListDoesNotLookForStoredModules) {
    EXPECT_TRUE(applyFull(cam("C4", "<description>new</description>")));
    EXPECT_THAT(device.statements(), Not(Contains(StartsWith("SELECT"))));
    EXPECT_EQ(select("idCliente, K_Publica, Descripcion, estado"), (Rows{{"C4", "", "new", "1"}}));
}

TEST_F(SetVsecureCAMList, TheSameSerialNumberTwiceGivesTwoRowsInAFullList) {
    EXPECT_TRUE(applyFull(cam("C9") + cam("C9")));
    EXPECT_EQ(select("idCliente"), (Rows{{"C9"}, {"C9"}}));
}

TEST_F(SetVsecureCAMList, OtherElementsOfAModuleAreIgnored) {
    EXPECT_TRUE(applyPartial(cam("C4", "<colour>red</colour><description>new</description>")));
    EXPECT_THAT(listStatements(), ElementsAre(selectOf("C4"), updateOf(" Descripcion = 'new' ")));
}

TEST_F(SetVsecureCAMList, OtherElementsOfTheListAreIgnored) {
    EXPECT_TRUE(
        applyFull("text<other><serialNumber>C1</serialNumber></other><!-- none -->" + cam("C9")));
    EXPECT_EQ(select("idCliente"), (Rows{{"C9"}}));
}

TEST_F(SetVsecureCAMList, NamesAreMatchedInAnyLetterCase) {
    EXPECT_TRUE(
        applyFull("<CAM><SERIALNUMBER>C9</SERIALNUMBER><PUBLICKEY>pk</PUBLICKEY>"
                  "<MANUFACTURER>M</MANUFACTURER><REGISTERDATE>r</REGISTERDATE>"
                  "<EKSHARED>ek</EKSHARED><DESCRIPTION>d</DESCRIPTION></CAM>"));
    EXPECT_THAT(device.statements(),
                Contains(insertOf("NULL, 'M', 'C9', 'pk', 'ek', 'r', '0', '0', 'd', '1'")));
}

TEST_F(SetVsecureCAMList, TextsArriveInTheDatabaseAsTheyAreMeant) {
    EXPECT_TRUE(applyFull(cam("C'9",
                              "<description>O'Brien &amp; &lt;5%s&gt; 7% \xC3\xA9"
                              "</description>")));
    EXPECT_EQ(select("idCliente, Descripcion"), (Rows{{"C'9", "O'Brien & <5%s> 7% \xC3\xA9"}}));
}

TEST_F(SetVsecureCAMList, OfSeveralSerialNumbersTheFirstCounts) {
    EXPECT_TRUE(
        applyFull("<cam><serialNumber>C8</serialNumber><serialNumber>C9</serialNumber>"
                  "</cam>"));
    EXPECT_EQ(select("idCliente"), (Rows{{"C8"}}));
}

TEST_F(SetVsecureCAMList, AnEmptySerialNumberCountsAsGiven) {
    EXPECT_TRUE(applyFull("<cam><serialNumber/></cam>"));
    EXPECT_EQ(select("idCliente"), (Rows{{""}}));
}

// --- The partial list ------------------------------------------------------------------------

TEST_F(SetVsecureCAMList, APartialListInsertsAnUnknownModuleDatedToday) {
    device.time = 1699963200;  // 2023-11-14 12:00 UTC
    EXPECT_TRUE(applyPartial(cam("C9")));
    EXPECT_THAT(
        device.statements(),
        ElementsAre("BEGIN TRANSACTION", selectOf("C9"),
                    insertOf("NULL, '', 'C9', '', '', '2023-11-14', '0', '0', '', '1'"), "COMMIT"));
    EXPECT_EQ(select("idCliente"), (Rows{{"C4"}, {"C5"}, {"C9"}}));
}

TEST_F(SetVsecureCAMList, APartialListWithoutModulesChangesNothing) {
    EXPECT_TRUE(applyPartial(""));
    EXPECT_THAT(device.statements(), ElementsAre("BEGIN TRANSACTION", "COMMIT"));
    expectUnchanged();
}

TEST_F(SetVsecureCAMList, APartialListWritesOnlyWhatIsGivenAndDiffers) {
    const std::pair<const char*, const char*> kFields[] = {
        {"<manufacturer>New</manufacturer>", " Fabricante = 'New' "},
        {"<registerDate>2024-01-01</registerDate>", " Alta = '2024-01-01' "},
        {"<ekShared>new</ekShared>", " EK_Shared = 'new' "},
        {"<description>new</description>", " Descripcion = 'new' "},
        {"<description/>", " Descripcion = '' "},
        {"<description>d</description><manufacturer>M</manufacturer>",
         " Fabricante = 'M' , Descripcion = 'd' "},
    };
    for (const auto& [children, assignments] : kFields) {
        SCOPED_TRACE(children);
        rows(
            "DELETE FROM VSecure; INSERT INTO VSecure VALUES (4, 'Maker', 'C4', 'key', 'shared', "
            "'2020-01-01', '2', '1', 'first', '0')");
        EXPECT_TRUE(applyPartial(cam("C4", children)));
        EXPECT_THAT(listStatements(), ElementsAre(selectOf("C4"), updateOf(assignments)));
        EXPECT_EQ(select("Reintentos, Error, estado"), (Rows{{"2", "1", "0"}}));
    }
}

TEST_F(SetVsecureCAMList, StoredValuesGivenAgainWriteNothing) {
    EXPECT_TRUE(
        applyPartial(cam("C4",
                         "<hasPublicKey>0</hasPublicKey><publicKey>key</publicKey>"
                         "<manufacturer>Maker</manufacturer><registerDate>2020-01-01</registerDate>"
                         "<ekShared>shared</ekShared><description>first</description>")));
    EXPECT_THAT(listStatements(), ElementsAre(selectOf("C4")));
    expectUnchanged();
}

TEST_F(SetVsecureCAMList, AnotherLetterCaseOfTheSerialNumberReplacesTheStoredOne) {
    EXPECT_TRUE(applyPartial(cam("c4")));
    EXPECT_THAT(listStatements(), ElementsAre(selectOf("c4"), updateOf(" idCliente = 'c4' ")));
}

TEST_F(SetVsecureCAMList, OfSeveralRowsThatMatchTheFirstIsUpdated) {
    rows("UPDATE VSecure SET idCliente = 'C4'");
    EXPECT_TRUE(applyPartial(cam("C4", "<description>new</description>")));
    EXPECT_EQ(select("Descripcion"), (Rows{{"new"}, {"second"}}));
}

TEST_F(SetVsecureCAMList, AnUpdateReplacesTheFirstPercentSignByABlank) {
    EXPECT_TRUE(applyPartial(cam("C4", "<description>5% of 7%s</description>")));
    EXPECT_EQ(select("Descripcion"), (Rows{{"5  of 7%s"}, {"second"}}));
}

TEST_F(SetVsecureCAMList, NullColumnsReadAsTheEmptyText) {
    rows(
        "UPDATE VSecure SET Fabricante = NULL, K_Publica = NULL, EK_Shared = NULL, Alta = NULL, "
        "Descripcion = NULL");
    EXPECT_TRUE(applyPartial(cam("C4",
                                 "<publicKey/><manufacturer/><registerDate/><ekShared/>"
                                 "<description/>")));
    EXPECT_THAT(listStatements(), ElementsAre(selectOf("C4")));
}

// --- Public keys -----------------------------------------------------------------------------

TEST_F(SetVsecureCAMList, AnotherPublicKeyHasTheModuleProcessedAgain) {
    EXPECT_TRUE(applyPartial(cam("C4", "<publicKey>new</publicKey>")));
    EXPECT_THAT(listStatements(),
                ElementsAre(selectOf("C4"),
                            updateOf(" K_Publica = 'new' , EK_Shared = '' , estado = '1' ")));
}

TEST_F(SetVsecureCAMList, APublicKeyIsStoredWithoutWhiteSpace) {
    EXPECT_TRUE(applyPartial(cam("C4", "<publicKey>\n  AB cd\r\n\tEF\v\f= \n</publicKey>")));
    EXPECT_EQ(select("K_Publica"), (Rows{{"ABcdEF="}, {"k5"}}));
}

TEST_F(SetVsecureCAMList, TheSameKeyInOtherLinesLeavesTheModuleAlone) {
    EXPECT_TRUE(applyPartial(cam("C4", "<publicKey>\n k\n ey </publicKey>")));
    EXPECT_THAT(listStatements(), ElementsAre(selectOf("C4")));
    expectUnchanged();
}

TEST_F(SetVsecureCAMList, OtherTextsKeepTheirWhiteSpace) {
    EXPECT_TRUE(applyPartial(cam("C4", "<ekShared>a b</ekShared><description>c\nd</description>")));
    EXPECT_EQ(select("EK_Shared, Descripcion").at(0), (test::Row{"a b", "c\nd"}));
}

TEST_F(SetVsecureCAMList, AnEmptyPublicKeyIsAnotherOne) {
    EXPECT_TRUE(applyPartial(cam("C4", "<publicKey> </publicKey>")));
    EXPECT_EQ(select("K_Publica, EK_Shared, estado").at(0), (test::Row{"", "", "1"}));
}

TEST_F(SetVsecureCAMList, AnotherKeyClearsTheSharedKeyThatStoodBeforeItInTheElement) {
    EXPECT_TRUE(applyPartial(cam("C4", "<publicKey>new</publicKey><ekShared>after</ekShared>") +
                             cam("C5", "<ekShared>before</ekShared><publicKey>new</publicKey>")));
    EXPECT_EQ(select("EK_Shared"), (Rows{{"after"}, {""}}));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(SetVsecureCAMList, AnAbsentListRecords101) {
    CmdSetVsecureCAMList command;
    device.forgetEvents();
    EXPECT_FALSE(command.apply(nullptr, false));
    EXPECT_THAT(test::Outcome(command).errors,
                ElementsAre("101 Invalid command: No 'list' element found"));
    EXPECT_THAT(device.events(), IsEmpty());
}

TEST_F(SetVsecureCAMList, ADatabaseThatDoesNotOpenRecords102) {
    device.failOpens("/tarvo/DB/vsec_global.sqlite");
    EXPECT_FALSE(applyFull(cam("C9")));
    EXPECT_THAT(errors(), ElementsAre("102 Could not access database"));
    EXPECT_THAT(device.events(), ElementsAre("open: /tarvo/DB/vsec_global.sqlite"));
}

TEST_F(SetVsecureCAMList, ATransactionThatDoesNotStartRecords102WithoutAnotherTry) {
    device.failStatements("BEGIN TRANSACTION", 1, SQLITE_BUSY);
    EXPECT_FALSE(applyFull(cam("C9")));
    EXPECT_THAT(errors(), ElementsAre("102 Could not access database"));
    EXPECT_THAT(device.events(),
                ElementsAre("open: /tarvo/DB/vsec_global.sqlite", "sql: BEGIN TRANSACTION",
                            "close: /tarvo/DB/vsec_global.sqlite"));
    expectUnchanged();
}

TEST_F(SetVsecureCAMList, AModuleWithoutSerialNumberAbortsTheWholeList) {
    EXPECT_FALSE(applyFull(cam("C8") + "<cam><description>d</description></cam>" + cam("C9")));
    expectRolledBack({"101 Invalid command: No 'serialNumber' element found"});
    EXPECT_THAT(listStatements(), ElementsAre(kDelete, HasSubstr("'C8'")));
}

TEST_F(SetVsecureCAMList, AModuleWithoutSerialNumberAbortsAPartialListToo) {
    EXPECT_FALSE(applyPartial(cam("C4", "<description>new</description>") + "<cam/>" + cam("C9")));
    expectRolledBack({"101 Invalid command: No 'serialNumber' element found"});
    EXPECT_THAT(listStatements(), Not(Contains(selectOf("C9"))));
}

TEST_F(SetVsecureCAMList, ADeleteThatFailsRollsBackAfterTheLastModule) {
    device.failStatements(kDelete, 3, SQLITE_BUSY);
    EXPECT_FALSE(applyFull(cam("C9")));
    expectRolledBack({"102 Could not access database"});
    EXPECT_THAT(listStatements(), ElementsAre(kDelete, kDelete, kDelete, HasSubstr("'C9'")));
}

TEST_F(SetVsecureCAMList, AnInsertThatFailsLetsTheOthersBeTriedAndRollsBack) {
    device.failStatements("INSERT INTO VSecure", 3, SQLITE_FULL);
    EXPECT_FALSE(applyFull(cam("C8") + cam("C9")));
    expectRolledBack({"102 Could not access database"});
    EXPECT_THAT(listStatements(), ElementsAre(kDelete, HasSubstr("'C8'"), HasSubstr("'C8'"),
                                              HasSubstr("'C8'"), HasSubstr("'C9'")));
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "2", "3"));
}

TEST_F(SetVsecureCAMList, AnUpdateThatFailsLetsTheOthersBeTriedAndRollsBack) {
    device.failStatements("UPDATE VSecure", 3, SQLITE_BUSY);
    EXPECT_FALSE(applyPartial(cam("C4", "<description>new</description>") + cam("C9")));
    expectRolledBack({"102 Could not access database"});
    EXPECT_EQ(test::last(listStatements()).substr(0, 19), "INSERT INTO VSecure");
}

TEST_F(SetVsecureCAMList, EveryWriteThatFailsIsRecorded) {
    device.failStatements("INSERT INTO VSecure", 6, SQLITE_FULL);
    EXPECT_FALSE(applyFull(cam("C8") + cam("C9")));
    expectRolledBack({"102 Could not access database", "102 Could not access database"});
}

TEST_F(SetVsecureCAMList, ARollbackThatFailsIsRecordedWithoutAnotherTry) {
    device.failStatements("ROLLBACK", 1, SQLITE_IOERR);
    EXPECT_FALSE(applyFull("<cam/>"));
    expectRolledBack(
        {"101 Invalid command: No 'serialNumber' element found", "102 Could not access database"});
    EXPECT_THAT(device.statements(), ElementsAre("BEGIN TRANSACTION", kDelete, "ROLLBACK"));
    EXPECT_THAT(device.sleeps(), IsEmpty());
}

TEST_F(SetVsecureCAMList, ACommitThatFailsRecords102WithoutAnotherTry) {
    device.failStatements("COMMIT", 1, SQLITE_BUSY);
    EXPECT_FALSE(applyFull(cam("C9")));
    EXPECT_THAT(errors(), ElementsAre("102 Could not access database"));
    EXPECT_THAT(device.statements(),
                ElementsAre("BEGIN TRANSACTION", kDelete, HasSubstr("'C9'"), "COMMIT"));
    EXPECT_THAT(device.sleeps(), IsEmpty());
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    expectUnchanged();
}

TEST_F(SetVsecureCAMList, AMissingTableFailsTheList) {
    rows("ALTER TABLE VSecure RENAME TO Away");
    const test::ParsedXml xml("<list/>");
    CmdSetVsecureCAMList command;
    EXPECT_FALSE(command.apply(&xml.root(), false));
    EXPECT_THAT(test::Outcome(command).errors, ElementsAre("102 Could not access database"));
    EXPECT_EQ(test::last(device.statements()), "ROLLBACK");
}

TEST_F(SetVsecureCAMList, OnceSqliteHasUndoneTheTransactionNothingIsStored) {
    for (const char* statement : {"DELETE", "INSERT", "COMMIT"}) {
        SCOPED_TRACE(statement);
        device.failStatementsUndoingAll(statement, 1, SQLITE_FULL);
        EXPECT_FALSE(applyFull(cam("C8") + cam("C9")));
        EXPECT_THAT(errors(), Contains("102 Could not access database"));
        EXPECT_THAT(device.shellCommands(), IsEmpty());
        EXPECT_EQ(table(), before());
    }
}

TEST_F(SetVsecureCAMList, TheDatabaseIsClosedInEveryWayOut) {
    const std::string close = "close: /tarvo/DB/vsec_global.sqlite";
    EXPECT_FALSE(applyFull("<cam/>"));
    EXPECT_EQ(test::last(device.events()), close);
    for (const char* statement : {"BEGIN TRANSACTION", "COMMIT"}) {
        device.failStatements(statement, 1, SQLITE_BUSY);
        EXPECT_FALSE(applyFull(cam("C9")));
        EXPECT_EQ(test::last(device.events()), close);
    }
}

TEST_F(SetVsecureCAMList, FailuresWriteNoErrorLines) {
    EXPECT_FALSE(applyFull("<cam/>"));
    device.failStatements("BEGIN TRANSACTION", 1, SQLITE_BUSY);
    EXPECT_FALSE(applyFull(cam("C9")));
    EXPECT_THAT(device.logLines(), IsEmpty());
    EXPECT_EQ(out(), "");
}

// --- The key tool ----------------------------------------------------------------------------

TEST_F(SetVsecureCAMList, EveryModelButTheRnbRunsTheKeyToolAfterTheCommit) {
    for (const char* model : {"QRA-310", "LMV-502", "LMV-512", "PKD-707", "WVX-AQ4", "WVX-BQ4"}) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_TRUE(applyPartial(""));
        EXPECT_THAT(device.events(),
                    ElementsAre("open: /tarvo/DB/vsec_global.sqlite", "sql: BEGIN TRANSACTION",
                                "sql: COMMIT", "close: /tarvo/DB/vsec_global.sqlite",
                                std::string("shell: ") + kKeyTool));
    }
}

TEST_F(SetVsecureCAMList, TheRnbRunsNoKeyTool) {
    becomeModel("RNB-K408");
    device.shellResults[kKeyTool] = 256;
    EXPECT_TRUE(applyFull(cam("C9")));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    EXPECT_THAT(errors(), IsEmpty());
}

TEST_F(SetVsecureCAMList, AKeyToolThatFailsRecords911AndLeavesTheListStored) {
    for (const int result : {256, 9, 32512, -1}) {
        SCOPED_TRACE(result);
        device.shellResults[kKeyTool] = result;
        EXPECT_FALSE(applyFull(cam(std::to_string(result))));
        EXPECT_THAT(errors(), ElementsAre("911 Error regenerating scrambling key"));
        EXPECT_EQ(test::last(device.statements()), "COMMIT");
        EXPECT_EQ(select("idCliente"), (Rows{{std::to_string(result)}}));
    }
}

// --- The command form ------------------------------------------------------------------------

class SetVsecureCAMListCommand : public SetVsecureCAMList {
  protected:
    // Executes a command element of these children.
    test::Outcome executed(const std::string& children) {
        const test::CommandDocument document("<command><id>7</id><data><setVsecureCAMList>" +
                                             children + "</setVsecureCAMList></data></command>");
        CmdSetVsecureCAMList command(document.element());
        device.forgetEvents();
        command.execute();
        return test::Outcome(command);
    }
};

TEST_F(SetVsecureCAMListCommand, ItsListIsAFullOneByDefault) {
    const auto outcome = executed("<list>" + cam("C9") + "</list>");
    EXPECT_THAT(outcome.errors, IsEmpty());
    EXPECT_EQ(outcome.data, "<setVsecureCAMListResult/>");
    EXPECT_EQ(select("idCliente"), (Rows{{"C9"}}));
}

TEST_F(SetVsecureCAMListCommand, ItsListIsPartialOnlyWhenSoToldWithOne) {
    for (const std::string value : {"0", "2", "", "true", "no", "-1"}) {
        SCOPED_TRACE(value);
        EXPECT_THAT(executed("<partialList>" + value + "</partialList><list/>").errors, IsEmpty());
        EXPECT_THAT(device.statements(), Contains(kDelete));
    }
    for (const std::string value : {"1", "01", " 1"}) {
        SCOPED_TRACE(value);
        EXPECT_THAT(executed("<partialList>" + value + "</partialList><list/>").errors, IsEmpty());
        EXPECT_THAT(device.statements(), Not(Contains(kDelete)));
    }
}

TEST_F(SetVsecureCAMListCommand, WithoutAListItRecords101) {
    const auto outcome = executed("<partialList>1</partialList>");
    EXPECT_THAT(outcome.errors, ElementsAre("101 Invalid command: No 'list' element found"));
    EXPECT_EQ(outcome.data, "<setVsecureCAMListResult/>");
    EXPECT_THAT(device.events(), IsEmpty());
}

TEST_F(SetVsecureCAMListCommand, WithoutACommandDocumentItRecords101) {
    CmdSetVsecureCAMList command;
    command.execute();
    const test::Outcome outcome(command);
    EXPECT_THAT(outcome.errors, ElementsAre("101 Invalid command: No 'list' element found"));
    EXPECT_EQ(outcome.data, "<setVsecureCAMListResult/>");
}

TEST_F(SetVsecureCAMListCommand, ItIsToldInTheDebugLog) {
    platform::debugMask = 0x10;
    executed("<list/>");
    EXPECT_THAT(device.logLines(), ElementsAre("7: Running setVsecureCAMList command"));
}

TEST_F(SetVsecureCAMListCommand, ItIsNotToldInTheLog) {
    executed("<list/>");
    EXPECT_THAT(device.logLines(), IsEmpty());
}

}  // namespace
