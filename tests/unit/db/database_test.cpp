#include "db/database.h"

#include <sqlite3.h>

#include <cstdlib>

#include "platform/debug_log.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

using Lines = std::vector<std::string>;

class DatabaseFile : public test::DeviceTest {};

class StatementExecutor : public test::DeviceTest {
  protected:
    int run(const char* sql) {
        const Database db = openDatabase(kConfigDatabase);
        device.forgetEvents();
        const int result = execWithRetries(db.get(), sql);
        events_ = device.events();
        return result;
    }
    // Of the last run.
    [[nodiscard]] const Lines& events() const { return events_; }

  private:
    Lines events_;
};

// How long a statement waits for a lock before it fails.
int lockMilliseconds(sqlite3* db) {
    int milliseconds = -1;
    sqlite3_exec(
        db, "PRAGMA busy_timeout",
        [](void* found, int, char** cells, char**) {
            *static_cast<int*>(found) = std::atoi(cells[0]);
            return 0;
        },
        &milliseconds, nullptr);
    return milliseconds;
}

}  // namespace

TEST_F(DatabaseFile, ALockOfMillisecondsFailsNoTry) {
    const Database db = openDatabase(kConfigDatabase);
    Database identity;
    openDatabaseFile(kConfigDatabase, identity);
    EXPECT_EQ(lockMilliseconds(db.get()), 50);
    EXPECT_EQ(lockMilliseconds(identity.get()), 50);
}

TEST_F(DatabaseFile, HasItsFixedPlace) {
    EXPECT_STREQ(kConfigDatabase, "/tarvo/DB/config_global.sqlite");
    EXPECT_STREQ(kStateDatabase, "/tmp/temp_global.sqlite");
    EXPECT_STREQ(kVsecureDatabase, "/tarvo/DB/vsec_global.sqlite");
    EXPECT_STREQ(kCommandDatabase, "/tarvo/DB/remote_control.sqlite");
}

TEST_F(DatabaseFile, IsOpenedByThePlatform) {
    EXPECT_TRUE(openDatabase(kVsecureDatabase));
    EXPECT_EQ(device.eventsOf("open: "), Lines{"/tarvo/DB/vsec_global.sqlite"});
}

TEST_F(DatabaseFile, IsClosedWhenItsHandleGoes) {
    { const Database db = openDatabase(kVsecureDatabase); }
    EXPECT_EQ(device.events(),
              (Lines{"open: /tarvo/DB/vsec_global.sqlite", "close: /tarvo/DB/vsec_global.sqlite"}));
}

TEST_F(DatabaseFile, ClosedTellsSqlitesResultAndIsEmpty) {
    device.closeResults[kVsecureDatabase] = SQLITE_BUSY;
    Database vsecure = openDatabase(kVsecureDatabase);
    Database config = openDatabase(kConfigDatabase);
    EXPECT_EQ(close(vsecure), SQLITE_BUSY);
    EXPECT_EQ(close(config), SQLITE_OK);
    EXPECT_FALSE(vsecure);
    EXPECT_FALSE(config);
}

TEST_F(DatabaseFile, ThatCannotBeOpenedGivesNoHandle) {
    device.failOpens(kConfigDatabase);
    EXPECT_FALSE(openDatabase(kConfigDatabase));
    EXPECT_TRUE(openDatabase(kStateDatabase));
}

TEST_F(DatabaseFile, InAMissingFolderGivesNoHandle) {
    device.removeFile("/tarvo/DB");
    EXPECT_FALSE(openDatabase(kConfigDatabase));
}

TEST_F(StatementExecutor, RunsASucceedingStatementOnce) {
    EXPECT_EQ(run("CREATE TABLE Probe (a)"), SQLITE_OK);
    EXPECT_EQ(events(), Lines{"sql: CREATE TABLE Probe (a)"});
    EXPECT_TRUE(device.query(kConfigDatabase, "SELECT * FROM Probe").empty());
}

TEST_F(StatementExecutor, TriesAFailingStatementThreeTimesAndSleepsAfterEach) {
    device.failStatements("COMMIT", 3, SQLITE_BUSY, "database is locked");
    EXPECT_EQ(run("COMMIT"), SQLITE_BUSY);
    EXPECT_EQ(events(), (Lines{"sql: COMMIT", "sleep: 1", "sql: COMMIT", "sleep: 1", "sql: COMMIT",
                               "sleep: 1"}));
}

TEST_F(StatementExecutor, StopsAtTheFirstSuccess) {
    device.failStatements("BEGIN TRANSACTION", 1, SQLITE_BUSY);
    EXPECT_EQ(run("BEGIN TRANSACTION"), SQLITE_OK);
    EXPECT_EQ(events(), (Lines{"sql: BEGIN TRANSACTION", "sleep: 1", "sql: BEGIN TRANSACTION"}));
}

TEST_F(StatementExecutor, SucceedsOnItsThirdTry) {
    device.failStatements("BEGIN TRANSACTION", 2, SQLITE_BUSY);
    EXPECT_EQ(run("BEGIN TRANSACTION"), SQLITE_OK);
    EXPECT_EQ(device.sleeps(), (Lines{"1", "1"}));
    EXPECT_EQ(device.statements().size(), 3U);
}

TEST_F(StatementExecutor, ReturnsTheResultCodeOfTheLastTry) {
    device.failStatements("ROLLBACK", 2, SQLITE_BUSY);
    EXPECT_EQ(run("ROLLBACK"), SQLITE_ERROR);  // no transaction is open
}

TEST_F(StatementExecutor, LogsEachFailureWithTheDebugBit) {
    platform::debugMask = platform::kDebugLogBit;
    device.failStatements("COMMIT", 3, SQLITE_BUSY, "database is locked");
    run("COMMIT");
    EXPECT_EQ(
        events(),
        (Lines{"sql: COMMIT", "log 6: DB exec error (1 try): database is locked", "sleep: 1",
               "sql: COMMIT", "log 6: DB exec error (2 try): database is locked", "sleep: 1",
               "sql: COMMIT", "log 6: DB exec error (3 try): database is locked", "sleep: 1"}));
}

TEST_F(StatementExecutor, LogsNothingWithOtherDebugBits) {
    platform::debugMask = ~platform::kDebugLogBit;
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    run("COMMIT");
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(StatementExecutor, LogsTheRealErrorMessageOfSqlite) {
    platform::debugMask = platform::kDebugLogBit;
    run("COMMIT");
    EXPECT_EQ(device.logLines().at(0),
              "6: DB exec error (1 try): cannot commit - no transaction is active");
}

TEST(DebugLog, IsOffUntilABitIsSet) {
    EXPECT_EQ(platform::debugMask, 0U);
    EXPECT_EQ(platform::kDebugLogBit, 0x10U);
}

}  // namespace tarvodb
