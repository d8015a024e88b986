#include "import/regional.h"

#include <gmock/gmock.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using tarvo_remote_control::applyCountryChanged;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

constexpr const char* kTimeZoneFile = "/tarvo/conf/timezone/localtime";
constexpr const char* kOffsetsFile = "/tmp/temp_tot_file_web";
constexpr const char* kTotFile = "/tarvo/conf/tot_file";
constexpr const char* kCronScript = "/etc/init.d/S60crond restart";
constexpr const char* kSpanishOffsets =
    "/tarvo/script/get_time_offsets.sh 0 \"Africa/Ceuta\" \"Atlantic/Canary\" \"Europe/Madrid\"";

constexpr const char* kNoOffsets = "/tarvo/script/get_time_offsets.sh 0 No";

// What the offsets script leaves: bytes as they come, without a line end at the end.
const std::string kOffsets = "60 120\r\n\xFF\n50% left";

class Regional : public test::SectionImportTest {
  protected:
    Regional() {
        setting("codtimezone", "spa");
        setting("idtimezone", "es");
        setting("subtimezone", "Europe/Madrid");
        device.shellEffects[kSpanishOffsets] = [this] { device.writeFile(kOffsetsFile, kOffsets); };
        device.shellEffects[kNoOffsets] = [this] { device.writeFile(kOffsetsFile, "0\n"); };
        device.writeFile(kTotFile, "old\n");
    }

    void storedCountryIs(const std::string& country) {
        rows("UPDATE configuracionWebGlobal SET valor = '" + country +
             "' WHERE nombre = 'idtimezone'");
    }
};

TEST_F(Regional, AChangedCountryTakesTheStepsInTheirOrder) {
    EXPECT_TRUE(applyCountryChanged());
    EXPECT_THAT(
        device.events(),
        ElementsAre("open: /tarvo/DB/config_global.sqlite",
                    "sql: SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'codtimezone' ",
                    "sql: SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'idtimezone' ",
                    "sql: SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'subtimezone' ",
                    "close: /tarvo/DB/config_global.sqlite", std::string("write: ") + kTimeZoneFile,
                    std::string("remove: ") + kOffsetsFile,
                    std::string("shell: ") + kSpanishOffsets,
                    std::string("remove: ") + kOffsetsFile, std::string("write: ") + kTotFile,
                    std::string("shell: ") + kCronScript));
}

TEST_F(Regional, TheFilesHoldTheTimeZoneAndTheOffsets) {
    ASSERT_TRUE(applyCountryChanged());
    EXPECT_EQ(device.readFile(kTimeZoneFile), "Europe/Madrid\n");
    EXPECT_EQ(device.readFile(kTotFile), "SPA\n" + kOffsets);
    EXPECT_FALSE(device.exists(kOffsetsFile));
}

TEST_F(Regional, TheTimeZoneFileIsRewrittenWhole) {
    device.writeFile(kTimeZoneFile, "America/Argentina/Buenos_Aires\nand more\n");
    ASSERT_TRUE(applyCountryChanged());
    EXPECT_EQ(device.readFile(kTimeZoneFile), "Europe/Madrid\n");
}

TEST_F(Regional, TheTimeZoneIsWrittenAsItStands) {
    rows(
        "UPDATE configuracionWebGlobal SET valor = 'europe/MADRID 5%s' WHERE nombre = "
        "'subtimezone'");
    ASSERT_TRUE(applyCountryChanged());
    EXPECT_EQ(device.readFile(kTimeZoneFile), "europe/MADRID 5%s\n");
}

TEST_F(Regional, ANullSettingReadsAsTheEmptyText) {
    rows("UPDATE configuracionWebGlobal SET valor = NULL");
    EXPECT_TRUE(applyCountryChanged());
    EXPECT_EQ(device.readFile(kTimeZoneFile), "\n");
    EXPECT_THAT(device.shellCommands(), Contains(kNoOffsets));
    EXPECT_EQ(device.readFile(kTotFile), "\n0\n");
}

