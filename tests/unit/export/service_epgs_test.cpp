#include <sqlite3.h>

#include "support/export_checks.h"
#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using test::addNullRow;
using test::leaf;
using test::selectsFrom;
using test::Texts;

const Texts kTables = {"Service_EPG", "Service_EPG_Satellite", "Service_EPG_audios",
                       "Service_EPG_replacing"};

class ServiceEpgsExport : public test::ExportTest {
  protected:
    // A service whose only values are its key and its reference to a satellite; SQL literals.
    void insertService(const std::string& id, const std::string& satellite) {
        insertConfig("Service_EPG", "idService_EPG, fk_idService_EPG_Satellite",
                     id + ", " + satellite);
    }
    void insertSatellite(const std::string& values) {
        insertConfig("Service_EPG_Satellite",
                     "idService_EPG_Satellite, TSID, ONID, Frequency, SymbolRate, Polaridad,"
                     " Orbita, West_East_Flag, Estado",
                     values);
    }
    void insertAudio(const std::string& values) {
        insertConfig("Service_EPG_audios",
                     "idService_EPG_audios_EPG, fk_idService_EPG, Language_code, Audio_Type,"
                     " Estado",
                     values);
    }
    void insertReplacing(const std::string& values) {
        insertConfig("Service_EPG_replacing",
                     "idService_EPG_replacing, fk_idService_EPG, replacing_epg_channel_id, Estado",
                     values);
    }
    // Drops the key of the satellites' table, so that several rows may answer one reference.
    void letSatellitesShareAKey() {
        addNullRow(device, tarvodb::kConfigDatabase, "Service_EPG_Satellite");
        device.execute(tarvodb::kConfigDatabase, "DELETE FROM Service_EPG_Satellite");
    }

    // The sub-section of the only service.
    std::string exportedPart(const std::string& name) {
        return exported("serviceEPGs/serviceEPG/" + name);
    }
};

}  // namespace

TEST_F(ServiceEpgsExport, IsWrittenOnFamilyAOnly) {
    const Texts familyA = {"QRA-310", "LMV-502", "PKD-707"};
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(exported("serviceEPGs"), test::isOneOf(model, familyA) ? "<serviceEPGs/>" : "");
        EXPECT_EQ(selectsFrom(device, kTables),
                  test::isOneOf(model, familyA) ? Texts{"SELECT * FROM Service_EPG "} : Texts{});
    }
}

TEST_F(ServiceEpgsExport, ARowGivesOneElementWithItsColumnsAndThreeSubSections) {
    insertConfig("Service_EPG",
                 "idService_EPG, ONID, TSID, SID, EPG, LCN, fk_idService_EPG_Satellite, Video_Type,"
                 " Video_peak_bitrate, Service_type, Nombre, Proveedor",
                 "11, 12, 13, 14, 15, 16, 17, 18, 19, 20, 'La 1', 'RTVE'");
    insertSatellite("17, 21, 22, 23, 24, 1, 25, 26, 27");
    insertAudio("31, 11, 'spa', 32, 33");
    insertReplacing("41, 11, 42, 43");
    EXPECT_EQ(exported("serviceEPGs"),
              "<serviceEPGs><serviceEPG><onid>12</onid><tsid>13</tsid><sid>14</sid><epg>15</epg>"
              "<lcn>16</lcn><videoType>18</videoType><videoPeakBitrate>19</videoPeakBitrate>"
              "<serviceType>20</serviceType><name>La 1</name><provider>RTVE</provider>"
              "<satelliteEPG><onid>22</onid><tsid>21</tsid><frequency>23</frequency>"
              "<symbolrate>24</symbolrate><polarity>horizontal</polarity><orbit>25</orbit>"
              "<westEastFlag>26</westEastFlag></satelliteEPG>"
              "<audiosEPGs><audiosEPG><languageCode>spa</languageCode><audioType>32</audioType>"
              "</audiosEPG></audiosEPGs>"
              "<replacingEPGs><replacingEPG><replacingEpgChannelId>42</replacingEpgChannelId>"
              "</replacingEPG></replacingEPGs></serviceEPG></serviceEPGs>");
}

