#include "app/run_modes.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <iostream>
#include <string>

#include "db/database.h"
#include "platform/platform.h"
#include "support/fake_device.h"

namespace app {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

constexpr const char* kDocument = "/tmp/document.xml";
constexpr const char* kDeclaration = "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n";
constexpr const char* kNoConfiguration = "No 'configuration' element found\n";

// An accepted change of one setting, and a CAM list of one module.
constexpr const char* kConfiguration =
    "<configuration><identification><location>roof</location></identification></configuration>";
constexpr const char* kRefused = "<configuration><maintenances><x/></maintenances></configuration>";
constexpr const char* kCamList =
    "<vsecureCAMList><cam><serialNumber>7</serialNumber></cam></vsecureCAMList>";

class RunModes : public test::DeviceTest {
  protected:
    RunModes() { becomeModel("RNB-K408"); }

    ExitStatus import(const std::string& text) {
        device.writeFile(kDocument, text);
        return importConfiguration(kDocument);
    }

    [[nodiscard]] std::vector<test::Row> locations() const {
        return device.query(tarvodb::kConfigDatabase,
                            "SELECT valor FROM configuracionWebGlobal "
                            "WHERE nombre = 'identificacion_localizacion'");
    }

    // Another program of the device changes the list of languages.
    void changeLanguage(const std::string& language) {
        device.execute(tarvodb::kConfigDatabase,
                       "DELETE FROM AudioLanguageListGlobal;"
                       "INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES ('" +
                           language + "')");
    }

    [[nodiscard]] std::vector<test::Row> cams() const {
        return device.query(tarvodb::kVsecureDatabase, "SELECT idCliente FROM VSecure");
    }
};

const test::Row kRoof = {"roof"};
const test::Row kCam = {"7"};

TEST_F(RunModes, ExportHasTheConfigurationAsItsRoot) {
    becomeModel("QRA-310");

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);

    const std::string text = device.readFile("/tmp/ConfigurationXML.xml").value_or("");
    EXPECT_THAT(text,
                StartsWith(std::string(kDeclaration) + "<configuration>\n\t<identification>"));
    EXPECT_THAT(text, testing::EndsWith("\n</configuration>\n"));
    EXPECT_EQ(out(), text + "\n");
    EXPECT_EQ(err(), "");
}

TEST_F(RunModes, ExportOfAnRnbIsABackupOfConfigurationAndCamList) {
    device.execute(tarvodb::kVsecureDatabase, "INSERT INTO VSecure (idCliente) VALUES ('7')");

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);

    const std::string text = device.readFile(kOutputFile).value_or("");
    EXPECT_THAT(text, StartsWith(std::string(kDeclaration) + "<backup>\n\t<configuration>\n"));
    EXPECT_THAT(text, HasSubstr("\n\t</configuration>\n"
                                "\t<vsecureCAMList>\n"
                                "\t\t<cam>\n"
                                "\t\t\t<serialNumber>7</serialNumber>\n"
                                "\t\t\t<hasPublicKey>0</hasPublicKey>\n"
                                "\t\t\t<publicKey/>\n"
                                "\t\t\t<manufacturer/>\n"
                                "\t\t\t<registerDate/>\n"
                                "\t\t\t<ekShared/>\n"
                                "\t\t\t<description/>\n"
                                "\t\t</cam>\n"
                                "\t</vsecureCAMList>\n"
                                "</backup>\n"));
    EXPECT_EQ(out(), text + "\n");
}

TEST_F(RunModes, ExportWithAnErrorPrintsNothingAndKeepsAnEarlierFile) {
    device.writeFile(kOutputFile, "earlier");
    device.failOpens(tarvodb::kConfigDatabase);

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::database);

    EXPECT_EQ(out(), "");
    EXPECT_EQ(err(), "Error: 102\n");
    EXPECT_EQ(device.readFile(kOutputFile), "earlier");
    EXPECT_EQ(device.sleeps().size(), 10);
}

TEST_F(RunModes, ExportOfAnRnbWithoutItsCamDatabaseIsAnError) {
    device.failOpens(tarvodb::kVsecureDatabase);

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::database);

    EXPECT_EQ(out(), "");
    EXPECT_EQ(err(), "Error: 102\n");
    EXPECT_FALSE(device.exists(kOutputFile));
    EXPECT_THAT(device.sleeps(), ElementsAre());  // the list is built once
}

TEST_F(RunModes, ExportThatCannotCreateItsFileHasPrintedTheDocument) {
    becomeModel("QRA-310");
    std::filesystem::create_directory(device.path(kOutputFile));

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::failure);

    EXPECT_THAT(out(), StartsWith(kDeclaration));
    EXPECT_EQ(err(), "Unable to create ConfigurationXML file\n");
}

