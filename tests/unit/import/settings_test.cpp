#include "import/settings.h"

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
using testing::MatchesRegex;
using testing::Not;
using testing::SizeIs;

std::string selectOf(const std::string& key) {
    return "SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE '" + key + "' ";
}

std::string updateOf(int id, const std::string& quotedValue) {
    return "UPDATE configuracionWebGlobal SET  valor = " + quotedValue +
           "  WHERE idConfiguracionGlobal = '" + std::to_string(id) + "'";
}

std::string insertOf(const std::string& key, const std::string& quotedValue) {
    return "INSERT INTO configuracionWebGlobal (idConfiguracionGlobal, nombre, valor, "
           "aplicarBackup)  VALUES (NULL, '" +
           key + "', " + quotedValue + ", NULL )";
}

std::string element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">";
}

class Settings : public test::SectionImportTest {};

// --- The setting map -------------------------------------------------------------------------

// What follows a changed setting.
enum class After { nothing, networkScript, regional };

struct Mapped {
    const char* section;
    const char* element;
    const char* key;
    After after;
};

constexpr Mapped kMapped[] = {
    {"identification", "headendName", "identificacion_cabecera", After::nothing},
    {"identification", "location", "identificacion_localizacion", After::nothing},
    {"identification", "installationDate", "identificacion_fecha", After::nothing},
    {"identification", "zenContractId", "identificacion_contrato", After::nothing},
    {"identification", "hostType", "identificacion_hostType", After::nothing},
    {"identification", "installer", "identificacion_instalador", After::nothing},
    {"identification", "clientID", "identificacion_codCanal", After::nothing},
    {"identification", "TVModels", "identificacion_TVModels", After::nothing},
    {"identification", "installationMode", "identificacion_installationMode", After::nothing},
    {"regional", "language", "codtimezone", After::regional},
    {"regional", "country", "idtimezone", After::regional},
    {"regional", "timezone", "subtimezone", After::regional},
    {"network", "internet", "network_ConfigureNET", After::networkScript},
    {"network", "dhcp", "network_UseDHCPIP", After::networkScript},
    {"network", "ip", "network_IP", After::networkScript},
    {"network", "netmask", "network_Netmask", After::networkScript},
    {"network", "gateway", "network_Gateway", After::networkScript},
    {"network", "dns1", "network_PrimaryDNS", After::networkScript},
    {"network", "dns2", "network_SecondaryDNS", After::networkScript},
    {"remoteControl", "active", "servidorZEN_activo", After::nothing},
    {"remoteControl", "interval", "servidorZEN_intervalo", After::nothing},
    {"remoteControl", "serverUrl", "servidorZEN_direccion", After::nothing},
    {"remoteControl", "username", "servidorZEN_usuario", After::nothing},
    {"remoteControl", "password", "servidorZEN_password", After::nothing},
    {"lnb", "oscLowFreq", "LNB_fb", After::nothing},
    {"lnb", "oscHighFreq", "LNB_fa", After::nothing},
    {"lnb", "oscBandaCFreq", "LNB_fbandaC", After::nothing},
    {"lnb", "oscBandaSatelite", "LNB_BandaSatelite", After::nothing},
};

class EverySetting : public Settings, public testing::WithParamInterface<Mapped> {
  protected:
    void importValue(const std::string& value) {
        importSections(element(GetParam().section, element(GetParam().element, value)));
    }

    void expectPostAction() {
        if (GetParam().after == After::networkScript) {
            EXPECT_THAT(device.shellCommands(), ElementsAre("/tarvo/script/WAN_from_DB.sh"));
        } else {
            EXPECT_THAT(device.shellCommands(), IsEmpty());
        }
        // The regional settings are read again before anything is done with them; here two of the
        // three are missing, which ends that.
        EXPECT_THAT(device.eventsOf("open: "), SizeIs(GetParam().after == After::regional ? 2 : 1));
    }
};

TEST_P(EverySetting, IsInsertedWhenItsKeyHasNoRow) {
    importValue("any text");
    expectSuccess();
    const auto statements = device.statements();
    ASSERT_GE(statements.size(), 4U);
    EXPECT_EQ(statements[1], selectOf(GetParam().key));
    EXPECT_EQ(statements[2], insertOf(GetParam().key, "'any text'"));
    EXPECT_EQ(statements[3], "COMMIT");
    EXPECT_THAT(changeLines(), ElementsAre(std::string("61: REMOTE_CONTROL::: setConfig ") +
                                           GetParam().key + " = any text"));
    expectPostAction();
}

