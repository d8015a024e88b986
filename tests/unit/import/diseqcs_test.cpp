#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Rows = std::vector<test::Row>;

constexpr const char* kDelete = "DELETE FROM DiSEqCGlobal";

std::string selectOf(const std::string& id) {
    return "SELECT * FROM DiSEqCGlobal  WHERE idDiSEqCGlobal LIKE '" + id + "'";
}

std::string insertOf(const std::string& values) {
    return "INSERT INTO DiSEqCGlobal (idDiSEqCGlobal, Nombre, Posicion, Orbita, Polaridad, Banda, "
           "Estado)  VALUES (" +
           values + " )";
}

class Diseqcs : public test::SectionImportTest {
  protected:
    Diseqcs() {
        rows(
            "INSERT INTO DiSEqCGlobal VALUES (1, 'Astra', 2, 192, 1, 0, 0), "
            "(2, 'Hotbird', 3, 130, 0, 1, 0)");
    }

    // Imports one element with these children.
    void importDiseqc(const std::string& children) {
        importSections("<diseqcs><diseqc>" + children + "</diseqc></diseqcs>");
    }

    [[nodiscard]] Rows table() const { return stored("SELECT * FROM DiSEqCGlobal"); }

    void expectChangeLine(const std::string& parameters) {
        EXPECT_THAT(changeLines(),
                    ElementsAre("61: REMOTE_CONTROL::: New DISEqC parameters: " + parameters));
    }
};

TEST_F(Diseqcs, AnEmptySectionDeletesEveryPosition) {
    importSections("<diseqcs/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete));
    EXPECT_THAT(table(), IsEmpty());
}

TEST_F(Diseqcs, RowsAreSelectedThenTheTableIsEmptiedThenFilledInTheOrderOfTheDocument) {
    importSections(
        "<diseqcs><diseqc><id>2</id></diseqc><diseqc><id>1</id><orbit>191</orbit>"
        "</diseqc></diseqcs>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("2"), selectOf("1"), kDelete,
                            insertOf("'2', 'Hotbird', '3', '130', '0', '1', '0'"),
                            insertOf("'1', 'Astra', '2', '191', '1', '0', '1'")));
}

