#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using Rows = std::vector<test::Row>;

constexpr const char* kDelete = "DELETE FROM RedesCabecera";
constexpr const char* kSiTables = "/tarvo/datosWeb/tablasSI/";

std::string selectOf(const std::string& id) {
    return "SELECT * FROM RedesCabecera  WHERE idRed LIKE '" + id + "' ";
}

std::string insertOf(const std::string& values) {
    return "INSERT INTO RedesCabecera (idRed, NombreRed, NID, ONID_Out, NIT_Patron, "
           "Version_NIT_Patron, Tipo_NIT_Patron, Auto_Service_List, LCN_Offset, LCN_Mode, "
           "LCN_Type, Force_ServiceName, NIT_Version, NIT_Data_Source, TV_Type, CI_TV_Type, "
           "LG_comp_VSecure, Block_PIDs, Decrypt_PIDs, CellID, NIT_Follow, estado)  VALUES (" +
           values + " )";
}

class DvbNetworks : public test::SectionImportTest {
  protected:
    // A stored network whose columns all differ.
    DvbNetworks() {
        rows(
            "INSERT INTO RedesCabecera VALUES (1, 'Net', 100, 101, 1, 3, 1, 2, 10, 4, 5, 6, 7, 8, "
            "9, 11, 12, 5, 7, 14, 15, 0)");
    }

    // Imports one element with these children.
    void importNetwork(const std::string& children) {
        importSections("<dvbNetworks><dvbNetwork>" + children + "</dvbNetwork></dvbNetworks>");
    }

    // A column of the one network.
    [[nodiscard]] std::string column(const std::string& name) const {
        return cell("SELECT " + name + " FROM RedesCabecera");
    }

    void expectChangeLine(const std::string& parameters) {
        EXPECT_THAT(changeLines(),
                    ElementsAre("61: REMOTE_CONTROL::: New network parameters: " + parameters));
    }
};

TEST_F(DvbNetworks, AnEmptySectionDeletesEveryNetwork) {
    importSections("<dvbNetworks/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete));
    EXPECT_THAT(stored("SELECT * FROM RedesCabecera"), IsEmpty());
    EXPECT_THAT(changeLines(), IsEmpty());
}

TEST_F(DvbNetworks, RowsAreSelectedThenTheTableIsEmptiedThenFilledInTheOrderOfTheDocument) {
    importSections(
        "<dvbNetworks><dvbNetwork><id>9</id></dvbNetwork>"
        "<dvbNetwork><id>1</id></dvbNetwork></dvbNetworks>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        ElementsAre(selectOf("9"), selectOf("1"), kDelete,
                    insertOf("'9', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, "
                             "NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, '1'"),
                    insertOf("'1', 'Net', '100', '101', '1', '3', '1', '2', '10', '4', '5', '6', "
                             "'7', '8', '9', '11', '12', '5', '7', '14', '15', '0'")));
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New network parameters: idRed=9,",
                                           "61: REMOTE_CONTROL::: New network parameters: "));
}

TEST_F(DvbNetworks, AnUnchangedNetworkIsLoggedAndStaysUnmarked) {
    const Rows before = stored("SELECT * FROM RedesCabecera");
    importNetwork(
        "<id>1</id><nid>100</nid><onidOut>101</onidOut><name>Net</name>"
        "<ciplusTVs>11</ciplusTVs><tvType>9</tvType><cellID>14</cellID>"
        "<forceServiceName>6</forceServiceName><autoServiceList>2</autoServiceList>"
        "<lcnOffset>10</lcnOffset><lcnMode>4</lcnMode><tipoNITPatron>1</tipoNITPatron>"
        "<nitPatron>1</nitPatron><versionNITPatron>3</versionNITPatron>"
        "<autoBlockPIDs><text>1</text><subtitles>0</subtitles><data>1</data>"
        "</autoBlockPIDs>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT * FROM RedesCabecera"), before);
    expectChangeLine("");
    EXPECT_THAT(device.eventsOf("rename: "), IsEmpty());
}

