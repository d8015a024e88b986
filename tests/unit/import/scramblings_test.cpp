#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using Rows = std::vector<test::Row>;

constexpr const char* kSelectSystem =
    "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE 'VSecure' ";
constexpr const char* kSelectKeys =
    "SELECT * FROM ScramblingKeysGlobal  WHERE System LIKE 'VSecure'";
constexpr const char* kKeyTool = "/tarvo/bin/VSecKey /tarvo/datosWeb/ScramblingKeys/vseckeys.txt";

std::string updateOfSystem(const std::string& assignments) {
    return "UPDATE ScramblingGlobal SET " + assignments + " WHERE idScrambling = '3'";
}

std::string updateOfKeys(const std::string& assignments) {
    return "UPDATE ScramblingKeysGlobal SET " + assignments + " WHERE idScramblingKeys = '4'";
}

std::string insertOfSystem(const std::string& values) {
    return "INSERT INTO ScramblingGlobal (idScrambling, ScramblingName, Mode, Estado)  VALUES (" +
           values + " )";
}

std::string insertOfKeys(const std::string& values) {
    return "INSERT INTO ScramblingKeysGlobal (idScramblingKeys, Mode, Frequency, System, Odd, "
           "Even, K_Shared, EK_Odd, EK_Even, Date, Estado)  VALUES (" +
           values + " )";
}

std::string scrambling(const std::string& children) {
    return "<scrambling>" + children + "</scrambling>";
}

class Scramblings : public test::SectionImportTest {
  protected:
    Scramblings() {
        rows("INSERT INTO ScramblingGlobal VALUES (3, 'VSecure', 0, 0)");
        rows(
            "INSERT INTO ScramblingKeysGlobal VALUES (4, 0, 60, 'VSecure', 'odd', 'even', "
            "'shared', 'derived odd', 'derived even', '2020-01-01', 0)");
    }

    // Imports an element with a name and these children.
    void importScrambling(const std::string& children) {
        importSections("<scramblings>" + scrambling("<name>VSecure</name>" + children) +
                       "</scramblings>");
    }
};

