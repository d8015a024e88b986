// Commands for tests of what all commands have in common.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "command/command.h"

namespace test {

// A command document as a server sends it. It owns the element that a command is made from.
class CommandDocument {
  public:
    explicit CommandDocument(const std::string& text) { document::parseCopy(document_, text); }
    [[nodiscard]] const document::XmlNode* element() const { return document_.first_node(); }

  private:
    document::XmlDocument document_;
};

// A command whose work is given by the test.
class ScriptedCommand : public tarvo_remote_control::Command {
  public:
    using Work = std::function<void(ScriptedCommand&)>;

    explicit ScriptedCommand(Work work = nullptr) : work_(std::move(work)) {}
    explicit ScriptedCommand(const CommandDocument& commandDocument)
        : Command(commandDocument.element()) {}

    void execute() override {
        ++executions;
        if (work_) {
            work_(*this);
        }
    }

    using Command::commandNode;

    int executions = 0;

  private:
    Work work_;
};

}  // namespace test