TEST_F(DvbNetworks, EachChangedValueMarksTheRowAndIsToldUnderItsLabel) {
    struct Value {
        const char* children;
        const char* column;
        const char* stored;
        const char* told;
    };
    constexpr Value kValues[] = {
        {"<nid>200</nid>", "NID", "200", "nid=200,"},
        {"<onidOut>201</onidOut>", "ONID_Out", "201", ""},
        {"<name>Other</name>", "NombreRed", "Other", "name=Other,"},
        {"<ciplusTVs>0</ciplusTVs>", "CI_TV_Type", "0", "ciplusTVs=0,"},
        {"<tvType>2</tvType>", "TV_Type", "2", "tvType=2,"},
        {"<cellID>2</cellID>", "CellID", "2", "cellID=2,"},
        {"<forceServiceName>1</forceServiceName>", "Force_ServiceName", "1",
         "forcedServiceName=1,"},
        {"<autoServiceList>1</autoServiceList>", "Auto_Service_List", "1", "autoServiceList=1,"},
        {"<autoServiceList>-6</autoServiceList>", "Auto_Service_List", "-6", "autoServiceList=-6,"},
        {"<lcnOffset>20</lcnOffset>", "LCN_Offset", "20", "lcnOffset=20,"},
        {"<lcnMode>1</lcnMode>", "LCN_Mode", "1", "lcnMode=1,"},
        {"<tipoNITPatron>1</tipoNITPatron><nitPatron>3</nitPatron>", "NIT_Patron", "3",
         "nitPatron=3,"},
        {"<nitPatron>1</nitPatron><versionNITPatron>4</versionNITPatron>", "Version_NIT_Patron",
         "4", "versionNITPatron=4,"},
        {"<autoBlockPIDs><subtitles>1</subtitles></autoBlockPIDs>", "Block_PIDs", "7",
         "autoBlockPIDsMask=7,"},
        {"<autoDecryptPIDs><text>0</text></autoDecryptPIDs>", "Decrypt_PIDs", "6",
         "autoDecryptPIDsMask=6,"},
    };
    for (const auto& [children, name, value, told] : kValues) {
        SCOPED_TRACE(children);
        rows(
            "DELETE FROM RedesCabecera; INSERT INTO RedesCabecera VALUES (1, 'Net', 100, 101, 1, "
            "3, 1, 2, 10, 4, 5, 6, 7, 8, 9, 11, 12, 5, 7, 14, 15, 0)");
        importNetwork(std::string("<id>1</id>") + children);
        expectSuccess();
        EXPECT_EQ(column(name), value);
        EXPECT_EQ(column("estado"), "1");
        expectChangeLine(told);
    }
}

TEST_F(DvbNetworks, ThePatternTypeIsSetAndToldUnderItsLabel) {
    rows("UPDATE RedesCabecera SET Tipo_NIT_Patron = 0");
    importNetwork("<id>1</id><tipoNITPatron>1</tipoNITPatron>");
    expectSuccess();
    EXPECT_EQ(column("Tipo_NIT_Patron"), "1");
    expectChangeLine("tipoNITPatron=1,");
}

TEST_F(DvbNetworks, ChangesAreToldInTheirOwnOrderWhateverTheOrderOfTheElements) {
    importNetwork(
        "<autoDecryptPIDs><text>1</text></autoDecryptPIDs>"
        "<autoBlockPIDs><data>1</data></autoBlockPIDs>"
        "<tipoNITPatron>1</tipoNITPatron><nitPatron>2</nitPatron>"
        "<versionNITPatron>3</versionNITPatron><lcnMode>4</lcnMode>"
        "<lcnOffset>5</lcnOffset><autoServiceList>6</autoServiceList>"
        "<forceServiceName>7</forceServiceName><cellID>8</cellID><tvType>9</tvType>"
        "<ciplusTVs>10</ciplusTVs><name>A &amp; B, 5%</name><onidOut>11</onidOut>"
        "<nid>12</nid><id>9</id>");
    expectSuccess();
    expectChangeLine(
        "idRed=9,nid=12,name=A & B, 5%,ciplusTVs=10,tvType=9,cellID=8,"
        "forcedServiceName=7,autoServiceList=6,lcnOffset=5,lcnMode=4,"
        "tipoNITPatron=1,nitPatron=2,versionNITPatron=3,autoBlockPIDsMask=4,"
        "autoDecryptPIDsMask=1,");
    EXPECT_EQ(test::last(sectionStatements()),
              insertOf("'9', 'A & B, 5%', '12', '11', '2', '3', '1', '6', '5', '4', NULL, '7', "
                       "NULL, NULL, '9', '10', NULL, '4', '1', '8', NULL, '1'"));
}