TEST_F(Scramblings, AnEmptySectionWritesNothingAndHasTheKeysRegenerated) {
    becomeModel("RNB-K408");
    importSections("<scramblings/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), IsEmpty());
    EXPECT_THAT(device.shellCommands(), ElementsAre(kKeyTool));
}

TEST_F(Scramblings, AnUnchangedSectionHasTheKeysRegeneratedToo) {
    becomeModel("RNB-K408");
    importScrambling("<active>0</active>");
    expectSuccess();
    EXPECT_THAT(device.shellCommands(), ElementsAre(kKeyTool));
}

TEST_F(Scramblings, StoredValuesGivenAgainChangeNothing) {
    importScrambling(
        "<active>0</active><mode>even</mode><frequency>60</frequency>"
        "<oddKey>odd</oddKey><evenKey>even</evenKey><date>2020-01-01</date>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kSelectSystem, kSelectKeys));
    expectUnchanged();
}

TEST_F(Scramblings, StoredValuesGivenAgainLeaveAMarkedRowAlone) {
    rows("UPDATE ScramblingGlobal SET Estado = 1; UPDATE ScramblingKeysGlobal SET Estado = 1");
    importScrambling("<active>0</active><oddKey>odd</oddKey>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kSelectSystem, kSelectKeys));
}

TEST_F(Scramblings, AnotherStateIsWrittenToTheModeColumnOfTheSystem) {
    importScrambling("<active>1</active>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        ElementsAre(kSelectSystem, updateOfSystem(" Mode = '1' , Estado = '1' "), kSelectKeys));
}

TEST_F(Scramblings, AMarkedRowIsNotMarkedAgain) {
    rows("UPDATE ScramblingGlobal SET Estado = 1");
    importScrambling("<active>1</active>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), Contains(updateOfSystem(" Mode = '1' ")));
}

TEST_F(Scramblings, EachChangedKeyValueMarksTheRow) {
    const std::pair<const char*, const char*> kValues[] = {
        {"<mode>odd</mode>", " Mode = '1' , Estado = '1' "},
        {"<mode>Odd</mode>", " Mode = '1' , Estado = '1' "},
        {"<mode>TOGGLE</mode>", " Mode = '2' , Estado = '1' "},
        {"<frequency>61</frequency>", " Frequency = '61' , Estado = '1' "},
        // Compared as text.
        {"<frequency>060</frequency>", " Frequency = '060' , Estado = '1' "},
        {"<oddKey>new</oddKey>", " Odd = 'new' , EK_Odd = '' , Estado = '1' "},
        {"<evenKey>new</evenKey>", " Even = 'new' , EK_Even = '' , Estado = '1' "},
        {"<evenKey/>", " Even = '' , EK_Even = '' , Estado = '1' "},
        {"<date>2024-02-29</date>", " Date = '2024-02-29' , Estado = '1' "},
        {"<date>2024-02-29</date><evenKey>e</evenKey><oddKey>o</oddKey><mode>toggle</mode>"
         "<frequency>5</frequency>",
         " Mode = '2' , Frequency = '5' , Odd = 'o' , Even = 'e' , EK_Odd = '' , EK_Even = '' , "
         "Date = '2024-02-29' , Estado = '1' "},
    };
    for (const auto& [children, assignments] : kValues) {
        SCOPED_TRACE(children);
        rows(
            "DELETE FROM ScramblingKeysGlobal; INSERT INTO ScramblingKeysGlobal VALUES (4, 0, 60, "
            "'VSecure', 'odd', 'even', 'shared', 'derived odd', 'derived even', '2020-01-01', 0)");
        importScrambling(children);
        expectSuccess();
        EXPECT_THAT(sectionStatements(),
                    ElementsAre(kSelectSystem, kSelectKeys, updateOfKeys(assignments)));
    }
}

TEST_F(Scramblings, AModeOfEvenIsZero) {
    rows("UPDATE ScramblingKeysGlobal SET Mode = 2");
    importScrambling("<mode>Even</mode>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), Contains(updateOfKeys(" Mode = '0' , Estado = '1' ")));
}

TEST_F(Scramblings, AChangedOddKeyClearsItsDerivedFormAlone) {
    importScrambling("<oddKey>new</oddKey>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM ScramblingKeysGlobal"),
              (Rows{{"4", "0", "60", "VSecure", "new", "even", "shared", "", "derived even",
                     "2020-01-01", "1"}}));
}

TEST_F(Scramblings, MissingRowsAreInserted) {
    rows("DELETE FROM ScramblingGlobal; DELETE FROM ScramblingKeysGlobal");
    importScrambling("");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        ElementsAre(kSelectSystem, insertOfSystem("NULL, 'VSecure', '0', '1'"), kSelectKeys,
                    insertOfKeys("NULL, '0', '0', 'VSecure', '', '', '', '', '', '', '1'")));
}

TEST_F(Scramblings, MissingRowsAreInsertedWithWhatIsGiven) {
    rows("DELETE FROM ScramblingGlobal; DELETE FROM ScramblingKeysGlobal");
    importScrambling(
        "<active>1</active><mode>toggle</mode><frequency>60</frequency>"
        "<oddKey>o%d'</oddKey><evenKey>e</evenKey><date>d</date>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(kSelectSystem, insertOfSystem("NULL, 'VSecure', '1', '1'"), kSelectKeys,
                            insertOfKeys("NULL, '2', '60', 'VSecure', 'o%d''', 'e', '', '', '', "
                                         "'d', '1'")));
}

TEST_F(Scramblings, RowsOfAnotherSystemAreLeftAlone) {
    rows(
        "UPDATE ScramblingGlobal SET ScramblingName = 'Other'; "
        "UPDATE ScramblingKeysGlobal SET System = 'Other'");
    importScrambling("<active>1</active>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM ScramblingGlobal"),
              (Rows{{"3", "Other", "0", "0"}, {"4", "VSecure", "1", "1"}}));
    EXPECT_EQ(cell("SELECT count(*) FROM ScramblingKeysGlobal"), "2");
}

TEST_F(Scramblings, TheSystemsRowsAreFoundInAnyLetterCase) {
    rows("UPDATE ScramblingGlobal SET ScramblingName = 'VSECURE'");
    importScrambling("<active>1</active>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM ScramblingGlobal"), (Rows{{"3", "VSECURE", "1", "1"}}));
}

TEST_F(Scramblings, NullColumnsReadAsZeroAndTheEmptyText) {
    rows(
        "UPDATE ScramblingGlobal SET Mode = NULL, Estado = NULL; UPDATE ScramblingKeysGlobal SET "
        "Mode = NULL, Frequency = NULL, Odd = NULL, Date = NULL, Estado = NULL");
    importScrambling("<active>0</active><mode>even</mode><frequency/><oddKey/><date/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kSelectSystem, kSelectKeys));
}

TEST_F(Scramblings, TheNameIsOfNoImportance) {
    importSections("<scramblings>" + scrambling("<name>Other</name><active>1</active>") +
                   "</scramblings>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM ScramblingGlobal"), (Rows{{"3", "VSecure", "1", "1"}}));
}

TEST_F(Scramblings, AnEmptyNameCountsAsGiven) {
    importSections("<scramblings>" + scrambling("<name/><active>1</active>") + "</scramblings>");
    expectSuccess();
}

TEST_F(Scramblings, OfSeveralElementsTheLastWins) {
    importSections(
        "<scramblings>" + scrambling("<name>a</name><active>1</active><oddKey>first</oddKey>") +
        scrambling("<name>b</name><active>0</active><oddKey>second</oddKey>") + "</scramblings>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM ScramblingGlobal"), (Rows{{"3", "VSecure", "0", "1"}}));
    EXPECT_EQ(cell("SELECT Odd FROM ScramblingKeysGlobal"), "second");
}

