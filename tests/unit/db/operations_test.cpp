#include "db/operations.h"

#include <sqlite3.h>

#include <filesystem>

#include "db/clauses.h"
#include "db/database.h"
#include "support/fake_device.h"

namespace tarvodb {

namespace {

using Settings = configuracionWebGlobal;
using Languages = AudioLanguageListGlobal;
using Lines = std::vector<std::string>;
using Rows = std::vector<test::Row>;

// What one failed try leaves behind. Without a message SQLite gave none.
Lines failedTry(const std::string& sql, const std::string& operation, const std::string& text,
                const std::string& message, int sleep) {
    const std::string log = "log 3: [ERROR_DB]" + operation + ": ";
    Lines lines{"sql: " + sql, log + text + "\n"};
    if (!message.empty()) {
        lines.push_back(log + message + "\n");
        lines.push_back("perror: " + message);
    }
    lines.push_back("sleep: " + std::to_string(sleep));
    return lines;
}

// What a statement that never succeeds leaves behind; `text` ends with the attempt's number.
Lines threeFailedTries(const std::string& sql, const std::string& operation,
                       const std::string& text, const std::string& message) {
    Lines all;
    for (int attempt = 0; attempt < 3; ++attempt) {
        const Lines lines =
            failedTry(sql, operation, text + std::to_string(attempt), message, attempt + 1);
        all.insert(all.end(), lines.begin(), lines.end());
    }
    return all;
}

// A second program that keeps the file for itself.
class OtherProgram {
  public:
    explicit OtherProgram(const std::filesystem::path& file) {
        sqlite3_open(file.c_str(), &db_);
        sqlite3_exec(db_, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr);
    }
    ~OtherProgram() { sqlite3_close(db_); }
    OtherProgram(const OtherProgram&) = delete;
    OtherProgram& operator=(const OtherProgram&) = delete;

  private:
    sqlite3* db_ = nullptr;
};

class TableOperations : public test::DeviceTest {
  protected:
    TableOperations() : config_(openDatabase(kConfigDatabase)) { device.forgetEvents(); }

    sqlite3* db() { return config_.get(); }

    void execute(const std::string& sql) { device.execute(kConfigDatabase, sql); }
    [[nodiscard]] Rows query(const std::string& sql) const {
        return device.query(kConfigDatabase, sql);
    }

    void addSetting(const std::string& value) {
        execute("INSERT INTO configuracionWebGlobal VALUES (7, 'network_IP', " + value + ", 0)");
    }
    Record<Settings> storedSetting() {
        Record<Settings> setting = doSelect<Settings>(db()).at(0);
        device.forgetEvents();
        return setting;
    }
    [[nodiscard]] Rows storedValues() const {
        return query("SELECT valor FROM configuracionWebGlobal");
    }

    static Record<Languages> language(const char* code) {
        Record<Languages> record;
        record.set(Languages::AudioCode, code);
        return record;
    }

    // The file that the database is in becomes another one; the handle is opened anew.
    void reopen() {
        config_ = openDatabase(kConfigDatabase);
        device.forgetEvents();
    }
    void close() { config_.reset(); }

  private:
    Database config_;
};

}  // namespace

TEST_F(TableOperations, SelectWithoutClauseEndsWithABlank) {
    doSelect<Settings>(db());
    EXPECT_EQ(device.statements(), Lines{"SELECT * FROM configuracionWebGlobal "});
}

TEST_F(TableOperations, SelectOfAnEmptyTableGivesNoRowsAndLogsNothing) {
    EXPECT_TRUE(doSelect<Settings>(db()).empty());
    EXPECT_TRUE(device.logLines().empty());
    EXPECT_TRUE(device.sleeps().empty());
}

TEST_F(TableOperations, SelectGivesTheRowsInSqlitesOrderUnmodified) {
    execute("INSERT INTO AudioLanguageListGlobal VALUES (1, 'spa'), (2, 'eng'), (3, 'fra')");
    const auto records = doSelect<Languages>(db(), Clause<0>("ORDER BY AudioCode"));
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0][Languages::AudioCode].asString(), "eng");
    EXPECT_EQ(records[1][Languages::AudioCode].asString(), "fra");
    EXPECT_EQ(records[2][Languages::AudioCode].asString(), "spa");
    EXPECT_EQ(records[2].key().asString(), "1");
    EXPECT_FALSE(records[0].isModified(Languages::idALLG));
    EXPECT_FALSE(records[0].isModified(Languages::AudioCode));
}

