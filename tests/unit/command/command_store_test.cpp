#include <sqlite3.h>

#include "command/command.h"
#include "db/operations.h"
#include "platform/debug_log.h"
#include "support/fake_device.h"
#include "support/scripted_command.h"

namespace tarvo_remote_control {

namespace {

using tarvodb::kCommandDatabase;
using tarvodb::RCCommand;
using test::CommandDocument;
using test::ScriptedCommand;
using Lines = std::vector<std::string>;
using Rows = std::vector<test::Row>;

const std::string kOpen = "open: /tarvo/DB/remote_control.sqlite";
const std::string kClose = "close: /tarvo/DB/remote_control.sqlite";

// The stored declaration has no equals sign after "version".
const std::string kStoredCommand = R"(<?xml version"1.0" encoding="utf-8"?>)";
const std::string kCommandText = "<command><id>42</id><data><getConfiguration/></data></command>";

std::string storedResult(const std::string& commandId, const std::string& resultAndErrors) {
    return R"(<?xml version="1.0" encoding="utf-8"?>)"
           "<commandResult><id>headend</id><mac>02:00:00:00:00:01</mac>"
           "<serialNumber>A123</serialNumber><zenContractId/><commandId>" +
           commandId + "</commandId>" + resultAndErrors + "<data/></commandResult>";
}

const std::string kGoodResult = storedResult("1", "<result>1</result><errors/>");

std::string insertOf(const std::string& values) {
    return "INSERT INTO RCCommand (id, commandId, status, nextTime, schedule, command, result)  "
           "VALUES (NULL, " +
           values + " )";
}

const std::string kInsertOfANewCommand =
    insertOf("'0', '0', '0', '', '" + kStoredCommand + "', '" + kGoodResult + "'");

const std::string kUpdateOfRow1 =
    "UPDATE RCCommand SET  id = '1' , commandId = '0' , status = '0' , nextTime = '0' , "
    "schedule = '' , command = '" +
    kStoredCommand + "' , result = '" + kGoodResult + "'  WHERE id = '1'";

class CommandStore : public test::DeviceTest {
  protected:
    CommandStore() { becomeModel("QRA-310"); }

    // A command with row 1 in the store.
    void store(ScriptedCommand& command) {
        ASSERT_TRUE(command.save());
        ASSERT_EQ(command.rowId(), 1);
        device.forgetEvents();
    }

    [[nodiscard]] Rows storedRows() const {
        return device.query(kCommandDatabase, "SELECT * FROM RCCommand");
    }

    // Loads the command from the row that `values` describes.
    void load(ScriptedCommand& command, const std::string& values) {
        device.execute(kCommandDatabase, "INSERT INTO RCCommand VALUES (" + values + ")");
        const tarvodb::Database db = tarvodb::openDatabase(kCommandDatabase);
        command.load(tarvodb::doSelect<RCCommand>(db.get()).at(0));
    }
};

}  // namespace

TEST_F(CommandStore, InsertsANewCommandInATransaction) {
    ScriptedCommand command;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(), (Lines{kOpen, "sql: BEGIN TRANSACTION",
                                      "sql: " + kInsertOfANewCommand, "sql: COMMIT", kClose}));
    EXPECT_EQ(storedRows(), (Rows{{"1", "0", "0", "0", "", kStoredCommand, kGoodResult}}));
}

TEST_F(CommandStore, GivesANewCommandItsRow) {
    device.execute(kCommandDatabase, "INSERT INTO RCCommand (id) VALUES (41)");
    ScriptedCommand command;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(command.rowId(), 42);
}

TEST_F(CommandStore, StoresDocumentStatusAndSchedule) {
    const CommandDocument document(kCommandText);
    ScriptedCommand command(document);
    command.setNextTime(1700000000);
    command.setSchedule("daily 'late' 50%");
    command.addError(ErrorCode{202});
    command.setStatus(RunStatus::done);
    EXPECT_TRUE(command.save());
    EXPECT_EQ(
        storedRows(),
        (Rows{{"1", "42", "2", "1700000000", "daily 'late' 50%", kStoredCommand + kCommandText,
               storedResult("42",
                            "<result>0</result><errors><error><id>202</id><text>Could not "
                            "set configuration</text></error></errors>")}}));
}

TEST_F(CommandStore, UpdatesTheRowOfACommandThatWasSaved) {
    ScriptedCommand command;
    store(command);
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(), (Lines{kOpen, "sql: BEGIN TRANSACTION", "sql: " + kUpdateOfRow1,
                                      "sql: COMMIT", kClose}));
    EXPECT_EQ(command.rowId(), 1);
    EXPECT_EQ(storedRows().size(), 1U);
}

TEST_F(CommandStore, UpdatesWhatHasChanged) {
    ScriptedCommand command;
    store(command);
    command.setStatus(RunStatus::running);
    command.setNextTime(-5);
    command.setSchedule("hourly");
    EXPECT_TRUE(command.save());
    EXPECT_EQ(storedRows(), (Rows{{"1", "0", "1", "-5", "hourly", kStoredCommand, kGoodResult}}));
}

