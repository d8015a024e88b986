#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::AllOf;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;
using Rows = std::vector<test::Row>;

std::string insertOfService(const std::string& values) {
    return "INSERT INTO Service_EPG (idService_EPG, ONID, TSID, SID, EPG, LCN, "
           "fk_idService_EPG_Satellite, Video_Type, Video_peak_bitrate, Service_type, Nombre, "
           "Proveedor)  VALUES (" +
           values + " )";
}

std::string insertOfSatellite(const std::string& values) {
    return "INSERT INTO Service_EPG_Satellite (idService_EPG_Satellite, TSID, ONID, Frequency, "
           "SymbolRate, Polaridad, Orbita, West_East_Flag, Estado)  VALUES (" +
           values + " )";
}

std::string insertOfAudio(const std::string& values) {
    return "INSERT INTO Service_EPG_audios (idService_EPG_audios_EPG, fk_idService_EPG, "
           "Language_code, Audio_Type, Estado)  VALUES (" +
           values + " )";
}

std::string insertOfReplacing(const std::string& values) {
    return "INSERT INTO Service_EPG_replacing (idService_EPG_replacing, fk_idService_EPG, "
           "replacing_epg_channel_id, Estado)  VALUES (" +
           values + " )";
}

// A service of which nothing but the name is given.
std::string insertOfNamed(const std::string& name) {
    return insertOfService("NULL, NULL, NULL, NULL, NULL, NULL, '0', NULL, NULL, NULL, '" + name +
                           "', NULL");
}

std::string service(const std::string& children) {
    return "<serviceEPG>" + children + "</serviceEPG>";
}

class ServiceEpgs : public test::SectionImportTest {
  protected:
    ServiceEpgs() {
        rows(
            "INSERT INTO Service_EPG (idService_EPG, Nombre) VALUES (7, 'old');"
            "INSERT INTO Service_EPG_Satellite (idService_EPG_Satellite) VALUES (8);"
            "INSERT INTO Service_EPG_audios (idService_EPG_audios_EPG) VALUES (9);"
            "INSERT INTO Service_EPG_replacing (idService_EPG_replacing) VALUES (10)");
    }

    // Imports the section with these children.
    void importServices(const std::string& children) {
        importSections("<serviceEPGs>" + children + "</serviceEPGs>");
    }
    void importSatellite(const std::string& children) {
        importServices(service("<satelliteEPG>" + children + "</satelliteEPG><name>n</name>"));
    }

    // Without the four deletes that come first.
    [[nodiscard]] std::vector<std::string> inserts() const {
        std::vector<std::string> found = sectionStatements();
        std::erase_if(found, [](const std::string& sql) { return sql.starts_with("DELETE"); });
        return found;
    }
};

TEST_F(ServiceEpgs, AnEmptySectionEmptiesTheFourTablesInTheirOrder) {
    importServices("");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre("DELETE FROM Service_EPG", "DELETE FROM Service_EPG_Satellite",
                            "DELETE FROM Service_EPG_audios", "DELETE FROM Service_EPG_replacing"));
    for (const char* table :
         {"Service_EPG", "Service_EPG_Satellite", "Service_EPG_audios", "Service_EPG_replacing"}) {
        EXPECT_EQ(cell(std::string("SELECT count(*) FROM ") + table), "0");
    }
    EXPECT_EQ(out(), "Processing: serviceEPGs\nProcessing: Service EPGs\n");
}