TEST_F(RunModes, ABackupIsReadableByThoseWhoCanReadTheDatabase) {
    using std::filesystem::perms;
    for (const auto& [database, backup] :
         {std::pair(0640U, 0640U), std::pair(0775U, 0664U), std::pair(0600U, 0600U)}) {
        std::filesystem::permissions(device.path(tarvodb::kConfigDatabase), perms{database});
        EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);
        EXPECT_EQ(platform::fileStatus(kOutputFile).value().mode, backup);
    }
}

TEST_F(RunModes, ABackupWhoseDatabaseHasGoneIsForItsOwnerAlone) {
    becomeModel("QRA-310");
    device.beforeStatement("SELECT * FROM AudioLanguageListGlobal",
                           [this] { device.removeFile(tarvodb::kConfigDatabase); });
    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);
    EXPECT_EQ(platform::fileStatus(kOutputFile).value().mode, 0600U);
}

TEST_F(RunModes, ExportThatCannotPrintHasWrittenItsFile) {
    becomeModel("QRA-310");
    std::cout.setstate(std::ios::badbit);
    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::failure);
    std::cout.clear();
    EXPECT_THAT(device.readFile(kOutputFile).value_or(""), StartsWith(kDeclaration));
    EXPECT_EQ(err(), "Unable to write to standard output\n");
}

TEST_F(RunModes, ExportBesideAWriterIsReadAgain) {
    becomeModel("QRA-310");
    device.beforeStatement("SELECT * FROM RedesModulos", [this] { changeLanguage("fra"); });

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);

    EXPECT_THAT(out(), HasSubstr("<language>fra</language>"));
    EXPECT_EQ(out(), device.readFile(kOutputFile).value_or("") + "\n");
    EXPECT_EQ(err(), "");
    EXPECT_EQ(device.eventsOf("sql: SELECT * FROM RedesModulos").size(), 2);
    EXPECT_THAT(device.sleeps(), ElementsAre());
}

TEST_F(RunModes, ExportOfAStateThatDoesNotRestIsAsItWasRead) {
    becomeModel("QRA-310");
    for (const char* language : {"fra", "ita", "por"}) {
        device.beforeStatement("SELECT * FROM RedesModulos",
                               [this, language] { changeLanguage(language); });
    }

    EXPECT_EQ(exportConfiguration(kOutputFile), ExitStatus::success);

    EXPECT_THAT(out(), HasSubstr("<language>ita</language>"));
    EXPECT_EQ(err(), "The databases change while they are read: the document may mix two states\n");
    EXPECT_EQ(device.eventsOf("sql: SELECT * FROM RedesModulos").size(), 3);
}

TEST_F(RunModes, ImportTakesAConfigurationAtTheTop) {
    EXPECT_EQ(import(kConfiguration), ExitStatus::success);
    EXPECT_THAT(locations(), ElementsAre(kRoof));
}

TEST_F(RunModes, ImportTakesTheFirstConfiguration) {
    EXPECT_EQ(import(std::string(kConfiguration) + kRefused), ExitStatus::success);
    EXPECT_THAT(locations(), ElementsAre(kRoof));
}

TEST_F(RunModes, ImportLeavesTheFileAsItIs) {
    const std::string text =
        "<configuration><identification><location>a&amp;b&#65;</location></identification>"
        "</configuration>";
    EXPECT_EQ(import(text), ExitStatus::success);
    EXPECT_EQ(device.readFile(kDocument), text);
}

TEST_F(RunModes, ImportTakesConfigurationAndCamListOfABackup) {
    EXPECT_EQ(import(std::string("<x/><backup>") + kCamList + kConfiguration + "</backup>"),
              ExitStatus::success);
    EXPECT_THAT(locations(), ElementsAre(kRoof));
    EXPECT_THAT(cams(), ElementsAre(kCam));
}

TEST_F(RunModes, ImportOfABackupWithoutCamListIsComplete) {
    EXPECT_EQ(import(std::string("<backup>") + kConfiguration + "</backup>"), ExitStatus::success);
    EXPECT_THAT(locations(), ElementsAre(kRoof));
}

TEST_F(RunModes, ImportIgnoresACamListThatIsNotOfTheBackup) {
    const std::string before = std::string("<backup>") + kConfiguration;
    for (const std::string& text :
         {std::string(kConfiguration) + kCamList, std::string(kCamList) + kConfiguration,
          before + "</backup>" + kCamList, before + "<x>" + kCamList + "</x></backup>",
          before + "<VSECURECAMLIST><cam><serialNumber>7</serialNumber></cam></VSECURECAMLIST>"
                   "</backup>"}) {
        SCOPED_TRACE(text);
        EXPECT_EQ(import(text), ExitStatus::success);
        EXPECT_THAT(locations(), ElementsAre(kRoof));
        EXPECT_THAT(cams(), ElementsAre());
    }
}