TEST_F(CommandStore, SavesNothingWithoutADatabase) {
    device.failOpens(kCommandDatabase);
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.events(), Lines{kOpen});
    EXPECT_EQ(command.rowId(), 0);
    command.setStatus(RunStatus::toBeRemoved);
    EXPECT_FALSE(command.save());
}

TEST_F(CommandStore, SavesNothingWithoutATransaction) {
    device.failStatements("BEGIN TRANSACTION", 3, SQLITE_BUSY);
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.statements(), Lines(3, "BEGIN TRANSACTION"));
    EXPECT_EQ(device.sleeps(), Lines(3, "1"));
    // The handle stays open until the next save.
    EXPECT_TRUE(device.eventsOf("close: ").empty());
    EXPECT_TRUE(storedRows().empty());
    EXPECT_TRUE(command.save());
    EXPECT_EQ(command.rowId(), 1);
}

TEST_F(CommandStore, RollsAFailedInsertBack) {
    device.failStatements("INSERT", 3, SQLITE_FULL, "database or disk is full");
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.statements(), (Lines{"BEGIN TRANSACTION", kInsertOfANewCommand,
                                          kInsertOfANewCommand, kInsertOfANewCommand, "ROLLBACK"}));
    EXPECT_EQ(test::last(device.events()), kClose);
    EXPECT_EQ(device.logLines().at(0),
              "3: [ERROR_DB]insert: Error (13) inserting register in table RCCommand . Attempt: "
              "0\n");
    EXPECT_EQ(device.logLines().at(1), "3: [ERROR_DB]insert: database or disk is full\n");
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3"}));
    EXPECT_EQ(command.rowId(), 0);
}

TEST_F(CommandStore, RollsAFailedUpdateBack) {
    ScriptedCommand command;
    store(command);
    command.setSchedule("hourly");
    device.failStatements("UPDATE", 3, SQLITE_BUSY, "database is locked");
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.statements().at(0), "BEGIN TRANSACTION");
    EXPECT_EQ(test::last(device.statements()), "ROLLBACK");
    EXPECT_EQ(test::last(device.events()), kClose);
    EXPECT_EQ(device.logLines().at(4),
              "3: [ERROR_DB]update: Error actualizando datos registro en tabla RCCommand . "
              "intento: 2\n");
    EXPECT_EQ(storedRows().at(0).at(4), "");
}

TEST_F(CommandStore, SavedOnlyWhenTheCommitSucceeds) {
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.statements(),
              (Lines{"BEGIN TRANSACTION", kInsertOfANewCommand, "COMMIT", "COMMIT", "COMMIT"}));
    EXPECT_EQ(test::last(device.events()), kClose);
    EXPECT_TRUE(storedRows().empty());
}

TEST_F(CommandStore, InsertsACommandAgainWhoseCommitFailed) {
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(command.rowId(), 0);
    EXPECT_TRUE(command.save());
    EXPECT_EQ(command.rowId(), 1);
    EXPECT_EQ(storedRows().size(), 1U);
}

TEST_F(CommandStore, StoresNothingOnceSqliteHasUndoneTheTransaction) {
    device.failStatementsUndoingAll("INSERT", 1, SQLITE_FULL);
    ScriptedCommand command;
    EXPECT_FALSE(command.save());
    EXPECT_EQ(device.statements(),
              (Lines{"BEGIN TRANSACTION", kInsertOfANewCommand, kInsertOfANewCommand,
                     kInsertOfANewCommand, "ROLLBACK", "ROLLBACK", "ROLLBACK"}));
    EXPECT_EQ(command.rowId(), 0);
    EXPECT_TRUE(storedRows().empty());
}

TEST_F(CommandStore, SavesWhenTheCommitSucceedsAtLast) {
    device.failStatements("COMMIT", 2, SQLITE_BUSY);
    ScriptedCommand command;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.sleeps(), (Lines{"1", "1"}));
    EXPECT_EQ(storedRows().size(), 1U);
}

TEST_F(CommandStore, SavingIsLoggedWithTheDebugBit) {
    platform::debugMask = platform::kDebugLogBit;
    ScriptedCommand command;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(),
              (Lines{kOpen, "sql: BEGIN TRANSACTION", "log 7: Saving command to DB",
                     "sql: " + kInsertOfANewCommand, "sql: COMMIT", kClose}));
}

TEST_F(CommandStore, RemovesTheRowOfACommandToBeRemoved) {
    device.execute(kCommandDatabase, "INSERT INTO RCCommand (id) VALUES (2)");
    ScriptedCommand command;
    ASSERT_TRUE(command.save());
    ASSERT_EQ(command.rowId(), 3);
    device.forgetEvents();
    command.setStatus(RunStatus::toBeRemoved);
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(), (Lines{kOpen, "sql: DELETE FROM RCCommand WHERE id = '3'", kClose}));
    EXPECT_EQ(device.query(kCommandDatabase, "SELECT id FROM RCCommand"), (Rows{{"2"}}));
}

