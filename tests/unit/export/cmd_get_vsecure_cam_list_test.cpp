#include "export/cmd_get_vsecure_cam_list.h"

#include <sqlite3.h>

#include <filesystem>
#include <set>

#include "platform/debug_log.h"
#include "support/export_checks.h"
#include "support/scripted_command.h"

namespace tarvo_remote_control {

namespace {

using test::Texts;

const Texts kSelect = {"SELECT * FROM VSecure "};

class GetVsecureCamList : public test::DeviceTest {
  protected:
    GetVsecureCamList() { becomeModel("RNB-K408"); }

    void insertCam(const std::string& values) {
        device.execute(tarvodb::kVsecureDatabase,
                       "INSERT INTO VSecure (idVSecure, Fabricante, idCliente, K_Publica,"
                       " EK_Shared, Alta, Reintentos, Error, Descripcion, estado) VALUES (" +
                           values + ")");
    }
    // A CAM whose only values are its serial number and public key; SQL literals.
    void insertCam(const std::string& serialNumber, const std::string& publicKey) {
        device.execute(tarvodb::kVsecureDatabase,
                       "INSERT INTO VSecure (idCliente, K_Publica) VALUES (" + serialNumber + ", " +
                           publicKey + ")");
    }

    // The children of `data` in the command's result document.
    static std::string dataOf(Command& command) {
        const std::string text = command.result().toXml(document::kNoIndenting);
        const std::string start = "<data>";
        const std::size_t first = text.find(start) + start.size();
        return text.substr(first, text.find("</data>") - first);
    }

    static std::string commandText(const std::string& children) {
        return "<command><id>7</id><data><getVsecureCAMList>" + children +
               "</getVsecureCAMList></data></command>";
    }

    // What the command form answers to a command element with these children.
    std::string answerTo(const std::string& children) {
        const test::CommandDocument document(commandText(children));
        CmdGetVsecureCAMList command(document.element());
        command.execute();
        errors_ = command.errors();
        return dataOf(command);
    }

    // The list that a command writes, printed.
    static std::string writtenBy(CmdGetVsecureCAMList& command, bool includePublicKeys,
                                 bool fullRecords, const char* name) {
        document::XmlDocument document;
        document::TreeWriter tree(document, document);
        command.buildCAMList(tree, includePublicKeys, fullRecords, name);
        return document::printed(document, document::kNoIndenting);
    }
    std::string listOf(bool includePublicKeys, bool fullRecords, const char* name) {
        CmdGetVsecureCAMList command;
        std::string list = writtenBy(command, includePublicKeys, fullRecords, name);
        errors_ = command.errors();
        return list;
    }

    [[nodiscard]] bool databaseIsOpen() const {
        const std::filesystem::path database = device.path(tarvodb::kVsecureDatabase);
        for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
            std::error_code ignored;
            if (std::filesystem::read_symlink(entry.path(), ignored) == database) {
                return true;
            }
        }
        return false;
    }

    // Of the last command.
    std::set<ErrorCode> errors_;
};

std::string inCommandForm(const std::string& cams) {
    return "<getVsecureCAMListResult>" + test::leaf("list", cams) + "</getVsecureCAMListResult>";
}

}  // namespace

// --- The list --------------------------------------------------------------------------------

TEST_F(GetVsecureCamList, AFullRecordHasEveryElementInItsOrder) {
    insertCam("11, 'Maker', 'C-1', 'PK', 'EK', '2024-05-06', '12', '13', 'Lobby', '14'");
    EXPECT_EQ(listOf(true, true, "vsecureCAMList"),
              "<vsecureCAMList><cam><serialNumber>C-1</serialNumber>"
              "<hasPublicKey>1</hasPublicKey><publicKey>PK</publicKey>"
              "<manufacturer>Maker</manufacturer><registerDate>2024-05-06</registerDate>"
              "<ekShared>EK</ekShared><description>Lobby</description></cam></vsecureCAMList>");
    EXPECT_TRUE(errors_.empty());
}

TEST_F(GetVsecureCamList, AFullRecordHasThePublicKeyUnasked) {
    insertCam("'C-1'", "'PK'");
    EXPECT_EQ(listOf(false, true, "l"),
              "<l><cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey>"
              "<publicKey>PK</publicKey><manufacturer/><registerDate/><ekShared/><description/>"
              "</cam></l>");
}

