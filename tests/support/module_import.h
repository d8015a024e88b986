// Imports of `modules` sections: rows to start from, and what became of the import in the forms
// that the tests of the module handlers compare.
#pragma once

#include <gmock/gmock.h>

#include <map>
#include <string>
#include <vector>

#include "support/import_fixture.h"

namespace test {

// An element with this text; nothing for a null text.
inline std::string child(const std::string& name, const char* text) {
    return text == nullptr ? "" : "<" + name + ">" + text + "</" + name + ">";
}

class ModuleImportTest : public ImportTest {
  protected:
    static constexpr const char* kMac = "02:00:00:00:00:11";

    // A module of the headend, of family 36 and model 2 unless told otherwise.
    void addModule(int id, const std::string& mac, int family = 36, int model = 2, int master = 1) {
        rows(
            "INSERT INTO RedesModulos (idRedMod, MAC, LabelName, RED, Familia, Modelo, Master, "
            "Atenuacion, ModoSalidaRF, estado) VALUES (" +
            std::to_string(id) + ", '" + mac + "', 'old', 1, " + std::to_string(family) + ", " +
            std::to_string(model) + ", " + std::to_string(master) + ", 5, 0, 0)");
    }

    // The element of the module that addModule(1, kMac) makes.
    static std::string moduleElement(const std::string& children) {
        return std::string("<module><mac>") + kMac +
               "</mac><family>36</family><model>2</model><isMaster>1</isMaster>" + children +
               "</module>";
    }

    void importModules(const std::string& modules) {
        importConfiguration("<modules>" + modules + "</modules>");
    }

    void importModule(const std::string& children) { importModules(moduleElement(children)); }

    // The statements of the parts of a module: without the transaction and the module's own row.
    [[nodiscard]] std::vector<std::string> partStatements() const {
        return statementsThat([](const std::string& sql) {
            return sql != "BEGIN TRANSACTION" && sql != "COMMIT" && sql != "ROLLBACK" &&
                   sql.find(" RedesModulos ") == std::string::npos;
        });
    }

    // The statements that write to tables.
    [[nodiscard]] std::vector<std::string> writes() const {
        return statementsThat([](const std::string& sql) {
            return sql.starts_with("UPDATE ") || sql.starts_with("INSERT ") ||
                   sql.starts_with("DELETE ");
        });
    }

    // The import failed with this error alone, recorded with its code and logged with
    // `loggedCode` (0: the same), and was rolled back.
    void expectFailure(int code, const std::string& message, int loggedCode = 0) {
        expectFailures({{code, message, loggedCode}});
    }

    struct ExpectedError {
        int code;
        std::string message;
        int loggedCode = 0;
    };

    void expectFailures(const std::vector<ExpectedError>& expected) {
        std::vector<std::string> recorded;
        std::vector<std::string> logged;
        for (const auto& [code, message, loggedCode] : expected) {
            const std::string& codeText = kCodeTexts.at(code);
            recorded.push_back(std::to_string(code) + " " + codeText +
                               (message.empty() ? "" : ": " + message));
            logged.push_back("59: r9::: Error " +
                             std::to_string(loggedCode == 0 ? code : loggedCode) + ", " +
                             (message.empty() ? codeText : message));
        }
        recorded.emplace_back("202 Could not set configuration");
        logged.emplace_back("59: r9::: Error 202, Could not set configuration");
        EXPECT_EQ(errors(), recorded);
        EXPECT_EQ(result(), "1");
        EXPECT_EQ(errorLines(), logged);
        EXPECT_EQ(test::last(device.statements()), "ROLLBACK");
    }

    void expectSuccess() {
        EXPECT_EQ(errors(), std::vector<std::string>());
        EXPECT_EQ(result(), "0");
        EXPECT_EQ(test::last(device.statements()), "COMMIT");
    }

  private:
    inline static const std::map<int, std::string> kCodeTexts = {
        {101, "Invalid command"},
        {102, "Could not access database"},
        {103, "Invalid value"},
        {401, "Invalid module input"},
        {402, "Invalid module output"},
        {501, "Could not find module"},
        {502, "Invalid module family/model"},
        {503, "Invalid amount of modules"},
    };

    template <class Predicate>
    [[nodiscard]] std::vector<std::string> statementsThat(Predicate predicate) const {
        std::vector<std::string> found;
        for (const std::string& sql : device.statements()) {
            if (predicate(sql)) {
                found.push_back(sql);
            }
        }
        return found;
    }
};

}  // namespace test