TEST_P(EverySetting, IsUpdatedWhenItsTextIsAnotherOne) {
    setting(GetParam().key, "old");
    importValue("new");
    expectSuccess();
    EXPECT_THAT(device.statements(), Contains(updateOf(1, "'new'")));
    EXPECT_EQ(valueOf(GetParam().key), "new");
    expectPostAction();
}

TEST_P(EverySetting, IsLeftAloneWhenItsTextIsTheStoredOne) {
    setting(GetParam().key, "same");
    importValue("same");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf(GetParam().key)));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
    EXPECT_THAT(device.eventsOf("open: "), SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Settings, EverySetting, testing::ValuesIn(kMapped),
                         [](const auto& mapped) { return std::string(mapped.param.key); });

TEST_F(Settings, AreWrittenInTheOrderOfTheDocument) {
    setting("network_IP", "10.0.0.1");
    importSections("<network><gateway>10.0.0.254</gateway><ip>10.0.0.2</ip></network>");
    expectSuccess();
    EXPECT_THAT(
        sectionStatements(),
        ElementsAre(selectOf("network_Gateway"), insertOf("network_Gateway", "'10.0.0.254'"),
                    selectOf("network_IP"), updateOf(1, "'10.0.0.2'")));
}

TEST_F(Settings, AreToldOnStandardOutputWithALineOfAnAddress) {
    importSections("<lnb><oscLowFreq>9750</oscLowFreq></lnb>");
    EXPECT_THAT(out(), MatchesRegex("Processing: lnb\nsetConfig: LNB_fb = 9750\n0x[0-9a-f]+\n"));
}

TEST_F(Settings, AreToldAlsoWhenTheyAreUnchanged) {
    setting("LNB_fb", "9750");
    importSections("<lnb><oscLowFreq>9750</oscLowFreq></lnb>");
    EXPECT_THAT(out(), HasSubstr("setConfig: LNB_fb = 9750\n"));
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: setConfig LNB_fb = 9750"));
}

TEST_F(Settings, AreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importSections("<lnb><oscLowFreq>9750</oscLowFreq></lnb>");
    EXPECT_THAT(device.logLines(),
                testing::UnorderedElementsAre("5: setConfig LNB_fb = 9750",
                                              "61: REMOTE_CONTROL::: setConfig LNB_fb = 9750"));
}

TEST_F(Settings, AreMatchedInAnyLetterCaseOfTheirElements) {
    importSections(
        "<lnb><OSCLOWFREQ>1</OSCLOWFREQ></lnb><identification><tvmodels>2</tvmodels>"
        "</identification>");
    expectSuccess();
    EXPECT_EQ(valueOf("LNB_fb"), "1");
    EXPECT_EQ(valueOf("identificacion_TVModels"), "2");
}

