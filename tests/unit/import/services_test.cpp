#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/module_import.h"

namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* kInsertColumns =
    "INSERT INTO ServiciosSalidaGlobal (idSSG, MAC, OSID, SID, NombreEntrada, NombreSalida, "
    "NombreForzado, Tipo, VideoFormat, Service_Type, Video_peak_bitrate, fk_idEntrada, "
    "fk_idSalidasLogicas, Seleccionado, Especial, Orden, Descifrar, Transcoding, OLCN, LCN, "
    "LCNForzado, SimulcastLCN, idEPG, DuplicadoClonado, SSU, PMT_pid, EstadoBorrado, "
    "EstadoServicio)  VALUES (";

constexpr const char* kListed =
    "UPDATE ServiciosSalidaGlobal SET  EstadoBorrado = '0'  WHERE idSSG = '1'";

// A module with the service 501 on output 1.
class ImportedServices : public test::ModuleImportTest {
  protected:
    ImportedServices() {
        becomeModel("QRA-310");
        addModule(1, kMac);
        addService(1, 1, 501);
    }

    void addService(int id, int outputId, int sid) {
        rows("INSERT INTO ServiciosSalidaGlobal VALUES (" + std::to_string(id) + ", '" + kMac +
             "', 701, " + std::to_string(sid) + ", 'In', 'Out', 1, 1, 2, 3, 7000, 1, " +
             std::to_string(outputId) + ", 1, 0, 2, 0, 0, 4, 5, 0, 6, 7, 0, 0, 100, 0, 0)");
    }

    void addStream(int id, int service) {
        rows("INSERT INTO PIDsSalidaGlobal VALUES (" + std::to_string(id) + ", '" + kMac + "', " +
             std::to_string(service) + ", 1, 1, 1, 2, 3, 'spa', 0, 0)");
    }

    static std::string service(int outputId, int outputSid, const std::string& children) {
        return "<service><outputId>" + std::to_string(outputId) + "</outputId><outputSid>" +
               std::to_string(outputSid) + "</outputSid>" + children + "</service>";
    }

    void importServices(const std::string& services) {
        importModule("<services>" + services + "</services>");
    }

    void expectRefused(const std::string& services, int code, const std::string& message) {
        SCOPED_TRACE(services);
        importServices(services);
        expectFailure(code, message);
        EXPECT_THAT(writes(), IsEmpty());
    }

    // Service 1 as it is in the table.
    std::optional<std::string> column(const char* name) {
        return stored("SELECT " + std::string(name) + " FROM ServiciosSalidaGlobal WHERE idSSG = 1")
            .at(0)
            .at(0);
    }

    static std::string serviceLine(const std::string& changes) {
        return "61: REMOTE_CONTROL::: New SERVICE parameters: " + changes;
    }

    static std::string selectServices() {
        return "SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE '02:00:00:00:00:11' ";
    }

    static std::string selectStreams(int service) {
        return "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '" + std::to_string(service) +
               "' ";
    }
};

// --- The children of a stored service --------------------------------------------------------

struct ChildCase {
    const char* element;
    const char* text;
    // What is written before the status columns, or nothing.
    const char* assignments;
    const char* label;
};