TEST_F(ServiceEpgsExport, EveryRowIsWrittenInTheOrderReturned) {
    insertConfig("Service_EPG", "idService_EPG, Nombre", "2, 'b'");
    insertConfig("Service_EPG", "idService_EPG, Nombre", "1, 'a'");
    exportConfiguration();
    EXPECT_EQ(childNames("serviceEPGs"), "serviceEPG serviceEPG");
    EXPECT_EQ(element("serviceEPGs/serviceEPG/name"), "<name>a</name>");
    EXPECT_EQ(element("serviceEPGs/serviceEPG[2]/name"), "<name>b</name>");
}

TEST_F(ServiceEpgsExport, TheSubSectionsOfEachServiceAreSelectedInTheirOrder) {
    insertService("3", "70");
    insertService("4", "71");
    exportConfiguration();
    EXPECT_EQ(
        selectsFrom(device, kTables),
        (Texts{"SELECT * FROM Service_EPG ",
               "SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '70' ",
               "SELECT * FROM Service_EPG_audios  WHERE fk_idService_EPG LIKE '3' ",
               "SELECT * FROM Service_EPG_replacing  WHERE fk_idService_EPG LIKE '3' ",
               "SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '71' ",
               "SELECT * FROM Service_EPG_audios  WHERE fk_idService_EPG LIKE '4' ",
               "SELECT * FROM Service_EPG_replacing  WHERE fk_idService_EPG LIKE '4' "}));
}

TEST_F(ServiceEpgsExport, AServiceWithoutOtherRowsHasEmptySubSections) {
    insertService("1", "9");
    insertSatellite("8, 0, 0, 0, 0, 0, 0, 0, 0");
    insertAudio("1, 2, 'spa', 0, 0");
    insertReplacing("1, 2, 5, 0");
    EXPECT_EQ(exportedPart("satelliteEPG"), "<satelliteEPG/>");
    EXPECT_EQ(exportedPart("audiosEPGs"), "<audiosEPGs/>");
    EXPECT_EQ(exportedPart("replacingEPGs"), "<replacingEPGs/>");
}

TEST_F(ServiceEpgsExport, TextsAreWrittenAsStored) {
    insertConfig("Service_EPG", "idService_EPG, Nombre, Proveedor, LCN",
                 "1, ' 24h & <M\xE1s> 50% ', '%s%s', 'none'");
    EXPECT_EQ(exportedPart("name"), "<name> 24h &amp; &lt;M\xE1s&gt; 50% </name>");
    EXPECT_EQ(exportedPart("provider"), "<provider>%s%s</provider>");
    EXPECT_EQ(exportedPart("lcn"), "<lcn>none</lcn>");
}

TEST_F(ServiceEpgsExport, NullColumnsOfAServiceGiveEmptyElements) {
    addNullRow(device, tarvodb::kConfigDatabase, "Service_EPG");
    EXPECT_EQ(exported("serviceEPGs/serviceEPG"),
              "<serviceEPG><onid/><tsid/><sid/><epg/><lcn/><videoType/><videoPeakBitrate/>"
              "<serviceType/><name/><provider/><satelliteEPG/><audiosEPGs/><replacingEPGs/>"
              "</serviceEPG>");
}

TEST_F(ServiceEpgsExport, ANullReferenceIsAskedForAsTheEmptyTextANullKeyAsNull) {
    addNullRow(device, tarvodb::kConfigDatabase, "Service_EPG");
    exportConfiguration();
    EXPECT_EQ(selectsFrom(device, kTables),
              (Texts{"SELECT * FROM Service_EPG ",
                     "SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '' ",
                     "SELECT * FROM Service_EPG_audios  WHERE fk_idService_EPG LIKE NULL ",
                     "SELECT * FROM Service_EPG_replacing  WHERE fk_idService_EPG LIKE NULL "}));
}

TEST_F(ServiceEpgsExport, AQuoteInAReferenceIsDoubled) {
    insertService("1", "'7''%Q'");
    exportConfiguration();
    EXPECT_EQ(
        selectsFrom(device, {"Service_EPG_Satellite"}),
        Texts{"SELECT * FROM Service_EPG_Satellite  WHERE idService_EPG_Satellite LIKE '7''%Q' "});
}

