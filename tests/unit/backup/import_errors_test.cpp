#include "backup/import_errors.h"

#include <gmock/gmock.h>

#include "unit/backup/backup_test.h"

namespace tarvo_backup {

using tarvo_remote_control::ErrorCode;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

const Place kModule = {0, 0, 0};

Document withModule() {
    return parsed("<configuration>\n<modules><module/></modules></configuration>");
}

std::vector<std::string> linesOf(const std::vector<RecordedError>& recorded) {
    std::vector<std::string> lines;
    for (const ImportError& error : importErrors(withModule(), recorded)) {
        lines.push_back(described(error));
    }
    return lines;
}

}  // namespace

TEST(ImportErrors, AreToldOnceWithTheElementThatWasReadLast) {
    const RecordedError error{.code = ErrorCode::database, .text = "a\nb", .place = kModule};
    EXPECT_THAT(linesOf({error, error}), ElementsAre("error 102: modules/module[1]: a\\nb"));
    const auto errors = importErrors(withModule(), {error});
    ASSERT_EQ(errors.size(), 1U);
    EXPECT_EQ(errors[0].element->position, (Position{2, 11}));
}

TEST(ImportErrors, OfAllModulesAreThoseOfTheirList) {
    EXPECT_THAT(linesOf({{ErrorCode::moduleAmount, "few", kModule}}),
                ElementsAre("error 503: modules: few"));
    EXPECT_THAT(linesOf({{ErrorCode::moduleNotFound, "which", kModule}}),
                ElementsAre("error 501: modules: which"));
}

TEST(ImportErrors, WithoutAnElementHaveNone) {
    EXPECT_THAT(linesOf({{ErrorCode::database, "early", {}},
                         {ErrorCode::setConfiguration, "late", kModule}}),
                ElementsAre("error 102: early", "error 202: late"));
    EXPECT_THAT(linesOf({}), IsEmpty());
}

}  // namespace tarvo_backup