constexpr ChildCase kChildCases[] = {
    {"lcn", "17", "LCN = '17'", " lcn: "},
    {"lcn", "017", "LCN = '17'", " lcn: "},
    {"lcn", "05", nullptr, " lcn: "},
    {"olcn", "8", "OLCN = '8'", " olcn: "},
    {"olcn", "-8", "OLCN = '-8'", " olcn: "},
    {"forcedLcn", "1", "LCNForzado = '1'", " forcedLcn: "},
    {"simulcastLcn", "9", "SimulcastLCN = '9'", " simulcastLcn: "},
    {"simulcastLcn", "none", "SimulcastLCN = '0'", " simulcastLcn: "},
    {"inputId", "2", "fk_idEntrada = '2'", "inputId: "},
    {"inputSid", "65535", "OSID = '65535'", " inputSid: "},
    {"inputSid", "-1", "OSID = '-1'", " inputSid: "},
    {"inputSid", "0701", nullptr, " inputSid: "},
    {"outputSid", "65535", "SID = '65535'", " outputSid: "},
    {"outputSid", "-1", "SID = '-1'", " outputSid: "},
    {"inputName", "News", "NombreEntrada = 'News'", "outputSid: "},
    {"inputName", "in", "NombreEntrada = 'in'", "outputSid: "},
    {"inputName", "", "NombreEntrada = ''", "outputSid: "},
    {"forcedName", "0", "NombreForzado = '0'", " forcedName: "},
    {"outputName", "News", "NombreSalida = 'News'", " outputName: "},
    {"outputName", "Out", nullptr, " outputName: "},
    {"idEPG", "8", "idEPG = '8'", " idEPG: "},
    {"serviceTypeDVB", "2", "Tipo = '2'", " serviceTypeDVB: "},
    {"serviceTypeCanal", "4", "Service_Type = '4'", " serviceTypeCanal: "},
    {"videoFormat", "3", "VideoFormat = '3'", " videoFormat: "},
    {"cloned", "1", "DuplicadoClonado = '1'", " cloned: "},
    {"decrypt", "1", "Orden = '1' , Descifrar = '1'", "decrypt: "},
    {"decrypt", "2", "Descifrar = '2'", "decrypt: "},
    {"decrypt", "0", nullptr, "decrypt: "},
    {"transcoding", "1", "Transcoding = '1'", "transcoding: "},
    {"videoPeakBitrate", "9000", "Video_peak_bitrate = '9000'", "videoPeakBitrate: "},
    {"VIDEOPEAKBITRATE", "9000", "Video_peak_bitrate = '9000'", "videoPeakBitrate: "},
};

class ImportedServiceChild : public ImportedServices,
                             public testing::WithParamInterface<ChildCase> {};

TEST_P(ImportedServiceChild, IsStoredWhenItDiffersAndTold) {
    const auto& [element, text, assignments, label] = GetParam();
    importServices(service(1, 501, "<" + std::string(element) + ">" + text + "</" + element + ">"));
    expectSuccess();
    const std::string update =
        assignments == nullptr
            ? kListed
            : "UPDATE ServiciosSalidaGlobal SET  " + std::string(assignments) +
                  " , EstadoBorrado = '0' , EstadoServicio = '1'  WHERE idSSG = '1'";
    EXPECT_THAT(writes(), ElementsAre(update));
    EXPECT_THAT(changeLines(),
                Contains(serviceLine(" outputSid: 501" + std::string(label) + text)));
}

INSTANTIATE_TEST_SUITE_P(Children, ImportedServiceChild, testing::ValuesIn(kChildCases));