TEST_F(Regional, ACountryWithoutZonesPassesTheWordNo) {
    for (const char* country : {"BV", "hm", "AN", "XX", ""}) {
        SCOPED_TRACE(country);
        storedCountryIs(country);
        device.forgetEvents();
        EXPECT_TRUE(applyCountryChanged());
        EXPECT_THAT(device.shellCommands(), ElementsAre(kNoOffsets, kCronScript));
    }
}

TEST_F(Regional, AChangedImportHasItApplied) {
    importSections(
        "<regional><language>eng</language><country>Gb</country>"
        "<timezone>Europe/London</timezone></regional>");
    EXPECT_THAT(device.shellCommands(),
                ElementsAre("/tarvo/script/get_time_offsets.sh 0 \"Europe/London\""));
    EXPECT_EQ(device.readFile(kTimeZoneFile), "Europe/London\n");
}

TEST_F(Regional, TheElementsStandUnderTheKeysOfTheOtherUse) {
    importSections("<regional><language>eng</language><country>Gb</country></regional>");
    EXPECT_EQ(valueOf("codtimezone"), "eng");
    EXPECT_EQ(valueOf("idtimezone"), "Gb");
}

TEST_F(Regional, WhatSomebodyElsePutInPlaceOfTheOffsetsIsNotRead) {
    device.writeFile("/tmp/secret", "secret");
    const auto link = [this] {
        std::filesystem::create_symlink(device.path("/tmp/secret"), device.path(kOffsetsFile));
    };
    link();
    EXPECT_TRUE(applyCountryChanged());
    EXPECT_EQ(device.readFile("/tmp/secret"), "secret");
    EXPECT_EQ(device.readFile(kTotFile), "SPA\n" + kOffsets);
    device.shellEffects[kSpanishOffsets] = link;
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_EQ(device.readFile(kTotFile), "SPA\n" + kOffsets);
    EXPECT_THAT(errorLines(), ElementsAre("59: r9::: Could not read from /tmp/temp_tot_file_web"));
}

// --- Failures --------------------------------------------------------------------------------

TEST_F(Regional, ADatabaseThatDoesNotOpenEndsSilently) {
    device.failOpens("/tarvo/DB/config_global.sqlite");
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_THAT(device.events(), ElementsAre("open: /tarvo/DB/config_global.sqlite"));
}

TEST_F(Regional, AMissingSettingEndsSilently) {
    for (const char* key : {"codtimezone", "idtimezone", "subtimezone"}) {
        SCOPED_TRACE(key);
        rows("DELETE FROM configuracionWebGlobal");
        for (const char* other : {"codtimezone", "idtimezone", "subtimezone"}) {
            if (std::string(other) != key) {
                setting(other, "ES");
            }
        }
        device.forgetEvents();
        EXPECT_FALSE(applyCountryChanged());
        EXPECT_THAT(device.logLines(), IsEmpty());
        EXPECT_THAT(device.shellCommands(), IsEmpty());
        EXPECT_FALSE(device.exists(kTimeZoneFile));
    }
}

TEST_F(Regional, ATimeZoneFileThatCannotBeWrittenEndsItWithoutALogLine) {
    device.removeFile("/tarvo/conf/timezone");
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_THAT(device.logLines(), IsEmpty());
    EXPECT_THAT(device.shellCommands(), IsEmpty());
}

TEST_F(Regional, AnOffsetsScriptThatFailsEndsItAfterTheTimeZoneFile) {
    for (const int result : {256, 9, 32512, -1}) {
        SCOPED_TRACE(result);
        device.shellResults[kSpanishOffsets] = result;
        device.forgetEvents();
        EXPECT_FALSE(applyCountryChanged());
        EXPECT_THAT(device.logLines(),
                    ElementsAre("59: r9::: Error (" + std::to_string(result) +
                                ") executing get_time_offsets.sh: " + kSpanishOffsets));
        EXPECT_THAT(device.shellCommands(), ElementsAre(kSpanishOffsets));
        EXPECT_EQ(device.readFile(kTimeZoneFile), "Europe/Madrid\n");
        EXPECT_EQ(device.readFile(kTotFile), "old\n");
    }
}

