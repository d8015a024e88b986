#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <ctime>

#include "support/export_checks.h"
#include "support/export_fixture.h"

namespace tarvo_remote_control {

namespace {

using test::addNullRow;
using test::isOneOf;
using test::leaf;
using test::selectsFrom;
using test::Texts;

const std::string kFolder = "/tarvo/datosWeb/tablasSI/";
const std::string kReceivedNit = kFolder + "NIT_table_CPLUS";
const std::string kReceivedBat = kFolder + "BAT_table_CPLUS";

// A file's content with `byte` at the end and 0xFF ahead of it: a wrong place shows as 31.
std::string fileWith(std::size_t ahead, unsigned char byte) {
    return std::string(ahead, '\xFF') + static_cast<char>(byte);
}
std::string receivedTable(unsigned char byte) { return fileWith(5, byte) + "\xFF\xFF"; }
std::string generatedTable(unsigned char byte) { return fileWith(21, byte) + "\xFF\xFF"; }

class DvbNetworksExport : public test::ExportTest {
  protected:
    DvbNetworksExport() { setTimeZone("UTC"); }
    ~DvbNetworksExport() override {
        if (timeZoneBefore_) {
            setTimeZone(*timeZoneBefore_);
        } else {
            unsetenv("TZ");
            tzset();
        }
    }

    static void setTimeZone(const std::string& zone) {
        setenv("TZ", zone.c_str(), 1);
        tzset();
    }

    // A network whose only values are its key 1 and its identifier, an SQL literal.
    void insertNetwork(const std::string& nid) {
        insertConfig("RedesCabecera", "idRed, NID", "1, " + nid);
    }

    void setModificationTime(const std::string& devicePath, std::time_t time) const {
        const timespec times[] = {{time, 0}, {time, 0}};
        ASSERT_EQ(utimensat(AT_FDCWD, device.path(devicePath).c_str(), times, 0), 0);
    }

    // An element of the only network.
    std::string exportedPart(const std::string& name) {
        return exported("dvbNetworks/dvbNetwork/" + name);
    }

  private:
    static std::optional<std::string> timeZone() {
        const char* zone = getenv("TZ");
        return zone == nullptr ? std::nullopt : std::optional<std::string>(zone);
    }

