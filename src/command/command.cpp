#include "command/command.h"

#include <syslog.h>

#include "platform/debug_log.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

using document::XmlNode;

Command::Command(const XmlNode* commandDocument) {
    if (commandDocument != nullptr) {
        parseCommandDocument(*commandDocument);
    }
}

void Command::parseCommandDocument(const XmlNode& commandDocument) {
    document::parseCopy(commandDocument_, document::printed(commandDocument));
    const XmlNode& command = *commandDocument_.first_node();
    const XmlNode* id = ResultDocument::findChild(command, "id");
    if (id == nullptr) {
        throw CommandParsingError("'command' has no 'id'");
    }
    id_ = document::numberOf(*id);
    const XmlNode* data = ResultDocument::findChild(command, "data");
    if (data == nullptr) {
        throw CommandParsingError("'command' has no 'data'");
    }
    commandNode_ = data->first_node();
    if (commandNode_ == nullptr) {
        throw CommandParsingError("'data' has no command");
    }
    result_.setCommandId(id_);
    platform::debugLog(LOG_DEBUG, "New command id: " + std::to_string(id_));
}

void Command::run() {
    constexpr int kMaxRetries = 10;
    status_ = RunStatus::running;
    execute();
    for (int retry = 1; retry <= kMaxRetries && errors().contains(ErrorCode::database); ++retry) {
        platform::debugLog(LOG_ERR, "Command run resulted in a DB error. Retrying (" +
                                        std::to_string(retry) + ")");
        platform::sleepSeconds(1);
        result_.reset();
        execute();
    }
    status_ = RunStatus::done;
}

}  // namespace tarvo_remote_control