TEST_F(DvbNetworks, ANumberOfZeroNeverReplacesAStoredOne) {
    importNetwork(
        "<id>1</id><tvType>0</tvType><cellID>0</cellID>"
        "<forceServiceName>0</forceServiceName><autoServiceList>0</autoServiceList>"
        "<lcnOffset>0</lcnOffset><lcnMode>0</lcnMode><tipoNITPatron>0</tipoNITPatron>"
        "<nitPatron>0</nitPatron><versionNITPatron>0</versionNITPatron>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT TV_Type, CellID, Force_ServiceName, Auto_Service_List, LCN_Offset, "
                     "LCN_Mode, Tipo_NIT_Patron, NIT_Patron, Version_NIT_Patron, estado FROM "
                     "RedesCabecera"),
              (Rows{{"9", "14", "6", "2", "10", "4", "1", "1", "3", "0"}}));
    expectChangeLine("");
}

TEST_F(DvbNetworks, ANumberThatIsNoneCountsAsZero) {
    importNetwork("<id>1</id><lcnOffset>many</lcnOffset><cellID/>");
    expectSuccess();
    EXPECT_EQ(column("LCN_Offset || ' ' || CellID"), "10 14");
}

TEST_F(DvbNetworks, NumbersAreComparedAsNumbersAndStoredInDecimal) {
    importNetwork("<id>1</id><lcnOffset>010</lcnOffset><cellID>007</cellID>");
    expectSuccess();
    expectChangeLine("cellID=7,");
    EXPECT_EQ(column("LCN_Offset || ' ' || CellID"), "10 7");
}

TEST_F(DvbNetworks, TextsAreComparedAsTexts) {
    importNetwork("<id>1</id><onidOut>0101</onidOut>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), Contains(testing::HasSubstr("'1', 'Net', '100', '0101'")));
    EXPECT_EQ(column("estado"), "1");
}

TEST_F(DvbNetworks, AnEmptyTextForANullColumnChangesNothing) {
    rows("UPDATE RedesCabecera SET NombreRed = NULL, NID = NULL");
    importNetwork("<id>1</id><name/><nid/>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT NombreRed, NID, estado FROM RedesCabecera"),
              (Rows{{std::nullopt, std::nullopt, "0"}}));
    EXPECT_THAT(device.eventsOf("rename: "), IsEmpty());
}

TEST_F(DvbNetworks, AnEmptyTextForANewNetworkLeavesTheColumnNull) {
    importNetwork("<id>9</id><name/><nid/><onidOut/><ciplusTVs/>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        Contains(insertOf("'9', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, "
                          "NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, '1'")));
    EXPECT_THAT(changeLines(),
                ElementsAre("61: REMOTE_CONTROL::: New network parameters: idRed=9,"));
    EXPECT_THAT(device.eventsOf("rename: "), IsEmpty());
}

TEST_F(DvbNetworks, NamesAreMatchedInAnyLetterCaseAndTheLastOfANameWins) {
    importSections(
        "<dvbNetworks><DVBNETWORK><ID>9</ID><Id>1</Id><NAME>First</NAME>"
        "<name>Second</name><LCNMODE>8</LCNMODE><lcnMode>9</lcnMode>"
        "<AutoBlockPids><TEXT>1</TEXT></AutoBlockPids>"
        "<autoBlockPIDs><SUBTITLES>1</SUBTITLES></autoBlockPIDs></DVBNETWORK>"
        "</dvbNetworks>");
    expectSuccess();
    expectChangeLine("name=Second,lcnMode=9,autoBlockPIDsMask=7,");
}