    std::optional<std::string> timeZoneBefore_ = timeZone();
};

}  // namespace

// --- The row ---------------------------------------------------------------------------------

TEST_F(DvbNetworksExport, ARowGivesOneElementWithItsColumns) {
    insertConfig("RedesCabecera",
                 "idRed, NombreRed, NID, ONID_Out, NIT_Patron, Version_NIT_Patron, Tipo_NIT_Patron,"
                 " Auto_Service_List, LCN_Offset, LCN_Mode, LCN_Type, Force_ServiceName,"
                 " NIT_Version, NIT_Data_Source, TV_Type, CI_TV_Type, LG_comp_VSecure, Block_PIDs,"
                 " Decrypt_PIDs, CellID, NIT_Follow, estado",
                 "11, 'Hotel', 12, 13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 2, 4,"
                 " 27, 28, 29");
    EXPECT_EQ(exported("dvbNetworks"),
              "<dvbNetworks><dvbNetwork><id>11</id><nid>12</nid><onidOut>13</onidOut>"
              "<name>Hotel</name><ciplusTVs>25</ciplusTVs><tvType>24</tvType><cellID>27</cellID>"
              "<forceServiceName>21</forceServiceName><autoServiceList>17</autoServiceList>"
              "<lcnOffset>18</lcnOffset><lcnMode>19</lcnMode>"
              "<tipoNITPatron>16</tipoNITPatron><nitPatron>14</nitPatron>"
              "<versionNITPatron>15</versionNITPatron>"
              "<autoBlockPIDs><text>0</text><subtitles>1</subtitles><data>0</data>"
              "</autoBlockPIDs>"
              "<autoDecryptPIDs><text>0</text><subtitles>0</subtitles><data>1</data>"
              "</autoDecryptPIDs>"
              "<InputVersionNIT>Not Found</InputVersionNIT>"
              "<InputVersionBAT>Not Found</InputVersionBAT>"
              "<OutputVersionNIT>Not Found</OutputVersionNIT></dvbNetwork></dvbNetworks>");
}

TEST_F(DvbNetworksExport, AnIdentifierThatLeadsElsewhereHasNoTable) {
    insertNetwork("'x/12'");
    device.writeFile(kFolder + "NIT_table_x/12", generatedTable(0x06));
    EXPECT_EQ(exportedPart("OutputVersionNIT"), "<OutputVersionNIT>Not Found</OutputVersionNIT>");
    EXPECT_EQ(exportedPart("OutputNITDate"), "");
}

TEST_F(DvbNetworksExport, TheModelDecidesWhichElementsANetworkHas) {
    const std::string ofAll = "id nid onidOut name ciplusTVs ";
    const std::string exceptRnb =
        "tvType cellID forceServiceName autoServiceList lcnOffset lcnMode tipoNITPatron nitPatron"
        " versionNITPatron ";
    const std::string received = "InputVersionNIT InputVersionBAT ";
    const std::string generated = "OutputVersionNIT OutputNITDate";
    const std::string familyA =
        ofAll + exceptRnb + "autoBlockPIDs autoDecryptPIDs " + received + generated;
    const std::string others = ofAll + exceptRnb + "autoBlockPIDs autoDecryptPIDs " + generated;
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"QRA-310", familyA},
        {"LMV-502", familyA},
        {"PKD-707", familyA},
        {"RNB-K408", ofAll + "autoBlockPIDs autoDecryptPIDs"},
        {"WVX-AQ4", others},
        {"LMV-512", others},
        {"WVX-BQ4", ofAll + exceptRnb + "autoBlockPIDs " + generated},
        {"XYZ-1", others}};
    insertNetwork("12");
    device.writeFile(kReceivedNit, receivedTable(0));
    device.writeFile(kReceivedBat, receivedTable(0));
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0));
    for (const auto& [model, names] : cases) {
        SCOPED_TRACE(model);
        becomeModel(model);
        exportConfiguration();
        EXPECT_EQ(childNames("dvbNetworks/dvbNetwork"), names);
    }
}

TEST_F(DvbNetworksExport, IsWrittenOnAllModels) {
    for (const std::string& model : test::kModels) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(exported("dvbNetworks"), "<dvbNetworks/>");
    }
}

TEST_F(DvbNetworksExport, EveryRowIsWrittenWhateverItsState) {
    insertConfig("RedesCabecera", "idRed, NombreRed, estado", "2, 'b', 0");
    insertConfig("RedesCabecera", "idRed, NombreRed, estado", "1, 'a', 3");
    exportConfiguration();
    EXPECT_EQ(childNames("dvbNetworks"), "dvbNetwork dvbNetwork");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork/name"), "<name>a</name>");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork[2]/name"), "<name>b</name>");
    EXPECT_EQ(selectsFrom(device, {"RedesCabecera"}), Texts{"SELECT * FROM RedesCabecera "});
}

TEST_F(DvbNetworksExport, ValuesAreWrittenAsStored) {
    insertConfig("RedesCabecera", "idRed, NombreRed, CellID, LCN_Offset",
                 "1, ' <Red> & 50% %s \xF1 ', 'cell', -4");
    EXPECT_EQ(exportedPart("name"), "<name> &lt;Red&gt; &amp; 50% %s \xF1 </name>");
    EXPECT_EQ(exportedPart("cellID"), "<cellID>cell</cellID>");
    EXPECT_EQ(exportedPart("lcnOffset"), "<lcnOffset>-4</lcnOffset>");
}

TEST_F(DvbNetworksExport, NullColumnsGiveEmptyElementsAndEmptyMasks) {
    addNullRow(device, tarvodb::kConfigDatabase, "RedesCabecera");
    EXPECT_EQ(exported("dvbNetworks/dvbNetwork"),
              "<dvbNetwork><id/><nid/><onidOut/><name/><ciplusTVs/><tvType/><cellID/>"
              "<forceServiceName/><autoServiceList/><lcnOffset/><lcnMode/><tipoNITPatron/>"
              "<nitPatron/><versionNITPatron/>"
              "<autoBlockPIDs><text>0</text><subtitles>0</subtitles><data>0</data>"
              "</autoBlockPIDs>"
              "<autoDecryptPIDs><text>0</text><subtitles>0</subtitles><data>0</data>"
              "</autoDecryptPIDs>"
              "<InputVersionNIT>Not Found</InputVersionNIT>"
              "<InputVersionBAT>Not Found</InputVersionBAT>"
              "<OutputVersionNIT>Not Found</OutputVersionNIT></dvbNetwork>");
}