TEST_F(ImportedServices, OtherChildrenAndTextsAreIgnored) {
    importServices(service(1, 501, "text<provider>x</provider><!-- c -->"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(kListed));
    EXPECT_THAT(changeLines(), Contains(serviceLine(" outputSid: 501")));
}

TEST_F(ImportedServices, NullColumnsReadAsZeroAndAsTheEmptyText) {
    rows("UPDATE ServiciosSalidaGlobal SET NombreEntrada = NULL, OLCN = NULL, LCN = NULL");
    importServices(service(1, 501, "<inputName/><olcn>0</olcn><lcn>0</lcn>"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(kListed));
}

TEST_F(ImportedServices, NamesMayHoldAnyCharacter) {
    importServices(service(1, 501,
                           "<inputName>Bob&apos;s &amp; &lt;\xC3\xA9&gt; &quot;x&quot;</inputName>"
                           "<outputName>5% of 10%</outputName>"));
    expectSuccess();
    EXPECT_EQ(column("NombreEntrada"), "Bob's & <\xC3\xA9> \"x\"");
    EXPECT_EQ(column("NombreSalida"), "5  of 10%");
}

TEST_F(ImportedServices, DecryptingMovesAServiceToTheFirstOrder) {
    importServices(service(1, 501, "<decrypt>1</decrypt>"));
    EXPECT_EQ(column("Orden"), "1");
    importServices(service(1, 501, "<decrypt>0</decrypt>"));
    EXPECT_EQ(column("Orden"), "2");
}

TEST_F(ImportedServices, TheOrderIsSetAlsoWhenDecryptingStays) {
    rows("UPDATE ServiciosSalidaGlobal SET Orden = 7");
    importServices(service(1, 501, "<decrypt>0</decrypt>"));
    EXPECT_THAT(writes(), ElementsAre("UPDATE ServiciosSalidaGlobal SET  Orden = '2' , "
                                      "EstadoBorrado = '0' , EstadoServicio = '1'  WHERE idSSG = "
                                      "'1'"));
}

TEST_F(ImportedServices, AServiceThatWasMarkedForRemovalIsListedAgain) {
    rows("UPDATE ServiciosSalidaGlobal SET EstadoBorrado = 2");
    importServices(service(1, 501, ""));
    EXPECT_THAT(writes(), ElementsAre(kListed));
}

TEST_F(ImportedServices, ChangesAreInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importServices(service(1, 501, "<olcn>9</olcn>"));
    EXPECT_THAT(device.logLines(), Contains("5: New SERVICE parameters:  outputSid: 501 olcn: 9"));
    EXPECT_THAT(device.logLines(), Contains(serviceLine(" outputSid: 501 olcn: 9")));
}

// --- Channel numbers -------------------------------------------------------------------------

TEST_F(ImportedServices, AChannelNumberBelow1IsRecordedButNotLogged) {
    platform::debugMask = 0x10;
    for (const char* number : {"0", "-1", "none", ""}) {
        SCOPED_TRACE(number);
        importServices(service(1, 501, "<lcn>" + std::string(number) + "</lcn>"));
        EXPECT_THAT(errors(), ElementsAre("103 Invalid value: LCN value cannot be 0",
                                          "202 Could not set configuration"));
        EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Error 202, Could not set configuration"));
        EXPECT_THAT(device.logLines(), Not(Contains(StartsWith("3: Error 103"))));
        EXPECT_THAT(changeLines(), Not(Contains(HasSubstr("SERVICE"))));
        EXPECT_EQ(column("LCN"), "5");
    }
}

TEST_F(ImportedServices, AChannelNumberBelow1ThatIsStoredAlreadyPasses) {
    rows("UPDATE ServiciosSalidaGlobal SET LCN = 0");
    importServices(service(1, 501, "<lcn>0</lcn>"));
    expectSuccess();
    rows("UPDATE ServiciosSalidaGlobal SET LCN = -3");
    importServices(service(1, 501, "<lcn>-3</lcn>"));
    expectSuccess();
}

TEST_F(ImportedServices, OfThoseBelow1ChannelNumber0PassesOnANewService) {
    importServices(service(1, 501, "") + service(1, 502, "<lcn>0</lcn>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT LCN FROM ServiciosSalidaGlobal WHERE SID = 502"),
                ElementsAre(ElementsAre("0")));
    importServices(service(1, 503, "<lcn>-1</lcn>"));
    EXPECT_THAT(errors(), ElementsAre("103 Invalid value: LCN value cannot be 0",
                                      "202 Could not set configuration"));
}

TEST_F(ImportedServices, AChangedChannelNumberIsForcedOnOneModel) {
    becomeModel("RNB-K408");
    importServices(service(1, 501, "<lcn>5</lcn>"));
    EXPECT_EQ(column("LCNForzado"), "0");
    importServices(service(1, 501, "<lcn>17</lcn>"));
    EXPECT_EQ(column("LCNForzado"), "1");
}

TEST_F(ImportedServices, AForcedChannelNumberThatFollowsWins) {
    becomeModel("RNB-K408");
    importServices(service(1, 501, "<lcn>17</lcn><forcedLcn>0</forcedLcn>"));
    EXPECT_EQ(column("LCNForzado"), "0");
}

TEST_F(ImportedServices, AChangedChannelNumberIsNotForcedOnOtherModels) {
    importServices(service(1, 501, "<lcn>17</lcn>"));
    EXPECT_EQ(column("LCN"), "17");
    EXPECT_EQ(column("LCNForzado"), "0");
}

// --- Which service ---------------------------------------------------------------------------

TEST_F(ImportedServices, AnotherElementIsRefused) {
    expectRefused("<servic/>", 101, "No service element found");
    expectRefused("text", 101, "No service element found");
    expectRefused(service(1, 501, "") + "<other/>", 101, "No service element found");
}

TEST_F(ImportedServices, TheOutputOfAServiceIsRequired) {
    expectRefused("<service><outputSid>501</outputSid></service>", 101,
                  "Service has no outputId field");
    expectRefused("<service/>", 101, "Service has no outputId field");
}

TEST_F(ImportedServices, TheOutputOfAServiceIs1Or2) {
    for (const char* number : {"0", "3", "-1", "x", ""}) {
        expectRefused("<service><outputId>" + std::string(number) +
                          "</outputId><outputSid>501</outputSid></service>",
                      101, "Service outputId should be 1 or 2");
    }
}

TEST_F(ImportedServices, TheIdentifierOfAServiceIsRequired) {
    expectRefused("<service><outputId>1</outputId></service>", 101,
                  "Service has no outputSid field");
}

TEST_F(ImportedServices, TheIdentifierOfAServiceIsAbove0) {
    for (const char* number : {"0", "-1", "x", ""}) {
        expectRefused("<service><outputId>1</outputId><outputSid>" + std::string(number) +
                          "</outputSid></service>",
                      101, "Service outputSid should be greater than 0");
    }
}

TEST_F(ImportedServices, AWrongOutputIsInTheDebugLogToo) {
    platform::debugMask = 0x10;
    expectRefused(service(3, 501, ""), 101, "Service outputId should be 1 or 2");
    EXPECT_THAT(device.logLines(), Contains("3: Error 101, Service outputId should be 1 or 2"));
}

TEST_F(ImportedServices, AServiceIsFoundByOutputAndIdentifier) {
    addService(2, 2, 501);
    addService(3, 2, 502);
    addService(4, 2, 502);
    importServices(
        "<Service><OUTPUTID>2</OUTPUTID><OutputSid>0502</OutputSid><olcn>9</olcn>"
        "</Service>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT idSSG FROM ServiciosSalidaGlobal WHERE EstadoBorrado = 0"),
                ElementsAre(ElementsAre("3")));
    EXPECT_THAT(stored("SELECT idSSG FROM ServiciosSalidaGlobal WHERE OLCN = 9"),
                ElementsAre(ElementsAre("3")));
}

TEST_F(ImportedServices, TheFirstIdentifierFindsAServiceAndTheLastRenumbersIt) {
    importServices(service(1, 501, "<outputSid>502</outputSid>"));
    expectSuccess();
    EXPECT_EQ(column("SID"), "502");
    EXPECT_THAT(changeLines(), Contains(serviceLine(" outputSid: 501 outputSid: 502")));
}

TEST_F(ImportedServices, ARenumberedServiceIsFoundByItsNewIdentifierAlone) {
    addService(2, 1, 502);
    importServices(service(1, 501, "<outputSid>502</outputSid>") +
                   service(1, 502, "<olcn>9</olcn>") + service(1, 501, "<olcn>8</olcn>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT idSSG, SID, OLCN FROM ServiciosSalidaGlobal"
                       " WHERE EstadoBorrado = 0 ORDER BY idSSG"),
                ElementsAre(ElementsAre("1", "502", "9"), ElementsAre("3", "501", "8")));
}

TEST_F(ImportedServices, AServiceThatStandsTwiceTakesBothAndTheLastWins) {
    importServices(service(1, 501, "<olcn>8</olcn><lcn>17</lcn>") +
                   service(1, 501, "<olcn>9</olcn>"));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre("UPDATE ServiciosSalidaGlobal SET  OLCN = '9' , LCN = '17' , "
                                      "EstadoBorrado = '0' , EstadoServicio = '1'  WHERE idSSG = "
                                      "'1'"));
}

