// What the tests of the headend's lists share.
#pragma once

#include <sqlite3.h>

#include <string>

#include "db/database.h"
#include "support/export_checks.h"
#include "support/export_fixture.h"

namespace test {

class HeadendLists : public ExportTest {
  protected:
    // Exports on every model and expects the section on those models only.
    void expectSectionOn(const std::string& section, const Texts& models) {
        for (const std::string& model : kModels) {
            SCOPED_TRACE(model);
            becomeModel(model);
            EXPECT_EQ(exported(section), isOneOf(model, models) ? "<" + section + "/>" : "");
        }
    }

    // A section whose table is missing, or cannot be read, has no rows and reports nothing.
    void expectEmptyWithout(const std::string& table, const std::string& section) {
        device.failStatements("SELECT * FROM " + table + " ", 3, SQLITE_BUSY, "");
        EXPECT_EQ(exported(section), "<" + section + "/>");
        EXPECT_TRUE(command().errors().empty());
        EXPECT_EQ(device.logLines(), failedSelectLog(table));
        EXPECT_EQ(device.sleeps(), (Texts{"1", "2", "3"}));

        device.execute(tarvodb::kConfigDatabase, "DROP TABLE " + table);
        EXPECT_EQ(exported(section), "<" + section + "/>");
        EXPECT_TRUE(command().errors().empty());
    }
};

inline const Texts kAllButWvxb = {"QRA-310", "LMV-502", "PKD-707", "RNB-K408",
                                  "WVX-AQ4", "LMV-512", "XYZ-1"};

}  // namespace test