TEST_F(Diseqcs, APositionWithOnlyItsIdKeepsItsStoredValues) {
    importDiseqc("<id>1</id>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "Astra", "2", "192", "1", "0", "0"}}));
    expectChangeLine("position=2 name=Astra orbit=192 polarity=1 band=0");
}

TEST_F(Diseqcs, AnUnknownIdStartsFromTheDefaults) {
    importDiseqc("<id>5</id>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"5", "", "0", "0", "0", "0", "1"}}));
    expectChangeLine("position=0 name= orbit=0 polarity=0 band=0");
}

TEST_F(Diseqcs, EachChangedValueMarksTheRowAndIsTold) {
    struct Value {
        const char* child;
        test::Row row;
        const char* told;
    };
    const Value kValues[] = {
        {"<position>4</position>",
         {"1", "Astra", "4", "192", "1", "0", "1"},
         "position=4 name=Astra orbit=192 polarity=1 band=0"},
        {"<name>A &amp; B 5%s</name>",
         {"1", "A & B 5%s", "2", "192", "1", "0", "1"},
         "position=2 name=A & B 5%s orbit=192 polarity=1 band=0"},
        {"<orbit>282</orbit>",
         {"1", "Astra", "2", "282", "1", "0", "1"},
         "position=2 name=Astra orbit=282 polarity=1 band=0"},
        {"<polarity>vertical</polarity>",
         {"1", "Astra", "2", "192", "0", "0", "1"},
         "position=2 name=Astra orbit=192 polarity=0 band=0"},
        {"<band>high</band>",
         {"1", "Astra", "2", "192", "1", "1", "1"},
         "position=2 name=Astra orbit=192 polarity=1 band=1"},
    };
    for (const auto& [child, row, told] : kValues) {
        SCOPED_TRACE(child);
        rows(
            "DELETE FROM DiSEqCGlobal; "
            "INSERT INTO DiSEqCGlobal VALUES (1, 'Astra', 2, 192, 1, 0, 0)");
        importDiseqc(std::string("<id>1</id>") + child);
        expectSuccess();
        EXPECT_EQ(table(), Rows{row});
        expectChangeLine(told);
    }
}

TEST_F(Diseqcs, EqualValuesLeaveTheRowUnmarked) {
    importDiseqc(
        "<id>1</id><position>2</position><name>Astra</name><orbit>192</orbit>"
        "<polarity>horizontal</polarity><band>low</band>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "Astra", "2", "192", "1", "0", "0"}}));
}

TEST_F(Diseqcs, NamesAndCodedTextsAreMatchedInAnyLetterCase) {
    importSections(
        "<diseqcs><DISEQC><Id>1</Id><POSITION>4</POSITION><NAME>N</NAME>"
        "<ORBIT>5</ORBIT><POLARITY>VERTICAL</POLARITY><BAND>High</BAND></DISEQC>"
        "</diseqcs>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "N", "4", "5", "0", "1", "1"}}));
}

TEST_F(Diseqcs, TheLastOfANameWins) {
    importDiseqc(
        "<id>7</id><name>First</name><polarity>horizontal</polarity><id>2</id>"
        "<name>Second</name><polarity>vertical</polarity>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"2", "Second", "3", "130", "0", "1", "1"}}));
}

TEST_F(Diseqcs, OtherChildrenAreIgnored) {
    importDiseqc("<id>1</id><other>9</other>text");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "Astra", "2", "192", "1", "0", "0"}}));
}

TEST_F(Diseqcs, NullColumnsAreToldAsNothingAndAnEmptyTextLeavesThemNull) {
    rows(
        "UPDATE DiSEqCGlobal SET Nombre = NULL, Posicion = NULL, Orbita = NULL, Polaridad = NULL, "
        "Banda = NULL WHERE idDiSEqCGlobal = 1");
    importDiseqc("<id>1</id><name/><orbit/><polarity>vertical</polarity><band>low</band>");
    expectSuccess();
    EXPECT_EQ(
        table(),
        (Rows{{"1", std::nullopt, std::nullopt, std::nullopt, std::nullopt, std::nullopt, "0"}}));
    expectChangeLine("position= name= orbit= polarity= band=");
}

TEST_F(Diseqcs, ChangesAreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importDiseqc("<id>1</id>");
    EXPECT_THAT(device.logLines(),
                testing::UnorderedElementsAre(
                    "5: New DISEqC parameters: position=2 name=Astra orbit=192 polarity=1 band=0",
                    "61: REMOTE_CONTROL::: New DISEqC parameters: position=2 name=Astra orbit=192 "
                    "polarity=1 band=0"));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(Diseqcs, AnotherElementFailsBeforeAnythingIsDeleted) {
    importSections("<diseqcs><diseqc><id>1</id></diseqc><position/></diseqcs>");
    expectFailure({{"101 Invalid command", "Error 101, No diseqc element found"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("1")));
}

TEST_F(Diseqcs, APositionWithoutIdFailsBeforeAnythingIsDeleted) {
    importDiseqc("<name>N</name>");
    expectFailure(
        {{"101 Invalid command: diseqc has no id field", "Error 101, diseqc has no id field"}});
    EXPECT_THAT(sectionStatements(), IsEmpty());
}

TEST_F(Diseqcs, AnUnknownPolarityFails) {
    for (const char* text : {"v", "vert", "circular", "0", ""}) {
        SCOPED_TRACE(text);
        importDiseqc(std::string("<polarity>") + text + "</polarity>");
        expectFailure({{"101 Invalid command: Invalid value for diseqc/polarity",
                        "Error 101, Invalid value for diseqc/polarity"}});
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(Diseqcs, AnUnknownBandFails) {
    for (const char* text : {"l", "lowest", "1", ""}) {
        SCOPED_TRACE(text);
        importDiseqc(std::string("<id>1</id><band>") + text + "</band>");
        expectFailure({{"101 Invalid command: Invalid value for diseqc/band",
                        "Error 101, Invalid value for diseqc/band"}});
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(Diseqcs, AnUnknownTextFailsAlsoWhenALaterOneIsKnown) {
    importDiseqc("<id>1</id><band>medium</band><polarity>?</polarity><band>low</band>");
    expectFailure({{"101 Invalid command: Invalid value for diseqc/band",
                    "Error 101, Invalid value for diseqc/band"}});
}

TEST_F(Diseqcs, ADeleteThatFailsDoesNotStopTheInserts) {
    device.failStatements(kDelete, 3, SQLITE_BUSY);
    importDiseqc("<id>5</id>");
    expectFailure({{"102 Could not access database: Could not delete diseqcs",
                    "Error 102, Could not delete diseqcs"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("5"), kDelete, kDelete, kDelete,
                                                 insertOf("'5', '', '0', '0', '0', '0', '1'")));
}

TEST_F(Diseqcs, AnInsertThatFailsDoesNotStopTheOthers) {
    device.failStatements("INSERT INTO DiSEqCGlobal", 3, SQLITE_FULL);
    importDiseqc("<id>5</id></diseqc><diseqc><id>1</id>");
    expectFailure({{"102 Could not access database: Could not insert diseqc",
                    "Error 102, Could not insert diseqc"}});
    EXPECT_EQ(test::last(sectionStatements()), insertOf("'1', 'Astra', '2', '192', '1', '0', '0'"));
}

TEST_F(Diseqcs, AnIdThatIsNotANumberOrStandsTwiceCannotBeInserted) {
    for (const char* ids : {"<id>one</id>", "<id>5</id></diseqc><diseqc><id>5</id>"}) {
        SCOPED_TRACE(ids);
        importDiseqc(ids);
        expectFailure({{"102 Could not access database: Could not insert diseqc",
                        "Error 102, Could not insert diseqc"}});
    }
}

TEST_F(Diseqcs, FailuresAreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importSections("<diseqcs><position/></diseqcs>");
    EXPECT_THAT(device.logLines(),
                testing::IsSupersetOf({"3: Command error: 101 Invalid command",
                                       "3: Error 101, No diseqc element found"}));
}

}  // namespace
