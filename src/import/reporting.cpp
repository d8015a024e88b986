#include "import/reporting.h"

#include <syslog.h>

#include <iostream>

#include "command/error_codes.h"
#include "platform/debug_log.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

bool fail(Command& command, const Failure& failure) {
    const std::string ownText =
        failure.message.empty() ? errorMessage(failure.code) : failure.message;
    const std::string line = "Error " + std::to_string(failure.loggedCode.value_or(failure.code)) +
                             ", " + failure.loggedMessage.value_or(ownText);
    command.addError(failure.code, failure.message);
    platform::debugLog(LOG_ERR, failure.debugLine.value_or(line));
    platform::logLine(LOG_NEWS | LOG_ERR, "r9::: " + line);
    return false;
}

bool fail(Command& command, int code, const std::string& message) {
    return fail(command, Failure{.code = code, .message = message});
}

bool failOnElement(Command& command, const std::string& message) {
    return fail(command, Failure{.code = error::kInvalidCommand, .loggedMessage = message});
}

void logChange(const std::string& text) {
    platform::debugLog(LOG_NOTICE, text);
    platform::logLine(LOG_NEWS | LOG_NOTICE, "REMOTE_CONTROL::: " + text);
}

void reportProgress(const std::string& line) { std::cout << line << std::endl; }

}  // namespace tarvo_remote_control
