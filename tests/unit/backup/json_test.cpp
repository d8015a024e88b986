#include "backup/json.h"

#include <gmock/gmock.h>

#include "backup/restore_report.h"

namespace tarvo_backup {

using testing::HasSubstr;

TEST(BackupJson, HasNullForWhatARestoreDidNotComeTo) {
    const std::string json = toJson(RestoreReport{});
    for (const char* name : {"backup", "importStatus", "confirmMinutes"}) {
        EXPECT_THAT(json, HasSubstr("\"" + std::string(name) + "\": null")) << name;
    }
}

}  // namespace tarvo_backup