TEST_F(Settings, AnElementThatTheMapDoesNotNameIsSkippedSilently) {
    // `ip` belongs to another section.
    importSections("<lnb><ip>1</ip>text<wattage>2</wattage><oscLowFreq>3</oscLowFreq></lnb>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("LNB_fb"), insertOf("LNB_fb", "'3'")));
    EXPECT_THAT(changeLines(), SizeIs(1));
}

TEST_F(Settings, AnEmptySectionSucceeds) {
    importSections("<identification/><regional/><network/><remoteControl/><lnb/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), IsEmpty());
}

TEST_F(Settings, ValuesAreNotCheckedAgainstTheirKind) {
    importSections(
        "<network><ip>not an address</ip><dhcp>perhaps</dhcp></network>"
        "<lnb><oscLowFreq>low</oscLowFreq></lnb>");
    expectSuccess();
    EXPECT_EQ(valueOf("network_IP"), "not an address");
    EXPECT_EQ(valueOf("network_UseDHCPIP"), "perhaps");
    EXPECT_EQ(valueOf("LNB_fb"), "low");
}

TEST_F(Settings, AKeyIsFoundInAnotherLetterCaseAndKeepsIt) {
    setting("NETWORK_ip", "10.0.0.1");
    importSections("<network><ip>10.0.0.2</ip></network>");
    EXPECT_EQ(valueOf("NETWORK_ip"), "10.0.0.2");
    EXPECT_EQ(cell("SELECT count(*) FROM configuracionWebGlobal"), "1");
}

TEST_F(Settings, TheUnderscoreOfAKeyMatchesAnyCharacter) {
    setting("networkXIP", "10.0.0.1");
    importSections("<network><ip>10.0.0.2</ip></network>");
    EXPECT_EQ(valueOf("networkXIP"), "10.0.0.2");
}

TEST_F(Settings, OfSeveralRowsThatMatchTheFirstIsTakenAndItsValueAloneIsWritten) {
    setting("network_IP", "10.0.0.1");
    setting("network_ip", "10.0.0.1");
    importSections("<network><ip>10.0.0.2</ip></network>");
    EXPECT_EQ(
        stored("SELECT nombre, valor, aplicarBackup FROM configuracionWebGlobal"),
        (std::vector<test::Row>{{"network_IP", "10.0.0.2", "1"}, {"network_ip", "10.0.0.1", "1"}}));
}

TEST_F(Settings, ANullValueIsReplacedByAText) {
    rows("INSERT INTO configuracionWebGlobal (nombre) VALUES ('network_IP')");
    importSections("<network><ip>10.0.0.2</ip></network>");
    EXPECT_EQ(valueOf("network_IP"), "10.0.0.2");
    EXPECT_THAT(device.shellCommands(), SizeIs(1));
}

TEST_F(Settings, ANullValueReadsAsTheEmptyTextAndStaysNullForOne) {
    rows("INSERT INTO configuracionWebGlobal (nombre) VALUES ('network_IP')");
    importSections("<network><ip/></network>");
    expectSuccess();
    EXPECT_EQ(valueOf("network_IP"), "NULL");
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(Settings, AnElementWithoutTextStoresTheEmptyText) {
    setting("network_IP", "10.0.0.1");
    importSections("<network><ip/><gateway></gateway></network>");
    expectSuccess();
    EXPECT_EQ(valueOf("network_IP"), "");
    EXPECT_EQ(valueOf("network_Gateway"), "");
}

TEST_F(Settings, TextsArriveInTheDatabaseAsTheyAreMeant) {
    importSections(
        "<identification><headendName>O'Brien &amp; &lt;sons&gt; &quot;50%&quot; "
        "\xC3\xA9</headendName></identification>");
    expectSuccess();
    EXPECT_THAT(device.statements(), Contains(insertOf("identificacion_cabecera",
                                                       "'O''Brien & <sons> \"50%\" \xC3\xA9'")));
    EXPECT_EQ(valueOf("identificacion_cabecera"), "O'Brien & <sons> \"50%\" \xC3\xA9");
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: setConfig identificacion_cabecera"
                                           " = O'Brien & <sons> \"50%\" \xC3\xA9"));
}

TEST_F(Settings, AnUpdateReplacesTheFirstPercentSignByABlankAndKeepsFurtherOnes) {
    setting("identificacion_cabecera", "old");
    importSections("<identification><headendName>10%s of 20%s</headendName></identification>");
    expectSuccess();
    EXPECT_EQ(valueOf("identificacion_cabecera"), "10 s of 20%s");
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: setConfig identificacion_cabecera"
                                           " = 10%s of 20%s"));
}

TEST_F(Settings, AnUpdateThatFailsEndsTheSection) {
    setting("network_IP", "10.0.0.1");
    device.failStatements("UPDATE configuracionWebGlobal", 3, SQLITE_BUSY);
    importSections(
        "<network><gateway>10.0.0.254</gateway><ip>10.0.0.2</ip><dns1>1</dns1>"
        "</network>");
    expectFailure({{"102 Could not access database: Could not set value",
                    "Error 102, Could not set network/ip"}});
    EXPECT_THAT(device.statements(), Not(Contains(selectOf("network_PrimaryDNS"))));
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "2", "3"));
    EXPECT_THAT(out(), MatchesRegex("Processing: network\n"
                                    "setConfig: network_Gateway = 10.0.0.254\n0x[0-9a-f]+\n"
                                    "setConfig: network_IP = 10.0.0.2\n0x[0-9a-f]+\n"
                                    "0x[0-9a-f]+\n"));
}