TEST_F(DvbNetworks, OtherElementsAreIgnored) {
    importNetwork("<id>1</id><colour>7</colour><nid>200</nid>");
    expectSuccess();
    EXPECT_EQ(column("NID"), "200");
}

TEST_F(DvbNetworks, ALaterZeroOverwritesAnEarlierNumber) {
    importNetwork("<id>1</id><lcnMode>8</lcnMode><lcnMode>0</lcnMode>");
    expectSuccess();
    EXPECT_EQ(column("LCN_Mode"), "4");
}

// --- Masks -----------------------------------------------------------------------------------

TEST_F(DvbNetworks, AMaskChangesInTheGivenBitsOnly) {
    struct Mask {
        const char* stored;
        const char* children;
        const char* becomes;
        const char* estado;
    };
    constexpr Mask kMasks[] = {
        {"5", "<subtitles>1</subtitles>", "7", "1"},
        {"7", "<subtitles>0</subtitles>", "5", "1"},
        {"7", "", "7", "0"},
        {"5", "<text>1</text><subtitles>0</subtitles><data>1</data>", "5", "0"},
        {"5", "<text>0</text><subtitles>1</subtitles><data>0</data>", "2", "1"},
        {"0", "<text>1</text>", "1", "1"},
        {"0", "<data>1</data>", "4", "1"},
        {"NULL", "<data>1</data>", "4", "1"},
        {"NULL", "<data>0</data>", "NULL", "0"},
        // Bits that no element names stay.
        {"24", "<text>1</text>", "25", "1"},
        // Only "1" sets a bit.
        {"7", "<text>yes</text>", "6", "1"},
        {"7", "<text>01</text>", "6", "1"},
        {"7", "<text/>", "6", "1"},
        {"7", "<other>0</other>", "7", "0"},
    };
    const std::pair<const char*, const char*> kElements[] = {{"autoBlockPIDs", "Block_PIDs"},
                                                             {"autoDecryptPIDs", "Decrypt_PIDs"}};
    for (const auto& [element, name] : kElements) {
        for (const auto& [value, children, becomes, estado] : kMasks) {
            SCOPED_TRACE(std::string(element) + " " + value + " " + children);
            rows(std::string("UPDATE RedesCabecera SET estado = 0, ") + name + " = " + value);
            importNetwork(std::string("<id>1</id><") + element + ">" + children + "</" + element +
                          ">");
            expectSuccess();
            EXPECT_EQ(column(name), becomes);
            EXPECT_EQ(column("estado"), estado);
        }
    }
}

// --- Renaming of the network's tables --------------------------------------------------------

TEST_F(DvbNetworks, AnotherIdentifierRenamesTheTableFilesAtOnce) {
    device.writeFile(std::string(kSiTables) + "NIT_table_100", "nit");
    device.writeFile(std::string(kSiTables) + "SDT_table_100", "sdt");
    importNetwork("<id>1</id><nid>200</nid>");
    expectSuccess();
    EXPECT_EQ(device.readFile(std::string(kSiTables) + "NIT_table_200"), "nit");
    EXPECT_EQ(device.readFile(std::string(kSiTables) + "SDT_table_200"), "sdt");
    const auto& events = device.events();
    ASSERT_GE(events.size(), 8U);
    EXPECT_THAT(std::vector(events.begin() + 2, events.begin() + 8),
                ElementsAre("sql: " + selectOf("1"),
                            "rename: /tarvo/datosWeb/tablasSI/NIT_table_100 "
                            "/tarvo/datosWeb/tablasSI/NIT_table_200",
                            "rename: /tarvo/datosWeb/tablasSI/SDT_table_100 "
                            "/tarvo/datosWeb/tablasSI/SDT_table_200",
                            "sync", "log 61: REMOTE_CONTROL::: New network parameters: nid=200,",
                            std::string("sql: ") + kDelete));
}