TEST_F(TableOperations, SelectPutsItsArgumentsIntoTheClause) {
    constexpr Clause<3> kClause = " WHERE nombre LIKE %Q  and valor LIKE %Q ORDER BY %q";
    doSelect<Settings>(db(), kClause, "it's", nullptr, "nombre");
    EXPECT_EQ(device.statements(),
              Lines{"SELECT * FROM configuracionWebGlobal  WHERE nombre LIKE 'it''s'  and valor "
                    "LIKE NULL ORDER BY nombre"});
}

TEST_F(TableOperations, SelectReadsNullInEveryColumnAsNull) {
    execute("INSERT INTO RedesModulos DEFAULT VALUES");
    const auto records = doSelect<RedesModulos>(db());
    ASSERT_EQ(records.size(), 1U);
    EXPECT_EQ(records[0].key().asString(), "1");
    for (std::size_t column = 1; column < RedesModulos::columns.size(); ++column) {
        SCOPED_TRACE(RedesModulos::columns[column]);
        EXPECT_EQ(records[0].value(column).text(), nullptr);
        EXPECT_EQ(records[0].value(column).asString(), "");
        EXPECT_EQ(records[0].value(column).asInt(), 0);
    }
}

TEST_F(TableOperations, SelectReadsEveryByteOfATextAndNonNumbersInNumberColumns) {
    execute(
        "INSERT INTO configuracionWebGlobal VALUES (7, 'a', 'L''\"\xc3\xa9t\xe9\" 50%d <&>', "
        "'many')");
    const Record<Settings> setting = storedSetting();
    EXPECT_EQ(setting[Settings::valor].asString(), "L'\"\xc3\xa9t\xe9\" 50%d <&>");
    EXPECT_EQ(setting[Settings::aplicarBackup].asString(), "many");
    EXPECT_EQ(setting[Settings::aplicarBackup].asInt(), 0);
}

TEST_F(TableOperations, SelectOfATableWithMoreColumnsReadsTheListedOnes) {
    execute("ALTER TABLE AudioLanguageListGlobal ADD COLUMN Version INTEGER");
    execute("ALTER TABLE AudioLanguageListGlobal ADD COLUMN Comment TEXT");
    execute("INSERT INTO AudioLanguageListGlobal VALUES (1, 'spa', 8, 'x'), (2, 'eng', 9, NULL)");
    const auto records = doSelect<Languages>(db());
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].key().asString(), "1");
    EXPECT_EQ(records[0][Languages::AudioCode].asString(), "spa");
    EXPECT_EQ(records[1].key().asString(), "2");
    EXPECT_EQ(records[1][Languages::AudioCode].asString(), "eng");
}

TEST_F(TableOperations, SelectReadsByPositionAndNeverByName) {
    execute("ALTER TABLE AudioLanguageListGlobal RENAME COLUMN AudioCode TO LanguageCode");
    execute("INSERT INTO AudioLanguageListGlobal VALUES (1, 'spa')");
    EXPECT_EQ(doSelect<Languages>(db()).at(0)[Languages::AudioCode].asString(), "spa");
}

TEST_F(TableOperations, SelectOfAMissingTableIsTriedThreeTimesAndGivesNoRows) {
    execute("DROP TABLE DiSEqCGlobal");
    EXPECT_TRUE(doSelect<DiSEqCGlobal>(db()).empty());
    EXPECT_EQ(device.events(),
              threeFailedTries("SELECT * FROM DiSEqCGlobal ", "doSelect",
                               "Error leyendo datos tabla DiSEqCGlobal . intento: ",
                               "no such table: DiSEqCGlobal"));
}

TEST_F(TableOperations, SelectFromALockedDatabaseGivesUpAfterSixSeconds) {
    addSetting("'x'");
    const OtherProgram other(device.path(kConfigDatabase));
    EXPECT_TRUE(doSelect<Settings>(db()).empty());
    EXPECT_EQ(device.events(),
              threeFailedTries("SELECT * FROM configuracionWebGlobal ", "doSelect",
                               "Error leyendo datos tabla configuracionWebGlobal . intento: ",
                               "database is locked"));
}

