#include "import/reporting.h"

#include <syslog.h>

#include "platform/debug_log.h"
#include "platform/platform.h"

namespace tarvo_remote_control {

namespace {

std::string loggedMessage(const Failure& failure) {
    return failure.loggedMessage.value_or(failure.message.empty() ? errorMessage(failure.code)
                                                                  : failure.message);
}

std::string errorLine(const Failure& failure) {
    return "Error " + std::to_string(number(failure.loggedCode.value_or(failure.code))) + ", " +
           loggedMessage(failure);
}

void logNewsError(const std::string& line) {
    platform::logLine(LOG_NEWS | LOG_ERR, "r9::: " + line);
}

}  // namespace

bool fail(Command& command, const Failure& failure) {
    command.addError(failure.code, failure.message);
    platform::debugLog(LOG_ERR, failure.debugLine.value_or(errorLine(failure)));
    logNewsError(errorLine(failure));
    return false;
}

bool fail(Command& command, ErrorCode code, const std::string& message) {
    return fail(command, Failure{.code = code, .message = message});
}

bool failLoggedFirst(Command& command, const Failure& failure) {
    platform::debugLog(LOG_ERR, loggedMessage(failure));
    command.addError(failure.code, failure.message);
    logNewsError(errorLine(failure));
    return false;
}

bool failOnElement(Command& command, const std::string& message) {
    return fail(command, Failure{.code = ErrorCode::invalidCommand, .loggedMessage = message});
}

void logFault(const std::string& line) {
    platform::debugLog(LOG_ERR, line);
    logNewsError(line);
}

void logChange(const std::string& text) {
    platform::debugLog(LOG_NOTICE, text);
    platform::logLine(LOG_NEWS | LOG_NOTICE, "REMOTE_CONTROL::: " + text);
}

void reportProgress(const std::string& line) { platform::print(line + "\n"); }

}  // namespace tarvo_remote_control
