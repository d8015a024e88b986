#include <sqlite3.h>

#include "support/export_checks.h"
#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using test::addNullRow;
using test::isOneOf;
using test::leaf;
using test::selectsFrom;
using test::Texts;

class HeadendLists : public test::ExportTest {
  protected:
    // Exports on every model and expects the section on those models only.
    void expectSectionOn(const std::string& section, const Texts& models) {
        for (const std::string& model : test::kModels) {
            SCOPED_TRACE(model);
            becomeModel(model);
            EXPECT_EQ(exported(section), isOneOf(model, models) ? "<" + section + "/>" : "");
        }
    }

    // A section whose table is missing, or cannot be read, has no rows and reports nothing.
    void expectEmptyWithout(const std::string& table, const std::string& section) {
        device.failStatements("SELECT * FROM " + table + " ", 3, SQLITE_BUSY, "");
        EXPECT_EQ(exported(section), "<" + section + "/>");
        EXPECT_TRUE(command().errors().empty());
        EXPECT_EQ(device.logLines(), test::failedSelectLog(table));
        EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));

        device.execute(tarvodb::kConfigDatabase, "DROP TABLE " + table);
        EXPECT_EQ(exported(section), "<" + section + "/>");
        EXPECT_TRUE(command().errors().empty());
    }
};

const Texts kFamilyA = {"QRA-310", "LMV-502", "PKD-707"};
const Texts kAllButWvxb = {"QRA-310", "LMV-502", "PKD-707", "RNB-K408",
                           "WVX-AQ4", "LMV-512", "XYZ-1"};

class HomeChannelsExport : public HeadendLists {
  protected:
    static constexpr const char* kTable = "MantenimientoHomeChannelsGlobal";
    void insertRow(const std::string& values) {
        insertConfig(kTable,
                     "idMantenimiento, Frequency, Orbita, Polaridad, Banda, SymbolRate, ONID, TSID,"
                     " Estado",
                     values);
    }
};

class DiseqcsExport : public HeadendLists {
  protected:
    static constexpr const char* kTable = "DiSEqCGlobal";
    void insertRow(const std::string& values) {
        insertConfig(kTable, "idDiSEqCGlobal, Nombre, Posicion, Orbita, Polaridad, Banda, Estado",
                     values);
    }
};

class PreferredLanguagesExport : public HeadendLists {
  protected:
    static constexpr const char* kTable = "AudioLanguageListGlobal";
};

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

// --- Home channels ---------------------------------------------------------------------------

TEST_F(HomeChannelsExport, IsWrittenOnFamilyAOnly) { expectSectionOn("homeChannels", kFamilyA); }

TEST_F(HomeChannelsExport, ARowGivesOneElementWithItsColumns) {
    insertRow("11, 12, 13, 1, 0, 14, 15, 16, 17");
    EXPECT_EQ(exported("homeChannels"),
              "<homeChannels><homechannel><id>11</id><frequency>12</frequency><orbit>13</orbit>"
              "<polarity>horizontal</polarity><band>low</band><symbolrate>14</symbolrate>"
              "<onid>15</onid><tsid>16</tsid></homechannel></homeChannels>");
}

TEST_F(HomeChannelsExport, EveryRowIsWrittenWhateverItsState) {
    insertRow("2, 0, 0, 0, 0, 0, 0, 0, 0");
    insertRow("1, 0, 0, 0, 0, 0, 0, 0, 3");
    exportConfiguration();
    EXPECT_EQ(childNames("homeChannels"), "homechannel homechannel");
    EXPECT_EQ(element("homeChannels/homechannel/id"), "<id>1</id>");
    EXPECT_EQ(element("homeChannels/homechannel[2]/id"), "<id>2</id>");
}

TEST_F(HomeChannelsExport, IsReadWithOneUnconditionalSelect) {
    insertRow("1, 0, 0, 0, 0, 0, 0, 0, 0");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, {kTable}), Texts{std::string("SELECT * FROM ") + kTable + " "});
}

