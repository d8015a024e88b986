#include "db/transaction.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>

#include "db/database.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Lines = std::vector<std::string>;

constexpr const char* kInsert = "INSERT INTO AudioLanguageListGlobal (AudioCode) VALUES ('deu')";

class TransactionTest : public test::DeviceTest {
  protected:
    TransactionTest() : db_(openDatabase(kConfigDatabase)) { device.forgetEvents(); }

    [[nodiscard]] Transaction transaction(Tries tries = Tries::three) const {
        return {db_.get(), tries};
    }
    [[nodiscard]] int run(const char* sql) const {
        return platform::executeSql(db_.get(), sql, nullptr);
    }
    [[nodiscard]] std::vector<test::Row> stored() const {
        return device.query(kConfigDatabase, "SELECT AudioCode FROM AudioLanguageListGlobal");
    }
    void close() { tarvodb::close(db_); }

  private:
    Database db_;
};

TEST_F(TransactionTest, StoresAtItsCommit) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    EXPECT_TRUE(transaction().commit());
    EXPECT_THAT(device.statements(), ElementsAre("BEGIN TRANSACTION", kInsert, "COMMIT"));
    EXPECT_THAT(stored(), ElementsAre(test::Row{"deu"}));
}

TEST_F(TransactionTest, StoresNothingThatIsRolledBack) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    EXPECT_TRUE(transaction().rollback());
    EXPECT_THAT(device.statements(), ElementsAre("BEGIN TRANSACTION", kInsert, "ROLLBACK"));
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(TransactionTest, TriesItsStatementsAsOftenAsItsPolicySays) {
    for (const auto& [tries, number] : {std::pair(Tries::one, 1), std::pair(Tries::three, 3)}) {
        for (const char* sql : {"BEGIN TRANSACTION", "COMMIT", "ROLLBACK"}) {
            SCOPED_TRACE(sql + std::to_string(number));
            device.failStatements(sql, number, SQLITE_BUSY);
        }
        device.forgetEvents();
        EXPECT_FALSE(transaction(tries).begin());
        EXPECT_FALSE(transaction(tries).commit());
        EXPECT_FALSE(transaction(tries).rollback());
        EXPECT_THAT(device.statements(), SizeIs(3 * number));
        EXPECT_THAT(device.sleeps(), SizeIs(tries == Tries::one ? 0 : 9));
    }
}

TEST_F(TransactionTest, ThatSqliteHasUndoneStoresNothingMore) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    device.failStatementsUndoingAll("INSERT", 1, SQLITE_FULL);
    EXPECT_EQ(run(kInsert), SQLITE_FULL);
    // There is room again.
    EXPECT_EQ(run(kInsert), SQLITE_CONSTRAINT);
    EXPECT_EQ(run("DELETE FROM NoSuchTable"), SQLITE_ERROR);
    EXPECT_EQ(run("DELETE FROM RedesCabecera"), SQLITE_CONSTRAINT);
    EXPECT_FALSE(transaction().commit());
    EXPECT_EQ(run(kInsert), SQLITE_CONSTRAINT);
    EXPECT_FALSE(transaction().rollback());
    EXPECT_EQ(run(kInsert), SQLITE_CONSTRAINT);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(TransactionTest, ThatSqliteHasUndoneCanStillRead) {
    device.execute(kConfigDatabase, kInsert);
    EXPECT_TRUE(transaction().begin());
    device.failStatementsUndoingAll("DELETE", 1, SQLITE_IOERR);
    EXPECT_EQ(run("DELETE FROM AudioLanguageListGlobal"), SQLITE_IOERR);
    EXPECT_EQ(run("SELECT * FROM AudioLanguageListGlobal"), SQLITE_OK);
}

TEST_F(TransactionTest, WhoseCommitFailsByALockCanBeCommittedAgain) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    device.failStatements("COMMIT", 3, SQLITE_BUSY);
    EXPECT_FALSE(transaction().commit());
    EXPECT_TRUE(transaction().commit());
    EXPECT_THAT(stored(), ElementsAre(test::Row{"deu"}));
}

TEST_F(TransactionTest, WhoseCommitSqliteHasUndoneStoresNothing) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    device.failStatementsUndoingAll("COMMIT", 1, SQLITE_FULL);
    EXPECT_FALSE(transaction().commit());
    EXPECT_EQ(device.statements().size(), 5U);
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(TransactionTest, StoresNothingIntoAFileThatAnotherHasReplaced) {
    const std::filesystem::path database = device.path(kConfigDatabase);
    const std::filesystem::path copy = database.string() + ".copy";
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    std::filesystem::copy_file(database, copy);
    device.beforeStatement("COMMIT", [&] { std::filesystem::rename(copy, database); });
    EXPECT_FALSE(transaction().commit());
    EXPECT_EQ(device.statements().size(), 5U);
    EXPECT_FALSE(transaction().rollback());
    close();
    EXPECT_THAT(stored(), IsEmpty());
}

TEST_F(TransactionTest, StoresNothingIntoAFileThatIsGone) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    device.removeFile(kConfigDatabase);
    EXPECT_FALSE(transaction().commit());
}

TEST_F(TransactionTest, ThatHasEndedLeavesTheHandleAsItWas) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_TRUE(transaction().commit());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    EXPECT_TRUE(transaction().begin());
    EXPECT_TRUE(transaction().rollback());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    EXPECT_THAT(stored(), SizeIs(2));
}

TEST_F(TransactionTest, ThatCouldNotBeginRefusesNothing) {
    device.failStatements("BEGIN TRANSACTION", 3, SQLITE_BUSY);
    EXPECT_FALSE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(TransactionTest, ThatIsLeftOpenIsUndoneWithItsHandle) {
    EXPECT_TRUE(transaction().begin());
    EXPECT_EQ(run(kInsert), SQLITE_OK);
    close();
    EXPECT_THAT(stored(), IsEmpty());
}

}  // namespace

}  // namespace tarvodb
