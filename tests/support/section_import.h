// Imports of the sections that write whole tables or single settings, and what a failed import
// must leave behind.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "support/import_fixture.h"

namespace test {

class SectionImportTest : public ImportTest {
  protected:
    SectionImportTest() { becomeModel("QRA-310"); }

    // The one cell of a select, "NULL" for SQL NULL.
    [[nodiscard]] std::string cell(const std::string& select) const {
        const auto found = stored(select);
        return found.size() == 1 ? found.front().front().value_or("NULL")
                                 : std::to_string(found.size()) + " rows";
    }

    // A setting's row.
    void setting(const std::string& key, const std::string& value) {
        rows("INSERT INTO configuracionWebGlobal (nombre, valor, aplicarBackup) VALUES ('" + key +
             "', '" + value + "', 1)");
    }
    [[nodiscard]] std::string valueOf(const std::string& key) const {
        return cell("SELECT valor FROM configuracionWebGlobal WHERE nombre = '" + key + "'");
    }

    void importSections(const std::string& sections) {
        before_ = content();
        importConfiguration(sections);
    }

    // Without those of the transaction.
    [[nodiscard]] std::vector<std::string> sectionStatements() const {
        std::vector<std::string> found;
        for (const std::string& sql : device.statements()) {
            if (sql != "BEGIN TRANSACTION" && sql != "COMMIT" && sql != "ROLLBACK") {
                found.push_back(sql);
            }
        }
        return found;
    }

    void expectSuccess() {
        EXPECT_EQ(errors(), std::vector<std::string>());
        EXPECT_EQ(errorLines(), std::vector<std::string>());
        EXPECT_EQ(result(), "0");
        EXPECT_THAT(device.statements(),
                    testing::AllOf(testing::Contains("COMMIT"),
                                   testing::Not(testing::Contains("ROLLBACK"))));
    }

    struct ExpectedError {
        std::string recorded;  // "<code> <text>"
        std::string logged;    // "Error <code>, <message>"
    };

    // These errors, then 202, a rollback and an unchanged database; no post-action.
    void expectFailure(std::vector<ExpectedError> expected) {
        expected.push_back(
            {"202 Could not set configuration", "Error 202, Could not set configuration"});
        expectErrors(expected);
        EXPECT_EQ(result(), "1");
        EXPECT_EQ(test::last(device.statements()), "ROLLBACK");
        EXPECT_EQ(device.shellCommands(), std::vector<std::string>());
        expectUnchanged();
    }

    void expectErrors(const std::vector<ExpectedError>& expected) {
        std::vector<std::string> recorded;
        std::vector<std::string> logged;
        for (const ExpectedError& error : expected) {
            recorded.push_back(error.recorded);
            logged.push_back("59: r9::: " + error.logged);
        }
        EXPECT_EQ(errors(), recorded);
        EXPECT_EQ(errorLines(), logged);
    }

    // The database is as it was before the import.
    void expectUnchanged() { EXPECT_EQ(content(), before_); }

  private:
    [[nodiscard]] std::map<std::string, std::vector<Row>> content() const {
        std::map<std::string, std::vector<Row>> tables;
        for (const Row& table : stored("SELECT name FROM sqlite_master WHERE type = 'table'")) {
            const std::string name = table.front().value_or("");
            tables[name] = stored("SELECT * FROM " + name);
        }
        return tables;
    }

    std::map<std::string, std::vector<Row>> before_;
};

}  // namespace test