TEST_F(ServiceEpgs, ACompleteServiceIsWrittenAfterItsTransponderAndBeforeItsLists) {
    importServices(
        service("<replacingEPGs><replacingEPG><replacingEpgChannelId>77</replacingEpgChannelId>"
                "</replacingEPG><replacingEPG><replacingEpgChannelId>78</replacingEpgChannelId>"
                "</replacingEPG></replacingEPGs>"
                "<audiosEPGs><audiosEPG><languageCode>eng</languageCode><audioType>3</audioType>"
                "</audiosEPG><audiosEPG><languageCode>spa</languageCode></audiosEPG></audiosEPGs>"
                "<onid>1</onid><tsid>2</tsid><sid>3</sid><epg>4</epg><lcn>5</lcn>"
                "<satelliteEPG><onid>10</onid><tsid>11</tsid><frequency>11856</frequency>"
                "<symbolrate>27500</symbolrate><polarity>Vertical</polarity><orbit>192</orbit>"
                "<westEastFlag>1</westEastFlag></satelliteEPG>"
                "<videoType>6</videoType><videoPeakBitrate>7</videoPeakBitrate>"
                "<serviceType>8</serviceType><name>News</name><provider>Me</provider>"));
    expectSuccess();
    EXPECT_THAT(inserts(),
                ElementsAre(insertOfSatellite("NULL, '11', '10', '11856', '27500', '0', '192', "
                                              "'1', NULL"),
                            insertOfService("NULL, '1', '2', '3', '4', '5', '1', '6', '7', '8', "
                                            "'News', 'Me'"),
                            insertOfAudio("NULL, '1', 'eng', '3', NULL"),
                            insertOfAudio("NULL, '1', 'spa', NULL, NULL"),
                            insertOfReplacing("NULL, '1', '77', NULL"),
                            insertOfReplacing("NULL, '1', '78', NULL")));
    EXPECT_EQ(out(),
              "Processing: serviceEPGs\n"
              "Processing: Service EPGs\n"
              "Processing: Service EPGs Satellite\n"
              "Processing: Service EPGs Audios\n"
              "Processing: Service EPGs Replacing\n");
    EXPECT_THAT(changeLines(), IsEmpty());
}

TEST_F(ServiceEpgs, ListsBelongToTheirOwnService) {
    const std::string audio = "<audiosEPGs><audiosEPG/></audiosEPGs>";
    importServices(service("<name>a</name>") + service(audio) + service(audio));
    expectSuccess();
    EXPECT_EQ(stored("SELECT fk_idService_EPG FROM Service_EPG_audios"), (Rows{{"2"}, {"3"}}));
}

TEST_F(ServiceEpgs, ColumnsThatNoElementFillsStayNullAndEmptyTextsAreStored) {
    importServices(service("") + service("<epg/><videoType/><videoPeakBitrate/><serviceType/>"
                                         "<name/><provider/>"));
    expectSuccess();
    EXPECT_THAT(inserts(), ElementsAre(insertOfService("NULL, NULL, NULL, NULL, NULL, NULL, '0', "
                                                       "NULL, NULL, NULL, NULL, NULL"),
                                       insertOfService("NULL, NULL, NULL, NULL, '', NULL, '0', '', "
                                                       "'', '', '', ''")));
}

TEST_F(ServiceEpgs, TextsAreStoredAsTheDocumentGivesThem) {
    importServices(service("<onid>007</onid><lcn>5x</lcn><name>O'Brien &amp; 5%s \xC3\xA9</name>"));
    expectSuccess();
    EXPECT_THAT(inserts(), ElementsAre(insertOfService("NULL, '007', NULL, NULL, NULL, '5x', '0', "
                                                       "NULL, NULL, NULL, "
                                                       "'O''Brien & 5%s \xC3\xA9', NULL")));
}

TEST_F(ServiceEpgs, NamesAreMatchedInAnyLetterCaseAndOthersIgnored) {
    importServices(
        "<SERVICEEPG><NAME>n</NAME><other>1</other>text<AUDIOSEPGS><AUDIOSEPG>"
        "<LANGUAGECODE>eng</LANGUAGECODE><other>2</other></AUDIOSEPG></AUDIOSEPGS>"
        "<REPLACINGEPGS><REPLACINGEPG><REPLACINGEPGCHANNELID>5"
        "</REPLACINGEPGCHANNELID></REPLACINGEPG></REPLACINGEPGS><SATELLITEEPG>"
        "<ORBIT>192</ORBIT><other>3</other></SATELLITEEPG></SERVICEEPG>");
    expectSuccess();
    EXPECT_THAT(inserts(),
                ElementsAre(insertOfSatellite("NULL, NULL, NULL, NULL, NULL, NULL, '192', NULL, "
                                              "NULL"),
                            insertOfService("NULL, NULL, NULL, NULL, NULL, NULL, '1', NULL, NULL, "
                                            "NULL, 'n', NULL"),
                            insertOfAudio("NULL, '1', 'eng', NULL, NULL"),
                            insertOfReplacing("NULL, '1', '5', NULL")));
}

