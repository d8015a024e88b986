// What the program tells its caller.
#pragma once

#include <set>

#include "command/error_codes.h"

namespace app {

enum class ExitStatus : int {
    success = 0,
    failure = 1,  // whatever has no status of its own
    invalidCommand = 2,
    database = 3,
    invalidValue = 4,
    setConfiguration = 5,
    moduleInput = 6,
    moduleOutput = 7,
    moduleNotFound = 8,
    moduleModel = 9,
    moduleAmount = 10,
};

// Reports the lowest of `errors` ("Error: <code>" on standard error and in the error file) and
// returns its exit status. No errors: no report, success.
ExitStatus errorsToExitStatus(const std::set<tarvo_remote_control::ErrorCode>& errors);

}  // namespace app