TEST_F(HomeChannelsExport, PolarityIsATextOfItsCode) {
    insertRow("1, 0, 0, 0, 0, 0, 0, 0, 0");
    expectTexts(kTable, "Polaridad", "homeChannels/homechannel/polarity", test::kPolarityCases);
}

TEST_F(HomeChannelsExport, BandIsATextOfItsCode) {
    insertRow("1, 0, 0, 0, 0, 0, 0, 0, 0");
    expectTexts(kTable, "Banda", "homeChannels/homechannel/band", test::kBandCases);
}

TEST_F(HomeChannelsExport, NumbersAreWrittenAsStored) {
    insertRow("1, '12,5', 'east', 0, 0, -3, '', 99999999999, 0");
    EXPECT_EQ(exported("homeChannels/homechannel"),
              "<homechannel><id>1</id><frequency>12,5</frequency><orbit>east</orbit>"
              "<polarity>vertical</polarity><band>low</band><symbolrate>-3</symbolrate><onid/>"
              "<tsid>99999999999</tsid></homechannel>");
}

TEST_F(HomeChannelsExport, NullColumnsGiveEmptyElementsAndCodeZero) {
    addNullRow(device, tarvodb::kConfigDatabase, kTable);
    EXPECT_EQ(exported("homeChannels/homechannel"),
              "<homechannel><id/><frequency/><orbit/><polarity>vertical</polarity><band>low</band>"
              "<symbolrate/><onid/><tsid/></homechannel>");
}

TEST_F(HomeChannelsExport, ColumnsBehindTheKnownOnesAreNotRead) {
    device.execute(tarvodb::kConfigDatabase,
                   std::string("ALTER TABLE ") + kTable + " ADD COLUMN Nuevo DEFAULT 'new'");
    insertRow("1, 2, 3, 0, 0, 4, 5, 6, 7");
    EXPECT_EQ(exported("homeChannels/homechannel"),
              "<homechannel><id>1</id><frequency>2</frequency><orbit>3</orbit>"
              "<polarity>vertical</polarity><band>low</band><symbolrate>4</symbolrate>"
              "<onid>5</onid><tsid>6</tsid></homechannel>");
}

TEST_F(HomeChannelsExport, IsEmptyWithoutItsTable) { expectEmptyWithout(kTable, "homeChannels"); }

// --- Dish switch positions -------------------------------------------------------------------

TEST_F(DiseqcsExport, IsWrittenOnAllModelsButWvxb) { expectSectionOn("diseqcs", kAllButWvxb); }

TEST_F(DiseqcsExport, ARowGivesOneElementWithItsColumns) {
    insertRow("11, 'Astra', 12, 13, 0, 1, 14");
    EXPECT_EQ(exported("diseqcs"),
              "<diseqcs><diseqc><id>11</id><position>12</position><name>Astra</name>"
              "<orbit>13</orbit><polarity>vertical</polarity><band>high</band></diseqc></diseqcs>");
}

TEST_F(DiseqcsExport, EveryRowIsWrittenWhateverItsState) {
    insertRow("2, 'b', 0, 0, 0, 0, 0");
    insertRow("1, 'a', 0, 0, 0, 0, 3");
    exportConfiguration();
    EXPECT_EQ(childNames("diseqcs"), "diseqc diseqc");
    EXPECT_EQ(element("diseqcs/diseqc/name"), "<name>a</name>");
    EXPECT_EQ(element("diseqcs/diseqc[2]/name"), "<name>b</name>");
}

TEST_F(DiseqcsExport, IsReadWithOneUnconditionalSelect) {
    insertRow("1, 'a', 0, 0, 0, 0, 0");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, {kTable}), Texts{"SELECT * FROM DiSEqCGlobal "});
}

TEST_F(DiseqcsExport, PolarityIsATextOfItsCode) {
    insertRow("1, '', 0, 0, 0, 0, 0");
    expectTexts(kTable, "Polaridad", "diseqcs/diseqc/polarity", test::kPolarityCases);
}