TEST_F(ServiceEpgs, OfTwoListsOfAKindOnlyTheSecondIsStored) {
    importServices(
        service("<audiosEPGs><audiosEPG><languageCode>eng</languageCode></audiosEPG></audiosEPGs>"
                "<replacingEPGs><replacingEPG/></replacingEPGs>"
                "<audiosEPGs><audiosEPG><languageCode>spa</languageCode></audiosEPG></audiosEPGs>"
                "<replacingEPGs/>"));
    expectSuccess();
    EXPECT_EQ(stored("SELECT Language_code FROM Service_EPG_audios"), (Rows{{"spa"}}));
    EXPECT_EQ(cell("SELECT count(*) FROM Service_EPG_replacing"), "0");
}

// --- Ranges ----------------------------------------------------------------------------------

struct Identifier {
    const char* element;
    const char* column;
    const char* name;
};

constexpr Identifier kIdentifiers[] = {{"onid", "ONID", "ONID"},
                                       {"tsid", "TSID", "TSID"},
                                       {"sid", "SID", "SID"},
                                       {"lcn", "LCN", "LCN"}};

TEST_F(ServiceEpgs, AnIdentifierAtItsBoundsIsAccepted) {
    for (const auto& [element, column, name] : kIdentifiers) {
        for (const std::string value : {"1", "65535"}) {
            SCOPED_TRACE(std::string(element) + " " + value);
            importServices(
                service(std::string("<") + element + ">" + value + "</" + element + ">"));
            expectSuccess();
            EXPECT_EQ(cell(std::string("SELECT ") + column + " FROM Service_EPG"), value);
        }
    }
}

TEST_F(ServiceEpgs, AnIdentifierBeyondItsBoundsFailsTheImport) {
    for (const auto& [element, column, name] : kIdentifiers) {
        for (const char* value : {"0", "65536", "-1", "abc", ""}) {
            SCOPED_TRACE(std::string(element) + " " + value);
            importServices(
                service(std::string("<") + element + ">" + value + "</" + element + ">"));
            const std::string message =
                std::string(name) + " value must be a value between [1-65535]";
            expectFailure({{"103 Invalid value: " + message, "Error 103, " + message}});
        }
    }
}

TEST_F(ServiceEpgs, ABadValueEndsTheWalkOfItsServiceWhichIsInsertedAsReadSoFar) {
    importServices(
        service("<name>n</name><audiosEPGs><audiosEPG/></audiosEPGs><lcn>0</lcn>"
                "<provider>p</provider><sid>0</sid>"
                "<replacingEPGs><replacingEPG/></replacingEPGs>"));
    expectFailure({{"103 Invalid value: LCN value must be a value between [1-65535]",
                    "Error 103, LCN value must be a value between [1-65535]"}});
    EXPECT_THAT(inserts(),
                ElementsAre(insertOfNamed("n"), insertOfAudio("NULL, '1', NULL, NULL, NULL")));
}

TEST_F(ServiceEpgs, ABadValueDoesNotStopTheNextService) {
    importServices(service("<lcn>0</lcn>") + service("<name>next</name>") +
                   service("<sid>65536</sid>"));
    expectFailure({{"103 Invalid value: LCN value must be a value between [1-65535]",
                    "Error 103, LCN value must be a value between [1-65535]"},
                   {"103 Invalid value: SID value must be a value between [1-65535]",
                    "Error 103, SID value must be a value between [1-65535]"}});
    EXPECT_THAT(inserts(), Contains(insertOfNamed("next")));
}

// --- The transponder -------------------------------------------------------------------------

TEST_F(ServiceEpgs, AnythingButVerticalIsHorizontal) {
    const std::pair<const char*, const char*> kTexts[] = {
        {"vertical", "0"}, {"VERTICAL", "0"}, {"horizontal", "1"}, {"vertikal", "1"}, {"", "1"}};
    for (const auto& [text, code] : kTexts) {
        SCOPED_TRACE(text);
        importSatellite(std::string("<polarity>") + text + "</polarity>");
        expectSuccess();
        EXPECT_EQ(cell("SELECT Polaridad FROM Service_EPG_Satellite"), code);
    }
}

TEST_F(ServiceEpgs, AnElementWithoutChildrenGivesNoTransponder) {
    importSatellite("");
    expectSuccess();
    EXPECT_THAT(inserts(), ElementsAre(insertOfNamed("n")));
    EXPECT_THAT(out(), HasSubstr("Processing: Service EPGs Satellite\n"));
}