TEST_F(TableOperations, SelectFromAFileThatIsNotADatabaseGivesNoRows) {
    close();
    device.writeFile(kConfigDatabase, "<configuration/> is not SQLite");
    reopen();
    EXPECT_TRUE(doSelect<Settings>(db()).empty());
    EXPECT_EQ(device.events(),
              threeFailedTries("SELECT * FROM configuracionWebGlobal ", "doSelect",
                               "Error leyendo datos tabla configuracionWebGlobal . intento: ",
                               "file is not a database"));
}

TEST_F(TableOperations, SelectThatFailsOnceGivesTheRowsOfItsSecondTry) {
    addSetting("'x'");
    device.failStatements("SELECT", 1, SQLITE_BUSY, "database is locked");
    EXPECT_EQ(doSelect<Settings>(db()).size(), 1U);
    Lines expected = failedTry("SELECT * FROM configuracionWebGlobal ", "doSelect",
                               "Error leyendo datos tabla configuracionWebGlobal . intento: 0",
                               "database is locked", 1);
    expected.emplace_back("sql: SELECT * FROM configuracionWebGlobal ");
    EXPECT_EQ(device.events(), expected);
}

TEST_F(TableOperations, SelectThatFailsTwiceGivesTheRowsOfItsThirdTry) {
    addSetting("'x'");
    device.failStatements("SELECT", 2, SQLITE_BUSY);
    EXPECT_EQ(doSelect<Settings>(db()).size(), 1U);
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2"}));
}

TEST_F(TableOperations, SelectThatFailedLeavesTheNextOneUnharmed) {
    addSetting("'x'");
    device.failStatements("SELECT", 3, SQLITE_BUSY);
    EXPECT_TRUE(doSelect<Settings>(db()).empty());
    EXPECT_EQ(doSelect<Settings>(db()).size(), 1U);
}

TEST_F(TableOperations, InsertWritesEveryColumnInOrder) {
    Record<Settings> setting;
    setting.set(Settings::nombre, "network_IP");
    setting.set(Settings::valor, "");
    EXPECT_TRUE(insert(setting, db()));
    EXPECT_EQ(device.events(),
              Lines{"sql: INSERT INTO configuracionWebGlobal (idConfiguracionGlobal, nombre, "
                    "valor, aplicarBackup)  VALUES (NULL, 'network_IP', '', NULL )"});
    EXPECT_EQ(query("SELECT * FROM configuracionWebGlobal"),
              (Rows{{"1", "network_IP", "", std::nullopt}}));
}

TEST_F(TableOperations, InsertOfAnEmptyRecordWritesNullEverywhere) {
    Record<Service_EPG_replacing> record;
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.statements(),
              Lines{"INSERT INTO Service_EPG_replacing (idService_EPG_replacing, fk_idService_EPG, "
                    "replacing_epg_channel_id, Estado)  VALUES (NULL, NULL, NULL, NULL )"});
    EXPECT_EQ(query("SELECT * FROM Service_EPG_replacing"),
              (Rows{{"1", std::nullopt, std::nullopt, std::nullopt}}));
}

TEST_F(TableOperations, InsertWithANullKeyLeavesTheNewRowIdInTheRecord) {
    execute("INSERT INTO AudioLanguageListGlobal VALUES (41, 'spa')");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(record.key().asString(), "42");
}

TEST_F(TableOperations, InsertWithAKeyWritesItAsGiven) {
    Record<Languages> record = language("eng");
    record.set(Languages::idALLG, "007");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.statements(),
              Lines{"INSERT INTO AudioLanguageListGlobal (idALLG, AudioCode)  VALUES ('007', 'eng' "
                    ")"});
    EXPECT_EQ(record.key().asString(), "7");
}

TEST_F(TableOperations, InsertTakesTheRowIdAsA32BitNumber) {
    Record<Languages> record = language("eng");
    record.set(Languages::idALLG, "4294967298");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(record.key().asString(), "2");
}

TEST_F(TableOperations, InsertLeavesTheMarksAsTheyWere) {
    Record<Languages> record;
    record.set(Languages::AudioCode, "eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_TRUE(record.isModified(Languages::AudioCode));
    EXPECT_FALSE(record.isModified(Languages::idALLG));
}

TEST_F(TableOperations, InsertKeepsPercentSignsQuotesAndBytesAbove127) {
    const char* text = "O'Neil \"50%\" of 20%d <&> \xff";
    Record<Languages> record = language(text);
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.statements(),
              Lines{"INSERT INTO AudioLanguageListGlobal (idALLG, AudioCode)  VALUES (NULL, "
                    "'O''Neil \"50%\" of 20%d <&> \xff' )"});
    EXPECT_EQ(query("SELECT AudioCode FROM AudioLanguageListGlobal"), (Rows{{text}}));
    EXPECT_EQ(record[Languages::AudioCode].asString(), text);
}

