#include "support/export_checks.h"
#include "support/headend_lists.h"

namespace tarvo_remote_control {

namespace {

using test::addNullRow;
using test::HeadendLists;
using test::kAllButWvxb;
using test::selectsFrom;
using test::Texts;

class ScramblingsExport : public HeadendLists {
  protected:
    static constexpr const char* kTable = "ScramblingKeysGlobal";

    void insertKeys(const std::string& values) {
        insertConfig(kTable,
                     "idScramblingKeys, Mode, Frequency, System, Odd, Even, K_Shared, EK_Odd,"
                     " EK_Even, Date, Estado",
                     values);
    }
    void insertSystem(const std::string& values) {
        insertConfig("ScramblingGlobal", "idScrambling, ScramblingName, Mode, Estado", values);
    }
    // A key row where only its system's name matters; an SQL literal.
    void insertKeysOf(const std::string& system) {
        insertConfig(kTable, "Mode, System", "0, " + system);
    }
    [[nodiscard]] Texts systemSelects() const { return selectsFrom(device, {"ScramblingGlobal"}); }
};

}  // namespace

TEST_F(ScramblingsExport, IsWrittenOnAllModelsButWvxb) {
    expectSectionOn("scramblings", kAllButWvxb);
}

TEST_F(ScramblingsExport, AKeyRowGivesOneElementWithoutItsEncryptedForms) {
    insertKeys("1, 1, 30, 'VSecure', 'odd 0A', 'even 0B', 'ks', 'eo', 'ee', '2024-05-06', 7");
    insertSystem("5, 'VSecure', 1, 0");
    EXPECT_EQ(exported("scramblings"),
              "<scramblings><scrambling><name>VSecure</name><active>1</active><mode>odd</mode>"
              "<frequency>30</frequency><oddKey>odd 0A</oddKey><evenKey>even 0B</evenKey>"
              "<date>2024-05-06</date></scrambling></scramblings>");
}

TEST_F(ScramblingsExport, EveryKeyRowIsWrittenWithItsOwnSystem) {
    insertKeys("2, 0, 0, 'B', '', '', '', '', '', '', 0");
    insertKeys("1, 0, 0, 'A', '', '', '', '', '', '', 3");
    insertSystem("1, 'B', 1, 3");
    insertSystem("2, 'A', 0, 0");
    exportConfiguration();
    EXPECT_EQ(childNames("scramblings"), "scrambling scrambling");
    EXPECT_EQ(element("scramblings/scrambling/name"), "<name>A</name>");
    EXPECT_EQ(element("scramblings/scrambling/active"), "<active>0</active>");
    EXPECT_EQ(element("scramblings/scrambling[2]/name"), "<name>B</name>");
    EXPECT_EQ(element("scramblings/scrambling[2]/active"), "<active>1</active>");
}

TEST_F(ScramblingsExport, TheSystemOfEachKeyRowIsSelectedByName) {
    insertKeysOf("'A'");
    insertKeysOf("'it''s 5% %Q \"so\"'");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, {"ScramblingKeysGlobal", "ScramblingGlobal"}),
              (Texts{"SELECT * FROM ScramblingKeysGlobal ",
                     "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE 'A' ",
                     "SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE"
                     " 'it''s 5% %Q \"so\"' "}));
}

TEST_F(ScramblingsExport, WithoutKeyRowsNoSystemIsSelected) {
    insertSystem("1, 'A', 1, 0");
    EXPECT_EQ(exported("scramblings"), "<scramblings/>");
    EXPECT_EQ(systemSelects(), Texts{});
}

TEST_F(ScramblingsExport, ModeIsATextOfItsCode) {
    insertKeysOf("'A'");
    expectTexts(kTable, "Mode", "scramblings/scrambling/mode",
                {{"0", "even"},
                 {"1", "odd"},
                 {"2", "toggle"},
                 {"3", ""},
                 {"-1", ""},
                 {"NULL", "even"},
                 {"'x'", "even"},
                 {"'2x'", "toggle"}});
}

