#include "backup/restore_state.h"

#include <gtest/gtest.h>

namespace tarvo_backup {

namespace {

// One that waits to be confirmed, for a minute longer.
RestoreState waiting() {
    RestoreState state;
    state.phase = RestorePhase::unconfirmed;
    state.boot = thisBoot();
    state.deadline = secondsUp() + 60;
    return state;
}

}  // namespace

TEST(BackupRestoreState, CanBeConfirmedUntilItsTimeIsOver) {
    RestoreState state = waiting();
    EXPECT_FALSE(isAbandoned(state));
    state.deadline = secondsUp();
    EXPECT_TRUE(isAbandoned(state));
}

TEST(BackupRestoreState, IsAbandonedAfterAnotherStartOfTheHeadend) {
    RestoreState state = waiting();
    state.boot += "x";
    EXPECT_TRUE(isAbandoned(state));
}

TEST(BackupRestoreState, IsAbandonedByWhoeverWasKilledAtWork) {
    RestoreState state = waiting();
    for (const RestorePhase phase : {RestorePhase::importing, RestorePhase::undoing}) {
        state.phase = phase;
        EXPECT_TRUE(isAbandoned(state));
    }
}

TEST(BackupRestoreState, KeepsACopyOfEachFileUnderANameOfItsOwn) {
    EXPECT_EQ(copyOf("/tarvo/DB/config_global.sqlite"),
              "/tarvo/backup/.restore/before_tarvo_DB_config_global.sqlite");
}

}  // namespace tarvo_backup