TEST_F(TableOperations, InsertOfARowThatWasReadKeepsItsNulls) {
    execute("INSERT INTO configuracionWebGlobal VALUES (7, 'network_IP', NULL, NULL)");
    Record<Settings> setting = storedSetting();
    execute("DELETE FROM configuracionWebGlobal");
    EXPECT_TRUE(insert(setting, db()));
    EXPECT_EQ(query("SELECT * FROM configuracionWebGlobal"),
              (Rows{{"7", "network_IP", std::nullopt, std::nullopt}}));
}

TEST_F(TableOperations, InsertWritesToATableWithMoreColumns) {
    execute("ALTER TABLE AudioLanguageListGlobal ADD COLUMN Comment TEXT DEFAULT 'none'");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(query("SELECT * FROM AudioLanguageListGlobal"), (Rows{{"1", "eng", "none"}}));
}

TEST_F(TableOperations, InsertThatFailsIsTriedThreeTimesAndLeavesTheRecordUnchanged) {
    execute("INSERT INTO AudioLanguageListGlobal VALUES (7, 'spa')");
    Record<Languages> record = language("eng");
    record.set(Languages::idALLG, "007");
    EXPECT_FALSE(insert(record, db()));
    EXPECT_EQ(
        device.events(),
        threeFailedTries(
            "INSERT INTO AudioLanguageListGlobal (idALLG, AudioCode)  VALUES ('007', 'eng' )",
            "insert", "Error (19) inserting register in table AudioLanguageListGlobal . Attempt: ",
            "UNIQUE constraint failed: AudioLanguageListGlobal.idALLG"));
    EXPECT_EQ(record.key().asString(), "007");
    EXPECT_EQ(record[Languages::AudioCode].asString(), "eng");
    EXPECT_TRUE(record.isModified(Languages::AudioCode));
}

TEST_F(TableOperations, InsertIntoALockedDatabaseReportsTheLock) {
    const OtherProgram other(device.path(kConfigDatabase));
    Record<Languages> record = language("eng");
    EXPECT_FALSE(insert(record, db()));
    EXPECT_EQ(record.key().text(), nullptr);
    EXPECT_EQ(device.logLines(),
              (Lines{"3: [ERROR_DB]insert: Error (5) inserting register in table "
                     "AudioLanguageListGlobal . Attempt: 0\n",
                     "3: [ERROR_DB]insert: database is locked\n",
                     "3: [ERROR_DB]insert: Error (5) inserting register in table "
                     "AudioLanguageListGlobal . Attempt: 1\n",
                     "3: [ERROR_DB]insert: database is locked\n",
                     "3: [ERROR_DB]insert: Error (5) inserting register in table "
                     "AudioLanguageListGlobal . Attempt: 2\n",
                     "3: [ERROR_DB]insert: database is locked\n"}));
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3"}));
}

TEST_F(TableOperations, InsertThatFailsOnceInsertsOnce) {
    device.failStatements("INSERT", 1, SQLITE_BUSY, "database is locked");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.sleeps(), Lines{"1"});
    EXPECT_EQ(device.statements().size(), 2U);
    EXPECT_EQ(query("SELECT * FROM AudioLanguageListGlobal"), (Rows{{"1", "eng"}}));
}

TEST_F(TableOperations, FailureWithoutAMessageLogsOneLine) {
    device.failStatements("INSERT", 1, SQLITE_MISUSE, "");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.logLines(),
              Lines{"3: [ERROR_DB]insert: Error (21) inserting register in table "
                    "AudioLanguageListGlobal . Attempt: 0\n"});
    EXPECT_TRUE(device.eventsOf("perror: ").empty());
}

TEST_F(TableOperations, PercentSignsInAMessageAreLoggedAsTheyStand) {
    device.failStatements("INSERT", 1, SQLITE_ERROR, "no such column: 100%s%n");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(device.logLines().at(1), "3: [ERROR_DB]insert: no such column: 100%s%n\n");
    EXPECT_EQ(device.eventsOf("perror: "), Lines{"no such column: 100%s%n"});
}

