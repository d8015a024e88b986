// Imports of small documents on a fake device.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "db/database.h"
#include "document/xml.h"
#include "import/cmd_set_configuration.h"
#include "support/fake_device.h"

namespace test {

// An XML text and its tree.
class ParsedXml {
  public:
    explicit ParsedXml(const std::string& text) : text_(text) { document::parse(tree_, text_); }
    [[nodiscard]] const document::XmlNode& root() const { return *tree_.first_node(); }

  private:
    std::string text_;
    document::XmlDocument tree_;
};

// What a command left in its result document.
struct Outcome {
    // "<code> <text>" of every `error` element, in order.
    std::vector<std::string> errors;
    std::set<int> codes;
    // "0" after a success, "1" otherwise: as the command set it.
    std::string result;
    // The children of `data`, without line ends.
    std::string data;

    explicit Outcome(tarvo_remote_control::Command& command) {
        for (const auto code : command.errors()) {
            codes.insert(number(code));
        }
        // The tree is reached from a node in it: resultXml() would set `result` anew.
        document::XmlNode* probe = command.createNode("probe");
        command.result().appendToData(probe);
        document::XmlNode& dataNode = *probe->parent();
        dataNode.remove_last_node();
        const document::XmlNode& root = *dataNode.parent();
        for (const auto& child : document::childrenOf(dataNode)) {
            data += document::printed(child, document::kNoIndenting);
        }
        result = document::lastText(root, "result");
        for (const auto& error : document::childrenOf(*document::childNamed(root, "errors"))) {
            errors.push_back(std::string(document::lastText(error, "id")) + " " +
                             document::lastText(error, "text"));
        }
    }
};

class ImportTest : public DeviceTest {
  protected:
    // Runs statements on the configuration database.
    void rows(const std::string& sql) { device.execute(tarvodb::kConfigDatabase, sql); }

    [[nodiscard]] std::vector<Row> stored(const std::string& select) const {
        return device.query(tarvodb::kConfigDatabase, select);
    }

    // Imports a `configuration` element with these children. What happened on the device before is
    // forgotten, so that statements() and the like are those of this import.
    void importConfiguration(const std::string& sections) {
        const ParsedXml xml("<configuration>" + sections + "</configuration>");
        device.forgetEvents();
        tarvo_remote_control::CmdSetConfiguration command;
        command.apply(&xml.root());
        outcome_.emplace(command);
    }

    // Of the last import.
    [[nodiscard]] const std::vector<std::string>& errors() const { return outcome().errors; }
    [[nodiscard]] const std::string& result() const { return outcome().result; }
    [[nodiscard]] const std::set<int>& codes() const { return outcome().codes; }

    // The log lines of errors and of accepted changes, with their priorities.
    [[nodiscard]] std::vector<std::string> errorLines() const { return logLinesOf("59: "); }
    [[nodiscard]] std::vector<std::string> changeLines() const { return logLinesOf("61: "); }

  private:
    [[nodiscard]] std::vector<std::string> logLinesOf(const std::string& priority) const {
        std::vector<std::string> lines;
        for (const std::string& line : device.logLines()) {
            if (line.starts_with(priority)) {
                lines.push_back(line);
            }
        }
        return lines;
    }

    [[nodiscard]] const Outcome& outcome() const { return outcome_.value(); }

    std::optional<Outcome> outcome_;
};

}  // namespace test
