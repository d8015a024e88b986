#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/module_import.h"

namespace {

using test::child;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kInsertColumns =
    "INSERT INTO PIDsSalidaGlobal (idPSG, MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas, "
    "Orden, Tipo, StreamId, AudioCode, EstadoPID, EstadoBorrado)  VALUES (";

constexpr const char* kServiceListed =
    "UPDATE ServiciosSalidaGlobal SET  EstadoBorrado = '0'  WHERE idSSG = '4'";

struct Stream {
    const char* languageCode = "spa";
    const char* streamId = "3";
    const char* type = "2";
    const char* order = "1";
};

std::string pidOrder(const Stream& stream) {
    return "<pidOrder>" + child("languageCode", stream.languageCode) +
           child("streamId", stream.streamId) + child("type", stream.type) +
           child("order", stream.order) + "</pidOrder>";
}

// A module with the service 501, which has the key 4 and two streams.
class ImportedPidOrders : public test::ModuleImportTest {
  protected:
    ImportedPidOrders() {
        becomeModel("QRA-310");
        addModule(1, kMac);
        rows(
            "INSERT INTO ServiciosSalidaGlobal (idSSG, MAC, SID, fk_idEntrada, "
            "fk_idSalidasLogicas, EstadoBorrado, EstadoServicio) VALUES (4, '02:00:00:00:00:11', "
            "501, 2, 1, 0, 0)");
        addStream(51, "spa", "3", "2");
        addStream(52, "eng", "4", "2");
    }

    void addStream(int id, const std::string& audioCode, const std::string& streamId,
                   const std::string& type, int service = 4) {
        rows("INSERT INTO PIDsSalidaGlobal VALUES (" + std::to_string(id) + ", '" + kMac + "', " +
             std::to_string(service) + ", 2, 1, 1, " + type + ", " + streamId + ", '" + audioCode +
             "', 0, 0)");
    }

    void importStreams(const std::string& pidOrders) {
        importModule(
            "<services><service><outputId>1</outputId><outputSid>501</outputSid>"
            "<pidOrders>" +
            pidOrders + "</pidOrders></service></services>");
    }

    static std::string listed(int id, const char* order) {
        return "UPDATE PIDsSalidaGlobal SET  Orden = '" + std::string(order) +
               "' , EstadoPID = '1' , EstadoBorrado = '0'  WHERE idPSG = '" + std::to_string(id) +
               "'";
    }

    static std::string marked(int id) {
        return "UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '2'  WHERE idPSG = "
               "'" +
               std::to_string(id) + "'";
    }

    static std::string insertOf(const std::string& lastValues) {
        return std::string(kInsertColumns) + "NULL, '02:00:00:00:00:11', '4', '2', '1', " +
               lastValues + ", '1', '0' )";
    }

    static std::string selectStreams() {
        return "SELECT * FROM PIDsSalidaGlobal  WHERE fk_idSSG LIKE '4' ";
    }
    static std::string selectService() {
        return "SELECT * FROM ServiciosSalidaGlobal  WHERE idSSG LIKE '4' ";
    }
};

// --- Streams that have a row -----------------------------------------------------------------

TEST_F(ImportedPidOrders, AListedStreamGetsItsOrder) {
    importStreams(pidOrder({.order = "7"}) + pidOrder({"eng", "4", "2", "8"}));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(listed(51, "7"), listed(52, "8"), kServiceListed));
}

TEST_F(ImportedPidOrders, AStreamThatIsNotListedIsMarkedForRemoval) {
    importStreams(pidOrder({.order = "7"}));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(listed(51, "7"), marked(52), kServiceListed));
    EXPECT_EQ(stored("SELECT idPSG FROM PIDsSalidaGlobal").size(), 2U);
}

TEST_F(ImportedPidOrders, AnEmptySectionMarksEveryStreamOfTheService) {
    addStream(53, "fra", "5", "2", 9);
    importStreams("");
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(marked(51), marked(52), kServiceListed));
}

TEST_F(ImportedPidOrders, AnOrderThatStaysIsNotWritten) {
    importStreams(pidOrder({.order = "1"}));
    EXPECT_THAT(writes(),
                Contains("UPDATE PIDsSalidaGlobal SET  EstadoPID = '1' , EstadoBorrado = '0'  "
                         "WHERE idPSG = '51'"));
}

TEST_F(ImportedPidOrders, AnOrderIsStoredAsItsText) {
    importStreams(pidOrder({.order = "01"}) + pidOrder({"eng", "4", "2", nullptr}));
    EXPECT_THAT(writes(), ElementsAre(listed(51, "01"), listed(52, ""), kServiceListed));
}