TEST_F(TableOperations, UpdateWritesTheModifiedColumnsInColumnOrder) {
    addSetting("'10.0.0.1'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::aplicarBackup, 1);
    setting.set(Settings::valor, "x");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.events(),
              Lines{"sql: UPDATE configuracionWebGlobal SET  valor = 'x' , aplicarBackup = '1'  "
                    "WHERE idConfiguracionGlobal = '7'"});
    EXPECT_EQ(query("SELECT * FROM configuracionWebGlobal"), (Rows{{"7", "network_IP", "x", "1"}}));
}

TEST_F(TableOperations, UpdateOfOneColumnHasNoComma) {
    Record<NimGlobal> tuner;
    tuner.set(NimGlobal::idNimGlobal, "3");
    tuner.clearModified();
    tuner.set(NimGlobal::Estado, 1);
    EXPECT_TRUE(update(tuner, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE NimGlobal SET  Estado = '1'  WHERE idNimGlobal = '3'"});
}

TEST_F(TableOperations, UpdateTakesTheSpellingOfEachTable) {
    Record<RedesModulos> module;
    module.set(RedesModulos::idRedMod, "3");
    module.clearModified();
    module.set(RedesModulos::estado, 1);
    EXPECT_TRUE(update(module, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE RedesModulos SET  estado = '1'  WHERE idRedMod = '3'"});
}

TEST_F(TableOperations, UpdateWithoutMarksRunsNothingAndSucceeds) {
    addSetting("'10.0.0.1'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "10.0.0.1");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_TRUE(device.events().empty());
}

TEST_F(TableOperations, UpdateClearsTheMarks) {
    addSetting("'10.0.0.1'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "x");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_FALSE(setting.isModified(Settings::valor));
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements().size(), 1U);
}

TEST_F(TableOperations, UpdateWritesNullAsNullAndTheEmptyTextAsEmpty) {
    execute("INSERT INTO configuracionWebGlobal VALUES (7, 'network_IP', 'x', 1)");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::nombre, "");
    setting.set(Settings::valor, tSqlite3parent());
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  nombre = '' , valor = NULL  WHERE "
                    "idConfiguracionGlobal = '7'"});
    EXPECT_EQ(query("SELECT * FROM configuracionWebGlobal"), (Rows{{"7", "", std::nullopt, "1"}}));
}

TEST_F(TableOperations, UpdateLeavesAnUnsetNullNull) {
    addSetting("NULL");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "");
    setting.set(Settings::aplicarBackup, 1);
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(query("SELECT * FROM configuracionWebGlobal"),
              (Rows{{"7", "network_IP", std::nullopt, "1"}}));
}

TEST_F(TableOperations, UpdateWritesAMarkedKeyLikeAnyOtherColumn) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::idConfiguracionGlobal, 9);
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  idConfiguracionGlobal = '9'  WHERE "
                    "idConfiguracionGlobal = '9'"});
}

TEST_F(TableOperations, UpdateWithoutAKeyComparesWithNull) {
    addSetting("'x'");
    Record<Settings> setting;
    setting.set(Settings::valor, "y");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  valor = 'y'  WHERE idConfiguracionGlobal "
                    "= NULL"});
    EXPECT_EQ(storedValues(), (Rows{{"x"}}));
}

TEST_F(TableOperations, UpdateQuotesTextsAndKeepsBytesAbove127) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "L'\"\xc3\xa9t\xe9\" <&>");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  valor = 'L''\"\xc3\xa9t\xe9\" <&>'  WHERE "
                    "idConfiguracionGlobal = '7'"});
    EXPECT_EQ(storedValues(), (Rows{{"L'\"\xc3\xa9t\xe9\" <&>"}}));
}

TEST_F(TableOperations, UpdateWritesABlankForThePercentSignAndKeepsItInTheRecord) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "50%");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.events(), Lines{"sql: UPDATE configuracionWebGlobal SET  valor = '50 '  WHERE "
                                     "idConfiguracionGlobal = '7'"});
    EXPECT_EQ(storedValues(), (Rows{{"50 "}}));
    EXPECT_EQ(setting[Settings::valor].asString(), "50 ");
    EXPECT_FALSE(setting.isModified(Settings::valor));
}

TEST_F(TableOperations, UpdateWritesFurtherPercentSignsAsTheyStand) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "%s%s%n%%Q");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  valor = ' s%s%n%%Q'  WHERE "
                    "idConfiguracionGlobal = '7'"});
    EXPECT_EQ(storedValues(), (Rows{{" s%s%n%%Q"}}));
    EXPECT_EQ(setting[Settings::valor].asString(), " s%s%n%%Q");
}

