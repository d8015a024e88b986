#include "backup/json.h"

#include <gmock/gmock.h>

#include "backup/restore_report.h"

namespace tarvo_backup {

using testing::HasSubstr;
using testing::Not;

TEST(BackupJson, HasNullForWhatARestoreDidNotComeTo) {
    const std::string json = toJson(RestoreReport{});
    for (const char* name : {"backup", "importStatus", "confirmMinutes"}) {
        EXPECT_THAT(json, HasSubstr("\"" + std::string(name) + "\": null")) << name;
    }
}

TEST(BackupJson, HoldsNoCharacterThatATerminalObeys) {
    const Difference difference{
        .path = "\x1b\x7f\xc2\x80\xc2\x9f\u202e", .oldText = "\xc2\xa0\xc3\xa1", .newText = "\n"};
    EXPECT_EQ(toJson(std::vector<Difference>{difference}),
              "[\n  {\n    \"path\": \"\\u001b\\u007f\\u0080\\u009f\\u202e\",\n"
              "    \"old\": \"\xc2\xa0\xc3\xa1\",\n    \"new\": \"\\n\"\n  }\n]");
}

TEST(BackupJson, TellsWhatARestoreUndidBefore) {
    RestoreReport report;
    EXPECT_THAT(toJson(report), HasSubstr("\"undidEarlier\": null"));
    report.undoneEarlier = {
        .document = "a.xml", .moment = 1700000000, .kept = {"/k"}, .notKept = ""};
    EXPECT_THAT(toJson(report), HasSubstr("\"undidEarlier\": {\n    \"document\": \"a.xml\",\n"
                                          "    \"undoneAt\": \"2023-11-14T22:13:20Z\",\n"
                                          "    \"kept\": [\n      \"/k\"\n    ],\n"
                                          "    \"notKept\": null\n  }"));
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

TEST(BackupJson, HasNullForWhatCouldNotBeComparedAfterARestore) {
    RestoreReport report;
    report.plan.notTaken = {{}};
    report.notTaken = {{}};
    EXPECT_THAT(toJson(report), Not(HasSubstr("\"notTaken\": null")));
    report.notCompared = "no room";
    EXPECT_THAT(toJson(report), HasSubstr("\"notTaken\": null"));
}

TEST(BackupJson, TellsWhyNothingWouldBeBegun) {
    Plan plan;
    EXPECT_THAT(toJson(plan), HasSubstr("\"notBegun\": null"));
    plan.notBegun = "it is lost";
    EXPECT_THAT(toJson(plan), HasSubstr("\"notBegun\": \"it is lost\""));
}

TEST(BackupJson, TellsWhereWhatWasUndoneIs) {
    EXPECT_EQ(toJson(Ending()),
              "{\n  \"outcome\": \"nothing\",\n  \"document\": null,\n  \"undoneAt\": null,\n"
              "  \"kept\": [],\n  \"notKept\": null\n}");
    Ending ending{.outcome = Ending::Outcome::undone, .document = "a.xml", .undone = Undone()};
    ending.undone->moment = 1700000000;
    ending.undone->kept = {"/k"};
    ending.undone->notKept = "no room";
    EXPECT_EQ(toJson(ending),
              "{\n  \"outcome\": \"undone\",\n  \"document\": \"a.xml\",\n"
              "  \"undoneAt\": \"2023-11-14T22:13:20Z\",\n  \"kept\": [\n    \"/k\"\n  ],\n"
              "  \"notKept\": \"no room\"\n}");
}

}  // namespace tarvo_backup