TEST_F(ScramblingsExport, AKeyWithoutSystemRowIsInactive) {
    insertKeysOf("'A'");
    insertSystem("1, 'B', 1, 0");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active>0</active>");
}

TEST_F(ScramblingsExport, TheFirstOfSeveralSystemRowsCounts) {
    insertKeysOf("'A'");
    insertSystem("2, 'A', 1, 0");
    insertSystem("1, 'A', 7, 0");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active>7</active>");
}

TEST_F(ScramblingsExport, TheModeOfTheSystemIsWrittenAsStored) {
    insertKeysOf("'A'");
    insertSystem("1, 'A', 'on', 0");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active>on</active>");
    updateConfig("ScramblingGlobal", "Mode = NULL");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active/>");
}

TEST_F(ScramblingsExport, SystemNamesAreComparedWithoutRegardToCase) {
    insertKeysOf("'vsecure'");
    insertSystem("1, 'VSecure', 1, 0");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active>1</active>");
}

TEST_F(ScramblingsExport, APercentSignInASystemNameIsAWildcard) {
    insertKeysOf("'V%'");
    insertSystem("1, 'VSecure', 1, 0");
    EXPECT_EQ(exported("scramblings/scrambling"),
              "<scrambling><name>V%</name><active>1</active><mode>even</mode><frequency/><oddKey/>"
              "<evenKey/><date/></scrambling>");
}

TEST_F(ScramblingsExport, ControlWordsAreWrittenAsStored) {
    insertKeys("1, 0, 0, '<S>', ' 0a 0B ', '%x&\xE1', '', '', '', '1''2', 0");
    EXPECT_EQ(exported("scramblings/scrambling/name"), "<name>&lt;S&gt;</name>");
    EXPECT_EQ(element("scramblings/scrambling/oddKey"), "<oddKey> 0a 0B </oddKey>");
    EXPECT_EQ(element("scramblings/scrambling/evenKey"), "<evenKey>%x&amp;\xE1</evenKey>");
}

TEST_F(ScramblingsExport, NullColumnsGiveEmptyElementsAndAskForTheEmptyName) {
    addNullRow(device, tarvodb::kConfigDatabase, kTable);
    addNullRow(device, tarvodb::kConfigDatabase, "ScramblingGlobal");
    EXPECT_EQ(exported("scramblings/scrambling"),
              "<scrambling><name/><active>0</active><mode>even</mode><frequency/><oddKey/>"
              "<evenKey/><date/></scrambling>");
    EXPECT_EQ(systemSelects(),
              Texts{"SELECT * FROM ScramblingGlobal  WHERE ScramblingName LIKE '' "});
}

TEST_F(ScramblingsExport, ColumnsBehindTheKnownOnesAreNotRead) {
    for (const char* table : {"ScramblingKeysGlobal", "ScramblingGlobal"}) {
        device.execute(tarvodb::kConfigDatabase,
                       std::string("ALTER TABLE ") + table + " ADD COLUMN Nuevo DEFAULT 'new'");
    }
    insertKeys("1, 2, 3, 'A', 'o', 'e', '', '', '', 'd', 0");
    insertSystem("1, 'A', 1, 0");
    EXPECT_EQ(exported("scramblings/scrambling"),
              "<scrambling><name>A</name><active>1</active><mode>toggle</mode>"
              "<frequency>3</frequency><oddKey>o</oddKey><evenKey>e</evenKey><date>d</date>"
              "</scrambling>");
}

TEST_F(ScramblingsExport, IsEmptyWithoutItsTable) { expectEmptyWithout(kTable, "scramblings"); }

TEST_F(ScramblingsExport, AKeyIsInactiveWhenItsSystemCannotBeRead) {
    insertKeysOf("'A'");
    insertSystem("1, 'A', 1, 0");
    device.failStatements("SELECT * FROM ScramblingGlobal ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exported("scramblings/scrambling/active"), "<active>0</active>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("ScramblingGlobal"));
}

}  // namespace tarvo_remote_control