TEST_F(CommandStore, TouchesNoTableForACommandToBeRemovedThatHasNoRow) {
    ScriptedCommand command;
    command.setStatus(RunStatus::toBeRemoved);
    platform::debugMask = platform::kDebugLogBit;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(), (Lines{kOpen, kClose}));
}

TEST_F(CommandStore, ARemovalThatFailsCountsAsDone) {
    ScriptedCommand command;
    store(command);
    command.setStatus(RunStatus::toBeRemoved);
    device.failStatements("DELETE", 3, SQLITE_BUSY, "database is locked");
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.logLines().at(0),
              "3: [ERROR_DB]deleteId: Error (5) borrando registro en tabla RCCommand . intento: "
              "0\n");
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3"}));
    EXPECT_EQ(test::last(device.events()), kClose);
    EXPECT_EQ(storedRows().size(), 1U);
}

TEST_F(CommandStore, RemovalIsLoggedWithTheDebugBit) {
    ScriptedCommand command;
    store(command);
    command.setStatus(RunStatus::toBeRemoved);
    platform::debugMask = platform::kDebugLogBit;
    EXPECT_TRUE(command.save());
    EXPECT_EQ(device.events(), (Lines{kOpen, "log 7: Deleting command from DB",
                                      "sql: DELETE FROM RCCommand WHERE id = '1'", kClose}));
}

TEST_F(CommandStore, LoadTakesRowTimeScheduleAndStatus) {
    ScriptedCommand command;
    load(command,
         "7, 42, 1, 1700000000, 'daily', 'c', '<commandResult><id>x</id></commandResult>'");
    EXPECT_EQ(command.rowId(), 7);
    EXPECT_EQ(command.nextTime(), 1700000000);
    EXPECT_EQ(command.schedule(), "daily");
    EXPECT_EQ(command.status(), RunStatus::running);
    EXPECT_EQ(command.id(), 0);
}

TEST_F(CommandStore, LoadOfAnUnfinishedCommandLeavesTheResultAsConstructed) {
    for (const char* status : {"0", "1", "3", "NULL"}) {
        SCOPED_TRACE(status);
        device.execute(kCommandDatabase, "DELETE FROM RCCommand");
        ScriptedCommand command;
        load(command, std::string("7, 42, ") + status +
                          ", 0, '', 'c', '<commandResult><id>x</id></commandResult>'");
        EXPECT_EQ(command.result().toXml(document::kNoIndenting), kGoodResult);
    }
}

TEST_F(CommandStore, LoadOfADoneCommandRestoresItsResult) {
    const std::string result =
        storedResult("42",
                     "<result>0</result><errors><error><id>103</id><text>Invalid value</text>"
                     "</error></errors>");
    ScriptedCommand command;
    load(command, "7, 42, 2, 0, '', 'c', '" + result + "'");
    EXPECT_EQ(command.status(), RunStatus::done);
    EXPECT_EQ(command.errors(), std::set{ErrorCode{103}});
    EXPECT_EQ(command.result().toXml(document::kNoIndenting), result);
}

TEST_F(CommandStore, LoadReadsNullAsZeroAndEmpty) {
    ScriptedCommand command;
    command.setNextTime(5);
    command.setSchedule("daily");
    command.setStatus(RunStatus::running);
    command.load(tarvodb::Record<RCCommand>());
    EXPECT_EQ(command.rowId(), 0);
    EXPECT_EQ(command.nextTime(), 0);
    EXPECT_EQ(command.schedule(), "");
    EXPECT_EQ(command.status(), RunStatus::created);
}

TEST_F(CommandStore, LoadOfADoneCommandWithoutAResultMakesANewOne) {
    ScriptedCommand command;
    load(command, "7, 42, 2, 0, '', 'c', NULL");
    EXPECT_EQ(command.result().toXml(document::kNoIndenting), kGoodResult);
}

TEST_F(CommandStore, LoadOfAResultThatIsNotXmlIsRefused) {
    ScriptedCommand command;
    EXPECT_THROW(load(command, "7, 42, 2, 0, '', 'c', '<commandResult>'"), document::ParseError);
}

TEST_F(CommandStore, ALoadedCommandIsSavedToItsRow) {
    ScriptedCommand command;
    load(command, "7, 42, 1, 5, 'daily', 'c', 'r'");
    EXPECT_TRUE(command.save());
    EXPECT_EQ(storedRows(), (Rows{{"7", "0", "1", "5", "daily", kStoredCommand, kGoodResult}}));
}

TEST_F(CommandStore, AResultThatWasSavedIsLoadedAgain) {
    ScriptedCommand saved;
    saved.addError(ErrorCode{103}, "a & 'b' \xff");
    saved.setStatus(RunStatus::done);
    store(saved);
    ScriptedCommand loaded;
    const tarvodb::Database db = tarvodb::openDatabase(kCommandDatabase);
    loaded.load(tarvodb::doSelect<RCCommand>(db.get()).at(0));
    EXPECT_EQ(loaded.resultXml(), saved.resultXml());
    EXPECT_EQ(loaded.errors(), std::set{ErrorCode{103}});
}

}  // namespace tarvo_remote_control