TEST_F(Scramblings, NamesAreMatchedInAnyLetterCaseAndTheLastOfANameWins) {
    importSections(
        "<scramblings><SCRAMBLING><NAME>a</NAME><ACTIVE>0</ACTIVE><active>1</active>"
        "<ODDKEY>first</ODDKEY><OddKey>second</OddKey><MODE>odd</MODE>"
        "<mode>even</mode></SCRAMBLING></scramblings>");
    expectSuccess();
    EXPECT_EQ(cell("SELECT Mode FROM ScramblingGlobal"), "1");
    EXPECT_EQ(cell("SELECT Odd || ' ' || Mode FROM ScramblingKeysGlobal"), "second 0");
}

TEST_F(Scramblings, OtherElementsAreIgnored) {
    importScrambling("<colour>2</colour><active>1</active>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        ElementsAre(kSelectSystem, updateOfSystem(" Mode = '1' , Estado = '1' "), kSelectKeys));
}

TEST_F(Scramblings, AnActiveThatIsNotANumberIsZero) {
    importScrambling("<active>yes</active>");
    expectSuccess();
    EXPECT_EQ(cell("SELECT Mode FROM ScramblingGlobal"), "0");
}

TEST_F(Scramblings, KeysAreNeverLogged) {
    platform::debugMask = 0x10;
    device.failStatements("UPDATE ScramblingKeysGlobal", 3, SQLITE_BUSY);
    importScrambling("<oddKey>SECRET1</oddKey><evenKey>SECRET2</evenKey>");
    EXPECT_THAT(device.logLines(), Not(Contains(HasSubstr("SECRET"))));
    EXPECT_THAT(out(), Not(HasSubstr("SECRET")));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(Scramblings, AnotherElementFailsAndUndoesEarlierOnes) {
    becomeModel("RNB-K408");
    importSections("<scramblings>" + scrambling("<name>a</name><active>1</active>") +
                   "<other/></scramblings>");
    expectFailure({{"101 Invalid command", "Error 101, No scrambling element found"}});
}

TEST_F(Scramblings, AnElementWithoutNameFails) {
    importSections("<scramblings>" + scrambling("<active>1</active>") + "</scramblings>");
    expectFailure({{"101 Invalid command: scrambling has no name field",
                    "Error 101, scrambling has no name field"}});
    EXPECT_THAT(sectionStatements(), IsEmpty());
}

TEST_F(Scramblings, AnActiveBeyondOneFails) {
    for (const char* active : {"2", "-1", "11"}) {
        SCOPED_TRACE(active);
        importScrambling(std::string("<active>") + active + "</active><active>1</active>");
        expectFailure({{"103 Invalid value: scrambling/active should be 0/1",
                        "Error 103, scrambling/active should be 0/1"}});
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(Scramblings, AnUnknownModeIsRecordedWith101AndLoggedWith103) {
    for (const char* mode : {"both", "", "1", "odd "}) {
        SCOPED_TRACE(mode);
        importScrambling(std::string("<mode>") + mode + "</mode>");
        expectFailure({{"101 Invalid command: scrambling has no name field",
                        "Error 103, scrambling has no name field"}});
        EXPECT_THAT(codes(), ElementsAre(101, 202));
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(Scramblings, TheFirstBadValueOfTheDocumentIsTheOneRecorded) {
    importScrambling("<mode>both</mode><active>2</active>");
    expectFailure({{"101 Invalid command: scrambling has no name field",
                    "Error 103, scrambling has no name field"}});
}

TEST_F(Scramblings, ASystemThatCannotBeUpdatedDoesNotStopTheKeys) {
    device.failStatements("UPDATE ScramblingGlobal", 3, SQLITE_BUSY);
    importScrambling("<active>1</active><date>new</date>");
    expectFailure({{"102 Could not access database: Could not update ScramblingG",
                    "Error 102, Could not update ScramblingG"}});
    EXPECT_EQ(test::last(sectionStatements()), updateOfKeys(" Date = 'new' , Estado = '1' "));
}

TEST_F(Scramblings, ASystemThatCannotBeInsertedDoesNotStopTheKeys) {
    rows("DELETE FROM ScramblingGlobal");
    device.failStatements("INSERT INTO ScramblingGlobal", 3, SQLITE_FULL);
    importScrambling("<date>new</date>");
    expectFailure({{"102 Could not access database: Could not insert ScramblingG",
                    "Error 102, Could not insert ScramblingG"}});
    EXPECT_EQ(test::last(sectionStatements()), updateOfKeys(" Date = 'new' , Estado = '1' "));
}

TEST_F(Scramblings, KeysThatCannotBeUpdatedFailTheSectionAtItsEnd) {
    becomeModel("RNB-K408");
    device.failStatements("UPDATE ScramblingKeysGlobal", 3, SQLITE_BUSY);
    importSections("<scramblings>" + scrambling("<name>a</name><date>first</date>") +
                   scrambling("<name>b</name><date>second</date>") + "</scramblings>");
    expectFailure({{"102 Could not access database: Could not update ScramblingKG",
                    "Error 102, Could not update ScramblingKG"}});
    EXPECT_EQ(test::last(sectionStatements()), updateOfKeys(" Date = 'second' , Estado = '1' "));
}

TEST_F(Scramblings, KeysThatCannotBeInsertedFailTheSection) {
    rows("DELETE FROM ScramblingKeysGlobal");
    device.failStatements("INSERT INTO ScramblingKeysGlobal", 3, SQLITE_FULL);
    importScrambling("<active>1</active>");
    expectFailure({{"102 Could not access database: Could not insert ScramblingKG",
                    "Error 102, Could not insert ScramblingKG"}});
}

TEST_F(Scramblings, BothWritesThatFailAreRecordedInTheirOrder) {
    device.failStatements("UPDATE ", 6, SQLITE_BUSY);
    importScrambling("<active>1</active><date>new</date>");
    expectFailure({{"102 Could not access database: Could not update ScramblingG",
                    "Error 102, Could not update ScramblingG"},
                   {"102 Could not access database: Could not update ScramblingKG",
                    "Error 102, Could not update ScramblingKG"}});
}

TEST_F(Scramblings, FailuresAreToldInTheDebugLogWithTheLoggedCode) {
    platform::debugMask = 0x10;
    importScrambling("<mode>both</mode>");
    EXPECT_THAT(device.logLines(),
                testing::IsSupersetOf(
                    {"3: Command error: 101 Invalid command: scrambling has no name field",
                     "3: Error 103, scrambling has no name field"}));
    importSections("<scramblings><other/></scramblings>");
    EXPECT_THAT(device.logLines(), Contains("3: Error 101, No scrambling element found"));
}

}  // namespace