TEST_F(ServiceEpgsExport, SeveralSatelliteRowsStandOneAfterTheOtherInOneElement) {
    letSatellitesShareAKey();
    insertService("1", "7");
    insertSatellite("7, 1, 2, 3, 4, 0, 5, 6, 0");
    insertSatellite("7, 11, 12, 13, 14, 1, 15, 16, 3");
    EXPECT_EQ(exportedPart("satelliteEPG"),
              "<satelliteEPG><onid>2</onid><tsid>1</tsid><frequency>3</frequency>"
              "<symbolrate>4</symbolrate><polarity>vertical</polarity><orbit>5</orbit>"
              "<westEastFlag>6</westEastFlag><onid>12</onid><tsid>11</tsid>"
              "<frequency>13</frequency><symbolrate>14</symbolrate>"
              "<polarity>horizontal</polarity><orbit>15</orbit><westEastFlag>16</westEastFlag>"
              "</satelliteEPG>");
    EXPECT_EQ(childNames("serviceEPGs/serviceEPG"),
              "onid tsid sid epg lcn videoType videoPeakBitrate serviceType name provider"
              " satelliteEPG audiosEPGs replacingEPGs");
}

TEST_F(ServiceEpgsExport, PolarityOfASatelliteIsATextOfItsCode) {
    insertService("1", "7");
    insertSatellite("7, 0, 0, 0, 0, 0, 0, 0, 0");
    expectTexts("Service_EPG_Satellite", "Polaridad",
                "serviceEPGs/serviceEPG/satelliteEPG/polarity", test::kPolarityCases);
}

TEST_F(ServiceEpgsExport, NullColumnsOfASatelliteGiveEmptyElementsAndCodeZero) {
    insertService("1", "7");
    insertConfig("Service_EPG_Satellite", "idService_EPG_Satellite", "7");
    EXPECT_EQ(exportedPart("satelliteEPG"),
              "<satelliteEPG><onid/><tsid/><frequency/><symbolrate/><polarity>vertical</polarity>"
              "<orbit/><westEastFlag/></satelliteEPG>");
}

TEST_F(ServiceEpgsExport, EveryAudioOfTheServiceIsWrittenWhateverItsState) {
    insertService("1", "0");
    insertAudio("2, 1, 'eng', 4, 3");
    insertAudio("1, 1, 'spa', 5, 0");
    insertAudio("3, 2, 'fra', 6, 0");
    EXPECT_EQ(exportedPart("audiosEPGs"),
              "<audiosEPGs><audiosEPG><languageCode>spa</languageCode><audioType>5</audioType>"
              "</audiosEPG><audiosEPG><languageCode>eng</languageCode><audioType>4</audioType>"
              "</audiosEPG></audiosEPGs>");
}

TEST_F(ServiceEpgsExport, NullColumnsOfAnAudioGiveEmptyElements) {
    insertService("1", "0");
    insertConfig("Service_EPG_audios", "fk_idService_EPG", "1");
    insertConfig("Service_EPG_audios", "Language_code", "'of no service'");
    EXPECT_EQ(exportedPart("audiosEPGs"),
              "<audiosEPGs><audiosEPG><languageCode/><audioType/></audiosEPG></audiosEPGs>");
}

TEST_F(ServiceEpgsExport, EveryReplacementOfTheServiceIsWrittenWhateverItsState) {
    insertService("1", "0");
    insertReplacing("2, 1, 22, 3");
    insertReplacing("1, 1, 21, 0");
    insertReplacing("3, 2, 23, 0");
    EXPECT_EQ(exportedPart("replacingEPGs"),
              "<replacingEPGs><replacingEPG><replacingEpgChannelId>21</replacingEpgChannelId>"
              "</replacingEPG><replacingEPG><replacingEpgChannelId>22</replacingEpgChannelId>"
              "</replacingEPG></replacingEPGs>");
}