TEST_F(ImportedPidOrders, AStreamThatIsMarkedAlreadyIsNotMarkedAgain) {
    rows("UPDATE PIDsSalidaGlobal SET EstadoBorrado = 2, EstadoPID = 1");
    importStreams(pidOrder({.order = "1"}));
    EXPECT_THAT(writes(), ElementsAre("UPDATE PIDsSalidaGlobal SET  EstadoBorrado = '0'  WHERE "
                                      "idPSG = '51'",
                                      kServiceListed));
}

TEST_F(ImportedPidOrders, AStreamThatIsListedTwiceTakesTheLastOrder) {
    importStreams(pidOrder({.order = "7"}) + pidOrder({.order = "9"}));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(listed(51, "9"), marked(52), kServiceListed));
}

TEST_F(ImportedPidOrders, TheFirstOfSeveralEqualRowsIsTaken) {
    addStream(53, "spa", "3", "2");
    importStreams(pidOrder({.order = "7"}));
    EXPECT_THAT(writes(), ElementsAre(listed(51, "7"), marked(52), marked(53), kServiceListed));
}

TEST_F(ImportedPidOrders, MissingChildrenMatchNullColumns) {
    rows(
        "UPDATE PIDsSalidaGlobal SET AudioCode = NULL, StreamId = NULL, Tipo = NULL WHERE idPSG = "
        "52");
    importStreams(pidOrder({nullptr, nullptr, nullptr, "7"}));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(marked(51), listed(52, "7"), kServiceListed));
}

TEST_F(ImportedPidOrders, NamesAreComparedWithoutLetterCase) {
    importStreams(
        "<PIDorder><LanguageCode>spa</LanguageCode><STREAMID>3</STREAMID><Type>2</Type>"
        "<ORDER>7</ORDER></PIDorder>");
    expectSuccess();
    EXPECT_THAT(writes(), Contains(listed(51, "7")));
}

TEST_F(ImportedPidOrders, OtherChildrenAndTextsAreIgnored) {
    importStreams(
        "<pidOrder>text<languageCode>spa</languageCode><x>9</x><!-- c --><streamId>3"
        "</streamId><type>2</type><order>7</order></pidOrder>");
    expectSuccess();
    EXPECT_THAT(writes(), Contains(listed(51, "7")));
}

TEST_F(ImportedPidOrders, TheLastOfSeveralEqualChildrenCounts) {
    importStreams(
        "<pidOrder><order>7</order><languageCode>eng</languageCode><languageCode>spa"
        "</languageCode><streamId>3</streamId><type>2</type><order>8</order>"
        "</pidOrder>");
    expectSuccess();
    EXPECT_THAT(writes(), Contains(listed(51, "8")));
}

// --- New streams -----------------------------------------------------------------------------

TEST_F(ImportedPidOrders, AStreamIsKnownByLanguageNumberAndTypeAsExactTexts) {
    const std::pair<Stream, const char*> others[] = {
        {{.languageCode = "SPA"}, "'1', '2', '3', 'SPA'"},
        {{.languageCode = "fra"}, "'1', '2', '3', 'fra'"},
        {{.languageCode = nullptr}, "'1', '2', '3', ''"},
        {{.streamId = "03"}, "'1', '2', '03', 'spa'"},
        {{.streamId = nullptr}, "'1', '2', '', 'spa'"},
        {{.type = "3"}, "'1', '3', '3', 'spa'"},
        {{.type = " 2"}, "'1', ' 2', '3', 'spa'"},
        {{.type = nullptr}, "'1', '', '3', 'spa'"},
        {{.languageCode = "fra", .order = nullptr}, "'', '2', '3', 'fra'"},
        {{.languageCode = "o&apos;c"}, "'1', '2', '3', 'o''c'"},
    };
    for (const auto& [stream, values] : others) {
        SCOPED_TRACE(values);
        rows("DELETE FROM PIDsSalidaGlobal WHERE idPSG > 52");
        rows("UPDATE PIDsSalidaGlobal SET EstadoBorrado = 0, EstadoPID = 0");
        importStreams(pidOrder(stream));
        expectSuccess();
        EXPECT_THAT(partStatements(), Contains(insertOf(values)));
        EXPECT_THAT(partStatements(), Contains(marked(51)));
    }
}

TEST_F(ImportedPidOrders, ANewStreamThatStandsTwiceIsInsertedTwice) {
    importStreams(pidOrder({.languageCode = "fra"}) + pidOrder({.languageCode = "fra"}));
    expectSuccess();
    EXPECT_THAT(stored("SELECT idPSG FROM PIDsSalidaGlobal WHERE AudioCode = 'fra'"),
                ElementsAre(ElementsAre("53"), ElementsAre("54")));
}

