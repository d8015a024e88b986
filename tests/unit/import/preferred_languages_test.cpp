#include <gmock/gmock.h>
#include <sqlite3.h>

#include "platform/debug_log.h"
#include "support/section_import.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Rows = std::vector<test::Row>;

constexpr const char* kDelete = "DELETE FROM AudioLanguageListGlobal";

std::string insertOf(const std::string& quotedText) {
    return "INSERT INTO AudioLanguageListGlobal (idALLG, AudioCode)  VALUES (NULL, " + quotedText +
           " )";
}

class PreferredLanguages : public test::SectionImportTest {
  protected:
    PreferredLanguages() {
        rows("INSERT INTO AudioLanguageListGlobal VALUES (7, 'old'), (8, 'spa')");
    }
};

TEST_F(PreferredLanguages, AnEmptySectionDeletesEveryLanguage) {
    importSections("<preferredLanguages/>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete));
    EXPECT_THAT(stored("SELECT * FROM AudioLanguageListGlobal"), IsEmpty());
}

TEST_F(PreferredLanguages, TheTableIsEmptiedThenFilledInTheOrderOfTheDocument) {
    importSections(
        "<preferredLanguages><language>spa</language><LANGUAGE>eng</LANGUAGE>"
        "<language>fra</language></preferredLanguages>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(kDelete, insertOf("'spa'"), insertOf("'eng'"), insertOf("'fra'")));
    EXPECT_EQ(stored("SELECT * FROM AudioLanguageListGlobal"),
              (Rows{{"1", "spa"}, {"2", "eng"}, {"3", "fra"}}));
    EXPECT_THAT(changeLines(), ElementsAre("61: REMOTE_CONTROL::: New preferredLanguage spa",
                                           "61: REMOTE_CONTROL::: New preferredLanguage eng",
                                           "61: REMOTE_CONTROL::: New preferredLanguage fra"));
}

TEST_F(PreferredLanguages, ALanguageIsTheTextAsItStands) {
    importSections(
        "<preferredLanguages><language/><language>O'Brien &lt;5%s&gt; \xC3\xA9"
        "</language></preferredLanguages>");
    expectSuccess();
    EXPECT_THAT(sectionStatements(),
                ElementsAre(kDelete, insertOf("''"), insertOf("'O''Brien <5%s> \xC3\xA9'")));
    EXPECT_THAT(changeLines(),
                ElementsAre("61: REMOTE_CONTROL::: New preferredLanguage ",
                            "61: REMOTE_CONTROL::: New preferredLanguage O'Brien <5%s> \xC3\xA9"));
}

TEST_F(PreferredLanguages, AnotherElementFailsAndUndoesEarlierOnes) {
    importSections(
        "<preferredLanguages><language>eng</language><lang>fra</lang>"
        "<language>spa</language></preferredLanguages>");
    expectFailure({{"101 Invalid command: language expected", "Error 101, language expected"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete, insertOf("'eng'")));
}

TEST_F(PreferredLanguages, ADeleteThatFailsEndsTheSection) {
    device.failStatements(kDelete, 3, SQLITE_BUSY);
    importSections("<preferredLanguages><language>eng</language></preferredLanguages>");
    expectFailure({{"102 Could not access database: Could not delete preferredLanguages",
                    "Error 102, Could not delete preferredLanguages"}});
    EXPECT_THAT(sectionStatements(), ElementsAre(kDelete, kDelete, kDelete));
}

TEST_F(PreferredLanguages, AnInsertThatFailsEndsTheSection) {
    device.failStatements("INSERT INTO AudioLanguageListGlobal", 3, SQLITE_FULL);
    importSections(
        "<preferredLanguages><language>eng</language><language>fra</language>"
        "</preferredLanguages>");
    expectFailure({{"102 Could not access database: Could not insert preferredLanguage",
                    "Error 102, Could not insert preferredLanguage"}});
    EXPECT_THAT(sectionStatements(),
                ElementsAre(kDelete, insertOf("'eng'"), insertOf("'eng'"), insertOf("'eng'")));
    EXPECT_THAT(changeLines(), IsEmpty());
}

TEST_F(PreferredLanguages, ChangesAndFailuresAreToldInTheDebugLogToo) {
    platform::debugMask = 0x10;
    importSections("<preferredLanguages><language>eng</language><lang/></preferredLanguages>");
    EXPECT_THAT(device.logLines(),
                testing::IsSupersetOf({"5: New preferredLanguage eng",
                                       "3: Command error: 101 Invalid command: language expected",
                                       "3: Error 101, language expected"}));
}

}  // namespace