TEST_F(DvbNetworks, ANewNetworksTablesAreRenamedFromTheEmptyIdentifier) {
    importNetwork("<id>9</id><nid>200</nid>");
    expectSuccess();
    EXPECT_THAT(device.eventsOf("rename: "), ElementsAre("/tarvo/datosWeb/tablasSI/NIT_table_ "
                                                         "/tarvo/datosWeb/tablasSI/NIT_table_200",
                                                         "/tarvo/datosWeb/tablasSI/SDT_table_ "
                                                         "/tarvo/datosWeb/tablasSI/SDT_table_200"));
}

TEST_F(DvbNetworks, TheRenamingIsNotUndoneByARollback) {
    device.writeFile(std::string(kSiTables) + "NIT_table_100", "nit");
    importNetwork("<id>1</id><nid>200</nid></dvbNetwork><dvbNetwork>");
    expectFailure({{"101 Invalid command: dvbNetwork has no id field",
                    "Error 103, dvbNetwork has no id field"}});
    EXPECT_EQ(device.readFile(std::string(kSiTables) + "NIT_table_200"), "nit");
    EXPECT_FALSE(device.exists(std::string(kSiTables) + "NIT_table_100"));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(DvbNetworks, AnotherElementFailsBeforeAnythingIsDeleted) {
    importSections("<dvbNetworks><dvbNetwork><id>1</id></dvbNetwork><network/></dvbNetworks>");
    expectFailure({{"101 Invalid command", "Error 101, No dvbNetwork element found"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("1")));
}

TEST_F(DvbNetworks, ANetworkWithoutIdIsRecordedWith101AndLoggedWith103) {
    importNetwork("<nid>200</nid>");
    expectFailure({{"101 Invalid command: dvbNetwork has no id field",
                    "Error 103, dvbNetwork has no id field"}});
    EXPECT_THAT(sectionStatements(), IsEmpty());
    EXPECT_THAT(codes(), ElementsAre(101, 202));
}

TEST_F(DvbNetworks, AnEmptyIdCountsAsGiven) {
    importNetwork("<id/>");
    EXPECT_EQ(sectionStatements().at(0), selectOf(""));
}

TEST_F(DvbNetworks, APatternTypeIsZeroOrOne) {
    for (const char* type : {"2", "-1", "10"}) {
        SCOPED_TRACE(type);
        importNetwork(std::string("<id>1</id><tipoNITPatron>") + type + "</tipoNITPatron>");
        expectFailure({{"103 Invalid value: tipoNITPatron not allowed value detected",
                        "Error 103, tipoNITPatron not allowed value detected"}});
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(DvbNetworks, APatternIsZeroOrOneUnlessACustomTypeCameBefore) {
    constexpr const char* kRejected[] = {
        "<nitPatron>2</nitPatron>", "<nitPatron>-1</nitPatron>",
        "<tipoNITPatron>0</tipoNITPatron><nitPatron>2</nitPatron>",
        "<nitPatron>2</nitPatron><tipoNITPatron>1</tipoNITPatron>",
        "<tipoNITPatron>1</tipoNITPatron><tipoNITPatron>0</tipoNITPatron><nitPatron>2</nitPatron>"};
    for (const char* children : kRejected) {
        SCOPED_TRACE(children);
        importNetwork(std::string("<id>1</id>") + children);
        expectFailure({{"103 Invalid value: nitPatron not allowed value detected",
                        "Error 103, nitPatron not allowed value detected"}});
    }
    constexpr const char* kAccepted[] = {
        "<nitPatron>0</nitPatron>", "<nitPatron>1</nitPatron>", "<nitPatron/>",
        "<tipoNITPatron>1</tipoNITPatron><nitPatron>2</nitPatron>"};
    for (const char* children : kAccepted) {
        SCOPED_TRACE(children);
        importNetwork(std::string("<id>1</id>") + children);
        expectSuccess();
    }
}

TEST_F(DvbNetworks, APatternThatWasCheckedIsNotCheckedAgainForALaterType) {
    importNetwork(
        "<id>1</id><tipoNITPatron>1</tipoNITPatron><nitPatron>-1</nitPatron>"
        "<tipoNITPatron>0</tipoNITPatron>");
    expectSuccess();
    EXPECT_EQ(column("Tipo_NIT_Patron || ' ' || NIT_Patron"), "1 -1");
}

TEST_F(DvbNetworks, APatternVersionIsZeroUnlessAPatternCameBefore) {
    constexpr const char* kRejected[] = {
        "<versionNITPatron>3</versionNITPatron>",
        "<nitPatron>0</nitPatron><versionNITPatron>3</versionNITPatron>",
        "<versionNITPatron>1</versionNITPatron><nitPatron>1</nitPatron>"};
    for (const char* children : kRejected) {
        SCOPED_TRACE(children);
        importNetwork(std::string("<id>1</id>") + children);
        expectFailure({{"103 Invalid value: nitPatron not allowed value detected",
                        "Error 103, nitPatron not allowed value detected"}});
    }
    constexpr const char* kAccepted[] = {
        "<versionNITPatron>0</versionNITPatron>",
        "<nitPatron>1</nitPatron><versionNITPatron>3</versionNITPatron>"};
    for (const char* children : kAccepted) {
        SCOPED_TRACE(children);
        importNetwork(std::string("<id>1</id>") + children);
        expectSuccess();
    }
}

TEST_F(DvbNetworks, ADeleteThatFailsDoesNotStopTheInserts) {
    device.failStatements(kDelete, 3, SQLITE_BUSY);
    importNetwork("<id>9</id>");
    expectFailure({{"102 Could not access database: Could not delete dvbNetworks",
                    "Error 102, Could not delete dvbNetworks"}});
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("9"), kDelete, kDelete, kDelete,
                            testing::StartsWith("INSERT INTO RedesCabecera ")));
}

TEST_F(DvbNetworks, AnInsertThatFailsDoesNotStopTheOthers) {
    device.failStatements("INSERT INTO RedesCabecera", 3, SQLITE_FULL);
    importNetwork("<id>9</id></dvbNetwork><dvbNetwork><id>1</id>");
    expectFailure({{"102 Could not access database: Could not insert dvbNetwork",
                    "Error 102, Could not insert dvbNetwork"}});
    EXPECT_THAT(test::last(sectionStatements()), testing::HasSubstr("VALUES ('1', 'Net', "));
}

TEST_F(DvbNetworks, AnIdThatIsNotANumberOrStandsTwiceCannotBeInserted) {
    for (const char* ids : {"<id>one</id>", "<id>9</id></dvbNetwork><dvbNetwork><id>9</id>"}) {
        SCOPED_TRACE(ids);
        importNetwork(ids);
        expectFailure({{"102 Could not access database: Could not insert dvbNetwork",
                        "Error 102, Could not insert dvbNetwork"}});
    }
}

// --- The debug log ---------------------------------------------------------------------------

TEST_F(DvbNetworks, ChangesAreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importNetwork("<id>1</id><name>Other</name>");
    EXPECT_THAT(
        device.logLines(),
        testing::UnorderedElementsAre("5: New network parameters: name=Other,",
                                      "61: REMOTE_CONTROL::: New network parameters: name=Other,"));
}

TEST_F(DvbNetworks, WrongElementsAreToldInTheDebugLogWithoutACode) {
    platform::debugMask = 0x10;
    importSections("<dvbNetworks><network/></dvbNetworks>");
    EXPECT_THAT(device.logLines(), IsSupersetOf({"3: Command error: 101 Invalid command",
                                                 "3: No dvbNetwork element found"}));
    importNetwork("");
    EXPECT_THAT(device.logLines(),
                IsSupersetOf({"3: Command error: 101 Invalid command: dvbNetwork has no id field",
                              "3: dvbNetwork has no id field"}));
}

TEST_F(DvbNetworks, ARejectedValueIsToldInTheDebugLogWithItsCode) {
    platform::debugMask = 0x10;
    importNetwork("<id>1</id><nitPatron>2</nitPatron>");
    EXPECT_THAT(device.logLines(), Contains("3: Error 103, nitPatron not allowed value detected"));
}

}  // namespace