TEST_F(ServiceEpgsExport, NullColumnsOfAReplacementGiveEmptyElements) {
    insertService("1", "0");
    insertConfig("Service_EPG_replacing", "fk_idService_EPG", "1");
    insertConfig("Service_EPG_replacing", "replacing_epg_channel_id", "5");
    EXPECT_EQ(exportedPart("replacingEPGs"),
              "<replacingEPGs><replacingEPG><replacingEpgChannelId/></replacingEPG>"
              "</replacingEPGs>");
}

TEST_F(ServiceEpgsExport, ColumnsBehindTheKnownOnesAreNotRead) {
    for (const std::string& table : kTables) {
        device.execute(tarvodb::kConfigDatabase,
                       "ALTER TABLE " + table + " ADD COLUMN Nuevo DEFAULT 'new'");
    }
    insertService("1", "7");
    insertSatellite("7, 1, 2, 3, 4, 0, 5, 6, 0");
    insertAudio("1, 1, 'spa', 5, 0");
    insertReplacing("1, 1, 21, 0");
    EXPECT_EQ(exported("serviceEPGs/serviceEPG"),
              "<serviceEPG><onid/><tsid/><sid/><epg/><lcn/><videoType/><videoPeakBitrate/>"
              "<serviceType/><name/><provider/><satelliteEPG><onid>2</onid><tsid>1</tsid>"
              "<frequency>3</frequency><symbolrate>4</symbolrate><polarity>vertical</polarity>"
              "<orbit>5</orbit><westEastFlag>6</westEastFlag></satelliteEPG><audiosEPGs>"
              "<audiosEPG><languageCode>spa</languageCode><audioType>5</audioType></audiosEPG>"
              "</audiosEPGs><replacingEPGs><replacingEPG>"
              "<replacingEpgChannelId>21</replacingEpgChannelId></replacingEPG></replacingEPGs>"
              "</serviceEPG>");
}

TEST_F(ServiceEpgsExport, IsEmptyWhenTheServicesCannotBeRead) {
    insertService("1", "7");
    device.failStatements("SELECT * FROM Service_EPG ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exported("serviceEPGs"), "<serviceEPGs/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("Service_EPG"));
    EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));
}

TEST_F(ServiceEpgsExport, ASubSectionIsEmptyWhenItsRowsCannotBeRead) {
    insertService("1", "7");
    insertSatellite("7, 1, 2, 3, 4, 0, 5, 6, 0");
    insertAudio("1, 1, 'spa', 5, 0");
    insertReplacing("1, 1, 21, 0");
    const std::vector<std::pair<std::string, std::string>> parts = {
        {"Service_EPG_Satellite", "satelliteEPG"},
        {"Service_EPG_audios", "audiosEPGs"},
        {"Service_EPG_replacing", "replacingEPGs"}};
    for (const auto& [table, part] : parts) {
        SCOPED_TRACE(table);
        device.failStatements("SELECT * FROM " + table + " ", 3, SQLITE_BUSY, "");
        EXPECT_EQ(exportedPart(part), "<" + part + "/>");
        EXPECT_TRUE(command().errors().empty());
        EXPECT_EQ(device.logLines(), test::failedSelectLog(table));
    }
}

TEST_F(ServiceEpgsExport, MissingTablesGiveEmptySections) {
    insertService("1", "7");
    for (const char* table :
         {"Service_EPG_Satellite", "Service_EPG_audios", "Service_EPG_replacing"}) {
        device.execute(tarvodb::kConfigDatabase, std::string("DROP TABLE ") + table);
    }
    EXPECT_EQ(exportedPart("satelliteEPG"), "<satelliteEPG/>");
    EXPECT_EQ(exportedPart("audiosEPGs"), "<audiosEPGs/>");
    EXPECT_EQ(exportedPart("replacingEPGs"), "<replacingEPGs/>");
    device.execute(tarvodb::kConfigDatabase, "DROP TABLE Service_EPG");
    EXPECT_EQ(exported("serviceEPGs"), "<serviceEPGs/>");
    EXPECT_TRUE(command().errors().empty());
}

}  // namespace tarvo_remote_control