TEST_F(DvbNetworksExport, ColumnsBehindTheKnownOnesAreNotRead) {
    device.execute(tarvodb::kConfigDatabase,
                   "ALTER TABLE RedesCabecera ADD COLUMN Nuevo DEFAULT 'new'");
    becomeModel("RNB-K408");
    insertNetwork("12");
    EXPECT_EQ(exported("dvbNetworks/dvbNetwork"),
              "<dvbNetwork><id>1</id><nid>12</nid><onidOut/><name/><ciplusTVs/>"
              "<autoBlockPIDs><text>0</text><subtitles>0</subtitles><data>0</data>"
              "</autoBlockPIDs>"
              "<autoDecryptPIDs><text>0</text><subtitles>0</subtitles><data>0</data>"
              "</autoDecryptPIDs></dvbNetwork>");
}

TEST_F(DvbNetworksExport, IsEmptyWithoutItsTable) {
    insertNetwork("1");
    device.failStatements("SELECT * FROM RedesCabecera ", 3, SQLITE_BUSY, "");
    EXPECT_EQ(exported("dvbNetworks"), "<dvbNetworks/>");
    EXPECT_TRUE(command().errors().empty());
    EXPECT_EQ(device.logLines(), test::failedSelectLog("RedesCabecera"));
    EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));

    device.execute(tarvodb::kConfigDatabase, "DROP TABLE RedesCabecera");
    EXPECT_EQ(exported("dvbNetworks"), "<dvbNetworks/>");
    EXPECT_TRUE(command().errors().empty());
}

// --- Masks -----------------------------------------------------------------------------------

TEST_F(DvbNetworksExport, EachBitOfAMaskIsAnElement) {
    struct MaskCase {
        std::string literal;
        std::string text, subtitles, data;
    };
    const std::vector<MaskCase> cases = {
        {"0", "0", "0", "0"},     {"1", "1", "0", "0"},      {"2", "0", "1", "0"},
        {"3", "1", "1", "0"},     {"4", "0", "0", "1"},      {"5", "1", "0", "1"},
        {"6", "0", "1", "1"},     {"7", "1", "1", "1"},      {"8", "0", "0", "0"},
        {"13", "1", "0", "1"},    {"-1", "1", "1", "1"},     {"NULL", "0", "0", "0"},
        {"'all'", "0", "0", "0"}, {"'2all'", "0", "1", "0"},
    };
    insertNetwork("1");
    for (const MaskCase& each : cases) {
        SCOPED_TRACE(each.literal);
        const std::string bits =
            leaf("text", each.text) + leaf("subtitles", each.subtitles) + leaf("data", each.data);
        updateConfig("RedesCabecera", "Decrypt_PIDs = 0, Block_PIDs = " + each.literal);
        EXPECT_EQ(exportedPart("autoBlockPIDs"), leaf("autoBlockPIDs", bits));
        updateConfig("RedesCabecera", "Block_PIDs = 0, Decrypt_PIDs = " + each.literal);
        EXPECT_EQ(exportedPart("autoDecryptPIDs"), leaf("autoDecryptPIDs", bits));
    }
}

// --- Versions of the SI tables ---------------------------------------------------------------