TEST_F(ImportedServices, AnIdentifierAbove65535IsRefused) {
    for (const char* element : {"inputSid", "outputSid"}) {
        SCOPED_TRACE(element);
        importServices(
            service(1, 501, "<" + std::string(element) + ">65536</" + element + "><olcn>9</olcn>"));
        expectFailure(103, std::string(element) + " value cannot be greater than 65535");
        EXPECT_THAT(writes(), IsEmpty());
    }
}

// --- New services ----------------------------------------------------------------------------

TEST_F(ImportedServices, ANewServiceStartsFromTheDefaults) {
    rows("DELETE FROM ServiciosSalidaGlobal");
    importServices(service(2, 502, ""));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre(std::string(kInsertColumns) +
                            "NULL, '02:00:00:00:00:11', '0', '502', '', '', '0', '1', '0', '0', "
                            "'7000', '0', '2', '1', '0', '2', '0', '0', '0', '0', '0', '0', '0', "
                            "'0', '0', '0', '0', '1' )"));
}

TEST_F(ImportedServices, TheChildrenOfANewServiceReplaceTheDefaults) {
    importServices(service(1, 501, "") +
                   service(2, 502,
                           "<decrypt>1</decrypt><inputSid>702</inputSid><inputName>Film"
                           "</inputName><lcn>12</lcn><videoPeakBitrate>0"
                           "</videoPeakBitrate>"));
    expectSuccess();
    EXPECT_THAT(writes(),
                ElementsAre(std::string(kInsertColumns) +
                                "NULL, '02:00:00:00:00:11', '702', '502', 'Film', '', '0', '1', "
                                "'0', '0', '0', '0', '2', '1', '0', '1', '1', '0', '0', '12', "
                                "'0', '0', '0', '0', '0', '0', '0', '1' )",
                            kListed));
}

