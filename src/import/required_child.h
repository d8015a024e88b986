// Children that an element must have.
#pragma once

#include <optional>

#include "command/error_codes.h"
#include "import/cmd_set_configuration.h"

namespace tarvo_remote_control {

// A number that an element must give in a child, and the errors (of one code) when it does not.
struct RequiredNumber {
    const char* element;
    ErrorCode errorCode;
    const char* missing;
    int lowest;
    int highest;
    const char* outOfRange;
    const char* outOfRangeDebugLine = nullptr;  // the debug log's own line, if it has one
};

// The number in the first child of that name; nothing when it is missing or out of range, and the
// error is recorded and logged.
std::optional<int> requiredNumber(CmdSetConfiguration& command, const document::XmlNode& element,
                                  const RequiredNumber& required);

}  // namespace tarvo_remote_control