TEST_F(ServiceEpgs, ATransponderWithABadIdentifierIsLeftOutAndTheImportSucceeds) {
    for (const std::string name : {"ONID", "TSID"}) {
        for (const char* value : {"0", "65536", "x", ""}) {
            const std::string element = name == "ONID" ? "onid" : "tsid";
            SCOPED_TRACE(element + " " + value);
            importSatellite("<frequency>1</frequency><" + element + ">" + value + "</" + element +
                            ">");
            const std::string message = name + " value must be a value between [1-65535]";
            expectErrors({{"103 Invalid value: " + message, "Error 103, " + message}});
            EXPECT_EQ(result(), "0");
            EXPECT_THAT(inserts(), ElementsAre(insertOfNamed("n")));
            EXPECT_THAT(device.statements(), Contains("COMMIT"));
            EXPECT_EQ(stored("SELECT Nombre, fk_idService_EPG_Satellite FROM Service_EPG"),
                      (Rows{{"n", "0"}}));
        }
    }
}

TEST_F(ServiceEpgs, ATransponderAtTheBoundsIsStored) {
    importSatellite("<onid>1</onid><tsid>65535</tsid>");
    expectSuccess();
    EXPECT_EQ(stored("SELECT ONID, TSID FROM Service_EPG_Satellite"), (Rows{{"1", "65535"}}));
}

TEST_F(ServiceEpgs, ATransponderThatCannotBeInsertedIsRecordedAndTheImportSucceeds) {
    device.failStatements("INSERT INTO Service_EPG_Satellite", 3, SQLITE_FULL);
    importSatellite("<orbit>192</orbit>");
    expectErrors({{"102 Could not access database: Could not insert svcEPG",
                   "Error 102, Could not insert svcEPG"}});
    EXPECT_EQ(result(), "0");
    EXPECT_EQ(stored("SELECT Nombre, fk_idService_EPG_Satellite FROM Service_EPG"),
              (Rows{{"n", "0"}}));
}

// --- Other failures --------------------------------------------------------------------------

TEST_F(ServiceEpgs, AnotherElementEndsTheSection) {
    importServices(service("<name>n</name>") + "<service/>" + service("<name>next</name>"));
    expectFailure({{"101 Invalid command: No serviceEPG element found",
                    "Error 101, No serviceEPG element found"}});
    EXPECT_THAT(inserts(), ElementsAre(insertOfNamed("n")));
}

TEST_F(ServiceEpgs, EachDeleteThatFailsIsRecordedAndTheWorkGoesOn) {
    const std::pair<const char*, const char*> kTables[] = {
        {"Service_EPG", "ServiceEPGs"},
        {"Service_EPG_Satellite", "ServiceEPG_Satellites"},
        {"Service_EPG_audios", "ServiceEPG_audios"},
        {"Service_EPG_replacing", "ServiceEPG_replacings"}};
    for (const auto& [table, name] : kTables) {
        SCOPED_TRACE(table);
        device.failStatements(std::string("DELETE FROM ") + table, 3, SQLITE_BUSY);
        importServices(service("<name>n</name>"));
        const std::string message = std::string("Could not delete ") + name;
        expectFailure({{"102 Could not access database: " + message, "Error 102, " + message}});
        EXPECT_EQ(sectionStatements().size(), 7U);  // four deletes, two further tries, an insert
        EXPECT_THAT(inserts(), ElementsAre(insertOfNamed("n")));
    }
}

TEST_F(ServiceEpgs, AllDeletesThatFailAreRecorded) {
    device.failStatements("DELETE FROM ", 12, SQLITE_BUSY);
    importServices("");
    expectFailure({{"102 Could not access database: Could not delete ServiceEPGs",
                    "Error 102, Could not delete ServiceEPGs"},
                   {"102 Could not access database: Could not delete ServiceEPG_Satellites",
                    "Error 102, Could not delete ServiceEPG_Satellites"},
                   {"102 Could not access database: Could not delete ServiceEPG_audios",
                    "Error 102, Could not delete ServiceEPG_audios"},
                   {"102 Could not access database: Could not delete ServiceEPG_replacings",
                    "Error 102, Could not delete ServiceEPG_replacings"}});
}