TEST_F(Settings, AnInsertThatFailsEndsTheSection) {
    device.failStatements("INSERT INTO configuracionWebGlobal", 3, SQLITE_FULL);
    importSections("<lnb><oscLowFreq>9750</oscLowFreq><oscHighFreq>10600</oscHighFreq></lnb>");
    expectFailure({{"102 Could not access database: Could not set value",
                    "Error 102, Could not set lnb/oscLowFreq"}});
    EXPECT_THAT(device.statements(), Not(Contains(selectOf("LNB_fa"))));
}

TEST_F(Settings, AWriteThatFailsIsToldInTheDebugLogWithTheElement) {
    platform::debugMask = 0x10;
    device.failStatements("INSERT INTO configuracionWebGlobal", 3, SQLITE_FULL);
    importSections("<lnb><oscLowFreq>9750</oscLowFreq></lnb>");
    EXPECT_THAT(
        device.logLines(),
        AllOf(Contains("3: Error 102, Could not set lnb/oscLowFreq"),
              Contains("3: Command error: 102 Could not access database: Could not set value")));
}

TEST_F(Settings, AWriteThatSucceedsAtItsThirdTryCounts) {
    setting("network_IP", "10.0.0.1");
    device.failStatements("UPDATE configuracionWebGlobal", 2, SQLITE_BUSY);
    importSections("<network><ip>10.0.0.2</ip></network>");
    expectSuccess();
    EXPECT_EQ(valueOf("network_IP"), "10.0.0.2");
    EXPECT_THAT(device.sleeps(), ElementsAre("1", "2"));
}

TEST_F(Settings, AMissingTableFailsTheImport) {
    rows("DROP TABLE configuracionWebGlobal");
    importSections("<network><ip>10.0.0.2</ip></network>");
    expectFailure({{"102 Could not access database: Could not set value",
                    "Error 102, Could not set network/ip"}});
}

// --- The maturity rating ---------------------------------------------------------------------