TEST_F(ImportedPidOrders, ANewStreamTakesNullColumnsOfItsServiceAsTheyAre) {
    rows("UPDATE ServiciosSalidaGlobal SET fk_idEntrada = NULL");
    importStreams(pidOrder({.languageCode = "fra"}));
    expectSuccess();
    EXPECT_THAT(stored("SELECT MAC, fk_idSSG, fk_idEntrada, fk_idSalidasLogicas FROM "
                       "PIDsSalidaGlobal WHERE idPSG = 53"),
                ElementsAre(ElementsAre("02:00:00:00:00:11", "4", std::nullopt, "1")));
}

TEST_F(ImportedPidOrders, ANewStreamTakesWhatIsStoredOfItsService) {
    importModule(
        "<services><service><outputId>1</outputId><outputSid>501</outputSid>"
        "<inputId>1</inputId><pidOrders>" +
        pidOrder({.languageCode = "fra"}) + "</pidOrders></service></services>");
    expectSuccess();
    EXPECT_THAT(stored("SELECT fk_idEntrada FROM PIDsSalidaGlobal WHERE idPSG = 53"),
                ElementsAre(ElementsAre("2")));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(ImportedPidOrders, AnotherElementIsRefusedAtOnce) {
    platform::debugMask = 0x10;
    for (const char* other : {"<pid/>", "text"}) {
        SCOPED_TRACE(other);
        importStreams(pidOrder({.order = "7"}) + other);
        expectFailure(101, "No pidOrder element found");
        EXPECT_THAT(writes(), IsEmpty());
        EXPECT_THAT(device.logLines(), Contains("3: Error 101, No pidOrder element found"));
    }
}

TEST_F(ImportedPidOrders, AFailedInsertIsReportedAndTheNextStreamIsInserted) {
    device.failStatements("INSERT INTO PIDsSalidaGlobal", 3, 5, "locked");
    importStreams(pidOrder({.languageCode = "fra"}) + pidOrder({.order = "7"}) +
                  pidOrder({.languageCode = "ita"}));
    expectFailure(102, "Could not insert pidOrder");
    const std::string first = insertOf("'1', '2', '3', 'fra'");
    EXPECT_THAT(writes(), ElementsAre(first, first, first, insertOf("'1', '2', '3', 'ita'")));
    EXPECT_EQ(stored("SELECT idPSG FROM PIDsSalidaGlobal").size(), 2U);
}

TEST_F(ImportedPidOrders, ANewStreamWhoseServiceCannotBeReadIsRefused) {
    device.failStatements(selectService(), 3, 5, "locked");
    importStreams(pidOrder({.languageCode = "fra"}));
    expectFailure(102, "Could not insert pidOrder");
    EXPECT_THAT(writes(), IsEmpty());
}

TEST_F(ImportedPidOrders, TheFirstFailedUpdateEndsTheStreams) {
    device.failStatements("UPDATE PIDsSalidaGlobal", 3, 5, "locked");
    importStreams(pidOrder({.order = "7"}));
    expectFailure(102, "Could not update pidOrder");
    EXPECT_THAT(writes(), ElementsAre(listed(51, "7"), listed(51, "7"), listed(51, "7")));
}

TEST_F(ImportedPidOrders, StreamsThatCannotBeReadCountAsNone) {
    device.failStatements(selectStreams(), 3, 5, "locked");
    importStreams(pidOrder({}));
    expectSuccess();
    EXPECT_THAT(writes(), ElementsAre(insertOf("'1', '2', '3', 'spa'"), kServiceListed));
}

TEST_F(ImportedPidOrders, AMissingTableTakesNoStream) {
    rows("DROP TABLE PIDsSalidaGlobal");
    importStreams("");
    expectSuccess();
    importStreams(pidOrder({}));
    expectFailure(102, "Could not insert pidOrder");
}

// --- The whole section -----------------------------------------------------------------------

TEST_F(ImportedPidOrders, StatementsComeInTheirOrder) {
    addStream(53, "ita", "5", "2");
    importStreams(pidOrder({"fra", "6", "2", "1"}) + pidOrder({"ita", "5", "2", "2"}) +
                  pidOrder({"deu", "7", "1", "3"}) + pidOrder({"spa", "3", "2", "4"}));
    expectSuccess();
    EXPECT_THAT(partStatements(),
                ElementsAre("SELECT * FROM ServiciosSalidaGlobal  WHERE MAC LIKE "
                            "'02:00:00:00:00:11' ",
                            selectStreams(), selectService(), insertOf("'1', '2', '6', 'fra'"),
                            selectService(), insertOf("'3', '1', '7', 'deu'"), listed(51, "4"),
                            marked(52), listed(53, "2"), kServiceListed));
    EXPECT_EQ(out(),
              "Processing: modules\nProcessing: Services\nProcessing: PIDs --->idSSG: 4\n"
              "languageCode node_value: fra\nlanguageCode node_value: ita\n"
              "languageCode node_value: deu\nlanguageCode node_value: spa\n");
}

}  // namespace