TEST_F(TableOperations, UpdateReplacesThePercentSignInEachWrittenColumn) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::nombre, "a%b");
    setting.set(Settings::valor, "c%d");
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.statements(),
              Lines{"UPDATE configuracionWebGlobal SET  nombre = 'a b' , valor = 'c d'  WHERE "
                    "idConfiguracionGlobal = '7'"});
}

TEST_F(TableOperations, UpdateLeavesPercentSignsInUnwrittenColumns) {
    addSetting("'50%'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::aplicarBackup, 1);
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(setting[Settings::valor].asString(), "50%");
    EXPECT_EQ(storedValues(), (Rows{{"50%"}}));
}

TEST_F(TableOperations, UpdateThatFailsKeepsTheMarksAndTheReplacedPercentSign) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "50%");
    device.failStatements("UPDATE", 3, SQLITE_BUSY, "database is locked");
    EXPECT_FALSE(update(setting, db()));
    EXPECT_EQ(device.events(),
              threeFailedTries(
                  "UPDATE configuracionWebGlobal SET  valor = '50 '  WHERE idConfiguracionGlobal "
                  "= '7'",
                  "update",
                  "Error actualizando datos registro en tabla configuracionWebGlobal . intento: ",
                  "database is locked"));
    EXPECT_TRUE(setting.isModified(Settings::valor));
    EXPECT_EQ(setting[Settings::valor].asString(), "50 ");
    EXPECT_EQ(storedValues(), (Rows{{"x"}}));
}

TEST_F(TableOperations, UpdateThatFailsOnceSucceeds) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "y");
    device.failStatements("UPDATE", 1, SQLITE_BUSY);
    EXPECT_TRUE(update(setting, db()));
    EXPECT_EQ(device.sleeps(), Lines{"1"});
    EXPECT_FALSE(setting.isModified(Settings::valor));
    EXPECT_EQ(storedValues(), (Rows{{"y"}}));
}

TEST_F(TableOperations, UpdateOfALockedDatabaseFails) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "y");
    const OtherProgram other(device.path(kConfigDatabase));
    EXPECT_FALSE(update(setting, db()));
    EXPECT_EQ(device.logLines().at(1), "3: [ERROR_DB]update: database is locked\n");
    EXPECT_EQ(device.sleeps(), (Lines{"1", "2", "3"}));
}

TEST_F(TableOperations, UpdateOfAMissingTableFails) {
    addSetting("'x'");
    Record<Settings> setting = storedSetting();
    setting.set(Settings::valor, "y");
    execute("DROP TABLE configuracionWebGlobal");
    EXPECT_FALSE(update(setting, db()));
    EXPECT_EQ(device.logLines().at(0),
              "3: [ERROR_DB]update: Error actualizando datos registro en tabla "
              "configuracionWebGlobal . intento: 0\n");
    EXPECT_EQ(device.logLines().at(1),
              "3: [ERROR_DB]update: no such table: configuracionWebGlobal\n");
}

TEST_F(TableOperations, DeleteAllEmptiesTheTable) {
    execute("INSERT INTO Service_EPG (Nombre) VALUES ('a'), ('b')");
    EXPECT_TRUE(deleteAll<Service_EPG>(db()));
    EXPECT_EQ(device.events(), Lines{"sql: DELETE FROM Service_EPG"});
    EXPECT_TRUE(query("SELECT * FROM Service_EPG").empty());
}

TEST_F(TableOperations, DeleteAllCompactsTheFileOnlyWithVacuum) {
    const auto fileSize = [this] {
        return std::filesystem::file_size(device.path(kConfigDatabase));
    };
    execute("INSERT INTO Service_EPG (Nombre) VALUES (hex(zeroblob(100000)))");
    const auto full = fileSize();
    EXPECT_TRUE(deleteAll<Service_EPG>(db(), false));
    EXPECT_EQ(fileSize(), full);
    EXPECT_TRUE(deleteAll<Service_EPG>(db(), true));
    EXPECT_LT(fileSize(), full);
    EXPECT_EQ(device.statements(),
              (Lines{"DELETE FROM Service_EPG", "DELETE FROM Service_EPG", "vacuum"}));
}

