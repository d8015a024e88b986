// The sections that are lists of all rows of one table.
#include "support/export_checks.h"
#include "support/headend_lists.h"

namespace tarvo_remote_control {

namespace {

using test::addNullRow;
using test::HeadendLists;
using test::kAllButWvxb;
using test::selectsFrom;
using test::Texts;

const Texts kFamilyA = {"QRA-310", "LMV-502", "PKD-707"};

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

}  // namespace tarvo_remote_control