TEST_F(ImportedServices, AServiceOfAnotherModuleIsNotThisModules) {
    rows("UPDATE ServiciosSalidaGlobal SET MAC = '02:00:00:00:00:99'");
    importServices(service(1, 501, ""));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(StartsWith("INSERT INTO ServiciosSalidaGlobal ")));
    EXPECT_EQ(column("EstadoBorrado"), "0");
}

TEST_F(ImportedServices, ANewServiceThatStandsTwiceIsInsertedTwice) {
    importServices(service(1, 502, "") + service(1, 502, ""));
    expectSuccess();
    EXPECT_THAT(stored("SELECT idSSG FROM ServiciosSalidaGlobal WHERE SID = 502"),
                ElementsAre(ElementsAre("2"), ElementsAre("3")));
}

TEST_F(ImportedServices, ANewServicesIdentifierAbove65535IsRefusedAfterItsInsert) {
    importServices(service(1, 65536, "<olcn>9</olcn>"));
    expectFailure(103, "outputSid value cannot be greater than 65535");
    EXPECT_THAT(writes(), ElementsAre(HasSubstr("'65536'")));
    EXPECT_EQ(stored("SELECT idSSG FROM ServiciosSalidaGlobal").size(), 1U);
}

TEST_F(ImportedServices, AFailedInsertIsReported) {
    device.failStatements("INSERT INTO ServiciosSalidaGlobal", 3, 5, "locked");
    importServices(service(1, 502, ""));
    expectFailure(102, "Could not insert service");
    EXPECT_THAT(changeLines(), Not(Contains(HasSubstr("SERVICE"))));
}

TEST_F(ImportedServices, AFailedInsertAfterAWrongValueIsReportedToo) {
    device.failStatements("INSERT INTO ServiciosSalidaGlobal", 3, 5, "locked");
    importServices(service(1, 502, "<inputSid>65536</inputSid>"));
    expectFailures(
        {{103, "inputSid value cannot be greater than 65535"}, {102, "Could not insert service"}});
}

TEST_F(ImportedServices, AMissingTableCountsAsEmptyAndTakesNoService) {
    rows("DROP TABLE ServiciosSalidaGlobal");
    importServices("");
    expectSuccess();
    importServices(service(1, 501, ""));
    expectFailure(102, "Could not insert service");
}

// --- Streams of a service --------------------------------------------------------------------

constexpr const char* kStreamColumns =
    "INSERT INTO PIDsSalidaGlobal (idPSG, MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, "
    "Orden, Tipo, StreamId, AudioCode, EstadoPID, EstadoBorrado)  VALUES (";

std::string streams(const char* order) {
    return "<pidOrders><pidOrder><languageCode>spa</languageCode><streamId>3</streamId><type>2"
           "</type><order>" +
           std::string(order) + "</order></pidOrder></pidOrders>";
}

TEST_F(ImportedServices, TheStreamsOfAStoredServiceAreWritten) {
    addStream(51, 1);
    importServices(service(1, 501, streams("7")));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre("UPDATE PIDsSalidaGlobal SET  Orden = '7' , EstadoPID = '1' "
                                      ", EstadoBorrado = '0'  WHERE idPSG = '51'",
                                      kListed));
    EXPECT_THAT(changeLines(), Contains(serviceLine(" outputSid: 501")));
}

TEST_F(ImportedServices, TheLastOfSeveralStreamListsCounts) {
    addStream(51, 1);
    importServices(service(1, 501, streams("7") + "<PIDORDERS/>"));
    expectSuccess();
    EXPECT_THAT(stored("SELECT Orden, EstadoBorrado FROM PIDsSalidaGlobal"),
                ElementsAre(ElementsAre("1", "2")));
}