TEST_F(DvbNetworksExport, TheVersionIsTheFiveBitsAboveTheLowestOfItsByte) {
    const std::vector<std::pair<unsigned char, std::string>> cases = {
        {0x00, "0"},  {0x01, "0"},  {0x02, "1"},  {0x0B, "5"}, {0x3E, "31"},
        {0x3F, "31"}, {0x40, "0"},  {0x80, "0"},  {0xC1, "0"}, {0xCB, "5"},
        {0xC2, "1"},  {0xFF, "31"}, {0xDF, "15"}, {0xE1, "16"}};
    insertNetwork("12");
    for (const auto& [byte, version] : cases) {
        SCOPED_TRACE(static_cast<int>(byte));
        device.writeFile(kReceivedNit, receivedTable(byte));
        EXPECT_EQ(exportedPart("InputVersionNIT"), leaf("InputVersionNIT", version));
        device.writeFile(kReceivedBat, receivedTable(byte));
        EXPECT_EQ(exportedPart("InputVersionBAT"), leaf("InputVersionBAT", version));
        device.writeFile(kFolder + "NIT_table_12", generatedTable(byte));
        EXPECT_EQ(exportedPart("OutputVersionNIT"), leaf("OutputVersionNIT", version));
    }
}

TEST_F(DvbNetworksExport, EachVersionComesFromItsOwnFile) {
    insertNetwork("12");
    device.writeFile(kReceivedNit, receivedTable(0x02));
    device.writeFile(kReceivedBat, receivedTable(0x04));
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0x06));
    EXPECT_EQ(exportedPart("InputVersionNIT"), "<InputVersionNIT>1</InputVersionNIT>");
    EXPECT_EQ(exportedPart("InputVersionBAT"), "<InputVersionBAT>2</InputVersionBAT>");
    EXPECT_EQ(exportedPart("OutputVersionNIT"), "<OutputVersionNIT>3</OutputVersionNIT>");
}

TEST_F(DvbNetworksExport, TheGeneratedTableIsThatOfTheNetworkIdentifier) {
    insertConfig("RedesCabecera", "idRed, NID", "12, 34");
    insertConfig("RedesCabecera", "idRed, NID", "34, 56");
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0x02));
    device.writeFile(kFolder + "NIT_table_34", generatedTable(0x04));
    exportConfiguration();
    EXPECT_EQ(element("dvbNetworks/dvbNetwork/OutputVersionNIT"),
              "<OutputVersionNIT>2</OutputVersionNIT>");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork[2]/OutputVersionNIT"),
              "<OutputVersionNIT>Not Found</OutputVersionNIT>");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork[2]/OutputNITDate"), "");
}

TEST_F(DvbNetworksExport, AFileThatIsAbsentEmptyOrTooShortIsNotFound) {
    insertNetwork("12");
    const std::string generated = kFolder + "NIT_table_12";
    const auto expectNotFound = [this] {
        EXPECT_EQ(exportedPart("InputVersionNIT"), "<InputVersionNIT>Not Found</InputVersionNIT>");
        EXPECT_EQ(exportedPart("InputVersionBAT"), "<InputVersionBAT>Not Found</InputVersionBAT>");
        EXPECT_EQ(exportedPart("OutputVersionNIT"),
                  "<OutputVersionNIT>Not Found</OutputVersionNIT>");
    };
    expectNotFound();

    for (const std::string& path : {kReceivedNit, kReceivedBat, generated}) {
        device.writeFile(path, "");
    }
    expectNotFound();

    device.writeFile(kReceivedNit, std::string(5, '\x0B'));
    device.writeFile(kReceivedBat, std::string(5, '\x0B'));
    device.writeFile(generated, std::string(21, '\x0B'));
    expectNotFound();
}

TEST_F(DvbNetworksExport, AFileThatEndsWithItsVersionByteHasAVersion) {
    insertNetwork("12");
    device.writeFile(kReceivedNit, fileWith(5, 0x0B));
    device.writeFile(kReceivedBat, fileWith(5, 0x0D));
    device.writeFile(kFolder + "NIT_table_12", fileWith(21, 0x0F));
    EXPECT_EQ(exportedPart("InputVersionNIT"), "<InputVersionNIT>5</InputVersionNIT>");
    EXPECT_EQ(exportedPart("InputVersionBAT"), "<InputVersionBAT>6</InputVersionBAT>");
    EXPECT_EQ(exportedPart("OutputVersionNIT"), "<OutputVersionNIT>7</OutputVersionNIT>");
}