TEST_F(ServiceEpgs, AMissingTableFailsTheImport) {
    rows("DROP TABLE Service_EPG_replacing");
    importServices("");
    expectFailure({{"102 Could not access database: Could not delete ServiceEPG_replacings",
                    "Error 102, Could not delete ServiceEPG_replacings"}});
}

TEST_F(ServiceEpgs, AServiceThatCannotBeInsertedDoesNotStopItsListsOrTheNextService) {
    device.failStatements("INSERT INTO Service_EPG (", 3, SQLITE_FULL);
    importServices(service("<name>n</name><audiosEPGs><audiosEPG/></audiosEPGs>") +
                   service("<name>next</name>"));
    expectFailure({{"102 Could not access database: Could not insert ServiceEPG",
                    "Error 102, Could not insert ServiceEPG"}});
    EXPECT_THAT(inserts(),
                ElementsAre(insertOfNamed("n"), insertOfNamed("n"), insertOfNamed("n"),
                            StartsWith("INSERT INTO Service_EPG_audios "), insertOfNamed("next")));
}

TEST_F(ServiceEpgs, AnotherElementAmongTheAudiosEndsTheSection) {
    importServices(service("<audiosEPGs><audiosEPG/><audio/><audiosEPG/></audiosEPGs>"
                           "<replacingEPGs><replacingEPG/></replacingEPGs>") +
                   service("<name>next</name>"));
    expectFailure({{"101 Invalid command: No audiosEPGs element found",
                    "Error 101, No audiosEPGs element found"}});
    EXPECT_THAT(inserts(), ElementsAre(StartsWith("INSERT INTO Service_EPG ("),
                                       insertOfAudio("NULL, '1', NULL, NULL, NULL")));
    EXPECT_THAT(out(), Not(HasSubstr("Processing: Service EPGs Replacing")));
}

TEST_F(ServiceEpgs, AnotherElementAmongTheReplacedChannelsEndsTheSection) {
    importServices(service("<replacingEPGs><replacing/></replacingEPGs>"
                           "<audiosEPGs><audiosEPG/></audiosEPGs>") +
                   service("<name>next</name>"));
    expectFailure({{"101 Invalid command: No replacingEPGs element found",
                    "Error 101, No replacingEPGs element found"}});
    EXPECT_THAT(inserts(), AllOf(Contains(insertOfAudio("NULL, '1', NULL, NULL, NULL")),
                                 Not(Contains(insertOfNamed("next")))));
}

TEST_F(ServiceEpgs, AnAudioThatCannotBeInsertedDoesNotStopTheOtherAudiosButTheSection) {
    device.failStatements("INSERT INTO Service_EPG_audios", 3, SQLITE_FULL);
    importServices(service("<audiosEPGs><audiosEPG/><audiosEPG><audioType>2</audioType></audiosEPG>"
                           "</audiosEPGs><replacingEPGs><replacingEPG/></replacingEPGs>") +
                   service("<name>next</name>"));
    expectFailure({{"102 Could not access database: Could not insert svcAudio",
                    "Error 102, Could not insert svcAudio"}});
    EXPECT_EQ(test::last(inserts()), insertOfAudio("NULL, '1', NULL, '2', NULL"));
}

TEST_F(ServiceEpgs, AReplacedChannelThatCannotBeInsertedDoesNotStopTheOthersButTheSection) {
    device.failStatements("INSERT INTO Service_EPG_replacing", 3, SQLITE_FULL);
    importServices(service("<replacingEPGs><replacingEPG/><replacingEPG><replacingEpgChannelId>5"
                           "</replacingEpgChannelId></replacingEPG></replacingEPGs>") +
                   service("<name>next</name>"));
    expectFailure({{"102 Could not access database: Could not insert svcEPGRep",
                    "Error 102, Could not insert svcEPGRep"}});
    EXPECT_EQ(test::last(inserts()), insertOfReplacing("NULL, '1', '5', NULL"));
}

TEST_F(ServiceEpgs, FailuresAreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importServices(service("<lcn>0</lcn>") + "<service/>");
    EXPECT_THAT(
        device.logLines(),
        testing::IsSupersetOf(
            {"3: Command error: 103 Invalid value: LCN value must be a value between [1-65535]",
             "3: Error 103, LCN value must be a value between [1-65535]",
             "3: Command error: 101 Invalid command: No serviceEPG element found",
             "3: Error 101, No serviceEPG element found"}));
}

}  // namespace