TEST_F(GetVsecureCamList, AShortRecordHasThePublicKeyWhenAskedFor) {
    insertCam("11, 'Maker', 'C-1', 'PK', 'EK', '2024-05-06', '12', '13', 'Lobby', '14'");
    EXPECT_EQ(listOf(true, false, "list"),
              "<list><cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey>"
              "<publicKey>PK</publicKey></cam></list>");
    EXPECT_EQ(listOf(false, false, "list"),
              "<list><cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey></cam>"
              "</list>");
}

TEST_F(GetVsecureCamList, HasPublicKeyTellsWhetherTheKeyIsEmpty) {
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"''", "0"}, {"NULL", "0"}, {"'0'", "1"}, {"' '", "1"}, {"'PK'", "1"}};
    insertCam("'C-1'", "''");
    for (const auto& [literal, has] : cases) {
        SCOPED_TRACE(literal);
        device.execute(tarvodb::kVsecureDatabase, "UPDATE VSecure SET K_Publica = " + literal);
        EXPECT_EQ(listOf(false, false, "list"), "<list><cam><serialNumber>C-1</serialNumber>" +
                                                    test::leaf("hasPublicKey", has) +
                                                    "</cam></list>");
    }
}

TEST_F(GetVsecureCamList, AnEmptyPublicKeyGivesAnEmptyElement) {
    insertCam("'C-1'", "''");
    EXPECT_EQ(listOf(true, false, "list"),
              "<list><cam><serialNumber>C-1</serialNumber><hasPublicKey>0</hasPublicKey>"
              "<publicKey/></cam></list>");
}

TEST_F(GetVsecureCamList, EveryRowIsACamInTheOrderReturned) {
    insertCam("2, '', 'C-2', '', '', '', '3', '1', '', '0'");
    insertCam("1, '', 'C-1', '', '', '', '0', '0', '', '2'");
    EXPECT_EQ(listOf(false, false, "list"),
              "<list><cam><serialNumber>C-1</serialNumber><hasPublicKey>0</hasPublicKey></cam>"
              "<cam><serialNumber>C-2</serialNumber><hasPublicKey>0</hasPublicKey></cam></list>");
}

TEST_F(GetVsecureCamList, AnEmptyTableGivesAnEmptyListOfThatName) {
    EXPECT_EQ(listOf(true, true, "vsecureCAMList"), "<vsecureCAMList/>");
    EXPECT_EQ(listOf(false, false, "list"), "<list/>");
}

TEST_F(GetVsecureCamList, TextsAreWrittenAsStored) {
    insertCam("1, 'A&B', ' 00 7%s ', '<k>\n line', '50% %Q', '6/5/24', '', '', 'caf\xE9', ''");
    EXPECT_EQ(listOf(true, true, "list"),
              "<list><cam><serialNumber> 00 7%s </serialNumber><hasPublicKey>1</hasPublicKey>"
              "<publicKey>&lt;k&gt;\n line</publicKey><manufacturer>A&amp;B</manufacturer>"
              "<registerDate>6/5/24</registerDate><ekShared>50% %Q</ekShared>"
              "<description>caf\xE9</description></cam></list>");
}

TEST_F(GetVsecureCamList, NullColumnsGiveEmptyElements) {
    test::addNullRow(device, tarvodb::kVsecureDatabase, "VSecure");
    EXPECT_EQ(listOf(true, true, "list"),
              "<list><cam><serialNumber/><hasPublicKey>0</hasPublicKey><publicKey/>"
              "<manufacturer/><registerDate/><ekShared/><description/></cam></list>");
}

TEST_F(GetVsecureCamList, ColumnsBehindTheKnownOnesAreNotRead) {
    device.execute(tarvodb::kVsecureDatabase, "ALTER TABLE VSecure ADD COLUMN Nuevo DEFAULT 'new'");
    insertCam("1, 'm', 's', 'p', 'e', 'd', '', '', 't', ''");
    EXPECT_EQ(listOf(true, true, "list"),
              "<list><cam><serialNumber>s</serialNumber><hasPublicKey>1</hasPublicKey>"
              "<publicKey>p</publicKey><manufacturer>m</manufacturer>"
              "<registerDate>d</registerDate><ekShared>e</ekShared>"
              "<description>t</description></cam></list>");
}

TEST_F(GetVsecureCamList, IsReadFromItsDatabaseWithOneUnconditionalSelect) {
    insertCam("'C-1'", "'PK'");
    listOf(true, true, "list");
    EXPECT_EQ(device.eventsOf("open: "), Texts{"/tarvo/DB/vsec_global.sqlite"});
    EXPECT_EQ(device.statements(), kSelect);
}

