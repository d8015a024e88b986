// Exports of a fake device's configuration.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "db/database.h"
#include "document/xml.h"
#include "export/cmd_get_configuration.h"
#include "support/export_checks.h"
#include "support/fake_device.h"

namespace test {

// The seven models, and one that the program does not know.
inline const std::vector<std::string> kModels = {"QRA-310", "LMV-502", "PKD-707", "RNB-K408",
                                                 "WVX-AQ4", "LMV-512", "WVX-BQ4", "XYZ-1"};

// The controller is a QRA-310 until a test makes it another one.
//
// Elements are named by their path below `configuration`, with a number from 1 where they are not
// the first of their name: "network/ip", "modules/module[2]/inputs". The empty path is
// `configuration` itself.
class ExportTest : public DeviceTest {
  protected:
    ExportTest() { becomeModel("QRA-310"); }

    // Exports the device as it is now. What happened on it before is forgotten.
    void exportConfiguration() {
        device.forgetEvents();
        command_.emplace();
        command_->execute();
    }

    // The printed element, without line ends; "" when the document has no such element.
    [[nodiscard]] std::string element(const std::string& path) const {
        const document::XmlNode* node = find(path);
        return node == nullptr ? "" : document::printed(*node, document::kNoIndenting);
    }

    // The element after an export.
    std::string exported(const std::string& path) {
        exportConfiguration();
        return element(path);
    }

    // The names of an element's children, with a blank between them.
    [[nodiscard]] std::string childNames(const std::string& path) const {
        std::string names;
        if (const document::XmlNode* node = find(path); node != nullptr) {
            for (const document::XmlNode& child : document::childrenOf(*node)) {
                names += (names.empty() ? "" : " ") + std::string(child.name());
            }
        }
        return names;
    }

    // Sets a column of the configuration to each case's literal and compares the text of an
    // element.
    void expectTexts(const std::string& table, const std::string& column, const std::string& path,
                     const std::vector<CodeCase>& cases) {
        const std::string name = path.substr(path.rfind('/') + 1);
        for (const CodeCase& each : cases) {
            SCOPED_TRACE(column + " = " + each.literal);
            updateConfig(table, column + " = " + each.literal);
            EXPECT_EQ(exported(path), leaf(name, each.text));
        }
    }

    // Of the last export.
    [[nodiscard]] tarvo_remote_control::CmdGetConfiguration& command() { return *command_; }

    // Rows of the configuration and of the state database: insertConfig("NimGlobal", "MAC, fe",
    // "'M1', 1000").
    void insertConfig(const std::string& table, const std::string& columns,
                      const std::string& values) {
        insert(tarvodb::kConfigDatabase, table, columns, values);
    }
    void insertState(const std::string& table, const std::string& columns,
                     const std::string& values) {
        insert(tarvodb::kStateDatabase, table, columns, values);
    }

    // Changes rows: updateConfig("NimGlobal", "fe = 2").
    void updateConfig(const std::string& table, const std::string& change) {
        device.execute(tarvodb::kConfigDatabase, "UPDATE " + table + " SET " + change);
    }
    void updateState(const std::string& table, const std::string& change) {
        device.execute(tarvodb::kStateDatabase, "UPDATE " + table + " SET " + change);
    }

  private:
    void insert(const std::string& database, const std::string& table, const std::string& columns,
                const std::string& values) {
        device.execute(database,
                       "INSERT INTO " + table + " (" + columns + ") VALUES (" + values + ")");
    }

    [[nodiscard]] const document::XmlNode* find(const std::string& path) const {
        const document::XmlNode* node = command_->getConfigurationNode();
        std::size_t start = 0;
        while (node != nullptr && start < path.size()) {
            const std::size_t end = std::min(path.find('/', start), path.size());
            node = childOf(*node, path.substr(start, end - start));
            start = end + 1;
        }
        return node;
    }

    // `step` is a name, or a name and a number: "input[2]".
    static const document::XmlNode* childOf(const document::XmlNode& parent,
                                            const std::string& step) {
        const std::size_t bracket = step.find('[');
        int left = bracket == std::string::npos ? 1 : std::atoi(step.c_str() + bracket + 1);
        for (const document::XmlNode& child : document::childrenOf(parent)) {
            if (child.name() == step.substr(0, bracket) && --left == 0) {
                return &child;
            }
        }
        return nullptr;
    }

    std::optional<tarvo_remote_control::CmdGetConfiguration> command_;
};

}  // namespace test