TEST_F(Settings, TheMaturityRatingIsTheTextOfItsElement) {
    setting("MaturityRating", "3");
    importSections("<maturityRating>18</maturityRating>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(selectOf("MaturityRating"), updateOf(1, "'18'")));
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: setConfig MaturityRating = 18"));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(Settings, AMaturityRatingWithoutTextStoresTheEmptyText) {
    setting("MaturityRating", "3");
    importSections("<maturityRating/>");
    expectSuccess();
    EXPECT_EQ(valueOf("MaturityRating"), "");
}

TEST_F(Settings, AMaturityRatingThatCannotBeWrittenAddsNoErrorOfItsOwn) {
    setting("MaturityRating", "3");
    device.failStatements("UPDATE configuracionWebGlobal", 3, SQLITE_BUSY);
    importSections("<maturityRating>18</maturityRating>");
    expectFailure({});
}

// --- Maintenance -----------------------------------------------------------------------------

class Maintenance : public test::SectionImportTest {
  protected:
    Maintenance() {
        setting("mantenimiento_hora", "1");
        setting("mantenimiento_min", "2");
        setting("mantenimiento_activo", "0");
    }

    [[nodiscard]] std::string time() const {
        return valueOf("mantenimiento_hora") + ":" + valueOf("mantenimiento_min") + " " +
               valueOf("mantenimiento_activo");
    }
};

TEST_F(Maintenance, ItsThreeSettingsAreWrittenInTheirOrder) {
    importSections(
        "<maintenances><maintenance><active>1</active><min>30</min><hour>4</hour>"
        "</maintenance></maintenances>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("mantenimiento_hora"), updateOf(1, "'4'"),
                            selectOf("mantenimiento_min"), updateOf(2, "'30'"),
                            selectOf("mantenimiento_activo"), updateOf(3, "'1'")));
    EXPECT_THAT(changeLines(),
                ElementsAre("61: REMOTE_CONTROL::: setConfig mantenimiento_hora = 4",
                            "61: REMOTE_CONTROL::: setConfig mantenimiento_min = 30",
                            "61: REMOTE_CONTROL::: setConfig mantenimiento_activo = 1"));
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(Maintenance, NamesAreMatchedInAnyLetterCaseAndOthersIgnored) {
    importSections(
        "<maintenances><MAINTENANCE><Hour>4</Hour><week>2</week><MIN>30</MIN>"
        "<Active>1</Active></MAINTENANCE></maintenances>");
    expectSuccess();
    EXPECT_EQ(time(), "4:30 1");
}

TEST_F(Maintenance, ALaterDuplicateWins) {
    importSections(
        "<maintenances><maintenance><hour>4</hour><min>30</min><active>1</active>"
        "<hour>5</hour><min>31</min><active>0</active></maintenance></maintenances>");
    expectSuccess();
    EXPECT_EQ(time(), "5:31 0");
    EXPECT_THAT(changeLines(), SizeIs(3));
}

TEST_F(Maintenance, OfSeveralElementsTheLastWins) {
    importSections(
        "<maintenances>"
        "<maintenance><hour>4</hour><min>30</min><active>1</active></maintenance>"
        "<maintenance><hour>5</hour><min>31</min><active>0</active></maintenance>"
        "</maintenances>");
    expectSuccess();
    EXPECT_EQ(time(), "5:31 0");
    EXPECT_THAT(changeLines(), SizeIs(6));
}

TEST_F(Maintenance, AnEmptySectionWritesNothing) {
    importSections("<maintenances/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), IsEmpty());
}

TEST_F(Maintenance, AnEmptyChildCountsAsGiven) {
    importSections(
        "<maintenances><maintenance><hour/><min>30</min><active>1</active>"
        "</maintenance></maintenances>");
    expectSuccess();
    EXPECT_EQ(time(), ":30 1");
}

TEST_F(Maintenance, AnotherElementFailsTheImportAndUndoesEarlierOnes) {
    importSections(
        "<maintenances>"
        "<maintenance><hour>4</hour><min>30</min><active>1</active></maintenance>"
        "<other/></maintenances>");
    expectFailure({{"101 Invalid command", "Error 101, No maintenance element found"}});
    EXPECT_THAT(device.statements(), Contains(updateOf(1, "'4'")));
}

TEST_F(Maintenance, AnotherElementIsToldInTheDebugLogWithoutACode) {
    platform::debugMask = 0x10;
    importSections("<maintenances><other/></maintenances>");
    EXPECT_THAT(device.logLines(),
                testing::IsSupersetOf({"3: No maintenance element found",
                                       "3: Command error: 101 Invalid command",
                                       "59: r9::: Error 101, No maintenance element found"}));
}

TEST_F(Maintenance, AMissingChildFailsBeforeAnythingOfTheElementIsWritten) {
    for (const char* children :
         {"<min>30</min><active>1</active>", "<hour>4</hour><active>1</active>",
          "<hour>4</hour><min>30</min>", ""}) {
        SCOPED_TRACE(children);
        importSections(element("maintenances", element("maintenance", children)));
        expectFailure({{"103 Invalid value", "Error 103, Invalid value"}});
        EXPECT_THAT(sectionStatements(), IsEmpty());
    }
}

TEST_F(Maintenance, AllThreeWritesAreTriedWhenTheFirstFailsAndNoErrorIsAdded) {
    device.failStatements("UPDATE configuracionWebGlobal", 3, SQLITE_BUSY);
    importSections(
        "<maintenances><maintenance><hour>4</hour><min>30</min><active>1</active>"
        "</maintenance></maintenances>");
    expectFailure({});
    EXPECT_THAT(sectionStatements(),
                ElementsAre(selectOf("mantenimiento_hora"), updateOf(1, "'4'"), updateOf(1, "'4'"),
                            updateOf(1, "'4'"), selectOf("mantenimiento_min"), updateOf(2, "'30'"),
                            selectOf("mantenimiento_activo"), updateOf(3, "'1'")));
}

TEST_F(Maintenance, AFailureInOneElementDoesNotStopTheNext) {
    device.failStatements("UPDATE configuracionWebGlobal", 3, SQLITE_BUSY);
    importSections(
        "<maintenances>"
        "<maintenance><hour>4</hour><min>2</min><active>0</active></maintenance>"
        "<maintenance><hour>5</hour><min>2</min><active>0</active></maintenance>"
        "</maintenances>");
    expectFailure({});
    EXPECT_THAT(device.statements(), Contains(updateOf(1, "'5'")));
}

}  // namespace