TEST_F(DiseqcsExport, BandIsATextOfItsCode) {
    insertRow("1, '', 0, 0, 0, 0, 0");
    expectTexts(kTable, "Banda", "diseqcs/diseqc/band", test::kBandCases);
}

TEST_F(DiseqcsExport, TheNameIsWrittenAsStored) {
    insertRow("1, ' 100% of %s \xC3\xB1\xE9 ', 0, 0, 0, 0, 0");
    EXPECT_EQ(exported("diseqcs/diseqc/name"), "<name> 100% of %s \xC3\xB1\xE9 </name>");
    updateConfig(kTable, "Nombre = 'a&b<c>d''e\"f'");
    EXPECT_EQ(exported("diseqcs/diseqc/name"), "<name>a&amp;b&lt;c&gt;d&apos;e&quot;f</name>");
}

TEST_F(DiseqcsExport, NullColumnsGiveEmptyElementsAndCodeZero) {
    addNullRow(device, tarvodb::kConfigDatabase, kTable);
    EXPECT_EQ(exported("diseqcs/diseqc"),
              "<diseqc><id/><position/><name/><orbit/><polarity>vertical</polarity>"
              "<band>low</band></diseqc>");
}

TEST_F(DiseqcsExport, ColumnsBehindTheKnownOnesAreNotRead) {
    device.execute(tarvodb::kConfigDatabase,
                   "ALTER TABLE DiSEqCGlobal ADD COLUMN Nuevo DEFAULT 'new'");
    insertRow("1, 'a', 2, 3, 1, 1, 4");
    EXPECT_EQ(exported("diseqcs/diseqc"),
              "<diseqc><id>1</id><position>2</position><name>a</name><orbit>3</orbit>"
              "<polarity>horizontal</polarity><band>high</band></diseqc>");
}

TEST_F(DiseqcsExport, IsEmptyWithoutItsTable) { expectEmptyWithout(kTable, "diseqcs"); }

// --- Preferred languages ---------------------------------------------------------------------

TEST_F(PreferredLanguagesExport, IsWrittenOnAllModels) {
    expectSectionOn("preferredLanguages", test::kModels);
}

TEST_F(PreferredLanguagesExport, ARowGivesOneLeafDirectlyInTheSection) {
    insertConfig(kTable, "idALLG, AudioCode", "2, 'eng'");
    insertConfig(kTable, "idALLG, AudioCode", "1, 'spa'");
    EXPECT_EQ(exported("preferredLanguages"),
              "<preferredLanguages><language>spa</language><language>eng</language>"
              "</preferredLanguages>");
    EXPECT_EQ(selectsFrom(device, {kTable}), Texts{"SELECT * FROM AudioLanguageListGlobal "});
}

TEST_F(PreferredLanguagesExport, TheCodeIsWrittenAsStored) {
    insertConfig(kTable, "AudioCode", "' q&a 50%\xF1'");
    EXPECT_EQ(exported("preferredLanguages/language"), "<language> q&amp;a 50%\xF1</language>");
}

TEST_F(PreferredLanguagesExport, ANullCodeGivesAnEmptyElement) {
    addNullRow(device, tarvodb::kConfigDatabase, kTable);
    EXPECT_EQ(exported("preferredLanguages"),
              "<preferredLanguages><language/></preferredLanguages>");
}

TEST_F(PreferredLanguagesExport, ColumnsBehindTheKnownOnesAreNotRead) {
    device.execute(tarvodb::kConfigDatabase,
                   "ALTER TABLE AudioLanguageListGlobal ADD COLUMN Nuevo DEFAULT 'new'");
    insertConfig(kTable, "idALLG, AudioCode", "1, 'spa'");
    EXPECT_EQ(exported("preferredLanguages"),
              "<preferredLanguages><language>spa</language></preferredLanguages>");
}

TEST_F(PreferredLanguagesExport, IsEmptyWithoutItsTable) {
    expectEmptyWithout(kTable, "preferredLanguages");
}

// --- Scrambling keys -------------------------------------------------------------------------

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