TEST_F(DvbNetworksExport, ZeroBytesAndLineEndsAheadOfTheVersionCount) {
    insertNetwork("12");
    device.writeFile(kReceivedNit, std::string("\0\n\r\x1A\0\x0B", 6));
    device.writeFile(kFolder + "NIT_table_12", std::string(21, '\0') + '\x0A');
    EXPECT_EQ(exportedPart("InputVersionNIT"), "<InputVersionNIT>5</InputVersionNIT>");
    EXPECT_EQ(exportedPart("OutputVersionNIT"), "<OutputVersionNIT>5</OutputVersionNIT>");
}

// --- Date of the generated table -------------------------------------------------------------

TEST_F(DvbNetworksExport, TheDateIsTheModificationTimeOfTheGeneratedTable) {
    insertNetwork("12");
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0x0B));
    setModificationTime(kFolder + "NIT_table_12", 1700000000);
    EXPECT_EQ(exportedPart("OutputNITDate"), "<OutputNITDate>14-11-23 22:13:20</OutputNITDate>");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork/OutputVersionNIT"),
              "<OutputVersionNIT>5</OutputVersionNIT>");
}

TEST_F(DvbNetworksExport, EachPartOfTheDateHasTwoDigits) {
    insertNetwork("12");
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0));
    setModificationTime(kFolder + "NIT_table_12", 981173106);  // 2001-02-03 04:05:06
    EXPECT_EQ(exportedPart("OutputNITDate"), "<OutputNITDate>03-02-01 04:05:06</OutputNITDate>");
}

TEST_F(DvbNetworksExport, TheDateIsInLocalTime) {
    insertNetwork("12");
    device.writeFile(kFolder + "NIT_table_12", generatedTable(0));
    setModificationTime(kFolder + "NIT_table_12", 1700000000);
    setTimeZone("XXX-2");  // two hours ahead of UTC: the next day
    EXPECT_EQ(exportedPart("OutputNITDate"), "<OutputNITDate>15-11-23 00:13:20</OutputNITDate>");
    setTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
    EXPECT_EQ(exportedPart("OutputNITDate"), "<OutputNITDate>14-11-23 23:13:20</OutputNITDate>");
    setModificationTime(kFolder + "NIT_table_12", 1656624309);  // 2022-06-30 21:25:09, in summer
    EXPECT_EQ(exportedPart("OutputNITDate"), "<OutputNITDate>30-06-22 23:25:09</OutputNITDate>");
}

TEST_F(DvbNetworksExport, ThereIsNoDateWithoutTheGeneratedTable) {
    insertNetwork("12");
    device.writeFile(kReceivedNit, receivedTable(0));
    EXPECT_EQ(exportedPart("OutputNITDate"), "");
    EXPECT_NE(element("dvbNetworks/dvbNetwork"), "");
}

TEST_F(DvbNetworksExport, AGeneratedTableWithoutVersionStillHasADate) {
    insertNetwork("12");
    const std::string path = kFolder + "NIT_table_12";
    for (const char* content : {"", "too short"}) {
        SCOPED_TRACE(content);
        device.writeFile(path, content);
        setModificationTime(path, 1700000000);
        EXPECT_EQ(exportedPart("OutputVersionNIT"),
                  "<OutputVersionNIT>Not Found</OutputVersionNIT>");
        EXPECT_EQ(element("dvbNetworks/dvbNetwork/OutputNITDate"),
                  "<OutputNITDate>14-11-23 22:13:20</OutputNITDate>");
    }
}

TEST_F(DvbNetworksExport, AFolderInPlaceOfTheGeneratedTableHasADateOnly) {
    insertNetwork("12");
    const std::string path = kFolder + "NIT_table_12";
    std::filesystem::create_directories(device.path(path));
    setModificationTime(path, 1700000000);
    EXPECT_EQ(exportedPart("OutputVersionNIT"), "<OutputVersionNIT>Not Found</OutputVersionNIT>");
    EXPECT_EQ(element("dvbNetworks/dvbNetwork/OutputNITDate"),
              "<OutputNITDate>14-11-23 22:13:20</OutputNITDate>");
}

}  // namespace tarvo_remote_control
