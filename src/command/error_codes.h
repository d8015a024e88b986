// The error codes of the remote-control command library.
#pragma once

namespace tarvo_remote_control {

// The codes that this program records have names; a loaded result document may hold any number.
enum class ErrorCode : int {
    invalidCommand = 101,
    database = 102,
    invalidValue = 103,
    setConfiguration = 202,
    network = 203,
    moduleInput = 401,
    moduleOutput = 402,
    moduleNotFound = 501,
    moduleModel = 502,
    moduleAmount = 503,
    scramblingKey = 911,
};

// The code as it stands in documents, in the log and on standard error.
constexpr int number(ErrorCode code) { return static_cast<int>(code); }

// The text of a code, "Unknown Error" for a code that has none.
const char* errorMessage(ErrorCode code);

}  // namespace tarvo_remote_control
