// Texts and statements that tests of exported sections compare with.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

#include "support/fake_device.h"

namespace test {

using Texts = std::vector<std::string>;

// An element without children, as it is printed.
inline std::string leaf(const std::string& name, const std::string& text) {
    return text.empty() ? "<" + name + "/>" : "<" + name + ">" + text + "</" + name + ">";
}

inline bool isOneOf(const std::string& text, const Texts& texts) {
    return std::find(texts.begin(), texts.end(), text) != texts.end();
}

// The selects that were made from these tables, in their order.
inline Texts selectsFrom(const FakeDevice& device, const Texts& tables) {
    const std::string start = "SELECT * FROM ";
    Texts found;
    for (const std::string& statement : device.statements()) {
        if (statement.starts_with(start) &&
            isOneOf(
                statement.substr(start.size(), statement.find(' ', start.size()) - start.size()),
                tables)) {
            found.push_back(statement);
        }
    }
    return found;
}

// Takes the key off a table, so that a row may be NULL in all of its columns, and adds such a row.
inline void addNullRow(FakeDevice& device, const std::string& database, const std::string& table) {
    device.execute(database, "ALTER TABLE " + table + " RENAME TO keyed; CREATE TABLE " + table +
                                 " AS SELECT * FROM keyed; DROP TABLE keyed; INSERT INTO " + table +
                                 " DEFAULT VALUES");
}

// What the log says when a select fails three times without a message of SQLite's.
inline Texts failedSelectLog(const std::string& table) {
    const std::string line =
        "3: [ERROR_DB]doSelect: Error leyendo datos tabla " + table + " . intento: ";
    return {line + "0\n", line + "1\n", line + "2\n"};
}

// An SQL literal for a column that holds a code, and the text that the document has for it.
struct CodeCase {
    std::string literal;
    std::string text;
};

// Where a number decides, NULL and a text without digits are 0.
inline const std::vector<CodeCase> kPolarityCases = {
    {"0", "vertical"},    {"1", "horizontal"},   {"2", ""}, {"-1", ""}, {"NULL", "vertical"},
    {"'up'", "vertical"}, {"'1x'", "horizontal"}};
inline const std::vector<CodeCase> kBandCases = {{"0", "low"},    {"1", "high"},   {"2", ""},
                                                 {"5", ""},       {"-1", ""},      {"NULL", "low"},
                                                 {"'up'", "low"}, {"'1x'", "high"}};

}  // namespace test