TEST_F(TableOperations, AFailingVacuumIsRunOnceAndDoesNotCount) {
    execute("INSERT INTO Service_EPG (Nombre) VALUES ('a')");
    device.failStatements("vacuum", 3, SQLITE_BUSY, "database is locked");
    EXPECT_TRUE(deleteAll<Service_EPG>(db(), true));
    EXPECT_EQ(device.events(), (Lines{"sql: DELETE FROM Service_EPG", "sql: vacuum"}));
    EXPECT_TRUE(query("SELECT * FROM Service_EPG").empty());
}

TEST_F(TableOperations, AVacuumInsideATransactionDoesNotCount) {
    execWithRetries(db(), "BEGIN TRANSACTION");
    EXPECT_TRUE(deleteAll<Service_EPG>(db(), true));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(TableOperations, DeleteAllThatFailsIsTriedThreeTimesWithoutAttemptNumbersNorVacuum) {
    const std::string sql = "DELETE FROM Service_EPG";
    const std::string text = "Error eliminando la tabla Service_EPG";
    device.failStatements(sql, 3, SQLITE_BUSY, "database is locked");
    EXPECT_FALSE(deleteAll<Service_EPG>(db(), true));
    Lines expected;
    for (int sleep = 1; sleep <= 3; ++sleep) {
        const Lines lines = failedTry(sql, "deleteAll", text, "database is locked", sleep);
        expected.insert(expected.end(), lines.begin(), lines.end());
    }
    EXPECT_EQ(device.events(), expected);
}

TEST_F(TableOperations, DeleteAllThatFailsOnceEmptiesTheTable) {
    execute("INSERT INTO Service_EPG (Nombre) VALUES ('a')");
    device.failStatements("DELETE", 1, SQLITE_BUSY);
    EXPECT_TRUE(deleteAll<Service_EPG>(db()));
    EXPECT_EQ(device.sleeps(), Lines{"1"});
    EXPECT_TRUE(query("SELECT * FROM Service_EPG").empty());
}

TEST_F(TableOperations, DeleteAllOfAMissingTableFails) {
    execute("DROP TABLE Service_EPG");
    EXPECT_FALSE(deleteAll<Service_EPG>(db()));
    EXPECT_EQ(device.logLines().at(1), "3: [ERROR_DB]deleteAll: no such table: Service_EPG\n");
}

namespace {

Record<RCCommand> commandRow(const char* id) {
    Record<RCCommand> record;
    record.set(RCCommand::id, id);
    return record;
}

}  // namespace

TEST_F(TableOperations, DeleteIdRemovesTheRowOfTheKey) {
    device.execute(kCommandDatabase, "INSERT INTO RCCommand (id) VALUES (1), (2)");
    const Database store = openDatabase(kCommandDatabase);
    EXPECT_TRUE(deleteId(commandRow("2"), store.get()));
    EXPECT_EQ(device.statements(), Lines{"DELETE FROM RCCommand WHERE id = '2'"});
    EXPECT_EQ(device.query(kCommandDatabase, "SELECT id FROM RCCommand"), (Rows{{"1"}}));
}

TEST_F(TableOperations, DeleteIdOfNoRowSucceeds) {
    const Database store = openDatabase(kCommandDatabase);
    EXPECT_TRUE(deleteId(commandRow("2"), store.get()));
    EXPECT_TRUE(device.logLines().empty());
}

TEST_F(TableOperations, DeleteIdThatFailsIsTriedThreeTimes) {
    const Database store = openDatabase(kCommandDatabase);
    device.failStatements("DELETE", 3, SQLITE_BUSY, "database is locked");
    device.forgetEvents();
    EXPECT_FALSE(deleteId(commandRow("2"), store.get()));
    EXPECT_EQ(device.events(),
              threeFailedTries("DELETE FROM RCCommand WHERE id = '2'", "deleteId",
                               "Error (5) borrando registro en tabla RCCommand . intento: ",
                               "database is locked"));
}

TEST_F(TableOperations, NeverBeginOrEndATransaction) {
    execWithRetries(db(), "BEGIN TRANSACTION");
    Record<Languages> record = language("eng");
    EXPECT_TRUE(insert(record, db()));
    EXPECT_EQ(doSelect<Languages>(db()).size(), 1U);
    execWithRetries(db(), "ROLLBACK");
    EXPECT_TRUE(doSelect<Languages>(db()).empty());
}

}  // namespace tarvodb