TEST_F(GetVsecureCamList, TheDatabaseIsClosedAfterwards) {
    {
        const tarvodb::Database other = tarvodb::openDatabase(tarvodb::kVsecureDatabase);
        EXPECT_TRUE(databaseIsOpen());  // so that the check below would see an open one
    }
    CmdGetVsecureCAMList command;
    writtenBy(command, true, true, "list");
    EXPECT_FALSE(databaseIsOpen());
}

TEST_F(GetVsecureCamList, WritingTheListAttachesAndLogsNothing) {
    platform::debugMask = 0x10;
    insertCam("'C-1'", "'PK'");
    CmdGetVsecureCAMList command;
    EXPECT_NE(writtenBy(command, true, true, "list").find("<cam>"), std::string::npos);
    EXPECT_TRUE(device.logLines().empty());
    EXPECT_EQ(dataOf(command).find("<cam>"), std::string::npos);
}

TEST_F(GetVsecureCamList, AListThatCannotBeOpenedIsEmptyWithAnError) {
    insertCam("'C-1'", "'PK'");
    device.failOpens(tarvodb::kVsecureDatabase);
    CmdGetVsecureCAMList command;
    EXPECT_EQ(writtenBy(command, true, true, "vsecureCAMList"), "<vsecureCAMList/>");
    EXPECT_EQ(command.errors(), std::set{ErrorCode{102}});
    EXPECT_NE(command.result()
                  .toXml(document::kNoIndenting)
                  .find("<errors><error><id>102</id><text>Could not access database</text></error>"
                        "</errors>"),
              std::string::npos);
    EXPECT_TRUE(device.statements().empty());
}

TEST_F(GetVsecureCamList, AFailedSelectIsTriedThreeTimesAndGivesNoRows) {
    insertCam("'C-1'", "'PK'");
    device.failStatements("SELECT", 3, SQLITE_BUSY, "");
    EXPECT_EQ(listOf(true, true, "list"), "<list/>");
    EXPECT_TRUE(errors_.empty());
    EXPECT_EQ(device.statements(), (Texts{kSelect[0], kSelect[0], kSelect[0]}));
    EXPECT_EQ(device.logLines(), test::failedSelectLog("VSecure"));
    EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));
}

TEST_F(GetVsecureCamList, ASelectThatSucceedsAtItsThirdTryGivesTheRows) {
    insertCam("'C-1'", "''");
    device.failStatements("SELECT", 2, SQLITE_BUSY, "");
    EXPECT_EQ(listOf(false, false, "list"),
              "<list><cam><serialNumber>C-1</serialNumber><hasPublicKey>0</hasPublicKey></cam>"
              "</list>");
    EXPECT_EQ(device.sleeps(), (Texts{"1", "2"}));
}

TEST_F(GetVsecureCamList, AMissingTableGivesAnEmptyList) {
    device.execute(tarvodb::kVsecureDatabase, "DROP TABLE VSecure");
    EXPECT_EQ(listOf(true, true, "list"), "<list/>");
    EXPECT_TRUE(errors_.empty());
}

// --- The command form ------------------------------------------------------------------------

TEST_F(GetVsecureCamList, TheCommandFormAnswersWithAListOfShortRecords) {
    insertCam("1, 'm', 'C-1', 'PK', 'e', 'd', '', '', 't', ''");
    EXPECT_EQ(answerTo(""), inCommandForm("<cam><serialNumber>C-1</serialNumber>"
                                          "<hasPublicKey>1</hasPublicKey></cam>"));
    EXPECT_EQ(device.statements(), kSelect);
    EXPECT_TRUE(errors_.empty());
}

TEST_F(GetVsecureCamList, PublicKeysAreIncludedWhenTheSwitchIsOne) {
    insertCam("1, 'm', 'C-1', 'PK', 'e', 'd', '', '', 't', ''");
    insertCam("2, 'm', 'C-2', '', 'e', 'd', '', '', 't', ''");
    EXPECT_EQ(answerTo("<includePublicKeys>1</includePublicKeys>"),
              inCommandForm("<cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey>"
                            "<publicKey>PK</publicKey></cam>"
                            "<cam><serialNumber>C-2</serialNumber><hasPublicKey>0</hasPublicKey>"
                            "<publicKey/></cam>"));
}