TEST_F(RunModes, ImportLeavesTheCamListOfAFailedConfigurationAlone) {
    EXPECT_EQ(import(std::string("<backup>") + kRefused + kCamList + "</backup>"),
              ExitStatus::invalidCommand);
    EXPECT_THAT(cams(), ElementsAre());
}

TEST_F(RunModes, ImportReportsAFailedCamListAfterAStoredConfiguration) {
    device.failOpens(tarvodb::kVsecureDatabase);
    EXPECT_EQ(import(std::string("<backup>") + kConfiguration + kCamList + "</backup>"),
              ExitStatus::database);
    EXPECT_EQ(err(), "Error: 102\n");
    EXPECT_THAT(locations(), ElementsAre(kRoof));
}

TEST_F(RunModes, ImportComparesTheOuterNamesExactly) {
    for (const char* text : {"<Configuration/>", "<Backup><configuration/></Backup>",
                             "<backup><CONFIGURATION/></backup>"}) {
        EXPECT_EQ(import(text), ExitStatus::failure) << text;
    }
    EXPECT_EQ(import("<other/><configuration/>"), ExitStatus::success);
}

TEST_F(RunModes, ImportLooksNowhereElseThanInTheBackupWhenThereIsOne) {
    for (const char* text : {"<backup/>", "<backup/><configuration/>", "<configuration/><backup/>",
                             "<backup><x><configuration/></x></backup>"}) {
        EXPECT_EQ(import(text), ExitStatus::failure) << text;
    }
}

TEST_F(RunModes, ImportOfAMissingFileFindsNoConfiguration) {
    EXPECT_EQ(importConfiguration("/tmp/nowhere.xml"), ExitStatus::failure);
    EXPECT_EQ(err(), kNoConfiguration);
}

TEST_F(RunModes, MalformedXmlIsThrownWithFileLineAndColumn) {
    try {
        import("<configuration>\n  < a/>\n</configuration>");
        FAIL() << "accepted";
    } catch (const document::ParseError& error) {
        EXPECT_STREQ(error.what(), "/tmp/document.xml:2:4: expected element name");
    }
    EXPECT_FALSE(device.exists("/tmp/Errors_ConfigurationXML.xml"));
}

TEST_F(RunModes, ASuccessfulImportIsNotTriedAgain) {
    device.writeFile(kDocument, kConfiguration);
    EXPECT_EQ(importWithRetries(kDocument), ExitStatus::success);
    EXPECT_THAT(device.sleeps(), ElementsAre());
}

TEST_F(RunModes, AFailedImportIsTriedThreeTimesEachFollowedByASecond) {
    device.writeFile(kDocument, "<none/>");
    EXPECT_EQ(importWithRetries(kDocument), ExitStatus::failure);
    EXPECT_EQ(err(), std::string(kNoConfiguration) + kNoConfiguration + kNoConfiguration);
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "1", "1"));
}

TEST_F(RunModes, ASecondTrySeesWhatTheFirstLeft) {
    const std::string script = "/tarvo/script/WAN_from_DB.sh";
    device.shellResults[script] = 256;
    device.writeFile(kDocument,
                     "<configuration><network><ip>10.0.0.9</ip></network></configuration>");

    EXPECT_EQ(importWithRetries(kDocument), ExitStatus::success);

    EXPECT_THAT(device.shellCommands(), ElementsAre(script));
    EXPECT_THAT(device.sleeps(), ElementsAre("1"));
    EXPECT_EQ(err(), "Error: 203\n");
}

TEST_F(RunModes, ATryWhoseDatabaseIsReplacedStoresIntoTheNewOneNextTime) {
    const std::filesystem::path database = device.path(tarvodb::kConfigDatabase);
    const std::filesystem::path restored = database.string() + ".restored";
    std::filesystem::copy_file(database, restored);
    device.beforeStatement("COMMIT", [&] { std::filesystem::rename(restored, database); });
    device.writeFile(kDocument,
                     "<configuration><network><ip>10.0.0.9</ip></network></configuration>");

    EXPECT_EQ(importWithRetries(kDocument), ExitStatus::success);

    EXPECT_THAT(
        device.query(tarvodb::kConfigDatabase,
                     "SELECT valor FROM configuracionWebGlobal WHERE nombre = 'network_IP'"),
        ElementsAre(test::Row{"10.0.0.9"}));
    EXPECT_THAT(device.shellCommands(), ElementsAre("/tarvo/script/WAN_from_DB.sh"));
    EXPECT_EQ(err(), "Error: 102\n");
}

}  // namespace

}  // namespace app
