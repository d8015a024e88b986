#include "command/command.h"

#include <memory>

#include "platform/debug_log.h"
#include "support/fake_device.h"
#include "support/scripted_command.h"

namespace tarvo_remote_control {

namespace {

using test::CommandDocument;
using test::ScriptedCommand;
using Lines = std::vector<std::string>;

class CommandRun : public test::DeviceTest {
  protected:
    CommandRun() { becomeModel("QRA-310"); }

    // Why a command document is refused, "" when it is not.
    static std::string refusal(const std::string& text) {
        const CommandDocument document(text);
        try {
            const ScriptedCommand command(document);
        } catch (const CommandParsingError& error) {
            return error.what();
        }
        return "";
    }
};

std::string withoutErrors(const std::string& data) {
    return R"(<?xml version="1.0" encoding="utf-8"?>)"
           "\n<commandResult>\n\t<id>headend</id>\n\t<mac>02:00:00:00:00:01</mac>\n"
           "\t<serialNumber>A123</serialNumber>\n\t<zenContractId/>\n\t<commandId>1</commandId>\n"
           "\t<result>1</result>\n\t<errors/>\n" +
           data + "</commandResult>\n";
}

}  // namespace

TEST_F(CommandRun, BeginsFromANewCommand) {
    const ScriptedCommand command;
    EXPECT_EQ(command.id(), 0);
    EXPECT_EQ(command.status(), RunStatus::created);
    EXPECT_EQ(command.commandNode(), nullptr);
    EXPECT_EQ(command.rowId(), 0);
    EXPECT_EQ(command.nextTime(), 0);
    EXPECT_EQ(command.schedule(), "");
    EXPECT_TRUE(command.errors().empty());
}

TEST_F(CommandRun, StatusesHaveTheirStoredNumbers) {
    EXPECT_EQ(static_cast<int>(RunStatus::created), 0);
    EXPECT_EQ(static_cast<int>(RunStatus::running), 1);
    EXPECT_EQ(static_cast<int>(RunStatus::done), 2);
    EXPECT_EQ(static_cast<int>(RunStatus::toBeRemoved), 3);
}

TEST_F(CommandRun, ExecutesOnceWhileRunningAndIsThenDone) {
    ScriptedCommand command([](ScriptedCommand& self) {
        EXPECT_EQ(self.status(), RunStatus::running);
        self.result().appendToData(self.createNode("answer", "42"));
    });
    command.run();
    EXPECT_EQ(command.executions, 1);
    EXPECT_EQ(command.status(), RunStatus::done);
    EXPECT_TRUE(device.events().empty());
    EXPECT_EQ(command.resultXml(), withoutErrors("\t<data>\n\t\t<answer>42</answer>\n\t</data>\n"));
}

TEST_F(CommandRun, IsNotRepeatedForOtherErrors) {
    ScriptedCommand command([](ScriptedCommand& self) {
        self.addError(ErrorCode{101});
        self.addError(ErrorCode{202}, "detail");
    });
    command.run();
    EXPECT_EQ(command.executions, 1);
    EXPECT_EQ(command.errors(), (std::set{ErrorCode{101}, ErrorCode{202}}));
    EXPECT_TRUE(device.sleeps().empty());
}

TEST_F(CommandRun, IsRepeatedTenTimesWhileTheDatabaseCannotBeAccessed) {
    ScriptedCommand command([](ScriptedCommand& self) { self.addError(ErrorCode{102}); });
    command.run();
    EXPECT_EQ(command.executions, 11);
    EXPECT_EQ(device.events(), Lines(10, "sleep: 1"));
    EXPECT_EQ(command.errors(), std::set{ErrorCode{102}});
    EXPECT_EQ(command.status(), RunStatus::done);
}

TEST_F(CommandRun, StopsAsSoonAsTheDatabaseCanBeAccessed) {
    ScriptedCommand command([](ScriptedCommand& self) {
        EXPECT_TRUE(self.errors().empty());
        EXPECT_EQ(self.status(), RunStatus::running);
        self.addError(self.executions <= 2 ? ErrorCode::database : ErrorCode::invalidValue);
    });
    command.run();
    EXPECT_EQ(command.executions, 3);
    EXPECT_EQ(device.sleeps(), (Lines{"1", "1"}));
    EXPECT_EQ(command.errors(), std::set{ErrorCode{103}});
}

TEST_F(CommandRun, ForgetsErrorsAndDataBeforeEachRepetition) {
    ScriptedCommand command([](ScriptedCommand& self) {
        self.result().appendToData(self.createNode("try", std::to_string(self.executions).c_str()));
        if (self.executions == 1) {
            self.addError(ErrorCode{501});
            self.addError(ErrorCode{102});
        }
    });
    command.run();
    EXPECT_EQ(command.resultXml(), withoutErrors("\t<data>\n\t\t<try>2</try>\n\t</data>\n"));
}

TEST_F(CommandRun, LogsEachRepetitionWithTheDebugBit) {
    platform::debugMask = platform::kDebugLogBit;
    ScriptedCommand command([](ScriptedCommand& self) {
        if (self.executions <= 2) {
            self.addError(ErrorCode{102});
        }
    });
    command.run();
    EXPECT_EQ(device.events(),
              (Lines{"log 3: Command error: 102 Could not access database",
                     "log 3: Command run resulted in a DB error. Retrying (1)", "sleep: 1",
                     "log 3: Command error: 102 Could not access database",
                     "log 3: Command run resulted in a DB error. Retrying (2)", "sleep: 1"}));
}

TEST_F(CommandRun, CommandDocumentGivesNumberAndCommand) {
    const CommandDocument document(
        "<command><id>42</id><data><getConfiguration a='b'><x>a &amp; b</x></getConfiguration>"
        "<second/></data></command>");
    ScriptedCommand command(document);
    EXPECT_EQ(command.id(), 42);
    ASSERT_NE(command.commandNode(), nullptr);
    EXPECT_STREQ(command.commandNode()->name(), "getConfiguration");
    EXPECT_STREQ(command.commandNode()->first_node("x")->value(), "a & b");
    EXPECT_NE(command.resultXml().find("\t<commandId>42</commandId>\n"), std::string::npos);
    EXPECT_EQ(command.status(), RunStatus::created);
}

TEST_F(CommandRun, CommandDocumentIsCopied) {
    auto document = std::make_unique<CommandDocument>(
        "<command><id>42</id><data><getConfiguration/></data></command>");
    const ScriptedCommand command(*document);
    document.reset();
    EXPECT_STREQ(command.commandNode()->name(), "getConfiguration");
}

TEST_F(CommandRun, CommandDocumentMayHaveAnyName) {
    const CommandDocument document("<anything><data><x/></data><id>7</id></anything>");
    const ScriptedCommand command(document);
    EXPECT_EQ(command.id(), 7);
    EXPECT_STREQ(command.commandNode()->name(), "x");
}

TEST_F(CommandRun, CommandNumberIsTheLeadingDigitsOfItsText) {
    const std::pair<const char*, int> numbers[] = {
        {"<id>12abc</id>", 12}, {"<id>abc</id>", 0}, {"<id/>", 0}, {"<id></id>", 0}};
    for (const auto& [id, number] : numbers) {
        SCOPED_TRACE(id);
        const CommandDocument document(std::string("<command>") + id +
                                       "<data><x/></data></command>");
        ScriptedCommand command(document);
        EXPECT_EQ(command.id(), number);
        EXPECT_NE(command.resultXml().find("<commandId>" + std::to_string(number) + "</commandId>"),
                  std::string::npos);
    }
}

TEST_F(CommandRun, CommandDocumentWithoutIdIsRefused) {
    EXPECT_EQ(refusal("<command><data><x/></data></command>"), "'command' has no 'id'");
    EXPECT_EQ(refusal("<command><ID>1</ID><data><x/></data></command>"), "'command' has no 'id'");
    EXPECT_EQ(refusal("<command/>"), "'command' has no 'id'");
}

TEST_F(CommandRun, CommandDocumentWithoutDataIsRefused) {
    EXPECT_EQ(refusal("<command><id>1</id></command>"), "'command' has no 'data'");
    EXPECT_EQ(refusal("<command><id>1</id><Data><x/></Data></command>"), "'command' has no 'data'");
}

TEST_F(CommandRun, CommandDocumentWithEmptyDataIsRefused) {
    EXPECT_EQ(refusal("<command><id>1</id><data/></command>"), "'data' has no command");
    EXPECT_EQ(refusal("<command><id>1</id><data> \n </data></command>"), "'data' has no command");
}

TEST_F(CommandRun, CommandNumberIsLoggedWithTheDebugBit) {
    platform::debugMask = platform::kDebugLogBit;
    const CommandDocument document("<command><id>42</id><data><x/></data></command>");
    const ScriptedCommand command(document);
    EXPECT_EQ(device.logLines(), Lines{"7: New command id: 42"});
}

TEST_F(CommandRun, CommandNumberIsNotLoggedWithoutTheDebugBit) {
    const CommandDocument document("<command><id>42</id><data><x/></data></command>");
    const ScriptedCommand command(document);
    EXPECT_TRUE(device.logLines().empty());
}

}  // namespace tarvo_remote_control
