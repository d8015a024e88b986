#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;
using Rows = std::vector<test::Row>;

constexpr const char* kDelete = "DELETE FROM MantenimientoHomeChannelsGlobal";

std::string selectOf(const std::string& id) {
    return "SELECT * FROM MantenimientoHomeChannelsGlobal  WHERE idMantenimiento LIKE '" + id +
           "' ";
}

std::string insertOf(const std::string& values) {
    return "INSERT INTO MantenimientoHomeChannelsGlobal (idMantenimiento, Frequency, Orbita, "
           "Polaridad, Banda, SymbolRate, ONID, TSID, Estado)  VALUES (" +
           values + " )";
}

class HomeChannels : public test::SectionImportTest {
  protected:
    HomeChannels() {
        rows(
            "INSERT INTO MantenimientoHomeChannelsGlobal VALUES (1, 11000, 130, 1, 0, 22000, 7, "
            "8, 0), (2, 12000, 282, 0, 1, 27500, 9, 10, 0)");
    }

    // Imports one element with these children.
    void importChannel(const std::string& children) {
        importSections("<homeChannels><homechannel>" + children + "</homechannel></homeChannels>");
    }

    void store(const std::string& column, const std::string& value) {
        rows("UPDATE MantenimientoHomeChannelsGlobal SET " + column + " = " + value);
    }

    [[nodiscard]] Rows table() const {
        return stored("SELECT * FROM MantenimientoHomeChannelsGlobal");
    }
};

TEST_F(HomeChannels, AnEmptySectionDeletesEveryChannel) {
    importSections("<homeChannels/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete));
    EXPECT_THAT(table(), IsEmpty());
}

TEST_F(HomeChannels, RowsAreSelectedThenTheTableIsEmptiedThenFilledInTheOrderOfTheDocument) {
    importSections(
        "<homeChannels><homechannel><id>2</id></homechannel>"
        "<homechannel><id>1</id><orbit>192</orbit></homechannel></homeChannels>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("2"), selectOf("1"), kDelete,
                            insertOf("'2', '12000', '282', '0', '1', '27500', '9', '10', '0'"),
                            insertOf("'1', '11000', '192', '1', '0', '22000', '7', '8', '1'")));
}