TEST_F(ImportedServices, AListedServiceWithoutAStreamListLeavesItsStreamsAlone) {
    addStream(51, 1);
    importServices(service(1, 501, ""));
    EXPECT_THAT(device.statements(), Not(Contains(selectStreams(1))));
}

TEST_F(ImportedServices, TheStreamsOfANewServiceAreWrittenUnderItsNewKey) {
    importServices(service(1, 501, "") + service(2, 502, streams("7") + "<inputId>2</inputId>"));
    expectSuccess();
    EXPECT_THAT(
        partStatements(),
        ElementsAre(selectServices(), StartsWith("INSERT INTO ServiciosSalidaGlobal "),
                    selectStreams(2), "SELECT * FROM ServiciosSalidaGlobal  WHERE idSSG LIKE '2' ",
                    std::string(kStreamColumns) +
                        "NULL, '02:00:00:00:00:11', '2', '2', '2', '7', '2', '3', 'spa', "
                        "'1', '0' )",
                    kListed));
}

TEST_F(ImportedServices, FailingStreamsFailTheService) {
    importServices(service(1, 501, "<pidOrders><pid/></pidOrders>"));
    expectFailure(101, "No pidOrder element found");
    EXPECT_THAT(changeLines(), Not(Contains(HasSubstr("SERVICE"))));
}

TEST_F(ImportedServices, StreamsThatWereSeenBeforeAWrongValueAreStillWritten) {
    addStream(51, 1);
    importServices(service(1, 501, streams("7") + "<inputSid>65536</inputSid>"));
    expectFailure(103, "inputSid value cannot be greater than 65535");
    EXPECT_THAT(writes(), ElementsAre("UPDATE PIDsSalidaGlobal SET  Orden = '7' , EstadoPID = '1' "
                                      ", EstadoBorrado = '0'  WHERE idPSG = '51'"));
}

TEST_F(ImportedServices, AWrongValueEndsTheWalkBeforeTheStreams) {
    importServices(service(1, 501, "<inputSid>65536</inputSid>" + streams("7")));
    expectFailure(103, "inputSid value cannot be greater than 65535");
    EXPECT_THAT(device.statements(), Not(Contains(selectStreams(1))));
}

// --- Services that the document does not list ------------------------------------------------

TEST_F(ImportedServices, AServiceThatIsNotListedIsMarkedForRemovalWithItsStreams) {
    addService(2, 1, 502);
    addStream(51, 2);
    addStream(52, 2);
    addStream(53, 1);
    importServices(service(1, 501, ""));
    expectSuccess();
    EXPECT_THAT(
        partStatements(),
        ElementsAre(selectServices(), kListed, selectStreams(2),
                    "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  WHERE "
                    "idPSG = '51'",
                    "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  WHERE "
                    "idPSG = '52'",
                    "UPDATE ServiciosSalidaGlobal SET  Seleccionado = '0' , Orden = '0' , LCN = "
                    "'0' , EstadoBorrado = '2' , EstadoServicio = '1'  WHERE idSSG = '2'"));
    EXPECT_EQ(stored("SELECT idSSG FROM ServiciosSalidaGlobal").size(), 2U);
}

TEST_F(ImportedServices, AModuleWithoutTheSectionKeepsItsServices) {
    addStream(51, 1);
    importModule("");
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedServices, AnEmptySectionMarksEveryServiceOfTheModule) {
    addService(2, 2, 502);
    rows(
        "INSERT INTO ServiciosSalidaGlobal (idSSG, MAC, EstadoBorrado) VALUES (9, "
        "'02:00:00:00:00:99', 0)");
    importServices("");
    expectSuccess();
    EXPECT_THAT(
        stored("SELECT idSSG, Seleccionado, Orden, LCN, EstadoServicio, EstadoBorrado FROM "
               "ServiciosSalidaGlobal"),
        ElementsAre(ElementsAre("1", "0", "0", "0", "1", "2"),
                    ElementsAre("2", "0", "0", "0", "1", "2"),
                    ElementsAre("9", std::nullopt, std::nullopt, std::nullopt, std::nullopt, "0")));
}

