// A module with two satellite inputs, each with a tuner row of every type, for the tests of the
// input handler.
#pragma once

#include <string>

#include "support/module_import.h"

namespace test {

class InputImportTest : public ModuleImportTest {
  protected:
    InputImportTest() {
        becomeModel("QRA-310");
        addModule(1, kMac);
        for (const char* input : {"1", "2"}) {
            const std::string id = input;
            rows("INSERT INTO EntradasGlobal VALUES (" + id + ", '" + kMac +
                 "', 0, 1, 2, 1, NULL, " + id + ", 0)");
            rows("INSERT INTO NimGlobal VALUES (1" + id + ", '" + kMac +
                 "', 1250, 27500, 0, 11000, 0, 0, 0, " + id + ", 1, 0, 0, 0, 0)");
            rows("INSERT INTO NimCOFDMGlobal VALUES (2" + id + ", '" + kMac +
                 "', 474000, 9, 9, 0, 0, 0, 0, " + id + ", 1, 0, 0)");
            rows("INSERT INTO NimQAMGlobal VALUES (3" + id + ", '" + kMac +
                 "', 306000, 6875, 2, 0, " + id + ", 1, 0)");
        }
    }

    // The input rows are of this type already.
    void storeType(int type) {
        rows("UPDATE EntradasGlobal SET tipoEntrada = " + std::to_string(type));
    }

    static std::string input(int inputId, int type, const std::string& children) {
        return "<input><inputId>" + std::to_string(inputId) + "</inputId><type>" +
               std::to_string(type) + "</type>" + children + "</input>";
    }

    void importInputs(const std::string& inputs) {
        importModule("<inputs>" + inputs + "</inputs>");
    }

    // The line of an input's changes.
    static std::string inputLine(const std::string& changes) {
        return "61: REMOTE_CONTROL::: New INPUT parameters: " + changes;
    }

    static std::string selectInputs() {
        return "SELECT * FROM EntradasGlobal  WHERE MAC LIKE '02:00:00:00:00:11' ";
    }

    // The select of an input's tuner row.
    static std::string selectTuner(const std::string& table, int input) {
        return "SELECT * FROM " + table + "  WHERE fk_idEntradasGlobal LIKE '" +
               std::to_string(input) + "' ";
    }
};

}  // namespace test
