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

TEST(BackupJson, AListIsIndentedAsOneOfAnythingElse) {
    EXPECT_EQ(toJson(std::vector<Finding>{}), "[]");
    const Finding finding{.position = {.line = 3, .column = 5},
                          .severity = Severity::error,
                          .path = "a\nb\"",
                          .message = "m\xff"};
    EXPECT_EQ(toJson(std::vector<Finding>{finding, finding}),
              "[\n"
              "  {\n    \"line\": 3,\n    \"column\": 5,\n    \"severity\": \"error\",\n"
              "    \"path\": \"a\\nb\\\"\",\n    \"message\": \"m\xef\xbf\xbd\"\n  },\n"
              "  {\n    \"line\": 3,\n    \"column\": 5,\n    \"severity\": \"error\",\n"
              "    \"path\": \"a\\nb\\\"\",\n    \"message\": \"m\xef\xbf\xbd\"\n  }\n"
              "]");
    EXPECT_EQ(toJson(std::vector<Difference>{{.path = "p", .oldText = {}, .newText = "t"}}),
              "[\n  {\n    \"path\": \"p\",\n    \"old\": null,\n    \"new\": \"t\"\n  }\n]");
}

}  // namespace tarvo_backup
