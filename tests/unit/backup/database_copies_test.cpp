#include "backup/database_copies.h"

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <filesystem>

#include "backup/sqlite.h"
#include "db/database.h"
#include "platform/files.h"
#include "support/fake_device.h"

namespace tarvo_backup {

namespace fs = std::filesystem;

using testing::ElementsAre;
using testing::StartsWith;

namespace {

constexpr const char* kRuin = "This is no database, however long one looks at it.";

class BackupDatabaseCopies : public test::DeviceTest {
  protected:
    BackupDatabaseCopies() {
        device.execute(tarvodb::kConfigDatabase,
                       "INSERT INTO AudioLanguageListGlobal VALUES (1, 'spa')");
    }

    [[nodiscard]] static std::vector<Cells> languages(const std::string& path) {
        const Connection db = openConnection(path, Access::readOnly);
        return query(db.get(), "SELECT AudioCode FROM AudioLanguageListGlobal");
    }

    // What `work` throws: its status and its text.
    template <class Work>
    static std::pair<ExitStatus, std::string> faultOf(Work work) {
        try {
            work();
        } catch (const Fault& fault) {
            return {fault.status(), fault.what()};
        }
        return {ExitStatus::done, ""};
    }

    const std::string source = device.path(tarvodb::kConfigDatabase);
    const std::string copy = device.path("/tmp/copy.sqlite");
};

}  // namespace

TEST_F(BackupDatabaseCopies, HoldWhatTheDatabaseHeld) {
    copyFromDevice({{source, copy}});
    device.execute(tarvodb::kConfigDatabase, "DELETE FROM AudioLanguageListGlobal");
    EXPECT_THAT(languages(copy), ElementsAre(ElementsAre("spa")));
    const std::string second = copy + ".2";
    copyOwn({copy, second});
    EXPECT_EQ(platform::files::read(second), platform::files::read(copy));
}

TEST_F(BackupDatabaseCopies, AreNotMadeOfADatabaseThatIsNotThere) {
    fs::remove(source);
    copyFromDevice({{source, copy}});
    copyOwn({source, copy});
    EXPECT_FALSE(fs::exists(copy));
}

TEST_F(BackupDatabaseCopies, OfWhatIsNoDatabaseAreTheSameBytes) {
    device.writeFile(tarvodb::kConfigDatabase, kRuin);
    copyFromDevice({{source, copy}});
    EXPECT_EQ(platform::files::read(copy), kRuin);
}

TEST_F(BackupDatabaseCopies, HaveUndoneWhatAJournalHasToUndo) {
    const std::string other = device.path("/tmp/half.sqlite");
    {
        const Connection db = openConnection(source, Access::readWrite);
        query(db.get(), "PRAGMA cache_size = 1");
        query(db.get(), "BEGIN");
        query(db.get(), "UPDATE AudioLanguageListGlobal SET AudioCode = 'half'");
        query(db.get(), "PRAGMA cache_spill = 1");
        query(db.get(),
              "INSERT INTO AudioLanguageListGlobal SELECT value + 9, hex(randomblob(900)) FROM "
              "(WITH RECURSIVE n(value) AS (SELECT 1 UNION ALL SELECT value + 1 FROM n WHERE value "
              "< 90) SELECT value FROM n)");
        fs::copy_file(source, other);
        fs::copy_file(source + "-journal", other + "-journal");
        query(db.get(), "ROLLBACK");
    }
    const auto half = platform::files::read(other);
    ASSERT_NE(half, platform::files::read(source));
    copyFromDevice({{other, copy}});
    EXPECT_THAT(languages(copy), ElementsAre(ElementsAre("spa")));
    EXPECT_FALSE(fs::exists(copy + "-journal"));
    EXPECT_EQ(platform::files::read(other), half);
}

// Somebody who reads would make the files of the log, and the times of the folder would tell.
TEST_F(BackupDatabaseCopies, LeaveNothingBesideADatabaseWithALog) {
    query(openConnection(source, Access::readWrite).get(), "PRAGMA journal_mode = WAL");
    copyFromDevice({{source, copy}});
    EXPECT_THAT(languages(copy), ElementsAre(ElementsAre("spa")));
    for (const char* suffix : {"-wal", "-shm"}) {
        EXPECT_FALSE(fs::exists(source + suffix)) << suffix;
    }
}

TEST_F(BackupDatabaseCopies, HoldWhatTheLogHolds) {
    const std::string other = device.path("/tmp/left.sqlite");
    const Connection db = openConnection(source, Access::readWrite);
    query(db.get(), "PRAGMA journal_mode = WAL");
    query(db.get(), "UPDATE AudioLanguageListGlobal SET AudioCode = 'fra'");
    for (const char* suffix : {"", "-wal"}) {
        fs::copy_file(source + suffix, other + suffix);
    }
    copyFromDevice({{source, copy}});  // somebody has it open
    EXPECT_THAT(languages(copy), ElementsAre(ElementsAre("fra")));
    fs::remove(copy);
    const auto log = platform::files::read(other + "-wal");
    copyFromDevice({{other, copy}});  // nobody has
    EXPECT_THAT(languages(copy), ElementsAre(ElementsAre("fra")));
    EXPECT_EQ(platform::files::read(other + "-wal"), log);
    EXPECT_FALSE(fs::exists(other + "-shm"));
}

TEST_F(BackupDatabaseCopies, ThatCannotBeMadeAreNamed) {
    const std::string nowhere = device.path("/no-folder/copy.sqlite");
    const auto [status, message] = faultOf([&] { copyFromDevice({{source, nowhere}}); });
    EXPECT_EQ(status, ExitStatus::cannotWrite);
    EXPECT_EQ(message, nowhere + ": unable to open database file");
    const auto [ownStatus, ownMessage] = faultOf([&] { copyOwn({source, nowhere}); });
    EXPECT_EQ(ownStatus, ExitStatus::cannotWrite);
    EXPECT_EQ(ownMessage, nowhere + ": No such file or directory");
}

TEST_F(BackupDatabaseCopies, OfWhatCannotBeReadNameTheSource) {
    fs::remove(source);
    fs::create_directory(source);
    const auto [status, message] = faultOf([&] { copyFromDevice({{source, copy}}); });
    EXPECT_EQ(status, ExitStatus::cannotRead);
    EXPECT_THAT(message, StartsWith(source + ": "));
}

TEST_F(BackupDatabaseCopies, ArePutBackWhole) {
    copyFromDevice({{source, copy}});
    device.execute(tarvodb::kConfigDatabase,
                   "UPDATE AudioLanguageListGlobal SET AudioCode = 'fra'");
    EXPECT_TRUE(PutBack({copy, source}).run(false));
    EXPECT_THAT(languages(source), ElementsAre(ElementsAre("spa")));
}

TEST_F(BackupDatabaseCopies, AreNotPutBackOverWhatOthersHaveWrittenMeanwhile) {
    copyFromDevice({{source, copy}});
    for (const char* mode : {"WAL", "DELETE"}) {
        query(openConnection(source, Access::readWrite).get(),
              std::string("PRAGMA journal_mode = ") + mode);
        PutBack database({copy, source});
        device.execute(tarvodb::kConfigDatabase,
                       "UPDATE AudioLanguageListGlobal SET AudioCode = 'fra'");
        EXPECT_FALSE(database.run(false)) << mode;
        EXPECT_THAT(languages(source), ElementsAre(ElementsAre("fra"))) << mode;
        EXPECT_TRUE(database.run(true)) << mode;
        EXPECT_THAT(languages(source), ElementsAre(ElementsAre("spa"))) << mode;
        EXPECT_TRUE(PutBack({copy, source}).run(false)) << mode;
    }
}

TEST_F(BackupDatabaseCopies, ArePutInThePlaceOfARuin) {
    copyFromDevice({{source, copy}});
    device.writeFile(tarvodb::kConfigDatabase, kRuin);
    EXPECT_TRUE(PutBack({copy, source}).run(false));
    EXPECT_THAT(languages(source), ElementsAre(ElementsAre("spa")));
}

TEST_F(BackupDatabaseCopies, ThatAreRuinsArePutBackAsTheyWere) {
    device.writeFile("/tmp/copy.sqlite", kRuin);
    EXPECT_TRUE(PutBack({copy, source}).run(false));
    EXPECT_EQ(platform::files::read(source), kRuin);
}

TEST(BackupSqlite, TellsAFileThatCannotBeWrittenFromOneThatCannotBeRead) {
    for (const int code : {SQLITE_FULL, SQLITE_IOERR_WRITE, SQLITE_IOERR_FSYNC,
                           SQLITE_IOERR_DIR_FSYNC, SQLITE_IOERR_TRUNCATE, SQLITE_IOERR_DELETE}) {
        EXPECT_TRUE(isDiskFault(code)) << code;
    }
    for (const int code : {SQLITE_OK, SQLITE_BUSY, SQLITE_CORRUPT, SQLITE_NOTADB, SQLITE_CANTOPEN,
                           SQLITE_IOERR, SQLITE_IOERR_READ, SQLITE_IOERR_SHORT_READ}) {
        EXPECT_FALSE(isDiskFault(code)) << code;
    }
}

}  // namespace tarvo_backup