TEST_F(GetVsecureCamList, TheSwitchIsReadAsAnInteger) {
    const std::vector<std::pair<std::string, bool>> cases = {
        {"1", true},     {"01", true},   {" 1 ", true}, {"1x", true},  {"<![CDATA[1]]>", true},
        {"0", false},    {"2", false},   {"-1", false}, {"10", false}, {"", false},
        {"true", false}, {"yes", false}, {"x1", false}};
    insertCam("'C-1'", "'PK'");
    for (const auto& [text, isOn] : cases) {
        SCOPED_TRACE(text);
        EXPECT_EQ(answerTo("<includePublicKeys>" + text + "</includePublicKeys>"),
                  inCommandForm("<cam><serialNumber>C-1</serialNumber>"
                                "<hasPublicKey>1</hasPublicKey>" +
                                std::string(isOn ? "<publicKey>PK</publicKey>" : "") + "</cam>"));
    }
}

TEST_F(GetVsecureCamList, TheSwitchIsAChildNotAnAttributeNorAGrandchild) {
    insertCam("'C-1'", "'PK'");
    const std::string withoutKeys =
        inCommandForm("<cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey></cam>");
    EXPECT_EQ(answerTo("<options><includePublicKeys>1</includePublicKeys></options>"), withoutKeys);

    const test::CommandDocument document(
        "<command><id>7</id><data><getVsecureCAMList includePublicKeys=\"1\"/></data></command>");
    CmdGetVsecureCAMList command(document.element());
    command.execute();
    EXPECT_EQ(dataOf(command), withoutKeys);
}

TEST_F(GetVsecureCamList, TheSwitchIsFoundAmongOtherChildrenAndTexts) {
    insertCam("'C-1'", "'PK'");
    EXPECT_EQ(answerTo(" text <!-- comment --><other>0</other> more "
                       "<includePublicKeys>1</includePublicKeys>"),
              inCommandForm("<cam><serialNumber>C-1</serialNumber><hasPublicKey>1</hasPublicKey>"
                            "<publicKey>PK</publicKey></cam>"));
}

TEST_F(GetVsecureCamList, WithoutCommandDocumentNoKeysAreIncluded) {
    insertCam("'C-1'", "'PK'");
    CmdGetVsecureCAMList command;
    command.execute();
    EXPECT_EQ(dataOf(command), inCommandForm("<cam><serialNumber>C-1</serialNumber>"
                                             "<hasPublicKey>1</hasPublicKey></cam>"));
}

TEST_F(GetVsecureCamList, TheCommandFormAnswersWithAnEmptyListWhenTheDatabaseCannotBeOpened) {
    device.failOpens(tarvodb::kVsecureDatabase);
    EXPECT_EQ(answerTo("<includePublicKeys>1</includePublicKeys>"), inCommandForm(""));
    EXPECT_EQ(errors_, std::set{ErrorCode{102}});
}

TEST_F(GetVsecureCamList, TheCommandFormIsTheSameOnEveryModel) {
    insertCam("'C-1'", "'PK'");
    for (const char* model :
         {"QRA-310", "LMV-502", "PKD-707", "RNB-K408", "WVX-AQ4", "LMV-512", "WVX-BQ4", "XYZ-1"}) {
        SCOPED_TRACE(model);
        becomeModel(model);
        EXPECT_EQ(answerTo(""), inCommandForm("<cam><serialNumber>C-1</serialNumber>"
                                              "<hasPublicKey>1</hasPublicKey></cam>"));
    }
}

TEST_F(GetVsecureCamList, TheCommandFormLogsItsStartWhenDebugging) {
    const test::CommandDocument document(commandText(""));
    CmdGetVsecureCAMList command(document.element());
    command.execute();
    EXPECT_TRUE(device.logLines().empty());

    platform::debugMask = 0x10;
    CmdGetVsecureCAMList debugged(document.element());
    device.forgetEvents();
    debugged.execute();
    EXPECT_EQ(
        device.events(),
        (Texts{"log 7: Running getVsecureCAMList command", "open: /tarvo/DB/vsec_global.sqlite",
               "sql: SELECT * FROM VSecure ", "close: /tarvo/DB/vsec_global.sqlite"}));

    platform::debugMask = 0xEF;
    device.forgetEvents();
    CmdGetVsecureCAMList(document.element()).execute();
    EXPECT_TRUE(device.logLines().empty());
}

}  // namespace tarvo_remote_control
