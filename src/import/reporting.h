// How the import tells what it does: progress on standard output, accepted changes and errors in
// the system log, errors also in the command's result document.
#pragma once

#include <optional>
#include <string>

#include "command/command.h"
#include "command/error_codes.h"

namespace tarvo_remote_control {

// An error as it is recorded and, where the two differ, as it is logged.
struct Failure {
    ErrorCode code;
    // The detail of the recorded error. Where it is empty, the code's own text is logged.
    std::string message = {};
    std::optional<ErrorCode> loggedCode = {};
    std::optional<std::string> loggedMessage = {};
    // The line of the debug log; "Error <code>, <message>" otherwise.
    std::optional<std::string> debugLine = {};
};

// Records and logs an error. Returns false, so that a handler can end with it.
bool fail(Command& command, const Failure& failure);
bool fail(Command& command, ErrorCode code, const std::string& message = "");

// As fail, for the errors that are logged before they are recorded, with the message alone as the
// line of the debug log.
bool failLoggedFirst(Command& command, const Failure& failure);

// Error 101 for a child that is not the element that its parent holds: recorded without a detail,
// logged with `message`.
bool failOnElement(Command& command, const std::string& message);

// Logs a fault that is not recorded as an error.
void logFault(const std::string& line);

// Logs an accepted change.
void logChange(const std::string& text);

// Prints a line on standard output at once, so that it stands before what a script prints.
void reportProgress(const std::string& line);

}  // namespace tarvo_remote_control