TEST_F(Regional, OffsetsThatCannotBeReadEndItBeforeTheTotFile) {
    device.shellEffects.clear();
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_THAT(device.logLines(),
                ElementsAre("59: r9::: Could not read from /tmp/temp_tot_file_web"));
    EXPECT_THAT(device.shellCommands(), Not(Contains(kCronScript)));
    EXPECT_EQ(device.readFile(kTotFile), "old\n");
}

TEST_F(Regional, ATotFileThatCannotBeWrittenEndsItBeforeCron) {
    device.removeFile(kTotFile);
    device.writeFile(std::string(kTotFile) + "/in/the/way", "");
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_THAT(device.logLines(),
                ElementsAre("59: r9::: Could not write to /tarvo/conf/tot_file"));
    EXPECT_THAT(device.shellCommands(), Not(Contains(kCronScript)));
    EXPECT_FALSE(device.exists(kOffsetsFile));
}

TEST_F(Regional, CronThatDoesNotRestartIsLogged) {
    device.shellResults[kCronScript] = 256;
    EXPECT_FALSE(applyCountryChanged());
    EXPECT_THAT(device.logLines(), ElementsAre("59: r9::: Error (256) restarting cron"));
    EXPECT_EQ(device.readFile(kTotFile), "SPA\n" + kOffsets);
}

TEST_F(Regional, AFailureLeavesTheResultOfTheImportAsItIs) {
    device.shellResults[kSpanishOffsets] = 256;
    importSections("<regional><language>eng</language></regional>");
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(result(), "0");
    EXPECT_EQ(valueOf("codtimezone"), "eng");
}

// --- The debug log ---------------------------------------------------------------------------

class RegionalDebugLog : public Regional {
  protected:
    RegionalDebugLog() { platform::debugMask = 0x10; }

    void expectLog(const std::vector<std::string>& lines) {
        applyCountryChanged();
        EXPECT_THAT(device.logLines(), testing::UnorderedElementsAreArray(lines));
    }
};

TEST_F(RegionalDebugLog, TellsThatItRuns) { expectLog({"7: applyCountryChanged()"}); }

TEST_F(RegionalDebugLog, TellsATimeZoneFileThatCannotBeWritten) {
    device.removeFile("/tarvo/conf/timezone");
    expectLog({"7: applyCountryChanged()", "3: Could not write to /tarvo/conf/timezone/localtime"});
}

TEST_F(RegionalDebugLog, TellsAnOffsetsScriptThatFails) {
    device.shellResults[kSpanishOffsets] = 256;
    const std::string text =
        std::string("Error (256) executing get_time_offsets.sh: ") + kSpanishOffsets;
    expectLog({"7: applyCountryChanged()", "3: " + text, "59: r9::: " + text});
}

TEST_F(RegionalDebugLog, TellsOffsetsThatCannotBeRead) {
    device.shellEffects.clear();
    expectLog({"7: applyCountryChanged()", "3: Could not read from /tmp/temp_tot_file_web",
               "59: r9::: Could not read from /tmp/temp_tot_file_web"});
}

TEST_F(RegionalDebugLog, TellsATotFileThatCannotBeWritten) {
    device.removeFile(kTotFile);
    device.writeFile(std::string(kTotFile) + "/in/the/way", "");
    expectLog({"7: applyCountryChanged()", "3: Could not write to /tarvo/conf/tot_file",
               "59: r9::: Could not write to /tarvo/conf/tot_file"});
}

TEST_F(RegionalDebugLog, TellsCronThatDoesNotRestart) {
    device.shellResults[kCronScript] = 256;
    expectLog({"7: applyCountryChanged()", "3: Error (256) restarting cron",
               "59: r9::: Error (256) restarting cron"});
}

}  // namespace
