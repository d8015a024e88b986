#include "backup/restore_record.h"

#include <gmock/gmock.h>

#include "backup/fault.h"

namespace tarvo_backup {

using testing::HasSubstr;

namespace {

RestoreState fullState() {
    return {.phase = RestorePhase::undoing,
            .id = "12.34",
            .document = "/tmp/two\nlines\\n of \\ it.xml",
            .deadline = 4711,
            .boot = "a boot",
            .scripts = {"/tarvo/script/WAN_from_DB.sh", "with\nline"},
            .copied = {"/a", "/b c"},
            .absent = {"/d\\"},
            .serialNumber = "QM 1",
            .kept = {"/tarvo/backup/one.xml", "/tarvo/backup/undone-2026-11-22T0315Z"}};
}

std::string faultOf(const std::string& text) {
    try {
        restoreStateFrom(text);
    } catch (const Fault& fault) {
        EXPECT_EQ(fault.status(), ExitStatus::cannotRead);
        return fault.what();
    }
    return "none";
}

}  // namespace

TEST(BackupRestoreRecord, ReadsBackAStateWithWhateverIsInItsNames) {
    EXPECT_EQ(restoreStateFrom(textOf(fullState())), fullState());
    EXPECT_EQ(restoreStateFrom(textOf(RestoreState())), RestoreState());
}

TEST(BackupRestoreRecord, HasALineForEachThing) {
    RestoreState state;
    state.phase = RestorePhase::unconfirmed;
    state.id = "1.2";
    state.document = "a\nb\\";
    state.deadline = 5;
    state.boot = "x";
    state.serialNumber = "9";
    state.scripts = {"s", "t"};
    state.copied = {"c"};
    state.absent = {"d"};
    state.kept = {"k"};
    EXPECT_EQ(textOf(state),
              "phase unconfirmed\nid 1.2\ndocument a\\nb\\\\\ndeadline 5\nboot x\nserial 9\n"
              "script s\nscript t\ncopied c\nabsent d\nkept k\n");
}

TEST(BackupRestoreRecord, PassesOverWhatItDoesNotKnow) {
    // As an earlier version, or a later one, has written it.
    const RestoreState state = restoreStateFrom("phase importing\n\ncolour red\nid 1\ndeadline 2");
    EXPECT_EQ(state.phase, RestorePhase::importing);
    EXPECT_EQ(state.id, "1");
    EXPECT_EQ(state.deadline, 2);
}

TEST(BackupRestoreRecord, SaysWhatOfAStateIsNotKnown) {
    EXPECT_EQ(faultOf(""), "the phase is not known");
    EXPECT_EQ(faultOf("id 1\n"), "the phase is not known");
    EXPECT_EQ(faultOf("phase\n"), "the phase '' is not known");
    EXPECT_EQ(faultOf("phase flying\n"), "the phase 'flying' is not known");
    for (const char* deadline : {"", "soon", "-1", "1111111111111111111"}) {
        EXPECT_EQ(faultOf("phase unconfirmed\ndeadline " + std::string(deadline) + "\n"),
                  "the deadline '" + std::string(deadline) + "' is not known");
    }
}

TEST(BackupRestoreRecord, ReadsBackHowAnUndoEnded) {
    const Undone kept{.document = "a\nb", .moment = 12, .kept = {"/c", "/d"}, .notKept = ""};
    const Undone lost{.document = "a", .moment = 12, .kept = {}, .notKept = "no\nroom"};
    for (const Undone& undone : {kept, lost}) {
        EXPECT_EQ(undoneFrom(textOf(undone)), undone);
    }
    EXPECT_THAT(textOf(lost), HasSubstr("\nlost no\\nroom\n"));
}

TEST(BackupRestoreRecord, ThatTellsOfNoUndoIsNone) {
    EXPECT_EQ(undoneFrom(""), std::nullopt);
    EXPECT_EQ(undoneFrom("moment 5\n"), std::nullopt);
    EXPECT_EQ(undoneFrom("document x\nmoment noon\n")->moment, 0);
}

}  // namespace tarvo_backup