TEST_F(HomeChannels, AChannelThatTheDocumentDoesNotNameIsGone) {
    importChannel("<id>2</id>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"2", "12000", "282", "0", "1", "27500", "9", "10", "0"}}));
}

TEST_F(HomeChannels, AnUnknownIdStartsFromTheDefaults) {
    importChannel("<id>5</id>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"5", "11856", "192", "0", "1", "27500", "1", "1072", "1"}}));
}

TEST_F(HomeChannels, AnUnknownIdWithAFrequencyKeepsTheOtherDefaults) {
    importChannel("<id>5</id><frequency>12000</frequency>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"5", "12000", "192", "0", "1", "27500", "1", "1072", "1"}}));
}

TEST_F(HomeChannels, EachChangedFieldMarksTheRow) {
    const std::pair<const char*, test::Row> kChanges[] = {
        {"<frequency>11001</frequency>", {"1", "11001", "130", "1", "0", "22000", "7", "8", "1"}},
        {"<symbolrate>22001</symbolrate>", {"1", "11000", "130", "1", "0", "22001", "7", "8", "1"}},
        {"<orbit>131</orbit>", {"1", "11000", "131", "1", "0", "22000", "7", "8", "1"}},
        {"<polarity>vertical</polarity>", {"1", "11000", "130", "0", "0", "22000", "7", "8", "1"}},
        {"<band>high</band>", {"1", "11000", "130", "1", "1", "22000", "7", "8", "1"}},
    };
    for (const auto& [child, row] : kChanges) {
        SCOPED_TRACE(child);
        rows(
            "DELETE FROM MantenimientoHomeChannelsGlobal; INSERT INTO "
            "MantenimientoHomeChannelsGlobal VALUES (1, 11000, 130, 1, 0, 22000, 7, 8, 0)");
        importChannel(std::string("<id>1</id>") + child);
        expectSuccess();
        EXPECT_EQ(table(), Rows{row});
    }
}

TEST_F(HomeChannels, EqualValuesLeaveTheRowUnmarked) {
    importChannel(
        "<id>1</id><frequency>11000</frequency><symbolrate>22000</symbolrate>"
        "<orbit>130</orbit><polarity>horizontal</polarity><band>low</band>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "11000", "130", "1", "0", "22000", "7", "8", "0"}}));
}

TEST_F(HomeChannels, NumbersGivenAsTextsAreComparedAsTexts) {
    importChannel("<id>1</id><frequency>011000</frequency>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        testing::Contains(insertOf("'1', '011000', '130', '1', '0', '22000', '7', '8', '1'")));
}

TEST_F(HomeChannels, AnythingButVerticalIsHorizontal) {
    const std::pair<const char*, const char*> kTexts[] = {
        {"vertical", "0"}, {"VERTICAL", "0"},  {"horizontal", "1"}, {"Horizontal", "1"},
        {"vertikal", "1"}, {"vertical ", "1"}, {"0", "1"},          {"", "1"}};
    for (const auto& [text, code] : kTexts) {
        SCOPED_TRACE(text);
        store("Polaridad", *code == '0' ? "1" : "0");
        importChannel(std::string("<id>1</id><polarity>") + text + "</polarity>");
        expectSuccess();
        EXPECT_EQ(cell("SELECT Polaridad FROM MantenimientoHomeChannelsGlobal"), code);
    }
}

TEST_F(HomeChannels, AnythingButLowIsHigh) {
    const std::pair<const char*, const char*> kTexts[] = {
        {"low", "0"}, {"Low", "0"}, {"HIGH", "1"}, {"high", "1"}, {"lo", "1"}, {"", "1"}};
    for (const auto& [text, code] : kTexts) {
        SCOPED_TRACE(text);
        store("Banda", *code == '0' ? "1" : "0");
        importChannel(std::string("<id>1</id><band>") + text + "</band>");
        expectSuccess();
        EXPECT_EQ(cell("SELECT Banda FROM MantenimientoHomeChannelsGlobal"), code);
    }
}

TEST_F(HomeChannels, NetworkAndStreamIdentifiersAreNeverChanged) {
    importChannel("<id>1</id><onid>99</onid><tsid>98</tsid><other>97</other>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "11000", "130", "1", "0", "22000", "7", "8", "0"}}));
}

TEST_F(HomeChannels, NamesAreMatchedInAnyLetterCaseAndTheLastOfANameWins) {
    importSections(
        "<homeChannels><HomeChannel><ID>2</ID><id>1</id><FREQUENCY>1</FREQUENCY>"
        "<frequency>2</frequency></HomeChannel></homeChannels>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "2", "130", "1", "0", "22000", "7", "8", "1"}}));
}

TEST_F(HomeChannels, AnEmptyTextForANullColumnChangesNothing) {
    rows(
        "UPDATE MantenimientoHomeChannelsGlobal SET Frequency = NULL, Polaridad = NULL, "
        "ONID = NULL WHERE idMantenimiento = 1");
    importChannel("<id>1</id><frequency/><polarity>vertical</polarity>");
    expectSuccess();
    EXPECT_EQ(
        table(),
        (Rows{{"1", std::nullopt, "130", std::nullopt, "0", "22000", std::nullopt, "8", "0"}}));
}

TEST_F(HomeChannels, AnEmptyTextForAStoredOneIsStored) {
    importChannel("<id>1</id><orbit/>");
    expectSuccess();
    EXPECT_EQ(cell("SELECT Orbita || ' ' || Estado FROM MantenimientoHomeChannelsGlobal"), " 1");
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(HomeChannels, AnotherElementFailsBeforeAnythingIsDeleted) {
    importSections(
        "<homeChannels><homechannel><id>1</id></homechannel><channel><id>2</id>"
        "</channel></homeChannels>");
    expectFailure({{"101 Invalid command", "Error 101, No homechannel element found"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("1")));
}

TEST_F(HomeChannels, TextBetweenChannelsIsNotAChannel) {
    importSections("<homeChannels>stray text<homechannel><id>1</id></homechannel></homeChannels>");
    expectFailure({{"101 Invalid command", "Error 101, No homechannel element found"}});
}

TEST_F(HomeChannels, WhiteSpaceAndCommentsBetweenChannelsAreNothing) {
    importSections(
        "<homeChannels>\n <!-- Astra -->\n <homechannel>\n <!-- the id --> <id>1</id> text"
        "</homechannel>\n</homeChannels>");
    expectSuccess();
    EXPECT_EQ(table(), (Rows{{"1", "11000", "130", "1", "0", "22000", "7", "8", "0"}}));
}

TEST_F(HomeChannels, AChannelWithoutIdFailsBeforeAnythingIsDeleted) {
    importChannel("<frequency>12000</frequency>");
    expectFailure({{"101 Invalid command: homechannel has no id field",
                    "Error 101, homechannel has no id field"}});
    EXPECT_THAT(sectionStatements(), IsEmpty());
}

TEST_F(HomeChannels, AnEmptyIdCountsAsGiven) {
    importChannel("<id/>");
    EXPECT_EQ(sectionStatements().at(0), selectOf(""));
}

TEST_F(HomeChannels, ADeleteThatFailsDoesNotStopTheInserts) {
    device.failStatements(kDelete, 3, SQLITE_BUSY);
    importChannel("<id>5</id>");
    expectFailure({{"102 Could not access database: Could not delete homeChannels",
                    "Error 102, Could not delete homeChannels"}});
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("5"), kDelete, kDelete, kDelete,
                            insertOf("'5', '11856', '192', '0', '1', '27500', '1', '1072', '1'")));
}

TEST_F(HomeChannels, AnInsertThatFailsDoesNotStopTheOthers) {
    device.failStatements("INSERT INTO MantenimientoHomeChannelsGlobal", 3, SQLITE_FULL);
    importSections(
        "<homeChannels><homechannel><id>5</id></homechannel><homechannel><id>1</id>"
        "</homechannel></homeChannels>");
    expectFailure({{"102 Could not access database: Could not insert homeChannel",
                    "Error 102, Could not insert homeChannel"}});
    EXPECT_EQ(test::last(sectionStatements()),
              insertOf("'1', '11000', '130', '1', '0', '22000', '7', '8', '0'"));
}

TEST_F(HomeChannels, EveryInsertThatFailsIsRecorded) {
    device.failStatements("INSERT INTO MantenimientoHomeChannelsGlobal", 6, SQLITE_FULL);
    importSections(
        "<homeChannels><homechannel><id>5</id></homechannel><homechannel><id>1</id>"
        "</homechannel></homeChannels>");
    expectFailure({{"102 Could not access database: Could not insert homeChannel",
                    "Error 102, Could not insert homeChannel"},
                   {"102 Could not access database: Could not insert homeChannel",
                    "Error 102, Could not insert homeChannel"}});
}

TEST_F(HomeChannels, AnIdThatIsNotANumberOrStandsTwiceCannotBeInserted) {
    for (const char* ids : {"<id>one</id>", "<id>5</id></homechannel><homechannel><id>5</id>"}) {
        SCOPED_TRACE(ids);
        importChannel(ids);
        expectFailure({{"102 Could not access database: Could not insert homeChannel",
                        "Error 102, Could not insert homeChannel"}});
    }
}

TEST_F(HomeChannels, FailuresAreToldInTheDebugLogWithoutACode) {
    platform::debugMask = 0x10;
    importSections("<homeChannels><channel/></homeChannels>");
    EXPECT_THAT(device.logLines(), IsSupersetOf({"3: Command error: 101 Invalid command",
                                                 "3: No homechannel element found"}));
    importChannel("");
    EXPECT_THAT(device.logLines(),
                IsSupersetOf({"3: Command error: 101 Invalid command: homechannel has no id field",
                              "3: homechannel has no id field"}));
}

}  // namespace