TEST_F(ImportedServices, AServiceThatIsMarkedAlreadyIsNotWrittenAgain) {
    rows(
        "UPDATE ServiciosSalidaGlobal SET Seleccionado = 0, Orden = 0, LCN = 0, EstadoBorrado = "
        "2, EstadoServicio = 1");
    importServices("");
    expectSuccess();
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedServices, AModuleMayHaveNoServices) {
    rows("DELETE FROM ServiciosSalidaGlobal");
    importServices("");
    expectSuccess();
    EXPECT_THAT(partStatements(), ElementsAre(selectServices()));
}

TEST_F(ImportedServices, AFailedUpdateOfAStreamEndsItsServicesStreamsButNotTheServices) {
    addService(2, 1, 502);
    addStream(51, 1);
    addStream(52, 1);
    addStream(53, 2);
    device.failStatements("UPDATE PIDsSalidaGlobal", 3, 5, "locked");
    importServices("");
    expectFailure(102, "Could not update pidIt");
    const std::string firstStream =
        "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  WHERE idPSG = '51'";
    const std::string removed =
        "UPDATE ServiciosSalidaGlobal SET  Seleccionado = '0' , Orden = '0' , LCN = '0' , "
        "EstadoBorrado = '2' , EstadoServicio = '1'  WHERE idSSG = ";
    EXPECT_THAT(writes(),
                ElementsAre(firstStream, firstStream, firstStream, removed + "'1'",
                            "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  "
                            "WHERE idPSG = '53'",
                            removed + "'2'"));
    EXPECT_EQ(column("EstadoBorrado"), "0");
}

TEST_F(ImportedServices, AFailedUpdateOfAServiceEndsTheSection) {
    addService(2, 1, 502);
    device.failStatements("UPDATE ServiciosSalidaGlobal", 3, 5, "locked");
    importServices("");
    expectFailure(102, "Could not update service");
    EXPECT_THAT(device.statements(), Not(Contains(selectStreams(2))));
    EXPECT_THAT(writes(), Each(HasSubstr("idSSG = '1'")));
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedServices, StatementsComeInTheirOrder) {
    addService(2, 1, 502);
    addService(3, 2, 501);
    addStream(51, 3);
    addStream(52, 1);
    importServices(service(1, 503, "<inputSid>703</inputSid>") +
                   service(2, 501, "<outputName>Film</outputName>" + streams("4")) +
                   service(1, 502, ""));
    expectSuccess();
    EXPECT_THAT(
        device.statements(),
        ElementsAre(
            "BEGIN TRANSACTION", "SELECT * FROM RedesModulos ",
            "SELECT * FROM RedesModulos  WHERE MAC LIKE '02:00:00:00:00:11' ", selectServices(),
            std::string(kInsertColumns) +
                "NULL, '02:00:00:00:00:11', '703', '503', '', '', '0', '1', '0', '0', '7000', "
                "'0', '1', '1', '0', '2', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', '0', "
                "'1' )",
            selectStreams(3),
            "UPDATE PIDsSalidaGlobal SET  Orden = '4' , EstadoPID = '1' , EstadoBorrado = '0'  "
            "WHERE idPSG = '51'",
            selectStreams(1),
            "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  WHERE idPSG = "
            "'52'",
            "UPDATE ServiciosSalidaGlobal SET  Seleccionado = '0' , Orden = '0' , LCN = '0' , "
            "EstadoBorrado = '2' , EstadoServicio = '1'  WHERE idSSG = '1'",
            "UPDATE ServiciosSalidaGlobal SET  EstadoBorrado = '0'  WHERE idSSG = '2'",
            "UPDATE ServiciosSalidaGlobal SET  NombreSalida = 'Film' , EstadoBorrado = '0' , "
            "EstadoServicio = '1'  WHERE idSSG = '3'",
            "COMMIT"));
    EXPECT_THAT(device.logLines(), ElementsAre(serviceLine(" outputSid: 503 inputSid: 703"),
                                               serviceLine(" outputSid: 501 outputName: Film"),
                                               serviceLine(" outputSid: 502"),
                                               "61: REMOTE_CONTROL::: New Module parameters: "));
    EXPECT_EQ(out(),
              "Processing: modules\nProcessing: Services\nProcessing: PIDs --->idSSG: 3\n"
              "languageCode node_value: spa\n");
}

}  // namespace
